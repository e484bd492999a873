#!/usr/bin/env python3
"""Compiled materials, by the light that leaves them. Usage: shading_test.py ORLOVIEW [unittest arguments]"""

import json
import math
import os
import pathlib
import struct
import unittest

from shaded_pictures import DARK, FILE_LIGHT, WHOLE, ShadedPictures, dot, encoded, microfacets, normalized, spheres, with_lights
from viewer_files import png, textured

STUDIO = (((-0.45, 0.65, 0.62), 0.78), ((0.75, 0.10, 0.55), 0.22), ((0.25, 0.60, -0.75), 0.25))
CLEAR = ((-1, (0.13, 0.12, 0.10)), (-0.03, (0.20, 0.19, 0.17)), (0.03, (0.80, 0.88, 0.95)), (0.30, (0.42, 0.60, 0.88)), (1, (0.14, 0.28, 0.62)))


def sky_at(stops, up):
    for (low, a), (high, b) in zip(stops, stops[1:]):
        if up <= high or high == 1:
            share = min(max((up - low) / (high - low), 0), 1)
            return tuple(x + share * (y - x) for x, y in zip(a, b))


def under_sky(stops, up, diffuse, f0, roughness):
    """The integral of sky times glTF's model over the hemisphere, looked at along the normal, one channel each."""
    a2, sums = max(roughness**2, 0.002) ** 2, [0, 0, 0]
    side, rings, turns = math.sqrt(1 - up * up), 96, 24

    def add(cosine, weights):
        sine = math.sqrt(max(1 - cosine * cosine, 0))
        for turn in range(turns):
            color = sky_at(stops, up * cosine + side * sine * math.cos(math.pi * (turn + 0.5) / turns))
            for channel in range(3):
                sums[channel] += weights[channel] * color[channel] / turns

    for ring in range(rings):
        share = (ring + 0.5) / rings
        nl = math.sqrt(share)  # diffuse: as many directions as the cosine asks for
        fresnel = [f + (1 - f) * (1 - math.sqrt((1 + nl) / 2)) ** 5 for f in f0]
        add(nl, [(1 - f) * d / rings for f, d in zip(fresnel, diffuse)])
        nh = math.sqrt((1 - share) / (1 + (a2 - 1) * share))  # specular: as many facets as there are
        nl = 2 * nh * nh - 1
        if nl <= 0:
            continue
        fresnel = [f + (1 - f) * (1 - nh) ** 5 for f in f0]
        weight = 4 * nl / (nl + math.sqrt(a2 + (1 - a2) * nl * nl)) / 2 / rings
        add(nl, [f * weight for f in fresnel])
    return sums



