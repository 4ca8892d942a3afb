"""Routes under /__test/ that let the Windows tests steer and observe the stand-in.

They exist only with --test-hooks. The recorder keeps the last non-hook request exactly
as it arrived (raw path with query, headers, body text) so a test can check what the
client sent; scripted replies let a test make the next request to a path answer with
any status, headers and body, for cases the real service produces rarely (204 with no
body, a redirect, a 500). A scripted body may be binary and may be sent the way a file
server would send it: with its length, chunked, or cut short of the length it declared, as
a connection that breaks mid-download leaves it.
"""
from __future__ import annotations

import base64
import binascii
from typing import Any

from aiohttp import web

from .accounts import create_user, issue_tokens, user_by_name_or_email
from .keyauth import read_outbox
from .repos import DEFAULT_REPOSITORY_HOST
from .web import ApiError, Handler, Service, body_of, ctx, listing, reply, text_field

HOOK_PREFIX = "/__test/"
MAX_LOGGED_REQUESTS = 5000


def record(svc: Service, request: web.Request, body: bytes) -> None:
    headers: dict[str, str] = {}
    for name, value in request.headers.items():
        headers[name] = f"{headers[name]}, {value}" if name in headers else value
    svc.last_request = {
        "method": request.method,
        "path": request.raw_path,
        "headers": headers,
        "body": body.decode("utf-8", errors="replace"),
    }
    svc.request_log.append(f"{request.method} {request.raw_path}")
    del svc.request_log[:-MAX_LOGGED_REQUESTS]


def take_scripted(svc: Service, request: web.Request) -> dict[str, Any] | None:
    for index, scripted in enumerate(svc.scripted_replies):
        wanted_path = scripted["path"]
        actual = request.raw_path if "?" in wanted_path else request.raw_path.split("?", 1)[0]
        if actual == wanted_path and scripted["method"] in ("", request.method):
            scripted["times"] -= 1
            if scripted["times"] <= 0:
                del svc.scripted_replies[index]
            return scripted
    return None


@web.middleware
async def recorder(request: web.Request, handler: Handler) -> web.StreamResponse:
    svc = ctx(request)
    if request.path.startswith(HOOK_PREFIX):
        return await handler(request)
    record(svc, request, await request.read())
    scripted = take_scripted(svc, request)
    if scripted is None:
        return await handler(request)
    status = scripted["status"]
    if status in (204, 304):
        return web.Response(status=status, headers=scripted["headers"])
    if scripted["transfer"] == "length":
        return web.Response(status=status, body=scripted["body"], headers=scripted["headers"])
    return await stream_scripted(request, scripted)


SCRIPTED_CHUNK_BYTES = 16 * 1024


async def stream_scripted(request: web.Request, scripted: dict[str, Any]) -> web.StreamResponse:
    """Chunked transfer, or a declared length the body never reaches ("cut"): the body is
    sent, then the connection is dropped without the rest."""
    body: bytes = scripted["body"]
    response = web.StreamResponse(status=scripted["status"], headers=scripted["headers"])
    if scripted["transfer"] == "chunked":
        response.enable_chunked_encoding()
    else:
        response.content_length = scripted["declaredLength"]
    await response.prepare(request)
    for start in range(0, len(body), SCRIPTED_CHUNK_BYTES):
        await response.write(body[start:start + SCRIPTED_CHUNK_BYTES])
    if scripted["transfer"] == "chunked":
        await response.write_eof()
        return response
    if request.transport is not None:
        request.transport.close()
    return response


async def session(request: web.Request) -> web.Response:
    svc = ctx(request)
    username = text_field(await body_of(request), "username", max_len=32).strip()
    user = user_by_name_or_email(svc, username) or create_user(svc, username, f"{username.lower()}@corvandell.test")
    return reply({**issue_tokens(svc, user["id"]), "username": user["username"], "email": user["email"]})


async def last_request(request: web.Request) -> web.Response:
    svc = ctx(request)
    if svc.last_request is None:
        raise ApiError(404, "no_request", "No request has been received yet.")
    return reply(svc.last_request)


async def requests_received(request: web.Request) -> web.Response:
    """Every request since the stand-in started (or the last 5000), oldest first."""
    return listing([{"request": line} for line in ctx(request).request_log])


