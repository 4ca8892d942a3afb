"""The caller's profile, avatars, and the two browser sign-in hops.

Google sign-in cannot reach Google from here, so the authorize address signs in a
local account at once (the demo user, or the one named by login_hint) and sends the
browser to the client's loopback listener with the tokens in the fragment, as the
real service does after a successful consent. Linking a GitHub account likewise
stops at a page of this stand-in that stands in for GitHub's consent and reply: the
login comes from the simulated provider, never from the caller.
"""
from __future__ import annotations

import base64
import binascii
import html
import re
import secrets
from urllib.parse import quote, urlencode

from aiohttp import web

from .accounts import (ACCESS_TTL_SECONDS, create_user, issue_tokens, require_user, unique_username,
                       user_by_name_or_email)
from .db import Row
from .web import ApiError, Service, base_url, body_of, ctx, html_page, no_content, reply

LOOPBACK_REDIRECT = "http://127.0.0.1:38517/"
DEFAULT_SIGN_IN_USER = "demo"
MAX_AVATAR_BYTES = 2 * 1024 * 1024
MAX_METADATA_CHARS = 64 * 1024
LINK_STATE_TTL_SECONDS = 600
GITHUB_LOGIN = re.compile(r"^[A-Za-z0-9](?:[A-Za-z0-9-]{0,37}[A-Za-z0-9])?$")
IMAGE_SIGNATURES = (
    (b"\x89PNG\r\n\x1a\n", "image/png"),
    (b"\xff\xd8\xff", "image/jpeg"),
    (b"GIF87a", "image/gif"),
    (b"GIF89a", "image/gif"),
    (b"BM", "image/bmp"),
)


def profile_of(user: Row) -> dict[str, object]:
    # Free text goes last, so nothing a user types can stand before a field the client
    # reads: the nickname, then "metadata", which holds the client's own JSON text.
    return {
        "id": user["id"],
        "username": user["username"],
        "email": user["email"],
        "hasAvatar": user["avatar"] is not None,
        "nickname": user["nickname"],
        "metadata": user["metadata"],
    }


async def get_me(request: web.Request) -> web.Response:
    return reply(profile_of(require_user(request)))


