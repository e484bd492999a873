#!/usr/bin/python3
"""orloview's window as a user meets it, on an X server of its own, with keys and mouse by XTest.

Usage: window_test.py ORLOVIEW [unittest arguments]. Debian's Python: the package python3-xlib belongs to that one.
"""

import contextlib
import math
import os
import pathlib
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from Xlib import XK, X, display, error
from Xlib.ext import xtest
from Xlib.protocol import event

from viewer_files import File, gltf, read_png, unlit

ORLOVIEW = os.path.abspath(sys.argv.pop(1))
WIDTH, HEIGHT = 320, 240
RED, GREEN, BLUE = (255, 0, 0), (0, 255, 0), (0, 0, 255)
MESSAGE = 30  # rows at the bottom where a passing message may stand

# Two triangles that no view shows alike from two sides, one of them half transparent.
CORNERS = ((-1, -1, 0), (1, -1, 0), (0, 1, 0))
NODES = [{"mesh": 0}, {"mesh": 0, "translation": [0.3, 0.2, 0.5], "scale": [0.7, 0.4, 1], "rotation": [0, 0.6, 0, 0.8]}]
MODEL = gltf({"pbrMetallicRoughness": {"baseColorFactor": [0.9, 0.3, 0.1, 0.8]}, "alphaMode": "BLEND"}, CORNERS, nodes=NODES)


