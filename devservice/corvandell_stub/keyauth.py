"""Password-free sign-in with a device key, and linking a new key by e-mail.

The challenge's payload object carries seven string members; the client rebuilds
them into one canonical text ({"ChallengeId":"...",...} in a fixed order, no spaces)
and signs its UTF-8 bytes with ECDSA P-256 / SHA-256. The stand-in keeps the exact
canonical text it expects next to the challenge, so verification never depends on
how the reply happened to be serialised. Every value is chosen from characters that
need no JSON escaping, which keeps the client's raw copy and ours identical.

A challenge is consumed by the first completion attempt, good or bad, so a captured
signature cannot be replayed and a wrong one cannot be retried. No mail is sent:
registration appends the verification message to outbox.jsonl in the data folder.
"""
from __future__ import annotations

import base64
import binascii
import hashlib
import json
import re
import secrets

from aiohttp import web
from cryptography.exceptions import InvalidSignature
from cryptography.hazmat.primitives import hashes
from cryptography.hazmat.primitives.asymmetric import ec

from .accounts import create_user, issue_tokens, unique_username
from .web import ApiError, Service, base_url, body_of, ctx, dump, html_page, new_id, reply, text_field

KEY_TYPE = "ECDSA-P256"
AUDIENCE = "corvandell-client"
CHALLENGE_TTL_SECONDS = 300
REGISTRATION_TTL_SECONDS = 24 * 3600
PAYLOAD_MEMBERS = (
    ("challengeId", "ChallengeId"),
    ("fingerprint", "Fingerprint"),
    ("issuer", "Issuer"),
    ("audience", "Audience"),
    ("expiry", "Expiry"),
    ("nonce", "Nonce"),
    ("clientTimestamp", "ClientTimestamp"),
)
EMAIL_SHAPE = re.compile(r"^[^@\s]+@[^@\s]+\.[^@\s]+$")


def canonical_text(payload: dict[str, str]) -> str:
    """The exact text the client signs for a payload object."""
    return "{" + ",".join(f'"{name}":"{payload[key]}"' for key, name in PAYLOAD_MEMBERS) + "}"


def public_key_of(body: dict[str, object]) -> tuple[str, ec.EllipticCurvePublicKey]:
    """Validates keyType/keyData: base64 of the 65-byte uncompressed P-256 point."""
    key_type = text_field(body, "keyType")
    if key_type != KEY_TYPE:
        raise ApiError(400, "unsupported_key_type", f"Only {KEY_TYPE} keys are accepted.")
    key_data = text_field(body, "keyData", max_len=200)
    try:
        point = base64.b64decode(key_data, validate=True)
    except binascii.Error:
        raise ApiError(400, "invalid_key", "keyData is not valid base64.") from None
    if len(point) != 65 or point[0] != 4:
        raise ApiError(400, "invalid_key", "keyData must be the 65-byte uncompressed public point.")
    try:
        return key_data, ec.EllipticCurvePublicKey.from_encoded_point(ec.SECP256R1(), point)
    except ValueError:
        raise ApiError(400, "invalid_key", "keyData is not a point on the P-256 curve.") from None


def fingerprint(key_data: str) -> str:
    return hashlib.sha256(base64.b64decode(key_data)).hexdigest()


async def challenge(request: web.Request) -> web.Response:
    svc = ctx(request)
    key_data, _ = public_key_of(await body_of(request))
    now = svc.clock.now()
    challenge_id = new_id()
    payload = {
        "challengeId": challenge_id,
        "fingerprint": fingerprint(key_data),
        "issuer": base_url(request),
        "audience": AUDIENCE,
        "expiry": svc.clock.iso(now + CHALLENGE_TTL_SECONDS),
        "nonce": secrets.token_hex(16),
        "clientTimestamp": svc.clock.iso(now),
    }
    svc.db.run(
        "INSERT INTO challenges(id, key_data, canonical, expires_at) VALUES(?, ?, ?, ?)",
        challenge_id, key_data, canonical_text(payload), now + CHALLENGE_TTL_SECONDS,
    )
    return reply({"challengeId": challenge_id, "payload": payload, "algorithm": "ES256"})


def verify_signature(key: ec.EllipticCurvePublicKey, signature_b64: str, message: str) -> bool:
    try:
        signature = base64.b64decode(signature_b64, validate=True)
        key.verify(signature, message.encode("utf-8"), ec.ECDSA(hashes.SHA256()))
    except (binascii.Error, InvalidSignature, ValueError):
        return False
    return True


