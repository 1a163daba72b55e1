#!/usr/bin/env python3
"""Makes the seeds of archive-graphs with another writer of property lists than the engine's own.

The seeds are checked in."""

import pathlib
import plistlib
from plistlib import UID

FOLDER = pathlib.Path(__file__).parent / "Seeds" / "archive-graphs"


def described(name, *superclasses):
    return {"$classname": name, "$classes": [name, *superclasses, "NSObject"]}


def archive(objects, root=1, version=100000, archiver="NSKeyedArchiver"):
    return {"$version": version, "$archiver": archiver, "$top": {"root": UID(root)},
            "$objects": ["$null", *objects]}


def write(name, content):
    data = content if isinstance(content, bytes) else plistlib.dumps(content, fmt=plistlib.FMT_BINARY,
                                                                    sort_keys=False)
    (FOLDER / name).write_bytes(data)


FOLDER.mkdir(parents=True, exist_ok=True)

write("null-root", archive([], root=0))
write("one-node", archive([{"$class": UID(2), "name": UID(3)}, described("Node"), "n"]))
write("wide-name", archive([{"$class": UID(2), "name": UID(3)}, described("Node"), "\u4e2d\U0001F600"]))
write("unknown-class", archive([{"$class": UID(2)}, described("Unknown")]))
write("class-is-a-string", archive([{"$class": UID(2)}, "Node"]))
write("text-root", archive(["text"]))
write("array-object", archive([[UID(1)]]))
write("reference-beyond-the-end", archive([{"$class": UID(2), "name": UID(77)}, described("Node")]))
write("other-version", archive([], version=7))
write("other-archiver", archive([], archiver="other"))
write("subclass", archive([{"$class": UID(2), "extra": 5, "name": UID(3)},
                           described("SpecialNode", "Node"), "special"]))
# A parent and a child that points back, a shared leaf and interned attachments.
write("graph", archive([
    {"$class": UID(2), "name": UID(3), "children": UID(4), "attachments": UID(8), "single": UID(9)},
    described("Node"),
    "root",
    {"$class": UID(5), "NS.objects": [UID(6), UID(7), UID(7)]},
    described("NSArray"),
    {"$class": UID(2), "back": UID(1), "children": UID(11)},
    {"$class": UID(2), "name": UID(3)},
    {"$class": UID(5), "NS.objects": [UID(9), UID(9)]},
    {"$class": UID(10), "name": UID(3)},
    described("Interned"),
    {"$class": UID(5), "NS.objects": [UID(7)]},
]))
write("nodes-that-own-each-other", archive([
    {"$class": UID(2), "children": UID(3)}, described("Node"),
    {"$class": UID(4), "NS.objects": [UID(1), UID(5)]}, described("NSMutableArray"),
    {"$class": UID(2), "children": UID(3)},
]))
write("list-that-holds-itself", archive([
    {"$class": UID(2), "children": UID(3)}, described("Node"),
    {"$class": UID(4), "NS.objects": [UID(3)]}, described("NSArray"),
]))
write("failing-object", archive([
    {"$class": UID(2), "single": UID(3)}, described("Node"),
    {"$class": UID(4), "name": UID(5)}, described("Interned"), "!fail",
]))
write("deep-chain", archive([
    described("Node") if index == 0 else {"$class": UID(1), "back": UID(min(index + 2, 1500))}
    for index in range(1500)
], root=2))
write("numbers", archive([
    {"$class": UID(2), "extra": -1.5, "name": UID(3), "a": True, "b": -1, "c": 2**63, "d": b"data",
     "e": UID(4)},
    described("SpecialNode", "Node"), 300, 0.5,
]))
write("boxed-text", archive([
    {"$class": UID(2), "name": UID(3)}, described("Node"),
    {"$class": UID(4), "NS.utf16": b"\xd8\x3d\x00\x00\x61"}, described("NSString"),
]))
write("not-a-property-list", b"<plist/>")
write("empty", b"")
# An array that holds itself, arrays inside one another, and a doubling chain: raw, since no writer makes them.
trailer = lambda count, table: bytes(6) + b"\x01\x01" + count.to_bytes(8, "big") + bytes(8) + table.to_bytes(8, "big")


def raw(objects):
    data, offsets = b"bplist00", b""
    for item in objects:
        offsets += bytes([len(data)])
        data += item
    return data + offsets + trailer(len(objects), len(data))


write("array-in-itself", raw([b"\xa1\x00"]))
write("arrays-in-arrays", raw([bytes([0xA1, index + 1]) for index in range(60)] + [b"\xa0"]))
write("doubling-arrays", raw([bytes([0xA2, index + 1, index + 1]) for index in range(50)] + [b"\xa0"]))