class Shading(ShadedPictures):
    def test_the_roughness_and_metalness_grid_equals_an_integral(self):
        grid = [(metallic, roughness) for metallic in (0, 0.5, 1) for roughness in (0.05, 0.2, 0.4, 0.6, 0.8, 1)]
        base = (0.9, 0.6, 0.3)
        materials = [{"pbrMetallicRoughness": {"baseColorFactor": [*base, 1], "metallicFactor": m, "roughnessFactor": r}} for m, r in grid]
        model = self.write("m.gltf", spheres(materials))
        up = 1 / math.sqrt(5)  # of the direction to the eye
        switches = ["--eye", "7.5,53,100", "--target", "7.5,3,0", "--orthographic", "--fov", "10", "--size", "1001x1001"]
        for sky in ("clear", "none"):
            width, height, rows = self.floats(model, *switches, "--sky", sky, "--samples", "1")
            per_unit = height / 2 / (math.sqrt(12500) * math.tan(math.radians(5)))
            worst = 0
            for i, (metallic, roughness) in enumerate(grid):
                x, y = (3 * (i % 6) - 7.5) * per_unit, (3 * (i // 6) - 3) * per_unit * 2 * up
                pixel = rows[round(height / 2 + y - 0.5)][round(width / 2 + x - 0.5)]
                diffuse = [c * (1 - metallic) for c in base]
                f0 = [0.04 + metallic * (c - 0.04) for c in base]
                wanted = under_sky(CLEAR, up, diffuse, f0, roughness) if sky == "clear" else [0, 0, 0]
                for direction, color in STUDIO:
                    for channel in range(3):
                        wanted[channel] += color * microfacets((0, 0, 1), (0, 0, 1), normalized(direction), diffuse[channel], f0[channel], roughness)
                worst = max([worst] + [abs(encoded(a) - encoded(b)) for a, b in zip(pixel, wanted)])
            self.assertLess(worst, 4, f"of 255, under the sky {sky}")

    def test_no_sphere_sends_out_more_than_it_gets(self):
        white = [
            {"pbrMetallicRoughness": {"metallicFactor": m, "roughnessFactor": r}, "extensions": {"KHR_materials_clearcoat": {"clearcoatFactor": c}}}
            for m in (0, 0.5, 1) for r in (0, 0.3, 0.6, 1) for c in (0, 1)
        ]
        model = self.write("m.gltf", spheres(white, DARK))
        _, _, rows = self.floats(model, "--sky", "white", "--size", "400x300", "--background", "black", "--samples", "1")
        brightest = max(max(pixel) for row in rows for pixel in row)
        self.assertLess(brightest, 1.003)
        self.assertGreater(brightest, 0.97)

    def test_factors_and_textures_of_metallic_roughness(self):
        texel = [[(255, 128, 64, 255)]]
        pbr = {"baseColorFactor": [0.8, 0.5, 0.2, 1], "metallicFactor": 0.8, "roughnessFactor": 0.9}
        for textured_too in (False, True):
            metallic, roughness = (0.8, 0.9) if not textured_too else (0.8 * 64 / 255, 0.9 * 128 / 255)
            if textured_too:
                pbr["metallicRoughnessTexture"] = {"index": 0}
            wanted = [self.straight(c * (1 - metallic), 0.04 + metallic * (c - 0.04), roughness) for c in (0.8, 0.5, 0.2)]
            self.near(self.quad({"pbrMetallicRoughness": pbr}, [texel]), wanted)

    def test_each_texture_has_coordinates_and_a_transform_of_its_own(self):
        two = [[(0, 0, 0, 255), (255, 255, 255, 255)]]  # the left half black, the right half white
        left, right = {"texCoord": 1}, {"texCoord": 1, "extensions": {"KHR_texture_transform": {"offset": [0.625, 0], "scale": [0.5, 1]}}}
        uvs = [[(0.75, 0.5)] * 4, [(0.25, 0.5)] * 4]
        for rough, glow in ((left, right), (right, left)):
            material = {
                "pbrMetallicRoughness": {"baseColorTexture": {"index": 0}, "metallicRoughnessTexture": {"index": 0, **rough}},
                "emissiveTexture": {"index": 0, **glow},
                "emissiveFactor": [0.5, 0.5, 0.5],
            }
            white, emitted = int(rough is right), 0.5 * int(glow is right)
            lit = self.quad(material, [two], uvs=uvs)
            wanted = self.straight(1 - white, 0.04 + 0.96 * white, white) if white else None
            if white:
                self.near(lit, wanted + emitted)
            else:  # a mirror: the light itself
                self.assertGreater(lit[0], 1000)

    def test_emission_occlusion_and_unlit(self):
        matt = {"metallicFactor": 0, "roughnessFactor": 1, "baseColorFactor": [0.5, 0.5, 0.5, 1]}
        texel = [[(51, 255, 255, 255)]]
        lit = self.straight(0.5, 0.04, 1)
        self.near(self.quad({"pbrMetallicRoughness": matt, "emissiveFactor": [0.5, 0.25, 0]}), (lit + 0.5, lit + 0.25, lit))
        self.near(self.quad({"pbrMetallicRoughness": matt, "occlusionTexture": {"index": 0}}, [texel]), lit)  # direct light passes
        around = [self.quad({"pbrMetallicRoughness": matt, **use}, [texel], DARK, ("--sky", "white"))
                  for use in ({}, {"occlusionTexture": {"index": 0}}, {"occlusionTexture": {"index": 0, "strength": 0.5}})]
        self.near(around[1], [c * 0.2 for c in around[0]])
        self.near(around[2], [c * 0.6 for c in around[0]])
        unlit = {"pbrMetallicRoughness": matt, "emissiveFactor": [1, 1, 1], "extensions": {"KHR_materials_unlit": {}}}
        self.near(self.quad(unlit), 0.5)

    def test_specular_glossiness(self):
        extension = {"diffuseFactor": [0.8, 0.6, 0.4, 1], "specularFactor": [0.5, 0.25, 0.1], "glossinessFactor": 0.6}
        material = {"extensions": {"KHR_materials_pbrSpecularGlossiness": extension}}
        wanted = [self.straight(d * 0.5, s, 0.4) for d, s in zip((0.8, 0.6, 0.4), (0.5, 0.25, 0.1))]
        self.near(self.quad(material), wanted)
        extension["specularGlossinessTexture"] = {"index": 0}
        wanted = [self.straight(d * 0.5, s, 1 - 0.6 * 128 / 255) for d, s in zip((0.8, 0.6, 0.4), (0.5, 0.25, 0.1))]
        self.near(self.quad(material, [[[(255, 255, 255, 128)]]]), wanted)

    def test_a_clear_coat_lies_over_the_rest(self):
        pbr = {"metallicFactor": 0, "roughnessFactor": 1, "baseColorFactor": [0.5, 0.5, 0.5, 1]}
        coat = {"clearcoatFactor": 0.8, "clearcoatRoughnessFactor": 0.3}
        share = 0.8 * 0.04
        wanted = (1 - share) * self.straight(0.5, 0.04, 1) + share * self.straight(0, 1, 0.3)
        self.near(self.quad({"pbrMetallicRoughness": pbr, "extensions": {"KHR_materials_clearcoat": coat}}), wanted)

    def test_normal_maps_lean_as_their_colours_say(self):
        red, green = (0.6, 0, 0.8), (0, 0.6, 0.8)
        down, mirrored = [[(0, 1), (0, 0), (1, 0), (1, 1)]], [[(1, 0), (0, 0), (0, 1), (1, 1)]]  # how u and v run
        for lean, switches, quad, tilted in (
            (red, (), {}, (0.6, 0.0, 0.8)),
            (red, (), {"uvs": down}, (0, -0.6, 0.8)),
            (red, (), {"uvs": mirrored}, (-0.6, 0, 0.8)),
            (red, (), {"tangent": (0, 1, 0, 1)}, (0, 0.6, 0.8)),  # whatever the texture coordinates say
            (green, ("--shading", "cg"), {"tangent": (0, 1, 0, 1)}, (-0.6, 0, 0.8)),
            (green, (), {"tangent": (1, 0, 0, -1)}, (0, -0.6, 0.8)),
            (green, (), {"tangent": (1, 0, 0, 1), "scale": (-1, 1, 1)}, (0, 0.6, 0.8)),
            (red, ("--shading", "cg"), {"tangent": (1, 0, 0, 1), "scale": (-1, 1, 1)}, (-0.6, 0, 0.8)),
        ):
            color = tuple(round(255 * (c + 1) / 2) for c in lean)
            material = {"pbrMetallicRoughness": {"metallicFactor": 0}, "normalTexture": {"index": 0}}
            # From the right and above, in a plane that tells the four leanings apart.
            towards = normalized((0.5, 0.2, 1))
            angle, axis = math.acos(towards[2]), normalized((-towards[1], towards[0], 0))
            light = {"type": "directional", "rotation": [*(math.sin(angle / 2) * c for c in axis), math.cos(angle / 2)]}
            wanted = FILE_LIGHT * microfacets(normalized(tilted), (0, 0, 1), towards, 1, 0.04, 1)
            self.near(self.quad(material, [[[(*color, 255)]]], [light], ("--sky", "none", *switches), **quad), wanted, 0.01)

    def test_point_lights_fade_with_distance_and_range_and_spots_in_their_cones(self):
        matt = {"pbrMetallicRoughness": {"metallicFactor": 0, "baseColorFactor": [0.5, 0.5, 0.5, 1]}}
        fixed = [{"type": "point", "translation": [0, 0, d], "intensity": 7} for d in (2, 4)]
        ranged = [{**light, "range": 5} for light in fixed]
        window = [1 - (d / 5) ** 4 for d in (2, 4)]
        both = [1 / (1 + 1 / 4), (1 / 4) / (1 + 1 / 4)]  # of the sum that is scaled
        full = self.straight(0.5, 0.04, 1)
        self.near(self.quad(matt, lights=fixed), full)
        self.near(self.quad(matt, lights=ranged), full * dot(window, both), 0.01)
        turned = math.radians(15)
        spot = {"type": "spot", "translation": [0, 0, 3], "rotation": [math.sin(turned / 2), 0, 0, math.cos(turned / 2)]}
        cone = {"innerConeAngle": math.radians(10), "outerConeAngle": math.radians(20)}
        fade = (math.cos(turned) - math.cos(math.radians(20))) / (math.cos(math.radians(10)) - math.cos(math.radians(20)))
        self.near(self.quad(matt, lights=[{**spot, "spot": cone}]), full * fade**2, 0.01)
        cone["outerConeAngle"] = math.radians(14)
        self.near(self.quad(matt, lights=[{**spot, "spot": cone}]), 0)

    def test_the_main_light_casts_shadows(self):
        matt = {"pbrMetallicRoughness": {"metallicFactor": 0}}
        quads = [{"material": 0, "at": WHOLE, "z": 0}, {"material": 0, "at": (-0.2, 0.2, 0.2, -0.2), "z": 0.5}]
        turned = math.radians(45)  # the light comes from the right: the shadow lies 0.5 to the left
        sun = {"type": "directional", "rotation": [0, math.sin(turned / 2), 0, math.cos(turned / 2)]}
        lamp = {"type": "point", "translation": [1.5, 0, 1.5]}  # 1 before the square: enlarged 1.5 times
        spot = {"type": "spot", "translation": [1.5, 0, 1.5], "rotation": sun["rotation"], "spot": {"outerConeAngle": 0.9}}
        for light, shadow in ((sun, (-0.7, -0.3)), (lamp, (-1.05, -0.45)), (spot, (-1.05, -0.45))):
            model = self.write("m.gltf", with_lights(json.loads(textured(quads, [matt], [])), [light]))
            switches = ["--size", "200x200", "--camera", "0", "--sky", "none", "--samples", "1"]
            lit, shadowed = (self.floats(model, *switches, *more)[2] for more in ([], ["--shadows"]))
            for y in range(-95, 96, 10):
                for x in range(-95, 96, 10):
                    before, after = (rows[100 + y][100 + x][0] for rows in (lit, shadowed))
                    at, height = x / 100, abs(y / 100)
                    inside = shadow[0] + 0.03 < at < shadow[1] - 0.03 and height < (shadow[1] - shadow[0]) / 2 - 0.03
                    outside = at < shadow[0] - 0.03 or at > shadow[1] + 0.03 or height > (shadow[1] - shadow[0]) / 2 + 0.03
                    on_square = abs(at) < 0.23 and height < 0.23
                    if inside and not on_square:
                        self.assertEqual(after, 0, (light["type"], at, y / 100))
                    elif outside or on_square:
                        self.assertAlmostEqual(after, before, 3, (light["type"], at, y / 100))

    def test_near_surfaces_keep_the_sky_off_each_other(self):
        quads = [{"material": 0, "at": (-4, 4, 4, 0)}, {"material": 0, "at": (-4, 0, 4, -4)}]  # a wall, and what becomes the floor before it
        document = json.loads(textured(quads, [{"pbrMetallicRoughness": {"metallicFactor": 0}}], []))
        document["nodes"][1]["rotation"] = [-math.sqrt(0.5), 0, 0, math.sqrt(0.5)]
        model = self.write("m.gltf", with_lights(document, DARK))
        for elevation in (20, 45, 70):
            for more in ([], ["--orthographic"]):
                angle = math.radians(elevation)
                switches = [model, "--sky", "white", "--size", "201x201", "--eye", f"0,{9 * math.sin(angle)},{9 * math.cos(angle)}", "--target", "0,0,0", "--samples", "1", *more]
                open_sky, shaded = (self.floats(*switches, *ao)[2] for ao in ([], ["--ao"]))
                left = [b[100][0] / a[100][0] for a, b in zip(open_sky[40:161], shaded[40:161])]
                self.assertAlmostEqual(left[60], 0.53, delta=0.1, msg="half of the sky at the foot of the wall")
                self.assertEqual([round(left[i], 2) for i in (0, -1)], [1, 1])
                if elevation == 45:
                    self.assertEqual(sorted(left[:61], reverse=True), left[:61], "the nearer, the less")
        self.assertEqual(self.floats(*switches, "--ao", "--tile", "48")[2][100], shaded[100])
        lit = (model, "--sky", "none", "--size", "33x33")
        self.assertEqual(self.floats(*lit), self.floats(*lit, "--ao"), "direct light comes through")

    def test_two_shadings_compared(self):
        quads = [{"material": 0, "at": (-1, 1, 0, -1)}, {"material": 1, "at": (0, 1, 1, -1)}]
        unlit = {"pbrMetallicRoughness": {"baseColorFactor": [0.5, 0.2, 0.1, 1]}, "extensions": {"KHR_materials_unlit": {}}}
        model = self.write("m.gltf", textured(quads, [unlit, unlit], []))
        told = self.run_viewer(model, "--compare", "fixed", "glsl", "--size", "64x64")
        self.assertEqual(told.returncode, 0)
        self.assertRegex(told.stdout.decode(), r"^fixed and glsl: largest difference [01] of 255( \(at .*\))?, mean [01]\.\d{3}\n$")
        glowing = {**unlit, "emissiveFactor": [0, 1, 0], "pbrMetallicRoughness": {"baseColorFactor": [0, 0, 0, 1]}, "extensions": {}}
        model = self.write("m.gltf", with_lights(json.loads(textured(quads, [unlit, glowing], [])), DARK))
        told = self.run_viewer(model, "--compare", "glsl", "fixed", "--size", "64x64", "--no-lights", "--camera", "0").stdout.decode()
        self.assertRegex(told, r"^glsl and fixed: largest difference [01] of 255")
        told = self.run_viewer(model, "--compare", "glsl", "fixed", "--size", "64x64", "--sky", "none").stdout.decode()
        self.assertRegex(told, r"^glsl and fixed: largest difference \d+ of 255( \(at \d+,\d+ from the top left\))?, mean \d+\.\d{3}\n$")
        self.fails(1, [model, "--compare", "fixed", "x"], "--compare x: give fixed, glsl or cg")

    def test_a_shader_of_the_users(self):
        model = self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{"pbrMetallicRoughness": {"baseColorFactor": [1, 0.5, 0.25, 1]}}], []))
        self.write("s.vert", "void main() {\n    gl_FrontColor = gl_Color;\n    gl_Position = ftransform();\n}\n")
        self.write("s.frag", "uniform bool hasBaseColorMap;\nuniform int lightCount;\nvoid main() {\n"
                             "    gl_FragColor = vec4(hasBaseColorMap ? 1.0 : gl_Color.b, gl_Color.g, float(lightCount), 1.0);\n}\n")
        switches = ["--shader", self.path("s"), "--size", "32x32", "--camera", "0"]
        self.near(self.floats(model, *switches)[2][16][16], (0.25, 0.5, 3))
        self.write("s.frag", "void main() {\n\n    gl_FragColor = wrong;\n}\n")
        out = ("-o", self.path("out.png"))
        self.fails(1, [model, *out, *switches], "--shader: it doesn't compile:\n  " + self.path("s.frag") + ":3: ", "wrong")
        self.write("s.frag", "void nothing() {}\n")
        self.fails(1, [model, *out, *switches], "--shader: it doesn't link:\n  " + self.path("s") + ": ")
        os.remove(self.path("s.vert"))
        self.fails(1, [model, *out, *switches], "--shader: " + self.path("s.vert") + " can't be read; give the name that a .vert and a .frag")
        self.fails(1, [model, *out, *switches, "--cull"], "--cull: a shader of your own may move or leave out what hides the rest")
        self.fails(1, [model, *out, *switches, "--shading", "glsl"], "--shader takes the place of all materials")

    def test_sources_are_written_and_wrong_switches_explained(self):
        model = self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{"name": "a/b c"}], []))
        self.floats(model, "--dump-shaders", self.path("shaders"), "--size", "16x16")
        self.assertEqual(sorted(os.listdir(self.path("shaders"))), ["a_b_c.frag", "a_b_c.vert"])
        with open(self.path("shaders/a_b_c.frag")) as file:
            self.assertTrue(file.read().startswith("#version 120\n"))
        out = ("-o", self.path("out.png"))
        self.floats(model, "--dump-shaders", self.path("cg"), "--size", "16x16", "--shading", "cg")
        self.assertEqual(sorted(os.listdir(self.path("cg"))), ["a_b_c_fragment.cg", "a_b_c_vertex.cg"])
        with open(self.path("cg/a_b_c_vertex.cg")) as file:
            self.assertTrue(file.read().startswith("void main(float4 position : POSITION"))
        self.fails(1, [model, *out, "--shading", "x"], "--shading x: give fixed, glsl or cg")
        self.fails(1, [model, *out, "--sky", "blue"], "--sky blue: give one of none, studio, clear, overcast, sunset, white")
        self.fails(1, [model, *out, "--tone-map", "x"], "--tone-map x: give none or soft")
        self.fails(1, [model, *out, "--shading", "fixed", "--ao"], "--ao: the materials' shaders draw it; leave --shading fixed out")
        self.fails(1, [model, *out, "--shading", "fixed", "--shadows"], "--shadows: the materials' shaders draw them")
        self.fails(1, [model, *out, "--shading", "fixed", "--dump-shaders", "d"], "--dump-shaders: there are none with --shading fixed")


