#!/usr/bin/env python3
"""orloview as a user meets it: exit code, message, picture. Usage: program_test.py ORLOVIEW [unittest arguments]"""

import base64
import filecmp
import json
import math
import os
import pathlib
import pty
import re
import resource
import signal
import struct
import subprocess
import sys
import time
import unittest

from viewer_files import gltf, png, read_png, textured, unlit
from viewer_program import ORLOVIEW, ViewerProgram, refuse_nameless_files


class Program(ViewerProgram):
    # What is drawn

    def test_the_large_samples_hold_what_was_ordered(self):
        script = os.path.join(os.path.dirname(__file__), "../../samples/make_large.py")
        subprocess.run([sys.executable, script, self.folder, "--triangles", "400", "--meshes", "7"], check=True, stdout=subprocess.DEVNULL)
        models = [self.path("large_model.glb"), self.path("large_scene.glb")]
        told = json.loads(self.run_viewer(*models, "--info", "--json").stdout)
        self.assertEqual((told["groups"], told["warnings"]), (8, []))
        self.assertGreater(told["triangles"], 400)
        rows = self.picture(*models, "--size", "64x48")[3]
        drawn = sum(row[at : at + 3] != rows[0][:3] for row in rows for at in range(0, 64 * 3, 3))
        self.assertGreater(drawn, 300)

    def test_colours_are_linear_and_the_picture_is_srgb(self):
        model = self.write("m.gltf", gltf(unlit(0.5, 0.0, 1.0)))
        width, height, channels, rows = self.picture(model, "--size", "64x48", "--background", "#204060")
        self.assertEqual((width, height, channels), (64, 48, 3))
        self.assertEqual(list(rows[26][32 * 3 : 33 * 3]), [188, 0, 255])
        self.assertEqual(list(rows[0][:3]), [0x20, 0x40, 0x60])

    def test_backgrounds_and_unlit_colours_stay_as_they_are_beside_lit_ones(self):
        quads = [{"material": 0, "at": (-1, 1, 0, -1)}, {"material": 1, "at": (0, 0.9, 0.9, -1)}]
        model = self.write("m.gltf", textured(quads, [unlit(1, 0, 1), {"pbrMetallicRoughness": {"metallicFactor": 0}}], []))
        switches = ("--size", "64x64", "--camera", "0", "--background", "white")
        for shading in ("glsl", "cg"):
            rows = self.picture(model, *switches, "--shading", shading)[3]
            self.assertEqual([list(rows[y][3 * x : 3 * x + 3]) for x, y in ((62, 2), (16, 32))], [[255, 255, 255], [255, 0, 255]])
            self.assertTrue(200 < rows[32][48 * 3] < 255, rows[32][48 * 3])  # lit: its tones are mapped

    def test_plain_models_are_grey_and_fill_the_picture(self):
        fan = "".join(f"v {math.cos(a)} {math.sin(a)} 0\n" for a in (i * math.pi / 18 for i in range(36))) + "v 0 0 1\nv 0 0 -1\n"
        fan += "".join(f"f {i + 1} {(i + 1) % 36 + 1} 37\nf {(i + 1) % 36 + 1} {i + 1} 38\n" for i in range(36))
        rows = self.picture(self.write("m.obj", fan), "--size", "160x100", "--background", "blue", "--samples", "1")[3]
        seen = [(x, y) for y in range(100) for x in range(160) if list(rows[y][3 * x : 3 * x + 3]) != [0, 0, 255]]
        self.assertAlmostEqual(max(max(p[axis] for p in seen) - min(p[axis] for p in seen) for axis in (0, 1)) + 1, 85, delta=1.5)
        self.assertLess(sum(min(rows[y][3 * x : 3 * x + 3]) >= 245 for x, y in seen), 0.02 * len(seen))

    def test_the_ground_shows_what_keeps_light_off(self):
        disc = "".join(f"v {math.cos(a)} 0.5 {math.sin(a)}\n" for a in (i * math.pi / 18 for i in range(36))) + "v 0 0.5 0\n"
        disc += "".join(f"f {i + 1} {(i + 1) % 36 + 1} 37\n" for i in range(36)) + "v 0.9 0 0\nv 0.91 0 0\nv 0.9 0 0.01\nf 38 39 40\n"
        model = self.write("disc.obj", disc)
        looks = ("--background", "transparent", "--size", "64x64", "--target", "0,0,0", "--azimuth", "0")
        for shading in ("fixed", "glsl"):
            switches = (*looks, "--shading", shading, "--elevation", "10")
            rows = self.picture(model, *switches, "--ground")[3]
            # A disc of radius 1 at a height of 0.5 keeps off 1 / (1 + 0.25) of an even sky.
            self.assertEqual(list(rows[32][128:131]), [0, 0, 0])
            self.assertAlmostEqual(rows[32][131], 255 * 0.8 * 0.8, delta=10)
            self.assertEqual(self.picture(model, *switches)[3][32][131], 0)
        below = (*looks, "--elevation=-10")
        self.assertEqual(self.picture(model, *below, "--ground"), self.picture(model, *below), "seen from below it isn't there")

    def test_views_by_name_and_angle(self):
        sides = {"front": (0, 0), "back": (180, 0), "right": (90, 0), "left": (-90, 0), "top": (0, 90), "bottom": (0, -90)}
        normals = ((0, 0, 1), (0, 0, -1), (1, 0, 0), (-1, 0, 0), (0, 1, 0), (0, -1, 0))
        vertices, faces, colors = [], [], {}
        for number, (name, (x, y, z)) in enumerate(zip(sides, normals)):
            u, v = (y, z, x), (z, x, y)  # turned on by one axis, and by two: from u to v is round the normal
            colors[name] = [40 * number + 20, 255 - 40 * number, 100]
            for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
                vertices.append([c + a * d + b * e for c, d, e in zip((x, y, z), u, v)] + colors[name])
            faces.append([4, *(4 * number + i for i in range(4))])
        head = "ply\nformat ascii 1.0\nelement vertex 24\n" + "".join(f"property float {c}\n" for c in "xyz")
        head += "".join(f"property uchar {c}\n" for c in ("red", "green", "blue")) + "element face 6\nproperty list uchar int vertex_indices\nend_header\n"
        cube = self.write("cube.ply", head + "".join(" ".join(map(str, row)) + "\n" for row in vertices + faces))
        looks = ("--size", "40x40", "--no-lights", "--samples", "1")
        shown = {name: self.picture(cube, "--view", name, *looks)[3] for name in (*sides, "iso")}
        for name, (azimuth, elevation) in sides.items():
            self.assertEqual(shown[name], self.picture(cube, f"--azimuth={azimuth}", f"--elevation={elevation}", *looks)[3], name)
        middle = {name: list(rows[20][60:63]) for name, rows in shown.items()}
        self.assertEqual(len({tuple(color) for name, color in middle.items() if name in sides}), 6)
        seen = [tuple(row[x : x + 3]) for row in shown["iso"] for x in range(0, 120, 3)]
        counts = [seen.count(tuple(middle[name])) for name in ("front", "right", "top")]
        self.assertTrue(min(counts) > 0.9 * max(counts) > 200, counts)
        self.assertNotIn(tuple(middle["back"]), seen)

    def test_lit_faces_keep_their_hue_and_turn_darker_away_from_the_key_light(self):
        material = {"pbrMetallicRoughness": {"baseColorFactor": [0.8, 0.4, 0.1, 1], "roughnessFactor": 1}}
        model = self.write("m.gltf", gltf(material))
        rows = self.picture(model, "--size", "64x48", "--shading", "fixed")[3]
        r, g, b = rows[26][32 * 3 : 33 * 3]
        self.assertTrue(r > g > b > 0, (r, g, b))
        model = self.write("m.gltf", gltf(material, nodes=[{"mesh": 0, "scale": [5, 5, 5]}]))
        rows = self.picture(model, "--size", "64x48", "--shading", "fixed")[3]
        self.assertEqual((r, g, b), tuple(rows[26][32 * 3 : 33 * 3]), "however large the model is")
        # Two triangles of a roof, their ridge along y: the left one looks towards the key light.
        roof = ((-1, -1, 0), (0, -1, 0.7), (0, 1, 0.7), (0, -1, 0.7), (1, -1, 0), (0, 1, 0.7))
        rows = self.picture(self.write("m.gltf", gltf(material, roof)), "--size", "64x64", "--shading", "fixed", "--eye", "0,0,6", "--target", "0,0,0")[3]
        left, right = rows[44][26 * 3], rows[44][38 * 3]
        self.assertTrue(left > right + 20 > 60, (left, right))

    def test_transparent_background_and_blending(self):
        model = self.write("m.gltf", gltf(unlit(1, 0, 0, 0.5, alphaMode="BLEND")))
        _, _, channels, rows = self.picture(model, "--size", "64x48", "--background", "transparent")
        self.assertEqual(channels, 4)
        self.assertEqual(list(rows[0][:4]), [0, 0, 0, 0])
        self.assertEqual(list(rows[26][32 * 4 : 33 * 4]), [255, 0, 0, 128])
        _, _, _, rows = self.picture(model, "--size", "64x48", "--background", "#0000ff")
        self.assertEqual(list(rows[26][32 * 3 : 33 * 3]), [188, 0, 188])

    def test_back_faces_are_hidden_unless_double_sided(self):
        for double_sided in (False, True):
            model = self.write("m.gltf", gltf(unlit(1, 1, 1, doubleSided=double_sided)))
            rows = self.picture(model, "--size", "64x48", "--background", "black", "--eye", "0,0,-6")[3]
            self.assertEqual(rows[26][32 * 3], 255 if double_sided else 0)

    def test_mirrored_nodes_keep_their_front(self):
        model = self.write("m.gltf", gltf(unlit(1, 1, 1), nodes=[{"mesh": 0, "scale": [-1, 1, 1]}]))
        rows = self.picture(model, "--size", "64x48", "--background", "black")[3]
        self.assertEqual(rows[26][32 * 3], 255)

    def test_points_and_lines(self):
        corners = ((-1, -1, 0), (1, -1, 0), (1, 1, 0), (-1, 1, 0))
        for mode, at in ((0, None), (2, None), (1, None)):
            model = self.write("m.gltf", gltf(unlit(1, 1, 1), corners, mode))
            rows = self.picture(model, "--size", "64x64", "--background", "black")[3]
            lit = sum(1 for row in rows for value in row[::3] if value > 60)
            self.assertGreater(lit, 12 if mode == 0 else 60)
            self.assertLess(rows[32][32 * 3], 60, "the middle is empty")

    def test_only_what_is_empty_is_left_out(self):
        model = self.write("m.obj", "v -1 0 0\nv 1 0 0\nv 0 0.5 0\nf 1 2 3\nv 0 2 0\np 4\nl 2 4\n")
        for switches in ((), ("--point-size", "30"), ("--orthographic",), ("--eye", "0,0,0.1"), ("--turntable", "1")):
            name = "o_001.png" if "--turntable" in switches else "o.png"
            written = []
            for more in ((), ("--measure", "47,34,81,48,34,81")):  # behind the eye: for it the whole frame is drawn
                result = self.run_viewer(model, "-o", self.path("o.png"), "--size", "160x120", *switches, *more)
                self.assertEqual(result.returncode, 0, result.stderr)
                with open(self.path(name), "rb") as file:
                    written.append(file.read())
            self.assertEqual(written[0], written[1], switches)

    def test_cameras_of_the_file(self):
        cameras = [
            {"type": "orthographic", "name": "flat", "orthographic": {"xmag": 4, "ymag": 4, "znear": 0.1, "zfar": 20}},
            {"type": "perspective", "perspective": {"yfov": 1.0, "znear": 0.1}},
        ]
        place = [0, 0, 5]
        nodes = [{"mesh": 0}, {"camera": 0, "translation": place}, {"camera": 1, "translation": place}]
        model = self.write("m.gltf", gltf(unlit(1, 1, 1), nodes=nodes, cameras=cameras))
        heights = {}
        for name in ("flat", "1"):
            rows = self.picture(model, "--size", "80x80", "--background", "black", "--camera", name)[3]
            heights[name] = sum(1 for row in rows if max(row) > 127)
        self.assertAlmostEqual(heights["flat"], 20, delta=1)  # 2 of 8 units high
        self.assertAlmostEqual(heights["1"], 80 * 2 / (2 * 5 * 0.5463), delta=1)  # tan(0.5) = 0.5463
        os.remove(self.path("out.png"))
        self.fails(1, [model, "-o", self.path("out.png"), "--camera", "side"], "--camera side", "flat")

    def test_several_models_make_one_scene(self):
        left = self.write("a.gltf", gltf(unlit(1, 0, 0), ((-3, -1, 0), (-1, -1, 0), (-2, 1, 0))))
        right = self.write("b.gltf", gltf(unlit(0, 1, 0), ((1, -1, 0), (3, -1, 0), (2, 1, 0))))
        rows = self.picture(left, right, "--size", "120x60", "--background", "black")[3]
        colours = {tuple(row[x * 3 : x * 3 + 3]) for row in rows for x in range(120)}
        self.assertIn((255, 0, 0), colours)
        self.assertIn((0, 255, 0), colours)

    def test_wireframe_leaves_the_inside_empty(self):
        model = self.write("m.gltf", gltf(unlit(1, 1, 1)))
        rows = self.picture(model, "--size", "64x48", "--background", "black", "--wireframe")[3]
        self.assertEqual(rows[26][32 * 3], 0)
        self.assertGreater(max(max(row) for row in rows), 100)

    def test_formats_by_suffix(self):
        model = self.write("m.gltf", gltf(unlit(0.5, 0.0, 1.0)))
        middle, plain = (188, 0, 255), (0x20, 0x40, 0x60)

        def written(name):
            result = self.run_viewer(model, "-o", self.path(name), "--size", "64x48", "--background", "#204060")
            self.assertEqual(result.returncode, 0, result.stderr)
            with open(self.path(name), "rb") as file:
                return file.read()

        ppm = written("o.PPM")
        self.assertTrue(ppm.startswith(b"P6\n64 48\n255\n"))
        self.assertEqual((tuple(ppm[13:16]), tuple(ppm[13 + (26 * 64 + 32) * 3 :][:3])), (plain, middle))
        tga = written("o.tga")
        self.assertEqual((tuple(tga[18:21]), tuple(tga[18 + (26 * 64 + 32) * 3 :][:3])), (plain[::-1], middle[::-1]))
        self.assertEqual(len(tga), 18 + 64 * 48 * 3)
        self.assertEqual((written("o.bmp")[:2], written("o.jpeg")[:3], written("o.jpg")[:3]), (b"BM", b"\xff\xd8\xff", b"\xff\xd8\xff"))
        pfm = written("o.pfm")
        self.assertTrue(pfm.startswith(b"PF\n64 48\n-1.0\n"))
        floats = struct.unpack("<%df" % (64 * 48 * 3), pfm[14:])
        self.assertEqual(floats[(21 * 64 + 32) * 3 :][:3], (0.5, 0.0, 1.0), "linear, rows from the bottom")
        self.assertAlmostEqual(floats[2], 0.1170, 3)

    def test_samples_and_tiles(self):
        # Corners where tiles' arithmetic is exact: to the byte on Mesa's llvmpipe, 15 pixels of 16 million off on its softpipe.
        model = self.write("m.gltf", gltf(unlit(0.5, 0.2, 1.0), ((-0.9375, -0.875, 0), (0.75, -0.25, 0), (-0.125, 0.9375, 0)), cameras=[{"type": "orthographic", "orthographic": {"xmag": 1, "ymag": 1, "znear": 0.1, "zfar": 20}}], nodes=[{"mesh": 0}, {"camera": 0, "translation": [0, 0, 10]}]))

        def pixels(size, *switches):
            result = self.run_viewer(model, "--camera", "0", "-o", self.path("o.ppm"), "--size", f"{size}x{size}", *switches)
            self.assertEqual(result.returncode, 0, result.stderr)
            with open(self.path("o.ppm"), "rb") as file:
                values = file.read()[-3 * size * size :]
            return [values[i : i + 3 * size] for i in range(0, len(values), 3 * size)]

        for size, tile, samples in ((4096, 512, 1), (300, 64, 2), (300, 17, 3)):
            whole, tiled = (pixels(size, "--samples", str(samples), "--tile", str(n)) for n in (16384, tile))
            wrong = sum(a[x : x + 3] != b[x : x + 3] for a, b in zip(whole, tiled) if a != b for x in range(0, 3 * size, 3))
            self.assertLess(wrong, 1 + size * size / 100000, (size, tile))
        blends = [len({row[x : x + 3] for row in pixels(64, "--samples", str(n)) for x in range(0, 192, 3)}) for n in (1, 2, 4)]
        self.assertTrue(2 == blends[0] < blends[1] <= 5 < blends[2], blends)

    def test_turntable(self):
        model = self.write("m.gltf", gltf(unlit(1, 1, 1), ((0.2, -1, 0), (1, -1, 0), (1, 1, 0))))
        switches = ("--size", "48x48", "--background", "black", "--eye", "0,0,6", "--target", "0,0,0")
        self.assertEqual(self.run_viewer(model, "--turntable", "4", "-o", self.path("t.png"), "--no-culling", *switches).returncode, 0)
        frames = []
        for number in range(1, 5):
            with open(self.path(f"t_00{number}.png"), "rb") as file:
                frames.append(file.read())
        self.picture(model, "--no-culling", *switches)
        with open(self.path("out.png"), "rb") as file:
            self.assertEqual(file.read(), frames[0], "begins where a single picture is taken from")
        halves = [[sum(row[x] for row in read_png(frame)[3] for x in side) for side in (range(0, 66, 3), range(78, 144, 3))] for frame in frames]
        self.assertEqual([left > 0 for left, _ in halves], [False, False, True, False], halves)
        self.assertEqual([right > 0 for _, right in halves], [True, False, False, False], "edge-on from the sides")
        self.assertEqual(sorted(os.listdir(self.folder)), ["m.gltf", "out.png", *(f"t_00{n}.png" for n in range(1, 5))])

    def test_switches_of_the_users_file(self):
        model = self.write("m.gltf", gltf(unlit(1, 1, 1)))
        os.mkdir(self.path("orloview"))
        mine = {"XDG_CONFIG_HOME": self.folder}
        self.write("orloview/config", "# mine\n--size 24x16\n\n--background '#ff0000'\n--wireframe\n")
        width, height, _, rows = self.picture(model, environment=mine)
        self.assertEqual((width, height, bytes(rows[0][:3])), (24, 16, b"\xff\0\0"))
        over = self.picture(model, "--size=20x20", "--wireframe=false", environment=mine)
        self.assertEqual(over, self.picture(model, "--size", "20x20", "--background", "red"))
        os.remove(self.path("out.png"))
        for line, *words in (("--sise 2x2", "--size"), ("--up 0,1", "three numbers"), ("m.gltf", "m.gltf")):
            self.write("orloview/config", "--grid\n" + line)
            self.fails(1, [model, "-o", self.path("out.png")], "orloview/config:2: ", *words, environment=mine)

    def test_parts(self):
        model = self.write("room.gltf", gltf(unlit(1, 0.5, 0), ((-1, -1, 0), (1, -1, 0), (1, 1, 2))))
        switches = (model, "--size", "96x70", "--tile", "16", "--samples", "1")
        for name, *more in (("p.pfm",), ("p.tga", "--background", "transparent"), ("p.png",)):
            for part in ("1/3", "3/3", "2/3"):
                self.assertEqual(self.run_viewer(*switches, *more, "-o", self.path(name), "--only", part).returncode, 0)
            self.assertEqual(self.run_viewer("--join", "3", "-o", self.path(name), environment={"DISPLAY": None}).returncode, 0)
            self.run_viewer(*switches, *more, "-o", self.path("whole" + name))
            self.assertTrue(filecmp.cmp(self.path(name), self.path("whole" + name), shallow=False), (name, more))
        out, part = self.path("p.png"), self.path("p_2_of_3.png")
        good = pathlib.Path(part).read_bytes()
        for bad in (b"", good[:20], good[:-30], good + b"x", good[:60] + b"?" + good[61:], good[:-20] + b"?" + good[-19:], pathlib.Path(self.path("p_1_of_3.pfm")).read_bytes()):
            self.write("p_2_of_3.png", bad)
            before = pathlib.Path(out).read_bytes()
            self.fails(2, ["--join", "3", "-o", out], "p_2_of_3.png", "--only 2/3")
            self.assertEqual(pathlib.Path(out).read_bytes(), before)
        os.remove(part)
        self.fails(2, ["--join", "3", "-o", out], "p_2_of_3.png", "--only 2/3")
        self.fails(1, [*switches, "-o", out, "--only", "2/6"], "--only 2/6", "5", "--tile")
        self.fails(1, [*switches, "-o", out, "--turntable", "2", "--only", "1/3"], "--only 1/3", "2 pictures")

    def test_parts_by_gnu_parallel(self):
        """As the document says."""
        document = pathlib.Path(__file__).parents[2] / "docs/many-machines.md"
        lines = document.read_text().split("```sh\n")[1].split("```")[0]
        self.write("room.gltf", gltf(unlit(1, 0.5, 0), ((-1, -1, 0), (1, -1, 0), (1, 1, 2))))
        for told, tried in (("room.glb", "room.gltf"), ("8", "2"), ("240", "3 --size 40x30"), ("20000x20000 --tile 1024", "60x70 --tile 16")):
            lines = lines.replace(told, tried)
        os.symlink(ORLOVIEW, self.path("orloview"))
        there = {"cwd": self.folder, "env": {**os.environ, "PATH": self.folder + ":" + os.environ["PATH"]}, "check": True}
        subprocess.run(["sh", "-e", "-c", lines], **there)
        single = "orloview room.gltf -o single.png --turntable 3 --size 40x30; orloview room.gltf -o single.png --size 60x70 --tile 16"
        subprocess.run(["sh", "-c", single], **there)
        for name, whole in (("poster.png", "single.png"), *((f"turn_00{n}.png", f"single_00{n}.png") for n in range(1, 4))):
            self.assertTrue(filecmp.cmp(self.path(name), self.path(whole), shallow=False), name)

    def test_depth_is_the_distance_along_the_view(self):
        triangle = ((-1, -1, 0), (1, -1, 0), (1, 1, 2))
        ortho = {"type": "orthographic", "orthographic": {"xmag": 1, "ymag": 1, "znear": 0.1, "zfar": 20}}
        persp = {"type": "perspective", "perspective": {"yfov": 0.4, "aspectRatio": 1, "znear": 1, "zfar": 50}}
        model = self.write("m.gltf", gltf({}, triangle, cameras=[ortho, persp], nodes=[{"mesh": 0}, {"camera": 0, "translation": [0, 0, 10]}, {"camera": 1, "translation": [0, 0, 10]}]))
        for camera in ("0", "1"):
            for tile in ("16", "64"):
                switches = (model, "--camera", camera, "--size", "64x64", "--tile", tile, "--no-culling")
                self.assertEqual(self.run_viewer(*switches, "--depth", self.path("d.pfm")).returncode, 0)
                with open(self.path("d.pfm"), "rb") as file:
                    data = file.read()
                self.assertTrue(data.startswith(b"Pf\n64 64\n-1.0\n"))
                depths = struct.unpack("<4096f", data[14:])
                self.assertEqual(depths[63 * 64], float("inf"))
                if camera == "0":
                    self.assertAlmostEqual(depths[20 * 64 + 40], 10 - 20.5 / 32, 3)
                else:  # y = (10 - z) tan, z = y + 1 on the plane
                    slope = 2 * (20.5 / 64 - 0.5) * math.tan(0.2)
                    y = (10 - 1) * slope / (1 + slope)
                    self.assertAlmostEqual(depths[20 * 64 + 40], 10 - (y + 1), 2)
        self.assertEqual(self.run_viewer(*switches, "--depth", self.path("d.png")).returncode, 0)
        with open(self.path("d.png"), "rb") as file:
            self.assertEqual(file.read()[16:26], struct.pack(">IIBB", 64, 64, 16, 0))

    def test_cube_map(self):
        # On the side of +x, above and towards -z, seen from the origin.
        model = self.write("m.gltf", gltf(unlit(1, 1, 1, doubleSided=True), ((2, 0.1, -0.1), (2, 0.1, -2.5), (2, 2.5, -0.1))))
        folder = self.path("sides")
        switches = ("--eye", "0,0,0", "--size", "64x96", "--background", "black", "--cube-map")
        self.assertEqual(self.run_viewer(model, *switches, folder).returncode, 0)
        self.assertEqual(sorted(os.listdir(folder)), ["nx.png", "ny.png", "nz.png", "px.png", "py.png", "pz.png"])
        lit = {}
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), "rb") as file:
                width, height, _, rows = read_png(file.read())
            self.assertEqual((width, height), (64, 64))
            lit[name] = [[bool(rows[y][3 * x]) for x in (16, 44)] for y in (20, 48)]
        nothing = [[False, False], [False, False]]
        self.assertEqual(lit.pop("px.png"), [[False, True], [False, False]])
        self.assertEqual(set(map(str, lit.values())), {str(nothing)})
        self.write("taken", "")
        self.fails(5, [model, *switches, self.path("taken/x")], "taken/x")

    def test_a_pbuffer_gives_the_same_picture(self):
        model = self.write("m.gltf", gltf(unlit(0.5, 0.2, 1.0)))
        pictures = [self.picture(model, "--size", "64x48", "--background", "white", "--offscreen", kind)[3] for kind in ("fbo", "pbuffer")]
        for ours, theirs in zip(*pictures):
            self.assertTrue(all(abs(a - b) <= 2 for a, b in zip(ours, theirs)))

    def test_a_second_frame_uploads_nothing(self):
        model = self.write("m.gltf", gltf(nodes=[{"mesh": 0}, {"mesh": 0, "translation": [3, 0, 0]}]))
        result = self.run_viewer(model, "-o", self.path("out.png"), "--size", "32x32", "--stats")
        first, second = [line for line in result.stderr.decode().splitlines() if line.startswith("frame")]
        self.assertIn("2 groups, 2 triangles", first)
        self.assertNotIn(" 0 uploads", first)
        self.assertIn("2 draw calls, 0 uploads, 0 bytes uploaded, 0 GL names made", second)

    def test_what_nobody_sees_is_not_drawn(self):
        wall = [{"mesh": 0, "translation": [x, y, 0], "scale": [2, 2, 2]} for x in range(-6, 7) for y in range(-6, 7)]
        behind = [{"mesh": 0, "translation": [x, y, z]} for x in range(-4, 5) for y in range(-4, 5) for z in (-1, -2, -3)]
        mirrored = [{"mesh": 0, "translation": [0, 0, -1.5], "scale": [-1, 1, 1]}]
        model = self.write("m.gltf", gltf({"doubleSided": True}, nodes=[*behind, *wall, *mirrored]))
        views = {"front": ("--eye", "0,0,9"), "side": ("--eye", "9,0,-2"), "near": ("--eye", "0.2,0.1,-1.4"), "behind": ("--eye", "0,1,-9")}
        hidden, outside = {}, {}
        for name, view in views.items():
            for look in ((), ("--wireframe",), ("--orthographic",), ("--shading", "fixed")):
                arguments = (model, "--size", "96x64", "--target", "0,0,-1.6", *view, *look)
                whole = self.picture(*arguments)
                told = self.run_viewer(*arguments, "--cull", "--stats", "-o", self.path("culled.png")).stderr.decode()
                with open(self.path("culled.png"), "rb") as file:
                    self.assertEqual(read_png(file.read())[3], whole[3], (name, look))
                counts = re.search(r"frame 2: (\d+) groups, (\d+) drawn, (\d+) outside, (\d+) hidden, (\d+) triangles, ", told)
                all_of_it, drawn, beside, covered, triangles = map(int, counts.groups())
                self.assertEqual(drawn + beside + covered, all_of_it)
                self.assertEqual(triangles, drawn)
                if not look:
                    hidden[name], outside[name] = covered, beside
                elif look == ("--wireframe",):
                    self.assertEqual(covered, 0, "through the edges all is seen")
        self.assertGreater(hidden["front"], 150)
        self.assertGreater(outside["near"], 100)

    def test_without_queries_everything_is_drawn(self):
        model = self.write("m.gltf", gltf())
        for switch in ("--cull", "--shadows"):
            self.fails(1, [model, switch, "--offscreen", "pbuffer", "-o", self.path("out.png")], "what --cull, --shadows and --ao need lives in another context")
        environment = self.without("GL_ARB_occlusion_query", "kCapOcclusionQuery")
        result = self.run_viewer(model, "--cull", "-o", self.path("out.png"), environment=environment)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr.decode(), "orloview: this OpenGL counts no samples (GL_ARB_occlusion_query): --cull draws everything\n")

    def test_progress(self):
        # All but one triangle are smaller than a pixel, for drivers that draw slowly.
        model = self.write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0.01 0 0\nv 0 0.01 0\nf 1 2 3\n" + "f 1 4 5\n" * 400000)
        arguments = [model, "-o", self.path("out.png"), "--size", "64x64", "--shading", "fixed"]
        self.assertEqual(self.run_viewer(*arguments).stderr, b"", "no terminal, no progress")
        lines = self.run_viewer(*arguments, "--progress", "plain").stderr.decode().splitlines()
        done = [line.split()[1] for line in lines if "done in" in line]
        self.assertEqual(done, ["read,", "prepare,", "upload,", "draw,", "write,"])
        self.assertEqual(self.run_viewer(*arguments, "--progress", "plain", "-q").stderr, b"")
        shown = self.on_a_terminal(*arguments)
        self.assertRegex(shown, rb"\rread +\[#*\.*\] +\d+%")
        self.assertTrue(shown.endswith(b" \r"), shown[-100:])
        shown = self.on_a_terminal(model, self.path("gone.glb"), *arguments[1:]).decode()
        message = next(line for line in shown.splitlines() if "gone.glb" in line).rsplit("\r")[-1]
        self.assertTrue(message.startswith("orloview: "), shown)

    def on_a_terminal(self, *arguments):
        """What the viewer writes to a standard error that is a terminal."""
        ours, theirs = pty.openpty()
        with subprocess.Popen([ORLOVIEW, *arguments], stderr=theirs, stdout=subprocess.DEVNULL):
            os.close(theirs)
            shown = b""
            try:
                while part := os.read(ours, 4096):
                    shown += part
            except OSError:
                pass  # how Linux tells that the other end has closed
        os.close(ours)
        return shown

    def test_byte_buffers_do_where_floats_are_not_offered(self):
        model = self.write("m.gltf", gltf(unlit(0.5, 0.0, 1.0)))
        environment = self.without("GL_ARB_texture_float", "kCapTextureFloat")
        rows = self.picture(model, "--size", "64x48", environment=environment)[3]
        self.assertAlmostEqual(rows[26][32 * 3], 188, delta=1)

    def test_gl_info(self):
        result = self.run_viewer("--gl-info")
        self.assertEqual(result.returncode, 0)
        for words in ("OpenGL version: ", "renderer: ", "kCapFramebufferObject: yes", "kCapNVVertexProgram: ", "texture size: "):
            self.assertIn(words, result.stdout.decode())

    def test_gl_log_tells_calls_and_passes(self):
        model, log = self.write("m.gltf", gltf(unlit(0.5, 0.0, 1.0))), pathlib.Path(self.path("calls.log"))
        same = self.picture(model, "--size", "64x48", "--ground")
        self.assertEqual(self.picture(model, "--size", "64x48", "--ground", "--gl-debug", "--gl-log", log), same)
        lines = log.read_text(encoding="utf-8").splitlines()
        self.assertLess(lines.index("-- shade on the ground"), lines.index("-- scene"))
        self.assertTrue(any(line.startswith("glBindFramebufferEXT(GL_FRAMEBUFFER, 1)  ") for line in lines))
        self.assertTrue(lines[-1].endswith(" 0  all"), lines[-1])

    def test_vetoed_capabilities(self):
        told = self.run_viewer("--gl-info", environment={"ORLOGL_VETO": "kCapShaderObjects,kCapTexture3D"})
        for name in ("kCapShaderObjects", "kCapTexture3D"):
            self.assertIn(f"{name}: vetoed", told.stdout.decode())
        told = self.run_viewer("--gl-info", environment={"ORLOGL_VETO": "kCapFoo"})
        self.assertEqual((told.returncode, told.stderr.decode().count("\n")), (1, 1))
        self.assertIn('"kCapFoo"', told.stderr.decode())

    # Wrong use

    def test_wrong_switches_are_refused_before_anything_is_read(self):
        out = ["-o", self.path("out.png")]
        for arguments, words in (
            ([], ["no model", "--help"]),
            (["m.glb", "--siez", "3x3", *out], ["--siez; did you mean --size?"]),
            (["m.glb", "--ortho", *out], ["--ortho; did you mean --orthographic?"]),
            (["m.glb", "--look", "top", *out], ["unknown switch --look (--help"]),
            (["m.glb", "-o"], ["--output: give it as --output FILE"]),
            (["m.glb", "--fov", "9", "--fov", "8", *out], ["--fov: it is given 2 times; give it once"]),
            (["m.glb", "--compare", "fixed"], ["--compare: give it as --compare SHADING SHADING"]),
            (["m.glb", "--background", "transparent", "-o", self.path("o.jpg")], ["--background", "o.jpg", ".png or .tga"]),
            (["m.glb", "-o", self.path("out.gif")], ["out.gif", ".png", ".pfm"]),
            (["m.glb", "--size", "0x0", *out], ["--size 0x0"]),
            (["m.glb", "--size", "12", *out], ["--size 12"]),
            (["m.glb", "--size", "-4x4", *out], ["--size -4x4"]),
            (["m.glb", "--size", "99999999999x4", *out], ["--size"]),
            (["m.glb", "--eye", "1,2", *out], ["--eye 1,2", "three numbers"]),
            (["m.glb", "--eye", "1,2,inf", *out], ["--eye"]),
            (["m.glb", "--eye", "1,2,3,4", *out], ["--eye"]),
            (["m.glb", "--eye", "1,2,3", "--target", "1,2,3", *out], ["--eye and --target"]),
            (["m.glb", "--up", "0,0,0", *out], ["--up"]),
            (["m.glb", "--fov", "180", *out], ["--fov 180"]),
            (["m.glb", "--fov", "wide", *out], ["--fov wide"]),
            (["m.glb", "--background", "#12", *out], ["--background #12"]),
            (["m.glb", "--camera", "0", "--fov", "30", *out], ["--camera"]),
            (["m.glb", "--turntable", "4"], ["--turntable", "-o"]),
            (["m.glb", "--turntable", "0", *out], ["--turntable 0"]),
            (["m.glb", "--only", "3/2", *out], ["--only 3/2"]),
            (["m.glb", "--only", "1/2", "-o", self.path("out.jpg")], ["--only", ".png"]),
            (["m.glb", "--only", "1/2", "-o", "-"], ["--only", "-o"]),
            (["m.glb", "--only", "1/2", "--depth", self.path("d.png"), *out], ["--only", "--depth"]),
            (["--join", "2"], ["--join", "-o"]),
            (["m.glb", "--join", "2", *out], ["--join", "m.glb"]),
            (["m.glb", "--depth", "d.jpg"], ["--depth d.jpg", ".pfm"]),
            (["m.glb", "--offscreen", "window", *out], ["--offscreen window", "pbuffer"]),
            (["m.glb", "--samples", "9", *out], ["--samples 9", "1 to 8"]),
            (["m.glb", "--tile", "x", *out], ["--tile x", "16"]),
            (["m.glb", "--progress", "fancy", *out], ["--progress fancy", "plain"]),
            (["m.glb", "--limit-memory", "1T", *out], ["--limit-memory 1T", "8G"]),
            (["m.glb", "--limit-time", "0", *out], ["--limit-time 0"]),
            (["m.glb", "--json", *out], ["--json: only --info prints it"]),
            (["m.glb", "-q", "-v", *out], ["-q and -v"]),
        ):
            with self.subTest(arguments=arguments):
                message = self.fails(1, arguments, *words)
                self.assertEqual(message.count("\n"), 1, message)

    def test_wrong_views_and_sizes(self):
        model = self.write("m.gltf", gltf())
        out = ["-o", self.path("out.png")]
        self.fails(1, [model, *out, "--eye", "0,0,0"], "--eye is where the view looks")
        self.fails(1, [model, *out, "--eye", "0,0,9", "--view", "top"], "--eye says where the eye is; leave --view, --azimuth and --elevation out")
        self.fails(1, [model, *out, "--view", "above"], "--view above: give front, back, left, right, top, bottom or iso")
        self.fails(1, [model, *out, "--elevation", "91"], "--elevation 91: give degrees from -90 to 90")
        self.assertEqual(self.picture(model, "--size", "20000x10")[:2], (20000, 10), "wider than any buffer")
        os.remove(self.path("out.png"))

    def test_a_model_comes_through_standard_input(self):
        model = gltf().encode()
        told = self.run_viewer(self.write("m.gltf", model), "--info").stdout
        self.assertEqual(self.run_viewer("-", "--info", piped=model).stdout, told)
        off = self.run_viewer("-", "--info", piped=b"OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n").stdout
        self.assertIn(b"triangles  1", off, "by the import library")
        for arguments, piped, code, words in (
            (["-"], b"0 0 0 1 0 0 0 1 0\n", 2, "no model file of a known kind"),
            (["-", "--format", "raw"], b"0 0 0 1 0 0 0 1 0\n", 0, ""),
            (["-"], b"", 2, "-: standard input brings nothing"),
            (["-", "-"], b"", 1, "give it once"),
            (["-", "--format", "docx"], b"", 1, "--list-formats"),
            (["m.obj", "--format", "obj"], b"", 1, "give - as a model"),
        ):
            result = self.run_viewer(*arguments, "--info", piped=piped)
            self.assertEqual(result.returncode, code, (arguments, result.stderr))
            self.assertIn(words, result.stderr.decode())
        listed = self.run_viewer("--list-formats").stdout.decode()
        for line in (".glb ", ".obj ", ".3ds .prj "):
            self.assertIn("\n" + line, listed)

    def test_closed_streams_get_no_picture(self):
        model = self.write("m.gltf", gltf())
        os.mkfifo(self.path("pipe.ppm"))
        for closed, arguments, code in (
            ("0<&- 1>&- 2>&-", (model, "-o", self.path("out.png"), "--size", "9x9"), 0),
            ("1>&-", (model, "-o", "-", "--size", "9x9"), 5),
            ("1>&-", (model, "--compare", "fixed", "glsl", "--size", "9x9"), 5),
            ("| true", (model, "-o", "-", "--size", "999x999"), 5),
            (f"& head -c1 {self.path('pipe.ppm')} >&2; wait $!", (model, "-o", self.path("pipe.ppm"), "--size", "999x999"), 5),
            ("2>&-", (model, self.path("gone.obj"), "-o", self.path("out.png"), "--size", "9x9"), 3),
        ):
            command = ["bash", "-c", f'set -o pipefail; "$@" {closed}', "sh", ORLOVIEW, *arguments]
            self.assertEqual(subprocess.run(command, timeout=60, stderr=subprocess.DEVNULL).returncode, code, (closed, arguments))

    def test_nothing_to_draw(self):
        out = ["-o", self.path("out.png")]
        message = self.fails(2, [self.path("none.glb"), *out], "none.glb")
        self.assertEqual(message.count("\n"), 1, message)
        self.fails(2, [self.folder, *out], self.folder)
        self.fails(2, [self.write("empty.obj", ""), *out], "empty.obj")
        self.fails(2, [self.write("m.xyz", "hello"), *out], "m.xyz")
        self.fails(2, [self.write("m.ktx2", b"\xabKTX 20\xbb\r\n\x1a\n" + bytes(99)), *out], "a picture (KTX), not a model; give the model")
        self.assertIn(": m  [2J", self.fails(2, ["m\n\033[2J\u009b", *out]))
        os.mkfifo(self.path("pipe.glb"))
        self.fails(2, [self.path("pipe.glb"), *out], "a pipe")
        self.assertNotIn("$", self.fails(2, [self.write("m.stl", "hello" * 99), *out], "damaged"))
        self.fails(2, [self.write("n.gltf", '{"asset":{"version":"2.0"}}'), *out], "n.gltf")

    def test_a_limit_of_files_is_none_of_reading(self):
        command = ["sh", "-c", 'ulimit -f 0; exec "$@"', "sh", ORLOVIEW, self.write("m.gltf", gltf()), "--info"]
        self.assertEqual(subprocess.run(command, stdout=subprocess.PIPE).returncode, 0)

    def test_what_was_left_out_is_named(self):
        model = self.write("m.gltf", gltf())
        self.picture(model, self.path("gone.obj"), "--size", "16x16", expect=3)

    def test_no_framebuffer_objects(self):
        arguments = [self.write("m.gltf", gltf()), "-o", self.path("out.png"), "--size", "16x16"]
        environment = self.without("GL_EXT_framebuffer_object", "kCapFramebufferObject")
        self.fails(4, arguments, "framebuffer objects", environment=environment)

    def test_a_failed_write_leaves_the_old_picture(self):
        model = self.write("m.gltf", gltf())
        message = self.fails(5, [model, "-o", self.path("no/such/out.png"), "--size", "16x16"], "out.png")
        self.assertEqual(message.count("\n"), 1)
        result = self.run_viewer(model, "-o", "/dev/full", "--size", "16x16")
        self.assertEqual(result.returncode, 1, "not a PNG by its name")
        os.symlink("/dev/full", self.path("full.png"))
        self.fails(5, [model, "-o", self.path("full.png"), "--size", "16x16"], "full.png")
        with open("/dev/full", "w") as full:
            told = subprocess.run([ORLOVIEW, "--info", model], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(told.returncode, 5)
        self.assertIn(b"standard output", told.stderr)
        self.write("old.png", "old")
        self.fails(2, [self.path("gone.obj"), "-o", self.path("old.png")])
        with open(self.path("old.png")) as file:
            self.assertEqual(file.read(), "old")
        self.assertEqual(sorted(os.listdir(self.folder)), ["full.png", "m.gltf", "old.png"])

    def test_nothing_is_left_of_what_ends_early(self):
        model, out = self.write("m.gltf", gltf()), self.path("out.png")
        for prepare in (None, refuse_nameless_files):
            for number in (signal.SIGTERM, signal.SIGXCPU, signal.SIGABRT):
                viewer = subprocess.Popen([ORLOVIEW, model, "-o", out, "--size", "4000x4000"], preexec_fn=prepare)
                while viewer.poll() is None and not self.writes(viewer.pid):
                    time.sleep(0.01)
                viewer.send_signal(number)
                self.assertEqual((viewer.wait(60), os.listdir(self.folder)), (-number, ["m.gltf"]), prepare)
            limit = lambda: (prepare and prepare(), resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000)))
            full = subprocess.run([ORLOVIEW, model, "-o", self.path("o.tga"), "--size", "99x99"], preexec_fn=limit, stderr=subprocess.PIPE)
            self.assertIn(b"File too large", full.stderr)
            self.assertEqual((full.returncode, os.listdir(self.folder)), (5, ["m.gltf"]))
            planted = 'cd "$1" && ln -s victim .orloview-$$-0 && shift && exec "$@"'
            for name in ("out.png", "out.png", "x" * 250 + ".png"):
                subprocess.run(["sh", "-c", planted, "sh", self.folder, ORLOVIEW, model, "-o", name, "--size", "9x9"], preexec_fn=prepare, check=True)
                self.assertFalse(os.path.exists(self.path("victim")))
                self.assertTrue(os.path.getsize(self.path(name)))
            for name in set(os.listdir(self.folder)) - {"m.gltf"}:
                os.remove(self.path(name))

    def writes(self, process):
        """Whether it has a file in our folder open."""
        try:
            files = f"/proc/{process}/fd"
            return any(os.readlink(f"{files}/{number}").startswith(self.folder) for number in os.listdir(files))
        except FileNotFoundError:
            return False

    def test_links_stay_and_what_they_lead_to_is_written(self):
        model = self.write("m.gltf", gltf())
        for target, link in (("old.png", "link.png"), ("none.png", "dangling.png")):
            os.symlink(target, self.path(link))
        self.write("old.png", "old")
        for link in ("link.png", "dangling.png"):
            self.assertEqual(self.run_viewer(model, "-o", self.path(link), "--size", "9x9").returncode, 0)
            with open(self.path(os.readlink(self.path(link))), "rb") as file:
                self.assertEqual(read_png(file.read())[:2], (9, 9))

    def test_inputs_are_not_written_over(self):
        document = json.loads(textured([{"at": (-1, 1, 1, -1), "material": 0}], [{"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}}}], ["skin.png"]))
        buffer = base64.b64decode(document["buffers"][0].pop("uri").partition(",")[2])
        document["buffers"][0]["uri"] = "buffer.png"
        model = self.write("m.png", json.dumps(document))
        os.link(model, self.path("same.png"))
        files = {"buffer.png": buffer, "skin.png": png([[(9, 9, 9, 255)]]), "spot.png": png([[(9, 9, 9, 255)]]), "paint.png": b"newmtl a\n"}
        for name, content in files.items():
            self.write(name, content)
        obj = self.write("m.obj", "mtllib paint.png\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        for name in ("m.png", "same.png", *files):
            with open(self.path(name), "rb") as file:
                before = file.read()
            self.fails(1, [model, obj, "--sprite-images", self.path("spot.png"), "--particles", "sprites", "-o", self.path(name), "--size", "9x9"], name, "files that are read")
            with open(self.path(name), "rb") as file:
                self.assertEqual(file.read(), before, name)


if __name__ == "__main__":
    unittest.main()
