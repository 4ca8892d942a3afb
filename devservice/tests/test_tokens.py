"""Bearer authentication and refresh-token rotation.

Rule under test: a refresh revokes the used pair at once (old access and old refresh
both refused), the new pair works, and a token past its lifetime is refused with
token_expired while its refresh token can still renew the session.
"""
from __future__ import annotations

import unittest

from support import ServerTestCase


class TokenTest(ServerTestCase):
    def test_refresh_rotates_the_pair(self) -> None:
        first = self.server.session("rotor")
        second = self.server.ok("POST", "/api/v1/auth/refresh", {"refreshToken": first["refreshToken"]})
        self.assertEqual(second["userId"], first["userId"])
        self.assertNotEqual(second["accessToken"], first["accessToken"])
        self.assertNotEqual(second["refreshToken"], first["refreshToken"])

        reused = self.server.call("POST", "/api/v1/auth/refresh", {"refreshToken": first["refreshToken"]})
        self.assertEqual((reused.status, reused.json()["error"]), (401, "refresh_token_used"))
        self.assertEqual(self.server.call("GET", "/api/v1/me", token=first["accessToken"]).status, 401)
        self.assertEqual(self.server.ok("GET", "/api/v1/me", token=second["accessToken"])["username"], "rotor")
        self.server.ok("POST", "/api/v1/auth/refresh", {"refreshToken": second["refreshToken"]})

    def test_authenticated_routes_refuse_missing_and_unknown_tokens(self) -> None:
        routes = (("GET", "/api/v1/me"), ("GET", "/api/v1/me/friends"), ("POST", "/api/v1/software/x/launch"),
                  ("PUT", "/api/v1/me/ratings"), ("GET", "/api/v1/me/entitlements"))
        for method, path in routes:
            for token, error in (("", "missing_token"), ("cva_unknown", "invalid_token")):
                with self.subTest(method=method, path=path, token=token):
                    reply = self.server.call(method, path, token=token)
                    self.assertEqual((reply.status, reply.json()["error"]), (401, error))
                    self.assertEqual(reply.headers["WWW-Authenticate"], "Bearer")
        self.assertEqual(self.server.call("GET", "/api/v1/software?pageSize=100&sort=name").status, 200)

    def test_expired_access_token_is_refused_until_refreshed(self) -> None:
        tokens = self.server.session("sleeper")
        self.server.ok("POST", "/__test/clock", {"advanceSeconds": 3601})
        expired = self.server.call("GET", "/api/v1/me", token=tokens["accessToken"])
        self.assertEqual((expired.status, expired.json()["error"]), (401, "token_expired"))
        renewed = self.server.ok("POST", "/api/v1/auth/refresh", {"refreshToken": tokens["refreshToken"]})
        self.server.ok("GET", "/api/v1/me", token=renewed["accessToken"])


if __name__ == "__main__":
    unittest.main()
