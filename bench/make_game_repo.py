#!/usr/bin/env python3
"""Writes a deterministic synthetic web-game repository for the git engine benchmark.

The tip holds about 50 MB in nested folders: generated JavaScript, HTML, CSS and JSON
with the redundancy real game code has (shared vocabulary, templates, near-copies that
git stores as deltas), and incompressible images, audio and fonts. Several commits edit
the large files, as a game's history would. Same seed, same repository, same pack.

With --large the repository is bigger and older: on top of the above, thousands of small
files (localisation, prefabs, scripts), a few large binary assets, a symbolic link and a
gitlink (which a checkout skips), and a long history of small edits, for the full-pack case.

usage: make_game_repo.py [--large] <empty folder>
"""
import os
import random
import subprocess
import sys

SEED = 20240611
rng = random.Random(SEED)

WORDS = ("player enemy level score sprite tile map camera audio input update render draw "
         "velocity position width height frame anim state scene load asset texture sound "
         "music volume pause resume jump run attack health damage spawn world physics body "
         "collide bounds timer delta context canvas buffer shader particle effect menu button "
         "label text font color alpha scale rotate offset index count value result options "
         "config data item inventory weapon shield coin bonus boss checkpoint save storage").split()
TAGS = "div span section article p ul li button canvas img a h1 h2 h3".split()


def ident():
    return rng.choice(WORDS) + rng.choice(WORDS).capitalize() + rng.choice(("", "", "s", "Id", "2"))


def js_statement(depth):
    kind = rng.random()
    if kind < 0.25:
        return f"const {ident()} = this.{ident()}.{ident()}({ident()}, {rng.randint(0, 999)});"
    if kind < 0.45:
        return f"this.{ident()} += {ident()} * {rng.random():.3f};"
    if kind < 0.6 and depth < 2:
        body = "\n".join("    " * (depth + 2) + js_statement(depth + 1) for _ in range(rng.randint(1, 4)))
        return f"if ({ident()}.{ident()} > {rng.randint(0, 64)}) {{\n{body}\n{'    ' * (depth + 1)}}}"
    if kind < 0.75:
        return f"{ident()}.push({{ {ident()}: {rng.randint(0, 4096)}, {ident()}: '{rng.choice(WORDS)}' }});"
    return f"return {ident()}({ident()}, this.{ident()});"


def js_module(size):
    parts = [f"// {rng.choice(WORDS)} module\nimport {{ {ident()} }} from './{rng.choice(WORDS)}.js';\n"]
    length = len(parts[0])
    while length < size:
        body = "\n".join("        " + js_statement(0) for _ in range(rng.randint(3, 12)))
        method = f"    {ident()}({ident()}, {ident()}) {{\n{body}\n    }}\n"
        parts.append(method)
        length += len(method)
    return f"export class {ident().capitalize()} {{\n" + "".join(parts) + "}\n"


def html_page(size):
    out = ["<!DOCTYPE html>\n<html>\n<head><meta charset=\"utf-8\"><title>Game</title>"
           "<link rel=\"stylesheet\" href=\"css/main.css\"></head>\n<body>\n"]
    length = 0
    while length < size:
        tag = rng.choice(TAGS)
        words = " ".join(rng.choices(WORDS, k=rng.randint(2, 12)))
        line = f"  <{tag} class=\"{rng.choice(WORDS)}-{rng.choice(WORDS)}\" id=\"{ident()}\">{words}</{tag}>\n"
        out.append(line)
        length += len(line)
    out.append("<script type=\"module\" src=\"dist/bundle.js\"></script>\n</body>\n</html>\n")
    return "".join(out)


def css_sheet(size):
    out = []
    length = 0
    while length < size:
        rule = (f".{rng.choice(WORDS)}-{rng.choice(WORDS)} {{\n  margin: {rng.randint(0, 32)}px;\n"
                f"  color: #{rng.randrange(1 << 24):06x};\n  display: {rng.choice(('flex', 'block', 'none'))};\n}}\n")
        out.append(rule)
        length += len(rule)
    return "".join(out)


