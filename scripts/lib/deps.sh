# Installs the Debian packages the build and the tests need, when any is missing.
# Source it and call ensure_packages; it runs apt only when something is absent.

CORVANDELL_PACKAGES=(
    cmake ninja-build g++ git clang-format time
    googletest libgtest-dev libgmock-dev libbenchmark-dev
    g++-mingw-w64-x86-64-posix nsis zip
    wine wine64
    xvfb xauth x11-utils xdotool imagemagick pulseaudio
    python3 python3-aiohttp python3-cryptography
    zlib1g-dev libssl-dev libdeflate-dev
)

ensure_packages() {
    local missing=()
    local package
    for package in "${CORVANDELL_PACKAGES[@]}"; do
        if [ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" != "install ok installed" ]; then
            missing+=("$package")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing missing packages: ${missing[*]}"
    local sudo=
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
}
