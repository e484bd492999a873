#!/usr/bin/env python3
"""Textures of models, by the pixels of their pictures. Usage: texture_test.py ORLOVIEW [unittest arguments]"""

import math
import os
import struct
import unittest

from viewer_files import UNIT_SQUARE, png, read_png, textured
from viewer_program import ViewerProgram

RED, GREEN, BLUE, WHITE = (255, 0, 0, 255), (0, 255, 0, 255), (0, 0, 255, 255), (255, 255, 255, 255)
NEAREST = {"magFilter": 9728, "minFilter": 9728}
WHOLE = (-1, 1, 1, -1)


def linear(byte):
    value = byte / 255
    return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4


def encoded(value):
    value = min(max(value, 0), 1)
    return round(255 * (12.92 * value if value <= 0.0031308 else 1.055 * value ** (1 / 2.4) - 0.055))


def unlit(texture=0, factor=(1, 1, 1, 1), uv_set=0, transform=None, **more):
    use = {"index": texture, "texCoord": uv_set}
    if transform:
        use["extensions"] = {"KHR_texture_transform": transform}
    pbr = {"baseColorTexture": use, "baseColorFactor": list(factor)}
    return {"pbrMetallicRoughness": pbr, "extensions": {"KHR_materials_unlit": {}}, **more}


