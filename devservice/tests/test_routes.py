"""The stand-in's own rules that the Windows suites, driving every operation through the client, cannot
see: exact filter results, revoked titles, averages, the request rule, conflicts, both download framings."""
from __future__ import annotations

import hashlib
import io
import tempfile
import unittest
import zipfile
from pathlib import Path
from urllib.parse import urlsplit

from support import Server, ServerTestCase, seeded_id

EMBER_KEEP = seeded_id("software", "ember-keep")


class RoutesTest(ServerTestCase):
    def test_catalogue_filters(self) -> None:
        def names(query: str) -> list[str]:
            return [item["name"] for item in self.server.ok("GET", "/api/v1/software?" + query)["items"]]
        everything = names("pageSize=100&sort=name")
        self.assertEqual((len(everything), everything), (33, sorted(everything, key=str.lower)))
        cases = (
            ("pageSize=100&sort=-name", list(reversed(everything))),
            ("pageSize=100&sort=name&category=puzzle", ["Gearwhistle Junction", "Mirrorbound", "Vault of Small Hours"]),
            ("pageSize=100&sort=name&q=browser", ["Lumen Drift", "Mirrorbound"]),
            ("pageSize=100&sort=name&q=KEEP", ["Ember Keep"]),
            ("pageSize=100&sort=name&platform=windows&category=Racing&q=tide", ["Tidebreaker Rally"]),
            ("pageSize=3&sort=name", everything[:3]),
        )
        for query, expected in cases:
            with self.subTest(query):
                self.assertEqual(names(query), expected)
        self.assertEqual(self.server.call("GET", "/api/v1/software?sort=price").status, 400)

    def test_entitlements_and_downloads(self) -> None:
        demo, stranger = self.server.session("demo")["accessToken"], self.server.session("stranger")["accessToken"]
        owned = self.server.ok("GET", "/api/v1/me/entitlements", token=demo)["items"]
        by_title = {item["softwareTitleId"]: item["isRevoked"] for item in owned}
        self.assertEqual((by_title[EMBER_KEEP], by_title[seeded_id("software", "orchard-siege")]), (False, True))
        self.assertEqual(self.server.call("POST", f"/api/v1/software/{EMBER_KEEP}/download", token=stranger).status,
                         403)

        single = self.server.ok("POST", f"/api/v1/software/{EMBER_KEEP}/download", token=demo)
        data = self.fetch(single["downloadUrl"], chunked=False)
        self.assertEqual(hashlib.sha256(data).hexdigest(), single["sha256"])
        self.assertIn("README.txt", zipfile.ZipFile(io.BytesIO(data)).namelist())
        assets = self.server.ok("POST", f"/api/v1/software/{seeded_id('software', 'starfall-courier')}/download",
                                token=demo)
        self.assertEqual([asset["type"] for asset in assets["items"]], ["archive", "data"])
        for asset in assets["items"]:
            self.assertEqual(hashlib.sha256(self.fetch(asset["signedUrl"], chunked=True)).hexdigest(), asset["sha256"])
        forged = urlsplit(single["downloadUrl"])
        forged_path = f"{forged.path}?{forged.query.replace('signature=', 'signature=0')}"
        self.assertEqual(self.server.call("GET", forged_path).status, 403)

    def fetch(self, url: str, chunked: bool) -> bytes:
        parts = urlsplit(url)
        reply = self.server.call("GET", f"{parts.path}?{parts.query}")
        framing = (reply.status, reply.headers.get("Transfer-Encoding") == "chunked", "Content-Length" in reply.headers)
        self.assertEqual(framing, (200, chunked, not chunked))
        return reply.body

    def test_ratings_average_count_and_my_stars(self) -> None:
        first, second = self.server.session("rater1")["accessToken"], self.server.session("rater2")["accessToken"]
        for token, stars, expected in ((first, 5, (5.0, 1, 5)), (second, 2, (3.5, 2, 2)), (first, 3, (2.5, 2, 3))):
            summary = self.server.ok("PUT", "/api/v1/me/ratings", {"gameKey": "steam:77", "stars": stars}, token)
            self.assertEqual((summary["average"], summary["count"], summary["myStars"]), expected)
        listed = self.server.ok("POST", "/api/v1/ratings/query", {"keys": ["steam:77", "steam:78"]}, second)["items"]
        self.assertEqual([(s["gameKey"], s["myStars"], s["count"]) for s in listed],
                         [("steam:77", 2, 2), ("steam:78", -1, 0)])

    def test_friend_requests_become_friendships_when_returned(self) -> None:
        one, two = self.server.session("pal1"), self.server.session("pal2")
        path = "/api/v1/me/friend-requests"
        ask = self.server.ok("POST", path, {"toUserId": two["userId"]}, one["accessToken"], status=201)
        back = self.server.ok("POST", path, {"toUserId": one["userId"]}, two["accessToken"])
        self.assertEqual((ask["status"], back["status"]), ("pending", "accepted"))
        friends = self.server.ok("GET", "/api/v1/me/friends", token=one["accessToken"])["items"]
        self.assertEqual([(f["username"], f["online"], f["currentGame"]) for f in friends], [("pal2", True, "")])
        self.assertEqual(self.server.call("POST", path, {"toUserId": two["userId"]}, one["accessToken"]).status, 409)

    def test_repository_games_conflict_on_the_normalised_address(self) -> None:
        sharer, owner = self.server.session("sharer")["accessToken"], self.server.session("realowner")["accessToken"]
        path = "/api/v1/me/github-games"
        game = self.server.ok("POST", path, {"repoUrl": "https://github.com/Repo-Owner/Space-Game",
                                             "displayName": "Space Game", "launchPath": "web\\index.HTM"},
                              sharer, status=201)
        self.assertEqual((game["isVerifiedOwner"], game["launchPath"]), (False, "web/index.HTM"))
        clash = self.server.call("POST", path, {"repoUrl": "https://www.github.com/repo-owner/space-game.git/",
                                                "displayName": "", "launchPath": ""}, owner)
        body = clash.json()
        self.assertEqual((clash.status, body["error"], body["message"], body["gameId"]),
                         (409, "already_shared", "Already shared by sharer", game["id"]))
        self.assertEqual(self.server.call("DELETE", f"{path}/{game['id']}", token=owner).status, 403)


    def test_the_request_log_keeps_every_call_in_order_and_leaves_hooks_out(self) -> None:
        token = self.server.session("demo")["accessToken"]
        before = len(self.server.ok("GET", "/__test/requests")["items"])
        started = self.server.ok("POST", "/api/v1/activity/external-launches",
                                 {"provider": "itch", "externalSoftwareId": "x"}, token=token, status=201)
        self.server.ok("POST", f"/api/v1/activity/external-launches/{started['launchId']}/end", token=token)
        logged = [item["request"] for item in self.server.ok("GET", "/__test/requests")["items"][before:]]
        self.assertEqual(logged, ["POST /api/v1/activity/external-launches",
                                  f"POST /api/v1/activity/external-launches/{started['launchId']}/end"])


