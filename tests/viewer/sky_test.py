#!/usr/bin/env python3
"""Pictures of a sky, as light and behind the model, against integrals over them. Usage: sky_test.py ORLOVIEW [unittest arguments]"""

import math
import re
import struct
import unittest

from shaded_pictures import DARK, WHOLE, ShadedPictures, dot, spheres
from viewer_files import textured

WIDTH, HEIGHT = 64, 32
SPHERES = ("--size", "240x48", "--eye", "7.5,0,40", "--target", "7.5,0,0", "--fov", "5", "--samples", "1")


def rgbe(color):
    fraction, exponent = math.frexp(max(color))
    return bytes([*(int(c * 256 * fraction / max(color)) for c in color), exponent + 128]) if max(color) > 0 else bytes(4)


def packed_row(row):
    """A run of one byte and one of several for each channel, as the rest of it goes."""
    text = bytes([2, 2, len(row) >> 8, len(row) & 255])
    for channel in zip(*row):
        same = next((i for i, byte in enumerate(channel) if byte != channel[0]), len(channel))
        text += bytes([128 + same, channel[0]]) + (bytes([len(channel) - same, *channel[same:]]) if same < len(channel) else b"")
    return text


def plain_row(row, runs=False):
    """Pixels; with runs the second and what is like it as ones and a count."""
    same = next((i for i, pixel in enumerate(row) if pixel != row[0]), len(row)) if runs else 1
    return row[0] + (bytes([1, 1, 1, same - 1]) if same > 1 else b"") + b"".join(row[same:])


def hdr(rows, variables="", pack=plain_row):
    size = f"-Y {len(rows)} +X {len(rows[0])}\n"
    return f"#?RADIANCE\n{variables}FORMAT=32-bit_rle_rgbe\n\n{size}".encode() + b"".join(pack([rgbe(c) for c in row]) for row in rows)


def exr(rows):
    """Uncompressed, of 32-bit floats."""
    width, height = len(rows[0]), len(rows)
    window = struct.pack("<4i", 0, 0, width - 1, height - 1)
    channels = b"".join(name + b"\0" + struct.pack("<i4x2i", 2, 1, 1) for name in (b"B", b"G", b"R")) + b"\0"
    attributes = (("channels", "chlist", channels), ("compression", "compression", b"\0"), ("dataWindow", "box2i", window), ("displayWindow", "box2i", window))
    attributes += (("lineOrder", "lineOrder", b"\0"), ("pixelAspectRatio", "float", struct.pack("<f", 1)))
    attributes += (("screenWindowCenter", "v2f", bytes(8)), ("screenWindowWidth", "float", struct.pack("<f", 1)))
    head = struct.pack("<2I", 20000630, 2) + b"".join(f"{name}\0{kind}\0".encode() + struct.pack("<i", len(value)) + value for name, kind, value in attributes) + b"\0"
    size = 12 * width + 8
    lines = b"".join(struct.pack("<2i", y, 12 * width) + b"".join(struct.pack(f"<{width}f", *(c[i] for c in row)) for i in (2, 1, 0)) for y, row in enumerate(rows))
    return head + b"".join(struct.pack("<Q", len(head) + 8 * height + size * y) for y in range(height)) + lines


def constant(color):
    return [[color] * WIDTH] * HEIGHT


def direction(u, v):
    """Where a place of the picture is seen in the world: its middle behind the model, its right to the right."""
    around, down = 2 * math.pi * (u - 0.5), math.pi * v
    return (math.sin(down) * math.sin(around), math.cos(down), -math.sin(down) * math.cos(around))


def seen_from_normal(alpha, cosine):
    """The weight of a direction in what GGX's facets mirror."""
    shadowing = cosine + math.sqrt(alpha**2 + (1 - alpha**2) * cosine**2)
    return cosine / shadowing / ((1 + cosine) / 2 * (alpha**2 - 1) + 1) ** 2


def integral(columns, rows, turn, weight):
    """Of a picture that is 1 there and 0 elsewhere, looked at along +z, turned to the right by degrees."""
    fine, steps = 12, 4000
    total = 0
    for y in range(rows[0] * fine, rows[1] * fine):
        for x in range(columns[0] * fine, columns[1] * fine):
            u, v = (x + 0.5) / WIDTH / fine + turn / 360, (y + 0.5) / HEIGHT / fine
            cosine = direction(u, v)[2]
            total += weight(cosine) * math.sin(math.pi * v) * 2 * math.pi**2 / (WIDTH * HEIGHT * fine**2) if cosine > 0 else 0
    cosines = [(i + 0.5) / steps for i in range(steps)]
    return total / (2 * math.pi * sum(weight(c) for c in cosines) / steps)


