#!/usr/bin/env python3
"""Makes the Debian packages of a build, installs them in a root of their own, and runs and compiles what is there.

Usage: packages_test.py CMAKE CPACK SOURCES BUILD CXX
"""

import fnmatch
import gzip
import os
import pathlib
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

from install_test import by_pkg_config, check_headers, check_paths, run

# What lies in the package and in no other.
CONTENTS = {
    "liborlogl[0-9]*": ["lib/*/liborlogl.so.*", "lib/*/liborlohost.so.*"],
    "liborlogl-dev": ["lib/*/liborlo*.so", "include/orlogl/*", "include/orlohost*", "lib/*/cmake/OrloGL/*",
                      "lib/*/pkgconfig/orlogl.pc", "share/doc/liborlogl-dev/examples/minimal.cpp",
                      "share/doc/liborlogl-dev/docs/embedding.md"],
    "orloview": ["bin/*", "share/orlogl/bin/Cg/*", "share/applications/*", "share/icons/*", "share/mime/*",
                 "share/thumbnailers/*", "share/man/man1/*", "share/bash-completion/*", "share/zsh/*"],
    "libcg-orlogl": ["lib/*/libCg*", "include/Cg/*", "lib/*/pkgconfig/orlocg-runtime.pc"],
}


def check_contents(packages):
    files = {}
    for path in packages:
        lines = run("dpkg-deb", "--contents", path).decode().splitlines()
        files[path.name.split("_")[0]] = [line.split()[5].removeprefix("./usr/") for line in lines if not line.startswith("d")]
    assert len(files) == len(CONTENTS), sorted(files)
    for package, patterns in CONTENTS.items():
        for pattern in patterns:
            owners = {name for name, paths in files.items() if fnmatch.filter(paths, pattern)}
            assert owners and all(fnmatch.fnmatch(owner, package) for owner in owners), f"{pattern} is in {owners}"
    for name, paths in files.items():
        assert {f"share/doc/{name}/copyright", f"share/doc/{name}/changelog.gz"} <= set(paths), name


def install(packages, root):
    """By dpkg, which only root may. What the packages need isn't in this root; that it is to be had apt tells."""
    if os.geteuid():
        print("not root: the packages are unpacked, not installed")
        for package in packages:
            run("dpkg-deb", "-x", package, root)
        return
    for folder in ("info", "updates", "triggers"):
        (root / "var/lib/dpkg" / folder).mkdir(parents=True)
    (root / "var/lib/dpkg/status").touch()
    run("dpkg", f"--root={root}", "--force-depends", "--install", *packages)


def check_help(usr, at_root):
    """Manual pages and completions know each switch."""
    for program in ("orloview", "orlocg"):
        switches = re.findall(r"^  (?:-\w,)?(--?[\w-]+)", run(*at_root, program, "--help").decode(), re.MULTILINE)
        page = gzip.decompress((usr / f"share/man/man1/{program}.1.gz").read_bytes()).decode().replace("\\-", "-")
        bash = usr / f"share/bash-completion/completions/{program}"
        texts = [page, bash.read_text(), next((usr / "share/zsh").rglob(f"_{program}")).read_text()]
        assert len(switches) > 6 and all(switch in text for text in texts for switch in switches), program
        assert re.search(rf"^\.SH NAME\n{program} - \w+ ", page, re.MULTILINE), page
    script = f"""source {shlex.quote(str(usr / 'share/bash-completion/completions/orloview'))}
        offered() {{ COMP_WORDS=(orloview "$@"); COMP_CWORD=$#; _orloview orloview "${{@: -1}}" "${{@: -2:1}}"; echo "${{COMPREPLY[*]}}"; }}
        offered --sha; offered --shading g; offered --shading = c; offered --cube-map {usr}/inc; offered --size 1"""
    offered = run("bash", "-c", script).decode().splitlines()
    assert offered == ["--shading --shader --shadows", "glsl", "cg", f"{usr}/include", ""], offered


