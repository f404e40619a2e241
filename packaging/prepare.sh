# SPDX-FileCopyrightText: 2026 The TavrinViewer authors
# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash

# What `run` and `test` share: the Debian packages that they need, and the build. Sourced by them,
# from the project's folder.

kBuildPackages=(cmake ninja-build g++ qtbase5-dev libqt5serialport5-dev)
kTestPackages=(gpsd)
kVirtualDisplayPackages=(xvfb xdotool fonts-dejavu-core)

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
    "${as_root[@]}" apt-get -qq update ||
        fail "'apt-get update' failed: is there a network? These packages are missing: ${missing[*]}"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null ||
        fail "'apt-get install' failed: is there a network? These packages are missing: ${missing[*]}"
}

# build PRESET [TARGET...]: configures once and builds, all targets when none is named.
build() {
    local preset=$1 targets=()
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    if [ ! -f "build/$preset/build.ninja" ]; then
        cmake --preset "$preset" || fail "the project could not be configured"
    fi
    cmake --build --preset "$preset" "${targets[@]}" || fail "the project could not be built"
}
