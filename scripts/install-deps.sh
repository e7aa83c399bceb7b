#!/bin/sh
# Installs the Debian packages needed to build, run and test Vantix.
# Idempotent: packages already present are skipped, and apt is only
# touched when something is missing.
set -eu

PACKAGES="
build-essential
cmake
make
pkg-config
qtbase5-dev
qtbase5-dev-tools
libqt5network5
libqt5test5
libqt5widgets5
xvfb
xauth
clang-format
clang
libclang-rt-14-dev
libbenchmark-dev
iproute2
util-linux
dpkg-dev
fakeroot
file
binutils
gzip
help2man
faketime
groff-base
man-db
lintian
python3-venv
python3-pytest
python3-pytest-xdist
"

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done

if [ -z "$missing" ]; then
    echo "install-deps: all packages present"
    exit 0
fi

SUDO=""
if [ "$(id -u)" != "0" ]; then
    if command -v sudo >/dev/null 2>&1; then
        SUDO="sudo"
    else
        echo "install-deps: missing:$missing; run this script as root" >&2
        exit 1
    fi
fi

echo "install-deps: installing$missing"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
# shellcheck disable=SC2086
$SUDO apt-get install -y -q --no-install-recommends $missing
