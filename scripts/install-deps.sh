#!/usr/bin/env bash
# Installs the Debian packages that Hushwall builds and tests with. Run as
# root on a fresh Debian machine; does nothing when they are all present.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libsqlite3-dev sqlite3
  libplist++-dev libplist-dev libplist-utils
  libsdbus-c++-dev dbus-daemon dbus-bin
  libphonenumber-dev
  nlohmann-json3-dev libcli11-dev
  libgtest-dev libgmock-dev
  libbenchmark-dev
  clang-14 libclang-rt-14-dev
  # SHA-1 for the phone's code signatures (macho/).
  libssl-dev
  # The device adapter under a real Objective-C runtime (objchost/).
  libgnustep-base-dev libblocksruntime-dev libobjc-12-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if ((${#missing[@]} == 0)); then
  echo "install-deps: all ${#packages[@]} packages present"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
if [[ $(id -u) -ne 0 ]]; then
  echo "install-deps: must run as root to install packages" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
