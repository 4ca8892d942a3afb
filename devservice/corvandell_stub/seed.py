"""Demo data written into an empty store: users, catalogue, builds and social history.

Ids are fixed (UUIDv5 of a readable name) so that documentation, scripts and tests
can refer to seeded things across runs; times are relative to the moment of seeding
so the feed and playtime look recent. The demo user "demo" is the one a development
run signs in as: it owns most of the catalogue, has three friends (alice online and
playing, bruno always online, chen offline), a pending request from dana, a direct
and a group conversation, and no GitHub link yet.
"""
from __future__ import annotations

import json
import uuid

from .accounts import create_user
from .social import befriend
from .web import Service

NAMESPACE = uuid.UUID("5b0c7e52-3f7a-4d1c-9a55-0c0ffee0c0de")
DAY = 86400.0


def fixed_id(kind: str, name: str) -> str:
    return str(uuid.uuid5(NAMESPACE, f"{kind}:{name}"))


USERS = (  # username, nickname, GitHub login linked at seeding or ""
    ("demo", "Demo Player", ""),
    ("alice", "Alice", "alice-codes"),
    ("bruno", "Bruno", "bruno-makes"),
    ("chen", "Chen", "chen-plays"),
    ("dana", "Dana", ""),
    ("eve", "Eve", ""),
)

PUBLISHERS = ("lanternworks", "tidal-forge", "papercut-games", "north-arc")

