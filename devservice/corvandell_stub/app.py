"""Builds the aiohttp application: the store, the routes and the middlewares.

The recorder of the test hooks runs outside the error middleware, so a scripted reply
replaces even an error, and the recorded request is the one the client really sent.
"""
from __future__ import annotations

import secrets
from pathlib import Path

from aiohttp import web

from . import accounts, activity, catalogue, keyauth, profile, repos, social, testhooks, voice
from .db import Clock, Db
from .seed import seed_if_empty
from .repos import DEFAULT_REPOSITORY_HOST
from .web import Service, errors_as_json


def signing_key(db: Db) -> bytes:
    """Per-store secret for download links, so links survive a restart of the same store."""
    value = db.scalar("SELECT value FROM meta WHERE key = 'signing_key'")
    if value is None:
        value = secrets.token_hex(32)
        db.run("INSERT INTO meta(key, value) VALUES('signing_key', ?)", value)
    return bytes.fromhex(value)


def open_service(data_dir: Path, test_hooks: bool, offline_pages: bool = False,
                 repository_host: str = DEFAULT_REPOSITORY_HOST) -> Service:
    data_dir.mkdir(parents=True, exist_ok=True)
    db = Db(data_dir / "devservice.sqlite3")
    svc = Service(db=db, clock=Clock(), data_dir=data_dir, signing_key=signing_key(db), test_hooks=test_hooks,
                  offline_pages=offline_pages, repository_host=repository_host.rstrip("/"))
    seed_if_empty(svc)
    return svc


async def close_voice(app: web.Application) -> None:
    await app["service"].voice.close_all()


def create_app(svc: Service) -> web.Application:
    middlewares = [testhooks.recorder, errors_as_json] if svc.test_hooks else [errors_as_json]
    app = web.Application(middlewares=middlewares, client_max_size=8 * 1024 * 1024)
    app["service"] = svc
    for module in (accounts, keyauth, profile, catalogue, activity, social, voice, repos):
        app.add_routes(module.routes())
    if svc.test_hooks:
        app.add_routes(testhooks.routes())
    app.on_shutdown.append(close_voice)
    return app
