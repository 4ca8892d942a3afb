"""The voice relay with real WebSocket clients (aiohttp): each binary message reaches the other members
behind 16 bytes of the sender's UUID and never comes back; muted members and outsiders are not heard."""
from __future__ import annotations

import asyncio
import unittest
import uuid

import aiohttp

from support import ServerTestCase

QUIET_SECONDS = 0.3


async def next_binary(ws: aiohttp.ClientWebSocketResponse, timeout: float = 3.0) -> bytes | None:
    try:
        message = await ws.receive(timeout=timeout)
    except asyncio.TimeoutError:
        return None
    return message.data if message.type == aiohttp.WSMsgType.BINARY else None


class VoiceRelayTest(ServerTestCase):
    def setUp(self) -> None:
        self.users = {name: self.server.session(f"{name}-{uuid.uuid4().hex[:6]}") for name in ("ann", "ben", "cat")}
        self.tokens = {name: user["accessToken"] for name, user in self.users.items()}
        self.tokens["dan"] = self.server.session(f"dan-{uuid.uuid4().hex[:6]}")["accessToken"]  # never a member
        ids = {name: user["userId"] for name, user in self.users.items()}
        requests = "/api/v1/me/friend-requests"
        for friend in ("ben", "cat"):
            self.server.ok("POST", requests, {"toUserId": ids[friend]}, self.tokens["ann"], status=201)
            self.server.ok("POST", requests, {"toUserId": ids["ann"]}, self.tokens[friend])
        group = {"participantIds": [ids["ben"], ids["cat"]], "name": "band"}
        group = self.server.ok("POST", "/api/v1/chat/conversations", group, self.tokens["ann"], status=201)
        self.room = self.server.ok("POST", "/api/v1/voice/rooms", {"conversationId": group["id"]},
                                   self.tokens["ann"], status=201)["id"]
        for name in ("ann", "ben", "cat"):
            self.server.ok("POST", f"/api/v1/voice/rooms/{self.room}/join", token=self.tokens[name])

    async def connect(self, http: aiohttp.ClientSession, name: str) -> aiohttp.ClientWebSocketResponse:
        headers = {"Authorization": "Bearer " + self.tokens[name]} if name else {}
        return await http.ws_connect(f"{self.server.url}/ws/v1/voice?roomId={self.room}", headers=headers)

    def post(self, name: str, action: str, body: object = None) -> None:
        self.server.ok("POST", f"/api/v1/voice/rooms/{self.room}/{action}", body, self.tokens[name], status=204)

    def test_frames_reach_the_others_with_the_sender_header(self) -> None:
        async def round_trip() -> None:
            async with aiohttp.ClientSession() as http:
                ann, ben, cat = [await self.connect(http, name) for name in ("ann", "ben", "cat")]
                pcm = bytes(range(256)) * 2 + b"\x00\x01" * 64
                await ann.send_bytes(pcm)
                for listener in (ben, cat):
                    self.assertEqual(await next_binary(listener), uuid.UUID(self.users["ann"]["userId"]).bytes + pcm)
                self.assertIsNone(await next_binary(ann, QUIET_SECONDS))

                self.post("ben", "mute", {"muted": True})
                await ben.send_bytes(b"muted words")
                await cat.send_bytes(b"still heard")
                self.assertIsNone(await next_binary(cat, QUIET_SECONDS))
                self.assertEqual((await next_binary(ben))[16:], b"still heard")

                self.post("cat", "leave")
                self.assertEqual((await cat.receive(timeout=3)).type, aiohttp.WSMsgType.CLOSE)
                for ws in (ann, ben, cat):
                    await ws.close()
        asyncio.run(round_trip())

    def test_one_speakers_frames_arrive_in_order_and_an_oversized_one_closes_its_socket(self) -> None:
        async def burst() -> None:
            async with aiohttp.ClientSession() as http:
                ann, ben = [await self.connect(http, name) for name in ("ann", "ben")]
                frames = [bytes([i]) * 640 for i in range(40)]
                for frame in frames:
                    await ann.send_bytes(frame)
                self.assertEqual([(await next_binary(ben))[16:] for _ in frames], frames)

                await ben.send_bytes(b"\x00" * (8192 - 16))  # the largest a listener can be sent
                self.assertEqual(len(await next_binary(ann)), 8192)
                await ben.send_bytes(b"\x00" * (8192 - 15))
                closing = await ben.receive(timeout=3)
                self.assertEqual((closing.type, closing.data), (aiohttp.WSMsgType.CLOSE, 1009))
                self.assertIsNone(await next_binary(ann, QUIET_SECONDS))
                await ann.close()
        asyncio.run(burst())

    def test_the_frames_hook_sends_one_message_in_fragments(self) -> None:
        async def fragments() -> None:
            async with aiohttp.ClientSession() as http:
                ben = await self.connect(http, "ben")
                frames = [{"opcode": 2, "fin": False, "hex": "0011"}, {"opcode": 0, "fin": False, "hex": "22"},
                          {"opcode": 0, "fin": True, "hex": "3344"}]
                pushed = self.server.ok("POST", "/__test/voice-frames",
                                 {"roomId": self.room, "userId": self.users["ben"]["userId"], "frames": frames})
                self.assertEqual(pushed["sockets"], 1)
                self.assertEqual(await next_binary(ben), bytes.fromhex("0011223344"))
                await ben.close()
        asyncio.run(fragments())

    def test_only_signed_in_members_may_connect(self) -> None:
        async def status_of(name: str) -> int:
            async with aiohttp.ClientSession() as http:
                try:
                    await (await self.connect(http, name)).close()
                except aiohttp.WSServerHandshakeError as error:
                    return error.status
                return 101

        self.assertEqual([asyncio.run(status_of(name)) for name in ("", "dan", "ann")], [401, 404, 101])


if __name__ == "__main__":
    unittest.main()
