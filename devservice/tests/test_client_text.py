"""Replies as the client's scanners read them: hostile free text comes back byte for byte
and cannot move a field the client reads; and the rules that keep callers to what is theirs
(launching only owned or free titles, GitHub logins only from the provider's reply)."""
from __future__ import annotations

import json
from urllib.parse import urlsplit

from support import ServerTestCase, seeded_id

EMBER_KEEP = seeded_id("software", "ember-keep")
HOSTILE = (
    'quote " and backslash \\ end',
    "cr\rtab\tlf\nbell\x07nul\x00us\x1f del\x7f",
    'x","user_id":"x',
    '","id":"forged","name":"forged',
    "\\r\\u0041 \\",
    "caf\u00e9 \U0001F3AE \u2028",
)


def client_read(text: str, key: str) -> str:
    """The client's readString: the quoted key, the next colon, the next quote, then its
    unescape, which turns \\n and \\t into their characters and drops any other backslash."""
    match = text.find(f'"{key}"')
    colon = text.find(":", match) if match >= 0 else -1
    start = text.find('"', colon) if colon >= 0 else -1
    if start < 0:
        return ""
    out, index = [], start + 1
    while index < len(text) and text[index] != '"':
        if text[index] == "\\" and index + 1 < len(text):
            out.append({"n": "\n", "t": "\t"}.get(text[index + 1], text[index + 1]))
            index += 2
            continue
        out.append(text[index])
        index += 1
    return "".join(out)


class ClientTextTest(ServerTestCase):
    def raw(self, method: str, path: str, body: object = None, token: str = "") -> str:
        reply = self.server.call(method, path, body, token)
        self.assertLess(reply.status, 300, reply.body)
        return reply.body.decode("utf-8")

    def test_hostile_free_text_comes_back_exactly_and_moves_no_field(self) -> None:
        me = self.server.session("hostile1")
        friend = self.server.session("hostile2")
        other = self.server.session("hostile3")
        for asker in (friend, other):
            self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": me["userId"]}, asker["accessToken"],
                           status=201)
            self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": asker["userId"]}, me["accessToken"])
        for text in HOSTILE:
            with self.subTest(text=text):
                nickname, name = text.strip()[:32], text.strip()  # the service trims both
                profile = self.raw("PATCH", "/api/v1/me", {"nickname": nickname}, me["accessToken"])
                for raw in (profile, self.raw("GET", "/api/v1/me", token=me["accessToken"])):
                    self.assertEqual([client_read(raw, key) for key in ("id", "username", "email", "nickname")],
                                     [me["userId"], "hostile1", "hostile1@corvandell.test", nickname])

                group = self.raw("POST", "/api/v1/chat/conversations",
                                 {"participantIds": [friend["userId"], other["userId"]], "name": name},
                                 me["accessToken"])
                conversation_id = json.loads(group, strict=False)["id"]
                self.assertEqual([client_read(group, key) for key in ("id", "type", "name")],
                                 [conversation_id, "group", name])

                sent = self.raw("POST", f"/api/v1/chat/conversations/{conversation_id}/messages", {"content": text},
                                me["accessToken"])
                self.assertEqual([client_read(sent, key) for key in ("senderId", "senderUsername", "content")],
                                 [me["userId"], "hostile1", text])

    def test_launch_needs_an_owned_or_free_title(self) -> None:
        stranger = self.server.session("launch-stranger")["accessToken"]
        titles = self.server.ok("GET", "/api/v1/software?pageSize=100&sort=name")["items"]
        free = next(title["id"] for title in titles if title["isFree"])
        refused = self.server.call("POST", f"/api/v1/software/{EMBER_KEEP}/launch", token=stranger)
        self.assertEqual((refused.status, refused.json()["error"]), (403, "not_entitled"))
        self.server.ok("POST", f"/api/v1/software/{free}/launch", token=stranger, status=201)
        demo = self.server.session("demo")["accessToken"]
        self.server.ok("POST", f"/api/v1/software/{EMBER_KEEP}/launch", token=demo, status=201)
        revoked = seeded_id("software", "orchard-siege")
        self.assertEqual(self.server.call("POST", f"/api/v1/software/{revoked}/launch", token=demo).status, 403)

    def test_a_linked_github_login_comes_from_the_provider_not_the_caller(self) -> None:
        user = self.server.session("linker")["accessToken"]
        for hook, expected in ((None, "linker"), ({"username": "linker", "login": "linker-gh"}, "linker-gh")):
            if hook:
                self.server.ok("POST", "/__test/github-account", hook)
            link = self.server.call("GET", "/api/v1/auth/oauth/github/authorize?link=true", token=user)
            location = urlsplit(link.headers["Location"])
            page = self.server.call("GET", f"{location.path}?{location.query}&login=someone-else")
            self.assertEqual(page.status, 200)
            self.assertEqual(self.server.ok("GET", "/api/v1/me/github", token=user)["login"], expected)
