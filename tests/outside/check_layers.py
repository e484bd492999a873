#!/usr/bin/env python3
"""Each room includes only what stands before it, in no circle, and only two rooms open libraries.

Usage: check_layers.py REPOSITORY
"""

import pathlib
import re
import sys

BELOW = {
    "cg": set(),
    "host": set(),
    "gl": {"host"},
    "texture": {"host", "gl"},
    "state": {"host", "gl", "texture"},
    "geometry": {"host", "gl", "texture"},
    "framebuffer": {"host", "gl", "texture", "state", "geometry"},
    "shader": {"host", "gl", "texture", "state", "geometry", "cg"},
    "particle": {"host", "gl", "texture", "state", "geometry"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)
LOADING = re.compile(r"\bdl(v?sym|m?open)\b")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
# Besides gl/, the loader of the Cg run-time libraries.
LOADERS = re.compile(r"src/gl/.*|src/shader/(CgLoader|CGcontextSingleton|CgRuntime)\w*\.(cpp|h)|cg/.*")


def sources(root):
    for top in ("src", "host", "cg"):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".cpp", ".h", ".inc"):
                yield path


def room_of(path, root):
    parts = path.relative_to(root).parts
    return parts[1] if parts[0] == "src" and len(parts) > 2 else parts[0]


def room_of_include(name):
    top = name.split("/")[0]
    return {"orlohost": "host", "Cg": "cg"}.get(top, top if top in BELOW else None)


def resolve(name, path, root):
    for folder in (path.parent, root / "src", root / "host/include", root / "cg/include"):
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
        included = INCLUDE.findall(text)
        graph[path.resolve()] = [file for file in (resolve(name, path, root) for name in included) if file]
        for name in included:
            other = room_of_include(name)
            if room in BELOW and other and other != room and other not in BELOW[room]:
                problems.append(f"{shown}: {room} must not include {name}")
            if name == "orlogl.h" or name.startswith("viewer/"):
                problems.append(f"{shown}: the library must not include {name}")
        if LOADING.search(COMMENT.sub("", text)) and not LOADERS.fullmatch(shown):
            problems.append(f"{shown}: opens libraries or looks up symbols")
    problems += [f"{path.relative_to(root)}: includes itself over others" for path in circles(graph)]
    if len(graph) < 20:
        problems.append(f"{root}: only {len(graph)} sources found")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