def check_desktop(usr, at_root, model, scratch):
    types = {kind.get("type"): kind for kind in xml.etree.ElementTree.parse(usr / "share/mime/packages/orloview.xml").getroot()}
    patterns = {glob.get("pattern") for kind in types.values() for glob in kind if glob.tag.endswith("}glob")}
    assert patterns == {"*.glb", "*.gltf", "*.obj", "*.ply", "*.stl"}, patterns
    xml.etree.ElementTree.parse(usr / "share/icons/hicolor/scalable/apps/orloview.svg")
    entries = {}
    for path in ("applications/orloview.desktop", "thumbnailers/orloview.thumbnailer"):
        text = (usr / "share" / path).read_text()
        entries[path] = dict(line.split("=", 1) for line in text.splitlines() if re.match(r"\w+=", line))
        assert set(entries[path]["MimeType"].strip(";").split(";")) == set(types), path
    named, thumbnail = scratch / "a model's copy.glb", scratch / "no suffix"
    shutil.copy(model, named)
    told = {"%i": named, "%o": thumbnail, "%s": "64"}
    run(*at_root, *(told.get(word, word) for word in shlex.split(entries["thumbnailers/orloview.thumbnailer"]["Exec"])))
    picture = thumbnail.read_bytes()
    assert picture.startswith(b"\x89PNG") and struct.unpack(">II", picture[16:24]) == (64, 64), picture[:24]


def main():
    cmake, cpack, sources, build, compiler = sys.argv[1:]
    sources, build = pathlib.Path(sources), pathlib.Path(build)
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch).resolve()
        # Packing well takes longer than all the rest.
        run(cpack, "--config", build / "CPackConfig.cmake", "-B", scratch / "made", "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=gzip")
        packages = sorted((scratch / "made").glob("*.deb"))
        checks = [["apt-get", "install", "--simulate", "--no-install-recommends", *packages]]
        if shutil.which("lintian"):
            checks.append(["lintian", "--allow-root", "--fail-on", "error,warning", *packages])
        else:
            print("there is no lintian: the packages' form is not looked over")
        checks = [subprocess.Popen(check, stdout=subprocess.PIPE, stderr=subprocess.STDOUT) for check in checks]
        check_contents(packages)
        root = scratch / "root"
        root.mkdir()
        install(packages, root)
        usr = root / "usr"
        libraries = next(usr.rglob("liborlogl.so")).parent
        at_root = ["env", f"LD_LIBRARY_PATH={libraries}", f"PATH={usr / 'bin'}:{os.environ['PATH']}"]

        model = sources / "samples/showcase.glb"
        for shading in (["--shading", "glsl"], ["--cg", "toon"]):
            picture = ["orloview", model, "-o", "-", "--size", "160x120", *shading]
            assert run(*at_root, *picture) == run(build / "bin/orloview", *picture[1:]), f"another picture: {shading}"
        compiled = ["orlocg", usr / "share/orlogl/bin/Cg/toon_fragment.cg"]
        assert run(*at_root, *compiled) == run(build / "bin/orlocg", compiled[1]), "other GLSL"
        check_help(usr, at_root)
        check_desktop(usr, at_root, model, scratch)

        check_headers(usr)
        check_paths(usr, build, sources)
        (scratch / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(host CXX)\n"
                                                "find_package(OrloGL CONFIG REQUIRED)\n")
        run(cmake, "-S", scratch, "-B", scratch / "tree", f"-DCMAKE_PREFIX_PATH={usr}", "-DCMAKE_CXX_COMPILER_WORKS=ON")
        minimal = by_pkg_config(usr, scratch, compiler, [], next(usr.rglob("minimal.cpp")))
        assert run(minimal) == run(build / "bin/minimal"), "another picture: minimal"
        for check in checks:
            told = check.communicate()[0].decode()
            assert check.returncode == 0, told


if __name__ == "__main__":
    main()