# slug, name, publisher, category, platform, status, tags, free, grant form, transfer, builds (version, days ago)
TITLES = (
    ("ember-keep", "Ember Keep", "lanternworks", "RPG", "windows", "released", ["fantasy", "story", "co-op"],
     False, "url", "length", [("1.2.0", 3), ("1.1.4", 30), ("1.0.0", 90)]),
    ("starfall-courier", "Starfall Courier", "tidal-forge", "Adventure", "windows", "released",
     ["space", "delivery", "relaxing"], False, "assets", "chunked", [("2.0.1", 5), ("2.0.0", 20)]),
    ("gearwhistle-junction", "Gearwhistle Junction", "papercut-games", "Puzzle", "windows", "released",
     ["trains", "logic"], False, "assets", "length", [("0.9.3", 12)]),
    ("tidebreaker-rally", "Tidebreaker Rally", "tidal-forge", "Racing", "windows", "early-access",
     ["boats", "multiplayer"], False, "url", "chunked", [("0.4.0", 2), ("0.3.2", 16)]),
    ("hollow-lantern", "Hollow Lantern", "lanternworks", "Adventure", "windows", "released",
     ["horror", "atmospheric"], False, "url", "length", [("1.0.2", 40)]),
    ("quarry-of-echoes", "Quarry of Echoes", "north-arc", "Strategy", "windows", "beta",
     ["mining", "base-building"], False, "assets", "chunked", [("0.12.0", 7)]),
    ("paper-moth", "Paper Moth", "papercut-games", "Platformer", "windows", "released",
     ["handcrafted", "short"], True, "url", "chunked", [("1.0.1", 60)]),
    ("orchard-siege", "Orchard Siege", "north-arc", "Strategy", "windows", "released",
     ["tower-defense", "cozy"], False, "assets", "length", [("1.3.0", 25)]),
    ("saltmarsh-radio", "Saltmarsh Radio", "tidal-forge", "Simulation", "windows", "early-access",
     ["music", "management"], False, "url", "length", []),
    ("copperline-tactics", "Copperline Tactics", "north-arc", "Strategy", "windows", "released",
     ["turn-based", "tactics"], False, "url", "length", []),
    ("mirrorbound", "Mirrorbound", "papercut-games", "Puzzle", "web", "released",
     ["reflections", "browser"], True, "url", "length", []),
    ("nightshift-diner", "Nightshift Diner", "lanternworks", "Simulation", "windows", "released",
     ["cooking", "management"], False, "url", "length", []),
    ("glasswing", "Glasswing", "tidal-forge", "Action", "windows", "coming-soon",
     ["flight", "arcade"], False, "url", "length", []),
    ("brass-meridian", "Brass Meridian", "north-arc", "RPG", "linux", "released",
     ["steampunk", "exploration"], False, "url", "length", []),
    ("thistle-and-thorn", "Thistle & Thorn", "papercut-games", "Adventure", "windows", "released",
     ["point-and-click", "fairy-tale"], True, "assets", "chunked", [("1.1.0", 14)]),
    ("cinder-run", "Cinder Run", "lanternworks", "Action", "windows", "released",
     ["roguelite", "fast"], False, "assets", "length", [("3.2.5", 1), ("3.2.4", 9)]),
    ("lumen-drift", "Lumen Drift", "tidal-forge", "Racing", "web", "beta",
     ["neon", "browser"], True, "url", "length", []),
    ("vault-of-small-hours", "Vault of Small Hours", "north-arc", "Puzzle", "windows", "released",
     ["escape-room", "mystery"], False, "url", "length", []),
    ("frostline-outpost", "Frostline Outpost", "north-arc", "Simulation", "windows", "early-access",
     ["survival", "crafting"], False, "url", "length", []),
    ("wavecrest-arena", "Wavecrest Arena", "papercut-games", "Action", "windows", "released",
     ["pvp", "arena"], False, "url", "length", []),
    ("sky-forge-2", "Sky Forge 2", "north-arc", "Action", "windows", "released",
     ["mechs", "co-op", "sci-fi"], False, "assets", "length", [("2.4.1", 6), ("2.4.0", 35)]),
    ("harbor-lights", "Harbor Lights", "lanternworks", "Simulation", "windows", "released",
     ["lighthouse", "cozy"], False, "url", "length", [("1.0.4", 11)]),
    ("moonwell-academy", "Moonwell Academy", "papercut-games", "RPG", "windows", "early-access",
     ["school", "magic"], False, "url", "chunked", [("0.8.0", 4)]),
    ("rustbelt-couriers", "Rustbelt Couriers", "tidal-forge", "Action", "windows", "released",
     ["driving", "delivery"], False, "url", "length", []),
    ("crown-of-ash", "Crown of Ash", "north-arc", "Strategy", "windows", "released",
     ["grand-strategy", "medieval"], False, "assets", "chunked", [("1.5.2", 21)]),
    ("lantern-fish", "Lantern Fish", "lanternworks", "Adventure", "windows", "released",
     ["underwater", "exploration"], True, "url", "length", []),
    ("pocket-kingdoms", "Pocket Kingdoms", "papercut-games", "Strategy", "windows", "released",
     ["city-builder", "tiny"], False, "url", "length", [("2.1.0", 8)]),
    ("signal-lost", "Signal Lost", "tidal-forge", "Adventure", "windows", "beta",
     ["sci-fi", "mystery"], False, "url", "length", []),
    ("velvet-heist", "Velvet Heist", "lanternworks", "Action", "windows", "released",
     ["stealth", "heist"], False, "assets", "length", [("1.3.3", 2)]),
    ("winter-orchard", "Winter Orchard", "north-arc", "Simulation", "windows", "released",
     ["farming", "seasons"], False, "url", "length", []),
    ("stormcall", "Stormcall", "tidal-forge", "RPG", "windows", "early-access",
     ["weather", "magic"], False, "url", "chunked", [("0.5.1", 9)]),
    ("grimstone-arena", "Grimstone Arena", "papercut-games", "Action", "windows", "released",
     ["pvp", "fantasy"], False, "url", "length", []),
    ("dune-skimmers", "Dune Skimmers", "tidal-forge", "Adventure", "windows", "released",
     ["desert", "sailing"], False, "url", "length", []),
)

DESCRIPTIONS = {
    "RPG": "A story-driven role-playing game with a world that remembers your choices.",
    "Adventure": "An adventure of small discoveries, odd characters and one long journey.",
    "Puzzle": "Hand-made puzzles that start gentle and end devious.",
    "Racing": "Tight, fast racing with tracks that change under your wheels.",
    "Strategy": "Plan, build and outthink your rivals one careful move at a time.",
    "Platformer": "A precise platformer with a soft touch and a paper-craft world.",
    "Simulation": "Run the place your way, one shift at a time.",
    "Action": "Quick reflexes, bright effects and short, intense runs.",
}

