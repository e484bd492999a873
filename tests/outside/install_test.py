#!/usr/bin/env python3
"""Installs, moves what was installed elsewhere, builds a project of its own against it and runs what is there.

Usage: install_test.py CMAKE SOURCES BUILD CXX [FLAGS]
"""

import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)


def run(*command):
    """Standard output as bytes; what fails ends the test with its output."""
    environment = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
    done = subprocess.run(command, capture_output=True, env=environment)
    if done.returncode:
        sys.exit(f"{command} ended with {done.returncode}:\n{(done.stdout + done.stderr).decode(errors='replace')}")
    return done.stdout


def reached(include, start):
    """The installed headers that a host gets with one include."""
    seen, todo = set(), [start]
    while todo:
        path = todo.pop()
        if path in seen or not path.is_file():
            continue
        seen.add(path)
        for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            todo += [path.parent / name, include / name, include / "orlogl" / name]
    return seen


def check_headers(prefix):
    include = prefix / "include"
    public = reached(include, include / "orlogl/orlogl.h") | reached(include, include / "orlohost.h")
    installed = {path for path in include.rglob("*") if path.is_file()}
    assert public, "no umbrella header is installed"
    assert installed == public, f"headers that no umbrella includes: {sorted(map(str, installed - public))}"


def check_paths(prefix, *folders):
    """The package must not remember where it was built or first installed."""
    texts = list(prefix.rglob("*.cmake"))
    assert texts, "no CMake package is installed"
    for text in texts:
        for folder in folders:
            assert str(folder) not in text.read_text(encoding="utf-8"), f"{text} mentions {folder}"


def check_libraries(prefix, program):
    """A program takes our libraries from where they lie now."""
    for line in run("ldd", program).decode().splitlines():
        if "liborlo" in line:
            assert str(prefix) in line, line


def by_pkg_config(prefix, scratch, compiler, flags, source):
    """A program that is compiled as pkg-config says."""
    folder = next(prefix.rglob("orlogl.pc")).parent
    asked = subprocess.run(["pkg-config", "--cflags", "--libs", "orlogl"], capture_output=True, check=True, text=True,
                           env={**os.environ, "PKG_CONFIG_PATH": str(folder)})
    program = scratch / "by_pkg_config"
    run(compiler, "-std=c++20", *flags, source, "-o", program, *shlex.split(asked.stdout), f"-Wl,-rpath,{folder.parent}")
    return program


def check_cg(prefix, model, scratch, sanitized):
    """The viewer finds the Cg runtime and its shaders beside it, and goes on without a runtime."""
    viewer = prefix / "bin/orloview"
    # The sanitizer's own dlopen doesn't look where the library's would.
    search = {"LD_LIBRARY_PATH": prefix / "lib"} if sanitized else {}

    def draw(name, *switches):
        command = [viewer, model, "-o", scratch / name, "--size", "160x120", *switches]
        environment = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
        done = subprocess.run(command, capture_output=True, env={**environment, **search})
        return done.returncode, done.stderr.decode()

    assert draw("cg.png", "--shading", "cg") == (0, "")
    assert draw("toon.png", "--cg", "toon") == (0, "")
    for library in (prefix / "lib").rglob("libCg*"):
        library.unlink()
    missing = "there is no Cg runtime (libCg.so and libCgGL.so)"
    assert draw("glsl.png", "--shading", "glsl") == (0, "")
    told = draw("without.png", "--shading", "cg")
    assert told == (0, f"orloview: --shading cg: {missing}; drawn by GLSL shaders\n"), told
    assert (scratch / "without.png").read_bytes() == (scratch / "glsl.png").read_bytes()
    told = draw("none.png", "--cg", "toon")
    assert told == (4, f"orloview: --cg: {missing}; leave it out\n"), told


def main():
    cmake, sources, build, compiler, *flags = sys.argv[1:]
    sources, flags = pathlib.Path(sources), [flag for flag in flags if flag]
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch).resolve()
        first, prefix, tree = scratch / "first", scratch / "moved to" / "here", scratch / "tree"
        run(cmake, "--install", build, "--prefix", first)
        prefix.parent.mkdir()
        first.rename(prefix)
        check_headers(prefix)
        check_paths(prefix, first, build, sources)

        example = sources / "examples/minimal.cpp"
        outsider = [cmake, "-S", sources / "tests/outside/package", f"-DCMAKE_CXX_COMPILER={compiler}", f"-DEXAMPLE={example}"]
        run(*outsider, "-B", tree, f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_FLAGS={' '.join(flags)}")
        run(cmake, "--build", tree)
        run(tree / "names")
        check_libraries(prefix, tree / "minimal")
        picture = run(tree / "minimal")
        assert run(by_pkg_config(prefix, scratch, compiler, flags, example)) == picture, "pkg-config"
        # Nothing but the two libraries, from their sources, by the other compiler and without a warning.
        inside = scratch / "inside"
        run(*outsider, "-B", inside, f"-DORLOGL_SOURCES={sources}", "-DCMAKE_UNITY_BUILD=ON",
            "-DCMAKE_UNITY_BUILD_BATCH_SIZE=10", "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_C_COMPILER=clang",
            "-DCMAKE_BUILD_TYPE=Release", "-DORLOGL_WERROR=ON")
        run(cmake, "--build", inside, "-j", "2")
        assert run(inside / "minimal") == picture, "add_subdirectory"
        built = {path.name for path in inside.rglob("*.so")}
        assert built == {"liborlogl.so", "liborlohost.so"}, built
        corner, middle = (picture[at:at + 3] for at in (15, 15 + (120 * 320 + 160) * 3))
        assert picture.startswith(b"P6\n320 240\n255\n") and corner != middle, "minimal drew nothing"

        viewer = prefix / "bin/orloview"
        check_libraries(prefix, viewer)
        run(viewer, sources / "samples/showcase.glb", "-o", scratch / "picture.png", "--size", "160x120")
        assert (scratch / "picture.png").read_bytes().startswith(b"\x89PNG\r\n\x1a\n")
        check_cg(prefix, sources / "samples/showcase.glb", scratch, bool(flags))
        assert (prefix / "share/doc/OrloGL/LICENSE").is_file()


if __name__ == "__main__":
    main()
