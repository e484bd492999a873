#!/usr/bin/env python3
"""Writes the manual page of a program and its completions for bash and zsh, all from what its --help prints.

Usage: manual.py PROGRAM VERSION FOLDER

makes FOLDER/PROGRAM.1.gz, FOLDER/bash/PROGRAM and FOLDER/zsh/_PROGRAM.
"""

import dataclasses
import gzip
import pathlib
import re
import subprocess
import sys

HELP_COLUMN = 30


@dataclasses.dataclass
class Switch:
    """A line under "Options:" or "Positionals:"."""
    names: list
    value: str
    text: str

    @property
    def words(self):
        """What the value may be: what is told in small letters."""
        return [part for part in self.value.split("|") if re.fullmatch("[a-z0-9]+", part)]

    @property
    def takes_files(self):
        return bool(re.search(r"\b(FILE|MODEL)\b", self.value))

    @property
    def takes_folders(self):
        return bool(re.match("(FOLDER|DIR)$", self.value.removesuffix(" ...")))


def read_help(text):
    """The parts of the text by their headings; what stands before the first is the description."""
    parts = {}
    heading = ""
    for line in text.splitlines():
        if line.startswith("Usage: "):
            parts["Usage"] = [line.removeprefix("Usage: ")]
        elif re.fullmatch("[A-Z][A-Za-z ]+:", line):
            heading = line[:-1]
        elif line.strip():
            parts.setdefault(heading, []).append(line)
    return parts


def switches(lines):
    found = []
    for line in lines:
        if not line[:HELP_COLUMN].strip():
            found[-1].text += line.strip() + " "
            continue
        head, _, text = line.strip().partition("  ")
        names, _, value = head.partition(" ")
        found.append(Switch(names.split(","), value, text.strip()))
    return found


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def manual_page(program, version, parts):
    description = " ".join(parts[""])
    whatis = re.split("[.:]", description)[0]
    lines = [f'.TH {program.upper()} 1 "" "OrloGL {version}" "User Commands"',
             ".SH NAME", f"{program} \\- {roff(whatis[0].lower() + whatis[1:])}",
             ".SH SYNOPSIS", f".B {program}", roff(parts["Usage"][0].removeprefix(program).strip()),
             ".SH DESCRIPTION", roff(description)]
    for heading, title in (("Positionals", "ARGUMENTS"), ("Options", "OPTIONS")):
        lines.append(f".SH {title}")
        for switch in switches(parts[heading]):
            names = ", ".join(f"\\fB{roff(name)}\\fR" for name in switch.names)
            lines += [".TP", f"{names} \\fI{roff(switch.value)}\\fR".replace(" \\fI\\fR", ""), roff(switch.text)]
    if "Exit codes" in parts:
        lines.append(".SH EXIT STATUS")
        for line in parts["Exit codes"]:
            code, _, meaning = line.strip().partition(" ")
            lines += [".TP", f"\\fB{code}\\fR", roff(meaning.strip())]
    if "Files" in parts:
        lines.append(".SH FILES")
        for line in parts["Files"]:
            path, _, meaning = line.strip().partition(" ")
            lines += [".TP", f"\\fI{roff(path)}\\fR", roff(meaning.strip())]
    if "Examples" in parts:
        lines += [".SH EXAMPLES", ".nf", *(roff(line.strip()) for line in parts["Examples"]), ".fi"]
    return "\n".join(lines) + "\n"


def bash_completion(program, options):
    def among(words):
        return "-W $'" + "\\n".join(words) + "'"

    cases = []
    for switch in options:
        if switch.value:
            offered = among(switch.words) if switch.words else ""
            files = "-f" if switch.takes_files else "-d" if switch.takes_folders else ""
            cases.append(f"    {' | '.join(switch.names)}) offered=({offered} {files}) ;;")
    names = [name for switch in options for name in switch.names]
    return "\n".join([
        f"_{program}() {{", "  local IFS=$'\\n' word=$2 switch=$3 offered",
        "  # Bash takes --switch=value for three words.",
        '  [ "$word" = = ] && word=', '  [ "$switch" = = ] && switch=${COMP_WORDS[COMP_CWORD - 2]}',
        '  case "$switch" in', *cases,
        '    *) case "$word" in -*) offered=(' + among(names) + ") ;; *) offered=(-f) ;; esac ;;", "  esac",
        "  COMPREPLY=()", '  [ ${#offered[@]} -gt 0 ] && COMPREPLY=($(compgen "${offered[@]}" -- "$word"))', "}",
        f"complete -o filenames -F _{program} {program}", ""])


def zsh_completion(program, positionals, options):
    def quoted(text):
        return re.sub(r"([\\\[\]:])", r"\\\1", text).replace("'", "'\\''")

    def value(switch):
        if not switch.value:
            return ""
        words = f"({' '.join(switch.words)})"
        if switch.words and switch.takes_files:
            action = f'{{_alternative "words\\:word\\:{words}" "files\\:file\\:_files"}}'
        elif switch.words:
            action = words
        else:
            action = "_files" if switch.takes_files else "_files -/" if switch.takes_folders else " "
        return f":{quoted(switch.value)}:{action}"

    lines = ["_arguments -s"]
    for switch in options:
        repeated = "*" if switch.value.endswith("...") else ""
        for name in switch.names:
            others = "" if repeated else f"({' '.join(switch.names)})"
            joined = "" if not switch.value else "=" if name.startswith("--") else "+"
            lines.append(f"  '{others}{repeated}{name}{joined}[{quoted(switch.text)}]{value(switch)}'")
    lines += [f"  '*:{quoted(switch.names[0])}:_files'" for switch in positionals]
    return f"#compdef {program}\n" + " \\\n".join(lines) + "\n"


def main():
    program, version, folder = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    name = program.name
    parts = read_help(subprocess.run([program, "--help"], check=True, capture_output=True, text=True).stdout)
    positionals, options = switches(parts["Positionals"]), switches(parts["Options"])
    # Without the time: what is built twice is the same.
    written = {f"{name}.1.gz": gzip.compress(manual_page(name, version, parts).encode(), 9, mtime=0),
               f"bash/{name}": bash_completion(name, options).encode(),
               f"zsh/_{name}": zsh_completion(name, positionals, options).encode()}
    for path, content in written.items():
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        (folder / path).write_bytes(content)


if __name__ == "__main__":
    main()
