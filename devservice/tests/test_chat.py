"""Conversations and messages as the chat window relies on them: one direct conversation
per pair and one group per members and name, reused when asked again; the newest page of
messages, oldest first, whose windows overlap as new messages arrive, with stable ids."""
from __future__ import annotations

import unittest
import uuid

from support import ServerTestCase

CONVERSATIONS = "/api/v1/chat/conversations"


class ChatTest(ServerTestCase):
    def setUp(self) -> None:
        suffix = uuid.uuid4().hex[:6]
        self.users = {name: self.server.session(f"{name}-{suffix}") for name in ("ann", "ben", "cat", "dan")}
        self.token = {name: user["accessToken"] for name, user in self.users.items()}
        self.id = {name: user["userId"] for name, user in self.users.items()}
        for friend in ("ben", "cat"):
            self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": self.id[friend]}, self.token["ann"],
                           status=201)
            self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": self.id["ann"]}, self.token[friend])

    def messages(self, conversation_id: str, name: str = "ann", page_size: int = 100) -> list[dict]:
        path = f"{CONVERSATIONS}/{conversation_id}/messages?pageSize={page_size}"
        return self.server.ok("GET", path, token=self.token[name])["items"]

    def send(self, conversation_id: str, name: str, content: str) -> dict:
        return self.server.ok("POST", f"{CONVERSATIONS}/{conversation_id}/messages", {"content": content},
                              self.token[name], status=201)

    def test_direct_and_group_conversations_are_reused_and_need_friends(self) -> None:
        direct = self.server.ok("POST", CONVERSATIONS, {"friendUserId": self.id["ben"]}, self.token["ann"], status=201)
        self.assertEqual((direct["type"], direct["otherParticipant"]["username"]), ("direct", self.users["ben"]["username"]))
        again = self.server.ok("POST", CONVERSATIONS, {"friendUserId": self.id["ann"]}, self.token["ben"])
        self.assertEqual(again["id"], direct["id"])

        group = {"participantIds": [self.id["ben"], self.id["cat"]], "name": "ben, cat"}
        made = self.server.ok("POST", CONVERSATIONS, group, self.token["ann"], status=201)
        self.assertEqual((made["type"], made["name"]), ("group", "ben, cat"))
        self.assertEqual(self.server.ok("POST", CONVERSATIONS, group, self.token["ann"])["id"], made["id"])
        renamed = self.server.ok("POST", CONVERSATIONS, {**group, "name": "band"}, self.token["ann"], status=201)
        self.assertNotEqual(renamed["id"], made["id"])

        self.assertEqual(self.server.call("POST", CONVERSATIONS, {"friendUserId": self.id["dan"]},
                                          self.token["ann"]).status, 403)
        self.assertEqual(self.server.call("GET", f"{CONVERSATIONS}/{made['id']}/messages",
                                          token=self.token["dan"]).status, 404)

    def test_the_newest_page_comes_oldest_first_and_windows_overlap_with_stable_ids(self) -> None:
        group = {"participantIds": [self.id["ben"], self.id["cat"]], "name": "paging"}
        conversation = self.server.ok("POST", CONVERSATIONS, group, self.token["ann"], status=201)["id"]
        sent = [self.send(conversation, ("ann", "ben", "cat")[i % 3], f"m{i}") for i in range(7)]
        first = self.messages(conversation, page_size=5)
        self.assertEqual([m["content"] for m in first], ["m2", "m3", "m4", "m5", "m6"])
        self.assertEqual([m["id"] for m in first], [m["id"] for m in sent[2:]])
        self.send(conversation, "ben", "m7")
        later = self.messages(conversation, "cat", page_size=5)
        self.assertEqual([m["content"] for m in later], ["m3", "m4", "m5", "m6", "m7"])
        self.assertEqual([m["id"] for m in later[:4]], [m["id"] for m in first[1:]])
        self.assertEqual(later[-1]["senderUsername"], self.users["ben"]["username"])

        self.server.ok("DELETE", f"{CONVERSATIONS}/{conversation}/messages/{sent[6]['id']}", token=self.token["ann"],
                       status=204)
        kept = [m for m in self.messages(conversation) if m["id"] == sent[6]["id"]]
        self.assertEqual([(m["isDeleted"], m["content"]) for m in kept], [(True, "")])


if __name__ == "__main__":
    unittest.main()
