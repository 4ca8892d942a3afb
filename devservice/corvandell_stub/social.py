"""Friends, friend requests, conversations and messages.

Friendship is mutual and stored in both directions. The client has no "accept"
button: it accepts by sending a request back, so a request to someone who already
asked you makes you friends at once (the explicit accept/decline routes exist too).
Conversations: one direct conversation per pair of friends, reused when asked again;
a group conversation is reused when the same people and the same name are asked for,
so repeated "chat with these friends" does not pile up empty groups. Deleting a
message keeps its place in the history with isDeleted set and the text removed.
"""
from __future__ import annotations

from aiohttp import web

from .accounts import current_game, find_user, is_online, require_user
from .db import Row
from .web import ApiError, Service, body_of, ctx, listing, new_id, no_content, query_int, reply, text_field

MAX_GROUP_MEMBERS = 10
MAX_MESSAGE_CHARS = 4000


def friend_ids(svc: Service, user_id: str) -> list[str]:
    return [row["friend_id"] for row in svc.db.all(
        "SELECT friend_id FROM friendships WHERE user_id = ? ORDER BY since", user_id)]


def are_friends(svc: Service, a: str, b: str) -> bool:
    return svc.db.one("SELECT 1 FROM friendships WHERE user_id = ? AND friend_id = ?", a, b) is not None


def befriend(svc: Service, a: str, b: str, since: float) -> None:
    svc.db.run("INSERT OR IGNORE INTO friendships(user_id, friend_id, since) VALUES(?, ?, ?)", a, b, since)
    svc.db.run("INSERT OR IGNORE INTO friendships(user_id, friend_id, since) VALUES(?, ?, ?)", b, a, since)


def friend_item(svc: Service, friend: Row, since: float) -> dict[str, object]:
    return {
        "userId": friend["id"],
        "username": friend["username"],
        "online": is_online(svc, friend),
        "currentGame": current_game(svc, friend["id"]),
        "since": svc.clock.iso(since),
        "nickname": friend["nickname"],
    }


