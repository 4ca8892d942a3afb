"""Deterministic build files: the same title, version and asset always give the same bytes.

Nothing is stored on disk; files are generated on demand and cached on the service
object. Archives are real zip files (stored, fixed timestamps) so an installer that
opens them sees a sensible tree; data assets are pseudo-random blobs from a SHA-256
counter stream, so a truncated or reordered download shows up in a checksum.
"""
from __future__ import annotations

import hashlib
import io
import zipfile

FIXED_ZIP_TIME = (2024, 1, 1, 0, 0, 0)


def blob(seed: str, size: int) -> bytes:
    out = bytearray()
    counter = 0
    while len(out) < size:
        out += hashlib.sha256(f"{seed}:{counter}".encode()).digest()
        counter += 1
    return bytes(out[:size])


def archive(title: str, slug: str, version: str, filler_bytes: int) -> bytes:
    entries = {
        "README.txt": f"{title} {version}\r\nDevelopment build served by the Corvandell stand-in.\r\n".encode(),
        "game.cfg": f"title={title}\nversion={version}\n".encode(),
        f"bin/{slug}.exe": b"MZ" + blob(f"{slug}:{version}:exe", filler_bytes),
    }
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w", compression=zipfile.ZIP_STORED) as zf:
        for name, data in entries.items():
            info = zipfile.ZipInfo(name, date_time=FIXED_ZIP_TIME)
            info.external_attr = 0o644 << 16
            zf.writestr(info, data)
    return buffer.getvalue()


def asset_bytes(title: str, slug: str, version: str, asset_name: str, asset_type: str, size: int) -> bytes:
    if asset_type == "archive":
        return archive(title, slug, version, size)
    return blob(f"{slug}:{version}:{asset_name}", size)
