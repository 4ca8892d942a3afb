"""Play sessions, playtime totals, ratings and the friends' activity feed.

Every session, whether of a catalogue title or of a game from another store, is one
row keyed by the same "game key" the client uses for its library rows: the software
id, or provider + ":" + external id (so a browser game launched as provider "github"
lands on "github:<id>"). Playtime, ratings and the feed all group by that key. A user
plays one game at a time: starting a session closes any session still open, which
also keeps a crashed client from leaving a game "running" forever.
"""
from __future__ import annotations

from aiohttp import web

from .accounts import current_user, require_user
from .catalogue import find_software
from .db import Row
from .social import friend_ids
from .web import ApiError, Service, body_of, ctx, int_field, listing, new_id, query_int, reply, text_field


def close_open_sessions(svc: Service, user_id: str) -> None:
    svc.db.run("UPDATE sessions SET ended_at = ? WHERE user_id = ? AND ended_at IS NULL", svc.clock.now(), user_id)


def start_session(svc: Service, user_id: str, game_key: str, name: str, *, software_id: str | None = None,
                  provider: str | None = None, external_id: str | None = None) -> dict[str, object]:
    launch_id, now = new_id(), svc.clock.now()
    with svc.db.transaction():
        close_open_sessions(svc, user_id)
        svc.db.run(
            "INSERT INTO sessions(id, user_id, game_key, software_id, provider, external_id, name, started_at) "
            "VALUES(?, ?, ?, ?, ?, ?, ?, ?)",
            launch_id, user_id, game_key, software_id, provider, external_id, name, now,
        )
    return {"launchId": launch_id, "id": launch_id, "gameKey": game_key, "startTime": svc.clock.iso(now)}


def end_session(svc: Service, user_id: str, launch_id: str, external: bool) -> web.Response:
    row = svc.db.one("SELECT * FROM sessions WHERE id = ? AND user_id = ?", launch_id, user_id)
    if row is None or (row["provider"] is not None) != external:
        raise ApiError(404, "launch_not_found", "No such launch.")
    if row["ended_at"] is not None:
        raise ApiError(409, "launch_already_ended", "This launch has already ended.")
    now = svc.clock.now()
    svc.db.run("UPDATE sessions SET ended_at = ? WHERE id = ?", now, launch_id)
    return reply({"launchId": launch_id, "endTime": svc.clock.iso(now),
                  "durationSeconds": int(now - row["started_at"])})