# Each title's own blurb; a title without one falls back to its category's line.
TITLE_DESCRIPTIONS = {
    "ember-keep": "Rebuild a ruined hill fort with friends and hold it through the long winter; the world "
                  "remembers every promise you make to its villages.",
    "starfall-courier": "Fly parcels between drifting space stations, plot slingshots around moons and nurse "
                        "an old cargo ship in one piece.",
    "gearwhistle-junction": "Lay track, set switches and untangle a busy rail yard before the evening express "
                            "arrives.",
    "tidebreaker-rally": "Race hydrofoils through harbour channels and storm surges, online or in split screen.",
    "hollow-lantern": "A slow, quiet horror story told by the light of one lantern in a house that rearranges "
                      "itself.",
    "quarry-of-echoes": "Dig deep, shore up the tunnels and build an underground town around what the miners "
                        "find.",
    "paper-moth": "Glide, fold and flutter through a hand-cut paper world in a short, gentle platformer.",
    "orchard-siege": "Defend a cosy orchard from waves of hungry critters with scarecrows, sprinklers and bees.",
    "saltmarsh-radio": "Run a pirate radio station from a marsh shack: pick records, take calls and dodge the "
                       "inspectors.",
    "copperline-tactics": "Turn-based squad tactics on the copper railways of a frontier that never existed.",
    "mirrorbound": "Bounce light through rooms of mirrors in a puzzle game that runs in any modern web page.",
    "nightshift-diner": "Cook, serve and gossip through the graveyard shift of a roadside diner.",
    "glasswing": "An arcade flight game of glass gliders and neon canyons; coming soon.",
    "brass-meridian": "Explore a steampunk archipelago by airship in a role-playing game built for Linux.",
    "thistle-and-thorn": "A point-and-click fairy tale about a hedge witch, a talking goat and a missing crown.",
    "cinder-run": "Sprint through a burning city in short roguelite runs; every death unlocks a new route.",
    "lumen-drift": "Neon drift racing in short bursts, playable straight from a link.",
    "vault-of-small-hours": "Escape-room puzzles inside a bank vault where the clocks never agree.",
    "frostline-outpost": "Survive an arctic research station: ration power, repair the radio, stay warm.",
    "wavecrest-arena": "Fast four-player arena battles on platforms that rise and sink with the waves.",
    "sky-forge-2": "Pilot hand-built mechs over floating islands in the sequel to the co-op brawler; now with "
                   "a full campaign for up to four players.",
    "harbor-lights": "Tend a lighthouse on a storm-battered coast, guide ships home and restore the old harbour.",
    "moonwell-academy": "Your first year at a school of magic: classes, rivalries and a secret under the well.",
    "rustbelt-couriers": "Deliver anything to anyone across a crumbling industrial valley in a rattling truck.",
    "crown-of-ash": "Rule a medieval realm through famine, feuds and succession in a grand strategy game.",
    "lantern-fish": "Explore the deep sea as a small glowing fish looking for the way back to the reef.",
    "pocket-kingdoms": "Build tiny cities on floating islands and trade between them by balloon.",
    "signal-lost": "Investigate a silent research ship in orbit, one recovered log at a time.",
    "velvet-heist": "Plan and pull off stylish heists in 1960s Monte Carlo, alone or with a crew.",
    "winter-orchard": "Farm an orchard through four seasons; winter is for pruning, planning and cider.",
    "stormcall": "Command the weather in a role-playing adventure where every spell changes the sky.",
    "grimstone-arena": "Gladiator duels of sword and sorcery with ranked seasons and custom champions.",
    "dune-skimmers": "Sail sand yachts across a living desert in search of buried cities.",
}

DEMO_OWNS = ("ember-keep", "starfall-courier", "gearwhistle-junction", "tidebreaker-rally", "hollow-lantern",
             "cinder-run", "quarry-of-echoes", "orchard-siege", "sky-forge-2", "harbor-lights", "velvet-heist",
             "crown-of-ash")
DEMO_REVOKED = ("orchard-siege",)

# who, game slug (or external key), minutes, days ago; minutes None = still playing
SESSIONS = (
    ("alice", "ember-keep", 95, 1), ("alice", "ember-keep", 40, 3), ("bruno", "ember-keep", 180, 2),
    ("chen", "ember-keep", 25, 6), ("bruno", "starfall-courier", 60, 4), ("chen", "cinder-run", 75, 1),
    ("demo", "ember-keep", 130, 5), ("demo", "cinder-run", 20, 2), ("alice", "steam:104900", 50, 2),
    ("eve", "ember-keep", 300, 1), ("alice", "ember-keep", None, 0),
    ("bruno", "sky-forge-2", 140, 1), ("alice", "sky-forge-2", 70, 3), ("demo", "sky-forge-2", 55, 4),
    ("chen", "harbor-lights", 35, 2), ("bruno", "velvet-heist", 90, 5), ("chen", "steam:104900", 40, 1),
)