def level_json(world, number, template):
    # Levels share their layout template and differ in a few rows and entities, so git
    # stores most of them as deltas of one another.
    local = random.Random(SEED + world * 100 + number)
    rows = list(template)
    for _ in range(6):
        row = local.randrange(len(rows))
        rows[row] = "".join(local.choice("..##==^^$") for _ in range(len(rows[row])))
    entities = ",\n".join(
        f'    {{"type": "{local.choice(WORDS)}", "x": {local.randint(0, 4000)}, "y": {local.randint(0, 600)}}}'
        for _ in range(local.randint(40, 120)))
    tiles = ",\n".join(f'    "{row}"' for row in rows)
    return (f'{{\n  "world": {world},\n  "level": {number},\n  "tiles": [\n{tiles}\n  ],\n'
            f'  "entities": [\n{entities}\n  ]\n}}\n')


def atlas_json(count):
    frames = ",\n".join(
        f'    "{ident()}_{i}": {{"x": {rng.randint(0, 4096)}, "y": {rng.randint(0, 4096)}, '
        f'"w": {rng.choice((16, 32, 64))}, "h": {rng.choice((16, 32, 64))}}}'
        for i in range(count))
    return f'{{\n  "frames": {{\n{frames}\n  }}\n}}\n'


def low_entropy_image(size):
    # A bitmap of flat colour runs: compresses well, like pixel-art tiles.
    out = bytearray(b"BM" + size.to_bytes(4, "little") + bytes(48))
    while len(out) < size:
        out += bytes([rng.randrange(256)]) * rng.randint(1, 64)
    return bytes(out[:size])


def write(root, path, content):
    full = os.path.join(root, path)
    os.makedirs(os.path.dirname(full), exist_ok=True)
    mode = "w" if isinstance(content, str) else "wb"
    with open(full, mode) as handle:
        handle.write(content)


def git(root, *args):
    env = dict(os.environ, GIT_AUTHOR_NAME="Bench", GIT_AUTHOR_EMAIL="bench@example.com",
               GIT_COMMITTER_NAME="Bench", GIT_COMMITTER_EMAIL="bench@example.com",
               GIT_AUTHOR_DATE="2024-06-11T12:00:00Z", GIT_COMMITTER_DATE="2024-06-11T12:00:00Z",
               GIT_CONFIG_NOSYSTEM="1", HOME=root)
    subprocess.run(["git", "-C", root, *args], check=True, env=env, stdout=subprocess.DEVNULL)


