#!/usr/bin/env python3
"""Writes a deterministic synthetic Steam folder for the store scan benchmark.

steamapps holds GAMES app manifests (all fully installed, as Steam writes them) and
steamapps/common one folder per game with a few hundred files in nested folders, shaped
like real installs: engine folders, data packs, localisation, and a few executables (the
game, a crash handler, an installer in a redist folder, a tool or two). File contents are
a few bytes; executables get distinct sizes so the chooser's size rule has work to do.

usage: make_steam_library.py <empty folder> [games]
"""
import os
import random
import sys

SEED = 20240612
WORDS = ("lantern harbor sky forge iron tide ember vale hollow crown drift signal orbit quarry "
         "marble thistle copper echo rune bastion willow cinder frost meadow").split()
FOLDERS = ("Engine Binaries Content Paks Data Movies Localization Shaders Plugins Config "
           "Audio Maps Textures Scripts Fonts").split()
EXTENSIONS = (".pak", ".dll", ".json", ".txt", ".png", ".ogg", ".bin", ".ini", ".lua", ".dat")


def manifest(appid, name, installdir, rng):
    return (f'"AppState"\n{{\n\t"appid"\t\t"{appid}"\n\t"universe"\t\t"1"\n\t"name"\t\t"{name}"\n'
            f'\t"StateFlags"\t\t"4"\n\t"installdir"\t\t"{installdir}"\n'
            f'\t"LastUpdated"\t\t"{1700000000 + rng.randrange(10**7)}"\n'
            f'\t"LastPlayed"\t\t"{1710000000 + rng.randrange(10**7)}"\n'
            f'\t"SizeOnDisk"\t\t"{rng.randrange(10**10)}"\n\t"buildid"\t\t"{rng.randrange(10**8)}"\n'
            f'\t"InstalledDepots"\n\t{{\n\t\t"{appid + 1}"\n\t\t{{\n\t\t\t"manifest"\t\t"{rng.randrange(10**18)}"\n'
            f'\t\t\t"size"\t\t"{rng.randrange(10**10)}"\n\t\t}}\n\t}}\n'
            f'\t"UserConfig"\n\t{{\n\t\t"language"\t\t"english"\n\t}}\n}}\n')


def write(path, size):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as out:
        out.write(b"x" * size)


def make_game(folder, name, rng):
    stem = name.replace(" ", "")
    executables = [(f"{stem}.exe", 5000), ("UnityCrashHandler64.exe", 9000),
                   (os.path.join("_CommonRedist", "vcredist", "VC_redist.x64.exe"), 12000),
                   (os.path.join("Tools", f"{rng.choice(WORDS).title()}Editor.exe"), 7000 + rng.randrange(100)),
                   (os.path.join("Engine", "Binaries", "Win64", f"{stem}-Win64-Shipping.exe"), 6000)]
    for relative, size in executables:
        write(os.path.join(folder, relative), size)
    folders = [""]
    for _ in range(rng.randrange(12, 20)):
        parent = rng.choice(folders)
        folders.append(os.path.join(parent, rng.choice(FOLDERS) + str(rng.randrange(10))))
    for index in range(rng.randrange(250, 350)):
        file_name = f"{rng.choice(WORDS)}_{index}{rng.choice(EXTENSIONS)}"
        write(os.path.join(folder, rng.choice(folders), file_name), rng.randrange(1, 64))


def main():
    root = sys.argv[1]
    games = int(sys.argv[2]) if len(sys.argv) > 2 else 2000
    rng = random.Random(SEED)
    steamapps = os.path.join(root, "steamapps")
    os.makedirs(os.path.join(steamapps, "common"), exist_ok=True)
    for number in range(games):
        appid = 4000000 + number * 10
        name = f"{rng.choice(WORDS).title()} {rng.choice(WORDS).title()} {number}"
        installdir = name
        with open(os.path.join(steamapps, f"appmanifest_{appid}.acf"), "w") as out:
            out.write(manifest(appid, name, installdir, rng))
        make_game(os.path.join(steamapps, "common", installdir), name, rng)


if __name__ == "__main__":
    main()