class Server:
    """An Xvfb that ends with the test."""

    def __init__(self):
        reading, writing = os.pipe()
        command = ["Xvfb", "-displayfd", str(writing), "-screen", "0", "800x600x24", "-noreset", "-nolisten", "tcp"]
        self.process = subprocess.Popen(command, pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as pipe:
            self.name = ":" + pipe.readline().strip()

    def stop(self):
        self.process.terminate()
        self.process.wait()


class Window:
    """A running orloview and its window."""

    def __init__(self, server, folder, *arguments, moves=False):
        environment = {**os.environ, "DISPLAY": server.name}
        self.process = subprocess.Popen(
            [ORLOVIEW, *arguments], cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )
        self.display = display.Display(server.name)
        self.window = self.wait_for(self.find)
        xtest.fake_input(self.display, X.MotionNotify, x=WIDTH // 2, y=HEIGHT // 2)
        if not moves:
            self.settle()

    def wait_for(self, found):
        """What `found` returns as soon as it is true."""
        for _ in range(600):
            if result := found():
                return result
            time.sleep(0.05)
        raise AssertionError(f"{found.__name__}: not within 30 seconds; {self.process.poll()}")

    def find(self):
        for window in self.display.screen().root.query_tree().children:
            try:
                name = window.get_wm_class()
                if name and name[1] == "orloview" and window.get_attributes().map_state == X.IsViewable:
                    return window
            except error.BadWindow:
                pass
        return None

    def size(self):
        geometry = self.window.get_geometry()
        return geometry.width, geometry.height

    def picture(self):
        """Rows of red, green, blue of what the screen shows."""
        width, height = self.size()
        data = self.window.get_image(0, 0, width, height, X.ZPixmap, 0xFFFFFFFF).data
        rows = []
        for y in range(height):
            line = data[y * width * 4 : (y + 1) * width * 4]
            row = bytearray(width * 3)
            row[0::3], row[1::3], row[2::3] = line[2::4], line[1::4], line[0::4]
            rows.append(bytes(row))
        return rows

    def settle(self):
        """The picture once it has stood still and the program idle for a while, without the rows of the message."""
        last, since = None, time.monotonic()
        end = since + 30
        while time.monotonic() < end:
            now = self.picture()[:-MESSAGE], self.ticks()
            if now != last:
                last, since = now, time.monotonic()
            elif time.monotonic() - since > 0.35:
                return last[0]
            time.sleep(0.05)
        raise AssertionError("the picture never stands still")

    def press(self, name, *modifiers):
        codes = [self.display.keysym_to_keycode(XK.string_to_keysym(key)) for key in (*modifiers, name)]
        for code in codes:
            xtest.fake_input(self.display, X.KeyPress, code)
        for code in reversed(codes):
            xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()

    def after(self, name, *modifiers):
        self.press(name, *modifiers)
        return self.settle()

    def move_pointer(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        self.display.sync()

    def drag(self, button, right, down, shift=False):
        code = self.display.keysym_to_keycode(XK.XK_Shift_L)
        x, y = WIDTH // 2, HEIGHT // 2
        self.move_pointer(x, y)
        if shift:
            xtest.fake_input(self.display, X.KeyPress, code)
        xtest.fake_input(self.display, X.ButtonPress, button)
        for step in range(1, 5):
            self.move_pointer(x + right * step // 4, y + down * step // 4)
            time.sleep(0.02)
        xtest.fake_input(self.display, X.ButtonRelease, button)
        if shift:
            xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()
        return self.settle()

    def wheel(self, button, times, x, y):
        self.move_pointer(x, y)
        for _ in range(times):
            xtest.fake_input(self.display, X.ButtonPress, button)
            xtest.fake_input(self.display, X.ButtonRelease, button)
        self.display.sync()
        return self.settle()

    def resize(self, width, height):
        self.window.configure(width=width, height=height)
        self.display.sync()
        self.wait_for(lambda: self.size() == (width, height))
        if height > MESSAGE:
            return self.settle()
        time.sleep(0.5)
        return None

    def close(self):
        """As a window manager does it."""
        atom = self.display.intern_atom
        ask = event.ClientMessage(
            window=self.window, client_type=atom("WM_PROTOCOLS"), data=(32, [atom("WM_DELETE_WINDOW"), X.CurrentTime, 0, 0, 0])
        )
        self.window.send_event(ask)
        self.display.sync()

    def kill(self):
        self.process.kill()
        self.process.communicate()
        try:
            self.display.close()
        except error.ConnectionClosedError:
            pass

    def end(self):
        """Exit code, standard output and standard error."""
        out, err = self.process.communicate(timeout=30)
        return self.process.returncode, out, err

    def ticks(self):
        with open(f"/proc/{self.process.pid}/stat") as stat:
            return sum(int(number) for number in stat.read().rsplit(")", 1)[1].split()[11:13])


def difference(a, b):
    """The largest difference of two pictures, and the share of values that differ by more than 2."""
    assert len(a) == len(b) and len(a[0]) == len(b[0])
    differences = [abs(p - q) for row, other in zip(a, b) for p, q in zip(row, other)]
    return max(differences), sum(d > 2 for d in differences) / len(differences)


def middle_of(rows, matches):
    """The mean place of the pixels that match."""
    places = [(x, y) for y, row in enumerate(rows) for x in range(len(row) // 3) if matches(*row[x * 3 : x * 3 + 3])]
    return tuple(sum(axis) / len(places) for axis in zip(*places))


def drop(window, paths, kind="text/uri-list"):
    """Drags files over the window and drops them, as a desktop does. Whether the window took them."""
    atom = window.display.intern_atom
    source = window.display.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)

    def send(name, *numbers):
        data = (32, [source.id, *numbers] + [0] * (4 - len(numbers)))
        window.window.send_event(event.ClientMessage(window=window.window, client_type=atom(name), data=data))
        window.display.flush()

    def await_answer(name):
        while True:
            got = window.display.next_event()
            if got.type == X.SelectionRequest:
                text = "".join("file://" + path.replace(" ", "%20") + "\r\n" for path in paths)
                got.requestor.change_property(got.property, got.target, 8, text.encode())
                reply = event.SelectionNotify(time=got.time, requestor=got.requestor, selection=got.selection, target=got.target, property=got.property)
                got.requestor.send_event(reply)
                window.display.flush()
            elif got.type == X.ClientMessage and got.client_type == atom(name):
                return got.data[1][1]

    source.set_selection_owner(atom("XdndSelection"), X.CurrentTime)
    send("XdndEnter", 5 << 24, atom(kind))
    send("XdndPosition", 0, 0, X.CurrentTime, atom("XdndActionCopy"))
    if not await_answer("XdndStatus"):
        send("XdndLeave")
        return 0
    send("XdndDrop", 0, X.CurrentTime)
    return await_answer("XdndFinished")


class WindowTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="orloview-test-")
        self.addCleanup(shutil.rmtree, self.folder)
        with open(os.path.join(self.folder, "m.gltf"), "w") as file:
            file.write(MODEL)
        self.server = Server()
        self.addCleanup(self.server.stop)

    def open(self, *arguments, size=(WIDTH, HEIGHT), moves=False):
        window = Window(self.server, self.folder, *arguments, "--size", f"{size[0]}x{size[1]}", moves=moves)
        self.addCleanup(window.kill)
        return window

    def drawn(self, *switches):
        """The picture that -o writes."""
        out = os.path.join(self.folder, "drawn.png")
        command = [ORLOVIEW, "m.gltf", *switches, "-o", out]
        subprocess.run(command, cwd=self.folder, check=True, env={**os.environ, "DISPLAY": self.server.name})
        return self.png("drawn.png")

    def png(self, name):
        with open(os.path.join(self.folder, name), "rb") as file:
            return read_png(file.read())[3]

    def assertSame(self, shown, wanted, words=""):
        largest, share = difference(shown, wanted[: len(shown)])
        self.assertLessEqual(largest, 2, f"{words}: {share:.2%} of the values differ by more")

    def quit(self, window, name="q"):
        window.press(name)
        code, out, err = window.end()
        self.assertEqual((code, err), (0, ""))
        return out

    def first_eye(self, window):
        """The eye of a window that has another shape than it began with, as switches without the size."""
        window.press("question", "Shift_L")
        return shlex.split(window.process.stdout.readline(), comments=True)[:-2]

    def write(self, name, *arguments, **more):
        """A model under that name, put there in one go; its path."""
        path = os.path.join(self.folder, name)
        with open(path + "~", "w") as file:
            file.write(arguments[0] if isinstance(arguments[0], str) else gltf(*arguments, **more))
        os.rename(path + "~", path)
        return path

    def wait_for_colour(self, window, colour):
        """Until the middle of the window has it."""
        window.wait_for(lambda: tuple(window.picture()[HEIGHT // 2][WIDTH // 2 * 3 :][:3]) == colour)

    def reader_of(self, window):
        """The process that reads for it, once it is there: a child of a child."""

        def found():
            parents = {}
            for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
                with contextlib.suppress(OSError):
                    parents[int(stat.parent.name)] = int(stat.read_text().rsplit(")", 1)[1].split()[1])
            return next((pid for pid, parent in parents.items() if parents.get(parent) == window.process.pid), None)

        return window.wait_for(found)

    def click(self, window, x, y, times=1):
        window.move_pointer(x, y)
        for _ in range(times):
            xtest.fake_input(window.display, X.ButtonPress, 1)
            xtest.fake_input(window.display, X.ButtonRelease, 1)
        window.display.sync()
        time.sleep(0.5)  # no other click's second half

    def destroy(self, window, doomed, out=""):
        doomed.destroy()
        window.display.sync()
        self.assertEqual(window.end(), (0, out, "orloview: another program has destroyed the window\n"))


class Looking(WindowTest):
    """How what is shown is looked at."""

    def test_the_window_shows_what_a_picture_shows(self):
        for switches in ((), ("--background", "#c0ffee", "--axes"), ("--orthographic", "--wireframe", "--up", "0,0,1")):
            window = self.open("m.gltf", *switches)
            self.assertSame(window.settle(), self.drawn(*switches, "--size", f"{WIDTH}x{HEIGHT}"), switches)
            self.quit(window, "Escape")

    def test_keys_and_mouse_change_the_picture_and_home_brings_it_back(self):
        window = self.open("m.gltf")
        first = window.settle()
        for key, modifiers in (
            ("1", ()), ("1", ("Control_L",)), ("3", ()), ("3", ("Control_L",)), ("7", ()), ("7", ("Control_L",)),
            ("KP_3", ()), ("Left", ()), ("Right", ()), ("Up", ()), ("Down", ()), ("minus", ()), ("KP_Add", ()),
        ):
            self.assertNotEqual(window.after(key, *modifiers), first, key)
            self.assertEqual(window.after("Home"), first, key)
        for key in ("5", "w", "e", "l", "c", "k", "g", "x", "s", "h", "F1"):
            if key in "ck":
                window.press("1", "Control_L")  # seen from behind, where culling shows
            before = window.settle()
            self.assertNotEqual(window.after(key), before, key)
            if key == "s":
                window.press(key)
                continue  # the numbers change from frame to frame
            self.assertEqual(window.after(key), before, key)
        window.press("Home")
        for what, act in (
            ("turn", lambda: window.drag(1, 60, 20)),
            ("move", lambda: window.drag(2, 60, 20)),
            ("move with Shift", lambda: window.drag(1, 60, 20, shift=True)),
            ("nearer", lambda: window.wheel(4, 3, 100, 80)),
            ("farther", lambda: window.wheel(5, 3, 100, 80)),
        ):
            self.assertNotEqual(act(), first, what)
            self.assertEqual(window.after("Home"), first, what)
        self.assertEqual(window.drag(3, 60, 20), first, "the right button does nothing")
        self.assertEqual(window.after("Home", "Alt_L"), first)
        self.quit(window)

    def test_dragging_moves_the_model_with_the_pointer_and_the_wheel_keeps_what_is_under_it(self):
        with open(os.path.join(self.folder, "m.gltf"), "w") as file:
            file.write(gltf(unlit(1, 0, 0), ((-0.1, -0.1, 0), (0.1, -0.1, 0), (0, 0.1, 0)), nodes=[{"mesh": 0}]))
        window = self.open("m.gltf", "--eye", "0,0,4", "--target", "0,0,0", "--background", "black")

        def red(rows):
            return middle_of(rows, lambda r, g, b: r > 128)

        x, y = red(window.settle())
        moved = red(window.drag(2, 48, -24))
        self.assertAlmostEqual(moved[0] - x, 48, delta=1)
        self.assertAlmostEqual(moved[1] - y, -24, delta=1)
        place = [round(axis) for axis in moved]
        near = red(window.wheel(4, 4, *place))
        self.assertAlmostEqual(near[0], place[0], delta=1.5)
        self.assertAlmostEqual(near[1], place[1], delta=1.5)
        window.press("f")
        fitted = red(window.settle())
        self.assertAlmostEqual(fitted[0], WIDTH / 2, delta=2)
        self.quit(window)

    def test_the_switches_printed_draw_the_same_picture(self):
        window = self.open("m.gltf", "--grid", "--fov", "50", "--sky", "sunset", "--shadows", "--cull")
        wanted = []
        for act in (
            lambda: window.drag(1, -37, 55),
            lambda: (window.after("x"), window.wheel(4, 2, 200, 100)),
            lambda: (window.after("5"), window.after("l"), window.drag(2, 11, 17)),
            lambda: (window.after("l"), window.after("b")),
            lambda: window.after("7"),
        ):
            act()
            wanted.append(window.settle())
            window.press("question", "Shift_L")
            window.settle()
        lines = self.quit(window).splitlines()
        self.assertEqual(len(lines), len(wanted))
        for line, shown in zip(lines, wanted):
            self.assertSame(shown, self.drawn(*shlex.split(line.removesuffix(" --cull"), comments=True)), line)
        self.assertIn("--orthographic", lines[2])
        self.assertIn("--no-lights", lines[2])
        self.assertIn("--show-sky", lines[3])
        self.assertTrue(all(line.endswith(" --sky sunset --shadows --cull") for line in lines), lines)

    def test_screenshots_are_numbered_and_show_no_overlay(self):
        window = self.open("m.gltf", "--background", "transparent")
        plain = window.after("Left")
        window.press("h")
        for name in ("m_1.png", "m_2.png"):
            window.press("F12")
            window.wait_for(lambda: os.path.exists(os.path.join(self.folder, name)))
        window.press("h")
        self.assertEqual(self.quit(window).split(), ["m_1.png", "m_2.png"])
        self.assertEqual(self.png("m_1.png"), self.png("m_2.png"))
        self.assertEqual(len(self.png("m_1.png")[0]), WIDTH * 4, "alpha is kept")
        self.assertEqual(len(plain[0]), WIDTH * 3)
        os.chmod(self.folder, 0o500)
        self.addCleanup(os.chmod, self.folder, 0o700)

    def test_the_window_follows_resizes_down_to_one_pixel(self):
        window = self.open("m.gltf")
        window.press("h")  # the overlay has to fit as well
        window.resize(1, 1)
        window.resize(2, 500)
        window.resize(500, 300)
        shown = window.after("h")
        self.assertSame(shown, self.drawn("--size", "500x300", *self.first_eye(window)))
        self.assertEqual(window.process.poll(), None)
        self.quit(window)

    def test_an_idle_window_uses_no_processor_time(self):
        window = self.open("m.gltf")
        time.sleep(5)  # until the message has gone
        window.settle()
        before = window.ticks()
        time.sleep(2)
        self.assertEqual(window.ticks(), before)
        self.quit(window)


class Changing(WindowTest):
    """What moves, what is read in its place, and how it ends."""

    def test_an_animation_plays_stops_steps_and_is_dragged(self):
        file = File()
        file.json["meshes"] = [{"primitives": [{"attributes": {"POSITION": file.accessor([[-0.1, -0.1, 0], [0.1, -0.1, 0], [0, 0.1, 0]])}, "material": 0}]}]
        ends = file.accessor([[0], [2]])
        moves = [file.accessor([[-x, -y, 0], [x, y, 0]]) for x, y in ((1, 0), (0, 0.5))]
        channels = [{"sampler": 0, "target": {"node": 0, "path": "translation"}}]
        animations = [{"samplers": [{"input": ends, "output": move}], "channels": channels} for move in moves]

        def write(*colour):
            with open(os.path.join(self.folder, "m.gltf"), "w") as model:
                model.write(file.text(animations=animations, materials=[unlit(*colour)]))

        write(1, 0, 0)
        view = ("--eye", "0,0,4", "--target", "0,0,0", "--background", "black")
        side = HEIGHT / (8 * math.tan(math.radians(17.5)))  # pixels for a length of 1

        def red(rows):
            return middle_of(rows, lambda r, g, b: r > 128 and b < 64)

        def reaches(x, y):
            wanted = WIDTH / 2 + side * x - 0.5, HEIGHT / 2 - side * (y - 0.033) - 0.5
            window.wait_for(lambda: math.dist(red(window.picture()) or (0, 0), wanted) < 1.5)

        window = self.open("m.gltf", *view, moves=True)
        first = window.wait_for(lambda: red(window.picture()))
        window.wait_for(lambda: abs(red(window.picture())[0] - first[0]) > 5)
        write(0, 1, 0)
        window.wait_for(lambda: middle_of(window.picture(), lambda r, g, b: g > 128 and r < 64))
        stopped = window.after("space")
        window.press("question", "Shift_L")
        switches = shlex.split(window.process.stdout.readline())
        self.assertSame(stopped[:-MESSAGE], self.drawn(*switches), switches)
        window.press("a")
        for _ in range(4):
            window.press("bracketleft")
        start = time.monotonic()
        window.press("space")
        time.sleep(0.4)
        window.after("space")
        most = (time.monotonic() - start) / 16
        window.press("question", "Shift_L")
        switches = shlex.split(window.process.stdout.readline())
        self.assertEqual(switches[-4:-1], ["--animation", "1", "--time"])
        self.assertTrue(0 < float(switches[-1]) <= most, f"{switches[-1]} of {most}")
        self.assertEqual(self.quit(window), "")

        write(1, 0, 0)
        window = self.open("m.gltf", *view, "--time", "0.5", "--fps", "4", moves=True)
        reaches(-0.5, 0)
        window.press("period")
        reaches(-0.25, 0)
        window.press("comma")
        window.press("comma")
        reaches(-0.75, 0)
        window.move_pointer(WIDTH // 4, HEIGHT - 6)
        xtest.fake_input(window.display, X.ButtonPress, 1)
        window.move_pointer(WIDTH // 2, HEIGHT // 2)
        reaches(0, 0)
        window.move_pointer(WIDTH * 3 // 4, HEIGHT - 6)
        xtest.fake_input(window.display, X.ButtonRelease, 1)
        reaches(0.5, 0)
        window.press("a")
        reaches(0, -0.5)
        window.press("comma")
        reaches(0, 0.375)
        self.quit(window)

    def test_the_fountain_moves_and_obeys_keys(self):
        window = self.open("--demo", "particles", moves=True)
        first = window.picture()
        window.wait_for(lambda: difference(first, window.picture())[1] > 0.01)
        window.press("F12")
        shot = os.path.join(self.folder, "fountain_1.png")
        window.wait_for(lambda: os.path.exists(shot))
        self.destroy(window, window.window.query_tree().children[0], "fountain_1.png\n")

    def test_a_folder_is_shown_file_by_file(self):
        os.mkdir(os.path.join(self.folder, "many"))
        for name, *model in (
            ("many/1.gltf", "broken"), ("many/2.gltf", unlit(1, 0, 0)), ("many/9.gltf", "broken"), ("many/10.gltf", unlit(0, 1, 0)), ("many/notes.md", "#"),
        ):
            self.write(name, *model)
        window = self.open("many")
        self.wait_for_colour(window, RED)
        window.press("Page_Down")
        self.assertIn("9.gltf", window.process.stderr.readline() + window.process.stderr.readline())
        self.wait_for_colour(window, RED)
        window.press("Page_Down")
        self.wait_for_colour(window, GREEN)
        window.wait_for(lambda: "10.gltf" in window.window.get_full_text_property(window.display.intern_atom("_NET_WM_NAME")))
        window.press("Page_Up")
        window.press("Page_Up")
        self.wait_for_colour(window, RED)
        window.press("q")
        self.assertEqual(window.end()[:2], (0, ""))
        os.mkdir(os.path.join(self.folder, "none"))
        for good in ("2.gltf", "10.gltf"):
            self.write("many/" + good, "broken now")
        for folder, words in (("none", "no model lies in"), ("many", "10.gltf: ")):
            command, env = [ORLOVIEW, folder], {**os.environ, "DISPLAY": self.server.name}
            result = subprocess.run(command, cwd=self.folder, env=env, capture_output=True, text=True)
            self.assertEqual((result.returncode, words in result.stderr), (2, True), result.stderr)

    def test_a_file_that_changes_is_read_again_from_where_it_was_looked_at(self):
        whole = dict(positions=((-9, -9, 0), (9, -9, 0), (0, 9, 0)))
        self.write("m.gltf", unlit(1, 0, 0), **whole)
        window = self.open("m.gltf")
        window.wheel(4, 3, 100, 80)
        window.press("question", "Shift_L")
        self.write("m.gltf", unlit(0, 1, 0), **whole)
        self.wait_for_colour(window, GREEN)
        self.write("m.gltf", '{"asset": ')
        self.assertIn("m.gltf: ", window.process.stderr.readline())
        self.wait_for_colour(window, GREEN)
        self.write("m.gltf", unlit(0, 0, 1), **whole)
        self.wait_for_colour(window, BLUE)
        window.press("r")
        window.settle()
        window.press("question", "Shift_L")
        window.settle()
        window.press("q")
        code, out, _ = window.end()
        first, second = out.splitlines()
        self.assertEqual((code, first), (0, second), "the eye stays")

    def test_reading_goes_on_beside_the_window_and_escape_stops_it(self):
        window = self.open("m.gltf")
        first = window.settle()
        large = self.write("large.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + "f 1 2 3\n" * 1000000)
        corner = window.picture()[-5][-3:]
        drop(window, [large])
        reader = self.reader_of(window)
        os.kill(reader, signal.SIGSTOP)
        window.wait_for(lambda: window.picture()[-5][-3:] != corner)  # what is under way stands across the window
        window.press("Left")
        window.wait_for(lambda: difference(window.picture()[: -2 * MESSAGE], first[:-MESSAGE])[1] > 0.01)
        window.press("Escape")
        turned = window.settle()
        self.assertFalse(os.path.exists(f"/proc/{reader}"))
        self.assertEqual(window.after("Right"), first)
        self.assertEqual(window.after("Left"), turned)
        self.quit(window, "Escape")

    def test_a_file_that_changes_while_it_is_read_is_read_once_more(self):
        apart = "".join(f"v {x} {y} 0\n" for x in (-9, 8) for x, y in ((x, -1), (x + 1, -1), (x, 1))) + "f 1 2 3\nf 4 5 6\n"
        window = self.open(self.write("small.obj", apart), "--background", "#ff0000")
        self.wait_for_colour(window, RED)  # nothing is in the middle
        tiny = "v -9 -0.9999 0\nv -8.9999 -1 0\n" + "f 1 7 8\n" * 300000  # long to read, not to draw
        drop(window, [self.write("large.obj", apart + tiny)])
        reader = self.reader_of(window)
        os.kill(reader, signal.SIGSTOP)
        self.write("large.obj", "v -9 -9 0\nv 9 -9 0\nv 0 9 0\nf 1 2 3\n")
        os.kill(reader, signal.SIGCONT)  # and reads what was there
        window.wait_for(lambda: tuple(window.picture()[HEIGHT // 2][WIDTH // 2 * 3 :][:3]) != RED)
        self.quit(window)

    def test_parts_are_named_distances_measured_and_light_is_turned_up(self):
        nodes = [{"name": "left", "mesh": 0, "translation": [-1, 0, 0]}, {"name": "right", "mesh": 0, "translation": [1, 0, 0]}]
        positions = ((-0.5, -0.5, 0), (0.5, -0.5, 0), (0, 0.5, 0))
        self.write("m.gltf", {"pbrMetallicRoughness": {"baseColorFactor": [0.1, 0.1, 0.1, 1]}}, positions, nodes=nodes)
        window = self.open("m.gltf", "--eye", "0,0,10", "--target", "0,0,0", "--orthographic", "--fov", "22.6198649", "--edges")
        first = window.settle()
        self.click(window, WIDTH // 2 + 60, HEIGHT // 2, times=2)
        window.press("m")
        self.click(window, WIDTH // 2 - 60, HEIGHT // 2)
        self.click(window, WIDTH // 2 + 60, HEIGHT // 2)
        window.press("m")
        window.press("t")
        self.click(window, WIDTH * 3 // 4, HEIGHT - 5)
        for key in ("i", "n", "v"):
            before = window.settle()
            self.assertTrue(window.after(key) != before, key)
            window.press(key)
        self.click(window, WIDTH * 3 // 4, HEIGHT - 28)  # the cut's slider, above the other: along y by now
        shown = window.settle()
        window.press("question", "Shift_L")
        line = self.quit(window).splitlines()[-1]
        words = shlex.split(line, comments=True)
        given = {name: value for name, value in zip(words, words[1:])}
        self.assertEqual((given["--part"], given["--clip"][:2]), ("1", "y,"))
        self.assertAlmostEqual(float(given["--clip"][2:]), 0.25, delta=0.01)
        self.assertAlmostEqual(float(given["--exposure"]), 3, delta=0.1)
        places = [float(value) for value in line.split("--measure=")[1].split()[0].split(",")]
        for place, wanted in zip(places, (-1, 0, 0, 1, 0, 0)):
            self.assertAlmostEqual(place, wanted, delta=0.03)
        drawn = self.drawn(*words)
        half = slice(HEIGHT // 2 + 20, HEIGHT - 2 * MESSAGE)  # no panel, no label
        self.assertSame(shown[half], drawn[half], line)
        self.assertGreater(sum(map(sum, drawn[half])), 1.1 * sum(map(sum, first[half])))
        orange = middle_of(drawn, lambda r, g, b: (r, b) > (240, 0) and g < 190 and b < 60)
        self.assertAlmostEqual(orange[0], WIDTH / 2 + 60, delta=6)

    def test_cameras_are_stepped_through(self):
        camera = {"type": "perspective", "perspective": {"yfov": 1, "znear": 0.1}}
        nodes = [{"mesh": 0}, {"camera": 0, "translation": [0, 0, 5]}, {"camera": 1, "translation": [3, 0, 5]}]
        self.write("m.gltf", unlit(1, 0, 0), cameras=[camera, camera], nodes=nodes)
        window = self.open("m.gltf")
        first = window.settle()
        for number in ("0", "1"):
            self.assertSame(window.after("c"), self.drawn("--camera", number, "--size", f"{WIDTH}x{HEIGHT}"), number)
        self.assertEqual(window.after("c"), first)
        self.quit(window)

    def test_files_are_dropped(self):
        green, blue = self.write("a green.gltf", unlit(0, 1, 0)), self.write("blue.gltf", unlit(0, 0, 1), ((2, 0, 0), (3, 0, 0), (2, 1, 0)))
        window = self.open("m.gltf")
        self.assertEqual(drop(window, [green]), 1)
        self.wait_for_colour(window, GREEN)
        drop(window, [green, blue])
        window.wait_for(lambda: any(bytes(BLUE) in row for row in window.picture()))
        self.assertEqual(drop(window, ["plain"], "text/plain"), 0, "no files")
        self.quit(window)

    def test_closing_ends_with_0(self):
        window = self.open("m.gltf", "--stats")
        window.close()
        code, out, err = window.end()
        self.assertEqual((code, out), (0, ""))
        self.assertRegex(err, r"^window: \d+ frames, [\d.]+ ms each, [\d.]+ per second\n$")

    def test_a_window_that_another_client_destroys_ends_with_0(self):
        window = self.open("m.gltf")
        self.destroy(window, window.window)

    def test_a_lost_server_ends_with_one_line(self):
        window = self.open("m.gltf")
        self.server.process.kill()
        code, out, err = window.end()
        self.assertEqual((code, out, err.count("\n")), (4, "", 1), err)
        self.assertIn("X server was lost", err)


if __name__ == "__main__":
    unittest.main()
