#!/bin/sh
# Checks the Debian packages `make package` built in BUILD_DIR/packages:
#   - libvantix0, libvantix-dev, vantix-tools and python3-vantix are there, at the project's version;
#   - together they hold exactly what the build installs under /usr, each file once;
#   - their dependencies: on each other at this version, on Qt from dpkg-shlibdeps;
#   - apt could install them here (a simulation, nothing changes);
#   - python3-vantix's package imports, at this version, and pytest finds its plugin;
#   - lintian finds no error and no warning (its notes are shown).
#
#   scripts/check-packages.sh BUILD_DIR
set -eu
# Absolute: apt takes a path to a .deb only when it starts with / or ./.
build=$(cd "$1" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/vantix-check-packages.XXXXXX")
trap 'rm -rf "$work"' EXIT
log=$work/log
passed=0
failed=0

check() {
    what=$1
    shift
    if "$@" >"$log" 2>&1; then
        passed=$((passed + 1))
    else
        echo "check-packages: FAIL: $what" >&2
        sed 's/^/    /' "$log" >&2
        failed=$((failed + 1))
    fi
}
# depends PACKAGE TEXT: whether the package's Depends field holds TEXT.
depends() { dpkg-deb -f "$(deb "$1")" Depends | grep -q -F -- "$2"; }
deb() {
    case $1 in
    python3-*) echo "$build/packages/${1}_${version}_all.deb" ;;
    *) echo "$build/packages/${1}_${version}_${arch}.deb" ;;
    esac
}

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$build/CMakeCache.txt")
arch=$(dpkg --print-architecture)
packages="libvantix0 libvantix-dev vantix-tools python3-vantix"

for package in $packages; do
    check "$(deb "$package") is missing" test -f "$(deb "$package")"
done
if [ "$failed" -ne 0 ]; then
    echo "check-packages: $passed passed, $failed failed"
    exit 1
fi

# The packages' files, each once, against a plain install of the same build.
DESTDIR=$work/stage cmake --install "$build" --prefix /usr >/dev/null
(cd "$work/stage" && find . ! -type d | sort) >"$work/installed"
for package in $packages; do
    dpkg-deb --fsys-tarfile "$(deb "$package")" | tar -t | grep -v '/$' >>"$work/packaged.unsorted"
done
sort "$work/packaged.unsorted" >"$work/packaged"
check "a file is in two packages" sh -c "! uniq -d '$work/packaged' | grep ."
check "the packages and the install differ (< installed only, > packaged only)" \
    diff "$work/installed" "$work/packaged"

check "libvantix-dev does not depend on libvantix0 (= $version)" depends libvantix-dev "libvantix0 (= $version)"
check "vantix-tools does not depend on libvantix0 (= $version)" depends vantix-tools "libvantix0 (= $version)"
check "vantix-tools does not recommend faketime (vantix-test --speed)" \
    sh -c "dpkg-deb -f '$(deb vantix-tools)' Recommends | grep -q -w faketime"
check "libvantix0 lacks its Qt Core dependency" depends libvantix0 libqt5core5a
check "libvantix0 lacks its Qt Network dependency" depends libvantix0 libqt5network5
check "libvantix0 has no shlibs file for libVantix.so.0" \
    sh -c "dpkg-deb -I '$(deb libvantix0)' shlibs | grep -q -x 'libVantix 0 libvantix0 (>= $version)'"
check "libvantix0 lacks the ldconfig trigger" \
    sh -c "dpkg-deb -I '$(deb libvantix0)' triggers | grep -q -x 'activate-noawait ldconfig'"

check "python3-vantix is not Architecture: all" sh -c "test \"\$(dpkg-deb -f '$(deb python3-vantix)' Architecture)\" = all"
check "python3-vantix does not depend on python3" depends python3-vantix "python3 (>= 3.9)"
check "python3-vantix lacks its maintainer scripts (py3compile, py3clean)" \
    sh -c "dpkg-deb -I '$(deb python3-vantix)' postinst | grep -q py3compile && dpkg-deb -I '$(deb python3-vantix)' prerm | grep -q py3clean"

# The Python package as Debian's python3 would see it installed.
dpkg-deb -x "$(deb python3-vantix)" "$work/python"
site=$work/python/usr/lib/python3/dist-packages
check "python3-vantix does not import, or not at version $version" \
    env PYTHONPATH="$site" PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -c "
import importlib.metadata, vantix, vantix.pytest_plugin
assert vantix.__file__.startswith('$site'), vantix.__file__
assert vantix.__version__ == importlib.metadata.version('vantix') == '$version'
assert any(e.value == 'vantix.pytest_plugin' for e in importlib.metadata.entry_points(group='pytest11'))
"
if /usr/bin/python3 -c "import pytest" 2>/dev/null; then
    check "pytest does not find the plugin of python3-vantix" \
        sh -c "cd '$work' && PYTHONPATH='$site' PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m pytest --help | grep -q -- --vantix-app"
fi

# What apt would do with the four files on this machine; -s changes nothing.
check "apt cannot install the packages" \
    apt-get install -s -q --no-install-recommends "$(deb libvantix0)" "$(deb libvantix-dev)" "$(deb vantix-tools)" \
    "$(deb python3-vantix)"

echo "check-packages: lintian $(lintian --print-version)"
lintian_status=0
lintian --display-info --fail-on error,warning "$(deb libvantix0)" "$(deb libvantix-dev)" "$(deb vantix-tools)" \
    "$(deb python3-vantix)" \
    >"$work/lintian" 2>&1 || lintian_status=$?
# CI runs as root, which lintian only remarks on.
grep -v 'running with root privileges' "$work/lintian" || true
check "lintian found errors or warnings (exit status $lintian_status)" test "$lintian_status" -eq 0

echo "check-packages: $passed passed, $failed failed"
test "$failed" -eq 0
