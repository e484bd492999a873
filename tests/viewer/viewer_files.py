"""Models that the viewer's tests feed it, and the pictures that come back."""

import base64
import json
import struct
import zlib


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
