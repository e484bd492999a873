#!/usr/bin/env python3
"""What glTF's extensions add to materials, against their formulas. Usage: layers_test.py ORLOVIEW [unittest arguments]"""

import json
import math
import unittest

from shaded_pictures import DARK, FILE_LIGHT, WHOLE, ShadedPictures, dot, normalized, spheres, with_lights
from viewer_files import png, textured

SKY, WHITE = ("--sky", "white"), ("--background", "white")
BLACK = {"baseColorFactor": [0, 0, 0, 1], "metallicFactor": 0, "roughnessFactor": 0}
SMOOTH = {"metallicFactor": 0, "roughnessFactor": 0}


def material(pbr, **extensions):
    return {"pbrMetallicRoughness": pbr, "extensions": {"KHR_materials_" + name: value for name, value in extensions.items()}}


def schlick(f0, cosine, f90=1):
    return f0 + (f90 - f0) * (1 - cosine) ** 5


def film(cosine, ior, thickness, f0):
    """Belcour and Barla's thin film over a surface of that f0, as linear RGB."""

    def color(path, shift):
        phase = 2 * math.pi * path * 1e-9
        lobes = ((0, 5.4856e-13, 1.6810e6, 4.3278e9), (1, 4.4201e-13, 1.7953e6, 9.3046e9), (2, 5.2481e-13, 2.2084e6, 6.6121e9), (0, 9.7470e-14, 2.2399e6, 4.5282e9))
        xyz = [0, 0, 0]
        for channel, value, place, width in lobes:
            xyz[channel] += value * math.sqrt(2 * math.pi * width) * math.cos(place * phase + shift) * math.exp(-width * phase**2) / 1.0685e-7
        return [dot(row, xyz) for row in ((3.2404542, -1.5371385, -0.4985314), (-0.9692660, 1.8760108, 0.0415560), (0.0556434, -0.2040259, 1.0572252))]

    inside = math.sqrt(1 - (1 - cosine**2) / ior**2)
    r12 = schlick(((ior - 1) / (ior + 1)) ** 2, cosine)
    below = (1 + math.sqrt(f0)) / (1 - math.sqrt(f0))
    r23 = schlick(((below - ior) / (below + ior)) ** 2, inside)
    late = math.pi + (math.pi if below < ior else 0)
    round_trip = (1 - r12) ** 2 * r23 / (1 - r12 * r23)
    total = [r12 + round_trip] * 3
    for times in (1, 2):
        strength = (round_trip - (1 - r12)) * math.sqrt(r12 * r23) ** times
        wave = color(times * 2 * ior * thickness * inside, times * late)
        total = [t + 2 * strength * w for t, w in zip(total, wave)]
    return [max(t, 0) for t in total]


def masking(cosine, alpha):
    """How much fibres hide each other (Estevez and Kulla)."""
    weight = (1 - alpha) ** 2
    a, b, c, d, e = (low + weight * (high - low) for low, high in ((21.5473, 25.3245), (3.82987, 3.32435), (0.19823, 0.16801), (-1.97760, -1.27393), (-4.32054, -4.85967)))
    curve = lambda x: a / (1 + b * x**c) + d * x + e
    return math.exp(curve(cosine) if cosine < 0.5 else 2 * curve(0.5) - curve(1 - cosine))


def sheen(n, v, l, roughness):
    """Times pi and the cosine to the light."""
    alpha, nl, nv = roughness**2, dot(n, l), dot(n, v)
    sine = math.sqrt(max(1 - dot(n, normalized(tuple(a + b for a, b in zip(v, l)))) ** 2, 0))
    return (2 + 1 / alpha) * sine ** (1 / alpha) / 2 / (1 + masking(nv, alpha) + masking(nl, alpha)) / 4 / nv


