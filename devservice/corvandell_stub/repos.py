"""Browser games shared from public GitHub repositories.

A shared game is identified by its repository (owner and name, compared without
letter case), so a repository and its *.github.io site are the same game and each
repository can be shared once. Sharing one that another user already shared fails
with 409 {"error":"already_shared", "message":"Already shared by <name>", ...}; the
repository's owner (by the GitHub login linked to the account) can then claim it.
The real service reads name and launch file of an owner's repository from its
corvandell.txt; the stand-in cannot reach GitHub, so an owner's blank fields become
the repository name and "index.html".

The repository host is the service's setting (github.com unless --repository-host names a
loopback git server): addresses are read against its domain, and every game's repoUrl is
made from it when listed, so a store seeded once follows the host of each run.
"""
from __future__ import annotations

import re
from dataclasses import dataclass

from aiohttp import web

from .accounts import current_user, require_user
from .db import Row
from .web import ApiError, Service, body_of, ctx, listing, new_id, no_content, reply, text_field

DEFAULT_REPOSITORY_HOST = "https://github.com"
PAGES_SUFFIX = ".github.io"
OWNER_SHAPE = re.compile(r"^[A-Za-z0-9](?:[A-Za-z0-9-]{0,37}[A-Za-z0-9])?$")
REPO_SHAPE = re.compile(r"^[A-Za-z0-9._-]{1,100}$")
DEFAULT_LAUNCH_FILE = "index.html"


@dataclass
class RepoAddress:
    owner: str
    repo: str
    hosted_url: str  # "" for a repository address, the site address for a Pages address


def strip_scheme(text: str) -> str:
    for scheme in ("https://", "http://"):
        if text.lower().startswith(scheme):
            return text[len(scheme):]
    return text


def host_domain(host_url: str) -> str:
    return strip_scheme(host_url).rstrip("/")


def bad_address_text(host_url: str) -> str:
    return f"That doesn't look like a {host_domain(host_url)} repository or a *{PAGES_SUFFIX} Pages URL."


def repository_url(svc: Service, owner: str, repo: str) -> str:
    return f"{svc.repository_host}/{owner}/{repo}"


def read_repository_address(text: str, host_url: str = DEFAULT_REPOSITORY_HOST) -> RepoAddress | None:
    domain = host_domain(host_url).lower()
    rest = strip_scheme(text.strip())
    if rest.lower().startswith("www."):
        rest = rest[4:]
    if not rest.lower().startswith(domain + "/"):
        return None
    owner, slash, tail = rest[len(domain) + 1:].partition("/")
    if not owner or not slash:
        return None
    repo = tail.split("/", 1)[0]
    if repo.endswith(".git"):
        repo = repo[:-4]
    if not OWNER_SHAPE.match(owner) or not REPO_SHAPE.match(repo) or repo in (".", ".."):
        return None
    return RepoAddress(owner, repo, "")


def read_pages_address(text: str) -> RepoAddress | None:
    rest = strip_scheme(text.strip())
    host = re.split(r"[/?#]", rest, maxsplit=1)[0].lower()
    if not host.endswith(PAGES_SUFFIX):
        return None
    owner = host[:-len(PAGES_SUFFIX)]
    if not OWNER_SHAPE.match(owner):
        return None
    path = re.split(r"[?#]", rest[len(host):], maxsplit=1)[0]
    segments = path.split("/")
    if any(segment in (".", "..") for segment in segments):
        return None
    repo = next((segment for segment in segments if segment), "")
    if repo and not REPO_SHAPE.match(repo):
        return None
    site = f"https://{owner}{PAGES_SUFFIX}/" + (f"{repo}/" if repo else "")
    return RepoAddress(owner, repo or f"{owner}{PAGES_SUFFIX}", site)


def launch_file_valid(text: str) -> bool:
    path = text.strip().replace("\\", "/")
    if not path or path.startswith("/") or (len(path) > 1 and path[1] == ":"):
        return False
    if any(segment in (".", "..") for segment in path.split("/")):
        return False
    return path.lower().endswith((".html", ".htm"))


def game_item(svc: Service, row: Row) -> dict[str, object]:
    submitter = svc.db.one("SELECT username FROM users WHERE id = ?", row["submitted_by"])
    return {
        "id": row["id"],
        "repoUrl": repository_url(svc, row["owner_login"], row["repo_name"]),
        "ownerLogin": row["owner_login"],
        "repoName": row["repo_name"],
        "isVerifiedOwner": bool(row["is_verified_owner"]),
        "submittedByUserId": row["submitted_by"],
        "submittedByUsername": submitter["username"] if submitter else "",
        "createdAt": svc.clock.iso(row["created_at"]),
        "launchPath": row["launch_path"],
        "displayName": row["display_name"],
    }


def linked_login(user: Row) -> str:
    return user["github_login"] if user["github_linked_at"] is not None else ""


