"""The test hooks the Windows suites rely on, and the process's start and stop contract."""
from __future__ import annotations

import tempfile
import unittest
from pathlib import Path

from support import Server, ServerTestCase


class HooksTest(ServerTestCase):
    def test_last_request_is_recorded_as_received(self) -> None:
        raw_body = b'{"content":"a\tb \\"q\\""}'
        self.server.call("POST", "/api/v1/chat/conversations/c%20x/messages?pageSize=100&x=%2F", raw_body,
                         token="tok", headers={"X-Probe": "1"})
        seen = self.server.ok("GET", "/__test/last-request")
        self.assertEqual(seen["method"], "POST")
        self.assertEqual(seen["path"], "/api/v1/chat/conversations/c%20x/messages?pageSize=100&x=%2F")
        self.assertEqual((seen["headers"]["Authorization"], seen["headers"]["X-Probe"]), ("Bearer tok", "1"))
        self.assertEqual(seen["body"], raw_body.decode())

    def test_scripted_replies_answer_once_then_the_real_route_returns(self) -> None:
        cases = (
            ({"path": "/api/v1/me", "status": 204}, 204, b"", None),
            ({"path": "/api/v1/me", "method": "GET", "status": 302, "body": "moved",
              "headers": {"Location": "https://example.invalid/x"}}, 302, b"moved", "https://example.invalid/x"),
            ({"path": "/api/v1/software?pageSize=1", "status": 500, "body": "{}"}, 500, b"{}", None),
        )
        for scripted, status, body, location in cases:
            with self.subTest(scripted["path"], status=status):
                self.server.ok("POST", "/__test/reply", scripted, status=201)
                path = scripted["path"]
                reply = self.server.call("GET", path)
                self.assertEqual((reply.status, reply.body, reply.headers.get("Location")), (status, body, location))
                self.assertIn(self.server.call("GET", path).status, (200, 401))


class ProcessTest(unittest.TestCase):
    def test_url_file_no_hooks_and_clean_stop(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            url_file = Path(folder) / "url"
            server = Server("--url-file", str(url_file))
            try:
                self.assertEqual(url_file.read_text().strip(), server.url)
                self.assertEqual(server.call("POST", "/__test/session", {"username": "x"}).status, 404)
                self.assertEqual(server.call("GET", "/api/v1/github-games").status, 200)
            finally:
                self.assertEqual(server.stop(), 0)


if __name__ == "__main__":
    unittest.main()
