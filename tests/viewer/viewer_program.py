"""A test case that runs orloview as a user would. A test program that imports this takes the viewer's path as its
first argument."""

import ctypes
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

from viewer_files import read_png

ORLOVIEW = os.path.abspath(sys.argv.pop(1))


def refuse_nameless_files():
    """For a child, before it becomes the viewer: no file system keeps files without a name (O_TMPFILE)."""
    openat, flags, nameless, unsupported, allowed = 257, 32, 0o20000000, 0x5005F, 0x7FFF0000
    rules = ((0x20, 0, 0, 0), (0x15, 0, 3, openat), (0x20, 0, 0, flags), (0x45, 0, 1, nameless), (6, 0, 0, unsupported), (6, 0, 0, allowed))
    filters = ctypes.create_string_buffer(b"".join(struct.pack("=HBBI", *rule) for rule in rules))
    prctl = ctypes.CDLL(None).prctl
    prctl(38, 1, 0, 0, 0)  # no new privileges
    prctl(22, 2, struct.pack("=H6xQ", len(rules), ctypes.addressof(filters)), 0, 0)  # seccomp


class ViewerProgram(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="orloview-test-")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content.encode() if isinstance(content, str) else content)
        return self.path(name)

    def run_viewer(self, *arguments, environment=None, piped=None):
        env = {**os.environ, **(environment or {})}
        env = {name: value for name, value in env.items() if value is not None}
        return subprocess.run([ORLOVIEW, *arguments], capture_output=True, timeout=120, env=env, input=piped)

    def without(self, extension, capability):
        """An environment in which the driver lists an extension no more. Where it can't be told so, as all but Mesa's
        can't, the test is skipped."""
        environment = {"MESA_EXTENSION_OVERRIDE": f"-{extension}"}
        if f"{capability}: yes" in self.run_viewer("--gl-info", environment=environment).stdout.decode():
            self.skipTest(f"this driver can't be told to leave {extension} out")
        return environment

    def picture(self, *arguments, expect=0, environment=None):
        result = self.run_viewer(*arguments, "-o", self.path("out.png"), environment=environment)
        self.assertEqual(result.returncode, expect, result.stderr.decode())
        with open(self.path("out.png"), "rb") as file:
            return read_png(file.read())

    def fails(self, code, arguments, *words, environment=None):
        """One line on standard error with these words, this exit code, no picture."""
        result = self.run_viewer(*arguments, environment=environment)
        message = result.stderr.decode()
        self.assertEqual(result.returncode, code, f"{arguments}: {message}")
        self.assertTrue(message.startswith("orloview: "), message)
        self.assertFalse(os.path.exists(self.path("out.png")), arguments)
        for word in words:
            self.assertIn(word, message)
        for ugly in ("terminate", "exception", "crashed", ".cpp", "std::", "X Error"):
            self.assertNotIn(ugly, message)
        return message
