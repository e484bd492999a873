"""What tests of compiled materials share: models of one material, and the light that leaves them."""

import base64
import json
import math
import struct

from viewer_files import png, textured
from viewer_program import ViewerProgram

NEAREST = {"magFilter": 9728, "minFilter": 9728}
WHOLE = (-1, 1, 1, -1)
FILE_LIGHT = 1.25  # what the lights of a file come to together


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def normalized(v):
    return tuple(x / math.sqrt(dot(v, v)) for x in v)


def encoded(value):
    value = min(max(value, 0), 1)
    return 255 * (12.92 * value if value <= 0.0031308 else 1.055 * value ** (1 / 2.4) - 0.055)


def microfacets(n, v, l, diffuse, f0, roughness):
    """glTF 2.0, appendix B, times pi and the cosine to the light, for one channel."""
    nl, nv = dot(n, l), abs(dot(n, v))
    h = normalized(tuple(a + b for a, b in zip(v, l)))
    if nl <= 0 or dot(n, h) <= 0:
        return 0
    a2 = max(roughness**2, 0.002) ** 2
    d = a2 / (dot(n, h) ** 2 * (a2 - 1) + 1) ** 2
    vis = 1 / (nl + math.sqrt(a2 + (1 - a2) * nl * nl)) / (nv + math.sqrt(a2 + (1 - a2) * nv * nv))
    fresnel = f0 + (1 - f0) * (1 - abs(dot(v, h))) ** 5
    return ((1 - fresnel) * diffuse + fresnel * d * vis) * nl


def spheres(materials, lights=None):
    """Spheres of radius 1, 3 apart, six in a row, each of a material."""
    around, down = 64, 48
    points, indices = [], []
    for i in range(down + 1):
        for j in range(around + 1):
            a, b = math.pi * i / down, 2 * math.pi * j / around
            points.append((math.sin(a) * math.sin(b), math.cos(a), math.sin(a) * math.cos(b)))
    for i in range(down):
        for j in range(around):
            k = i * (around + 1) + j
            indices += [k, k + around + 1, k + 1, k + 1, k + around + 1, k + around + 2]
    data = b"".join(struct.pack("<3f", *p) for p in points)
    whole = data + struct.pack("<%dI" % len(indices), *indices)
    accessors = [
        {"bufferView": 0, "componentType": 5126, "count": len(points), "type": "VEC3", "min": [-1, -1, -1], "max": [1, 1, 1]},
        {"bufferView": 1, "componentType": 5125, "count": len(indices), "type": "SCALAR"},
    ]
    document = {
        "asset": {"version": "2.0"},
        "scene": 0,
        "scenes": [{"nodes": list(range(len(materials)))}],
        "nodes": [{"mesh": i, "translation": [3 * (i % 6), 3 * (i // 6), 0]} for i in range(len(materials))],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 0}, "indices": 1, "material": i}]} for i in range(len(materials))],
        "materials": materials,
        "accessors": accessors,
        "bufferViews": [
            {"buffer": 0, "byteLength": len(data)},
            {"buffer": 0, "byteOffset": len(data), "byteLength": len(whole) - len(data)},
        ],
        "buffers": [{"byteLength": len(whole), "uri": "data:application/octet-stream;base64," + base64.b64encode(whole).decode()}],
    }
    return with_lights(document, lights or [])


def with_lights(document, lights):
    """Lights of KHR_lights_punctual, each with a rotation or a place of its own beside its description."""
    if lights:
        described = [{k: v for k, v in light.items() if k not in ("rotation", "translation")} for light in lights]
        document["extensions"] = {"KHR_lights_punctual": {"lights": described}}
    for i, light in enumerate(lights):
        placed = {k: light[k] for k in ("rotation", "translation") if k in light}
        document["nodes"].append({**placed, "extensions": {"KHR_lights_punctual": {"light": i}}})
        document["scenes"][0]["nodes"].append(len(document["nodes"]) - 1)
    return json.dumps(document)


DARK = [{"type": "directional", "intensity": 0}]


class ShadedPictures(ViewerProgram):
    def floats(self, *arguments):
        """Width, height and the rows of linear (r, g, b), from the bottom up."""
        result = self.run_viewer(*arguments, "-o", self.path("out.pfm"))
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        with open(self.path("out.pfm"), "rb") as file:
            data = file.read()
        _, size, _, body = data.split(b"\n", 3)
        width, height = map(int, size.split())
        values = struct.unpack("<%df" % (width * height * 3), body)
        return width, height, [[values[3 * (y * width + x) : 3 * (y * width + x) + 3] for x in range(width)] for y in range(height)]

    def quad(self, material, pictures=(), lights=({"type": "directional"},), switches=("--sky", "none"), scale=(1, 1, 1), **more):
        """The linear colour in the middle of a square that faces the eye, straight lit unless told otherwise."""
        names = []
        for number, rows in enumerate(pictures):
            names.append(f"{number}.png")
            self.write(names[-1], png(rows))
        quad = {"material": 0, "at": WHOLE, **more}
        document = json.loads(textured([quad], [material], names, samplers=[NEAREST]))
        document["nodes"][0]["scale"] = list(scale)
        model = self.write("m.gltf", with_lights(document, list(lights)))
        return self.floats(model, "--size", "33x33", "--camera", "0", "--samples", "1", *switches)[2][16][16]

    def near(self, color, wanted, tolerance=0.004):
        wanted = wanted if isinstance(wanted, (tuple, list)) else (wanted,) * 3
        self.assertTrue(all(abs(a - b) <= tolerance * (1 + b) for a, b in zip(color, wanted)), f"{color}, not {wanted}")

    def straight(self, diffuse, f0, roughness):
        """Looked at and lit along the normal."""
        n = (0, 0, 1)
        return FILE_LIGHT * microfacets(n, n, n, diffuse, f0, roughness)