class SkyPictures(ShadedPictures):
    def sky(self, rows, name="sky.hdr"):
        return ("--sky", self.write(name, exr(rows) if name.endswith(".exr") else hdr(rows)))

    def test_a_constant_picture_is_a_furnace(self):
        metal = [{"pbrMetallicRoughness": {"roughnessFactor": r}} for r in (0, 0.3, 0.6, 1)]
        coated = {"pbrMetallicRoughness": {"metallicFactor": 0}, "extensions": {"KHR_materials_clearcoat": {"clearcoatFactor": 1}}}
        model = self.write("m.gltf", spheres([*metal, {"pbrMetallicRoughness": {"metallicFactor": 0}}, coated], DARK))
        switches = (*SPHERES, "--background", "black")
        wanted = self.floats(model, *switches, "--sky", "white")[2]
        self.near(wanted[24][17], 1, 0.01)  # the smooth one
        for name in ("sky.hdr", "sky.exr"):
            drawn = self.floats(model, *switches, *self.sky(constant((1, 0.5, 2)), name))[2]
            for row, other in zip(drawn, wanted):
                for color, white in zip(row, other):
                    self.near(color, (white[0], white[1] / 2, white[2] * 2), 0.01)

    def test_a_bright_spot_lights_as_the_integrals_over_it(self):
        columns, rows = (0, 3), (8, 11)  # above the eye and to its left, where the picture's ends meet
        spot = [[(64, 32, 0) if columns[0] <= x < columns[1] and rows[0] <= y < rows[1] else (0, 0, 0) for x in range(WIDTH)] for y in range(HEIGHT)]
        matt = {"pbrMetallicRoughness": {"metallicFactor": 0}, "extensions": {"KHR_materials_specular": {"specularFactor": 0}}}
        cases = [({"pbrMetallicRoughness": {"roughnessFactor": r}}, lambda c, a=r * r: seen_from_normal(a, c)) for r in (0.25, 0.5, 0.7071, 1)]
        for material, weight in [(matt, lambda c: c), *cases]:
            response = self.quad(material, lights=DARK, switches=self.sky(constant((1, 1, 1))))[0]
            for turn in (0, 25):
                color = self.quad(material, lights=DARK, switches=(*self.sky(spot), "--sky-rotation", str(turn)))
                wanted = response * integral(columns, rows, turn, weight)
                for channel, strength in enumerate((64, 32, 0)):
                    self.assertAlmostEqual(color[channel], strength * wanted, delta=0.04 * strength * wanted + 0.002, msg=f"{material} turned by {turn}")

    def test_the_sky_stands_behind_and_is_exposed(self):
        blocks = [[((x // 8) / 8, (y // 8) / 4, 2) for x in range(WIDTH)] for y in range(HEIGHT)]
        model = self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{}], []))
        look = ("--size", "33x33", "--eye", "90,0,0", "--fov", "60", "--samples", "1", "--show-sky", *self.sky(blocks))
        for column, row in ((0, 0), (1, 2), (3, 1), (4, 3), (7, 2)):
            d = direction((column + 0.5) / 8, (row + 0.5) / 4)
            towards = ("--target", f"{90 + 5 * d[0]},{5 * d[1]},{5 * d[2]}")
            more = ("--orthographic",) if row == 2 else ()
            self.near(self.floats(model, *look, *towards, *more)[2][16][16], (column / 8, row / 4, 2))
        rows = self.floats(model, *look, "--target", "90,0,-5", "--exposure", "-1")[2]
        side = math.tan(math.pi / 6) * 30 / 33
        u, v = 0.5 + math.atan2(side, 1) / 2 / math.pi, math.acos(side / math.sqrt(2 * side**2 + 1)) / math.pi
        self.near(rows[31][31], (int(8 * u) / 16, int(4 * v) / 8, 1))
        lit, glowing = ({"pbrMetallicRoughness": {"metallicFactor": 0}}, {"emissiveFactor": [1, 0.5, 0.25]})
        for material, factor in ((lit, 2), (glowing, 2), ({**lit, "extensions": {"KHR_materials_unlit": {}}}, 1)):
            for sky in (("--sky", "clear"), self.sky(blocks)):
                once = self.quad(material, switches=sky)
                self.near(self.quad(material, switches=(*sky, "--exposure", "1")), [factor * c for c in once])

    def test_tiles_and_both_languages_draw_the_same(self):
        day = [[(0.4, 0.6, 1 + 20 * max(0, dot(direction((x + 0.5) / WIDTH, (y + 0.5) / HEIGHT), (0.6, 0.64, -0.48))) ** 60) if y < 16 else (0.2, 0.15, 0.1) for x in range(WIDTH)] for y in range(HEIGHT)]
        layers = {"KHR_materials_sheen": {"sheenColorFactor": [1, 1, 1]}, "KHR_materials_transmission": {"transmissionFactor": 0.5}, "KHR_materials_clearcoat": {"clearcoatFactor": 1}}
        materials = [{"pbrMetallicRoughness": {"roughnessFactor": r, "metallicFactor": m}} for r, m in ((0, 1), (0.2, 1), (0.5, 0))]
        materials += [{"pbrMetallicRoughness": {"roughnessFactor": 0.1, "metallicFactor": 0}, "extensions": {name: layer}} for name, layer in layers.items()]
        model = self.write("m.gltf", spheres(materials))
        switches = (model, *self.sky(day), *SPHERES, "--show-sky")
        result = self.run_viewer(*switches, "--compare", "glsl", "cg").stdout.decode()
        self.assertLessEqual(int(re.search(r"largest difference (\d+)", result)[1]), 2, result)
        self.assertEqual(self.picture(*switches, "--tile", "48"), self.picture(*switches))

    def test_whatever_way_it_is_stored(self):
        rows = [[(0.25, 0.5, 1)] * 20 + [(2, y / 32, 0.125)] * 44 for y in range(HEIGHT)]
        look = (self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{}], [])), "--size", "64x32", "--fov", "90", "--sky-rotation", "120", "--show-sky")
        wanted = self.picture(*look, *self.sky(rows))
        halved = [[tuple(c / 2 for c in color) for color in row] for row in rows]
        for name, data in {"packed": hdr(rows, pack=packed_row), "runs": hdr(rows, pack=lambda row: plain_row(row, True)), "exposed": hdr(halved, "EXPOSURE=0.5\n")}.items():
            self.assertEqual(self.picture(*look, "--sky", self.write(f"{name}.hdr", data)), wanted, name)
        large = b"".join(b"".join(rgbe(color) * 80 for color in row) * 80 for row in rows)
        large = hdr(rows).split(b"-Y")[0] + b"-Y 2560 +X 5120\n" + large
        drawn = self.picture(*look, "--sky", self.write("large.hdr", large))[3]
        self.assertEqual(drawn[16][93:102], wanted[3][16][93:102])
    def test_what_is_no_light_is_dark_and_what_is_no_sky_is_told(self):
        model = self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{}], []))
        odd = (float("nan"), float("inf"), -1)
        for color in sum(self.floats(model, "--size", "16x16", "--show-sky", *self.sky([[odd] * 8] * 4, "odd.exr"))[2], []):
            self.assertTrue(color[0] == 0 <= color[2] and math.isfinite(color[1]), color)
        wide = self.run_viewer(model, *self.sky([[(1, 1, 1)] * 9] * 3, "wide.hdr"), "-o", self.path("wide.png"))
        self.assertEqual((wide.returncode, "it is 9 x 3 pixels, not twice as wide as high" in wide.stderr.decode()), (0, True))
        whole, out = constant((1, 1, 1)), ("-o", self.path("out.png"))
        for name, data, words in (
            ("cut.hdr", hdr(whole)[:-9], "it is cut off"),
            ("cut.exr", exr(whole)[:-9], "it is damaged"),
            ("long.hdr", hdr(whole, pack=packed_row).replace(b"\xc0", b"\xff", 1), "a row is longer than the picture is wide"),
            ("huge.hdr", hdr(whole).replace(b"-Y 32 +X 64", b"-Y 90000 +X 180000"), "more than 16384 x 16384 pixels"),
            ("turned.hdr", hdr(whole).replace(b"-Y", b"+Y"), "turned or mirrored"),
            ("xyz.hdr", hdr(whole).replace(b"rgbe", b"xyze"), "not red, green and blue"),
            ("text.exr", b"a sky\n", "neither Radiance (.hdr) nor OpenEXR (.exr)"),
            ("empty.hdr", b"", "neither Radiance"),
        ):
            self.fails(1, [model, *out, "--sky", self.write(name, data)], name, words)
        self.fails(1, [model, *out, "--sky", "none.hdr"], "--sky none.hdr: there is no such file")
        self.fails(1, [model, *out, "--sky", "none", "--show-sky"], "--show-sky: there is none")
        self.fails(1, [model, *out, "--sky-rotation", "9"], "--sky-rotation: only a picture")
        self.fails(1, [model, *out, "--exposure", "inf"], "--exposure inf")


if __name__ == "__main__":
    unittest.main()
