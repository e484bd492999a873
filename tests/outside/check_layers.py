#!/usr/bin/env python3
"""Each room includes only what stands below it, in no circle, and only two rooms open libraries.

Usage: check_layers.py REPOSITORY
"""

import pathlib
import re
import sys

# What each room may include besides itself. The top of viewer/ is a room too; it may include all of them.
BELOW = {
    "host": set(),
    "gl": {"host"},
    "texture": {"host", "gl"},
    "state": {"host", "gl", "texture"},
    "geometry": {"host", "gl", "texture"},
    "framebuffer": {"host", "gl", "texture", "state", "geometry"},
    "shader": {"host", "gl", "texture", "state", "geometry", "cg/include"},
    "particle": {"host", "gl", "texture", "state", "geometry"},
    "cg/include": set(),
    "cg/preprocess": set(),
    "cg/language": {"cg/preprocess"},
    "cg/parse": {"cg/preprocess", "cg/language"},
    "cg/check": {"cg/preprocess", "cg/language"},
    "cg/glsl": {"cg/preprocess", "cg/language"},
    "cg/compile": {"cg/preprocess", "cg/language", "cg/parse", "cg/check", "cg/glsl"},
    "cg/effects": {"cg/preprocess"},
    "cg/objects": {"cg/include", "cg/language", "cg/compile", "cg/effects"},
    "cg/runtime": {"cg/include", "cg/language", "cg/objects", "cg/effects"},
    "cg/gl": {"cg/include", "cg/language", "cg/objects"},
    "cg/orlocg": {"cg/preprocess", "cg/language", "cg/compile", "cg/effects"},
    "cg/corpus": set(),
}
LIBRARY = {"host", "gl", "texture", "state", "geometry", "framebuffer", "shader", "particle", "cg/include"}
# Those that know no GL, and those that draw, from the ground up.
BELOW |= {
    "viewer/base": set(),
    "viewer/scene": {"host", "viewer/base"},
    "viewer/output": {"host", "viewer/base"},
    "viewer/import": {"host", "viewer/base", "viewer/scene"},
}
below = LIBRARY | {"viewer/base", "viewer/scene", "viewer/output"}
for room in ("session", "texture", "draw", "shading", "options", "load", "frame", "window"):
    BELOW[f"viewer/{room}"] = set(below)
    below.add(f"viewer/{room}")
BELOW["viewer/load"].add("viewer/import")
BELOW["viewer/info"] = LIBRARY | {"viewer/base", "viewer/scene"}
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)
LOADING = re.compile(r"\bdl(v?sym|m?open)\b")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
# Besides gl/, the loader of the Cg run-time libraries, and what is of Cg itself.
LOADERS = re.compile(r"src/gl/.*|src/shader/CgLoader\.cpp|cg/.*")


def sources(root):
    for top in ("src", "host", "cg", "viewer"):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".cpp", ".h", ".inc"):
                yield path


def room_of(path, root):
    """None for the top of src/ and of viewer/."""
    parts = path.relative_to(root).parts
    if parts[0] == "host":
        return "host"
    if len(parts) < 3:
        return None
    return parts[1] if parts[0] == "src" else "/".join(parts[:2])


def resolve(name, path, root):
    folders = [root / "src", root / "host/include", root / "cg/include"]
    top = path.relative_to(root).parts[0]
    for folder in [path.parent, root / top, *folders]:
        if (folder / name).is_file():
            return (folder / name).resolve()
    return None


def circles(graph):
    """The files that reach themselves over includes."""
    def reaches(start):
        seen, todo = set(), list(graph.get(start, ()))
        while todo:
            node = todo.pop()
            if node not in seen:
                seen.add(node)
                todo += graph.get(node, ())
        return start in seen
    return [path for path in graph if reaches(path)]


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    problems, graph = [], {}
    for path in sources(root):
        shown = path.relative_to(root).as_posix()
        text = path.read_text(encoding="utf-8")
        room = room_of(path, root)
        included = {name: resolve(name, path, root) for name in INCLUDE.findall(text)}
        graph[path.resolve()] = [file for file in included.values() if file]
        if room and room not in BELOW:
            problems.append(f"{shown}: nobody has said what {room} may include")
        for name, file in included.items():
            other = file and room_of(file, root)
            if room and file and other != room and other not in BELOW.get(room, set()):
                problems.append(f"{shown}: {room} must not include {name}")
        if LOADING.search(COMMENT.sub("", text)) and not LOADERS.fullmatch(shown):
            problems.append(f"{shown}: opens libraries or looks up symbols")
    problems += [f"{path.relative_to(root)}: includes itself over others" for path in circles(graph)]
    if len(graph) < 20:
        problems.append(f"{root}: only {len(graph)} sources found")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
