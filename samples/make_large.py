#!/usr/bin/env python3
"""Writes two large models in binary glTF, to see how a viewer bears size.

large_model.glb: one mesh of 1,000,000 triangles, a fluted knot with normals and vertex colours.
large_scene.glb: 10,000 meshes of several materials, a field of twisted towers; none is a copy of another.
"""

import argparse
import array
import json
import math
import pathlib
import struct

TAU = 2 * math.pi
GOLDEN_ANGLE = math.pi * (3 - math.sqrt(5))
FLOAT, UBYTE, USHORT, UINT = 5126, 5121, 5123, 5125
COMPONENT = {"f": FLOAT, "B": UBYTE, "H": USHORT, "I": UINT}


class Writer:
    """A glTF document and its binary chunk. Values of one kind share a buffer view, each mesh has its accessors."""

    def __init__(self):
        self.streams = {}  # by name: its values; a view each
        self.document = {"asset": {"version": "2.0"}, "scene": 0, "accessors": [], "meshes": [], "nodes": []}

    def accessor(self, stream, kind, code, values):
        columns = {"SCALAR": 1, "VEC3": 3, "VEC4": 4}[kind]
        index = list(self.streams).index(stream) if stream in self.streams else len(self.streams)
        data = self.streams.setdefault(stream, array.array(code))
        accessor = {"bufferView": index, "byteOffset": len(data) * data.itemsize, "componentType": COMPONENT[code],
                    "count": len(values) // columns, "type": kind}
        data.extend(values)
        if code == "B":
            accessor["normalized"] = True
        if stream == "positions":
            accessor["min"] = [min(values[i::3]) for i in range(3)]
            accessor["max"] = [max(values[i::3]) for i in range(3)]
        self.document["accessors"].append(accessor)
        return len(self.document["accessors"]) - 1

    def mesh(self, name, material, positions, normals, indices, colours=None):
        attributes = {"POSITION": self.accessor("positions", "VEC3", "f", positions),
                      "NORMAL": self.accessor("normals", "VEC3", "f", normals)}
        if colours:
            attributes["COLOR_0"] = self.accessor("colours", "VEC4", "B", colours)
        index_code = "H" if len(positions) // 3 < 65536 else "I"
        primitive = {"attributes": attributes, "material": material,
                     "indices": self.accessor(f"indices {index_code}", "SCALAR", index_code, array.array(index_code, indices))}
        self.document["meshes"].append({"name": name, "primitives": [primitive]})
        self.document["nodes"].append({"name": name, "mesh": len(self.document["meshes"]) - 1})

    def write(self, path, materials):
        document, binary = self.document, bytearray()
        document["materials"] = materials
        document["scenes"] = [{"nodes": list(range(len(document["nodes"])))}]
        document["bufferViews"] = []
        for data in self.streams.values():
            document["bufferViews"].append(
                {"buffer": 0, "byteOffset": len(binary), "byteLength": len(data) * data.itemsize})
            binary += data.tobytes() + bytes(-len(data) * data.itemsize % 4)
        document["buffers"] = [{"byteLength": len(binary)}]
        text = json.dumps(document, separators=(",", ":")).encode()
        text += b" " * (-len(text) % 4)
        with open(path, "wb") as file:
            file.write(struct.pack("<4sII", b"glTF", 2, 28 + len(text) + len(binary)))
            file.write(struct.pack("<I4s", len(text), b"JSON") + text)
            file.write(struct.pack("<I4s", len(binary), b"BIN\0") + binary)


def material(name, red, green, blue, roughness, metallic=0.0):
    return {"name": name, "pbrMetallicRoughness": {"baseColorFactor": [red, green, blue, 1.0],
                                                   "roughnessFactor": roughness, "metallicFactor": metallic}}


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def normalize(v):
    length = math.sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]) or 1.0
    return (v[0] / length, v[1] / length, v[2] / length)


