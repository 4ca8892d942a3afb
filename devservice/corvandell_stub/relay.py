"""In-memory membership of the voice WebSocket connections, room by room.

Kept apart from the routes so it holds no HTTP or database knowledge: it only knows
which sockets belong to which user in which room and fans one frame out to the
others. The 16-byte header in front of each relayed frame is the sender's user id as
the 16 raw bytes of its UUID, so a listener can tell speakers apart without a lookup.
"""
from __future__ import annotations

import asyncio
import uuid

from aiohttp import web

HEADER_BYTES = 16
MAX_FRAME_BYTES = 8192  # the client's receive buffer; header included
MAX_PAYLOAD_BYTES = MAX_FRAME_BYTES - HEADER_BYTES


def sender_header(user_id: str) -> bytes:
    return uuid.UUID(user_id).bytes


def frame_bytes(opcode: int, fin: bool, payload: bytes) -> bytes:
    first = (0x80 if fin else 0) | opcode
    if len(payload) < 126:
        return bytes([first, len(payload)]) + payload
    if len(payload) < 1 << 16:
        return bytes([first, 126]) + len(payload).to_bytes(2, "big") + payload
    return bytes([first, 127]) + len(payload).to_bytes(8, "big") + payload


class VoiceHub:
    """room id -> user id -> open sockets (a user may connect twice, e.g. two clients)."""

    def __init__(self) -> None:
        self.rooms: dict[str, dict[str, set[web.WebSocketResponse]]] = {}

    def add(self, room_id: str, user_id: str, ws: web.WebSocketResponse) -> None:
        self.rooms.setdefault(room_id, {}).setdefault(user_id, set()).add(ws)

    def remove(self, room_id: str, user_id: str, ws: web.WebSocketResponse) -> None:
        members = self.rooms.get(room_id, {})
        sockets = members.get(user_id, set())
        sockets.discard(ws)
        if not sockets:
            members.pop(user_id, None)
        if not members:
            self.rooms.pop(room_id, None)

    async def relay(self, room_id: str, sender_id: str, payload: bytes) -> int:
        """Sends header + payload to every other member's sockets; returns how many got it."""
        frame = sender_header(sender_id) + payload
        targets = [
            ws
            for user_id, sockets in self.rooms.get(room_id, {}).items()
            if user_id != sender_id
            for ws in sockets
            if not ws.closed
        ]
        results = await asyncio.gather(*(ws.send_bytes(frame) for ws in targets), return_exceptions=True)
        return sum(1 for result in results if not isinstance(result, BaseException))

    def push_raw_frames(self, room_id: str, user_id: str, frames: list[tuple[int, bool, bytes]]) -> int:
        """Writes hand-made frames (opcode, FIN flag, payload) to a member's sockets, for tests
        of what the real relay never sends itself: a message fragmented over several frames.
        Server frames are unmasked; returns how many sockets got them."""
        sockets = [ws for ws in self.rooms.get(room_id, {}).get(user_id, set()) if not ws.closed]
        wire = b"".join(frame_bytes(opcode, fin, payload) for opcode, fin, payload in frames)
        for ws in sockets:
            ws._writer.transport.write(wire)  # below aiohttp, which only writes whole messages
        return len(sockets)

    async def disconnect(self, room_id: str, user_id: str, code: int = 1000) -> None:
        """Closes a user's sockets in a room, used when they leave it through the API."""
        for ws in list(self.rooms.get(room_id, {}).get(user_id, set())):
            await ws.close(code=code, message=b"left room")

    async def close_all(self) -> None:
        for members in list(self.rooms.values()):
            for sockets in list(members.values()):
                for ws in list(sockets):
                    await ws.close(code=1001, message=b"server shutdown")
