#!/usr/bin/python3
"""Points a client settings.json at the stand-in with the tokens that --dev-tokens wrote.

Usage: write_dev_settings.py SETTINGS_JSON TOKENS_JSON

Only apiBaseUrl, bearerToken, refreshToken and username change; every other line is
kept exactly as the client wrote it. The values are escaped the way the client escapes
its own file (backslash before quote and backslash, line feed as \\n). Without a file,
or with one lacking any of those keys, a complete file in the client's layout is
written with the client's defaults (an empty libraryPath makes the client use its own
default folder).
"""
from __future__ import annotations

import json
import os
import re
import sys
from pathlib import Path

KEYS = ("apiBaseUrl", "bearerToken", "refreshToken", "username")
TEMPLATE = """{{
"apiBaseUrl":"{apiBaseUrl}",
"bearerToken":"{bearerToken}",
"refreshToken":"{refreshToken}",
"username":"{username}",
"libraryPath":"",
"downloadLimitKbps":0,
"voiceEnabled":true,
"voiceMuteByDefault":false,
"voiceInputVolume":100,
"voiceOutputVolume":100,
"voiceInputDevice":"",
"voiceOutputDevice":"",
"skinId":"dark",
"overlayHintShown":false,
"webGameBrowsers":{{}}
}}
"""


def escape(value: str) -> str:
    return value.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")


def key_pattern(key: str) -> re.Pattern[str]:
    return re.compile(r'"' + key + r'":"(?:[^"\\]|\\.)*"')


def updated_text(old: str | None, values: dict[str, str]) -> str:
    escaped = {key: escape(values[key]) for key in KEYS}
    if old is None or not all(key_pattern(key).search(old) for key in KEYS):
        return TEMPLATE.format(**escaped)
    text = old
    for key in KEYS:
        text = key_pattern(key).sub(lambda _: f'"{key}":"{escaped[key]}"', text, count=1)
    return text


def main(argv: list[str]) -> int:
    if len(argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    settings, tokens_file = Path(argv[0]), Path(argv[1])
    tokens = json.loads(tokens_file.read_text(encoding="utf-8"))
    values = {"apiBaseUrl": tokens["apiBaseUrl"], "bearerToken": tokens["accessToken"],
              "refreshToken": tokens["refreshToken"], "username": tokens["username"]}
    old = settings.read_text(encoding="utf-8") if settings.exists() else None
    settings.parent.mkdir(parents=True, exist_ok=True)
    temporary = settings.with_name(settings.name + ".devservice.tmp")
    temporary.write_text(updated_text(old, values), encoding="utf-8", newline="")
    os.replace(temporary, settings)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
