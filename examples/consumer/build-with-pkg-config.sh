#!/bin/sh
# Builds main.cpp through pkg-config alone (PKG_CONFIG_PATH=<libdir>/pkgconfig
# for a private prefix). -fPIC: Qt's headers refuse code built without it.
set -eu
cd "$(dirname "$0")"
${CXX:-c++} -std=c++17 -fPIC -o "${1:-vantix-consumer}" main.cpp $(pkg-config --cflags --libs vantix)