class CgShading(ShadedPictures):
    BASE = (0.5, 0.25, 0.125)
    ROOM = (0.09, 0.09, 0.1)  # what the viewer's own functions have come from all round
    OBLIQUE = {"type": "directional", "rotation": [0, math.sin(math.pi / 6), 0, math.cos(math.pi / 6)]}  # by 60 degrees

    def lit(self, light):
        return tuple(b * (r + light) for b, r in zip(self.BASE, self.ROOM))

    def by(self, shader, *switches, **more):
        material = {"pbrMetallicRoughness": {"baseColorFactor": [*self.BASE, 1]}, **more.pop("material", {})}
        return self.quad(material, switches=("--cg", shader, *switches), **more)

    def test_materials_equal_those_of_glsl(self):
        quads = [{"material": i, "at": (-1 + i, 1, i, -1)} for i in range(2)] + [{"material": 0, "at": (-0.4, 0.4, 0.4, -0.4), "z": 0.5}]
        materials = [
            {"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}, "metallicFactor": 0.3, "roughnessFactor": 0.4}, "normalTexture": {"index": 1}},
            {"extensions": {"KHR_materials_clearcoat": {"clearcoatFactor": 0.7}}, "emissiveTexture": {"index": 1}, "alphaMode": "BLEND",
             "pbrMetallicRoughness": {"baseColorFactor": [0.9, 0.5, 0.3, 0.6]}, "occlusionTexture": {"index": 0}},
        ]
        for number, seed in enumerate((3, 5)):
            self.write(f"{number}.png", png([[((x * seed * 40) % 256, (y * 70) % 256, 200, 255) for x in range(4)] for y in range(4)]))
        lights = [{"type": "spot", "translation": [1, 1, 3], "intensity": 30, "spot": {"innerConeAngle": 0.1, "outerConeAngle": 0.9}},
                  {"type": "point", "translation": [-1, -1, 2], "intensity": 9, "range": 4}, {"type": "directional"}]
        document = json.loads(textured(quads, materials, ["0.png", "1.png"]))
        model = self.write("m.gltf", with_lights(document, lights))
        for switches in (("--shadows", "--camera", "0"), ("--sky", "clear", "--eye", "1,2,3"), ("--no-lights", "--eye", "0,0,-3"), ("--ao", "--camera", "0")):
            told = self.run_viewer(model, "--compare", "glsl", "cg", "--size", "64x64", *switches).stdout.decode()
            self.assertRegex(told, r"^glsl and cg: largest difference [012] of 255", switches)
        self.assertNotEqual(self.floats(model, "--shading", "cg", "--size", "32x32")[2], self.floats(model, "--shading", "fixed", "--size", "32x32")[2])

    def test_what_is_lit_late_equals_what_is_lit_at_once(self):
        side = 161  # a waved cloth of small triangles, which hides parts of itself and shows both of its sides
        at = [(i % side / 80 - 1, i // side / 80 - 1) for i in range(side * side)]
        first = [x + y * side for y in range(side - 1) for x in range(side - 1)]
        faces = b"".join(struct.pack("<B3IB3I", 3, i, i + 1, i + side, 3, i + 1, i + side + 1, i + side) for i in first)

        def cloth(name, colors=""):
            header = f"ply\nformat binary_little_endian 1.0\nelement vertex {len(at)}\nproperty float x\nproperty float y\nproperty float z\n" + colors
            vertex = [struct.pack("<3f", x, y, 0.3 * math.sin(10 * x) * math.cos(9 * y)) + (bytes((i % 256, 90, i % 7 * 40)) if colors else b"") for i, (x, y) in enumerate(at)]
            header += f"element face {2 * len(first)}\nproperty list uchar uint vertex_indices\nend_header\n"
            return self.write(name, header.encode() + b"".join(vertex) + faces)

        plain, colored = cloth("plain.ply"), cloth("colored.ply", "".join(f"property uchar {name}\n" for name in ("red", "green", "blue")))
        metal = self.write("metal.gltf", textured([{"material": 0, "at": (0, 1, 1, 0), "z": 0.1}], [
            {"doubleSided": True, "pbrMetallicRoughness": {"baseColorFactor": [0.9, 0.5, 0.1, 1], "metallicFactor": 0.7, "roughnessFactor": 0.3}}], []))
        driver = self.run_viewer("--gl-info").stdout
        for models, *switches in (([plain], "--azimuth", "70"), ([colored], "--orthographic", "--ground"), ([plain, metal], "--tile", "50", "--sky", "none")):
            told = self.run_viewer(*models, "--compare", "glsl", "cg", "--size", "160x90", "--samples", "1", "--gl-log", self.path("log"), *switches).stdout.decode()
            self.assertRegex(told, r"^glsl and cg: largest difference [01] of 255", switches)
            self.assertEqual(b"renderer: llvmpipe" in driver, b"glDepthFunc(GL_GREATER)" in pathlib.Path(self.path("log")).read_bytes(), switches)

    def test_the_shaders_that_ship(self):
        gloss = 0.3 * FILE_LIGHT
        self.near(self.by("textured"), self.lit(FILE_LIGHT))
        self.near(self.by("textured", lights=[self.OBLIQUE]), self.lit(FILE_LIGHT / 2))
        self.near(self.by("textured", "--cg-option=-DUNLIT"), self.BASE)
        painted = {"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}}}
        halves = [[[(255, 255, 255, 255)] * 2, [(0, 0, 0, 255)] * 2]]
        self.near(self.by("textured", "--cg-option=-DUNLIT", "--cg-set", "tiles=1,1.5", material=painted, pictures=halves), 0, 0.001)
        self.near(self.by("textured", "--cg-option=-DUNLIT", "--cg-set", "tiles=1,0.9", material=painted, pictures=halves), 1)
        self.near(self.by("phong"), tuple(c + gloss for c in self.lit(FILE_LIGHT)))
        self.near(self.by("phong", "--cg-set", "glossColor=0,0,0"), self.lit(FILE_LIGHT))
        leaning = {"normalTexture": {"index": 0}}
        self.near(self.by("normalMapped", "--cg-set", "glossColor=0,0,0", material=leaning, pictures=[[[(204, 128, 230, 255)]]]), self.lit(0.8 * FILE_LIGHT), 0.01)
        self.near(self.by("normalMapped", "--cg-set", "bumpiness=0", material=leaning, pictures=[[[(204, 128, 230, 255)]]]), tuple(c + gloss for c in self.lit(FILE_LIGHT)))
        self.near(self.by("toon"), self.BASE)
        self.near(self.by("toon", lights=[self.OBLIQUE]), tuple(c * 2 / 3 for c in self.BASE))
        self.near(self.by("toon", "--cg-option=-DBANDS=4", "--cg-set", "bodyColor=1,2,0", lights=[self.OBLIQUE]), (self.BASE[0] * 0.75, self.BASE[1] * 1.5, 0))
        self.near(self.by("toon", "--cg-set", "lineWidth=1.1", "--cg-set", "lineColor=0.1,0.2,0.3"), (0.1, 0.2, 0.3))
        self.near(self.by("depth"), 1 - 9.9 / 19.9)
        self.write("own_vertex.cg", "void main(float4 c : COLOR, out float4 o : COLOR) { o = c * GAIN; }")
        self.write("own_fragment.cg", "float4 main(float4 c : COLOR, uniform float3 tint) : COLOR { return float4(c.rgb * tint, 1); }")
        self.near(self.by(self.path("own"), "--cg-option=-DGAIN=0.5", "--cg-set", "tint=2,1,0"), (self.BASE[0], self.BASE[1] / 2, 0))
        self.near(self.by("depth", "--cg-set", "near=8", "--cg-set", "far=12"), 0.5)
        self.near(self.by("fresnel"), tuple(c / 4 for c in self.BASE))
        model = self.path("m.gltf")
        oblique = self.floats(model, "--cg", "fresnel", "--orthographic", "--eye", "1.7320508,0,1", "--size", "33x33", "--cg-set", "bodyBrightness=0")
        self.near(oblique[2][16][16], (0.4 / 8, 0.7 / 8, 1 / 8))

    EFFECT = """
        float4x4 wvp : WorldViewProjection; float4x4 WorldIT;
        float3 way : Direction < string Object = "DirectionalLight0"; >; float3 lamp : Diffuse < string Object = "Light0"; >;
        float3 tint < string UIName = "Tint"; > = {1, 0.5, 0.25}; float now : Time; float2 size : ViewportPixelSize; float3 eye : CameraPosition;
        texture picture < string ResourceName = "halves.png"; >; texture baseMap;
        sampler2D own = sampler_state { Texture = <picture>; MinFilter = Point; MagFilter = Point; AddressV = Clamp; };
        sampler2D base = sampler_state { Texture = <baseMap>; };
        void vs(float4 p : POSITION, float3 n : NORMAL, float2 t : TEXCOORD0, out float4 o : POSITION, out float3 m : TEXCOORD0, out float2 u : TEXCOORD1)
        { o = %s; m = mul(%s, n); u = t; }
        float4 lit(float3 n : TEXCOORD0) : COLOR { return float4(tint * lamp * saturate(dot(n, -way)), 1); }
        float4 mapped(float2 u : TEXCOORD1, uniform float v) : COLOR { return float4(tex2D(own, float2(u.x, v)).rgb * 0.5, 1); }
        float4 painted(float2 u : TEXCOORD1) : COLOR { return float4(tex2D(base, u).rgb * 0.25, 1); }
        float4 told() : COLOR { return float4(now, size.x / 1000, eye.z / 100, 1); }
        void frame(float4 p : POSITION, float3 t : TANGENT, float3 b : BINORMAL, float2 u : TEXCOORD0, out float4 o : POSITION, out float3 c : TEXCOORD0)
        { o = %s; c = float3(t.x, -b.y, u.x); }
        float4 plain(float3 c : TEXCOORD0) : COLOR { return float4(c, 1); }
        technique Frame { pass { VertexProgram = compile latest frame(); FragmentProgram = compile latest plain(); } }
        technique Broken { pass { FragmentProgram = compile latest nothing(); } }
        technique Lit { pass { VertexProgram = compile latest vs(); FragmentProgram = compile latest lit(); } }
        technique Above { pass { VertexProgram = compile arbvp1 vs(); FragmentProgram = compile arbfp1 mapped(-3); } }
        technique Both { pass { VertexShader = compile vs_3_0 vs(); PixelShader = compile ps_3_0 mapped(3); }
                         pass { VertexShader = compile vs_3_0 vs(); PixelShader = compile ps_3_0 painted(); AlphaBlendEnable = true; SrcBlend = One; DestBlend = One; ZFunc = LessEqual; } }
        technique Told { pass { VertexShader = compile vs_3_0 vs(); PixelShader = compile ps_3_0 told(); } }
        """

    def test_effects(self):
        self.write("e.cgfx", self.EFFECT % ("mul(wvp, p)", "(float3x3)WorldIT", "mul(wvp, p)"))
        self.write("halves.png", png([[(255, 0, 0, 255)], [(0, 0, 255, 255)]]))
        by = lambda *switches, **more: self.quad({"pbrMetallicRoughness": {"baseColorFactor": [*self.BASE, 1], "baseColorTexture": {"index": 0}}}, switches=("--cgfx", self.path("e.cgfx"), *switches), pictures=[[[(255, 255, 255, 255)]]], **more)
        self.near(by("--technique", "Lit"), (FILE_LIGHT, FILE_LIGHT / 2, FILE_LIGHT / 4))
        self.near(by("--technique", "Lit", "--cg-set", "tint=0,1,2", lights=[self.OBLIQUE]), (0, FILE_LIGHT / 2, FILE_LIGHT))
        self.near(by("--technique", "Above"), (0.5, 0, 0))
        self.near(self.quad({}, switches=("--cgfx", self.path("e.cgfx"))), (1, 1, 0.5))
        self.near(by("--technique", "Both"), (0.25, 0.25, 0.75))
        model = self.path("m.gltf")
        _, _, rows = self.floats(model, "--cgfx", self.path("e.cgfx"), "--technique", "Told", "--time", "0.5", "--eye", "0,0,10", "--target", "0,0,0", "--size", "50x50", "--samples", "1")
        self.near(rows[25][25], (0.5, 0.05, 0.1))
        out = (model, "--cgfx", self.path("e.cgfx"), "-o", self.path("out.png"), "--size", "16x16")
        told = self.run_viewer(*out[:3], "--technique", "Broken", "-o", self.path("good.png"), "--size", "16x16").stderr.decode()
        self.assertIn("e.cgfx: the technique 'Broken' can't be used: its state 'FragmentProgram' can't be set: ", told)
        self.fails(1, [*out, "--technique", "nope"], "--technique nope: ", " has no such technique; its techniques: Frame, Broken, Lit, Above, Both, Told\n")
        self.fails(1, [*out, "--cg-set", "glow=1"], "--cg-set glow: ", " has no such parameter; its parameters: wvp, WorldIT, way, ")
        self.fails(1, [*out, "--cg", "toon"], "--cg and --cgfx: each takes the place of all materials; give one")
        self.fails(1, [model, "--technique", "x", "-o", self.path("out.png")], "--technique: it is of an effect; give --cgfx FILE")
        self.fails(1, [model, "--cgfx", "nope.cgfx", "-o", self.path("out.png")], "--cgfx nope.cgfx: it can't be read")
        # Vectors before matrices, as Direct3D has them.
        self.write("e.cgfx", self.EFFECT.replace("mul(%s, n)", "mul(n, %s)") % ("mul(p, wvp)", "(float3x3)WorldIT", "mul(p, wvp)"))
        self.near(by("--technique", "Lit"), (FILE_LIGHT, FILE_LIGHT / 2, FILE_LIGHT / 4))
        self.write("e.cgfx", "technique A { pass { Nonsense = 1; } } technique B { }")
        self.fails(1, out, "--cgfx: none of the techniques can be used\n  ", "'A' can't be used: its state 'Nonsense' can't be set\n", "'B' can't be used: it has no passes\n")
        self.write("e.cgfx", "float x = ;")
        self.fails(1, out, "e.cgfx:1:11: error: a value is missing, before ';'\n")

    def test_where_it_is_said_to_be_changes_nothing(self):
        model = self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{}], []))
        switches = (model, "--cg", "toon", "--size", "32x32")
        self.assertEqual(self.picture(*switches), self.picture(*switches, environment={"ORLO_LOCATION": "/nowhere"}))

    def test_wrong_requests_are_explained(self):
        model = self.write("m.gltf", textured([{"material": 0, "at": WHOLE}], [{}], []))
        out = (model, "-o", self.path("out.png"))
        self.fails(1, [*out, "--cg", "nope"], "--cg nope: there is no ", "/bin/Cg/nope_vertex.cg; there are depth, fresnel, normalMapped, phong, textured, toon\n")
        self.fails(1, [*out, "--cg", "./toon"], "--cg ./toon: there is no ./toon_vertex.cg\n")
        self.fails(1, [*out, "--cg", "toon", "--cg-option=-DBANDS=few"], "--cg toon: ", "/bin/Cg/toon_fragment.cg:", " error: there is no variable 'few'\n")
        self.fails(1, [*out, "--cg", "toon", "--cg-set", "glow=1"], "--cg-set glow: toon has no such parameter; its parameters: baseColorMap, hasBaseColorMap, bodyColor, ")
        self.fails(1, [*out, "--cg", "toon", "--cg-set", "baseColorMap=1"], "--cg-set baseColorMap: ")
        for value in ("lineWidth", "=1", "lineWidth=", "lineWidth=x", "lineWidth=1,2,3,4,5"):
            self.fails(1, [*out, "--cg", "toon", "--cg-set", value], f"--cg-set {value}: give NAME= and 1 to 4 numbers")
        self.fails(1, [*out, "--cg-set", "a=1"], "--cg-option and --cg-set: they are of a Cg shader; give --cg NAME or --cgfx FILE")
        self.fails(1, [*out, "--cg", "toon", "--shader", "s"], "--cg and --shader: each takes the place of all materials; give one")
        self.fails(1, [*out, "--cg", "toon", "--shading", "cg"], "--cg takes the place of all materials; leave --shading, ")
        self.fails(1, [*out, "--cg", "toon", "--shadows"], "--shadows: the materials' shaders draw them; leave --cg out")


if __name__ == "__main__":
    unittest.main()
