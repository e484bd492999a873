#!/usr/bin/env python3
"""Points as particles, and the files that they come from. Usage: particles_test.py ORLOVIEW [unittest arguments]"""

import os
import struct
import unittest

from viewer_files import png, read_png
from viewer_program import ViewerProgram

SIDE = 100
# Ten pixels a unit, the origin in the middle.
FRONT = ("--orthographic", "--eye", "0,0,10", "--target", "0,0,0", "--fov", "53.13010235415598", "--size", f"{SIDE}x{SIDE}")
FRONT += ("--samples", "1", "--background", "black")


class Particles(ViewerProgram):
    def read(self, path):
        with open(path, "rb") as file:
            return file.read()

    def pixels(self, *arguments, expect=0):
        """Pixel (x, y), from the middle to the right and up, as (r, g, b)."""
        _, _, channels, rows = self.picture(*arguments, expect=expect)

        def pixel(x, y):
            at = (x + SIDE // 2) * channels
            return tuple(rows[SIDE // 2 - 1 - y][at : at + 3])

        return pixel

    def covered(self, *arguments):
        pixel = self.pixels(*arguments)
        half = range(-SIDE // 2, SIDE // 2)
        return {(x, y) for x in half for y in half if pixel(x, y) != (0, 0, 0)}

    def test_tables_say_in_their_first_line_what_is_in_them(self):
        table = "x y z r g b\n0 0 0 1 0 0\n1 2 0 0 1 0\n"
        wanted = self.picture(self.write("a.txt", table), *FRONT)
        same = {
            "b.csv": "r,g,b,x,y,z\n1,0,0,0,0,0\n0,1,0,1,2,0\n",
            "c.csv": '"x"; "Y" ;Z; red; green; blue\r\n\r\n0;0;0;255;0;0\r\n# between\r\n1;2;0;0;255;0\r\n',
            "d.unknown": "\ufeff# x\ty z r g b a\n0 0 0 1 0 0 1\n+1 2e0 0 0 1 0 1",
        }
        for name, text in same.items():
            self.assertEqual(self.picture(self.write(name, text), *FRONT), wanted, name)
        other = "x,y,z,r,g,b,heat\n0,0,0,1,0,0,warm\n1,2,0,0,1,0,\n"
        self.assertEqual(self.picture(self.write("e.csv", other), *FRONT, expect=3), wanted)
        self.assertIn(b"'heat': left out", self.run_viewer(self.path("e.csv"), "--info").stderr)

    def test_a_bad_line_is_named_by_its_number(self):
        rows = ["0 0 0 1 0 0"] * 100_000
        for line, row, words in (
            (99_999, "0 0 zero 1 0 0", ("line 99999", "'zero'", "column z")),
            (3, "0 0 0", ("line 3", "3 values", "6 columns")),
            (4, "0 0 0 1 0 0 7", ("line 4", "7 values")),
        ):
            bad = rows.copy()
            bad[line - 2] = row
            self.fails(2, [self.write("bad.txt", "\n".join(["x y z r g b", *bad]))], "bad.txt", *words)
        self.fails(2, [self.write("bad.csv", "x,y,z\n1,2,\n")], "line 2", "column z")
        self.fails(2, [self.write("bad.csv", "x,y\n1,2\n")], "bad.csv", "x, y and z")
        self.fails(2, [self.write("bad.csv", "x,y,z\n\n")], "bad.csv", "no points")
        self.fails(2, [self.write("bad.csv", "")], "bad.csv")

    def test_ply_holds_the_same(self):
        names = "x y z vx vy vz scaleX twist textureNumber".split()
        rows = [(0, 0, 0, 30, 0, 0, 2, 30, 0), (-2, 1, 0, 0, 30, 0, 1, 0, 1)]
        table = self.write("p.txt", "\n".join([" ".join(names), *(" ".join(map(str, row)) for row in rows)]))
        header = "ply\nformat binary_little_endian 1.0\nelement vertex 2\n"
        header += "".join(f"property float {name}\n" for name in names) + "end_header\n"
        ply = self.write("p.ply", header.encode() + b"".join(struct.pack("<9f", *row) for row in rows))
        for kind in ("points", "multi", "sprites", "streaks"):
            wanted = self.picture(table, *FRONT, "--particles", kind)
            self.assertEqual(self.picture(ply, *FRONT, "--particles", kind), wanted, kind)

    def test_points_have_the_size_asked_for(self):
        one = self.write("one.txt", "x y z\n0 0 0\n")
        for arguments in ((), ("--particles", "points")):
            self.assertEqual(len(self.covered(one, *FRONT, *arguments, "--point-size", "10")), 100)
        clouds = self.covered(one, *FRONT, "--particles", "multi", "--point-size", "1")
        self.assertTrue(5 <= len(clouds) <= 10, clouds)

    def test_nothing_is_cut_off_before_or_behind(self):
        table = self.write("s.csv", f"x,y,z,vx,vy,vz\n0,0,0,0.1,0,{-12 / (7 * 0.0333)}\n")
        streak = self.covered(table, *FRONT[:2], "0,8,20", *FRONT[3:], "--particles", "streaks")
        self.assertLessEqual(min(y for _, y in streak), -20)  # its tail ends 12 units nearer to the eye

    def test_sprites_cover_their_squares_with_their_pictures(self):
        red, green, blue, white = (255, 0, 0, 255), (0, 255, 0, 255), (0, 0, 255, 255), (255, 255, 255, 255)
        quarters = self.write("quarters.png", png([[red] * 8 + [green] * 8] * 8 + [[blue] * 8 + [white] * 8] * 8))
        plain = self.write("plain.png", png([[green]]))
        table = self.write("s.csv", "x,y,z,scaleX,scaleY,twist\n0,0,0,4,2,0\n")
        images = ("--particles", "sprites", "--sprite-images", quarters)
        self.assertEqual(self.covered(table, *FRONT, *images), {(x, y) for x in range(-20, 20) for y in range(-10, 10)})

        def corners(pixel):
            return [pixel(-18, 8), pixel(17, 8), pixel(-18, -9), pixel(17, -9)]

        self.assertEqual(corners(self.pixels(table, *FRONT, *images)), [color[:3] for color in (red, green, blue, white)])
        table = self.write("s.csv", "x,y,z,scaleX,twist\n0,0,0,4,90\n")  # counter-clockwise
        pixel = self.pixels(table, *FRONT, *images)
        turned = [pixel(-15, 15), pixel(14, 15), pixel(-15, -16), pixel(14, -16)]
        self.assertEqual(turned, [color[:3] for color in (green, white, red, blue)])

        table = self.write("s.csv", "x,y,z,scaleX,textureNumber\n-2,0,0,2,1\n2,0,0,2,0\n0,3,0,2,9\n")
        pixel = self.pixels(table, *FRONT, *images[:3], f"{quarters},{plain}")
        self.assertEqual(pixel(-20, 5), (0, 255, 0))
        self.assertEqual(pixel(15, 5), (255, 0, 0))
        self.assertEqual(pixel(0, 30), (0, 255, 0))  # beyond the list: its last

        result = self.run_viewer(table, *FRONT, *images[:3], self.path("none.png"), "-o", self.path("out.png"))
        self.assertEqual(result.returncode, 3)
        self.assertIn(b"none.png", result.stderr)

    def test_what_shines_through_lies_over_what_is_behind_it(self):
        plain = self.write("plain.png", png([[(255, 255, 255, 255)]]))
        rows = ["0,0,2,4,1,0,0,0.5", "0,0,0,4,0,1,0,1"]  # the nearer one first
        sprites = ("--particles", "sprites", "--sprite-images", plain)
        for order in (rows, rows[::-1]):
            table = self.write("s.csv", "\n".join(["x,y,z,scaleX,r,g,b,a", *order]))
            for pixel in (self.pixels(table, *FRONT, *sprites), self.pixels(table, *FRONT, *sprites, "--shading", "fixed")):
                self.assertEqual(pixel(0, 0), (188, 188, 0))  # half of each, in linear values

    def test_what_lies_behind_depends_on_the_side(self):
        table = self.write("s.csv", "x,y,z,scaleX,r,g,b,a\n0,0,2,4,1,0,0,0.5\n0,0,-2,4,0,1,0,0.5\n")
        plain = self.write("plain.png", png([[(255, 255, 255, 255)]]))
        result = self.run_viewer(
            table, *FRONT, "--particles", "sprites", "--sprite-images", plain, "--turntable", "2", "-o", self.path("t.png")
        )
        self.assertEqual(result.returncode, 0, result.stderr)
        middles = []
        for name in ("t_001.png", "t_002.png"):
            _, _, channels, rows = read_png(self.read(self.path(name)))
            middles.append(tuple(rows[SIDE // 2][SIDE // 2 * channels :][:3]))
        self.assertEqual(middles, [(188, 137, 0), (137, 188, 0)])  # a half, and a half of the half

    def test_sprites_without_pictures_are_soft_spots(self):
        pixel = self.pixels(self.write("s.csv", "x,y,z,scaleX\n0,0,0,8\n"), *FRONT, "--particles", "sprites")
        self.assertGreater(pixel(0, 0)[0], 250)
        self.assertEqual(pixel(39, 39), (0, 0, 0))
        # (1 - r^2)^2 of white in linear values, a quarter of the way out along x
        self.assertAlmostEqual(pixel(20, 0)[0], 255 * (1.055 * 0.5625 ** (1 / 2.4) - 0.055), delta=6)

    def test_streaks_fade_along_their_way(self):
        table = self.write("s.csv", f"x,y,z,vx,vy,vz,r,g,b\n4,0.05,0,{8 / (7 * 0.0333)},0,0,1,1,1\n")
        streaks = ("--particles", "streaks", "--point-size", "3")
        place = FRONT[:-1] + ("transparent",)
        _, _, channels, rows = self.picture(table, *place, *streaks)
        row = rows[SIDE // 2 - 1]
        for x in range(-38, 39, 4):  # from tail to head
            self.assertAlmostEqual(row[(x + SIDE // 2) * channels + 3], 255 * (x + 40.5) / 80, delta=4)
            self.assertGreaterEqual(row[(x + SIDE // 2) * channels], 250)
        result = self.run_viewer(self.write("t.csv", "x,y,z\n0,0,0\n"), *FRONT, *streaks, "-o", self.path("out.png"))
        self.assertEqual(result.returncode, 3)
        self.assertIn(b"vx, vy and vz", result.stderr)

    def test_lit_points_are_darker_than_their_colours(self):
        table = self.write("one.txt", "x y z r g b\n0 0 0 1 0 1\n")
        points = (table, *FRONT, "--particles", "points", "--point-size", "10")
        self.assertEqual(self.pixels(*points)(0, 0), (255, 0, 255))
        red, green, blue = self.pixels(*points, "--lit")(0, 0)
        self.assertTrue(100 < red < 255 and 100 < blue < 255 and green == 0, (red, green, blue))
        self.assertEqual(self.pixels(*points, "--lit", "--no-lights")(0, 0), (255, 0, 255))

    def test_the_fountain_is_the_same_in_every_run_and_tile(self):
        small = ("--demo", "particles", "--size", "160x120", "--samples", "1")
        for kind in ("sprites", "streaks"):
            names = []
            for run in ("a", "b"):
                result = self.run_viewer(*small, "--particles", kind, "--frames", "3", "-o", self.path(f"{run}.png"))
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                names.append([self.path(f"{run}_00{i}.png") for i in (1, 2, 3)])
            frames = [[self.read(name) for name in run] for run in names]
            self.assertEqual(frames[0], frames[1])
            self.assertEqual(len(set(frames[0])), 3)
            still = self.picture(*small, "--particles", kind)
            self.assertEqual(still, read_png(frames[0][0]))
            tiled = self.picture(*small, "--particles", kind, "--tile", "40")
            for row, other in zip(tiled[3], still[3]):  # coordinates round by the tile
                self.assertLessEqual(max(abs(a - b) for a, b in zip(row, other)), 3)
            for name in sum(names, []):
                os.remove(name)

    def test_switches_that_do_not_go_together(self):
        table = self.write("one.txt", "x y z\n0 0 0\n")
        out = ("-o", self.path("out.png"))
        for arguments, word in (
            (["--particles", "smoke", table], "streaks"),
            (["--point-size", "0", table], "0.1"),
            (["--point-size", "nan", table], "0.1"),
            (["--lit", table], "--particles"),
            (["--sprite-images", "a.png", table], "--particles sprites"),
            (["--demo", "fire"], "give particles"),
            (["--demo", "particles", table], "leave"),
            (["--frames", "3", table], "--turntable"),
            (["--turntable", "3", "--demo", "particles"], "--frames"),
        ):
            self.fails(1, [*arguments, *out], arguments[0], word)
        self.fails(1, ["--demo", "particles", "--frames", "3"], "-o")
        triangle = self.write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        result = self.run_viewer(triangle, "--particles", "points", *out)
        self.assertEqual(result.returncode, 3)
        self.assertIn(b"no points", result.stderr)


if __name__ == "__main__":
    unittest.main()
