#!/usr/bin/env python3
"""Writes showcase.glb, the sample scene: shaded solids of several materials on a checkered floor.

It holds what a viewer must get right: vertex colours with 8 and 32 bits, flat and smooth normals, indices of 8, 16 and
32 bits, glossy and matt, opaque and transparent materials, lines, a mirrored node, a perspective and an orthographic
camera.
"""

import json
import math
import os
import struct

TAU = 2 * math.pi
FLOAT, UBYTE, USHORT, UINT = 5126, 5121, 5123, 5125


class Writer:
    """The binary chunk and the lists that describe it."""

    def __init__(self):
        self.data = bytearray()
        self.views, self.accessors, self.meshes, self.materials = [], [], [], []

    def accessor(self, rows, component, kind, normalized=False):
        code = {FLOAT: "f", UBYTE: "B", USHORT: "H", UINT: "I"}[component]
        while len(self.data) % 4:
            self.data.append(0)
        start = len(self.data)
        for row in rows:
            self.data += struct.pack(f"<{len(row)}{code}", *row)
        self.views.append({"buffer": 0, "byteOffset": start, "byteLength": len(self.data) - start})
        accessor = {"bufferView": len(self.views) - 1, "componentType": component, "count": len(rows), "type": kind}
        if normalized:
            accessor["normalized"] = True
        if kind == "VEC3" and component == FLOAT:
            # Rounded as they are stored, so that they agree with the data.
            stored = [struct.unpack("<3f", struct.pack("<3f", *row)) for row in rows]
            accessor["min"] = [min(column) for column in zip(*stored)]
            accessor["max"] = [max(column) for column in zip(*stored)]
        self.accessors.append(accessor)
        return len(self.accessors) - 1

    def material(self, name, colour, roughness=1.0, metallic=0.0, **more):
        self.materials.append(
            {
                "name": name,
                "pbrMetallicRoughness": {
                    "baseColorFactor": colour,
                    "roughnessFactor": roughness,
                    "metallicFactor": metallic,
                },
                **more,
            }
        )
        return len(self.materials) - 1

    def mesh(self, name, material, positions, indices, normals=None, colours=None, mode=4):
        attributes = {"POSITION": self.accessor(positions, FLOAT, "VEC3")}
        if normals:
            attributes["NORMAL"] = self.accessor(normals, FLOAT, "VEC3")
        if colours and isinstance(colours[0][0], int):
            attributes["COLOR_0"] = self.accessor(colours, UBYTE, "VEC4", normalized=True)
        elif colours:
            attributes["COLOR_0"] = self.accessor(colours, FLOAT, "VEC3")
        component = UBYTE if len(positions) < 255 else USHORT if len(positions) < 65535 else UINT
        primitive = {
            "attributes": attributes,
            "indices": self.accessor([(i,) for i in indices], component, "SCALAR"),
            "material": material,
            "mode": mode,
        }
        self.meshes.append({"name": name, "primitives": [primitive]})
        return len(self.meshes) - 1


def normalize(v):
    length = math.sqrt(sum(x * x for x in v))
    return tuple(x / length for x in v)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def grid_indices(rows, columns):
    """Two triangles per cell of a grid of (rows + 1) x (columns + 1) vertices."""
    for row in range(rows):
        for column in range(columns):
            a = row * (columns + 1) + column
            b = a + columns + 1
            yield from (a, b, a + 1, a + 1, b, b + 1)


def torus_knot(p, q, radius, tube, rings, sides):
    def centre(t):
        r = radius * (2 + math.cos(q * t)) / 3
        return (r * math.cos(p * t), radius * math.sin(q * t) / 2, r * math.sin(p * t))

    positions, normals = [], []
    for i in range(rings + 1):
        t = TAU * i / rings
        here, ahead = centre(t), centre(t + 1e-3)
        along = normalize([b - a for a, b in zip(here, ahead)])
        side = normalize(cross(along, [a + b for a, b in zip(here, ahead)]))
        up = cross(side, along)
        for j in range(sides + 1):
            angle = TAU * j / sides
            normal = [math.cos(angle) * s + math.sin(angle) * u for s, u in zip(side, up)]
            normals.append(normalize(normal))
            positions.append([c + tube * n for c, n in zip(here, normal)])
    return positions, list(grid_indices(rings, sides)), normals