def owns(user: Row, owner: str) -> bool:
    login = linked_login(user)
    return bool(login) and login.lower() == owner.lower()


def find_game(svc: Service, game_id: str) -> Row:
    row = svc.db.one("SELECT * FROM repo_games WHERE id = ?", game_id)
    if row is None:
        raise ApiError(404, "game_not_found", "No such shared game.")
    return row


def chosen_fields(address: RepoAddress, is_owner: bool, name: str, launch: str) -> tuple[str, str]:
    """Display name and launch target, with the rules for games the caller does not own."""
    if address.hosted_url:
        if not name and not is_owner:
            raise ApiError(400, "missing_field", "Enter a display name (you don't own this repo).")
        return name or address.repo, address.hosted_url
    if not is_owner and (not name or not launch):
        raise ApiError(400, "missing_field",
                       "Enter a display name and the launch .html file (you don't own this repo).")
    launch = launch.replace("\\", "/") or DEFAULT_LAUNCH_FILE
    if not launch_file_valid(launch):
        raise ApiError(400, "invalid_launch_file", "The launch file must be a repo-relative .html file.")
    return name or address.repo, launch


async def submit(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    body = await body_of(request)
    text = text_field(body, "repoUrl", max_len=300)
    address = read_repository_address(text, svc.repository_host) or read_pages_address(text)
    if address is None:
        raise ApiError(400, "invalid_repo_url", bad_address_text(svc.repository_host))
    is_owner = owns(user, address.owner)
    existing = svc.db.one("SELECT * FROM repo_games WHERE lower(owner_login) = lower(?) "
                          "AND lower(repo_name) = lower(?)", address.owner, address.repo)
    if existing is not None and existing["submitted_by"] != user["id"]:
        holder = game_item(svc, existing)
        raise ApiError(409, "already_shared", f"Already shared by {holder['submittedByUsername']}",
                       submittedByUsername=holder["submittedByUsername"], gameId=existing["id"],
                       id=existing["id"], ownerLogin=existing["owner_login"], repoName=existing["repo_name"])
    name, launch = chosen_fields(address, is_owner, text_field(body, "displayName", required=False).strip(),
                                 text_field(body, "launchPath", required=False, max_len=300).strip())
    if existing is not None:
        svc.db.run("UPDATE repo_games SET display_name = ?, launch_path = ?, is_verified_owner = ? WHERE id = ?",
                   name, launch, int(is_owner or existing["is_verified_owner"]), existing["id"])
        return reply(game_item(svc, find_game(svc, existing["id"])))
    game_id = new_id()
    svc.db.run("INSERT INTO repo_games(id, owner_login, repo_name, repo_url, display_name, launch_path, "
               "submitted_by, is_verified_owner, created_at) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)",
               game_id, address.owner, address.repo, repository_url(svc, address.owner, address.repo),
               name, launch, user["id"], int(is_owner), svc.clock.now())
    return reply(game_item(svc, find_game(svc, game_id)), status=201)


async def claim(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    game = find_game(svc, request.match_info["gameId"])
    if not linked_login(user):
        raise ApiError(403, "github_not_linked", "Link your GitHub account first.")
    if not owns(user, game["owner_login"]):
        raise ApiError(403, "not_repo_owner",
                       f"Your linked GitHub account '{linked_login(user)}' does not own {game['owner_login']}/"
                       f"{game['repo_name']}.")
    svc.db.run("UPDATE repo_games SET submitted_by = ?, is_verified_owner = 1 WHERE id = ?", user["id"], game["id"])
    return reply(game_item(svc, find_game(svc, game["id"])))


async def delete(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    game = find_game(svc, request.match_info["gameId"])
    if game["submitted_by"] != user["id"]:
        raise ApiError(403, "not_your_game", "You can only remove games you shared.")
    svc.db.run("DELETE FROM repo_games WHERE id = ?", game["id"])
    return no_content()


async def list_all(request: web.Request) -> web.Response:
    svc = ctx(request)
    current_user(request, required=False)
    rows = svc.db.all("SELECT * FROM repo_games ORDER BY lower(display_name), id")
    return listing([game_item(svc, row) for row in rows])


async def list_mine(request: web.Request) -> web.Response:
    svc = ctx(request)
    user = require_user(request)
    rows = svc.db.all("SELECT * FROM repo_games WHERE submitted_by = ? ORDER BY lower(display_name), id", user["id"])
    return listing([game_item(svc, row) for row in rows])


def routes() -> list[web.RouteDef]:
    return [
        web.get("/api/v1/github-games", list_all),
        web.get("/api/v1/me/github-games", list_mine),
        web.post("/api/v1/me/github-games", submit),
        web.post("/api/v1/me/github-games/{gameId}/claim", claim),
        web.delete("/api/v1/me/github-games/{gameId}", delete),
    ]