RATINGS = (  # who, game slug, stars, days ago
    ("alice", "ember-keep", 5, 2), ("bruno", "ember-keep", 4, 3), ("chen", "ember-keep", 4, 6),
    ("eve", "ember-keep", 2, 1), ("bruno", "starfall-courier", 5, 4), ("chen", "cinder-run", 3, 1),
    ("alice", "paper-moth", 4, 8), ("alice", "steam:104900", 5, 2),
    ("bruno", "sky-forge-2", 5, 1), ("chen", "sky-forge-2", 4, 2), ("alice", "sky-forge-2", 4, 3),
    ("alice", "harbor-lights", 4, 2), ("eve", "velvet-heist", 3, 4), ("bruno", "crown-of-ash", 5, 6),
    ("alice", "stormcall", 4, 5), ("chen", "steam:104900", 4, 1),
)

EXTERNAL_NAMES = {"steam:104900": "Sky Harbor"}

REPO_GAMES = (  # submitter, owner, repo, display name, launch path, verified
    ("alice", "alice-codes", "tiny-tower", "Tiny Tower Defense", "index.html", True),
    ("bruno", "pixel-forge", "orbit-hop", "Orbit Hop", "game/play.html", False),
    ("chen", "chen-plays", "pixel-garden", "Pixel Garden", "https://chen-plays.github.io/pixel-garden/", True),
)


def user_id(name: str) -> str:
    return fixed_id("user", name)


def software_id(slug: str) -> str:
    return fixed_id("software", slug)


def game_key(name: str) -> str:
    return name if ":" in name else software_id(name)


