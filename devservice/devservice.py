#!/usr/bin/python3
"""Entry point of the Corvandell service stand-in: parse options, serve, stop on a signal.

Binds to 127.0.0.1 only. Readiness is announced in two ways so both an interactive
user and a waiting script can use it: the base URL as one flushed line on stdout, and
(with --url-file) the same URL written atomically into a file, which a script polls.
"""
from __future__ import annotations

import argparse
import asyncio
import json
import logging
import os
import signal
import sys
from pathlib import Path

from aiohttp import web

sys.dont_write_bytecode = True  # running the stand-in must not litter the source tree
sys.path.insert(0, str(Path(__file__).resolve().parent))

from corvandell_stub.accounts import issue_tokens, user_by_name_or_email  # noqa: E402
from corvandell_stub.app import create_app, open_service  # noqa: E402
from corvandell_stub.web import Service  # noqa: E402


def parse_args(argv: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(description="Local stand-in for the Corvandell backend service.")
    parser.add_argument("--port", type=int, required=True, help="TCP port on 127.0.0.1; 0 picks a free one")
    parser.add_argument("--data", type=Path, required=True, help="folder for the sqlite store and the outbox")
    parser.add_argument("--url-file", type=Path, help="write the base URL here once listening")
    parser.add_argument("--test-hooks", action="store_true", help="enable the /__test/ routes")
    parser.add_argument("--offline-pages", action="store_true",
                        help="seed hosted browser games on a closed loopback port, not their pages site")
    parser.add_argument("--repository-host", default="https://github.com",
                        help="scheme and domain of the git host shared games are cloned from (default: "
                             "https://github.com); games' repoUrl values and accepted addresses use it")
    parser.add_argument("--dev-tokens", type=Path, help="write a fresh token pair of --dev-user here at start")
    parser.add_argument("--dev-user", default="demo", help="account for --dev-tokens (default: demo)")
    return parser.parse_args(argv)


def write_atomically(path: Path, text: str) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    temporary = path.with_name(path.name + f".{os.getpid()}.tmp")
    temporary.write_text(text, encoding="utf-8")
    os.replace(temporary, path)


def dev_tokens_text(svc: Service, username: str, url: str) -> str:
    user = user_by_name_or_email(svc, username)
    if user is None:
        raise SystemExit(f"devservice: no account named {username!r} for --dev-tokens")
    tokens = issue_tokens(svc, user["id"])
    return json.dumps({"apiBaseUrl": url, "username": user["username"], **tokens}, indent=2) + "\n"


async def serve(args: argparse.Namespace) -> None:
    svc = open_service(args.data, args.test_hooks, args.offline_pages, args.repository_host)
    runner = web.AppRunner(create_app(svc), access_log_format='%r %s %b')
    await runner.setup()
    site = web.TCPSite(runner, "127.0.0.1", args.port, shutdown_timeout=2.0)
    await site.start()
    host, port = runner.addresses[0][:2]
    url = f"http://{host}:{port}"
    stop = asyncio.Event()
    loop = asyncio.get_running_loop()
    for signum in (signal.SIGTERM, signal.SIGINT):
        loop.add_signal_handler(signum, stop.set)
    try:
        if args.dev_tokens:
            write_atomically(args.dev_tokens, dev_tokens_text(svc, args.dev_user, url))
        if args.url_file:  # before stdout, so a reader of either finds both in place
            write_atomically(args.url_file, url + "\n")
        print(url, flush=True)
        await stop.wait()
    finally:
        await runner.cleanup()
        svc.db.close()


def main(argv: list[str]) -> int:
    logging.basicConfig(level=logging.INFO, format="devservice %(asctime)s %(message)s", datefmt="%H:%M:%S")
    asyncio.run(serve(parse_args(argv)))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