async def patch_me(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    body = await body_of(request)
    if "nickname" not in body and "metadata" not in body:
        raise ApiError(400, "missing_field", "Send 'nickname' or 'metadata'.")
    if "nickname" in body:
        nickname = body["nickname"]
        if not isinstance(nickname, str) or not 1 <= len(nickname.strip()) <= 32:
            raise ApiError(400, "invalid_field", "'nickname' must be 1 to 32 characters.", field="nickname")
        svc.db.run("UPDATE users SET nickname = ? WHERE id = ?", nickname.strip(), user["id"])
    if "metadata" in body:
        metadata = body["metadata"]
        if not isinstance(metadata, str) or len(metadata) > MAX_METADATA_CHARS:
            raise ApiError(400, "invalid_field", "'metadata' must be a string of at most 64 KiB.",
                           field="metadata")
        svc.db.run("UPDATE users SET metadata = ? WHERE id = ?", metadata, user["id"])
    updated = svc.db.one("SELECT * FROM users WHERE id = ?", user["id"])
    assert updated is not None
    return reply(profile_of(updated))


def image_type(data: bytes) -> str:
    for signature, mime in IMAGE_SIGNATURES:
        if data.startswith(signature):
            return mime
    raise ApiError(400, "unsupported_image", "The avatar must be a PNG, JPEG, GIF or BMP image.")


async def put_avatar(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    encoded = (await body_of(request)).get("imageBase64")
    if not isinstance(encoded, str) or not encoded:
        raise ApiError(400, "missing_field", "'imageBase64' is required.", field="imageBase64")
    try:
        data = base64.b64decode(encoded, validate=True)
    except binascii.Error:
        raise ApiError(400, "invalid_field", "'imageBase64' is not valid base64.", field="imageBase64") from None
    if len(data) > MAX_AVATAR_BYTES:
        raise ApiError(413, "avatar_too_large", "The avatar must be at most 2 MiB.")
    svc.db.run("UPDATE users SET avatar = ?, avatar_type = ? WHERE id = ?", data, image_type(data), user["id"])
    return no_content()


def avatar_reply(user: Row | None) -> web.Response:
    if user is None:
        raise ApiError(404, "user_not_found", "No such user.")
    if user["avatar"] is None:
        raise ApiError(404, "no_avatar", "This user has no avatar.")
    return web.Response(body=user["avatar"], content_type=user["avatar_type"])


async def get_my_avatar(request: web.Request) -> web.Response:
    return avatar_reply(require_user(request))


async def get_user_avatar(request: web.Request) -> web.Response:
    require_user(request)
    return avatar_reply(ctx(request).db.one("SELECT * FROM users WHERE id = ?", request.match_info["userId"]))


def sign_in_target(svc: Service, hint: str) -> Row:
    user = user_by_name_or_email(svc, hint)
    if user is not None:
        return user
    if "@" not in hint:
        raise ApiError(404, "user_not_found", f"No account named '{hint}'.")
    return create_user(svc, unique_username(svc, hint.split("@")[0]), hint)


async def google_authorize(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = sign_in_target(svc, request.query.get("login_hint", "").strip() or DEFAULT_SIGN_IN_USER)
    tokens = issue_tokens(svc, user["id"])
    fragment = urlencode({
        "access_token": tokens["accessToken"],
        "refresh_token": tokens["refreshToken"],
        "token_type": "Bearer",
        "expires_in": ACCESS_TTL_SECONDS,
        "user_id": user["id"],
    }, quote_via=quote)
    raise web.HTTPFound(LOOPBACK_REDIRECT + "#" + fragment)


async def github_authorize(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    if request.query.get("link", "") != "true":
        raise ApiError(400, "unsupported", "GitHub is only offered for linking (link=true), not for sign-in.")
    state = secrets.token_urlsafe(18)
    svc.db.run("INSERT INTO link_states(state, user_id, expires_at) VALUES(?, ?, ?)",
               state, user["id"], svc.clock.now() + LINK_STATE_TTL_SECONDS)
    raise web.HTTPFound(f"{base_url(request)}/oauth/github/login?state={state}")


async def github_login_page(request: web.Request) -> web.Response:
    """Stands in for GitHub's consent page: visiting it links the login to the user."""
    svc = ctx(request)
    row = svc.db.one("SELECT * FROM link_states WHERE state = ?", request.query.get("state", ""))
    if row is None or row["used"] or row["expires_at"] <= svc.clock.now():
        return html_page("GitHub link", "<p>This link has expired. Start again from Corvandell.</p>", 400)
    user = svc.db.one("SELECT * FROM users WHERE id = ?", row["user_id"])
    assert user is not None
    # The login is what GitHub's reply names, never anything the caller sends: the
    # simulated reply is the account a test set up, else the user's earlier login, else
    # one made from the username.
    fallback = re.sub(r"[^A-Za-z0-9-]+", "-", user["username"]).strip("-")[:39]
    login = svc.github_accounts.get(user["id"]) or user["github_login"] or fallback
    if not GITHUB_LOGIN.match(login):
        return html_page("GitHub link", "<p>That is not a valid GitHub login.</p>", 400)
    svc.db.run("UPDATE link_states SET used = 1 WHERE state = ?", row["state"])
    svc.db.run("UPDATE users SET github_login = ?, github_linked_at = ? WHERE id = ?",
               login, svc.clock.now(), user["id"])
    return html_page("GitHub linked", f"<h2>GitHub account {html.escape(login)} linked</h2>"
                                      "<p>You can close this tab and return to Corvandell.</p>")


async def get_github(request: web.Request) -> web.Response:
    user = require_user(request)
    linked = user["github_linked_at"] is not None
    return reply({
        "login": user["github_login"] if linked else "",
        "linkedAt": ctx(request).clock.iso(user["github_linked_at"]),
    })


async def delete_github(request: web.Request) -> web.Response:
    user = require_user(request)
    ctx(request).db.run("UPDATE users SET github_linked_at = NULL WHERE id = ?", user["id"])
    return no_content()


def routes() -> list[web.RouteDef]:
    return [
        web.get("/api/v1/me", get_me),
        web.patch("/api/v1/me", patch_me),
        web.put("/api/v1/me/avatar", put_avatar),
        web.get("/api/v1/me/avatar", get_my_avatar),
        web.get("/api/v1/users/{userId}/avatar", get_user_avatar),
        web.get("/api/v1/me/github", get_github),
        web.delete("/api/v1/me/github", delete_github),
        web.get("/api/v1/auth/oauth/google/authorize", google_authorize),
        web.get("/api/v1/auth/oauth/github/authorize", github_authorize),
        web.get("/oauth/github/login", github_login_page),
    ]
