"""The software catalogue, entitlements, builds, download grants and the files themselves.

Download grants come in the two shapes the client accepts, chosen per title: a single
"downloadUrl" or a list of assets with "signedUrl". Either way the address is a
short-lived HMAC-signed link back to this stand-in, so a stale or edited link fails
like a real CDN link would. Some titles are sent with a Content-Length and some with
chunked transfer encoding, because the client must show progress in both cases.
"""
from __future__ import annotations

import hashlib
import hmac
import json
from urllib.parse import quote

from aiohttp import web

from .accounts import current_user, require_user
from .db import Row
from .payloads import asset_bytes
from .web import ApiError, Service, base_url, ctx, listing, query_int, reply

SORTS = {
    "name": "lower(s.name) ASC, s.id ASC",
    "-name": "lower(s.name) DESC, s.id ASC",
    "newest": "s.created_at DESC, s.id ASC",
    "rating": "(SELECT AVG(stars) FROM ratings r WHERE r.game_key = s.id) DESC, lower(s.name) ASC",
}
GRANT_TTL_SECONDS = 900
CHUNK_BYTES = 16 * 1024


def software_item(row: Row) -> dict[str, object]:
    return {
        "id": row["id"],
        "name": row["name"],
        "publisherId": row["publisher_id"],
        "category": row["category"],
        "platform": row["platform"],
        "releaseStatus": row["release_status"],
        "tags": json.loads(row["tags"]),
        "isFree": bool(row["is_free"]),
        "description": row["description"],
    }


def find_software(svc: Service, software_id: str) -> Row:
    row = svc.db.one("SELECT * FROM software WHERE id = ?", software_id)
    if row is None:
        raise ApiError(404, "software_not_found", "No such software title.")
    return row


async def list_software(request: web.Request) -> web.Response:
    svc = ctx(request)
    current_user(request, required=False)
    sort = request.query.get("sort", "name") or "name"
    if sort not in SORTS:
        raise ApiError(400, "invalid_query", f"Unknown sort '{sort}'; use one of {', '.join(SORTS)}.")
    page_size = query_int(request, "pageSize", 20, 1, 100)
    page = query_int(request, "page", 1, 1, 10_000)
    where, args = ["1 = 1"], []
    if q := request.query.get("q", "").strip().lower():
        where.append("(instr(lower(s.name), ?) > 0 OR instr(lower(s.description), ?) > 0 "
                     "OR instr(lower(s.tags), ?) > 0)")
        args += [q, q, q]
    for key, column in (("category", "s.category"), ("platform", "s.platform")):
        if value := request.query.get(key, "").strip():
            where.append(f"lower({column}) = lower(?)")
            args.append(value)
    condition = " AND ".join(where)
    total = svc.db.scalar(f"SELECT COUNT(*) FROM software s WHERE {condition}", *args)
    rows = svc.db.all(f"SELECT * FROM software s WHERE {condition} ORDER BY {SORTS[sort]} LIMIT ? OFFSET ?",
                      *args, page_size, (page - 1) * page_size)
    return listing([software_item(row) for row in rows], page=page, pageSize=page_size, totalCount=total)


async def get_software(request: web.Request) -> web.Response:
    current_user(request, required=False)
    return reply(software_item(find_software(ctx(request), request.match_info["softwareId"])))


