#!/usr/bin/env bash
# Installs what Tunebox needs on Debian 12 and builds it into ./build.
# Safe to run again: installed packages and an existing build are kept.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
    cmake g++ clang make pkg-config
    googletest libgtest-dev libgmock-dev libbenchmark-dev
    qt6-base-dev qt6-svg-dev fonts-ipafont-gothic
    libpulse-dev pulseaudio
    pipewire pipewire-pulse wireplumber dbus dbus-daemon
    libmpg123-dev libsoxr-dev libcli11-dev zlib1g-dev
    lame sox libsox-fmt-all mpg123 ffmpeg twolame
    libsndfile1-dev libmp3lame-dev libebur128-dev librubberband-dev
    qt6-tools-dev qt6-l10n-tools qt6-translations-l10n xvfb xauth
)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
        missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
fi

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTUNEBOX_WERROR=ON >/dev/null
cmake --build build -j2
