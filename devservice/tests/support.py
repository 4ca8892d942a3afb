"""The real stand-in on a free loopback port with a data folder of its own, reached through
http.client, which never follows redirects, so 302 replies are seen as the client sees them."""
from __future__ import annotations

import http.client
import json
import subprocess
import sys
import tempfile
import unittest
import uuid
from pathlib import Path
from typing import Any
from urllib.parse import urlsplit

ENTRY_POINT = Path(__file__).resolve().parent.parent / "devservice.py"


def seeded_id(kind: str, name: str) -> str:
    return str(uuid.uuid5(uuid.UUID("5b0c7e52-3f7a-4d1c-9a55-0c0ffee0c0de"), f"{kind}:{name}"))


class Reply:
    def __init__(self, response: http.client.HTTPResponse) -> None:
        self.status, self.headers, self.body = response.status, response.headers, response.read()

    def json(self) -> Any:
        return json.loads(self.body, strict=False)  # control characters come raw, as the client reads them


class Server:
    def __init__(self, *extra_args: str) -> None:
        self.folder = tempfile.TemporaryDirectory(prefix="devservice-test-")
        self.log = open(Path(self.folder.name) / "log", "w")  # a full pipe would stall the server
        self.process = subprocess.Popen(
            [sys.executable, str(ENTRY_POINT), "--port", "0", "--data", self.folder.name, *extra_args],
            stdout=subprocess.PIPE, stderr=self.log, text=True)
        self.url = self.process.stdout.readline().strip()
        if not self.url.startswith("http://127.0.0.1:"):
            log = (Path(self.folder.name) / "log").read_text()
            self.stop()
            raise RuntimeError("stand-in did not start: " + log)

    def call(self, method: str, path: str, body: Any = None, token: str = "") -> Reply:
        connection = http.client.HTTPConnection("127.0.0.1", urlsplit(self.url).port, timeout=10)
        headers = {"Authorization": "Bearer " + token} if token else {}
        if body is not None:
            headers["Content-Type"] = "application/json"
        try:
            connection.request(method, path, body=None if body is None else json.dumps(body), headers=headers)
            return Reply(connection.getresponse())
        finally:
            connection.close()

    def ok(self, method: str, path: str, body: Any = None, token: str = "", status: int = 200) -> Any:
        reply = self.call(method, path, body, token)
        if reply.status != status:
            raise AssertionError(f"{method} {path}: {reply.status} {reply.body!r}")
        return reply.json() if reply.body else None

    def session(self, username: str) -> dict[str, Any]:
        return self.ok("POST", "/__test/session", {"username": username})

    def stop(self) -> int:
        self.process.terminate()
        try:
            return self.process.wait(timeout=10)
        finally:
            if self.process.poll() is None:
                self.process.kill()
            self.process.stdout.close()
            self.log.close()
            self.folder.cleanup()


class ServerTestCase(unittest.TestCase):
    """One stand-in with test hooks for the whole class."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.server = Server("--test-hooks")

    @classmethod
    def tearDownClass(cls) -> None:
        cls.server.stop()