def seed_catalogue(svc: Service, now: float) -> None:
    for index, (slug, name, publisher, category, platform, status, tags, free, form, transfer, builds) \
            in enumerate(TITLES):
        description = TITLE_DESCRIPTIONS.get(slug, f"{name}: {DESCRIPTIONS[category]}")
        svc.db.run("INSERT INTO software(id, slug, name, description, publisher_id, category, platform, "
                   "release_status, tags, is_free, grant_form, transfer, created_at) "
                   "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                   software_id(slug), slug, name, description, fixed_id("publisher", publisher), category,
                   platform, status, json.dumps(tags), int(free), form, transfer, now - (400 - index * 15) * DAY)
        for version, days in builds:
            build_id = fixed_id("build", f"{slug}@{version}")
            svc.db.run("INSERT INTO builds(id, software_id, version, channel, created_at) VALUES(?, ?, ?, ?, ?)",
                       build_id, software_id(slug), version, "stable", now - days * DAY)
            size = 40_000 + (index * 7919) % 200_000
            assets = [(f"{slug}-build", "archive", size)] if form == "url" else \
                [(f"{slug}-core", "archive", size), (f"{slug}-content", "data", size // 2 + 1234)]
            for asset_name, asset_type, asset_size in assets:
                svc.db.run("INSERT INTO assets(build_id, name, type, size_bytes) VALUES(?, ?, ?, ?)",
                           build_id, asset_name, asset_type, asset_size)


def seed_people(svc: Service, now: float) -> None:
    for name, nickname, github in USERS:
        create_user(svc, name, f"{name}@corvandell.test", user_id=user_id(name), nickname=nickname,
                    created_at=now - 300 * DAY)
        if github:
            svc.db.run("UPDATE users SET github_login = ?, github_linked_at = ? WHERE id = ?",
                       github, now - 100 * DAY, user_id(name))
    svc.db.run("UPDATE users SET always_online = 1 WHERE id = ?", user_id("bruno"))
    for slug in DEMO_OWNS:
        svc.db.run("INSERT OR IGNORE INTO entitlements(id, user_id, software_id, is_revoked, source, granted_at) "
                   "VALUES(?, ?, ?, ?, 'purchase', ?)", fixed_id("entitlement", f"demo:{slug}"), user_id("demo"),
                   software_id(slug), int(slug in DEMO_REVOKED), now - 200 * DAY)
    for a, b in (("demo", "alice"), ("demo", "bruno"), ("demo", "chen"), ("alice", "eve"), ("alice", "bruno")):
        befriend(svc, user_id(a), user_id(b), now - 150 * DAY)
    svc.db.run("INSERT INTO friend_requests(id, from_user, to_user, status, created_at) VALUES(?, ?, ?, 'pending', ?)",
               fixed_id("request", "dana>demo"), user_id("dana"), user_id("demo"), now - DAY)


def seed_activity(svc: Service, now: float) -> None:
    for index, (who, game, minutes, days) in enumerate(SESSIONS):
        provider, _, external = game.partition(":") if ":" in game else (None, "", None)
        start = now - days * DAY - (minutes or 30) * 60 - 3600
        end = None if minutes is None else start + minutes * 60
        name = EXTERNAL_NAMES[game] if provider else next(t[1] for t in TITLES if t[0] == game)
        svc.db.run("INSERT INTO sessions(id, user_id, game_key, software_id, provider, external_id, name, started_at, "
                   "ended_at) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)", fixed_id("session", str(index)), user_id(who),
                   game_key(game), None if provider else software_id(game), provider, external or None,
                   name, start, end)
    for who, game, stars, days in RATINGS:
        svc.db.run("INSERT INTO ratings(user_id, game_key, stars, rated_at) VALUES(?, ?, ?, ?)",
                   user_id(who), game_key(game), stars, now - days * DAY)


def seed_chat(svc: Service, now: float) -> None:
    chats = (
        ("direct", "", ["demo", "alice"], [("alice", "Are you up for Ember Keep tonight?"),
                                           ("demo", "Sure, after dinner."), ("alice", "oops, wrong chat")]),
        ("group", "Weekend raid", ["demo", "alice", "bruno"], [("bruno", "Saturday 8pm?"),
                                                                ("alice", "Works for me."), ("demo", "I'm in.")]),
    )
    for kind, name, members, messages in chats:
        conversation_id = fixed_id("conversation", name or "|".join(members))
        direct_key = "|".join(sorted(user_id(m) for m in members)) if kind == "direct" else None
        svc.db.run("INSERT INTO conversations(id, type, name, direct_key, created_by, created_at) "
                   "VALUES(?, ?, ?, ?, ?, ?)", conversation_id, kind, name, direct_key, user_id(members[0]),
                   now - 10 * DAY)
        for member in members:
            svc.db.run("INSERT INTO conversation_members(conversation_id, user_id) VALUES(?, ?)",
                       conversation_id, user_id(member))
        for index, (sender, content) in enumerate(messages):
            svc.db.run("INSERT INTO messages(id, conversation_id, sender_id, content, sent_at) VALUES(?, ?, ?, ?, ?)",
                       fixed_id("message", f"{conversation_id}:{index}"), conversation_id, user_id(sender), content,
                       now - 2 * DAY + index * 60)
    svc.db.run("UPDATE messages SET is_deleted = 1, content = '' WHERE id = ?",
               fixed_id("message", f"{fixed_id('conversation', 'demo|alice')}:2"))


# Port 1 on loopback: nothing listens there, so a fetch fails at once and stays local.
OFFLINE_PAGES_BASE = "https://127.0.0.1:1"


def seeded_launch_path(svc: Service, repo: str, launch: str) -> str:
    if svc.offline_pages and launch.startswith("https://"):
        return f"{OFFLINE_PAGES_BASE}/{repo}/"
    return launch


def seed_repo_games(svc: Service, now: float) -> None:
    for index, (who, owner, repo, name, launch, verified) in enumerate(REPO_GAMES):
        launch = seeded_launch_path(svc, repo, launch)
        svc.db.run("INSERT INTO repo_games(id, owner_login, repo_name, repo_url, display_name, launch_path, "
                   "submitted_by, is_verified_owner, created_at) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)",
                   fixed_id("repo-game", f"{owner}/{repo}"), owner, repo, f"https://github.com/{owner}/{repo}",
                   name, launch, user_id(who), int(verified), now - (30 - index) * DAY)


def seed_if_empty(svc: Service) -> bool:
    """Fills a new store once; an existing store is left exactly as it was."""
    if svc.db.scalar("SELECT value FROM meta WHERE key = 'seeded'"):
        return False
    now = svc.clock.now()
    with svc.db.transaction():
        seed_catalogue(svc, now)  # first, so new users get the free titles
        seed_people(svc, now)
        seed_activity(svc, now)
        seed_chat(svc, now)
        seed_repo_games(svc, now)
        svc.db.run("INSERT INTO meta(key, value) VALUES('seeded', ?)", svc.clock.iso(now))
    return True
