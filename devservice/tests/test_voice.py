"""The voice relay with real WebSocket clients (aiohttp) in one room of three.

Checks the framing the Windows player depends on: each binary message reaches every
other member as 16 header bytes (the sender's UUID) followed by the exact payload,
and never comes back to its sender; muted members and outsiders are not heard.
"""
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
        names = ("ann", "ben", "cat", "dan")
        self.users = {name: self.server.session(f"{name}-{uuid.uuid4().hex[:6]}") for name in names}
        ann = self.users["ann"]
        for friend in ("ben", "cat", "dan"):
            other = self.users[friend]
            self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": other["userId"]},
                           token=ann["accessToken"], status=201)
            self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": ann["userId"]},
                           token=other["accessToken"])
        group = self.server.ok("POST", "/api/v1/chat/conversations", {
            "participantIds": [self.users["ben"]["userId"], self.users["cat"]["userId"]], "name": "band"},
            token=ann["accessToken"], status=201)
        self.room = self.server.ok("POST", "/api/v1/voice/rooms", {"conversationId": group["id"]},
                                   token=ann["accessToken"], status=201)
        for name in ("ann", "ben", "cat"):
            joined = self.server.ok("POST", f"/api/v1/voice/rooms/{self.room['id']}/join",
                                    token=self.users[name]["accessToken"])
        self.assertEqual(len(joined["participants"]), 3)

    def ws_url(self) -> str:
        return f"{self.server.url}/ws/v1/voice?roomId={self.room['id']}"

    async def connect(self, http: aiohttp.ClientSession, name: str) -> aiohttp.ClientWebSocketResponse:
        headers = {"Authorization": "Bearer " + self.users[name]["accessToken"]}
        return await http.ws_connect(self.ws_url(), headers=headers, autoping=True, heartbeat=None)

    def test_frames_reach_the_others_with_the_sender_header(self) -> None:
        asyncio.run(self.relay_round_trip())

    async def relay_round_trip(self) -> None:
        async with aiohttp.ClientSession() as http:
            ann, ben, cat = [await self.connect(http, name) for name in ("ann", "ben", "cat")]
            pcm = bytes(range(256)) * 2 + b"\x00\x01" * 64
            await ann.send_bytes(pcm)
            header = uuid.UUID(self.users["ann"]["userId"]).bytes
            for listener in (ben, cat):
                self.assertEqual(await next_binary(listener), header + pcm)
            self.assertIsNone(await next_binary(ann, QUIET_SECONDS))

            self.server.ok("POST", f"/api/v1/voice/rooms/{self.room['id']}/mute", {"muted": True},
                           token=self.users["ben"]["accessToken"], status=204)
            await ben.send_bytes(b"muted words")
            await cat.send_bytes(b"still heard")
            self.assertIsNone(await next_binary(cat, QUIET_SECONDS))
            self.assertEqual((await next_binary(ben))[16:], b"still heard")

            self.server.ok("POST", f"/api/v1/voice/rooms/{self.room['id']}/leave",
                           token=self.users["cat"]["accessToken"], status=204)
            closing = await cat.receive(timeout=3)
            self.assertEqual(closing.type, aiohttp.WSMsgType.CLOSE)
            for ws in (ann, ben, cat):
                await ws.close()

    def test_only_signed_in_members_may_connect(self) -> None:
        async def status_of(token: str) -> int:
            headers = {"Authorization": "Bearer " + token} if token else {}
            async with aiohttp.ClientSession() as http:
                try:
                    ws = await http.ws_connect(self.ws_url(), headers=headers)
                except aiohttp.WSServerHandshakeError as error:
                    return error.status
                await ws.close()
                return 101

        self.assertEqual(asyncio.run(status_of("")), 401)
        self.assertEqual(asyncio.run(status_of(self.users["dan"]["accessToken"])), 404)
        self.assertEqual(asyncio.run(status_of(self.users["ann"]["accessToken"])), 101)


if __name__ == "__main__":
    unittest.main()