def difference(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def knot_rings(rings, sides):
    """Points of a closed tube along a trefoil knot, thickened by flutes that wind along it."""
    def centre(t):
        radius = 2.0 + 0.6 * math.cos(3 * t)
        return (radius * math.cos(2 * t), 0.8 * math.sin(3 * t), radius * math.sin(2 * t))

    circle = [(math.cos(TAU * j / sides), math.sin(TAU * j / sides), TAU * j / sides) for j in range(sides)]
    for i in range(rings):
        t = TAU * i / rings
        here = centre(t)
        along = normalize(difference(centre(t + 1e-4), here))
        side = normalize(cross(along, (0.0, 1.0, 0.0)))
        up = cross(side, along)
        bulge = 0.27 + 0.03 * math.sin(24 * t)
        ring = []
        for cosine, sine, angle in circle:
            flute = math.cos(7 * angle + 24 * t)
            r = bulge + 0.025 * flute + 0.003 * math.cos(42 * angle - 120 * t)
            ring.append((here[0] + r * (cosine * side[0] + sine * up[0]),
                         here[1] + r * (cosine * side[1] + sine * up[1]),
                         here[2] + r * (cosine * side[2] + sine * up[2]), flute))
        yield ring


def write_model(path, triangles):
    sides = max(3, round(math.sqrt(triangles / 25)))
    rings = max(3, round(triangles / (2 * sides)))
    tube = list(knot_rings(rings, sides))
    positions, normals = array.array("f"), array.array("f")
    colours, indices = array.array("B"), array.array("I")
    for i, ring in enumerate(tube):
        behind, ahead = tube[i - 1], tube[(i + 1) % rings]
        for j, point in enumerate(ring):
            positions.extend(point[:3])
            along = difference(ahead[j], behind[j])
            around = difference(ring[(j + 1) % sides], ring[j - 1])
            normals.extend(normalize(cross(around, along)))
            shade = 0.5 + 0.5 * point[3]
            hue = 0.5 + 0.5 * math.sin(TAU * 3 * i / rings)
            colours.extend((int(60 + 180 * shade * hue), int(50 + 110 * shade),
                            int(90 + 150 * shade * (1 - hue)), 255))
            a, b = i * sides + j, (i + 1) % rings * sides + j
            c, d = i * sides + (j + 1) % sides, (i + 1) % rings * sides + (j + 1) % sides
            indices.extend((a, c, b, c, d, b))
    writer = Writer()
    writer.mesh("fluted knot", 0, positions, normals, indices, colours)
    writer.write(path, [material("glazed", 1.0, 1.0, 1.0, 0.35)])
    print(f"{path}: {2 * rings * sides:,} triangles")


def tower(number, place, height):
    """Positions, normals and indices of a twisted tapering prism with a lid; flat faces."""
    x, z = place
    sides, storeys = 3 + number * 7 % 6, 2
    width, twist = 0.36 + 0.08 * math.sin(number), 0.5 * math.sin(0.37 * number)

    def corner(side, storey):
        share = storey / storeys
        angle = TAU * side / sides + twist * share + number
        radius = width * (1 - 0.45 * share * share)
        return (x + radius * math.sin(angle), height * share, z + radius * math.cos(angle))

    faces = [[corner(s, k), corner(s + 1, k), corner(s + 1, k + 1), corner(s, k + 1)]
             for s in range(sides) for k in range(storeys)]
    faces.append([corner(s, storeys) for s in range(sides)])
    positions, normals, indices = [], [], []
    for face in faces:
        first = len(positions) // 3
        normal = normalize(cross(difference(face[1], face[0]), difference(face[2], face[0])))
        for point in face:
            positions.extend(point)
            normals.extend(normal)
        for k in range(1, len(face) - 1):
            indices.extend((first, first + k, first + k + 1))
    return array.array("f", positions), array.array("f", normals), indices


def write_scene(path, meshes):
    materials = [material("slate", 0.16, 0.20, 0.26, 0.9), material("sea", 0.05, 0.30, 0.42, 0.5),
                 material("leaf", 0.15, 0.42, 0.20, 0.7), material("sand", 0.75, 0.60, 0.38, 0.9),
                 material("brick", 0.60, 0.17, 0.10, 0.8), material("copper", 0.85, 0.42, 0.25, 0.3, 1.0),
                 material("gold", 0.95, 0.70, 0.25, 0.25, 1.0), material("snow", 0.90, 0.90, 0.92, 0.6)]
    writer, triangles = Writer(), 0
    edge = math.sqrt(meshes)
    for number in range(meshes):
        # The seeds of a sunflower: evenly spread, in spirals.
        distance, angle = math.sqrt(number + 0.5), number * GOLDEN_ANGLE
        wave = math.sin(9 * distance / edge) + 0.6 * math.cos(3 * angle * 0.381966 + 5 * distance / edge)
        height = 0.6 + 0.045 * edge * (1.6 + wave) * (1.1 - distance / edge)
        place = (0.9 * distance * math.sin(angle), 0.9 * distance * math.cos(angle))
        positions, normals, indices = tower(number, place, height)
        chosen = int((1.6 + wave) / 3.2 * len(materials) + 0.5 * math.sin(number)) % len(materials)
        writer.mesh(f"tower {number}", chosen, positions, normals, indices)
        triangles += len(indices) // 3
    writer.write(path, materials)
    print(f"{path}: {meshes:,} meshes, {triangles:,} triangles")


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("folder", type=pathlib.Path, help="where to write")
    arguments.add_argument("--triangles", type=int, default=1_000_000, help="of the model (%(default)s)")
    arguments.add_argument("--meshes", type=int, default=10_000, help="of the scene (%(default)s)")
    chosen = arguments.parse_args()
    chosen.folder.mkdir(parents=True, exist_ok=True)
    write_model(chosen.folder / "large_model.glb", chosen.triangles)
    write_scene(chosen.folder / "large_scene.glb", chosen.meshes)


if __name__ == "__main__":
    main()
