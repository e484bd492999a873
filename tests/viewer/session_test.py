#!/usr/bin/env python3
"""How orloview reaches OpenGL: a display, a private one, EGL, nothing.

Usage: session_test.py ORLOVIEW SABOTAGE HEADLESS [unittest arguments]
"""

import os
import re
import signal
import subprocess
import sys
import unittest

from viewer_files import gltf, read_png
from viewer_program import ViewerProgram

PRELOADED = os.path.abspath(sys.argv.pop(1))
HEADLESS = os.path.abspath(sys.argv.pop(1))

NO_DISPLAY = {"DISPLAY": None}

NO_EGL = {"__EGL_VENDOR_LIBRARY_FILENAMES": "/dev/null"}


def sabotaged(harm):
    return {"LD_PRELOAD": PRELOADED, "SABOTAGE": harm, "ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0"}


class Sessions(ViewerProgram):
    def setUp(self):
        super().setUp()
        self.model = self.write("m.gltf", gltf())
        self.no_programs = {**NO_DISPLAY, "PATH": self.folder}

    def drawn(self, *switches, environment=None):
        """The picture's bytes, and the driver and the road that -v tells."""
        result = self.run_viewer(self.model, "-o", "-", "--size", "64x48", "-v", *switches, environment=environment)
        told = result.stderr.decode()
        self.assertEqual(result.returncode, 0, told)
        return result.stdout, *re.search(r"orloview: OpenGL (.*), through (.*)\n", told).groups()

    def test_without_an_x_server_egl_draws_the_same(self):
        by_glx, driver, road = self.drawn("--display", "x11")
        self.assertIn("GLX on the X display", road)
        by_egl, egl_driver, road = self.drawn(environment=self.no_programs)
        self.assertIn("EGL on", road)
        if driver == egl_driver:  # a GPU may be where no display is
            self.assertEqual(by_egl, by_glx, "to the byte")
        self.assertIn("EGL on", self.drawn("--display", "egl")[2], "also beside a display")
        cg = self.run_viewer(self.model, "-o", self.path("cg.png"), "--shading", "cg", environment=self.no_programs)
        self.assertEqual((cg.returncode, cg.stderr), (0, b""), "the Cg runtime knows the context")
        info = self.run_viewer("--gl-info", environment=self.no_programs)
        self.assertIn("kCapGLXWindow: no", info.stdout.decode())

    def test_without_both_a_private_server_does(self):
        picture, _, road = self.drawn(environment={**NO_DISPLAY, **NO_EGL})
        self.assertEqual(read_png(picture)[:2], (64, 48))
        self.assertIn("a private Xvfb", road)
        self.assertIn("a private Xvfb", self.drawn("--offscreen", "pbuffer", environment=NO_DISPLAY)[2], "where pbuffers are")

    def test_with_nothing_it_says_what_to_do(self):
        out = ["-o", self.path("out.png")]
        nothing = {**self.no_programs, **NO_EGL}
        for arguments, words, environment in (
            ([self.model, *out], ["no X display", "libegl-mesa0"], nothing),
            ([self.model, *out, "--display", "x11"], ["no X display", "xvfb"], self.no_programs),
            ([self.model, *out, "--display", "egl"], ["EGL", "libegl-mesa0"], NO_EGL),
            (["--gl-info"], [":99999"], {**nothing, "DISPLAY": ":99999"}),
            ([self.model], ["no X display", "-o picture.png"], NO_DISPLAY),
            ([self.model, *out], ["broke down while it started"], sabotaged("crash")),
            ([self.model, *out], ["libGL.so.1"], sabotaged("no GL")),
        ):
            with self.subTest(arguments=arguments):
                message = self.fails(4, arguments, *words, environment=environment)
                self.assertEqual(message.count("\n"), 1, message)

    def test_a_model_that_cant_be_read_is_told_whatever_becomes_of_opengl(self):
        broken = self.write("broken.obj", "v 0 0 0\n" + "f 1 2 3\n" * 200000)
        nothing = {**self.no_programs, **NO_EGL}
        for arguments in ([self.path("gone.glb")], [broken, "-o", self.path("out.png")]):
            for environment in (None, nothing, {**nothing, "DISPLAY": ":99999"}, sabotaged("crash")):
                message = self.fails(2, arguments, os.path.basename(arguments[0]), environment=environment)
                self.assertEqual(message.count("\n"), 1, message)

    def test_a_server_that_goes_when_all_is_written_is_no_failure(self):
        for switches, code in (([], 0), (["--offscreen", "pbuffer"], 0)):
            result = self.run_viewer(self.model, "-o", self.path("done.png"), *switches, environment=sabotaged("lost server"))
            self.assertEqual((result.returncode, result.stderr), (code, b""))

    def test_a_name_just_made_is_taken_away(self):
        result = self.run_viewer(self.model, "-o", self.path("out.png"), environment=sabotaged("signal"))
        self.assertEqual((result.returncode, os.listdir(self.folder)), (-signal.SIGTERM, ["m.gltf"]))

    def test_wrong_switches(self):
        self.fails(1, [self.model, "--display", "wayland"], "--display wayland", "auto, x11 or egl")
        self.fails(1, [self.model, "--display", "egl"], "a window needs an X display")
        self.fails(1, [self.model, "--display", "egl", "--offscreen", "pbuffer", "-o", self.path("out.png")], "pbuffers")

    def test_the_example_host_draws(self):
        environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
        picture = subprocess.run([HEADLESS], check=True, stdout=subprocess.PIPE, env=environment).stdout
        self.assertTrue(picture.startswith(b"P6\n320 240\n255\n"))
        self.assertEqual(list(picture[15 + (120 * 320 + 160) * 3:][:3]), [255, 153, 51])


if __name__ == "__main__":
    unittest.main()