class ProcessTest(unittest.TestCase):
    def test_url_file_no_hooks_and_clean_stop(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            server = Server("--url-file", f"{folder}/url")
            try:
                self.assertEqual(Path(folder, "url").read_text().strip(), server.url)
                self.assertEqual(server.call("POST", "/__test/session", {"username": "x"}).status, 404)
            finally:
                self.assertEqual(server.stop(), 0)



class OfflinePagesTest(unittest.TestCase):
    def test_hosted_games_stay_on_loopback_only_when_asked(self) -> None:
        def hosted(*args: str) -> list[str]:
            server = Server(*args)
            try:
                items = server.ok("GET", "/api/v1/github-games")["items"]
            finally:
                server.stop()
            return [item["launchPath"] for item in items if item["launchPath"].startswith("https://")]
        self.assertEqual(hosted(), ["https://chen-plays.github.io/pixel-garden/"])
        self.assertEqual(hosted("--offline-pages"), ["https://127.0.0.1:1/pixel-garden/"])


class RepositoryHostTest(unittest.TestCase):
    """A loopback git server in github.com's place: every game's repoUrl and the addresses
    the service accepts follow it, and the default comes back when it is cleared."""

    def test_repo_urls_and_accepted_addresses_follow_the_host(self) -> None:
        server = Server("--repository-host", "http://127.0.0.1:4567/", "--test-hooks")
        try:
            def repo_urls() -> list[str]:
                return sorted(item["repoUrl"] for item in server.ok("GET", "/api/v1/github-games")["items"])
            self.assertIn("http://127.0.0.1:4567/alice-codes/tiny-tower", repo_urls())
            token = server.session("sharer")["accessToken"]
            path = "/api/v1/me/github-games"
            cases = (
                ("https://github.com/someone/space", 400, "That doesn't look like a 127.0.0.1:4567 repository "
                                                         "or a *.github.io Pages URL."),
                ("http://127.0.0.1:4567/Someone/Space.git", 201, "http://127.0.0.1:4567/Someone/Space"),
            )
            for address, status, expected in cases:
                with self.subTest(address):
                    reply = server.call("POST", path, {"repoUrl": address, "displayName": "Space",
                                                       "launchPath": "index.html"}, token)
                    self.assertEqual(reply.status, status)
                    self.assertEqual(reply.json()["repoUrl" if status == 201 else "message"], expected)
            server.ok("POST", "/__test/repository-host", {"url": ""})
            self.assertIn("https://github.com/alice-codes/tiny-tower", repo_urls())
            self.assertIn("https://github.com/Someone/Space", repo_urls())
        finally:
            server.stop()

    def test_a_linked_owner_claims_what_another_user_shared(self) -> None:
        server = Server("--test-hooks")
        try:
            owner = server.session("forge")["accessToken"]
            game_id = seeded_id("repo-game", "pixel-forge/orbit-hop")
            claim = f"/api/v1/me/github-games/{game_id}/claim"
            self.assertEqual(server.call("POST", claim, token=owner).json()["error"], "github_not_linked")
            server.ok("POST", "/__test/github-link", {"username": "forge", "login": "Pixel-Forge"})
            self.assertEqual(server.ok("GET", "/api/v1/me/github", token=owner)["login"], "Pixel-Forge")
            claimed = server.ok("POST", claim, token=owner)
            self.assertEqual((claimed["submittedByUsername"], claimed["isVerifiedOwner"]), ("forge", True))
        finally:
            server.stop()


if __name__ == "__main__":
    unittest.main()
