"""Users, access/refresh tokens and bearer authentication.

Tokens are opaque random strings looked up in the store, not self-describing, so
revoking one takes effect at once. Refreshing rotates the pair: the used refresh
token and the access token issued with it are both revoked, so a copy of an old
session stops working as soon as the client renews it. A reused refresh token is
refused but does not end the newer session.
"""
from __future__ import annotations

import re

from aiohttp import web

from .db import Row
from .web import ApiError, Service, body_of, ctx, new_id, new_token, reply, text_field

ACCESS_TTL_SECONDS = 3600
REFRESH_TTL_SECONDS = 30 * 24 * 3600
ONLINE_WINDOW_SECONDS = 300
FREE_GRANT_SOURCE = "free-to-play"


def find_user(svc: Service, user_id: str) -> Row | None:
    return svc.db.one("SELECT * FROM users WHERE id = ?", user_id)


def user_by_name_or_email(svc: Service, text: str) -> Row | None:
    return svc.db.one("SELECT * FROM users WHERE username = ? OR email = ?", text, text)


def unique_username(svc: Service, wanted: str) -> str:
    base = re.sub(r"[^a-z0-9_.-]", "", wanted.lower())[:24] or "player"
    name, suffix = base, 1
    while svc.db.one("SELECT 1 FROM users WHERE username = ?", name):
        suffix += 1
        name = f"{base}{suffix}"
    return name


def create_user(svc: Service, username: str, email: str, *, user_id: str | None = None,
                nickname: str = "", created_at: float | None = None) -> Row:
    """A new account, which like every account starts owning the free-to-play titles."""
    user_id = user_id or new_id()
    now = svc.clock.now() if created_at is None else created_at
    svc.db.run(
        "INSERT INTO users(id, username, email, nickname, created_at) VALUES(?, ?, ?, ?, ?)",
        user_id, username, email, nickname or username, now,
    )
    for row in svc.db.all("SELECT id FROM software WHERE is_free = 1"):
        svc.db.run(
            "INSERT OR IGNORE INTO entitlements(id, user_id, software_id, source, granted_at) "
            "VALUES(?, ?, ?, ?, ?)", new_id(), user_id, row["id"], FREE_GRANT_SOURCE, now,
        )
    user = find_user(svc, user_id)
    assert user is not None
    return user


def issue_tokens(svc: Service, user_id: str) -> dict[str, object]:
    """A fresh pair in the AuthTokens shape the client reads (userId, accessToken, refreshToken)."""
    now = svc.clock.now()
    access, refresh = new_token("cva_"), new_token("cvr_")
    svc.db.run(
        "INSERT INTO tokens(access_token, refresh_token, user_id, issued_at, access_expires_at, "
        "refresh_expires_at) VALUES(?, ?, ?, ?, ?, ?)",
        access, refresh, user_id, now, now + ACCESS_TTL_SECONDS, now + REFRESH_TTL_SECONDS,
    )
    return {
        "userId": user_id,
        "accessToken": access,
        "refreshToken": refresh,
        "tokenType": "Bearer",
        "expiresIn": ACCESS_TTL_SECONDS,
    }


def bearer_of(request: web.Request) -> str:
    header = request.headers.get("Authorization", "")
    scheme, _, token = header.partition(" ")
    return token.strip() if scheme.lower() == "bearer" else ""


def current_user(request: web.Request, *, required: bool = True) -> Row | None:
    """The signed-in caller. A missing token is allowed on public routes; a bad one never is."""
    svc = ctx(request)
    token = bearer_of(request)
    if not token:
        if required:
            raise ApiError(401, "missing_token", "Sign in required: send an Authorization: Bearer token.")
        return None
    row = svc.db.one("SELECT * FROM tokens WHERE access_token = ?", token)
    if row is None or row["revoked"]:
        raise ApiError(401, "invalid_token", "The access token is not valid.")
    now = svc.clock.now()
    if row["access_expires_at"] <= now:
        raise ApiError(401, "token_expired", "The access token has expired; refresh it.")
    svc.db.run("UPDATE users SET last_seen_at = ? WHERE id = ?", now, row["user_id"])
    return find_user(svc, row["user_id"])


def require_user(request: web.Request) -> Row:
    user = current_user(request)
    assert user is not None
    return user


def is_online(svc: Service, user: Row) -> bool:
    if user["always_online"]:
        return True
    if svc.db.one("SELECT 1 FROM sessions WHERE user_id = ? AND ended_at IS NULL", user["id"]):
        return True
    last_seen = user["last_seen_at"]
    return last_seen is not None and svc.clock.now() - last_seen < ONLINE_WINDOW_SECONDS


def current_game(svc: Service, user_id: str) -> str:
    row = svc.db.one(
        "SELECT name FROM sessions WHERE user_id = ? AND ended_at IS NULL ORDER BY started_at DESC LIMIT 1",
        user_id,
    )
    return row["name"] if row else ""


async def refresh(request: web.Request) -> web.Response:
    svc = ctx(request)
    token = text_field(await body_of(request), "refreshToken", max_len=200)
    row = svc.db.one("SELECT * FROM tokens WHERE refresh_token = ?", token)
    if row is None:
        raise ApiError(401, "invalid_refresh_token", "The refresh token is not valid.")
    if row["revoked"]:
        raise ApiError(401, "refresh_token_used", "The refresh token was already used.")
    if row["refresh_expires_at"] <= svc.clock.now():
        raise ApiError(401, "refresh_token_expired", "The refresh token has expired; sign in again.")
    with svc.db.transaction():
        svc.db.run("UPDATE tokens SET revoked = 1 WHERE access_token = ?", row["access_token"])
        tokens = issue_tokens(svc, row["user_id"])
    return reply(tokens)


def routes() -> list[web.RouteDef]:
    return [web.post("/api/v1/auth/refresh", refresh)]
