"""Models that the viewer's tests feed it, and the pictures that come back."""

import base64
import json
import os
import struct
import zlib

os.environ["XDG_CONFIG_HOME"] = os.devnull  # nobody's own switches


def read_png(data):
    """Width, height, channels and rows of bytes of an 8-bit PNG."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at : at + 8])
        body = data[at + 8 : at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8
            channels = {2: 3, 6: 4}[colour]
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    raw, rows, stride = zlib.decompress(packed), [], width * channels
    above = bytearray(stride)
    for y in range(height):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1 : (y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b, c = above[i], above[i - channels] if i >= channels else 0
            paeth = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            line[i] = (line[i] + [0, a, b, (a + b) // 2, paeth][kind]) & 255
        rows.append(line)
        above = line
    return width, height, channels, rows


def gltf(material=None, positions=((-1, -1, 0), (1, -1, 0), (0, 1, 0)), mode=4, cameras=(), nodes=None):
    """A glTF file of one primitive without normals, its buffer inside."""
    data = b"".join(struct.pack("<3f", *p) for p in positions)
    columns = list(zip(*positions))
    document = {
        "asset": {"version": "2.0"},
        "scene": 0,
        "scenes": [{"nodes": list(range(len(nodes) if nodes else 1))}],
        "nodes": nodes or [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "mode": mode, "material": 0}]}],
        "materials": [material or {}],
        "accessors": [
            {
                "bufferView": 0,
                "componentType": 5126,
                "count": len(positions),
                "type": "VEC3",
                "min": [min(c) for c in columns],
                "max": [max(c) for c in columns],
            }
        ],
        "bufferViews": [{"buffer": 0, "byteLength": len(data)}],
        "buffers": [
            {
                "byteLength": len(data),
                "uri": "data:application/octet-stream;base64," + base64.b64encode(data).decode(),
            }
        ],
    }
    if cameras:
        document["cameras"] = list(cameras)
    return json.dumps(document)


def unlit(r, g, b, a=1.0, **more):
    return {
        "pbrMetallicRoughness": {"baseColorFactor": [r, g, b, a]},
        "extensions": {"KHR_materials_unlit": {}},
        **more,
    }


def png(rows):
    """An RGBA PNG of rows of (r, g, b, a) bytes."""

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    raw = b"".join(b"\0" + b"".join(bytes(pixel) for pixel in row) for row in rows)
    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b"")


UNIT_SQUARE = ((0, 0), (1, 0), (1, 1), (0, 1))  # texture coordinates, from the top left corner clockwise


def textured(quads, materials, pictures, samplers=({},), textures=None):
    """A glTF file of squares in the plane z = 0, seen by an orthographic camera that shows -1 to 1.

    A quad is a material, the corners left, top, right, bottom, optionally z, sets of texture coordinates and a tangent. All
    quads of one entry are one mesh, if the entry is a list.
    """
    document = {
        "asset": {"version": "2.0"},
        "extensionsUsed": ["KHR_texture_transform", "KHR_materials_unlit"],
        "scenes": [{"nodes": []}],
        "nodes": [],
        "meshes": [],
        "cameras": [{"type": "orthographic", "orthographic": {"xmag": 1, "ymag": 1, "znear": 0.1, "zfar": 20}}],
        "materials": materials,
        "samplers": list(samplers),
        "images": [{"uri": name} for name in pictures],
        "textures": textures or [{"source": i, "sampler": 0} for i in range(len(pictures))],
        "accessors": [],
        "bufferViews": [],
    }
    buffer = b""

    def accessor(rows, kind, component):
        nonlocal buffer
        packed = b"".join(struct.pack("<%d%s" % (len(row), "f" if component == 5126 else "I"), *row) for row in rows)
        columns = list(zip(*rows))
        document["bufferViews"].append({"buffer": 0, "byteOffset": len(buffer), "byteLength": len(packed)})
        document["accessors"].append(
            {
                "bufferView": len(document["bufferViews"]) - 1,
                "componentType": component,
                "count": len(rows),
                "type": kind,
                "min": [min(c) for c in columns],
                "max": [max(c) for c in columns],
            }
        )
        buffer += packed
        return len(document["accessors"]) - 1

    for entry in quads:
        entry = entry if isinstance(entry, list) else [entry]
        positions, indices, sets, tangents = [], [], [], []
        for quad in entry:
            left, top, right, bottom = quad["at"]
            first, z = len(positions), quad.get("z", 0)
            positions += [(left, top, z), (right, top, z), (right, bottom, z), (left, bottom, z)]
            indices += [(first + i,) for i in (0, 3, 2, 0, 2, 1)]
            tangents += [quad["tangent"]] * 4 if "tangent" in quad else []
            for number, uvs in enumerate(quad.get("uvs", [UNIT_SQUARE])):
                if number == len(sets):
                    sets.append([])
                sets[number] += uvs
        attributes = {"POSITION": accessor(positions, "VEC3", 5126)}
        for number, uvs in enumerate(sets):
            attributes["TEXCOORD_%d" % number] = accessor(uvs, "VEC2", 5126)
        if tangents:
            attributes["NORMAL"] = accessor([(0, 0, 1)] * len(positions), "VEC3", 5126)
            attributes["TANGENT"] = accessor(tangents, "VEC4", 5126)
        primitive = {"attributes": attributes, "indices": accessor(indices, "SCALAR", 5125), "material": entry[0]["material"]}
        document["meshes"].append({"primitives": [primitive]})
        document["nodes"].append({"mesh": len(document["meshes"]) - 1})
    document["nodes"].append({"camera": 0, "translation": [0, 0, 10]})
    document["nodes"].append({"camera": 0, "translation": [0, 0, -10], "rotation": [0, 1, 0, 0]})
    document["scenes"][0]["nodes"] = list(range(len(document["nodes"])))
    document["buffers"] = [{"byteLength": len(buffer), "uri": "data:application/octet-stream;base64," + base64.b64encode(buffer).decode()}]
    return json.dumps(document)


class File:
    """A glTF file that grows, its buffer inside."""

    def __init__(self):
        self.buffer = b""
        self.json = {"asset": {"version": "2.0"}, "nodes": [{"mesh": 0}], "scenes": [{"nodes": [0]}], "accessors": [], "bufferViews": []}

    def view(self, data):
        self.json["bufferViews"].append({"buffer": 0, "byteOffset": len(self.buffer), "byteLength": len(data)})
        self.buffer += data + bytes(-len(data) % 4)
        return len(self.json["bufferViews"]) - 1

    def accessor(self, rows, form="f", code=5126):
        data = b"".join(struct.pack(f"<{len(row)}{form}", *row) for row in rows)
        kind = {1: "SCALAR", 2: "VEC2", 3: "VEC3", 4: "VEC4", 16: "MAT4"}[len(rows[0])]
        self.json["accessors"].append({"bufferView": self.view(data), "componentType": code, "count": len(rows), "type": kind})
        return len(self.json["accessors"]) - 1

    def sparse(self, count, rows):
        """Zeros but for these, by their index."""
        indices = self.view(struct.pack(f"<{len(rows)}H", *rows))
        values = self.view(b"".join(struct.pack("<3f", *row) for row in rows.values()))
        sparse = {"count": len(rows), "indices": {"bufferView": indices, "componentType": 5123}, "values": {"bufferView": values}}
        self.json["accessors"].append({"componentType": 5126, "count": count, "type": "VEC3", "sparse": sparse})
        return len(self.json["accessors"]) - 1

    def text(self, **changes):
        uri = "data:application/octet-stream;base64," + base64.b64encode(self.buffer).decode()
        return json.dumps({**self.json, "buffers": [{"byteLength": len(self.buffer), "uri": uri}], **changes})


def rows_of(count, width, random_number):
    return [[struct.unpack("<f", struct.pack("<f", random_number()))[0] for _ in range(width)] for _ in range(count)]
