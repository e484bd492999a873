#!/usr/bin/env python3
"""What the two libraries ask of a process and what they offer to it.

Usage: check_library.py [--update] EXPORTS LIBRARY...

Each library may need only the C++ runtime, libdl, Xlib and the host library, may leave no GL, GLX, GLU or Cg
function undefined, and must export exactly what EXPORTS lists: a class by its name, a free function by its
signature. --update rewrites EXPORTS from the libraries.
"""

import pathlib
import re
import subprocess
import sys

NEEDED = re.compile(r"(liborlohost|libX11|libstdc\+\+|libgcc_s|libc|libm|libdl|ld-linux-x86-64|lib[atu]+b?san)\.so")
DRIVER_FUNCTION = re.compile(r"(gl|glX|glu|cg)[A-Z]\w*")
SANITIZER = re.compile(r"__odr_asan|__asan|__ubsan|__sanitizer")
NAMESPACES = ("koString", "koLinear", "koColor", "koSharedObject", "koUtil", "koShadingDag")


def output(*command):
    return subprocess.run(command, text=True, capture_output=True, check=True).stdout


def needed_libraries(library):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-d", library))


def undefined_symbols(library):
    return [line.split()[-1].split("@")[0] for line in output("nm", "-D", "--undefined-only", library).splitlines()]


def owner(symbol):
    """The class that a symbol belongs to, or the symbol itself; None for what the compiler adds."""
    symbol = re.sub(r"^(typeinfo|vtable|(non-)?virtual thunk) (name )?(for|to) ", "", symbol)
    if SANITIZER.match(symbol) or re.match(r"([\w:]+ )*(std|__gnu_cxx)::", symbol):
        return None
    path = symbol.split("(")[0].split("<")[0].split("::")
    depth = 2 if path[0] in NAMESPACES else 1
    return "::".join(path[:depth]) if len(path) > depth else symbol


def exports(library):
    """Weak symbols don't count: which inline functions leave one behind is the compiler's choice."""
    lines = [line.split(maxsplit=2) for line in output("nm", "-DC", "--defined-only", library).splitlines()]
    owners = {owner(symbol) for _, kind, symbol in lines if kind in "TDBR"}
    return sorted(owners - {None, "__bss_start", "_edata", "_end"})


def check(library, listed):
    name = pathlib.Path(library).name.split(".")[0]
    problems = [f"needs {lib}" for lib in needed_libraries(library) if not NEEDED.match(lib)]
    problems += [f"leaves {s} undefined" for s in undefined_symbols(library) if DRIVER_FUNCTION.fullmatch(s)]
    found = {f"{name} {export}" for export in exports(library)}
    expected = {line for line in listed if line.startswith(f"{name} ")}
    problems += [f"exports what is not listed: {line}" for line in sorted(found - expected)]
    problems += [f"lacks what is listed: {line}" for line in sorted(expected - found)]
    return [f"{library}: {problem}" for problem in problems]


def main():
    arguments = sys.argv[1:]
    update = arguments[0] == "--update"
    file, *libraries = arguments[1:] if update else arguments
    file = pathlib.Path(file)
    if update:
        lines = [f"{pathlib.Path(lib).name.split('.')[0]} {export}" for lib in libraries for export in exports(lib)]
        file.write_text("\n".join(lines) + "\n", encoding="utf-8")
        return 0
    listed = file.read_text(encoding="utf-8").splitlines()
    problems = [problem for library in libraries for problem in check(library, listed)]
    if problems:
        print(*problems, "Where a change is wanted: cmake --build --preset debug --target update-exports", sep="\n")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