async def script_reply(request: web.Request) -> web.Response:
    svc = ctx(request)
    body = await body_of(request)
    path = text_field(body, "path", max_len=2000)
    status = body.get("status", 200)
    headers = body.get("headers", {})
    times = body.get("times", 1)
    if not isinstance(status, int) or not 100 <= status <= 599:
        raise ApiError(400, "invalid_field", "'status' must be an HTTP status code.")
    if not isinstance(headers, dict) or not all(isinstance(v, str) for v in headers.values()):
        raise ApiError(400, "invalid_field", "'headers' must map names to strings.")
    if not isinstance(times, int) or times < 1:
        raise ApiError(400, "invalid_field", "'times' must be a positive whole number.")
    transfer = body.get("transfer", "length")
    if transfer not in ("length", "chunked", "cut"):
        raise ApiError(400, "invalid_field", "'transfer' must be \"length\", \"chunked\" or \"cut\".")
    if "bodyBase64" in body:
        try:
            content = base64.b64decode(str(body["bodyBase64"]), validate=True)
        except (binascii.Error, ValueError):
            raise ApiError(400, "invalid_field", "'bodyBase64' is not base64.") from None
    else:
        content = text_field(body, "body", required=False, max_len=1 << 20).encode("utf-8")
    declared = body.get("declaredLength", len(content) + 1000)
    if transfer == "cut" and (not isinstance(declared, int) or declared <= len(content)):
        raise ApiError(400, "invalid_field", "'declaredLength' must be larger than the body.")
    scripted = {"path": path, "method": text_field(body, "method", required=False).upper(), "status": status,
                "body": content, "headers": headers, "times": times, "transfer": transfer,
                "declaredLength": declared}
    svc.scripted_replies.append(scripted)
    described = {key: value for key, value in scripted.items() if key != "body"}
    return reply({**described, "bodyBytes": len(content), "pending": len(svc.scripted_replies)}, status=201)


async def advance_clock(request: web.Request) -> web.Response:
    svc = ctx(request)
    seconds = (await body_of(request)).get("advanceSeconds")
    if isinstance(seconds, bool) or not isinstance(seconds, (int, float)) or seconds < 0:
        raise ApiError(400, "invalid_field", "'advanceSeconds' must be a number of seconds, not negative.")
    svc.clock.offset_seconds += seconds
    return reply({"now": svc.clock.iso(svc.clock.now()), "offsetSeconds": svc.clock.offset_seconds})


async def github_account(request: web.Request) -> web.Response:
    """Sets the login the simulated GitHub replies with when this user consents to a link."""
    svc = ctx(request)
    body = await body_of(request)
    user = user_by_name_or_email(svc, text_field(body, "username", max_len=32))
    if user is None:
        raise ApiError(404, "user_not_found", "No such user.")
    svc.github_accounts[user["id"]] = text_field(body, "login", max_len=39)
    return reply({"userId": user["id"], "login": svc.github_accounts[user["id"]]})


async def github_link(request: web.Request) -> web.Response:
    """Links (or with an empty login unlinks) a user's GitHub login at once, as a finished
    link flow would: {"username", "login"}."""
    svc = ctx(request)
    body = await body_of(request)
    user = user_by_name_or_email(svc, text_field(body, "username", max_len=32))
    if user is None:
        raise ApiError(404, "user_not_found", "No such user.")
    login = text_field(body, "login", required=False, max_len=39)
    svc.db.run("UPDATE users SET github_login = ?, github_linked_at = ? WHERE id = ?",
               login or None, svc.clock.now() if login else None, user["id"])
    return reply({"userId": user["id"], "login": login})


async def repository_host(request: web.Request) -> web.Response:
    """Points shared games at another git host: {"url"}; an empty url restores github.com."""
    svc = ctx(request)
    url = text_field(await body_of(request), "url", required=False, max_len=200).strip().rstrip("/")
    svc.repository_host = url or DEFAULT_REPOSITORY_HOST
    return reply({"url": svc.repository_host})


async def voice_frames(request: web.Request) -> web.Response:
    """Sends raw WebSocket frames to a user's voice sockets in a room:
    {"roomId","userId","frames":[{"opcode":0|1|2,"fin":bool,"hex":"..."}]}."""
    svc = ctx(request)
    body = await body_of(request)
    frames = []
    for frame in body.get("frames", []):
        if not isinstance(frame, dict) or frame.get("opcode") not in (0, 1, 2):
            raise ApiError(400, "invalid_field", "Each frame needs an opcode of 0, 1 or 2.")
        frames.append((frame["opcode"], bool(frame.get("fin", True)), bytes.fromhex(str(frame.get("hex", "")))))
    sent = svc.voice.push_raw_frames(text_field(body, "roomId"), text_field(body, "userId"), frames)
    return reply({"sockets": sent})


async def outbox(request: web.Request) -> web.Response:
    return listing(read_outbox(ctx(request)))


def routes() -> list[web.RouteDef]:
    return [
        web.post(HOOK_PREFIX + "session", session),
        web.get(HOOK_PREFIX + "last-request", last_request),
        web.get(HOOK_PREFIX + "requests", requests_received),
        web.post(HOOK_PREFIX + "reply", script_reply),
        web.post(HOOK_PREFIX + "clock", advance_clock),
        web.get(HOOK_PREFIX + "outbox", outbox),
        web.post(HOOK_PREFIX + "voice-frames", voice_frames),
        web.post(HOOK_PREFIX + "github-account", github_account),
        web.post(HOOK_PREFIX + "github-link", github_link),
        web.post(HOOK_PREFIX + "repository-host", repository_host),
    ]
