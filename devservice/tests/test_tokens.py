"""Bearer authentication: a refresh revokes the used pair at once, and an expired access token is refused
while its refresh token can still renew the session."""
from __future__ import annotations

import unittest

from support import ServerTestCase


class TokenTest(ServerTestCase):
    def test_refresh_rotates_the_pair(self) -> None:
        first = self.server.session("rotor")
        second = self.server.ok("POST", "/api/v1/auth/refresh", {"refreshToken": first["refreshToken"]})
        self.assertEqual(second["userId"], first["userId"])
        reused = self.server.call("POST", "/api/v1/auth/refresh", {"refreshToken": first["refreshToken"]})
        self.assertEqual((reused.status, reused.json()["error"]), (401, "refresh_token_used"))
        self.assertEqual(self.server.call("GET", "/api/v1/me", token=first["accessToken"]).status, 401)
        self.assertEqual(self.server.ok("GET", "/api/v1/me", token=second["accessToken"])["username"], "rotor")

    def test_authenticated_routes_refuse_missing_unknown_and_expired_tokens(self) -> None:
        for method, path in (("GET", "/api/v1/me/friends"), ("POST", "/api/v1/software/x/launch"),
                             ("PUT", "/api/v1/me/ratings")):
            for token, error in (("", "missing_token"), ("cva_unknown", "invalid_token")):
                with self.subTest(method=method, path=path, token=token):
                    reply = self.server.call(method, path, token=token)
                    self.assertEqual((reply.status, reply.json()["error"]), (401, error))
                    self.assertEqual(reply.headers["WWW-Authenticate"], "Bearer")

        # The browser sign-in makes the account and hands its pair over in the redirect's fragment.
        hint = "login_hint=sleeper%40corvandell.test"
        location = self.server.call("GET", "/api/v1/auth/oauth/google/authorize?" + hint).headers["Location"]
        self.assertTrue(location.startswith("http://127.0.0.1:38517/#"), location)
        tokens = dict(pair.split("=", 1) for pair in location.split("#", 1)[1].split("&"))
        self.assertEqual(self.server.ok("GET", "/api/v1/me", token=tokens["access_token"])["username"], "sleeper")
        self.server.ok("POST", "/__test/clock", {"advanceSeconds": 3601})
        expired = self.server.call("GET", "/api/v1/me", token=tokens["access_token"])
        self.assertEqual((expired.status, expired.json()["error"]), (401, "token_expired"))
        renewed = self.server.ok("POST", "/api/v1/auth/refresh", {"refreshToken": tokens["refresh_token"]})
        self.server.ok("GET", "/api/v1/me", token=renewed["accessToken"])


if __name__ == "__main__":
    unittest.main()
