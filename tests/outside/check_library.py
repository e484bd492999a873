#!/usr/bin/env python3
"""What the two libraries ask of a process and what they promise to it.

Usage: check_library.py [--update] PROMISES COMPILER INCLUDE:INCLUDE... LIBRARY...

Each library may need only the C++ runtime, libdl, Xlib and the host library, and may leave no GL, GLX, GLU or Cg
function undefined. What PROMISES lists is what programs are bound to that were linked against this release: each
exported function and object, and, where the COMPILER is GCC, the size and the virtual functions of each class of the
public headers. --update rewrites PROMISES.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

NEEDED = re.compile(r"(liborlohost|libX11|libstdc\+\+|libgcc_s|libc|libm|libdl|ld-linux-x86-64|lib[atu]+b?san)\.so")
DRIVER_FUNCTION = re.compile(r"(gl|glX|glu|cg)[A-Z]\w*")
# What compilers and sanitizers add, as they please.
ADDED = re.compile(r"__odr_asan|__asan|__ubsan|__sanitizer|__bss_start|_edata|_end|guard variable|typeinfo|vtable|"
                   r"([\w:]+ )*(std|__gnu_cxx)::")
OUR_CLASS = re.compile(r"^ *(?:class|struct) (?:ORLO\w+_API )?(\w+)[^;()]*$", re.MULTILINE)


def output(*command):
    return subprocess.run(command, text=True, capture_output=True, check=True).stdout


def needed_libraries(library):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-d", library))


def undefined_symbols(library):
    return [line.split()[-1].split("@")[0] for line in output("nm", "-D", "--undefined-only", library).splitlines()]


def short_name(library):
    return pathlib.Path(library).name.split(".")[0]


def exports(library):
    """Weak symbols don't count: which inline functions leave one behind is the compiler's choice."""
    lines = [line.split(maxsplit=2) for line in output("nm", "-DC", "--defined-only", library).splitlines()]
    return {f"{short_name(library)} {symbol}" for _, kind, symbol in lines
            if kind in "TDBR" and not ADDED.match(symbol)}


def layouts(compiler, folders):
    """What a program has compiled in: sizes of our classes, and the places of their virtual functions."""
    headers = [path for folder in folders for path in pathlib.Path(folder).rglob("*.h")]
    ours = {name for path in headers for name in OUR_CLASS.findall(path.read_text(encoding="utf-8"))}
    with tempfile.TemporaryDirectory() as scratch:
        source, dump = pathlib.Path(scratch, "all.cpp"), pathlib.Path(scratch, "all.class")
        source.write_text("#include <orlogl.h>\n#include <orlohost.h>\n", encoding="utf-8")
        output(compiler, "-std=c++20", "-fsyntax-only", *(f"-I{folder}" for folder in folders), f"-fdump-lang-class={dump}", source)
        text = dump.read_text(encoding="utf-8")
    found = {f"sizeof {name} {size}" for name, size in re.findall(r"^Class (\S.*)\n   size=(\d+)", text, re.MULTILINE)
             if set(re.split("::|<", name)) & ours and not re.match("std::|__|OrloHostType", name)}
    for name, table in re.findall(r"^Vtable for (\S+)\n.*\n((?:\d+ .*\n)*)", text, re.MULTILINE):
        if name.split("::")[-1] in ours:
            places = re.findall(r"[)]([~:_A-Za-z]\S*)", table)
            found.add(f"virtual {name} {', '.join(places)}")
    return found


def promised(arguments):
    compiler, folders, *libraries = arguments
    promises = set().union(*(exports(library) for library in libraries))
    gcc = "Free Software Foundation" in output(compiler, "--version")
    return promises | (layouts(compiler, folders.split(":")) if gcc else set()), gcc


def subject(promise):
    """What a promise is about: its two words before any parameters."""
    return " ".join(promise.split("(")[0].split()[:2])


def told_apart(listed, found):
    """Added, changed and removed promises, as lines."""
    added, removed = found - listed, listed - found
    changed = {subject(promise) for promise in added} & {subject(promise) for promise in removed}
    for promises, alone, together in ((removed, "removed: ", "changed from: "), (added, "added: ", "changed to: ")):
        yield from (f"{together if subject(promise) in changed else alone}{promise}" for promise in sorted(promises))


def main():
    arguments = sys.argv[1:]
    update = arguments[0] == "--update"
    file, *arguments = arguments[update:]
    file = pathlib.Path(file)
    found, layouts_known = promised(arguments)
    if update:
        file.write_text("\n".join(sorted(found)) + "\n", encoding="utf-8")
        return 0
    problems = []
    for library in arguments[2:]:
        problems += [f"{library} needs {lib}" for lib in needed_libraries(library) if not NEEDED.match(lib)]
        problems += [f"{library} leaves {s} undefined" for s in undefined_symbols(library) if DRIVER_FUNCTION.fullmatch(s)]
    listed = set(file.read_text(encoding="utf-8").splitlines()) if file.is_file() else set()
    if not layouts_known:
        listed = {promise for promise in listed if promise.startswith("lib")}
    changes = list(told_apart(listed, found))
    if changes:
        changes.append(f"What is changed or removed breaks programs that were linked against the release of {file.name}: once it is "
                       "out, raise the minor version first. Then: cmake --build --preset debug --target update-promises")
    print(*problems, *changes, sep="\n")
    return 1 if problems or changes else 0


if __name__ == "__main__":
    sys.exit(main())
