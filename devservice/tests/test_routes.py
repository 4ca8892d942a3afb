"""A walk through the client's main operations against one seeded stand-in."""
from __future__ import annotations

import base64
import hashlib
import io
import unittest
import zipfile
from urllib.parse import urlsplit

from support import ServerTestCase, seeded_id

EMBER_KEEP = seeded_id("software", "ember-keep")
STARFALL = seeded_id("software", "starfall-courier")


class RoutesTest(ServerTestCase):
    @classmethod
    def setUpClass(cls) -> None:
        super().setUpClass()
        cls.demo = cls.server.session("demo")["accessToken"]

    def names(self, query: str) -> list[str]:
        return [item["name"] for item in self.server.ok("GET", "/api/v1/software?" + query)["items"]]

    def test_catalogue_filters(self) -> None:
        everything = self.names("pageSize=100&sort=name")
        self.assertEqual(len(everything), 20)
        self.assertEqual(everything, sorted(everything, key=str.lower))
        cases = (
            ("pageSize=100&sort=-name", list(reversed(everything))),
            ("pageSize=100&sort=name&category=puzzle", ["Gearwhistle Junction", "Mirrorbound", "Vault of Small Hours"]),
            ("pageSize=100&sort=name&q=browser", ["Lumen Drift", "Mirrorbound"]),
            ("pageSize=100&sort=name&q=KEEP", ["Ember Keep"]),
            ("pageSize=100&sort=name&platform=web", ["Lumen Drift", "Mirrorbound"]),
            ("pageSize=100&sort=name&platform=windows&category=Racing&q=tide", ["Tidebreaker Rally"]),
            ("pageSize=3&sort=name", everything[:3]),
        )
        for query, expected in cases:
            with self.subTest(query):
                self.assertEqual(self.names(query), expected)
        self.assertEqual(self.server.call("GET", "/api/v1/software?sort=price").status, 400)

    def test_entitlements_builds_and_downloads(self) -> None:
        owned = self.server.ok("GET", "/api/v1/me/entitlements", token=self.demo)["items"]
        by_title = {item["softwareTitleId"]: item["isRevoked"] for item in owned}
        self.assertEqual(by_title[EMBER_KEEP], False)
        self.assertEqual(by_title[seeded_id("software", "orchard-siege")], True)
        self.assertIn(seeded_id("software", "paper-moth"), by_title)  # free titles come with every account

        builds = self.server.ok("GET", f"/api/v1/software/{EMBER_KEEP}/builds?pageSize=1")["items"]
        self.assertEqual([build["version"] for build in builds], ["1.2.0"])

        single = self.server.ok("POST", f"/api/v1/software/{EMBER_KEEP}/download", token=self.demo)
        data = self.fetch(single["downloadUrl"], chunked=False)
        self.assertEqual(hashlib.sha256(data).hexdigest(), single["sha256"])
        self.assertIn("README.txt", zipfile.ZipFile(io.BytesIO(data)).namelist())

        assets = self.server.ok("POST", f"/api/v1/software/{STARFALL}/download", token=self.demo)
        self.assertNotIn("downloadUrl", str(assets))
        self.assertEqual([asset["type"] for asset in assets["items"]], ["archive", "data"])
        for asset in assets["items"]:
            self.assertEqual(hashlib.sha256(self.fetch(asset["signedUrl"], chunked=True)).hexdigest(), asset["sha256"])

        forged = urlsplit(single["downloadUrl"])
        self.assertEqual(self.server.call("GET", f"{forged.path}?{forged.query.replace('signature=', 'signature=0')}")
                         .status, 403)
        stranger = self.server.session("stranger")["accessToken"]
        self.assertEqual(self.server.call("POST", f"/api/v1/software/{EMBER_KEEP}/download", token=stranger).status,
                         403)

    def fetch(self, url: str, chunked: bool) -> bytes:
        parts = urlsplit(url)
        reply = self.server.call("GET", f"{parts.path}?{parts.query}")
        self.assertEqual(reply.status, 200)
        self.assertEqual(reply.headers.get("Transfer-Encoding") == "chunked", chunked)
        self.assertEqual(reply.headers.get("Content-Length") is None, chunked)
        return reply.body

    def test_ratings_average_count_and_my_stars(self) -> None:
        first, second = self.server.session("rater1")["accessToken"], self.server.session("rater2")["accessToken"]
        steps = ((first, 5, 5.0, 1, 5), (second, 2, 3.5, 2, 2), (first, 3, 2.5, 2, 3))
        for token, stars, average, count, mine in steps:
            summary = self.server.ok("PUT", "/api/v1/me/ratings", {"gameKey": "steam:77", "stars": stars}, token)
            self.assertEqual((summary["average"], summary["count"], summary["myStars"]), (average, count, mine))
        listed = self.server.ok("POST", "/api/v1/ratings/query", {"keys": ["steam:77", "steam:78"]}, second)["items"]
        self.assertEqual([(s["gameKey"], s["myStars"], s["count"]) for s in listed],
                         [("steam:77", 2, 2), ("steam:78", -1, 0)])
        self.assertEqual(self.server.call("PUT", "/api/v1/me/ratings", {"gameKey": "x", "stars": 6}, first).status,
                         400)

    def test_friend_requests_conversations_and_messages(self) -> None:
        one, two = self.server.session("pal1"), self.server.session("pal2")
        ask = self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": two["userId"]}, one["accessToken"],
                             status=201)
        self.assertEqual(ask["status"], "pending")
        self.assertEqual(self.server.ok("GET", "/api/v1/me/friends", token=two["accessToken"])["items"], [])
        back = self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": one["userId"]}, two["accessToken"])
        self.assertEqual(back["status"], "accepted")
        friends = self.server.ok("GET", "/api/v1/me/friends", token=one["accessToken"])["items"]
        self.assertEqual([(f["username"], f["online"], f["currentGame"]) for f in friends], [("pal2", True, "")])
        again = self.server.call("POST", "/api/v1/me/friend-requests", {"toUserId": two["userId"]}, one["accessToken"])
        self.assertEqual(again.status, 409)

        opened = self.server.ok("POST", "/api/v1/chat/conversations", {"friendUserId": two["userId"]},
                                one["accessToken"], status=201)
        self.assertEqual((opened["type"], opened["otherParticipant"]["username"]), ("direct", "pal2"))
        reopened = self.server.ok("POST", "/api/v1/chat/conversations", {"friendUserId": one["userId"]},
                                  two["accessToken"])
        self.assertEqual(reopened["id"], opened["id"])
        path = f"/api/v1/chat/conversations/{opened['id']}/messages"
        texts = ['say "hi"\nnext line', "tab\there", "café", "four", "five"]
        sent = [self.server.ok("POST", path, {"content": text}, one["accessToken"], status=201) for text in texts]
        page = self.server.ok("GET", path + "?pageSize=2", token=two["accessToken"])
        self.assertEqual(([m["content"] for m in page["items"]], page["hasMore"]), (["four", "five"], True))
        older = self.server.ok("GET", f"{path}?pageSize=100&before={page['nextBefore']}", token=two["accessToken"])
        self.assertEqual([m["content"] for m in older["items"]], texts[:3])
        self.server.ok("DELETE", f"{path}/{sent[0]['id']}", token=one["accessToken"], status=204)
        first = self.server.ok("GET", path + "?pageSize=100", token=two["accessToken"])["items"][0]
        self.assertEqual((first["isDeleted"], first["content"], first["senderUsername"]), (True, "", "pal1"))
        outsider = self.server.session("outsider")["accessToken"]
        self.assertEqual(self.server.call("GET", path, token=outsider).status, 404)

    def test_repository_game_conflict_and_claim(self) -> None:
        sharer, owner = self.server.session("sharer"), self.server.session("realowner")
        game = self.server.ok("POST", "/api/v1/me/github-games", {
            "repoUrl": "https://github.com/Repo-Owner/Space-Game", "displayName": "Space Game",
            "launchPath": "web\\index.HTM"}, sharer["accessToken"], status=201)
        self.assertEqual((game["isVerifiedOwner"], game["launchPath"]), (False, "web/index.HTM"))

        clash = self.server.call("POST", "/api/v1/me/github-games", {
            "repoUrl": "https://www.github.com/repo-owner/space-game.git/", "displayName": "", "launchPath": ""},
            owner["accessToken"])
        body = clash.json()
        self.assertEqual((clash.status, body["error"], body["message"]),
                         (409, "already_shared", "Already shared by sharer"))
        self.assertEqual(body["gameId"], game["id"])

        claim = f"/api/v1/me/github-games/{game['id']}/claim"
        refused = self.server.call("POST", claim, token=owner["accessToken"]).json()
        self.assertEqual(refused["error"], "github_not_linked")
        start = self.server.call("GET", "/api/v1/auth/oauth/github/authorize?link=true", token=owner["accessToken"])
        self.assertEqual(start.status, 302)
        login_page = urlsplit(start.headers["Location"])
        self.assertEqual(self.server.call("GET", f"{login_page.path}?{login_page.query}&login=repo-owner").status, 200)
        self.assertEqual(self.server.ok("GET", "/api/v1/me/github", token=owner["accessToken"])["login"], "repo-owner")
        claimed = self.server.ok("POST", claim, token=owner["accessToken"])
        self.assertEqual((claimed["isVerifiedOwner"], claimed["submittedByUsername"]), (True, "realowner"))

        delete = f"/api/v1/me/github-games/{game['id']}"
        self.assertEqual(self.server.call("DELETE", delete, token=sharer["accessToken"]).status, 403)
        self.server.ok("DELETE", delete, token=owner["accessToken"], status=204)
        for url, name, launch in (("https://gitlab.com/a/b", "A", "a.html"), ("github.com/a/b", "A", "../a.html"),
                                  ("github.com/a/b", "", "a.html")):
            with self.subTest(url=url, launch=launch):
                reply = self.server.call("POST", "/api/v1/me/github-games",
                                         {"repoUrl": url, "displayName": name, "launchPath": launch},
                                         sharer["accessToken"])
                self.assertEqual(reply.status, 400)

    def test_launch_sessions_feed_presence_and_playtime(self) -> None:
        player, watcher = self.server.session("player"), self.server.session("watcher")
        self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": watcher["userId"]}, player["accessToken"],
                       status=201)
        self.server.ok("POST", "/api/v1/me/friend-requests", {"toUserId": player["userId"]}, watcher["accessToken"])
        launch = self.server.ok("POST", f"/api/v1/software/{EMBER_KEEP}/launch", token=player["accessToken"],
                                status=201)
        friend = self.server.ok("GET", "/api/v1/me/friends", token=watcher["accessToken"])["items"][0]
        self.assertEqual(friend["currentGame"], "Ember Keep")
        self.server.ok("POST", "/__test/clock", {"advanceSeconds": 150})
        self.server.ok("POST", f"/api/v1/activity/launches/{launch['launchId']}/end", token=player["accessToken"])
        self.assertEqual(self.server.call("POST", f"/api/v1/activity/launches/{launch['launchId']}/end",
                                          token=player["accessToken"]).status, 409)
        mine = self.server.ok("GET", f"/api/v1/activity/software/{EMBER_KEEP}/playtime", token=player["accessToken"])
        self.assertEqual((mine["totalMinutes"], mine["totalSeconds"] // 10), (2, 15))

        external = self.server.ok("POST", "/api/v1/activity/external-launches",
                                  {"provider": "epic", "externalSoftwareId": "fern", "name": "Fern Valley"},
                                  player["accessToken"], status=201)
        self.server.ok("POST", "/__test/clock", {"advanceSeconds": 61})
        self.server.ok("POST", f"/api/v1/activity/external-launches/{external['launchId']}/end",
                       token=player["accessToken"])
        rows = self.server.ok("GET", "/api/v1/activity/external/friends-playtime?provider=epic&externalId=fern&top=3",
                              token=watcher["accessToken"])["items"]
        self.assertEqual([(r["username"], r["minutes"]) for r in rows], [("player", 1)])
        self.server.ok("PUT", "/api/v1/me/ratings", {"gameKey": "epic:fern", "stars": 4}, player["accessToken"])
        feed = self.server.ok("GET", "/api/v1/activity/game-feed?key=epic%3Afern&limit=5",
                              token=watcher["accessToken"])["items"]
        self.assertEqual([(e["type"], e["minutes"], e["stars"]) for e in feed], [("rate", 0, 4), ("play", 1, 0)])

    def test_profile_avatar_and_google_redirect(self) -> None:
        me = self.server.session("painter")
        token = me["accessToken"]
        self.server.ok("PATCH", "/api/v1/me", {"nickname": "Brush", "metadata": '{"overlayHintShown":true}'}, token)
        profile = self.server.ok("GET", "/api/v1/me", token=token)
        self.assertEqual((profile["nickname"], profile["metadata"]), ("Brush", '{"overlayHintShown":true}'))
        png = b"\x89PNG\r\n\x1a\n" + bytes(range(40))
        self.server.ok("PUT", "/api/v1/me/avatar", {"imageBase64": base64.b64encode(png).decode()}, token, status=204)
        self.assertEqual(self.server.call("GET", f"/api/v1/users/{me['userId']}/avatar", token=self.demo).body, png)
        self.assertEqual(self.server.call("PUT", "/api/v1/me/avatar", {"imageBase64": "aGVsbG8="}, token).status, 400)

        redirect = self.server.call("GET", "/api/v1/auth/oauth/google/authorize?login_hint=painter")
        location = redirect.headers["Location"]
        self.assertTrue(location.startswith("http://127.0.0.1:38517/#"), location)
        fields = dict(pair.split("=", 1) for pair in location.split("#", 1)[1].split("&"))
        self.assertEqual(self.server.ok("GET", "/api/v1/me", token=fields["access_token"])["username"], "painter")
        self.server.ok("POST", "/api/v1/auth/refresh", {"refreshToken": fields["refresh_token"]})


if __name__ == "__main__":
    unittest.main()
