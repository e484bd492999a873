#!/usr/bin/env python3
"""Where glTF's animations put things at a time, against arithmetic of this file's own, and what a moving model costs.
Usage: animation_test.py ORLOVIEW [unittest arguments]"""

import json
import math
import os
import random
import re
import unittest

from viewer_files import File, rows_of
from viewer_program import ViewerProgram

KEYS = [0.25, 0.5, 1.5, 2.0]  # seconds
TIMES = [0, 0.4, 0.5, 1.3, 2]


def turn(q, v):
    """A vector turned by a quaternion of any length: q v q*, over the square of its length."""
    x, y, z, w = q
    t = [2 * (y * v[2] - z * v[1]), 2 * (z * v[0] - x * v[2]), 2 * (x * v[1] - y * v[0])]
    n = sum(part * part for part in q)
    return [v[i] + (w * t[i] + c) / n for i, c in enumerate((y * t[2] - z * t[1], z * t[0] - x * t[2], x * t[1] - y * t[0]))]


def times(p, q):
    return [
        p[3] * q[0] + p[0] * q[3] + p[1] * q[2] - p[2] * q[1],
        p[3] * q[1] - p[0] * q[2] + p[1] * q[3] + p[2] * q[0],
        p[3] * q[2] + p[0] * q[1] - p[1] * q[0] + p[2] * q[3],
        p[3] * q[3] - p[0] * q[0] - p[1] * q[1] - p[2] * q[2],
    ]


def turned_further(p, q, share):
    """So far on the way from p to q: p, then a share of the turn that is between."""
    x, y, z, w = times([-p[0], -p[1], -p[2], p[3]], q)
    if w < 0:
        x, y, z, w = -x, -y, -z, -w
    sine = math.sqrt(x * x + y * y + z * z)
    half = share * math.atan2(sine, w)
    return times(p, [part / sine * math.sin(half) for part in (x, y, z)] + [math.cos(half)])


