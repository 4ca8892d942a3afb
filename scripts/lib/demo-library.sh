# The games scripts/run shows beside the stand-in's catalogue, laid out in its own Wine
# prefix: a Steam library of three games (one the catalogue also sells, one the stand-in
# has friends' playtime and ratings for) with Wine's own programs as their executables, so
# they have icons; and a clone of the shared browser game "Tiny Tower Defense". Source it
# inside the Wine session; demo_library DATA_FOLDER lays it out (again) and is idempotent.

demo_steam_game() {
    local steam=$1 appid=$2 name=$3 folder=$4 program=$5
    mkdir -p "$steam/steamapps/common/$folder"
    printf '"AppState"\n{\n\t"appid"\t\t"%s"\n\t"name"\t\t"%s"\n\t"StateFlags"\t\t"4"\n\t"installdir"\t\t"%s"\n\t"buildid"\t\t"1207"\n}\n' \
        "$appid" "$name" "$folder" >"$steam/steamapps/appmanifest_$appid.acf"
    local exe="$steam/steamapps/common/$folder/$folder.exe"
    [ -f "$exe" ] || cp "$program" "$exe"
}

demo_library() {
    local data_folder=$1
    local system32="$WINEPREFIX/drive_c/windows/system32"
    local steam="$WINEPREFIX/drive_c/Program Files (x86)/Steam"
    mkdir -p "$steam/steamapps"
    demo_steam_game "$steam" 2400010 "Sky-Forge 2" "SkyForge2" "$system32/winemine.exe"
    demo_steam_game "$steam" 104900 "Sky Harbor" "SkyHarbor" "$system32/notepad.exe"
    demo_steam_game "$steam" 2400020 "Lumber Lane" "LumberLane" "$system32/winecfg.exe"
    wine64 reg add 'HKCU\Software\Valve\Steam' /v SteamPath /d 'C:\Program Files (x86)\Steam' /f >/dev/null 2>&1

    local clone="$data_folder/Corvandell/github/alice-codes-tiny-tower"
    mkdir -p "$clone"
    printf '<!doctype html>\n<html><head><title>Tiny Tower Defense</title>\n<link rel="icon" href="icon.png">\n</head><body><canvas id="game"></canvas></body></html>\n' \
        >"$clone/index.html"
    [ -f "$clone/icon.png" ] || convert -size 32x32 xc:none -fill '#e8563f' -draw 'roundrectangle 2,2 29,29 6,6' \
        -fill white -draw 'rectangle 13,7 18,24' -draw 'rectangle 8,7 23,11' "$clone/icon.png"
}
