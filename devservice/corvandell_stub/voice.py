"""Voice rooms of a conversation and the voice WebSocket that relays raw PCM.

A conversation has at most one active room; asking to create another returns the
active one, and the room closes when its last member leaves. The WebSocket only
accepts members of the room (join first) and forwards each binary frame to the other
members' sockets behind the 16-byte sender header (see relay.py); the sender never
gets its own audio back. Frames from a member marked muted are dropped here too, so
muting works even against a client that keeps sending. The server never pings: a
ping with a payload breaks the Windows client's WebSocket under Wine.
"""
from __future__ import annotations

from aiohttp import WSMsgType, web

from .accounts import require_user
from .db import Row
from .relay import MAX_PAYLOAD_BYTES
from .web import ApiError, Service, body_of, bool_field, ctx, listing, new_id, no_content, reply, text_field

MAX_PARTICIPANTS = 8


def room_item(svc: Service, room: Row) -> dict[str, object]:
    members = svc.db.all("SELECT v.user_id, v.muted, u.username FROM voice_members v JOIN users u ON u.id = v.user_id "
                         "WHERE v.room_id = ? ORDER BY v.joined_at", room["id"])
    return {
        "id": room["id"],
        "conversationId": room["conversation_id"],
        "status": room["status"],
        "maxParticipants": room["max_participants"],
        "participantCount": len(members),
        "participants": [{"userId": m["user_id"], "username": m["username"], "muted": bool(m["muted"])}
                         for m in members],
    }


def require_member_of_conversation(svc: Service, user: Row, conversation_id: str) -> None:
    if not svc.db.one("SELECT 1 FROM conversation_members WHERE conversation_id = ? AND user_id = ?",
                      conversation_id, user["id"]):
        raise ApiError(404, "conversation_not_found", "No such conversation.")


def find_room(svc: Service, user: Row, room_id: str) -> Row:
    room = svc.db.one("SELECT * FROM voice_rooms WHERE id = ?", room_id)
    if room is None:
        raise ApiError(404, "room_not_found", "No such voice room.")
    require_member_of_conversation(svc, user, room["conversation_id"])
    return room


def is_in_room(svc: Service, room_id: str, user_id: str) -> bool:
    return svc.db.one("SELECT 1 FROM voice_members WHERE room_id = ? AND user_id = ?", room_id, user_id) is not None


async def list_rooms(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    conversation_id = request.query.get("conversationId", "")
    require_member_of_conversation(svc, user, conversation_id)
    rooms = svc.db.all("SELECT * FROM voice_rooms WHERE conversation_id = ? AND status = 'active' "
                       "ORDER BY created_at", conversation_id)
    return listing([room_item(svc, room) for room in rooms])


async def create_room(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    conversation_id = text_field(await body_of(request), "conversationId")
    require_member_of_conversation(svc, user, conversation_id)
    active = svc.db.one("SELECT * FROM voice_rooms WHERE conversation_id = ? AND status = 'active'", conversation_id)
    if active is not None:
        return reply(room_item(svc, active))
    room_id = new_id()
    svc.db.run("INSERT INTO voice_rooms(id, conversation_id, status, max_participants, created_by, created_at) "
               "VALUES(?, ?, 'active', ?, ?, ?)", room_id, conversation_id, MAX_PARTICIPANTS, user["id"],
               svc.clock.now())
    return reply(room_item(svc, find_room(svc, user, room_id)), status=201)


async def join_room(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    room = find_room(svc, user, request.match_info["roomId"])
    if room["status"] != "active":
        raise ApiError(409, "room_closed", "This voice room has closed; create a new one.")
    if not is_in_room(svc, room["id"], user["id"]):
        count = svc.db.scalar("SELECT COUNT(*) FROM voice_members WHERE room_id = ?", room["id"])
        if count >= room["max_participants"]:
            raise ApiError(409, "room_full", "This voice room is full.")
        svc.db.run("INSERT INTO voice_members(room_id, user_id, joined_at) VALUES(?, ?, ?)",
                   room["id"], user["id"], svc.clock.now())
    return reply(room_item(svc, room))


async def leave_room(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    room = find_room(svc, user, request.match_info["roomId"])
    svc.db.run("DELETE FROM voice_members WHERE room_id = ? AND user_id = ?", room["id"], user["id"])
    if not svc.db.one("SELECT 1 FROM voice_members WHERE room_id = ?", room["id"]):
        svc.db.run("UPDATE voice_rooms SET status = 'closed', closed_at = ? WHERE id = ? AND status = 'active'",
                   svc.clock.now(), room["id"])
    await svc.voice.disconnect(room["id"], user["id"])
    return no_content()


async def mute(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    room = find_room(svc, user, request.match_info["roomId"])
    muted = bool_field(await body_of(request), "muted")
    if not svc.db.run("UPDATE voice_members SET muted = ? WHERE room_id = ? AND user_id = ?",
                      int(muted), room["id"], user["id"]):
        raise ApiError(409, "not_in_room", "Join the voice room first.")
    return no_content()


async def voice_socket(request: web.Request) -> web.StreamResponse:
    svc = ctx(request)
    user = require_user(request)
    room = find_room(svc, user, request.query.get("roomId", ""))
    if room["status"] != "active" or not is_in_room(svc, room["id"], user["id"]):
        raise ApiError(403, "not_in_room", "Join the voice room before connecting.")
    # aiohttp refuses a message whose size reaches max_msg_size, so the limit is one more
    # than the largest payload a listener's 8192-byte buffer can take behind the header.
    ws = web.WebSocketResponse(heartbeat=None, autoping=True, compress=False, max_msg_size=MAX_PAYLOAD_BYTES + 1)
    await ws.prepare(request)
    svc.voice.add(room["id"], user["id"], ws)
    try:
        async for message in ws:
            if message.type != WSMsgType.BINARY:
                continue  # text frames carry nothing for the relay
            muted = svc.db.scalar("SELECT muted FROM voice_members WHERE room_id = ? AND user_id = ?",
                                  room["id"], user["id"])
            if muted == 0:
                await svc.voice.relay(room["id"], user["id"], message.data)
    finally:
        svc.voice.remove(room["id"], user["id"], ws)
    return ws


def routes() -> list[web.RouteDef]:
    return [
        web.get("/api/v1/voice/rooms", list_rooms),
        web.post("/api/v1/voice/rooms", create_room),
        web.post("/api/v1/voice/rooms/{roomId}/join", join_room),
        web.post("/api/v1/voice/rooms/{roomId}/leave", leave_room),
        web.post("/api/v1/voice/rooms/{roomId}/mute", mute),
        web.get("/ws/v1/voice", voice_socket),
    ]
