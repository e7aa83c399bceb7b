#!/bin/sh
# make test-install: builds BUILD_DIR for a temporary prefix, installs it there
# and checks that the install alone is enough to use Vantix:
#   - every header of the public lists is installed, nothing else is (no
#     private header), and each compiles on its own (tests/install/);
#   - every installed file belongs to one of the package components;
#   - examples/consumer, copied out of the source tree, builds with
#     find_package(Vantix) and with pkg-config, sees only the prefix, and runs;
#   - the installed vantix-sim runs an installed scenario without
#     LD_LIBRARY_PATH, so does the installed vantix-test with the vantix-sim
#     beside it, and every installed program has a man page.
#
#   scripts/test-install.sh [BUILD_DIR]   (default build-release)
set -eu
cd "$(dirname "$0")/.."
source_dir=$(pwd)
build=${1:-build-release}
case $build in /*) ;; *) build=$source_dir/$build ;; esac

work=$(mktemp -d "${TMPDIR:-/tmp}/vantix-test-install.XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
log=$work/log
passed=0
failed=0

pass() { passed=$((passed + 1)); }
fail() {
    echo "test-install: FAIL: $*" >&2
    failed=$((failed + 1))
}
# check DESCRIPTION COMMAND...: one check, passing when the command succeeds.
check() {
    what=$1
    shift
    if "$@" >"$log" 2>&1; then
        pass
    else
        fail "$what"
        sed 's/^/    /' "$log" >&2
    fi
}
# loads_prefix_vantix PROGRAM: whether the program loads the prefix's libVantix.
loads_prefix_vantix() {
    loaded=$(ldd "$1" | sed -n 's/^[[:space:]]*libVantix\.so\.0 => \(.*\) (0x.*/\1/p')
    test -n "$loaded" && test "$(readlink -f "$loaded")" = "$(readlink -f "$prefix/$libdir/libVantix.so.0")"
}

start=$(date +%s)
JOBS=${JOBS:-$(nproc)} ./scripts/release-build.sh "$build" "$prefix"
cmake --install "$build" >"$work/install.log"
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$build/CMakeCache.txt")
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p' "$build/CMakeCache.txt")
echo "test-install: Vantix $version installed in $prefix"

# --- Headers: exactly the public lists, none private.
manifest=$build/public-headers.txt
sort "$manifest" >"$work/headers.expected"
(cd "$prefix/include" && find . -type f | sed 's|^\./||' | sort) >"$work/headers.installed"
check "installed headers differ from the public lists (< listed only, > installed only)" \
    diff "$work/headers.expected" "$work/headers.installed"
check "a private header is installed" sh -c "! find '$prefix' -name '*_p.h' | grep ."
check "vantix/vantix_version.h does not carry $version" \
    grep -q -F "#define VANTIX_VERSION_STRING \"$version\"" "$prefix/include/vantix/vantix_version.h"

# --- Components: the three package components together install everything.
for component in runtime dev tools; do
    cmake --install "$build" --component "$component" --prefix "$work/parts" >/dev/null
done
(cd "$prefix" && find . ! -type d | sort) >"$work/files.all"
(cd "$work/parts" && find . ! -type d | sort) >"$work/files.components"
check "files installed outside the runtime, dev and tools components (< outside)" \
    diff "$work/files.all" "$work/files.components"

# --- CMake package and header check, from the prefix alone.
# cmake_alone SOURCE BUILD [OPTION...]: configures with the prefix as the only place to find Vantix.
cmake_alone() {
    source=$1
    binary=$2
    shift 2
    cmake -S "$source" -B "$binary" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
        -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF -DCMAKE_FIND_USE_SYSTEM_PACKAGE_REGISTRY=OFF "$@"
}
cp -R tests/install "$work/headercheck-src"
if cmake_alone "$work/headercheck-src" "$work/headercheck" -DHEADER_LIST="$manifest" >"$log" 2>&1 &&
    cmake --build "$work/headercheck" -j "${JOBS:-$(nproc)}" >>"$log" 2>&1; then
    pass
    check "the header check compiled with paths of the source tree" \
        sh -c "! grep -q -F '$source_dir' '$work/headercheck/compile_commands.json'"
else
    fail "an installed header does not compile on its own"
    sed 's/^/    /' "$log" >&2
fi

