"""Shared HTTP plumbing: the service context, JSON replies, body fields and errors.

Every reply body is compact JSON written for the client's substring scanners, which
decode only \\" \\\\ \\n and \\t and drop the backslash of any other escape (so "\\r" would
read as "r" and "\\u0001" as "u0001"). So text is raw UTF-8, and carriage returns and other
control characters are written raw as well, which the scanners copy unchanged; only the
quote, the backslash, line feed and tab are escaped. String fields are never null for
the same reason: a scanner that meets null reads the next string in the text instead.
Free text (nicknames, names, messages, metadata) goes after every field the client reads
from the same record. Request bodies are parsed leniently (control characters allowed
inside strings) since the client escapes only quote, backslash and line feed.
"""
from __future__ import annotations

import json
import logging
import re
import secrets
import uuid
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Awaitable, Callable

from aiohttp import web

from .db import Clock, Db
from .relay import VoiceHub

log = logging.getLogger("devservice")


@dataclass
class Service:
    """Everything a handler needs; the one mutable object, stored on the application."""

    db: Db
    clock: Clock
    data_dir: Path
    signing_key: bytes
    test_hooks: bool
    # Seed hosted browser games at a loopback address that answers nothing instead of their
    # pages site, so a test run's icon fetches never leave the machine.
    offline_pages: bool = False
    # Scheme and domain of the repository host shared games are cloned from: github.com, or a
    # loopback git server that serves the seeded games' repositories (scripts/run, tests).
    repository_host: str = "https://github.com"
    voice: VoiceHub = field(default_factory=VoiceHub)
    file_cache: dict[str, bytes] = field(default_factory=dict)
    last_request: dict[str, Any] | None = None
    # Every non-hook request as "METHOD raw path", oldest first, so a test can check the order of calls.
    request_log: list[str] = field(default_factory=list)
    scripted_replies: list[dict[str, Any]] = field(default_factory=list)
    # What the simulated GitHub answers as the login of a user who consents, by user id.
    github_accounts: dict[str, str] = field(default_factory=dict)

    @property
    def outbox_path(self) -> Path:
        return self.data_dir / "outbox.jsonl"


def ctx(request: web.Request) -> Service:
    return request.app["service"]


class ApiError(Exception):
    """A failure that becomes a JSON error reply: {"error": code, "message": text, ...}."""

    def __init__(self, status: int, code: str, message: str, **extra: Any) -> None:
        super().__init__(message)
        self.status = status
        self.code = code
        self.message = message
        self.extra = extra

    def response(self) -> web.Response:
        body = {"error": self.code, "message": self.message, **self.extra}
        headers = {"WWW-Authenticate": "Bearer"} if self.status == 401 else None
        return reply(body, self.status, headers)


def new_id() -> str:
    return str(uuid.uuid4())


def new_token(prefix: str) -> str:
    return prefix + secrets.token_hex(24)


# The escapes json.dumps writes that the client's scanners would not turn back into the
# character; an escaped backslash is matched too, so the "r" in "\\\\r" (JSON for a
# backslash, then the letter r) stays a letter.
CLIENT_UNREAD_ESCAPE = re.compile(r"\\(\\|r|b|f|u00[0-9a-fA-F]{2})")
RAW_CONTROL = {"r": "\r", "b": "\b", "f": "\f"}


def raw_control(match: re.Match[str]) -> str:
    escape = match.group(1)
    if escape == "\\":
        return match.group(0)
    return RAW_CONTROL.get(escape) or chr(int(escape[3:], 16))


def dump(data: Any) -> str:
    return CLIENT_UNREAD_ESCAPE.sub(raw_control, json.dumps(data, ensure_ascii=False, separators=(",", ":")))


def reply(data: Any, status: int = 200, headers: dict[str, str] | None = None) -> web.Response:
    return web.Response(
        status=status, text=dump(data), content_type="application/json", charset="utf-8", headers=headers
    )


def no_content() -> web.Response:
    return web.Response(status=204)


def listing(items: list[dict[str, Any]], **extra: Any) -> web.Response:
    return reply({"items": items, **extra})


async def body_of(request: web.Request) -> dict[str, Any]:
    """The JSON object of the request; an empty body is an empty object."""
    raw = await request.read()
    if not raw.strip():
        return {}
    try:
        data = json.loads(raw.decode("utf-8"), strict=False)
    except (UnicodeDecodeError, json.JSONDecodeError) as error:
        raise ApiError(400, "invalid_json", f"The request body is not valid JSON: {error}") from None
    if not isinstance(data, dict):
        raise ApiError(400, "invalid_json", "The request body must be a JSON object.")
    return data


def text_field(body: dict[str, Any], key: str, *, required: bool = True, max_len: int = 200) -> str:
    value = body.get(key, "")
    if not isinstance(value, str):
        raise ApiError(400, "invalid_field", f"'{key}' must be a string.", field=key)
    if required and not value.strip():
        raise ApiError(400, "missing_field", f"'{key}' is required.", field=key)
    if len(value) > max_len:
        raise ApiError(400, "invalid_field", f"'{key}' is longer than {max_len} characters.", field=key)
    return value


def bool_field(body: dict[str, Any], key: str) -> bool:
    value = body.get(key)
    if not isinstance(value, bool):
        raise ApiError(400, "invalid_field", f"'{key}' must be true or false.", field=key)
    return value


def int_field(body: dict[str, Any], key: str, low: int, high: int) -> int:
    value = body.get(key)
    if isinstance(value, bool) or not isinstance(value, int) or not low <= value <= high:
        raise ApiError(400, "invalid_field", f"'{key}' must be a whole number from {low} to {high}.", field=key)
    return value


def query_int(request: web.Request, key: str, default: int, low: int, high: int) -> int:
    text = request.query.get(key, "")
    if text == "":
        return default
    try:
        value = int(text)
    except ValueError:
        raise ApiError(400, "invalid_query", f"'{key}' must be a whole number.", field=key) from None
    if not low <= value <= high:
        raise ApiError(400, "invalid_query", f"'{key}' must be from {low} to {high}.", field=key)
    return value


def base_url(request: web.Request) -> str:
    """The address the caller used, so links point back at this stand-in whatever its port."""
    return f"{request.scheme}://{request.host}"


def html_page(title: str, body_html: str, status: int = 200) -> web.Response:
    page = (
        "<!DOCTYPE html><html><head><meta charset='utf-8'><title>" + title + "</title></head>"
        "<body style='font-family:sans-serif;padding:2em'>" + body_html + "</body></html>"
    )
    return web.Response(status=status, text=page, content_type="text/html", charset="utf-8")


Handler = Callable[[web.Request], Awaitable[web.StreamResponse]]


@web.middleware
async def errors_as_json(request: web.Request, handler: Handler) -> web.StreamResponse:
    """Turns every failure, including the router's own 404/405, into the JSON error form."""
    try:
        return await handler(request)
    except ApiError as error:
        return error.response()
    except web.HTTPException as error:
        if error.status < 400:
            raise
        code = {404: "not_found", 405: "method_not_allowed"}.get(error.status, "http_error")
        return ApiError(error.status, code, error.reason).response()
    except Exception:  # a bug in the stand-in must still answer, and be visible in the log
        log.exception("unhandled error on %s %s", request.method, request.path)
        return ApiError(500, "internal_error", "The service failed to handle the request.").response()
