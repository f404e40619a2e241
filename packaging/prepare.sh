# SPDX-FileCopyrightText: 2026 The TavrinViewer authors
# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034

# What `run`, `test`, `bench/run` and the scripts beside this one share: the Debian packages that
# they need, the device's system, and the build. Sourced by them, from the project's folder.

kBuildPackages=(cmake ninja-build g++ pkg-config qtbase5-dev libqt5serialport5-dev libdbus-1-dev)
kVirtualDisplayPackages=(xvfb xdotool fonts-dejavu-core)
kTestPackages=(dbus-daemon dbus-bin gpsd)
# Programs to measure against: Qt's own decoder, which is of Qt 6, and xgps.
kBenchPackages=(qt6-positioning-dev gpsd gpsd-clients)
# Qt's code generators are those of the machine that builds.
kCrossPackages=("${kBuildPackages[@]}" g++-arm-linux-gnueabihf mmdebstrap qemu-user-static)
kPackagePackages=(dpkg-dev file gzip)

kDeviceSuite=bookworm
kDeviceArch=armhf

fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# ensure_packages NAME...: installs those that are missing, and says which.
ensure_packages() {
    local package missing=() as_root=()
    command -v dpkg-query >/dev/null ||
        fail "this is no Debian system; install the equivalents of: $*"
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    printf 'Installing the missing Debian packages: %s\n' "${missing[*]}"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "these packages are missing and there is no sudo to install them: ${missing[*]}"
        as_root=(sudo)
    fi
    # apt refuses to run twice at once; kinds of tests that run side by side take turns.
    local in_turn=("${as_root[@]}" flock -o packaging/prepare.sh)
    "${in_turn[@]}" apt-get -qq update ||
        fail "'apt-get update' failed: is there a network? These packages are missing: ${missing[*]}"
    "${in_turn[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null ||
        fail "'apt-get install' failed: is there a network? These packages are missing: ${missing[*]}"
}

# Where the device's root is kept: outside the build folder, so that a clean build does not cost it.
default_sysroot() {
    printf '%s\n' "${TAVRIN_SYSROOT:-${XDG_CACHE_HOME:-$HOME/.cache}/tavrin-viewer/$kDeviceArch-$kDeviceSuite}"
}

# machine_sources SUITE: the main archive of that suite, from wherever this machine's apt takes it.
machine_sources() {
    local uri
    # shellcheck disable=SC2016
    uri=$(apt-get indextargets --format '$(REPO_URI)' \
        'Created-By: Packages' "Release: $1" 'Component: main' | head -n 1)
    [ -n "$uri" ] || fail "this machine's apt has no main archive of $1"
    printf 'deb %s %s main\n' "$uri" "$1"
}

# How this machine's apt reaches its archive: proxies, checks of dates and the like.
machine_apt_settings() {
    apt-config dump --no-empty --format '%f "%v";%n' Acquire |
        grep -E '^Acquire::(https?::|Check-|Retries|ForceIPv)'
    return 0
}

# build PRESET [TARGET...]: configures, when that is due, and builds, all targets when none is named.
build() {
    local preset=$1 targets=()
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    if [ ! -f "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
        cmake --preset "$preset" || fail "the project could not be configured"
    fi
    cmake --build --preset "$preset" "${targets[@]}" || fail "the project could not be built"
}