def sphere(radius, rings, sides):
    positions, normals, colours = [], [], []
    for i in range(rings + 1):
        latitude = math.pi * i / rings
        for j in range(sides + 1):
            longitude = TAU * j / sides
            normal = (
                math.sin(latitude) * math.sin(longitude),
                math.cos(latitude),
                math.sin(latitude) * math.cos(longitude),
            )
            normals.append(normal)
            positions.append([radius * x for x in normal])
            wave = 0.5 + 0.5 * math.sin(6 * longitude + 5 * latitude)
            colours.append((int(40 + 190 * wave), int(90 + 60 * (1 - wave)), int(200 - 120 * wave), 255))
    return positions, list(grid_indices(rings, sides)), normals, colours


def gem(radius, sides):
    """A cut stone: no normals, so that its facets are flat."""
    rings = [(0.62, 0.42), (1.0, 0.12), (1.0, 0.0)]
    positions = [(radius * 0.0, radius * 0.42, 0.0)]
    for k, (r, y) in enumerate(rings):
        for j in range(sides):
            angle = TAU * (j + 0.5 * (k % 2)) / sides
            positions.append((radius * r * math.sin(angle), radius * y, radius * r * math.cos(angle)))
    positions.append((0.0, -0.85 * radius, 0.0))
    indices = []
    for j in range(sides):
        n = (j + 1) % sides
        indices += (0, 1 + j, 1 + n)
        for k in range(len(rings) - 1):
            top, low = 1 + k * sides, 1 + (k + 1) * sides
            if k % 2 == 0:  # the lower ring is turned half a step ahead
                indices += (top + j, low + j, top + n, top + n, low + j, low + n)
            else:  # and half a step back
                indices += (top + j, low + n, top + n, top + j, low + j, low + n)
        last = 1 + (len(rings) - 1) * sides
        indices += (last + j, len(positions) - 1, last + n)
    return positions, indices


def floor(cells, size):
    positions, normals, colours, indices = [], [], [], []
    for row in range(cells):
        for column in range(cells):
            shade = (0.62, 0.60, 0.56) if (row + column) % 2 else (0.20, 0.21, 0.23)
            x, z = (column - cells / 2) * size, (row - cells / 2) * size
            at = len(positions)
            for dx, dz in ((0, 0), (0, size), (size, 0), (size, size)):
                positions.append((x + dx, 0.0, z + dz))
                normals.append((0.0, 1.0, 0.0))
                colours.append(shade)
            indices += (at, at + 1, at + 2, at + 2, at + 1, at + 3)
    return positions, indices, normals, colours


def wedge(width, height, depth):
    """A flight of three steps with one slanted side: mirrored, it is another shape."""
    positions, indices = [], []

    def quad(a, b, c, d):
        at = len(positions)
        positions.extend((a, b, c, d))
        indices.extend((at, at + 1, at + 2, at, at + 2, at + 3))

    for step in range(3):
        low, high = 0.0, height * (3 - step) / 3
        x0, x1 = width * step / 3, width * (step + 1) / 3
        f0, f1 = depth * (1 - 0.15 * step), depth * (1 - 0.15 * (step + 1))
        quad((x0, high, 0), (x0, high, f0), (x1, high, f1), (x1, high, 0))
        quad((x0, low, f0), (x1, low, f1), (x1, high, f1), (x0, high, f0))
        quad((x1, low, 0), (x0, low, 0), (x0, high, 0), (x1, high, 0))
        beyond = height * (2 - step) / 3
        quad((x1, beyond, f1), (x1, beyond, 0), (x1, high, 0), (x1, high, f1))
    quad((0, 0, 0), (0, 0, depth), (0, height, depth), (0, height, 0))
    return positions, indices


def spiral(turns, points):
    positions, colours = [], []
    for i in range(points):
        t = i / (points - 1)
        angle = TAU * turns * t
        positions.append((0.9 * math.sin(angle), 0.05 + 2.3 * t, 0.9 * math.cos(angle)))
        colours.append((1.0, 0.55 + 0.4 * t, 0.2 + 0.7 * t))
    return positions, colours