def first_commit(root):
    modules = {}
    for i in range(110):
        folder = rng.choice(("engine", "engine/render", "engine/audio", "game", "game/enemies", "ui"))
        name = f"src/{folder}/{rng.choice(WORDS)}{i}.js"
        modules[name] = js_module(rng.randint(15000, 140000))
        write(root, name, modules[name])
    bundle = "\n".join(modules[name] for name in sorted(modules))
    write(root, "dist/bundle.js", bundle)
    write(root, "dist/bundle.min.js", " ".join(bundle.split()))
    library = js_module(900000)
    write(root, "vendor/physics/physics.js", library)
    write(root, "vendor/physics-legacy/physics.js", library.replace("velocity", "speed"))
    write(root, "examples/sandbox/lib/physics.js", library[: len(library) // 2])
    for i in range(30):
        write(root, f"{'pages/' if i else ''}{rng.choice(WORDS)}{i}.html", html_page(rng.randint(15000, 90000)))
    for i in range(20):
        write(root, f"css/{rng.choice(WORDS)}{i}.css", css_sheet(rng.randint(20000, 80000)))
    template = ["".join(rng.choice("....##==") for _ in range(200)) for _ in range(120)]
    for world in range(1, 9):
        for number in range(1, 13):
            write(root, f"levels/world{world}/level{number}.json", level_json(world, number, template))
    for i in range(400):
        group = rng.choice(("props", "enemies", "pickups", "triggers"))
        fields = ",\n".join(f'  "{ident()}": {rng.randint(0, 500)}' for _ in range(rng.randint(5, 120)))
        write(root, f"prefabs/{group}/{rng.choice(WORDS)}{i}.json", "{\n" + fields + "\n}\n")
    for i in range(60):
        write(root, f"shaders/{rng.choice(WORDS)}{i}.glsl",
              "precision mediump float;\n" + "\n".join(
                  f"uniform vec{rng.randint(2, 4)} {ident()};" for _ in range(rng.randint(5, 60))) + "\n")
    write(root, "data/atlas.json", atlas_json(12000))
    write(root, "data/strings.json", "{\n" + ",\n".join(
        f'  "{ident()}_{i}": "{" ".join(rng.choices(WORDS, k=8))}"' for i in range(15000)) + "\n}\n")
    for i in range(150):
        group = rng.choice(("characters", "enemies", "backgrounds", "ui/icons", "items"))
        write(root, f"assets/images/{group}/{rng.choice(WORDS)}{i}.png",
              b"\x89PNG\r\n\x1a\n" + rng.randbytes(rng.randint(15000, 150000)))
    for i in range(40):
        write(root, f"assets/images/tiles/tile{i}.bmp", low_entropy_image(rng.randint(20000, 80000)))
    for i in range(30):
        write(root, f"assets/audio/{rng.choice(('sfx', 'music'))}/{rng.choice(WORDS)}{i}.ogg",
              b"OggS" + rng.randbytes(rng.randint(80000, 380000)))
    for i in range(4):
        write(root, f"assets/fonts/font{i}.woff2", b"wOF2" + rng.randbytes(60000))
    git(root, "add", "-A")
    git(root, "commit", "-q", "-m", "First playable version")
    return bundle


def edit_commits(root, bundle):
    for round_number in range(1, 5):
        lines = bundle.split("\n")
        for _ in range(400):
            at = rng.randrange(len(lines))
            lines[at] = "        " + js_statement(0)
        bundle = "\n".join(lines)
        write(root, "dist/bundle.js", bundle)
        write(root, "dist/bundle.min.js", " ".join(bundle.split()))
        write(root, "data/atlas.json", atlas_json(12000 + 500 * round_number))
        for world in rng.sample(range(1, 9), 3):
            level = f"levels/world{world}/level{rng.randint(1, 12)}.json"
            with open(os.path.join(root, level)) as handle:
                text = handle.read()
            write(root, level, text.replace('"x": 1', '"x": 2'))
        write(root, f"src/game/patch{round_number}.js", js_module(30000))
        git(root, "add", "-A")
        git(root, "commit", "-q", "-m", f"Balance pass {round_number}")


def large_additions(root):
    for i in range(6000):
        group = rng.choice(("locale", "prefabs/props", "prefabs/enemies", "scripts/ai", "scripts/quests", "ui"))
        kind = rng.random()
        if kind < 0.4:
            text = "\n".join(f"{ident()} = {' '.join(rng.choices(WORDS, k=rng.randint(2, 10)))}"
                             for _ in range(rng.randint(3, 60))) + "\n"
            write(root, f"{group}/{rng.choice(WORDS)}{i}.txt", text)
        elif kind < 0.75:
            fields = ",\n".join(f'  "{ident()}": {rng.randint(0, 500)}' for _ in range(rng.randint(2, 40)))
            write(root, f"{group}/{rng.choice(WORDS)}{i}.json", "{\n" + fields + "\n}\n")
        else:
            write(root, f"{group}/{rng.choice(WORDS)}{i}.js", js_module(rng.randint(300, 4000)))
    for i in range(3):
        write(root, f"assets/video/cutscene{i}.webm", b"\x1aE\xdf\xa3" + rng.randbytes(9_000_000 + i * 1_000_000))
    write(root, "assets/maps/world.bin", low_entropy_image(12_000_000))
    os.symlink("src/game", os.path.join(root, "game-src-link"))
    git(root, "add", "-A")
    # A gitlink: a submodule entry naming a commit that is not in this repository.
    git(root, "update-index", "--add", "--cacheinfo", "160000," + "1" * 40 + ",engine-submodule")
    git(root, "commit", "-q", "-m", "Content update")


def long_history(root, commits):
    small = sorted(os.path.relpath(os.path.join(folder, name), root)
                   for folder, _, names in os.walk(os.path.join(root, "locale")) for name in names)
    for number in range(commits):
        for path in rng.sample(small, 12):
            with open(os.path.join(root, path)) as handle:
                text = handle.read()
            write(root, path, text + f"{ident()} = {' '.join(rng.choices(WORDS, k=5))}\n")
        module = f"src/game/patch{number % 4 + 1}.js"
        with open(os.path.join(root, module)) as handle:
            lines = handle.read().split("\n")
        lines[rng.randrange(len(lines))] = "        " + js_statement(0)
        write(root, module, "\n".join(lines))
        git(root, "add", "-A")
        git(root, "commit", "-q", "-m", f"Tweak {number}")


def main():
    large = sys.argv[1] == "--large"
    root = sys.argv[-1]
    git(root, "init", "-q", "-b", "main")
    edit_commits(root, first_commit(root))
    if large:
        large_additions(root)
        long_history(root, 300)


if __name__ == "__main__":
    main()