async def list_friends(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    rows = svc.db.all("SELECT u.*, f.since FROM friendships f JOIN users u ON u.id = f.friend_id "
                      "WHERE f.user_id = ? ORDER BY lower(u.username)", user["id"])
    return listing([friend_item(svc, row, row["since"]) for row in rows])


def request_item(svc: Service, row: Row) -> dict[str, object]:
    sender, receiver = find_user(svc, row["from_user"]), find_user(svc, row["to_user"])
    assert sender is not None and receiver is not None
    return {"id": row["id"], "fromUserId": sender["id"], "fromUsername": sender["username"],
            "toUserId": receiver["id"], "toUsername": receiver["username"], "status": row["status"],
            "createdAt": svc.clock.iso(row["created_at"])}


def pending(svc: Service, from_user: str, to_user: str) -> Row | None:
    return svc.db.one("SELECT * FROM friend_requests WHERE from_user = ? AND to_user = ? AND status = 'pending'",
                      from_user, to_user)


def answer_request(svc: Service, row: Row, status: str) -> Row:
    now = svc.clock.now()
    with svc.db.transaction():
        svc.db.run("UPDATE friend_requests SET status = ?, answered_at = ? WHERE id = ?", status, now, row["id"])
        if status == "accepted":
            befriend(svc, row["from_user"], row["to_user"], now)
    answered = svc.db.one("SELECT * FROM friend_requests WHERE id = ?", row["id"])
    assert answered is not None
    return answered


async def send_friend_request(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    to_id = text_field(await body_of(request), "toUserId").strip()
    if to_id == user["id"]:
        raise ApiError(400, "cannot_befriend_self", "You cannot send a friend request to yourself.")
    if find_user(svc, to_id) is None:
        raise ApiError(404, "user_not_found", "No user has that id.")
    if are_friends(svc, user["id"], to_id):
        raise ApiError(409, "already_friends", "You are already friends.")
    if incoming := pending(svc, to_id, user["id"]):
        return reply(request_item(svc, answer_request(svc, incoming, "accepted")))
    if outgoing := pending(svc, user["id"], to_id):
        return reply(request_item(svc, outgoing))
    request_id = new_id()
    svc.db.run("INSERT INTO friend_requests(id, from_user, to_user, status, created_at) "
               "VALUES(?, ?, ?, 'pending', ?)", request_id, user["id"], to_id, svc.clock.now())
    created = svc.db.one("SELECT * FROM friend_requests WHERE id = ?", request_id)
    assert created is not None
    return reply(request_item(svc, created), status=201)


async def list_friend_requests(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    rows = svc.db.all("SELECT * FROM friend_requests WHERE status = 'pending' AND (to_user = ? OR from_user = ?) "
                      "ORDER BY created_at", user["id"], user["id"])
    return listing([request_item(svc, row) for row in rows])


async def respond_friend_request(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    row = svc.db.one("SELECT * FROM friend_requests WHERE id = ? AND to_user = ?",
                     request.match_info["requestId"], user["id"])
    if row is None:
        raise ApiError(404, "request_not_found", "No such friend request.")
    if row["status"] != "pending":
        raise ApiError(409, "request_answered", "This request was already answered.")
    status = "accepted" if request.match_info["action"] == "accept" else "declined"
    return reply(request_item(svc, answer_request(svc, row, status)))


async def remove_friend(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    friend_id = request.match_info["userId"]
    if not are_friends(svc, user["id"], friend_id):
        raise ApiError(404, "not_friends", "That user is not your friend.")
    svc.db.run("DELETE FROM friendships WHERE (user_id = ? AND friend_id = ?) OR (user_id = ? AND friend_id = ?)",
               user["id"], friend_id, friend_id, user["id"])
    return no_content()


def member_ids(svc: Service, conversation_id: str) -> list[str]:
    return [row["user_id"] for row in svc.db.all(
        "SELECT user_id FROM conversation_members WHERE conversation_id = ? ORDER BY user_id", conversation_id)]


def conversation_item(svc: Service, row: Row, viewer_id: str) -> dict[str, object]:
    members = [find_user(svc, member_id) for member_id in member_ids(svc, row["id"])]
    people = [{"userId": m["id"], "username": m["username"]} for m in members if m is not None]
    item: dict[str, object] = {"id": row["id"], "type": row["type"]}
    if row["type"] == "direct":
        item["otherParticipant"] = next(p for p in people if p["userId"] != viewer_id)
    item["participants"] = people
    item["createdAt"] = svc.clock.iso(row["created_at"])
    item["name"] = row["name"]  # free text, so after every field the client reads
    return item


def member_conversation(request: web.Request, user: Row) -> Row:
    svc = ctx(request)
    row = svc.db.one("SELECT c.* FROM conversations c JOIN conversation_members m ON m.conversation_id = c.id "
                     "WHERE c.id = ? AND m.user_id = ?", request.match_info["conversationId"], user["id"])
    if row is None:
        raise ApiError(404, "conversation_not_found", "No such conversation.")
    return row


def create_conversation(svc: Service, kind: str, name: str, creator: str, members: list[str],
                        direct_key: str | None) -> str:
    conversation_id = new_id()
    with svc.db.transaction():
        svc.db.run("INSERT INTO conversations(id, type, name, direct_key, created_by, created_at) "
                   "VALUES(?, ?, ?, ?, ?, ?)", conversation_id, kind, name, direct_key, creator, svc.clock.now())
        for member in members:
            svc.db.run("INSERT INTO conversation_members(conversation_id, user_id) VALUES(?, ?)",
                       conversation_id, member)
    return conversation_id


def open_direct(svc: Service, user: Row, friend_id: str) -> tuple[str, bool]:
    if not are_friends(svc, user["id"], friend_id):
        raise ApiError(403, "not_friends", "You can only chat with your friends.")
    key = "|".join(sorted([user["id"], friend_id]))
    existing = svc.db.one("SELECT id FROM conversations WHERE direct_key = ?", key)
    if existing:
        return existing["id"], False
    return create_conversation(svc, "direct", "", user["id"], [user["id"], friend_id], key), True


def open_group(svc: Service, user: Row, participant_ids: object, name: str) -> tuple[str, bool]:
    if not isinstance(participant_ids, list) or not all(isinstance(p, str) for p in participant_ids):
        raise ApiError(400, "invalid_field", "'participantIds' must be a list of user ids.", field="participantIds")
    members = sorted(set(participant_ids) | {user["id"]})
    if len(members) < 2 or len(members) > MAX_GROUP_MEMBERS:
        raise ApiError(400, "invalid_field", f"A group has 2 to {MAX_GROUP_MEMBERS} members.", field="participantIds")
    for member in members:
        if member != user["id"] and not are_friends(svc, user["id"], member):
            raise ApiError(403, "not_friends", "Every participant must be your friend.")
    for row in svc.db.all("SELECT id FROM conversations WHERE type = 'group' AND name = ?", name):
        if member_ids(svc, row["id"]) == members:
            return row["id"], False
    return create_conversation(svc, "group", name, user["id"], members, None), True


async def open_conversation(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    body = await body_of(request)
    if "friendUserId" in body:
        conversation_id, created = open_direct(svc, user, text_field(body, "friendUserId"))
    elif "participantIds" in body:
        name = text_field(body, "name", required=False).strip()
        conversation_id, created = open_group(svc, user, body["participantIds"], name)
    else:
        raise ApiError(400, "missing_field", "Send 'friendUserId' or 'participantIds'.")
    row = svc.db.one("SELECT * FROM conversations WHERE id = ?", conversation_id)
    assert row is not None
    return reply(conversation_item(svc, row, user["id"]), status=201 if created else 200)


async def list_conversations(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    rows = svc.db.all("SELECT c.* FROM conversations c JOIN conversation_members m ON m.conversation_id = c.id "
                      "WHERE m.user_id = ? ORDER BY c.created_at", user["id"])
    return listing([conversation_item(svc, row, user["id"]) for row in rows])


def message_item(svc: Service, row: Row) -> dict[str, object]:
    sender = find_user(svc, row["sender_id"])
    return {
        "id": row["id"],
        "senderId": row["sender_id"],
        "senderUsername": sender["username"] if sender else "",
        "sentAt": svc.clock.iso(row["sent_at"]),
        "isDeleted": bool(row["is_deleted"]),
        "conversationId": row["conversation_id"],
        "content": "" if row["is_deleted"] else row["content"],
    }


async def list_messages(request: web.Request) -> web.Response:
    """The newest page, oldest first within it; `before` (a message id) pages further back."""
    svc = ctx(request)
    conversation = member_conversation(request, require_user(request))
    page_size = query_int(request, "pageSize", 50, 1, 100)
    before_seq = 1 << 62
    if before := request.query.get("before", ""):
        anchor = svc.db.one("SELECT seq FROM messages WHERE id = ? AND conversation_id = ?", before, conversation["id"])
        if anchor is None:
            raise ApiError(400, "invalid_query", "'before' names no message of this conversation.")
        before_seq = anchor["seq"]
    rows = svc.db.all("SELECT * FROM messages WHERE conversation_id = ? AND seq < ? ORDER BY seq DESC LIMIT ?",
                      conversation["id"], before_seq, page_size + 1)
    has_more = len(rows) > page_size
    page = list(reversed(rows[:page_size]))
    return listing([message_item(svc, row) for row in page], pageSize=page_size, hasMore=has_more,
                   nextBefore=page[0]["id"] if has_more else "")


async def send_message(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    conversation = member_conversation(request, user)
    content = text_field(await body_of(request), "content", max_len=MAX_MESSAGE_CHARS)
    message_id = new_id()
    svc.db.run("INSERT INTO messages(id, conversation_id, sender_id, content, sent_at) VALUES(?, ?, ?, ?, ?)",
               message_id, conversation["id"], user["id"], content, svc.clock.now())
    row = svc.db.one("SELECT * FROM messages WHERE id = ?", message_id)
    assert row is not None
    return reply(message_item(svc, row), status=201)


async def delete_message(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    conversation = member_conversation(request, user)
    row = svc.db.one("SELECT * FROM messages WHERE id = ? AND conversation_id = ?",
                     request.match_info["messageId"], conversation["id"])
    if row is None:
        raise ApiError(404, "message_not_found", "No such message.")
    if row["sender_id"] != user["id"]:
        raise ApiError(403, "not_your_message", "You can only delete your own messages.")
    svc.db.run("UPDATE messages SET is_deleted = 1, content = '' WHERE id = ?", row["id"])
    return no_content()


def routes() -> list[web.RouteDef]:
    return [
        web.get("/api/v1/me/friends", list_friends),
        web.delete("/api/v1/me/friends/{userId}", remove_friend),
        web.post("/api/v1/me/friend-requests", send_friend_request),
        web.get("/api/v1/me/friend-requests", list_friend_requests),
        web.post("/api/v1/me/friend-requests/{requestId}/{action:accept|decline}", respond_friend_request),
        web.post("/api/v1/chat/conversations", open_conversation),
        web.get("/api/v1/chat/conversations", list_conversations),
        web.get("/api/v1/chat/conversations/{conversationId}/messages", list_messages),
        web.post("/api/v1/chat/conversations/{conversationId}/messages", send_message),
        web.delete("/api/v1/chat/conversations/{conversationId}/messages/{messageId}", delete_message),
    ]