def main():
    out = Writer()
    copper = out.material("copper", [0.95, 0.42, 0.18, 1.0], roughness=0.32, metallic=0.7)
    painted = out.material("painted", [1.0, 1.0, 1.0, 1.0], roughness=0.25)
    glass = out.material("glass", [0.10, 0.62, 0.58, 0.62], roughness=0.15, alphaMode="BLEND")
    stone = out.material("stone", [0.72, 0.66, 0.52, 1.0], roughness=0.9)
    slate = out.material("slate", [1.0, 1.0, 1.0, 1.0], roughness=0.7)
    glow = out.material("glow", [1.0, 1.0, 1.0, 1.0], extensions={"KHR_materials_unlit": {}})

    knot = out.mesh("torus knot", copper, *torus_knot(2, 3, 1.25, 0.30, 240, 24))
    positions, indices, normals, colours = sphere(0.85, 40, 64)
    ball = out.mesh("ball", painted, positions, indices, normals, colours)
    stone_cut = out.mesh("gem", glass, *gem(0.95, 8))
    steps = out.mesh("steps", stone, *wedge(1.5, 0.9, 1.0))
    positions, indices, normals, colours = floor(12, 0.8)
    ground = out.mesh("floor", slate, positions, indices, normals, colours)
    positions, colours = spiral(3.5, 200)
    wire = out.mesh("spiral", glow, positions, list(range(len(positions))), None, colours, mode=3)

    tilt = math.radians(-24) / 2
    nodes = [
        {"name": "floor", "mesh": ground},
        {"name": "torus knot", "mesh": knot, "translation": [0, 1.55, -0.9], "rotation": [0.5, 0, 0, 0.8660254]},
        {"name": "ball", "mesh": ball, "translation": [-2.35, 0.85, 0.5]},
        {"name": "gem", "mesh": stone_cut, "translation": [2.3, 0.95, 0.55], "rotation": [0, 0.13, 0, 0.9915]},
        {"name": "spiral", "mesh": wire, "translation": [2.3, 0, 0.55]},
        {"name": "steps, right", "mesh": steps, "translation": [0.25, 0, 1.25]},
        {"name": "steps, left", "mesh": steps, "translation": [-0.25, 0, 1.25], "scale": [-1, 1, 1]},
        {"name": "Showcase", "camera": 0, "translation": [0, 4.35, 8.3], "rotation": [math.sin(tilt), 0, 0, math.cos(tilt)]},
        {"name": "Plan", "camera": 1, "translation": [0, 10, 0], "rotation": [-math.sqrt(0.5), 0, 0, math.sqrt(0.5)]},
    ]
    document = {
        "asset": {"version": "2.0", "generator": "make_showcase.py"},
        "extensionsUsed": ["KHR_materials_unlit"],
        "scene": 0,
        "scenes": [{"nodes": list(range(len(nodes)))}],
        "nodes": nodes,
        "meshes": out.meshes,
        "materials": out.materials,
        "cameras": [
            {"name": "Showcase", "type": "perspective", "perspective": {"yfov": 0.68, "znear": 0.1, "zfar": 60}},
            {"name": "Plan", "type": "orthographic", "orthographic": {"xmag": 6, "ymag": 5, "znear": 1, "zfar": 12}},
        ],
        "accessors": out.accessors,
        "bufferViews": out.views,
        "buffers": [{"byteLength": len(out.data)}],
    }
    text = json.dumps(document, separators=(",", ":")).encode()
    text += b" " * (-len(text) % 4)
    binary = bytes(out.data) + b"\0" * (-len(out.data) % 4)
    chunks = struct.pack("<I4s", len(text), b"JSON") + text + struct.pack("<I4s", len(binary), b"BIN\0") + binary
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "showcase.glb")
    with open(path, "wb") as file:
        file.write(struct.pack("<4sII", b"glTF", 2, 12 + len(chunks)) + chunks)


if __name__ == "__main__":
    main()
