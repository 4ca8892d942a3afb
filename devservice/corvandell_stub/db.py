"""The sqlite store: schema, a thin query helper and the service clock.

All state lives in one file so that a stopped stand-in resumes exactly where it was
and a test can start from an empty folder. The connection runs in autocommit mode;
operations that touch several rows wrap them in `transaction()` so a failed request
leaves nothing half written. Times are stored as Unix seconds (REAL) and read through
`Clock`, whose offset lets tests move time forward without sleeping.
"""
from __future__ import annotations

import sqlite3
import time
from contextlib import contextmanager
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Iterator

SCHEMA = """
CREATE TABLE IF NOT EXISTS meta(key TEXT PRIMARY KEY, value TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS users(
    id TEXT PRIMARY KEY, username TEXT NOT NULL UNIQUE COLLATE NOCASE,
    email TEXT NOT NULL UNIQUE COLLATE NOCASE, nickname TEXT NOT NULL DEFAULT '',
    metadata TEXT NOT NULL DEFAULT '', avatar BLOB, avatar_type TEXT,
    github_login TEXT, github_linked_at REAL, always_online INTEGER NOT NULL DEFAULT 0,
    last_seen_at REAL, created_at REAL NOT NULL);
CREATE TABLE IF NOT EXISTS tokens(
    access_token TEXT PRIMARY KEY, refresh_token TEXT NOT NULL UNIQUE, user_id TEXT NOT NULL,
    issued_at REAL NOT NULL, access_expires_at REAL NOT NULL, refresh_expires_at REAL NOT NULL,
    revoked INTEGER NOT NULL DEFAULT 0);
CREATE TABLE IF NOT EXISTS device_keys(key_data TEXT PRIMARY KEY, user_id TEXT NOT NULL, linked_at REAL NOT NULL);
CREATE TABLE IF NOT EXISTS challenges(
    id TEXT PRIMARY KEY, key_data TEXT NOT NULL, canonical TEXT NOT NULL,
    expires_at REAL NOT NULL, used INTEGER NOT NULL DEFAULT 0);
CREATE TABLE IF NOT EXISTS registrations(
    id TEXT PRIMARY KEY, token TEXT NOT NULL UNIQUE, email TEXT NOT NULL, key_data TEXT NOT NULL,
    created_at REAL NOT NULL, expires_at REAL NOT NULL, used_at REAL);
CREATE TABLE IF NOT EXISTS link_states(
    state TEXT PRIMARY KEY, user_id TEXT NOT NULL, expires_at REAL NOT NULL, used INTEGER NOT NULL DEFAULT 0);
CREATE TABLE IF NOT EXISTS software(
    id TEXT PRIMARY KEY, slug TEXT NOT NULL UNIQUE, name TEXT NOT NULL, description TEXT NOT NULL,
    publisher_id TEXT NOT NULL, category TEXT NOT NULL, platform TEXT NOT NULL,
    release_status TEXT NOT NULL, tags TEXT NOT NULL, is_free INTEGER NOT NULL,
    grant_form TEXT NOT NULL, transfer TEXT NOT NULL, created_at REAL NOT NULL);
CREATE TABLE IF NOT EXISTS builds(
    id TEXT PRIMARY KEY, software_id TEXT NOT NULL, version TEXT NOT NULL,
    channel TEXT NOT NULL, created_at REAL NOT NULL);
CREATE TABLE IF NOT EXISTS assets(
    build_id TEXT NOT NULL, name TEXT NOT NULL, type TEXT NOT NULL, size_bytes INTEGER NOT NULL,
    PRIMARY KEY(build_id, name));
CREATE TABLE IF NOT EXISTS entitlements(
    id TEXT PRIMARY KEY, user_id TEXT NOT NULL, software_id TEXT NOT NULL,
    is_revoked INTEGER NOT NULL DEFAULT 0, source TEXT NOT NULL, granted_at REAL NOT NULL,
    UNIQUE(user_id, software_id));
CREATE TABLE IF NOT EXISTS sessions(
    id TEXT PRIMARY KEY, user_id TEXT NOT NULL, game_key TEXT NOT NULL, software_id TEXT,
    provider TEXT, external_id TEXT, name TEXT NOT NULL, started_at REAL NOT NULL, ended_at REAL);
CREATE TABLE IF NOT EXISTS ratings(
    user_id TEXT NOT NULL, game_key TEXT NOT NULL, stars INTEGER NOT NULL, rated_at REAL NOT NULL,
    PRIMARY KEY(user_id, game_key));
CREATE TABLE IF NOT EXISTS friend_requests(
    id TEXT PRIMARY KEY, from_user TEXT NOT NULL, to_user TEXT NOT NULL, status TEXT NOT NULL,
    created_at REAL NOT NULL, answered_at REAL);
CREATE TABLE IF NOT EXISTS friendships(
    user_id TEXT NOT NULL, friend_id TEXT NOT NULL, since REAL NOT NULL, PRIMARY KEY(user_id, friend_id));
CREATE TABLE IF NOT EXISTS conversations(
    id TEXT PRIMARY KEY, type TEXT NOT NULL, name TEXT NOT NULL, direct_key TEXT UNIQUE,
    created_by TEXT NOT NULL, created_at REAL NOT NULL);
CREATE TABLE IF NOT EXISTS conversation_members(
    conversation_id TEXT NOT NULL, user_id TEXT NOT NULL, PRIMARY KEY(conversation_id, user_id));
CREATE TABLE IF NOT EXISTS messages(
    seq INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, conversation_id TEXT NOT NULL,
    sender_id TEXT NOT NULL, content TEXT NOT NULL, sent_at REAL NOT NULL,
    is_deleted INTEGER NOT NULL DEFAULT 0);
CREATE TABLE IF NOT EXISTS voice_rooms(
    id TEXT PRIMARY KEY, conversation_id TEXT NOT NULL, status TEXT NOT NULL,
    max_participants INTEGER NOT NULL, created_by TEXT NOT NULL, created_at REAL NOT NULL, closed_at REAL);
CREATE TABLE IF NOT EXISTS voice_members(
    room_id TEXT NOT NULL, user_id TEXT NOT NULL, muted INTEGER NOT NULL DEFAULT 0,
    joined_at REAL NOT NULL, PRIMARY KEY(room_id, user_id));
CREATE TABLE IF NOT EXISTS repo_games(
    id TEXT PRIMARY KEY, owner_login TEXT NOT NULL, repo_name TEXT NOT NULL, repo_url TEXT NOT NULL,
    display_name TEXT NOT NULL, launch_path TEXT NOT NULL, submitted_by TEXT NOT NULL,
    is_verified_owner INTEGER NOT NULL, created_at REAL NOT NULL);
"""

