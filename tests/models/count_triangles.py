#!/usr/bin/env python3
"""Counts the triangles of mesh files from their bytes, without any library of the project.

  count_triangles.py FILE...    prints {"FILE": {"triangles": n, "unique": m}, ...}

glTF and GLB: corners of the accessors, strips and fans included, meshes once a node of the default
scene ("triangles") and once each ("unique"). OBJ, PLY: a polygon of n corners has n - 2 triangles.
STL: facets, of all solids. A file that cannot be counted gives {"error": reason}.
"""
import json
import re
import struct
import sys


def gltf_json(path, data):
    if data[:4] != b"glTF":
        return json.loads(data.decode("utf-8-sig"))
    length = struct.unpack_from("<I", data, 12)[0]
    return json.loads(data[20:20 + length].decode())


def primitive_triangles(root, primitive):
    index = primitive.get("indices", primitive["attributes"].get("POSITION"))
    corners = root["accessors"][index]["count"] if index is not None else 0
    mode = primitive.get("mode", 4)
    if mode == 4:
        return corners // 3
    return max(0, corners - 2) if mode in (5, 6) else 0


def count_gltf(path, data):
    root = gltf_json(path, data)
    meshes = [sum(primitive_triangles(root, p) for p in mesh["primitives"])
              for mesh in root.get("meshes", [])]
    nodes = root.get("nodes", [])
    pending = list(root["scenes"][root.get("scene", 0)].get("nodes", []))
    total, used = 0, set()
    while pending:
        node = nodes[pending.pop()]
        pending += node.get("children", [])
        if "mesh" in node:
            total += meshes[node["mesh"]]
            used.add(node["mesh"])
    return total, sum(meshes[i] for i in used)


def count_obj(path, data):
    if data[:2] in (b"\xfe\xff", b"\xff\xfe"):
        text = data.decode("utf-16")
    else:
        text = data.decode("latin-1")
    total = 0
    for line in text.replace("\\\n", " ").splitlines():
        words = line.split()
        if words and words[0] == "f":
            total += max(0, len(words) - 3)
    return total, total


def count_stl(path, data):
    if len(data) >= 84:
        facets = struct.unpack_from("<I", data, 80)[0]
        if len(data) == 84 + 50 * facets:
            return facets, facets
    facets = len(re.findall(rb"^\s*facet\s+normal", data, re.M | re.I))
    return facets, facets


PLY_TYPES = {"char": "b", "int8": "b", "uchar": "B", "uint8": "B", "short": "h", "int16": "h",
             "ushort": "H", "uint16": "H", "int": "i", "int32": "i", "uint": "I", "uint32": "I",
             "float": "f", "float32": "f", "double": "d", "float64": "d"}


def ply_header(data):
    end = data.index(b"end_header")
    body = data.index(b"\n", end) + 1
    form, elements = None, []
    for line in data[:end].decode("latin-1").splitlines():
        words = line.split()
        if words[:1] == ["format"]:
            form = words[1]
        elif words[:1] == ["element"]:
            elements.append((words[1], int(words[2]), []))
        elif words[:1] == ["property"]:
            elements[-1][2].append(words[1:])
    return form, elements, body


def count_ply(path, data):
    form, elements, body = ply_header(data)
    total = 0
    lines = iter(data[body:].decode("latin-1").splitlines()) if form == "ascii" else None
    order = ">" if form == "binary_big_endian" else "<"
    for name, count, properties in elements:
        for _ in range(count):
            numbers = next(lines).split() if lines else None
            at = 0
            for kind in properties:
                if kind[0] != "list":
                    at += 1
                    body += 0 if lines else struct.calcsize(PLY_TYPES[kind[0]])
                    continue
                if lines:
                    corners = int(numbers[at])
                    at += 1 + corners
                else:
                    corners = struct.unpack_from(order + PLY_TYPES[kind[1]], data, body)[0]
                    body += struct.calcsize(PLY_TYPES[kind[1]])
                    body += corners * struct.calcsize(PLY_TYPES[kind[2]])
                if name == "face" and kind[3] in ("vertex_indices", "vertex_index"):
                    total += max(0, corners - 2)
    return total, total


COUNTERS = {"gltf": count_gltf, "glb": count_gltf, "obj": count_obj, "stl": count_stl, "ply": count_ply}


def main():
    result = {}
    for path in sys.argv[1:]:
        try:
            with open(path, "rb") as file:
                data = file.read()
            triangles, unique = COUNTERS[path.rsplit(".", 1)[-1].lower()](path, data)
            result[path] = {"triangles": triangles, "unique": unique}
        except Exception as problem:  # one odd file must not hide the counts of the others
            result[path] = {"error": f"{type(problem).__name__}: {problem}"}
    json.dump(result, sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    main()