class Textures(ViewerProgram):
    def draw(self, quads, materials, pictures, *switches, size=64, expect=0, shadings=("fixed", "glsl"), **more):
        """The rows of (r, g, b, a) of a scene in front of the file's camera, the same with each shading."""
        names = []
        for number, rows in enumerate(pictures):
            names.append(f"{number}.png")
            self.write(names[-1], png(rows) if isinstance(rows, list) else rows)
        model = self.write("m.gltf", textured(quads, materials, names, **{"samplers": (NEAREST,), **more}))
        switches = switches if "--camera" in switches else (*switches, "--camera", "0")
        drawn = []
        for shading in shadings:
            _, _, channels, rows = self.picture(model, "--size", f"{size}x{size}", "--shading", shading, *switches, expect=expect)
            drawn.append([[tuple(row[x : x + channels]) + (255,) * (4 - channels) for x in range(0, len(row), channels)] for row in rows])
        for other in drawn[1:]:
            for row, other_row in zip(drawn[0], other):
                for pixel, other_pixel in zip(row, other_row):
                    self.close(other_pixel, pixel)
        return drawn[0]

    def close(self, pixel, wanted, tolerance=1):
        self.assertTrue(all(abs(a - b) <= tolerance for a, b in zip(pixel, wanted)), f"{pixel}, not {wanted}")

    def test_every_byte_of_a_picture_comes_back(self):
        ramp = [[(16 * y + x, 255 - (16 * y + x), x, 255) for x in range(16)] for y in range(16)]
        rows = self.draw([{"material": 0, "at": WHOLE}], [unlit()], [ramp])
        for y in range(16):
            for x in range(16):
                self.assertEqual(rows[4 * y + 2][4 * x + 2], ramp[y][x])

    def test_wrap_modes(self):
        uvs = [[(4 * u - 1.5, 4 * v - 1.5) for u, v in UNIT_SQUARE]]
        colours = [[RED, GREEN], [BLUE, WHITE]]
        wraps = {
            33071: lambda t: min(max(t, 0), 0.999),
            33648: lambda t: t % 1 if math.floor(t) % 2 == 0 else 0.9999 - t % 1,
            10497: lambda t: t % 1,
        }
        for code_u, wrap_u in wraps.items():
            for code_v, wrap_v in wraps.items():
                sampler = {**NEAREST, "wrapS": code_u, "wrapT": code_v}
                rows = self.draw([{"material": 0, "at": WHOLE, "uvs": uvs}], [unlit()], [colours], samplers=(sampler,))
                for y in range(4, 64, 8):
                    for x in range(4, 64, 8):
                        u, v = (4 * (t + 0.5) / 64 - 1.5 for t in (x, y))
                        wanted = colours[int(2 * wrap_v(v))][int(2 * wrap_u(u))]
                        self.assertEqual(rows[y][x], wanted, (code_u, code_v, x, y))

    def test_filters_mix_linear_light(self):
        smooth, mipmapped = {"magFilter": 9729, "minFilter": 9729, "wrapS": 33071}, {"minFilter": 9984}
        rows = self.draw([{"material": 0, "at": WHOLE}], [unlit()], [[[RED, GREEN]]], samplers=(smooth,))
        self.close(rows[32][31], (encoded(0.508), encoded(0.492), 0, 255), 2)
        checker = [[WHITE if (x + y) % 2 else (0, 0, 0, 255) for x in range(64)] for y in range(64)]
        rows = self.draw([{"material": 0, "at": WHOLE}], [unlit()], [checker], size=16, samplers=(mipmapped,))
        self.close(rows[8][8], (188, 188, 188, 255))

    def test_a_transform_moves_turns_and_scales(self):
        colours = [[RED, GREEN], [BLUE, WHITE]]
        for transform in ({"offset": [0.5, 0]}, {"scale": [0.5, 1]}, {"rotation": math.pi / 2}, {"offset": [0.2, 0.7], "scale": [2, 0.5], "rotation": 0.6}):
            rows = self.draw([{"material": 0, "at": WHOLE}], [unlit(transform=transform)], [colours])
            c, s = math.cos(transform.get("rotation", 0)), math.sin(transform.get("rotation", 0))
            (sx, sy), (ox, oy) = transform.get("scale", (1, 1)), transform.get("offset", (0, 0))
            wrong = 0
            for y in range(64):
                for x in range(64):
                    u, v = sx * (x + 0.5) / 64, sy * (y + 0.5) / 64
                    u, v = c * u + s * v + ox, -s * u + c * v + oy
                    wrong += rows[y][x] != colours[int(2 * (v % 1))][int(2 * (u % 1))]
            self.assertLess(wrong, 64 * 64 * 0.12, transform)  # pixels on the edges mix

    def test_alpha_counts_only_where_the_material_says_so(self):
        picture = [[(200, 100, 50, alpha) for alpha in (0, 100, 200, 255)]]
        quads = [{"material": 0, "at": WHOLE}]
        modes = {"OPAQUE": (255, 255, 255, 255), "MASK": (0, 0, 255, 255), "BLEND": (0, 100, 200, 255)}
        for mode, alphas in modes.items():
            rows = self.draw(quads, [unlit(alphaMode=mode, alphaCutoff=0.6)], [picture], "--background", "transparent")
            for column, alpha in enumerate(alphas):
                self.close(rows[32][16 * column + 8], (200, 100, 50, alpha) if alpha else (0, 0, 0, 0), 2)
        rows = self.draw(quads, [unlit(alphaMode="MASK", alphaCutoff=0.3)], [picture], "--background", "#0000ff")
        self.assertEqual([rows[32][x] for x in (8, 24, 40)], [BLUE, (200, 100, 50, 255), (200, 100, 50, 255)])

    def test_two_textures_with_a_set_of_coordinates_each(self):
        emissive = {"index": 1, "texCoord": 0}
        material = unlit(uv_set=1, factor=(0.5, 1, 1, 1), emissiveTexture=emissive, emissiveFactor=[1, 1, 0.5])
        flipped = [(1 - u, v) for u, v in UNIT_SQUARE]
        base, glow = [[(255, 0, 0, 255), (0, 0, 0, 255)]], [[(0, 90, 0, 255), (0, 0, 255, 255)]]
        quads = [{"material": 0, "at": WHOLE, "uvs": [UNIT_SQUARE, flipped]}]
        rows = self.draw(quads, [material], [base, glow], shadings=["fixed"])
        self.close(rows[32][16], (0, 90, 0, 255))
        self.close(rows[32][48], (188, 0, 188, 255))

    def test_a_frame_leaves_no_texture_to_the_next(self):
        plain = {"pbrMetallicRoughness": {"baseColorFactor": [0, 0, 1, 1]}, "extensions": {"KHR_materials_unlit": {}}}
        glowing = unlit(emissiveTexture={"index": 0}, emissiveFactor=[1, 1, 1], transform={"scale": [3, 3]})
        quads = [{"material": 0, "at": (-1, 1, 1, 0)}, {"material": 1, "at": (-1, 0, 1, -1)}]
        rows = self.draw(quads, [plain, glowing], [[[RED, GREEN]]], "--tile", "16", "--samples", "1", shadings=["fixed"])
        self.assertEqual({pixel for row in rows[:32] for pixel in row}, {BLUE}, "drawn first, in each tile")
        self.assertEqual({pixel for row in rows[32:] for pixel in row}, {RED, GREEN, (255, 255, 0, 255)})

    def test_a_tile_begins_without_the_depth_of_the_last(self):
        materials = [unlit(0), unlit(0, (1, 1, 1, 0.5), alphaMode="BLEND"), unlit(1)]
        quads = [{"material": 0, "at": (-1, 1, 0, -1), "z": 2}, {"material": 1, "at": WHOLE, "z": 1}, {"material": 2, "at": WHOLE, "z": 0}]
        rows = self.draw(quads, materials, [[[RED]], [[BLUE]]], "--tile", "32")
        for y in (8, 56):
            self.close(rows[y][8], RED)
            self.close(rows[y][56], (188, 0, 188, 255))

    def test_emission_is_not_tinted_by_the_base_colour(self):
        material = unlit(emissiveFactor=[0, linear(120), 0])
        rows = self.draw([{"material": 0, "at": WHOLE}], [material], [[[RED]]], shadings=["fixed"])
        self.close(rows[32][32], (255, 120, 0, 255))

    def test_a_lit_surface_sends_out_its_emission_once(self):
        dark = {"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}, "baseColorFactor": [0, 0, 0, 1], "metallicFactor": 0}}
        quads = [{"material": 0, "at": WHOLE}]
        rows = self.draw(quads, [{**dark, "emissiveFactor": [0, 0.25, 0]}], [[[WHITE]]], shadings=["fixed"])
        self.close(rows[32][32], (0, encoded(0.25), 0, 255))
        rows = self.draw(quads, [{**dark, "emissiveFactor": [1, 1, 1], "emissiveTexture": {"index": 1}}], [[[WHITE]], b"broken"], expect=3, shadings=["fixed"])
        self.close(rows[32][32], (0, 0, 0, 255))

    def test_overlapping_transparent_quads_from_both_sides(self):
        half = dict(alphaMode="BLEND", doubleSided=True)
        materials = [unlit(0, (1, 1, 1, 0.5), **half), unlit(1, (1, 1, 1, 0.5), **half)]
        near, far = {"at": WHOLE, "z": 1}, {"at": WHOLE, "z": 0}
        one_mesh = [[{**near, "material": 0, "uvs": [[(0.25, 0.5)] * 4]}, {**far, "material": 0, "uvs": [[(0.75, 0.5)] * 4]}]]
        two_groups = [{**far, "material": 0, "uvs": [[(0.75, 0.5)] * 4]}, {**near, "material": 0, "uvs": [[(0.25, 0.5)] * 4]}]
        for quads in (one_mesh, [list(reversed(one_mesh[0]))], two_groups, list(reversed(two_groups))):
            for camera, front in (("0", 0), ("1", 2)):
                rows = self.draw(quads, materials, [[[RED, BLUE]], [[RED]]], "--camera", camera, "--background", "black")
                wanted = [encoded(0.25), 0, encoded(0.25), 255]
                wanted[front] = encoded(0.5)
                self.close(rows[32][32], wanted)

    def test_materials_that_use_a_picture_alike_share_a_texture(self):
        quads = [{"material": i, "at": WHOLE, "z": i} for i in range(3)]
        os.mkdir(self.path("a"))
        names = self.names_made(quads, [unlit(), unlit(factor=(1, 0, 0, 1)), unlit(uv_set=0)])
        self.assertEqual(names + 1, self.names_made(quads, [unlit(), unlit(alphaMode="BLEND"), unlit()]))

        self.assertEqual(names, self.names_made(quads, [unlit(i) for i in range(3)], ["0.png", "a/../0.png"]), "however it is named")

    def names_made(self, quads, materials, other_names=()):
        if other_names:
            self.write("m.gltf", textured(quads, materials, ["0.png", *other_names]))
        else:
            self.draw(quads, materials, [[[RED]]])
        told = self.run_viewer(self.path("m.gltf"), "--stats", "--shading", "fixed", "-o", self.path("out.png")).stderr.decode()
        return int(told.split(" GL names made")[0].split()[-1])

    def test_a_picture_that_cannot_be_read_is_told_once_and_left_out(self):
        good = png([[GREEN] * 8] * 8)
        for broken, word in ((b"", "empty"), (b"no picture", "one of these"), (good[: len(good) // 2], "cut off"), (good[:45] + b"\xff\xff" + good[47:], "0.png")):
            model = self.write("m.gltf", textured([{"material": i, "at": WHOLE, "z": i} for i in range(2)], [unlit(factor=(0, 0, 1, 1)), unlit(factor=(1, 0, 0, 1))], ["0.png"]))
            self.write("0.png", broken)
            result = self.run_viewer(model, "--camera", "0", "--size", "16x16", "-o", self.path("out.png"))
            message = result.stderr.decode()
            self.assertEqual((result.returncode, message.count("\n")), (3, 1), message)
            for part in ("m.gltf: warning: the picture '0.png': left out", word):
                self.assertIn(part, message)
            with open(self.path("out.png"), "rb") as file:
                self.assertEqual(list(read_png(file.read())[3][8][24:27]), [255, 0, 0])

    def test_what_would_fill_the_memory_is_told_by_its_first_bytes(self):
        svg = b"<svg xmlns='http://www.w3.org/2000/svg' width='40000' height='40000'><rect width='9' height='9'/></svg>"
        files = {"a.svg": svg, "b.png": b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + struct.pack(">II", 30000, 30000) + b"\x08\x06\0\0\0", "c.png": b""}
        for name, content in files.items():
            self.write(name, content)
        os.truncate(self.path("c.png"), 1 << 32)
        model = self.write("m.gltf", textured([{"material": i, "at": WHOLE, "z": i} for i in range(3)], [unlit(i) for i in range(3)], files))
        result = self.run_viewer(model, "-o", self.path("out.png"), "--size", "9x9")
        told = result.stderr.decode()
        self.assertEqual((result.returncode, told.count("left out")), (3, 3), told)
        self.assertEqual((told.count("save it as one of these"), told.count("more than 16384 x 16384 pixels")), (2, 1), told)

    def test_a_picture_beyond_the_limit_is_reduced(self):
        limit = int(self.run_viewer("--gl-info").stdout.decode().split("texture size: ")[1].split()[0])
        half = limit // 2 + 8
        quads, wide = [{"material": 0, "at": WHOLE}], [[RED] * half + [BLUE] * half] * 2
        rows = self.draw(quads, [unlit()], [wide], expect=3)
        self.assertEqual((rows[32][8], rows[32][56]), (RED, BLUE))
        told = self.run_viewer(self.path("m.gltf"), "-o", self.path("out.png")).stderr.decode()
        self.assertIn(f"'0.png': drawn with {half}x1 pixels of its {2 * half}x2", told)


if __name__ == "__main__":
    unittest.main()
