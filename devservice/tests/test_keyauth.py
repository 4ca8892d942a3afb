"""Device-key sign-in against real P-256 keys made by python3-cryptography.

The canonical text is rebuilt from the raw challenge reply the way the client does it
(plain text scanning of the payload object), not from the stand-in's own helper, so a
reply whose payload disagrees with what the stand-in verifies would fail here.
"""
from __future__ import annotations

import base64
import unittest
from urllib.parse import urlsplit

from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec

from support import ServerTestCase

MEMBERS = (("challengeId", "ChallengeId"), ("fingerprint", "Fingerprint"), ("issuer", "Issuer"),
           ("audience", "Audience"), ("expiry", "Expiry"), ("nonce", "Nonce"),
           ("clientTimestamp", "ClientTimestamp"))


def payload_object(text: str) -> str:
    start = text.index("{", text.index('"payload"') + len('"payload"'))
    depth, in_string, escaped = 0, False, False
    for index in range(start, len(text)):
        char = text[index]
        if in_string:
            escaped, in_string = (False, in_string) if escaped else (char == "\\", char != '"')
            continue
        in_string = char == '"'
        depth += {"{": 1, "}": -1}.get(char, 0)
        if depth == 0:
            return text[start:index + 1]
    raise AssertionError("unterminated payload")


def raw_value(text: str, key: str) -> str:
    at = text.index('"', text.index(":", text.index(f'"{key}"')))
    end = at + 1
    while text[end] != '"':
        end += 2 if text[end] == "\\" else 1
    return text[at + 1:end]


def canonical(reply_text: str) -> str:
    obj = payload_object(reply_text)
    return "{" + ",".join(f'"{name}":"{raw_value(obj, key)}"' for key, name in MEMBERS) + "}"


def key_text(key: ec.EllipticCurvePrivateKey) -> str:
    point = key.public_key().public_bytes(serialization.Encoding.X962, serialization.PublicFormat.UncompressedPoint)
    return base64.b64encode(point).decode()


def sign(key: ec.EllipticCurvePrivateKey, text: str) -> str:
    return base64.b64encode(key.sign(text.encode(), ec.ECDSA(hashes.SHA256()))).decode()


class KeySignInTest(ServerTestCase):
    def setUp(self) -> None:
        self.key = ec.generate_private_key(ec.SECP256R1())
        self.other = ec.generate_private_key(ec.SECP256R1())

    def register(self, key: ec.EllipticCurvePrivateKey, email: str) -> dict[str, object]:
        started = self.server.ok("POST", "/api/v1/auth/public-key/register",
                                 {"email": email, "keyType": "ECDSA-P256", "keyData": key_text(key)}, status=201)
        self.assertTrue(started["emailSent"])
        mail = self.server.ok("GET", "/__test/outbox")["items"][-1]
        self.assertEqual(mail["to"], email)
        link = urlsplit(mail["link"])
        return self.server.ok("GET", f"{link.path}?{link.query}")

    def challenge(self, key: ec.EllipticCurvePrivateKey) -> tuple[str, str]:
        reply = self.server.call("POST", "/api/v1/auth/public-key/challenge",
                                 {"keyType": "ECDSA-P256", "keyData": key_text(key)})
        self.assertEqual(reply.status, 200)
        text = reply.body.decode()
        return reply.json()["challengeId"], canonical(text)

    def complete(self, challenge_id: str, signature: str, key: ec.EllipticCurvePrivateKey):
        return self.server.call("POST", "/api/v1/auth/public-key/complete", {
            "challengeId": challenge_id, "signature": signature, "keyType": "ECDSA-P256", "keyData": key_text(key)})

    def test_registered_key_signs_in_and_bad_signatures_are_refused(self) -> None:
        tokens = self.register(self.key, "keyuser@corvandell.test")
        me = self.server.ok("GET", "/api/v1/me", token=str(tokens["accessToken"]))
        self.assertEqual(me["email"], "keyuser@corvandell.test")

        cases = (  # name, signing key, text transform, key claimed, expected status, error
            ("accepted", self.key, lambda t: t, self.key, 200, None),
            ("wrong key", self.other, lambda t: t, self.key, 401, "invalid_signature"),
            ("tampered payload", self.key, lambda t: t.replace('"Nonce":"', '"Nonce":"0'), self.key, 401,
             "invalid_signature"),
            ("other key's challenge", self.other, lambda t: t, self.other, 401, "key_mismatch"),
        )
        for name, signer, transform, claimed, status, error in cases:
            with self.subTest(name):
                challenge_id, text = self.challenge(self.key)
                reply = self.complete(challenge_id, sign(signer, transform(text)), claimed)
                self.assertEqual(reply.status, status, reply.body)
                if error:
                    self.assertEqual(reply.json()["error"], error)
                else:
                    self.assertEqual(reply.json()["userId"], me["id"])

    def test_challenge_is_single_use_and_expires(self) -> None:
        self.register(self.key, "once@corvandell.test")
        challenge_id, text = self.challenge(self.key)
        self.assertEqual(self.complete(challenge_id, sign(self.key, text), self.key).status, 200)
        reused = self.complete(challenge_id, sign(self.key, text), self.key)
        self.assertEqual((reused.status, reused.json()["error"]), (401, "challenge_used"))

        challenge_id, text = self.challenge(self.key)
        self.server.ok("POST", "/__test/clock", {"advanceSeconds": 301})
        late = self.complete(challenge_id, sign(self.key, text), self.key)
        self.assertEqual((late.status, late.json()["error"]), (401, "challenge_expired"))

    def test_unregistered_key_and_reused_link_are_refused(self) -> None:
        challenge_id, text = self.challenge(self.other)
        reply = self.complete(challenge_id, sign(self.other, text), self.other)
        self.assertEqual((reply.status, reply.json()["error"]), (401, "key_not_registered"))

        self.register(self.other, "twice@corvandell.test")
        link = urlsplit(self.server.ok("GET", "/__test/outbox")["items"][-1]["link"])
        self.assertEqual(self.server.call("GET", f"{link.path}?{link.query}").status, 410)

    def test_malformed_keys_are_rejected(self) -> None:
        point = base64.b64decode(key_text(self.key))
        for name, key_data in (("not base64", "***"), ("short", base64.b64encode(point[:33]).decode()),
                               ("off the curve", base64.b64encode(point[:-1] + bytes([point[-1] ^ 1])).decode())):
            with self.subTest(name):
                reply = self.server.call("POST", "/api/v1/auth/public-key/challenge",
                                         {"keyType": "ECDSA-P256", "keyData": key_data})
                self.assertEqual((reply.status, reply.json()["error"]), (400, "invalid_key"))


if __name__ == "__main__":
    unittest.main()