async def list_entitlements(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    rows = svc.db.all("SELECT * FROM entitlements WHERE user_id = ? ORDER BY granted_at, id", user["id"])
    return listing([{
        "id": row["id"],
        "userId": row["user_id"],
        "softwareTitleId": row["software_id"],
        "isRevoked": bool(row["is_revoked"]),
        "source": row["source"],
        "grantedAt": svc.clock.iso(row["granted_at"]),
    } for row in rows])


def build_item(svc: Service, software: Row, row: Row) -> dict[str, object]:
    assets = svc.db.all("SELECT * FROM assets WHERE build_id = ?", row["id"])
    size = sum(len(file_content(svc, software, row, asset)) for asset in assets)
    return {
        "id": row["id"],
        "softwareId": row["software_id"],
        "version": row["version"],
        "channel": row["channel"],
        "createdAt": svc.clock.iso(row["created_at"]),
        "sizeBytes": size,
    }


async def list_builds(request: web.Request) -> web.Response:
    svc = ctx(request)
    current_user(request, required=False)
    software = find_software(svc, request.match_info["softwareId"])
    page_size = query_int(request, "pageSize", 20, 1, 100)
    rows = svc.db.all("SELECT * FROM builds WHERE software_id = ? ORDER BY created_at DESC LIMIT ?",
                      software["id"], page_size)
    total = svc.db.scalar("SELECT COUNT(*) FROM builds WHERE software_id = ?", software["id"])
    return listing([build_item(svc, software, row) for row in rows], pageSize=page_size, totalCount=total)


def signature(svc: Service, build_id: str, asset_name: str, expires: int) -> str:
    message = f"{build_id}/{asset_name}/{expires}".encode()
    return hmac.new(svc.signing_key, message, hashlib.sha256).hexdigest()


def signed_url(request: web.Request, build_id: str, asset_name: str, expires: int) -> str:
    sig = signature(ctx(request), build_id, asset_name, expires)
    return (f"{base_url(request)}/downloads/{build_id}/{quote(asset_name)}"
            f"?expires={expires}&signature={sig}")


def file_content(svc: Service, software: Row, build: Row, asset: Row) -> bytes:
    cache_key = f"{build['id']}/{asset['name']}"
    if cache_key not in svc.file_cache:
        svc.file_cache[cache_key] = asset_bytes(software["name"], software["slug"], build["version"],
                                                asset["name"], asset["type"], asset["size_bytes"])
    return svc.file_cache[cache_key]


async def request_download(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    software = find_software(svc, request.match_info["softwareId"])
    owned = svc.db.one("SELECT 1 FROM entitlements WHERE user_id = ? AND software_id = ? AND is_revoked = 0",
                       user["id"], software["id"])
    if owned is None:
        raise ApiError(403, "not_entitled", "You do not own this title.")
    build = svc.db.one("SELECT * FROM builds WHERE software_id = ? ORDER BY created_at DESC LIMIT 1",
                       software["id"])
    if build is None:
        raise ApiError(404, "no_builds", "This title has no downloadable build yet.")
    expires = int(svc.clock.now()) + GRANT_TTL_SECONDS
    assets = svc.db.all("SELECT * FROM assets WHERE build_id = ? ORDER BY rowid", build["id"])
    described = [{
        "assetId": asset["name"],
        "type": asset["type"],
        "signedUrl": signed_url(request, build["id"], asset["name"], expires),
        "sha256": hashlib.sha256(file_content(svc, software, build, asset)).hexdigest(),
        "sizeBytes": len(file_content(svc, software, build, asset)),
    } for asset in assets]
    if software["grant_form"] == "url":
        only = described[0]
        return reply({"downloadUrl": only["signedUrl"], "buildId": build["id"], "version": build["version"],
                      "sha256": only["sha256"], "sizeBytes": only["sizeBytes"],
                      "expiresAt": svc.clock.iso(expires)})
    return listing(described, buildId=build["id"], version=build["version"], expiresAt=svc.clock.iso(expires))


async def serve_file(request: web.Request) -> web.StreamResponse:
    """The signed link target; the signature, not a bearer token, authorises it."""
    svc = ctx(request)
    build_id, asset_name = request.match_info["buildId"], request.match_info["assetName"]
    try:
        expires = int(request.query.get("expires", ""))
    except ValueError:
        raise ApiError(403, "invalid_signature", "The download link is not valid.") from None
    expected = signature(svc, build_id, asset_name, expires)
    if not hmac.compare_digest(expected, request.query.get("signature", "")):
        raise ApiError(403, "invalid_signature", "The download link is not valid.")
    if expires <= svc.clock.now():
        raise ApiError(403, "link_expired", "The download link has expired.")
    build = svc.db.one("SELECT * FROM builds WHERE id = ?", build_id)
    asset = svc.db.one("SELECT * FROM assets WHERE build_id = ? AND name = ?", build_id, asset_name)
    if build is None or asset is None:
        raise ApiError(404, "not_found", "No such file.")
    software = find_software(svc, build["software_id"])
    data = file_content(svc, software, build, asset)
    if software["transfer"] == "length":
        return web.Response(body=data, content_type="application/octet-stream")
    response = web.StreamResponse(headers={"Content-Type": "application/octet-stream"})
    response.enable_chunked_encoding()
    await response.prepare(request)
    for start in range(0, len(data), CHUNK_BYTES):
        await response.write(data[start:start + CHUNK_BYTES])
    await response.write_eof()
    return response


def routes() -> list[web.RouteDef]:
    return [
        web.get("/api/v1/software", list_software),
        web.get("/api/v1/software/{softwareId}", get_software),
        web.get("/api/v1/software/{softwareId}/builds", list_builds),
        web.post("/api/v1/software/{softwareId}/download", request_download),
        web.get("/api/v1/me/entitlements", list_entitlements),
        web.get("/downloads/{buildId}/{assetName}", serve_file),
    ]
