"""Device-key sign-in with real P-256 keys. The signed text is rebuilt from the raw reply by text
scanning, as the client reads it, so a payload that disagrees with what is verified fails here."""
from __future__ import annotations

import base64
import unittest
from urllib.parse import urlsplit

from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec

from support import ServerTestCase

# The payload's keys in signing order; the signed text names each with a capital first letter.
MEMBERS = ("challengeId", "fingerprint", "issuer", "audience", "expiry", "nonce", "clientTimestamp")


def canonical(reply_text: str) -> str:
    payload = reply_text[reply_text.index('"payload"'):]

    def raw_value(key: str) -> str:
        end = start = payload.index('"', payload.index(":", payload.index(f'"{key}"'))) + 1
        while payload[end] != '"':
            end += 2 if payload[end] == "\\" else 1
        return payload[start:end]
    return "{" + ",".join(f'"{key[0].upper()}{key[1:]}":"{raw_value(key)}"' for key in MEMBERS) + "}"


def key_text(key: ec.EllipticCurvePrivateKey) -> str:
    point = key.public_key().public_bytes(serialization.Encoding.X962, serialization.PublicFormat.UncompressedPoint)
    return base64.b64encode(point).decode()


def sign(key: ec.EllipticCurvePrivateKey, text: str) -> str:
    return base64.b64encode(key.sign(text.encode(), ec.ECDSA(hashes.SHA256()))).decode()


class KeySignInTest(ServerTestCase):
    def setUp(self) -> None:
        self.key, self.other = ec.generate_private_key(ec.SECP256R1()), ec.generate_private_key(ec.SECP256R1())

    def challenge(self, key: ec.EllipticCurvePrivateKey) -> tuple[str, str]:
        reply = self.server.call("POST", "/api/v1/auth/public-key/challenge",
                                 {"keyType": "ECDSA-P256", "keyData": key_text(key)})
        self.assertEqual(reply.status, 200)
        return reply.json()["challengeId"], canonical(reply.body.decode())

    def complete(self, challenge_id: str, signature: str, key: ec.EllipticCurvePrivateKey):
        return self.server.call("POST", "/api/v1/auth/public-key/complete", {
            "challengeId": challenge_id, "signature": signature, "keyType": "ECDSA-P256", "keyData": key_text(key)})

    def refused(self, reply, error: str) -> None:
        self.assertEqual((reply.status, reply.json()["error"]), (401, error))

    def test_registered_key_signs_in_and_bad_signatures_are_refused(self) -> None:
        unregistered_id, text = self.challenge(self.key)
        self.refused(self.complete(unregistered_id, sign(self.key, text), self.key), "key_not_registered")
        started = self.server.ok("POST", "/api/v1/auth/public-key/register", {
            "email": "keyuser@corvandell.test", "keyType": "ECDSA-P256", "keyData": key_text(self.key)}, status=201)
        mail = self.server.ok("GET", "/__test/outbox")["items"][-1]
        self.assertEqual((started["emailSent"], mail["to"]), (True, "keyuser@corvandell.test"))
        link = "{0.path}?{0.query}".format(urlsplit(mail["link"]))
        me = self.server.ok("GET", "/api/v1/me", token=self.server.ok("GET", link)["accessToken"])
        self.assertEqual(me["email"], "keyuser@corvandell.test")
        self.assertEqual(self.server.call("GET", link).status, 410)

        cases = (  # name, signing key, text transform, key claimed, error
            ("wrong key", self.other, lambda t: t, self.key, "invalid_signature"),
            ("tampered payload", self.key, lambda t: t.replace('"Nonce":"', '"Nonce":"0'), self.key,
             "invalid_signature"),
            ("other key's challenge", self.other, lambda t: t, self.other, "key_mismatch"),
        )
        for name, signer, transform, claimed, error in cases:
            with self.subTest(name):
                challenge_id, text = self.challenge(self.key)
                self.refused(self.complete(challenge_id, sign(signer, transform(text)), claimed), error)

        challenge_id, text = self.challenge(self.key)
        accepted = self.complete(challenge_id, sign(self.key, text), self.key)
        self.assertEqual((accepted.status, accepted.json()["userId"]), (200, me["id"]))
        self.refused(self.complete(challenge_id, sign(self.key, text), self.key), "challenge_used")
        challenge_id, text = self.challenge(self.key)
        self.server.ok("POST", "/__test/clock", {"advanceSeconds": 301})
        self.refused(self.complete(challenge_id, sign(self.key, text), self.key), "challenge_expired")

    def test_malformed_keys_are_rejected(self) -> None:
        point = base64.b64decode(key_text(self.key))
        off_curve = point[:-1] + bytes([point[-1] ^ 1])
        for key_data in ("***", base64.b64encode(point[:33]).decode(), base64.b64encode(off_curve).decode()):
            reply = self.server.call("POST", "/api/v1/auth/public-key/challenge",
                                     {"keyType": "ECDSA-P256", "keyData": key_data})
            self.assertEqual((reply.status, reply.json()["error"]), (400, "invalid_key"), key_data)


if __name__ == "__main__":
    unittest.main()