async def start_launch(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    software = find_software(svc, request.match_info["softwareId"])
    if not software["is_free"] and svc.db.one(
            "SELECT 1 FROM entitlements WHERE user_id = ? AND software_id = ? AND is_revoked = 0",
            user["id"], software["id"]) is None:
        raise ApiError(403, "not_entitled", "You do not own this title.")
    started = start_session(svc, user["id"], software["id"], software["name"], software_id=software["id"])
    return reply({**started, "softwareId": software["id"]}, status=201)


async def end_launch(request: web.Request) -> web.Response:
    return end_session(ctx(request), require_user(request)["id"], request.match_info["launchId"], external=False)


async def start_external_launch(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    body = await body_of(request)
    provider = text_field(body, "provider", max_len=40).strip().lower()
    external_id = text_field(body, "externalSoftwareId", max_len=200)
    name = text_field(body, "name", required=False) or f"{provider}:{external_id}"
    started = start_session(svc, user["id"], f"{provider}:{external_id}", name,
                            provider=provider, external_id=external_id)
    return reply({**started, "provider": provider, "externalSoftwareId": external_id}, status=201)


async def end_external_launch(request: web.Request) -> web.Response:
    return end_session(ctx(request), require_user(request)["id"], request.match_info["launchId"], external=True)


def played_seconds(svc: Service, user_id: str, game_key: str) -> int:
    total = svc.db.scalar(
        "SELECT COALESCE(SUM(ended_at - started_at), 0) FROM sessions "
        "WHERE user_id = ? AND game_key = ? AND ended_at IS NOT NULL", user_id, game_key)
    return int(total)


def playtime_reply(svc: Service, user: Row, game_key: str) -> web.Response:
    seconds = played_seconds(svc, user["id"], game_key)
    sessions = svc.db.scalar("SELECT COUNT(*) FROM sessions WHERE user_id = ? AND game_key = ? "
                             "AND ended_at IS NOT NULL", user["id"], game_key)
    last = svc.db.scalar("SELECT MAX(started_at) FROM sessions WHERE user_id = ? AND game_key = ?",
                         user["id"], game_key)
    return reply({"gameKey": game_key, "totalMinutes": seconds // 60, "totalSeconds": seconds,
                  "sessionCount": sessions, "lastPlayedAt": svc.clock.iso(last)})


def friends_playtime_reply(request: web.Request, user: Row, game_key: str) -> web.Response:
    svc = ctx(request)
    top = query_int(request, "top", 5, 1, 50)
    rows = []
    for friend_id in friend_ids(svc, user["id"]):
        seconds = played_seconds(svc, friend_id, game_key)
        if seconds > 0:
            friend = svc.db.one("SELECT username FROM users WHERE id = ?", friend_id)
            assert friend is not None
            rows.append({"userId": friend_id, "username": friend["username"],
                         "minutes": seconds // 60, "seconds": seconds})
    rows.sort(key=lambda row: (-int(row["seconds"]), str(row["username"])))
    return listing(rows[:top], gameKey=game_key)


def external_key(request: web.Request) -> str:
    provider = request.query.get("provider", "").strip().lower()
    external_id = request.query.get("externalId", "")
    if not provider or not external_id:
        raise ApiError(400, "invalid_query", "'provider' and 'externalId' are required.")
    return f"{provider}:{external_id}"


async def playtime(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    return playtime_reply(svc, user, find_software(svc, request.match_info["softwareId"])["id"])


async def friends_playtime(request: web.Request) -> web.Response:
    user = require_user(request)
    return friends_playtime_reply(request, user, find_software(ctx(request), request.match_info["softwareId"])["id"])


async def external_playtime(request: web.Request) -> web.Response:
    return playtime_reply(ctx(request), require_user(request), external_key(request))


async def external_friends_playtime(request: web.Request) -> web.Response:
    return friends_playtime_reply(request, require_user(request), external_key(request))


def rating_summary(svc: Service, game_key: str, user_id: str | None) -> dict[str, object]:
    row = svc.db.one("SELECT AVG(stars) AS average, COUNT(*) AS count FROM ratings WHERE game_key = ?", game_key)
    mine = svc.db.scalar("SELECT stars FROM ratings WHERE game_key = ? AND user_id = ?", game_key, user_id)
    average = round(float(row["average"]), 2) if row and row["count"] else 0.0
    return {"gameKey": game_key, "average": average, "count": row["count"] if row else 0,
            "myStars": -1 if mine is None else mine}


async def rate(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    body = await body_of(request)
    game_key = text_field(body, "gameKey", max_len=300)
    stars = int_field(body, "stars", 1, 5)
    svc.db.run("INSERT INTO ratings(user_id, game_key, stars, rated_at) VALUES(?, ?, ?, ?) "
               "ON CONFLICT(user_id, game_key) DO UPDATE SET stars = excluded.stars, rated_at = excluded.rated_at",
               user["id"], game_key, stars, svc.clock.now())
    return reply(rating_summary(svc, game_key, user["id"]))


async def query_ratings(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = current_user(request, required=False)
    keys = (await body_of(request)).get("keys")
    if not isinstance(keys, list) or not all(isinstance(key, str) for key in keys) or len(keys) > 500:
        raise ApiError(400, "invalid_field", "'keys' must be a list of at most 500 strings.", field="keys")
    return listing([rating_summary(svc, key, user["id"] if user else None) for key in keys])


def feed_entries(svc: Service, friends: list[str], game_key: str) -> list[dict[str, object]]:
    if not friends:
        return []
    marks = ",".join("?" * len(friends))
    entries: list[dict[str, object]] = []
    sessions = svc.db.all(f"SELECT s.*, u.username FROM sessions s JOIN users u ON u.id = s.user_id "
                          f"WHERE s.game_key = ? AND s.user_id IN ({marks})", game_key, *friends)
    for row in sessions:
        playing = row["ended_at"] is None
        until = svc.clock.now() if playing else row["ended_at"]
        entries.append({"type": "playing" if playing else "play", "userId": row["user_id"],
                        "username": row["username"], "timestamp": row["started_at"] if playing else until,
                        "minutes": int(until - row["started_at"]) // 60, "stars": 0})
    ratings = svc.db.all(f"SELECT r.*, u.username FROM ratings r JOIN users u ON u.id = r.user_id "
                         f"WHERE r.game_key = ? AND r.user_id IN ({marks})", game_key, *friends)
    for row in ratings:
        entries.append({"type": "rate", "userId": row["user_id"], "username": row["username"],
                        "timestamp": row["rated_at"], "minutes": 0, "stars": row["stars"]})
    return entries


async def game_feed(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    game_key = request.query.get("key", "")
    if not game_key:
        raise ApiError(400, "invalid_query", "'key' is required.")
    limit = query_int(request, "limit", 20, 1, 100)
    entries = feed_entries(svc, friend_ids(svc, user["id"]), game_key)
    entries.sort(key=lambda entry: -float(entry["timestamp"]))  # type: ignore[arg-type]
    for entry in entries:
        entry["timestamp"] = svc.clock.iso(float(entry["timestamp"]))  # type: ignore[arg-type]
        entry["gameKey"] = game_key
    return listing(entries[:limit])


def routes() -> list[web.RouteDef]:
    return [
        web.post("/api/v1/software/{softwareId}/launch", start_launch),
        web.post("/api/v1/activity/launches/{launchId}/end", end_launch),
        web.post("/api/v1/activity/external-launches", start_external_launch),
        web.post("/api/v1/activity/external-launches/{launchId}/end", end_external_launch),
        web.get("/api/v1/activity/software/{softwareId}/playtime", playtime),
        web.get("/api/v1/activity/software/{softwareId}/friends-playtime", friends_playtime),
        web.get("/api/v1/activity/external/playtime", external_playtime),
        web.get("/api/v1/activity/external/friends-playtime", external_friends_playtime),
        web.get("/api/v1/activity/game-feed", game_feed),
        web.put("/api/v1/me/ratings", rate),
        web.post("/api/v1/ratings/query", query_ratings),
    ]
