"""Runs the real stand-in (the devservice.py entry point) on a free loopback port for a test.

Each server gets its own temporary data folder, so tests never share state with a
development run. Calls go through http.client, which never follows redirects, so the
302 replies can be checked as the client sees them.
"""
from __future__ import annotations

import http.client
import json
import signal
import subprocess
import sys
import tempfile
import unittest
import uuid
from pathlib import Path
from typing import Any
from urllib.parse import urlsplit

ENTRY_POINT = Path(__file__).resolve().parent.parent / "devservice.py"
NAMESPACE = uuid.UUID("5b0c7e52-3f7a-4d1c-9a55-0c0ffee0c0de")


def seeded_id(kind: str, name: str) -> str:
    return str(uuid.uuid5(NAMESPACE, f"{kind}:{name}"))


class Reply:
    def __init__(self, status: int, headers: http.client.HTTPMessage, body: bytes) -> None:
        self.status = status
        self.headers = headers
        self.body = body

    def json(self) -> Any:
        return json.loads(self.body.decode("utf-8"))


class Server:
    def __init__(self, *extra_args: str) -> None:
        self.folder = tempfile.TemporaryDirectory(prefix="devservice-test-")
        self.log_path = Path(self.folder.name) / "log"
        self.log = self.log_path.open("w")  # a file, not a pipe: a full pipe would stall the server
        self.process = subprocess.Popen(
            [sys.executable, str(ENTRY_POINT), "--port", "0", "--data", self.folder.name, *extra_args],
            stdout=subprocess.PIPE, stderr=self.log, text=True)
        assert self.process.stdout is not None
        self.url = self.process.stdout.readline().strip()
        if not self.url.startswith("http://127.0.0.1:"):
            self.process.kill()
            self.process.wait()
            raise RuntimeError("stand-in did not start: " + self.log_path.read_text())
        parts = urlsplit(self.url)
        self.host, self.port = parts.hostname or "", parts.port or 0

    def call(self, method: str, path: str, body: Any = None, token: str = "",
             headers: dict[str, str] | None = None) -> Reply:
        connection = http.client.HTTPConnection(self.host, self.port, timeout=10)
        sent = dict(headers or {})
        if token:
            sent["Authorization"] = "Bearer " + token
        data = body if isinstance(body, (bytes, type(None))) else json.dumps(body).encode()
        if data is not None:
            sent["Content-Type"] = "application/json"
        try:
            connection.request(method, path, body=data, headers=sent)
            response = connection.getresponse()
            return Reply(response.status, response.headers, response.read())
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
        self.process.send_signal(signal.SIGTERM)
        try:
            code = self.process.wait(timeout=10)
        finally:
            if self.process.poll() is None:
                self.process.kill()
            assert self.process.stdout is not None
            self.process.stdout.close()
            self.log.close()
            self.folder.cleanup()
        return code


class ServerTestCase(unittest.TestCase):
    """One stand-in with test hooks for the whole class."""

    server: Server

    @classmethod
    def setUpClass(cls) -> None:
        cls.server = Server("--test-hooks")

    @classmethod
    def tearDownClass(cls) -> None:
        cls.server.stop()
