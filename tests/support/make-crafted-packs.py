#!/usr/bin/python3
"""make-crafted-packs.py DIR: writes packs real git would never send, each as DIR/<name>/pack
with its branch tip in DIR/<name>/tip, for git-http-server.py to serve as the repository
crafted/<name>, and the files a clone of it must write in DIR/<name>/expected. Objects are
named and compressed by Python's hashlib and zlib, independently of the client's own code.

  delta-bomb    a 1 KB pack whose delta of one-byte copy opcodes announces 64 GiB
  lying-header  an entry whose header declares 1 TiB but holds 5 bytes
  zeros         a 2 GiB blob of zeros, compressed to about 2 MB
  missing-blob  a well-formed pack whose tree names a blob it does not hold
  well-formed   a commit, its trees and blobs, one of them an offset delta
"""
import hashlib
import os
import struct
import sys
import zlib

TYPES = {"commit": 1, "tree": 2, "blob": 3}
GiB = 1 << 30


def object_name(kind: str, content: bytes) -> bytes:
    return hashlib.sha1(b"%s %d\0" % (kind.encode(), len(content)) + content).digest()


def entry_header(type_number: int, size: int) -> bytes:
    out = bytearray([(type_number << 4) | (size & 0x0F)])
    size >>= 4
    while size:
        out[-1] |= 0x80
        out.append(size & 0x7F)
        size >>= 7
    return bytes(out)


def offset_distance(distance: int) -> bytes:
    out = [distance & 0x7F]
    distance >>= 7
    while distance:
        distance -= 1
        out.insert(0, 0x80 | (distance & 0x7F))
        distance >>= 7
    return bytes(out)


def varint(value: int) -> bytes:
    out = bytearray()
    while value >= 0x80:
        out.append(0x80 | (value & 0x7F))
        value >>= 7
    out.append(value)
    return bytes(out)


def pack_of(entries: list) -> bytes:
    """Each entry is (type number, declared size, bytes after the header), or a callable
    given the entry's own offset that returns one, for offset deltas."""
    body = bytearray(b"PACK" + struct.pack(">II", 2, len(entries)))
    for entry in entries:
        if callable(entry):
            entry = entry(len(body))
        type_number, size, rest = entry
        body += entry_header(type_number, size) + rest
    return bytes(body) + hashlib.sha1(body).digest()


def whole(kind: str, content: bytes):
    return (TYPES[kind], len(content), zlib.compress(content, 9))


def tree(*entries) -> bytes:
    return b"".join(b"%s %s\0" % (mode, name) + raw for mode, name, raw in entries)


def commit(root: bytes) -> bytes:
    return b"tree %s\nauthor T <t@example.invalid> 0 +0000\ncommitter T <t@example.invalid> 0 +0000\n\nx\n" % (
        root.hex().encode())


def zeros_stream(size: int) -> bytes:
    """zlib of `size` zeros without compressing them all: after a full flush the compressor
    starts afresh, so every 64 MiB chunk compresses to the same bytes; the Adler-32 of n
    zeros is (n mod 65521) << 16 | 1."""
    chunk_size = 64 << 20
    assert size % chunk_size == 0
    compressor = zlib.compressobj(9, zlib.DEFLATED, -15)
    chunk = bytes(chunk_size)
    first = compressor.compress(chunk) + compressor.flush(zlib.Z_FULL_FLUSH)
    second = compressor.compress(chunk) + compressor.flush(zlib.Z_FULL_FLUSH)
    assert first == second, "full flushes did not repeat"
    body = first * (size // chunk_size) + compressor.flush(zlib.Z_FINISH)
    return b"\x78\xda" + body + struct.pack(">I", ((size % 65521) << 16) | 1)


def with_commit(entries: list, root_tree: bytes, files: dict = None) -> tuple:
    tip_commit = commit(object_name("tree", root_tree))
    entries = [whole("commit", tip_commit), whole("tree", root_tree)] + entries
    return entries, object_name("commit", tip_commit), files or {}


def delta_bomb():
    base = b"b" * 0x10000
    delta = varint(len(base)) + varint(64 * GiB) + b"\x80" * (1 << 20)
    root = tree((b"100644", b"big.bin", object_name("blob", base)))
    return with_commit([whole("blob", base), (7, len(delta), object_name("blob", base) + zlib.compress(delta, 9))],
                       root)


def lying_header():
    root = tree((b"100644", b"index.html", object_name("blob", b"hello")))
    return with_commit([(3, 1 << 40, zlib.compress(b"hello", 9))], root)


def zeros():
    size = 2 * GiB
    blob_name = hashlib.sha1(b"blob %d\0" % size)
    chunk = bytes(64 << 20)
    for _ in range(size // len(chunk)):
        blob_name.update(chunk)
    root = tree((b"100644", b"zeros.bin", blob_name.digest()))
    return with_commit([(3, size, zeros_stream(size))], root)


def missing_blob():
    page = b"<p>play</p>\n"
    root = tree((b"100644", b"index.html", object_name("blob", page)),
                (b"100644", b"missing.js", object_name("blob", b"never sent")))
    return with_commit([whole("blob", page)], root)


def well_formed():
    page = b"<!doctype html>\n<script src=\"js/game.js\"></script>\n"
    script = b"".join(b"function step%d(s) { return s * %d + 1; }\n" % (i, i) for i in range(200))
    edited = script.replace(b"step7(", b"leap7(")
    js = tree((b"100644", b"game.js", object_name("blob", edited)))
    root = tree((b"100644", b"index.html", object_name("blob", page)), (b"40000", b"js", object_name("tree", js)))
    # The edited script as an offset delta on the original: copy, insert, copy.
    at = script.index(b"step7(")
    delta = varint(len(script)) + varint(len(edited))
    delta += bytes([0x80 | 0x10 | 0x20, at & 0xFF, at >> 8]) + b"\x06leap7("
    rest = at + 6
    delta += bytes([0x80 | 0x01 | 0x02 | 0x10 | 0x20, rest & 0xFF, rest >> 8, (len(script) - rest) & 0xFF,
                    (len(script) - rest) >> 8])
    entries = [whole("blob", page), whole("tree", js)]
    original_at = []

    def original(offset):
        original_at.append(offset)
        return whole("blob", script)

    def edited_entry(offset):
        return (6, len(delta), offset_distance(offset - original_at[0]) + zlib.compress(delta, 9))

    return with_commit(entries + [original, edited_entry], root, {"index.html": page, "js/game.js": edited})


def main(folder: str) -> None:
    for name, make in (("delta-bomb", delta_bomb), ("lying-header", lying_header), ("zeros", zeros),
                       ("missing-blob", missing_blob), ("well-formed", well_formed)):
        entries, tip, files = make()
        os.makedirs(os.path.join(folder, name, "expected"), exist_ok=True)
        with open(os.path.join(folder, name, "pack"), "wb") as out:
            out.write(pack_of(entries))
        with open(os.path.join(folder, name, "tip"), "w") as out:
            out.write(tip.hex())
        for path, content in files.items():
            os.makedirs(os.path.dirname(os.path.join(folder, name, "expected", path)), exist_ok=True)
            with open(os.path.join(folder, name, "expected", path), "wb") as out:
                out.write(content)


if __name__ == "__main__":
    main(sys.argv[1])
