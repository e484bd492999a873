#!/usr/bin/env python3
"""Where glTF's morph targets, skins and copies put vertices, against arithmetic of this file's own; what is told of
what isn't drawn. Usage: gltf_test.py ORLOVIEW [unittest arguments]"""

import json
import os
import random
import unittest

from viewer_files import File, rows_of
from viewer_program import ViewerProgram


class Gltf(ViewerProgram):
    def told(self, text, *switches, expect=0):
        result = self.run_viewer(self.write("m.gltf", text), "--info", "--json", *switches)
        self.assertEqual(result.returncode, expect, result.stderr.decode())
        return json.loads(result.stdout)

    def test_morph_targets_go_as_far_as_their_weights(self):
        number = random.Random(5)
        count = 6
        base, first, second = (rows_of(count, 3, lambda: number.uniform(-9, 9)) for _ in range(3))
        few = {1: [5.0, -6.0, 7.0], 4: [0.5, 0.25, -8.0]}
        file = File()
        attributes = {"POSITION": file.accessor(base)}
        targets = [{"POSITION": file.accessor(first)}, {"POSITION": file.accessor(second)}, {"POSITION": file.sparse(count, few)}]
        points = [{"attributes": attributes, "targets": targets, "mode": 0, "indices": file.accessor([[i]], "H", 5123)} for i in range(count)]
        attributes["JOINTS_0"] = file.accessor([[i % 2, 0, 0, 0] for i in range(count)], "B", 5121)
        attributes["WEIGHTS_0"] = file.accessor([[1, 0, 0, 0]] * count)
        for own, meshes in ((None, [0.25, 0, -1.5]), ([1, -0.5, 0.75], [0.25, 0, -1.5]), ([0, 0, 1], None), (None, None)):
            weights = own or meshes or [0, 0, 0]
            for skinned in (False, True):
                for i in range(count):
                    deltas = (first[i], second[i], few.get(i, [0, 0, 0]))
                    wanted = [base[i][k] + sum(w * d[k] for w, d in zip(weights, deltas)) for k in range(3)]
                    if skinned:  # the joints: three times as large, and moved up by 100
                        wanted = [3 * x for x in wanted] if i % 2 == 0 else [wanted[0], wanted[1] + 100, wanted[2]]
                    node = {"mesh": 0, **({"weights": own} if own else {}), **({"skin": 0} if skinned else {})}
                    told = self.told(
                        file.text(
                            meshes=[{"primitives": [points[i]], **({"weights": meshes} if meshes else {})}],
                            nodes=[node, {"scale": [3, 3, 3]}, {"translation": [0, 100, 0]}],
                            scenes=[{"nodes": [0, 1, 2]}],
                            skins=[{"joints": [1, 2]}],
                        )
                    )["bounds"]["min"]
                    for k in range(3):
                        self.assertAlmostEqual(told[k], wanted[k], delta=2e-5, msg=f"{own} {meshes} {skinned} vertex {i}")

    def test_copies_stand_where_the_file_says(self):
        number = random.Random(7)
        count = 4
        places, scales = (rows_of(count, 3, lambda: number.uniform(1, 9)) for _ in range(2))
        turns = [[0, 0, 0, 1], [0, 0, 0.70710678, 0.70710678], [0.70710678, 0, 0, 0.70710678], [0, 1, 0, 0]]
        turned = [lambda x, y, z: (x, y, z), lambda x, y, z: (-y, x, z), lambda x, y, z: (x, -z, y), lambda x, y, z: (-x, y, -z)]
        file = File()
        file.json["meshes"] = [{"primitives": [{"attributes": {"POSITION": file.accessor([[1, 2, 3]])}, "mode": 0}]}]
        copies = {"TRANSLATION": file.accessor(places), "ROTATION": file.accessor(turns), "SCALE": file.accessor(scales)}

        def node(attributes):
            return [{"mesh": 0, "translation": [0, 0, 5], "scale": [2, 2, 2], "extensions": {"EXT_mesh_gpu_instancing": {"attributes": attributes}}}]

        wanted = []
        for place, scale, turn in zip(places, scales, turned):
            moved = turn(*(s * x for s, x in zip(scale, (1, 2, 3))))
            wanted.append([2 * (m + p) + o for m, p, o in zip(moved, place, (0, 0, 5))])
        told = self.told(file.text(nodes=node(copies), extensionsRequired=["EXT_mesh_gpu_instancing"]))
        self.assertEqual((told["groups"], told["points"]), (count, count))
        for k in range(3):
            self.assertAlmostEqual(told["bounds"]["min"][k], min(w[k] for w in wanted), delta=1e-5)
            self.assertAlmostEqual(told["bounds"]["max"][k], max(w[k] for w in wanted), delta=1e-5)
        hidden = {"children": [1], "extensions": {"KHR_node_visibility": {"visible": False}}}
        told = self.told(file.text(nodes=[hidden, {"mesh": 0}, {"mesh": 0}], scenes=[{"nodes": [0, 2]}]))
        self.assertEqual(told["groups"], 1, "what is below a hidden node is hidden")
        hostile = {"componentType": 5126, "type": "VEC3", "count": 1 << 24}
        file.json["accessors"] += [hostile]
        for attributes, words in (
            ({**copies, "SCALE": 0}, "differ in length"),
            ({"TRANSLATION": copies["ROTATION"]}, "should be VEC3"),
            ({"TRANSLATION": len(file.json["accessors"]) - 1}, "more copies than can be drawn"),
        ):
            told = self.told(file.text(nodes=node(attributes)), expect=3)
            self.assertEqual(told["groups"], 1)
            self.assertIn(words, told["warnings"][0])

    def test_variants_are_chosen_by_name(self):
        file = File()
        corners = {"POSITION": file.accessor([[0, 0, 0], [1, 0, 0], [0, 1, 0]])}
        mappings = [{"material": 1, "variants": [1, 2]}, {"material": 2, "variants": [0]}]
        painted = {"attributes": corners, "material": 0, "extensions": {"KHR_materials_variants": {"mappings": mappings}}}
        colours = {"materials": [{"pbrMetallicRoughness": {"baseColorFactor": [red, 0, 0, 1]}} for red in (0, 0.5, 1)]}
        names = {"extensions": {"KHR_materials_variants": {"variants": [{"name": name} for name in ("red", "green", "dark blue")]}}}
        text = file.text(meshes=[{"name": "sign", "primitives": [painted, {"attributes": corners}]}], **colours, **names)
        told = self.told(text)
        self.assertEqual((told["variants"], told["unpainted"]), (["red", "green", "dark blue"], ["sign"]))
        model = self.path("m.gltf")
        self.write("m.gltf", file.text(meshes=[{"primitives": [painted]}], **colours, **names))
        pictures = [self.picture(model, "--size", "16x16", *switches) for switches in ((), ("--variant", "dark blue"), ("--variant", "red"))]
        reds = [sum(row[i] for row in rows for i in range(0, len(row), channels)) for _, _, channels, rows in pictures]
        self.assertTrue(reds[0] < reds[1] < reds[2], reds)
        os.remove(self.path("out.png"))
        self.fails(1, [model, "--info", "--variant", "blue"], "--variant blue", "it has red, green, dark blue")
        broken = {"extensions": {"KHR_materials_variants": {"mappings": [{"material": 9, "variants": [0]}]}}}
        told = self.told(file.text(meshes=[{"primitives": [{**painted, **broken}]}], **colours, **names), expect=3)
        self.assertIn("variants of mesh", told["warnings"][0])


if __name__ == "__main__":
    unittest.main()