consumer=$work/consumer
cp -R examples/consumer "$consumer"
if cmake_alone "$consumer" "$consumer/build" >"$log" 2>&1 && cmake --build "$consumer/build" >>"$log" 2>&1; then
    pass
    check "find_package(Vantix) found another Vantix than the prefix's" \
        grep -q -x -F "Vantix_DIR:PATH=$prefix/$libdir/cmake/Vantix" "$consumer/build/CMakeCache.txt"
    check "the CMake consumer compiled with paths of the source tree" \
        sh -c "! grep -q -F '$source_dir' '$consumer/build/compile_commands.json'"
    check "the CMake consumer is made to define QT_MESSAGELOGCONTEXT" \
        sh -c "! grep -q MESSAGELOGCONTEXT '$consumer/build/compile_commands.json'"
    check "the CMake consumer does not load the prefix's libVantix" loads_prefix_vantix "$consumer/build/vantix-consumer"
    check "the CMake consumer failed" sh -c "timeout 60 '$consumer/build/vantix-consumer' >'$work/cmake.out'"
    check "the CMake consumer did not list the Tolvex's devices" \
        grep -q -x "Vantix $version, [1-9][0-9]* devices" "$work/cmake.out"
    check "the CMake consumer did not list the power supply" grep -q -x ID_POWER_SUPPLY "$work/cmake.out"
else
    fail "the CMake consumer does not build against the prefix"
    sed 's/^/    /' "$log" >&2
fi

# --- pkg-config, from the prefix alone (Qt's .pc files from the system).
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
check "pkg-config does not give the version $version" sh -c "test \"\$(pkg-config --modversion vantix)\" = '$version'"
check "vantix.pc points elsewhere than $prefix" \
    sh -c "pkg-config --cflags --libs vantix | grep -q -F -- '-I$prefix/include' &&
        pkg-config --libs vantix | grep -q -F -- '-L$prefix/$libdir'"
check "vantix.pc forces QT_MESSAGELOGCONTEXT on consumers" \
    sh -c "! pkg-config --cflags vantix | grep -q MESSAGELOGCONTEXT"
if "$consumer/build-with-pkg-config.sh" "$work/pc-consumer" >"$log" 2>&1; then
    pass
    check "the pkg-config consumer does not load the prefix's libVantix" \
        env LD_LIBRARY_PATH="$prefix/$libdir" sh -c "ldd '$work/pc-consumer' | grep -q -F '$prefix/$libdir/libVantix.so.0'"
    check "the pkg-config consumer failed" \
        sh -c "LD_LIBRARY_PATH='$prefix/$libdir' timeout 60 '$work/pc-consumer' >'$work/pc.out'"
    check "the two consumers printed different devices" cmp "$work/cmake.out" "$work/pc.out"
else
    fail "the pkg-config consumer does not build against the prefix"
    sed 's/^/    /' "$log" >&2
fi
unset PKG_CONFIG_PATH

# --- Programs: they find their libraries, know their version, have man pages.
sim=$prefix/bin/vantix-sim
check "the installed vantix-sim does not print its version $version" \
    sh -c "test \"\$('$sim' --version)\" = 'vantix-sim $version'"
check "the installed vantix-sim does not load the prefix's libVantix" \
    loads_prefix_vantix "$sim"
check "an installed scenario fails in the installed vantix-sim" \
    timeout 60 "$sim" --platform tolvex-plus --quiet --root "$work/sim-root" \
    --script "$prefix/share/vantix/scenarios/usb-stick-hotplug.vsim"
# Without a program, vantix-test runs the vantix-sim installed beside it, not one on PATH.
check "the installed vantix-test does not pass an installed scenario against the vantix-sim beside it" \
    env PATH=/usr/bin:/bin TMPDIR="$work" timeout 60 "$prefix/bin/vantix-test" --platform tolvex-plus \
    "$prefix/share/vantix/scenarios/usb-stick-hotplug.vsim"
for program in "$prefix"/bin/*; do
    name=$(basename "$program")
    page=$prefix/share/man/man1/$name.1.gz
    check "$name has no man page" test -f "$page"
    check "the man page of $name has no NAME of its own" sh -c "! zcat '$page' | grep -q 'manual page for'"
    check "the man page of $name has groff warnings" \
        sh -c "LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l '$page' 2>&1 >/dev/null | (! grep .)"
done

echo "test-install: finished in $(($(date +%s) - start)) s"
echo "test-install: $passed passed, $failed failed"
test "$failed" -eq 0
