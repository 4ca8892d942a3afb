"""Scripted replies that stand in for a download server: binary bodies, sent with their
length, chunked, or cut short of the length they declared."""
from __future__ import annotations

import base64
import http.client
import unittest
from urllib.parse import urlsplit

from support import ServerTestCase

# Every byte value, so nothing is lost to a text encoding on the way.
PAYLOAD = bytes(range(256)) * 300  # 76,800 bytes: several 16 KiB pieces


class ScriptedFilesTest(ServerTestCase):
    def script(self, path: str, **fields: object) -> dict:
        return self.server.ok("POST", "/__test/reply", {"path": path, "status": 200, **fields}, status=201)

    def raw_get(self, path: str) -> http.client.HTTPResponse:
        connection = http.client.HTTPConnection("127.0.0.1", urlsplit(self.server.url).port, timeout=10)
        self.addCleanup(connection.close)
        connection.request("GET", path)
        return connection.getresponse()

    def test_binary_bodies_arrive_whole_with_their_length_or_chunked(self) -> None:
        encoded = base64.b64encode(PAYLOAD).decode()
        for transfer, chunked in (("length", False), ("chunked", True)):
            with self.subTest(transfer):
                described = self.script(f"/files/{transfer}.bin", bodyBase64=encoded, transfer=transfer)
                self.assertEqual((described["bodyBytes"], described["transfer"]), (len(PAYLOAD), transfer))
                reply = self.raw_get(f"/files/{transfer}.bin?expires=1&signature=x")
                framing = (reply.getheader("Transfer-Encoding") == "chunked", reply.getheader("Content-Length"))
                self.assertEqual(framing, (chunked, None if chunked else str(len(PAYLOAD))))
                self.assertEqual(reply.read(), PAYLOAD)

    def test_a_cut_reply_declares_more_than_it_sends_and_drops_the_connection(self) -> None:
        self.script("/files/cut.bin", bodyBase64=base64.b64encode(PAYLOAD).decode(), transfer="cut",
                    declaredLength=len(PAYLOAD) * 2)
        reply = self.raw_get("/files/cut.bin")
        self.assertEqual(reply.getheader("Content-Length"), str(len(PAYLOAD) * 2))
        with self.assertRaises(http.client.IncompleteRead) as cut:
            reply.read()
        self.assertEqual(cut.exception.partial, PAYLOAD)
        # The stand-in is still there for the next request.
        self.assertEqual(self.server.call("GET", "/api/v1/software?pageSize=1").status, 200)

    def test_a_text_body_is_still_sent_as_utf8(self) -> None:
        self.script("/files/text", body="Über\n", transfer="chunked")
        self.assertEqual(self.raw_get("/files/text").read(), "Über\n".encode())

    def test_bad_fields_are_refused(self) -> None:
        cases = (
            {"transfer": "gzip"},
            {"bodyBase64": "not base64!"},
            {"transfer": "cut", "body": "abc", "declaredLength": 3},
            {"transfer": "cut", "body": "abc", "declaredLength": "9"},
        )
        for fields in cases:
            with self.subTest(fields):
                reply = self.server.call("POST", "/__test/reply", {"path": "/files/bad", "status": 200, **fields})
                self.assertEqual((reply.status, reply.json()["error"]), (400, "invalid_field"))


if __name__ == "__main__":
    unittest.main()
