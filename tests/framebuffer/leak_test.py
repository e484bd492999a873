#!/usr/bin/env python3
"""What windows leave behind in the host's memory: exactly what docs/embedding.md lists.

Usage: leak_test.py PROGRAM TEST

Runs one test of PROGRAM under valgrind and looks at the lost blocks that were allocated through our libraries, and at
wrong accesses in them. X resources (colormaps, child windows) are the server's and don't show here.
"""

import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

LIBRARY = re.compile(r"liborlo(gl|host)\.so")

# The functions of ours that a lost block was allocated through, innermost first.
LEFT_BEHIND = sorted([
    # The visual of the start-up context.
    ("GLStartupContext::GLStartupContext",),
    # Of each window by the SGIX path, the visual of the configuration and the context made for it.
    ("GLFunctionTable::glXGetVisualFromFBConfigSGIX", "GLFrameBuffer::createBySGIXConfiguration"),
    ("GLFunctionTable::glXCreateContext", "GLFrameBuffer::createBySGIXConfiguration"),
])


def is_own(frame):
    return LIBRARY.search(frame.findtext("obj", ""))


def main():
    program, test = sys.argv[1:]
    with tempfile.NamedTemporaryFile(suffix=".xml") as report:
        result = subprocess.run(
            ["valgrind", "--leak-check=full", "--num-callers=60", "--xml=yes", f"--xml-file={report.name}", program,
             f"--gtest_filter={test}"], text=True, capture_output=True)
        if result.returncode != 0 or "[  PASSED  ] 1 test." not in result.stdout:
            sys.exit(f"{test}: failed under valgrind\n{result.stdout}{result.stderr}")
        errors = xml.etree.ElementTree.parse(report.name).getroot().findall("error")
    lost = set()
    problems = []
    for error in errors:
        kind = error.findtext("kind")
        stack = error.find("stack")
        # Function and line of the frames in our libraries, innermost first.
        frames = [(f.findtext("fn", "?").split("(")[0], f.findtext("line")) for f in stack if is_own(f)]
        if frames and kind == "Leak_DefinitelyLost":  # what is possibly lost differs from run to run
            lost.add(tuple(frames[:2]))
        elif not kind.startswith("Leak_") and is_own(stack[0]):
            problems.append(f"{kind} in {frames}")
    # Two lines of a function that lose something are two leaks: each is listed once.
    found = sorted(tuple(name for name, _ in frames) for frames in lost)
    if found != LEFT_BEHIND:
        problems.append(f"left behind are {found}, expected {LEFT_BEHIND}")
    print("\n".join(problems) or "nothing but what is listed")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
