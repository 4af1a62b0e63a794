#!/usr/bin/env python3
"""Writes a resource file of COUNT resources in 8 types, each named, with 8 to 71 bytes of
data, laid out as the manager writes it (data, then map; ids from 0 in each type).

Usage: make_rsrc.py PATH COUNT
"""
import struct
import sys

path, count = sys.argv[1], int(sys.argv[2])
types = [b"T%03d" % t for t in range(8)]
per = [count // 8 + (1 if t < count % 8 else 0) for t in range(8)]
data, refs, names = bytearray(), bytearray(), bytearray()
type_list = struct.pack(">i", len(types) - 1)
offset = 4 + 12 * len(types)
n = 0
for t, k in zip(types, per):
    type_list += t + struct.pack(">ii", k - 1, offset)
    offset += 20 * k
    for i in range(k):
        body = bytes((n + j) & 0xFF for j in range(8 + n % 64))
        name = b"res%d" % n
        refs += struct.pack(">iiiii", i, len(names), 0, len(data), 0)
        names += bytes([len(name)]) + name
        data += struct.pack(">i", len(body)) + body + bytes(-len(body) % 4)
        n += 1
map_size = 52 + len(type_list) + len(refs) + len(names)
header = b"RSRC\r\n" + struct.pack(">h", 3) + b"TESTCRTR" + struct.pack(
    ">iiii", 32 + len(data), map_size, 32, len(data))
mapbytes = header + struct.pack(">iiiii", 0, 0, 0, 52, 52 + len(type_list) + len(refs))
with open(path, "wb") as f:
    f.write(header + data + mapbytes + type_list + refs + names)
