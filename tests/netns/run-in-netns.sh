#!/bin/sh
# Runs a test program in a private network namespace holding a veth pair
# eth0 <-> wlan0, so that the program may change their addresses and links
# without touching the host's interfaces. VANTIX_TEST_NETNS tells the program
# the namespace it must not be in (the one it was started from), so it can
# check that it is isolated. Exits with 77 (skipped) where no namespace can be
# made.
set -u
SKIP=77

if [ $# -lt 1 ]; then
    echo "usage: $0 PROGRAM [ARGUMENTS...]" >&2
    exit 2
fi
if [ "$(id -u)" != "0" ]; then
    echo "SKIP: a private network namespace needs root"
    exit $SKIP
fi
for tool in unshare ip; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "SKIP: '$tool' not found (packages util-linux, iproute2)"
        exit $SKIP
    fi
done
outer=$(readlink /proc/self/ns/net 2>/dev/null)
if [ -z "$outer" ]; then
    echo "SKIP: cannot tell the current network namespace (/proc/self/ns/net)"
    exit $SKIP
fi
if ! unshare -n true 2>/dev/null; then
    echo "SKIP: cannot create a network namespace (unshare -n failed)"
    exit $SKIP
fi

exec unshare -n sh -c '
    if ! ip link set lo up || ! ip link add eth0 type veth peer name wlan0; then
        echo "SKIP: cannot create the veth pair eth0/wlan0"
        exit 77
    fi
    exec "$@"
' run-in-netns env VANTIX_TEST_NETNS="$outer" "$@"