def sheen_response(nv, roughness):
    """What white fibres send out under a sky of 1."""
    v, steps, total = (math.sqrt(1 - nv * nv), 0, nv), 100, 0
    for i in range(steps):
        nl = (i + 0.5) / steps
        for j in range(steps):
            turn, side = math.pi * (j + 0.5) / steps, math.sqrt(1 - nl * nl)
            total += 2 * sheen((0, 0, 1), v, (side * math.cos(turn), side * math.sin(turn), nl), roughness) / steps**2
    return total


def stretched(n, v, l, along, roughness, anisotropy):
    """The lobe of KHR_materials_anisotropy, times pi and the cosine to the light."""
    h = normalized(tuple(a + b for a, b in zip(v, l)))
    across = (-along[1], along[0], 0)
    ab = roughness**2
    at = ab + (1 - ab) * anisotropy**2
    f = (ab * dot(along, h), at * dot(across, h), at * ab * dot(n, h))
    d = at * ab * (at * ab / dot(f, f)) ** 2
    masked = lambda a, b: dot(n, a) * math.sqrt((at * dot(along, b)) ** 2 + (ab * dot(across, b)) ** 2 + dot(n, b) ** 2)
    return dot(n, l) * d * 0.5 / (masked(l, v) + masked(v, l))


def towards(direction):
    """A directional light that comes from there."""
    x, y, z = normalized(direction)
    turn = normalized((-y, x, 0)) if x or y else (1, 0, 0)
    half = math.acos(z) / 2
    return {"type": "directional", "rotation": [*(math.sin(half) * c for c in turn), math.cos(half)]}


