# Shared Wine set-up for scripts/wine-session and cmake/wine-run. Source it; it defines
# functions only.

wine_export_defaults() {
    export PATH=/usr/lib/wine:$PATH
    export WINEARCH=win64 WINEDEBUG=-all
    # No mono or gecko installers, and a crash ends the process instead of opening winedbg.
    export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d"
}

# Creates and tunes a prefix: without a window manager Wine waits 2 s on every window
# close unless it manages no windows itself, and a crash dialog would hang a test.
wine_init_prefix() {
    local prefix=$1
    export WINEPREFIX=$prefix
    mkdir -p "$prefix"
    if [ ! -f "$prefix/.corvandell-ready" ]; then
        wine64 wineboot -i >/dev/null 2>&1
        wine64 reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1
        wine64 reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1
        wineserver -w
        touch "$prefix/.corvandell-ready"
    fi
}

# Starts Xvfb on the first free display number; exports DISPLAY and sets XVFB_PID.
wine_start_xvfb() {
    local n
    for n in $(seq 91 199); do
        if [ ! -e "/tmp/.X11-unix/X$n" ] && [ ! -e "/tmp/.X$n-lock" ]; then
            Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
            local pid=$!
            local tries
            for tries in $(seq 1 100); do
                [ -e "/tmp/.X11-unix/X$n" ] && break
                sleep 0.05
            done
            export DISPLAY=":$n"
            XVFB_PID=$pid
            return 0
        fi
    done
    echo "no free X display number" >&2
    return 1
}
