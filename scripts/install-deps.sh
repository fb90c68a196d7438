#!/usr/bin/env bash
# Installs the Debian packages Lumbra builds and tests with; skips what is already there.
set -euo pipefail
packages=(
    cmake g++ clang libclang-rt-14-dev clang-format pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-webengine-dev libqt6svg6 libgl1-mesa-dev
    libzip-dev libpython3.11-dev libicu-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    python3 xvfb xauth
)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
