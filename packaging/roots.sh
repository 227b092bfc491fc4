# Functions for scripts that build and try packages in roots of Debian releases. To be sourced by a script that runs as root,
# in the folder of the repository.
#
# choose_root RELEASE [ARCHITECTURE] sets the variables that the other functions use:
#   release, architecture   what the packages are for
#   roots                   the folder of the roots and of the logs
#   root                    the common start of the names: $root-build is the root to build in, $root-clean the clean one
#   emulator                what runs the packages' programs in the clean root; empty for this machine's architecture
# shellcheck shell=bash

say() { printf '\n== %s\n' "$*"; }

fail() { echo "$*" >&2; exit 1; }

choose_root() {
    release=$1
    local machine sources
    machine=$(dpkg --print-architecture)
    architecture=${2:-$machine}
    [ "$(id -u)" -eq 0 ] || fail "This script must run as root."
    command -v debootstrap >/dev/null || fail "This script needs debootstrap; install it first."
    roots=$PWD/build/roots
    root=$roots/$release
    emulator=
    if [ "$architecture" != "$machine" ]; then
        root=$roots/$release-$architecture
        emulator=/usr/bin/qemu-$(dpkg-architecture --host-arch "$architecture" --query DEB_HOST_GNU_CPU 2>/dev/null) ||
            fail "Debian has no architecture named $architecture."
    fi
    sources=$(find /etc/apt/sources.list /etc/apt/sources.list.d/debian.sources 2>/dev/null || true)
    # shellcheck disable=SC2086
    mirror=$(awk '/^URIs:|^deb /{for (i = 2; i <= NF; i++) if ($i ~ /^[a-z+]+:\/\//) {print $i; exit}}' ${sources:-/dev/null})
    [ -n "$mirror" ] || fail "This machine's apt sources name no mirror."
    mkdir -p "$roots"
}

# in_root ROOT COMMAND...: runs a command in the root, in new mount and PID namespaces.
in_root() {
    local root=$1
    shift
    unshare --mount --pid --fork --kill-child "$PWD/packaging/enter-root" "$root" "$@"
}

# offline ROOT COMMAND...: the same in a new network namespace that has only loopback, so that all ports are free.
offline() {
    local root=$1
    shift
    unshare --net --mount --pid --fork --kill-child sh -c 'ip link set lo up && exec "$@"' - \
        "$PWD/packaging/enter-root" "$root" "$@"
}

# logged FILE COMMAND...: runs a command; if it fails, prints the end of its output and ends the script.
logged() {
    local log=$1
    shift
    "$@" >"$log" 2>&1 || { tail -n 20 "$log" >&2; fail "This has failed: $*; the output is in $log."; }
}

# install ROOT PACKAGE...
install() {
    local where=$1
    shift
    logged "$root-install.log" in_root "$where" apt-get install -qq -y --no-install-recommends "$@"
}

# Creates a root with the package lists of this machine's architecture and of the packages' one.
bootstrap() {
    logged "$1.log" debootstrap --variant=minbase "$release" "$1" "$mirror"
    [ -z "$emulator" ] || in_root "$1" dpkg --add-architecture "$architecture"
    in_root "$1" apt-get update -qq
}

# Creates $root-build or updates it, and copies the last commit to /source there.
prepare_builder() {
    local builder=$root-build
    if [ -d "$builder/usr" ]; then
        # The mirror keeps no former versions.
        in_root "$builder" apt-get update -qq
    else
        bootstrap "$builder"
    fi
    install "$builder" git ca-certificates build-essential ${emulator:+"crossbuild-essential-$architecture"} debhelper lintian
    # git leaves unchanged files alone, so that the previous build can be reused.
    [ -d "$builder/source" ] || git init -q "$builder/source"
    git -C "$builder/source" fetch -q "file://$PWD" HEAD
    git -C "$builder/source" reset -q --hard FETCH_HEAD
    git -C "$builder/source" clean -qfd
    if [ -z "$emulator" ]; then
        in_root "$builder" /source/packaging/install-packages 2>>"$root-install.log"
    else
        # The libraries of two architectures cannot all be installed side by side: this root has only what the packages need.
        # shellcheck disable=SC2016
        logged "$root-install.log" in_root "$builder" sh -c 'mkdir /tmp/package && cp -r /source/packaging/debian /tmp/package &&
            apt-get build-dep -qq -y --no-install-recommends --host-architecture "$1" -P cross,nocheck /tmp/package' - \
            "$architecture"
    fi
}

# build DEPLOYMENT: builds the packages of the last commit in $root-build/source/build/packages, and checks them with lintian.
build() {
    local said
    say "Building for $architecture on $release"
    in_root "$root-build" /source/packaging/build-packages "$1" --arch "$architecture"
    say "lintian"
    # shellcheck disable=SC2016
    if ! said=$(in_root "$root-build" sh -c 'lintian --allow-root --fail-on none /source/build/packages/*_$1.changes' - \
        "$architecture" 2>&1) || [ -n "$said" ]; then
        echo "$said"
        exit 1
    fi
    echo "nothing"
}

# Creates $root-clean, with an emulator and a user.
prepare_clean() {
    local clean=$root-clean
    rm -rf "$clean"
    bootstrap "$clean"
    in_root "$clean" useradd --create-home customer
    [ -z "$emulator" ] || install "$clean" qemu-user
    # What starts the programs: the kernel does not know about the emulator.
    mkdir -p "$clean/packages/bin"
    local name
    for name in marovenda marovenda-demo-service; do
        printf '#!/bin/sh\nexec %s "$@"\n' "${emulator:+$emulator }/usr/bin/$name" >"$clean/packages/bin/$name"
        chmod 755 "$clean/packages/bin/$name"
    done
}