Row = sqlite3.Row


class Db:
    """One autocommit connection; the event loop is single-threaded, so no locking."""

    def __init__(self, path: Path) -> None:
        self.conn = sqlite3.connect(str(path), isolation_level=None)
        self.conn.row_factory = sqlite3.Row
        self.conn.execute("PRAGMA journal_mode=WAL")
        self.conn.executescript(SCHEMA)

    def one(self, sql: str, *args: Any) -> Row | None:
        return self.conn.execute(sql, args).fetchone()

    def all(self, sql: str, *args: Any) -> list[Row]:
        return self.conn.execute(sql, args).fetchall()

    def run(self, sql: str, *args: Any) -> int:
        """Executes a write and returns the number of rows it touched."""
        return self.conn.execute(sql, args).rowcount

    def scalar(self, sql: str, *args: Any) -> Any:
        row = self.conn.execute(sql, args).fetchone()
        return None if row is None else row[0]

    @contextmanager
    def transaction(self) -> Iterator[None]:
        self.conn.execute("BEGIN IMMEDIATE")
        try:
            yield
        except BaseException:
            self.conn.execute("ROLLBACK")
            raise
        self.conn.execute("COMMIT")

    def close(self) -> None:
        self.conn.close()


class Clock:
    """Wall-clock time plus an offset that only the test hooks move."""

    def __init__(self) -> None:
        self.offset_seconds = 0.0

    def now(self) -> float:
        return time.time() + self.offset_seconds

    @staticmethod
    def iso(unix_seconds: float | None) -> str:
        """UTC time as the client shows it; "" for a missing time (never JSON null)."""
        if unix_seconds is None:
            return ""
        moment = datetime.fromtimestamp(unix_seconds, tz=timezone.utc)
        return moment.strftime("%Y-%m-%dT%H:%M:%SZ")
