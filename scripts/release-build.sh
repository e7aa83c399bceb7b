#!/bin/sh
# Configures and builds BUILD_DIR for installing under PREFIX: no tests, no
# benchmarks, and Debian's compiler and linker flags with every hardening
# option, as a Debian package build gets them. make install, make package and
# make test-install build through here.
#
#   scripts/release-build.sh BUILD_DIR PREFIX
set -eu
cd "$(dirname "$0")/.."
build_dir=$1
prefix=$2

flags() { DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get "$1"; }

# Build type None, as debhelper uses: the flags above are all there is.
cmake -S . -B "$build_dir" -DCMAKE_BUILD_TYPE=None -DBUILD_TESTING=OFF \
    -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON \
    -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DCMAKE_CXX_FLAGS="$(flags CXXFLAGS) $(flags CPPFLAGS)" \
    -DCMAKE_EXE_LINKER_FLAGS="$(flags LDFLAGS)" \
    -DCMAKE_SHARED_LINKER_FLAGS="$(flags LDFLAGS)" >/dev/null
cmake --build "$build_dir" -j "${JOBS:-$(nproc)}"
