#!/usr/bin/env python3
"""The compiler as a program. Usage: orlocg_test.py ORLOCG ORLOCG-LINK [unittest arguments]"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

ORLOCG, LINK = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
PROGRAM = """#include "half.h"
struct Look { float gain; sampler2D map; };
float4 glow(float2 uv : TEXCOORD0, uniform Look look) : COLOR { return tex2D(look.map, uv) * look.gain * HALF; }
void place(float4 p : POSITION, float2 t : TEXCOORD0, uniform float4x4 mvp, out float4 q : POSITION, out float2 u : TEXCOORD0)
{ q = mul(mvp, p); u = t; }
"""


class Orlocg(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="orlocg-test-")
        self.addCleanup(shutil.rmtree, self.folder)
        os.mkdir(self.path("inc"))
        self.write("inc/half.h", "#define HALF (AMOUNT * 1.0)\n")
        self.write("a.cg", PROGRAM)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w") as file:
            file.write(text)

    def run_compiler(self, *arguments, stdin=None):
        return subprocess.run([ORLOCG, *arguments], cwd=self.folder, capture_output=True, text=True, input=stdin, timeout=60)

    def test_both_stages_link_and_draw(self):
        switches = ("-I", "inc", "-D", "AMOUNT=0.5")
        for entry, stage in (("glow", "fragment"), ("place", "vertex")):
            result = self.run_compiler("a.cg", "--entry", entry, "--stage", stage, *switches, "-o", stage)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.write("broken", "#version 130\nvoid main() { nonsense; }\n")
        lines = f"{self.path('vertex')} {self.path('fragment')}\n{self.path('vertex')} -\n- {self.path('broken')}\n"
        answers = subprocess.run([LINK], input=lines, capture_output=True, text=True, timeout=60).stdout.splitlines()
        self.assertEqual(answers[:2], ["drawn", "drawn"])
        self.assertIn("compile: ", answers[2])
        with open(self.path("fragment")) as file:
            glsl = file.read()
        self.assertEqual(self.run_compiler("-", "--entry", "glow", *switches, stdin=PROGRAM).stdout, glsl)

    def test_parameters_are_listed(self):
        table = self.run_compiler("a.cg", "--entry", "glow", "-Iinc", "-DAMOUNT", "--params").stdout
        rows = [line.split() for line in table.splitlines()]
        self.assertIn(["uv", "float2", "varying", "in", "TEXCOORD0", "TEX0"], rows)
        self.assertIn(["look.gain", "float", "uniform", "in", "-", "look.gain"], rows)
        self.assertIn(["look.map", "sampler2D", "uniform", "in", "-", "look_map"], rows)

    def test_programs_of_effects_are_compiled(self):
        effect = (
            '#include "half.h"\nfloat4 paint(uniform float g) : COLOR { return g * HALF; }\nPixelShader late = compile ps_2_0 nothing();\n'
            "technique T { pass a { PixelShader = compile ps_2_0 paint(1); } pass b { PixelShader = (%s); CullMode = CCW; } }\n"
        )
        self.write("e.fx", effect % "NULL")
        result = self.run_compiler("e.fx", "--effect", "-Iinc", "-DAMOUNT=0.5")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "technique T, pass a: PixelShader paint\ntechnique T, pass b:\n", ""))
        self.write("e.fx", effect % "late")
        result = self.run_compiler("e.fx", "--effect", "-Iinc", "-DAMOUNT=0.5")
        self.assertEqual(result.returncode, 2)
        self.assertIn("there is no function 'nothing'", result.stderr)
        self.write("e.fx", "technique { pass { A = ; } }")
        self.assertEqual(self.run_compiler("e.fx", "--effect").stderr, "e.fx:1:24: error: a value is missing, before ';'\n")

    def test_what_is_wrong_is_said(self):
        result = self.run_compiler("a.cg", "--entry", "glow", "-Iinc")
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertIn("a.cg:3:106: error: there is no variable 'AMOUNT'", result.stderr)
        self.assertEqual(self.run_compiler("gone.cg").returncode, 3)
        for arguments, code in (("a.cg -Iinc -DAMOUNT --entry glow >&-", 4), ("a.cg -Iinc -DAMOUNT --entry glow --params >/dev/full", 4), ("- <&-", 3), ("$'gone\\e[2J.cg'", 3)):
            result = subprocess.run(["bash", "-c", f"{ORLOCG} {arguments}"], cwd=self.folder, stderr=subprocess.PIPE)
            self.assertEqual((result.returncode, result.stderr.count(b"\n"), result.stderr.count(b"\033")), (code, 1, 0), arguments)
        self.assertEqual(self.run_compiler("a.cg", "--stage", "geometry").returncode, 1)
        self.assertEqual(self.run_compiler("a.cg", "--entry", "glow", "-Iinc", "-DAMOUNT", "-o", "no/where").returncode, 4)


if __name__ == "__main__":
    unittest.main()