def value_at(t, mode, rows, is_turn=False):
    """Of a track with those keys; CUBICSPLINE has three rows a key."""
    width = 3 if mode == "CUBICSPLINE" else 1
    value = lambda key: rows[key * width + width // 2]
    last = max((i for i, key in enumerate(KEYS) if key <= t), default=-1)
    if last < 0 or last + 1 == len(KEYS) or mode == "STEP":
        return value(max(last, 0))
    d = KEYS[last + 1] - KEYS[last]
    s = (t - KEYS[last]) / d
    p, q = value(last), value(last + 1)
    if mode == "LINEAR":
        return turned_further(p, q, s) if is_turn else [a * (1 - s) + b * s for a, b in zip(p, q)]
    leaving, arriving = rows[last * 3 + 2], rows[last * 3 + 3]
    h = ((1 + 2 * s) * (1 - s) ** 2, s * (1 - s) ** 2, s * s * (3 - 2 * s), s * s * (s - 1))
    return [h[0] * a + h[1] * d * m + h[2] * b + h[3] * d * n for a, m, b, n in zip(p, leaving, q, arriving)]


class Mover:
    """A node of a file whose parts move, and where it takes a point at a time."""

    def __init__(self, number, file, node, modes):
        self.tracks = {}
        for path, mode in modes.items():
            keys = len(KEYS) * (3 if mode == "CUBICSPLINE" else 1)
            width = 4 if path == "rotation" else 3
            rows = rows_of(keys, width, lambda: number.uniform(0.5, 1.5) if path == "scale" else number.uniform(-3, 3))
            if path == "rotation" and mode != "CUBICSPLINE":
                rows = [[part / math.hypot(*row) for part in row] for row in rows]
            self.tracks[path] = (mode, rows)
            file.move(node, path, mode, rows)

    def place(self, t, point):
        at = {path: value_at(t, mode, rows, path == "rotation") for path, (mode, rows) in self.tracks.items()}
        point = [a * b for a, b in zip(point, at.get("scale", (1, 1, 1)))]
        point = turn(at.get("rotation", (0, 0, 0, 1)), point)
        return [a + b for a, b in zip(point, at.get("translation", (0, 0, 0)))]


class Moving(File):
    """A glTF file with an animation."""

    def __init__(self):
        super().__init__()
        self.keys = self.accessor([[key] for key in KEYS])
        self.json["animations"] = [{"name": "first", "samplers": [], "channels": []}]

    def move(self, node, path, mode, rows):
        animation = self.json["animations"][-1]
        flat = [[x] for row in rows for x in row] if path == "weights" else rows
        animation["samplers"].append({"input": self.keys, "output": self.accessor(flat), "interpolation": mode})
        animation["channels"].append({"sampler": len(animation["samplers"]) - 1, "target": {"node": node, "path": path}})

    def mesh(self, **primitive):
        self.json.setdefault("meshes", []).append({"primitives": [primitive]})
        return len(self.json["meshes"]) - 1

    def points(self, rows, targets=(), **attributes):
        return self.mesh(mode=0, targets=targets, attributes={"POSITION": self.accessor(rows), **attributes})

    def nodes(self, *nodes):
        self.json["nodes"] = list(nodes)
        children = {child for node in nodes for child in node.get("children", ())}
        self.json["scenes"] = [{"nodes": [i for i in range(len(nodes)) if i not in children]}]


def away(point, sign):
    """So far that what is told of the whole tells of each of two points."""
    return [x + sign * 100 for x in point]


# An arm that carries a vertex of a sheet from (1, 0, 0) on, and a box; Assimp wants these lines.
LIBRARY_MODEL = """xof 0303txt 0032
AnimTicksPerSecond {
 10;
}
Frame Root {
 Frame Arm {
  FrameTransformMatrix {
   1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,5.0,0.0,1.0;;
  }
 }
 Frame Body {
  Mesh sheet {
   3; 0.0;0.0;0.0;, 1.0;0.0;0.0;, 0.0;1.0;0.0;; 1; 3;0,1,2;;
   SkinWeights {
    "Arm"; 1; 1; 1.0;
    1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,-5.0,0.0,1.0;;
   }
  }
 }
 Frame Box {
  Mesh box {
   3; 9.0;9.0;0.0;, 10.0;9.0;0.0;, 9.0;10.0;0.0;; 1; 3;0,1,2;;
  }
 }
}
AnimationSet Go {
 Animation { { Arm } AnimationKey { 2; 2; 0;3;0.0,5.0,0.0;;, 20;3;-4.0,5.0,0.0;;; } }
 Animation { { Box } AnimationKey { 2; 2; 0;3;0.0,0.0,0.0;;, 20;3;0.0,6.0,0.0;;; } }
}
"""


class AnimationTest(ViewerProgram):
    def told(self, text, *switches, expect=0):
        result = self.run_viewer(self.write("m.gltf", text), "--info", "--json", *switches)
        self.assertEqual(result.returncode, expect, result.stderr.decode())
        return json.loads(result.stdout)

    def assertAt(self, file, low, high):
        """Two points are where they should be, at five times."""
        for t in TIMES:
            bounds = self.told(file.text(), "--time", str(t))["bounds"]
            for told, wanted in ((bounds["min"], low(t)), (bounds["max"], high(t))):
                for k in range(3):
                    self.assertAlmostEqual(told[k], wanted[k], delta=3e-5, msg=f"time {t}, axis {k}")

    def test_nodes_go_where_the_keys_of_their_tracks_say(self):
        number = random.Random(3)
        file = Moving()
        point = [0.5, -1.25, 2]
        mesh = file.points([point])
        file.nodes(
            {"translation": [-100] * 3, "children": [1]}, {"children": [2]}, {"mesh": mesh},
            {"translation": [100] * 3, "children": [4]}, {"mesh": mesh},
        )  # fmt: skip
        above = Mover(number, file, 1, {"translation": "LINEAR", "rotation": "LINEAR"})
        below = Mover(number, file, 2, {"scale": "STEP", "rotation": "STEP"})
        curved = Mover(number, file, 4, {"translation": "CUBICSPLINE", "rotation": "CUBICSPLINE", "scale": "CUBICSPLINE"})
        self.assertAt(file, lambda t: away(above.place(t, below.place(t, point)), -1), lambda t: away(curved.place(t, point), 1))
        told = self.told(file.text(), "--time", "3.25")["bounds"]
        self.assertEqual(told, self.told(file.text(), "--time", "1.25")["bounds"], "behind its end it begins again")

    def test_skins_and_morph_targets_bend_meshes(self):
        number = random.Random(4)
        file = Moving()
        base, first, second = (rows_of(1, 3, lambda: number.uniform(-2, 2))[0] for _ in range(3))
        skinned = {"JOINTS_0": file.accessor([[0, 1, 1, 0]], "B", 5121), "WEIGHTS_0": file.accessor([[0.5, 1, 0.5, 0]])}
        targets = [{"POSITION": file.accessor([row])} for row in (first, second)]
        inverses = [[1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, 2, 3, 1] for x in (-1, 4)]
        file.json["skins"] = [{"joints": [1, 2], "inverseBindMatrices": file.accessor(inverses)}]
        bent = file.points([base], targets)
        both = file.points([base], targets, **skinned)
        file.nodes(
            {"translation": [-100] * 3, "children": [1, 2]}, {}, {}, {"mesh": both, "skin": 0},
            {"translation": [100] * 3, "children": [5]}, {"mesh": bent, "weights": [0.5, 0]},
        )  # fmt: skip
        joints = [Mover(number, file, i, {"translation": "LINEAR", "rotation": "CUBICSPLINE"}) for i in (1, 2)]
        tracks = {}
        for node, mode in ((3, "LINEAR"), (5, "CUBICSPLINE")):
            tracks[node] = (mode, rows_of(len(KEYS) * (3 if mode == "CUBICSPLINE" else 1), 2, lambda: number.uniform(-1, 1)))
            file.move(node, "weights", *tracks[node])

        def morphed(t, node):
            a, b = value_at(t, *tracks[node])
            return [p + a * q + b * r for p, q, r in zip(base, first, second)]

        def low(t):
            point = morphed(t, 3)
            moved = [joint.place(t, [x + o for x, o in zip(point, inverse[12:15])]) for joint, inverse in zip(joints, inverses)]
            return away([0.25 * a + 0.75 * b for a, b in zip(*moved)], -1)

        self.assertAt(file, low, lambda t: away(morphed(t, 5), 1))

    def test_what_the_import_library_reads_moves_too(self):
        model = self.write("m.x", LIBRARY_MODEL)
        for t, low, high in ((0, [0, 0, 0], [10, 10, 0]), (1, [-1, 0, 0], [10, 13, 0]), (2, [-3, 0, 0], [10, 16, 0])):
            told = json.loads(self.run_viewer(model, "--info", "--json", "--time", str(t)).stdout)
            self.assertEqual(told["bounds"], {"min": low, "max": high}, t)
            self.assertEqual(told["animations"], [{"name": "Go", "seconds": 2}])

    def test_an_animation_is_chosen_by_name_or_number(self):
        file = Moving()
        file.nodes({"mesh": file.points([[1, 2, 3]])})
        file.move(0, "translation", "LINEAR", [[5, 0, 0]] * 4)
        file.json["animations"] += [{"name": "up", "samplers": [], "channels": []}]
        file.move(0, "translation", "STEP", [[0, 7, 0]] * 4)
        for switches, place in (((), [6, 2, 3]), (("--animation", "up"), [1, 9, 3]), (("--animation", "0"), [6, 2, 3])):
            told = self.told(file.text(), *switches)
            self.assertEqual(told["bounds"]["min"], place, switches)
        self.assertEqual(told["animations"], [{"name": "first", "seconds": 2}, {"name": "up", "seconds": 2}])
        model = self.path("m.gltf")
        self.fails(1, [model, "--animation", "down", "--info"], "--animation down", "it has 0 (first), 1 (up)")
        self.fails(1, [model, "--frames", "3", "--turntable", "3", "-o", self.path("out.png")], "--turntable")
        still = file.text(animations=[])
        for switch, word in (("--time=1", "nothing in"), ("--animation=up", "no animation")):
            self.fails(1, [self.write("still.gltf", still), switch, "--info"], switch.split("=")[0], word)

    def moving_scene(self):
        """A large plate at rest; in front of it a skinned sheet, one that shines through and a lamp, which move."""
        file = Moving()
        square = [[-1, -1, 0], [1, -1, 0], [1, 1, 0], [-1, 1, 0]]
        corners = {"POSITION": file.accessor(square)}
        bones = {"JOINTS_0": file.accessor([[i // 2, 0, 0, 0] for i in range(4)], "B", 5121), "WEIGHTS_0": file.accessor([[1, 0, 0, 0]] * 4)}
        plain = {"indices": file.accessor([[i] for i in (0, 1, 2, 0, 2, 3)], "H", 5123)}
        file.json["materials"] = [{"alphaMode": "BLEND", "pbrMetallicRoughness": {"baseColorFactor": [0.2, 0.4, 1, 0.5]}}]
        file.json["extensions"] = {"KHR_lights_punctual": {"lights": [{"type": "directional", "intensity": 3}]}}
        file.json["skins"] = [{"joints": [4, 5]}]
        plate = file.mesh(attributes={**corners, "NORMAL": file.accessor([[0, 0, 1]] * 4)}, **plain)
        sheet = file.mesh(attributes={**corners, **bones}, **plain)
        glass = file.mesh(attributes=corners, material=0, **plain)
        lamp = {"extensions": {"KHR_lights_punctual": {"light": 0}}}
        file.nodes({"mesh": plate, "scale": [3, 3, 3]}, {"mesh": sheet, "skin": 0}, {"mesh": glass}, lamp, {}, {})
        file.move(2, "translation", "LINEAR", [[0, 0, 1], [0.5, 0, 1.5], [-0.5, 0, 0.5], [0, 1, 1]])
        file.move(3, "rotation", "LINEAR", [[0, 0, 0, 1], [0.2, 0, 0, 1], [0, 0.3, 0, 1], [0, 0, 0, 1]])
        file.move(5, "translation", "LINEAR", [[0, 0, 1], [0, 1, 2], [1, 0, 1], [0, 0, 1]])
        return self.write("scene.gltf", file.text())

    def test_a_sequence_is_its_single_pictures_and_uploads_only_what_moves(self):
        model = self.moving_scene()
        looks = ("--size", "64x48", "--samples", "1", "--shadows", "--ground")
        log = self.path("log")
        series = (model, *looks, "--cull", "--frames", "3", "--fps", "2", "-o", self.path("s.png"))
        result = self.run_viewer(*series, "--gl-log", log)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        pictures = [self.read(f"s_00{i + 1}.png") for i in range(3)]
        self.assertEqual(len(set(pictures)), 3)
        for i, time in ((0, ()), (2, ("--time", "1"))):
            self.picture(model, *looks, *time)
            self.assertEqual(self.read("out.png"), pictures[i], "what --cull leaves out isn't seen")
        with open(log) as file:
            later = file.read().split("-- scene\n", 1)[1]
        self.assertNotRegex(later, r"\bgl(Gen|Create)\w+\(")
        sizes = [int(size) for size in re.findall(r"glBuffer(?:Sub)?DataARB\([^)]*?, (\d+), (?:0x|NULL)", later)]
        corners, box = 6 * 3 * 4, 8 * 3 * 4  # of the sheet, whose triangles share none; of --cull
        self.assertEqual(sorted(set(sizes)), [corners, box], later)
        self.assertEqual(len(sizes), 3 * 4, "the positions and normals of one, the boxes of both, and back at the end")

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()


if __name__ == "__main__":
    unittest.main()