class Layers(ShadedPictures):
    def at_angles(self, made, *switches):
        """The colours of a sphere where the eye sees it at ten cosines, beside these."""
        model = self.write("m.gltf", spheres([made], DARK))
        width, height, rows = self.floats(model, "--eye", "0,0,9", "--target", "0,0,0", "--orthographic", "--fov", "14", "--size", "401x401", "--samples", "1", *switches)
        per_unit = height / 2 / (9 * math.tan(math.radians(7)))
        for i in range(10):
            column = round(width / 2 - 0.5 + 0.098 * i * per_unit)
            yield math.sqrt(1 - ((column + 0.5 - width / 2) / per_unit) ** 2), rows[height // 2][column]

    def test_fresnel_at_ten_angles(self):
        for made, f0, f90 in (
            (material(BLACK, ior={"ior": 1.8}), (0.8 / 2.8) ** 2, 1),
            (material(BLACK, ior={"ior": 0}), 1, 1),
            (material(BLACK, ior={"ior": 2}, specular={"specularFactor": 0.6, "specularColorFactor": [1, 0.5, 20]}), (1 / 15, 1 / 30, 0.6), 0.6),
        ):
            for cosine, color in self.at_angles(made, *SKY, "--background", "black"):
                self.near(color, [schlick(f, cosine, f90) for f in (f0 if isinstance(f0, tuple) else (f0,) * 3)], 0.012)
        clear = material(SMOOTH, transmission={"transmissionFactor": 1}, ior={"ior": 1.8})
        for cosine, color in self.at_angles(clear, "--sky", "none", *WHITE):
            self.near(color, 1 - schlick((0.8 / 2.8) ** 2, cosine), 0.012)

    def test_a_thin_film_at_ten_angles(self):
        for f0, pbr, ior, thickness in ((0.04, BLACK, 1.8, 380), (0.6, {**SMOOTH, "metallicFactor": 1, "baseColorFactor": [0.6, 0.6, 0.6, 1]}, 1.33, 550)):
            made = material(pbr, iridescence={"iridescenceFactor": 0.75, "iridescenceIor": ior, "iridescenceThicknessMaximum": thickness})
            for cosine, color in self.at_angles(made, *SKY, "--background", "black"):
                wanted = [0.75 * c + 0.25 * schlick(f0, cosine) for c in film(cosine, ior, thickness, f0)]
                self.near(color, wanted, 0.012)

    def test_nothing_is_made_or_lost_in_a_furnace(self):
        fibres = {"sheenColorFactor": [1, 1, 1]}
        volume = {"thicknessFactor": 0.7}
        for made in (
            *(material({"metallicFactor": 0, "roughnessFactor": 0.3}, sheen={**fibres, "sheenRoughnessFactor": r}) for r in (0.1, 0.3, 0.6, 1)),
            *(material({"metallicFactor": 0, "roughnessFactor": r}, transmission={"transmissionFactor": t}, volume=v, ior={"ior": 1.7}, dispersion={"dispersion": 3})
              for r in (0, 0.3) for t in (0.5, 1) for v in ({}, volume)),
            *(material({"metallicFactor": 0, "roughnessFactor": 0.3}, clearcoat={"clearcoatFactor": c, "clearcoatRoughnessFactor": r}) for c in (0.5, 1) for r in (0, 0.2)),
            material(SMOOTH, diffuse_transmission={"diffuseTransmissionFactor": 0.4}),
            material(SMOOTH, transmission={"transmissionFactor": 0.5}, sheen={**fibres, "sheenRoughnessFactor": 0.5}, clearcoat={"clearcoatFactor": 1}),
        ):
            for cosine, color in self.at_angles(made, *SKY, *WHITE):
                self.near(color, 1, 0.005)  # of twice as much: 1 in 100

    def test_fibres_light_up_along_the_surface(self):
        v = n = (0, 0, 1)
        for roughness, direction in ((0.5, (0.8, 0.3, 0.4)), (0.25, (-2, 0, 0.5)), (1, (0, 1, 1))):
            made = material(BLACK, specular={"specularFactor": 0}, sheen={"sheenColorFactor": [1, 0.5, 0.25], "sheenRoughnessFactor": roughness})
            light = FILE_LIGHT * sheen(n, v, normalized(direction), roughness)
            self.near(self.quad(made, lights=[towards(direction)]), (light, light / 2, light / 4))
            under = {"metallicFactor": 0, "roughnessFactor": 1, "baseColorFactor": [0.5, 0.5, 0.5, 1]}
            below = FILE_LIGHT * 0.5 * normalized(direction)[2] * (1 - sheen_response(1, roughness))
            self.near(self.quad({**made, "pbrMetallicRoughness": under}, lights=[towards(direction)]), (light + below, light / 2 + below, light / 4 + below), 0.01)

    def test_highlights_are_stretched_along_the_surface(self):
        for direction in ((0.6, 0.1, 1), (0.1, 0.6, 1), (-0.4, 0.5, 1)):
            for rotation, along in ((0, (1, 0, 0)), (math.pi / 2, (0, 1, 0)), (0.5, (math.cos(0.5), math.sin(0.5), 0))):
                metal = {"metallicFactor": 1, "roughnessFactor": 0.4}
                wanted = FILE_LIGHT * stretched((0, 0, 1), (0, 0, 1), normalized(direction), along, 0.4, 0.7)
                factors = {"anisotropyStrength": 0.7, "anisotropyRotation": rotation}
                self.near(self.quad(material(metal, anisotropy=factors), lights=[towards(direction)]), wanted, 0.01)
                across = FILE_LIGHT * stretched((0, 0, 1), (0, 0, 1), normalized(direction), (along[1], along[0], 0), 0.4, 0.7)
                self.near(self.quad(material(metal, anisotropy=factors), lights=[towards(direction)], tangent=(0, 1, 0, -1)), across, 0.01)

    def test_volumes_absorb_by_the_length_of_the_way(self):
        for thickness, distance, scale in ((1, 2, 1), (0.5, 0.25, 1), (1, 2, 3)):
            made = material(SMOOTH, transmission={"transmissionFactor": 1}, volume={"thicknessFactor": thickness, "attenuationDistance": distance, "attenuationColor": [0.9, 0.5, 0.2]})
            document = json.loads(spheres([made], DARK))
            document["nodes"][0]["scale"] = [scale] * 3
            model = self.write("m.gltf", json.dumps(document))
            color = self.floats(model, "--sky", "none", *WHITE, "--size", "65x65", "--eye", "0,0,20", "--target", "0,0,0", "--samples", "1")[2][32][32]
            self.near(color, [0.96 * c ** (thickness * scale / distance) for c in (0.9, 0.5, 0.2)], 0.01)

    def test_what_stands_behind_is_moved_blurred_and_split(self):
        """A slab that leans by 45 degrees before a wall whose right half is white."""
        def edge(channel, rough=0, **extensions):
            made = material({"metallicFactor": 0, "roughnessFactor": rough}, transmission={"transmissionFactor": 1}, **extensions)
            wall = {"pbrMetallicRoughness": {"baseColorFactor": [1, 1, 1, 1]}, "extensions": {"KHR_materials_unlit": {}}}
            document = json.loads(textured([{"material": 1, "at": (0, 4, 4, -4), "z": -2}, {"material": 0, "at": WHOLE, "z": 0}], [made, wall], []))
            document["nodes"][1]["rotation"] = [0, math.sin(math.pi / 8), 0, math.cos(math.pi / 8)]
            model = self.write("m.gltf", with_lights(document, DARK))
            row = self.floats(model, "--sky", "none", "--background", "black", "--size", "200x200", "--camera", "0", "--samples", "1")[2][100]
            values = [row[x][channel] for x in range(35, 165)]  # all of it is slab
            steep = [x for x in range(130) if max(values) * 0.1 < values[x] < max(values) * 0.9]
            return (35 + sum(v < max(values) / 2 for v in values)) / 100 - 1, len(steep)

        def shift(ior, thickness):
            outside = math.radians(45)
            inside = math.asin(math.sin(outside) / ior)
            return thickness * math.sin(outside - inside)

        self.assertAlmostEqual(edge(0)[0], 0, delta=0.012)
        where, width = edge(0, volume={"thicknessFactor": 0.5}, ior={"ior": 1.5})
        self.assertAlmostEqual(abs(where), shift(1.5, 0.5), delta=0.012)
        self.assertGreater(edge(0, rough=0.6)[1], 4 * max(width, 1))
        split = {"volume": {"thicknessFactor": 1}, "ior": {"ior": 1.5}, "dispersion": {"dispersion": 8}}
        for channel, ior in enumerate((1.4, 1.5, 1.6)):
            self.assertAlmostEqual(abs(edge(channel, **split)[0]), shift(ior, 1), delta=0.012)

    def test_light_from_behind_is_scattered_on(self):
        made = material({**SMOOTH, "roughnessFactor": 1}, diffuse_transmission={"diffuseTransmissionFactor": 0.4, "diffuseTransmissionColorFactor": [1, 0.5, 0.25]})
        through = FILE_LIGHT * 0.96 * 0.4
        self.near(self.quad(made, lights=[{"type": "directional", "rotation": [0, 1, 0, 0]}]), (through, through / 2, through / 4))

    def test_each_texture_has_its_channels(self):
        texel = (51, 102, 153, 204)
        r, g, b, a = (c / 255 for c in texel)
        linear = [((c / 255 + 0.055) / 1.055) ** 2.4 for c in texel[:3]]
        base = {"metallicFactor": 0, "roughnessFactor": 0.3, "baseColorFactor": [0.5, 0.4, 0.3, 1]}
        clear = {"transmission": {"transmissionFactor": 1}}
        fibres = {"sheenColorFactor": [1, 1, 1], "sheenRoughnessFactor": 1}
        for name, textured_too, factors, more in (
            ("specular", {"specularTexture": {"index": 0}}, {"specularFactor": a}, {}),
            ("specular", {"specularColorTexture": {"index": 0}}, {"specularColorFactor": linear}, {}),
            ("sheen", {**fibres, "sheenColorTexture": {"index": 0}}, {**fibres, "sheenColorFactor": linear}, {}),
            ("sheen", {**fibres, "sheenRoughnessTexture": {"index": 0}}, {**fibres, "sheenRoughnessFactor": a}, {}),
            ("anisotropy", {"anisotropyStrength": 1, "anisotropyTexture": {"index": 0}}, {"anisotropyStrength": b, "anisotropyRotation": math.atan2(2 * g - 1, 2 * r - 1)}, {}),
            ("iridescence", {"iridescenceFactor": 1, "iridescenceTexture": {"index": 0}}, {"iridescenceFactor": r}, {}),
            ("iridescence", {"iridescenceFactor": 1, "iridescenceThicknessMinimum": 200, "iridescenceThicknessTexture": {"index": 0}}, {"iridescenceFactor": 1, "iridescenceThicknessMaximum": 200 + 200 * g}, {}),
            ("transmission", {"transmissionFactor": 1, "transmissionTexture": {"index": 0}}, {"transmissionFactor": r}, {}),
            ("volume", {"thicknessFactor": 1, "attenuationDistance": 1, "attenuationColor": [0.5, 0.3, 0.9], "thicknessTexture": {"index": 0}},
             {"thicknessFactor": g, "attenuationDistance": 1, "attenuationColor": [0.5, 0.3, 0.9]}, clear),
            ("diffuse_transmission", {"diffuseTransmissionFactor": 1, "diffuseTransmissionTexture": {"index": 0}}, {"diffuseTransmissionFactor": a}, {}),
            ("diffuse_transmission", {"diffuseTransmissionFactor": 1, "diffuseTransmissionColorTexture": {"index": 0}}, {"diffuseTransmissionFactor": 1, "diffuseTransmissionColorFactor": linear}, {}),
        ):
            drawn = [self.quad(material(base, **{name: given}, **more), [[[texel]]], [towards((0.5, 0.3, 1))], ("--sky", "clear", *WHITE))
                     for given in (textured_too, factors, {})]
            self.near(drawn[0], drawn[1], 0.005)
            self.assertGreater(max(abs(x - y) for x, y in zip(drawn[0], drawn[2])), 0.003, name)

    def test_both_languages_draw_them_alike(self):
        glass = {"transmission": {"transmissionFactor": 1}, "volume": {"thicknessFactor": 1, "attenuationDistance": 1, "attenuationColor": [1, 0.5, 0.2]}, "dispersion": {"dispersion": 5}}
        made = [
            material({"metallicFactor": 0, "roughnessFactor": 0.2}, **glass),
            material({"metallicFactor": 0}, sheen={"sheenColorFactor": [1, 0.5, 0.5], "sheenRoughnessFactor": 0.4}, diffuse_transmission={"diffuseTransmissionFactor": 0.5}),
            material({"roughnessFactor": 0.3}, iridescence={"iridescenceFactor": 1}, specular={"specularFactor": 0.5}),
            material({"metallicFactor": 0}, anisotropy={"anisotropyStrength": 0.8, "anisotropyTexture": {"index": 0}}),
        ]
        self.write("0.png", png([[(200, 90, 255, 255)]]))
        quads = [{"material": i, "at": (i / 2 - 1, 1, i / 2 - 0.5, -1)} for i in range(4)]
        model = self.write("m.gltf", with_lights(json.loads(textured(quads, made, ["0.png"])), [{"type": "point", "translation": [-1, 1, 2], "intensity": 9}]))
        for switches in (("--camera", "0"), ("--sky", "clear", "--eye", "1,2,3", "--background", "#80c0f0"), ("--sky", "none", "--eye", "-1,0.5,-3")):
            told = self.run_viewer(model, "--compare", "glsl", "cg", "--size", "96x96", *switches).stdout.decode()
            self.assertRegex(told, r"^glsl and cg: largest difference [012] of 255", switches)


if __name__ == "__main__":
    unittest.main()