async def complete(request: web.Request) -> web.Response:
    svc = ctx(request)
    body = await body_of(request)
    challenge_id = text_field(body, "challengeId")
    signature = text_field(body, "signature", max_len=200)
    key_data, key = public_key_of(body)
    row = svc.db.one("SELECT * FROM challenges WHERE id = ?", challenge_id)
    if row is None:
        raise ApiError(401, "unknown_challenge", "The challenge is unknown.")
    if row["used"]:
        raise ApiError(401, "challenge_used", "The challenge was already used; request a new one.")
    svc.db.run("UPDATE challenges SET used = 1 WHERE id = ?", challenge_id)
    if row["expires_at"] <= svc.clock.now():
        raise ApiError(401, "challenge_expired", "The challenge has expired; request a new one.")
    if row["key_data"] != key_data:
        raise ApiError(401, "key_mismatch", "The challenge was issued for a different key.")
    if not verify_signature(key, signature, row["canonical"]):
        raise ApiError(401, "invalid_signature", "The signature does not match the challenge.")
    link = svc.db.one("SELECT user_id FROM device_keys WHERE key_data = ?", key_data)
    if link is None:
        raise ApiError(401, "key_not_registered", "This key is not linked to an account yet.")
    return reply(issue_tokens(svc, link["user_id"]))


def write_outbox(svc: Service, message: dict[str, object]) -> None:
    with svc.outbox_path.open("a", encoding="utf-8") as outbox:
        outbox.write(dump(message) + "\n")


async def register(request: web.Request) -> web.Response:
    svc = ctx(request)
    body = await body_of(request)
    email = text_field(body, "email").strip()
    if not EMAIL_SHAPE.match(email):
        raise ApiError(400, "invalid_email", "Enter a valid e-mail address.")
    key_data, _ = public_key_of(body)
    now = svc.clock.now()
    registration_id, token = new_id(), secrets.token_urlsafe(24)
    svc.db.run(
        "INSERT INTO registrations(id, token, email, key_data, created_at, expires_at) VALUES(?, ?, ?, ?, ?, ?)",
        registration_id, token, email, key_data, now, now + REGISTRATION_TTL_SECONDS,
    )
    link = f"{base_url(request)}/api/v1/auth/public-key/verify?token={token}"
    write_outbox(svc, {
        "sentAt": svc.clock.iso(now),
        "to": email,
        "subject": "Verify your Corvandell device",
        "registrationId": registration_id,
        "token": token,
        "link": link,
        "text": f"Open this link to sign in on your new device: {link}",
    })
    return reply({
        "registrationId": registration_id,
        "email": email,
        "emailSent": True,
        "message": f"Verification email sent to {email}.",
    }, status=201)


def account_for_email(svc: Service, email: str) -> str:
    row = svc.db.one("SELECT id FROM users WHERE email = ?", email)
    if row is not None:
        return row["id"]
    return create_user(svc, unique_username(svc, email.split("@")[0]), email)["id"]


async def verify(request: web.Request) -> web.Response:
    svc = ctx(request)
    token = request.query.get("token", "")
    row = svc.db.one("SELECT * FROM registrations WHERE token = ?", token)
    if row is None:
        raise ApiError(400, "invalid_token", "The verification link is not valid.")
    if row["used_at"] is not None:
        raise ApiError(410, "token_used", "The verification link was already used.")
    now = svc.clock.now()
    if row["expires_at"] <= now:
        raise ApiError(410, "token_expired", "The verification link has expired; request a new one.")
    with svc.db.transaction():
        user_id = account_for_email(svc, row["email"])
        svc.db.run(
            "INSERT OR REPLACE INTO device_keys(key_data, user_id, linked_at) VALUES(?, ?, ?)",
            row["key_data"], user_id, now,
        )
        svc.db.run("UPDATE registrations SET used_at = ? WHERE id = ?", now, row["id"])
        tokens = issue_tokens(svc, user_id)
    if wants_html(request):
        return html_page("Corvandell", "<h2>Device verified</h2><p>Return to the Corvandell app: "
                                       "it finishes signing in by itself.</p>")
    return reply(tokens)


def wants_html(request: web.Request) -> bool:
    """A browser opening the mailed link gets a page; the client (Accept: application/json) gets tokens."""
    accept = request.headers.get("Accept", "")
    return "text/html" in accept and "application/json" not in accept


def read_outbox(svc: Service) -> list[dict[str, object]]:
    if not svc.outbox_path.exists():
        return []
    lines = svc.outbox_path.read_text(encoding="utf-8").splitlines()
    return [json.loads(line) for line in lines if line.strip()]


def routes() -> list[web.RouteDef]:
    return [
        web.post("/api/v1/auth/public-key/challenge", challenge),
        web.post("/api/v1/auth/public-key/complete", complete),
        web.post("/api/v1/auth/public-key/register", register),
        web.get("/api/v1/auth/public-key/verify", verify),
    ]
