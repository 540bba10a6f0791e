# shellcheck shell=bash
# Shared by ./run, ./test and ./check; sourced, with the tree's root as current directory.

say() { printf '== %s\n' "$*" >&2; }
fail() { printf '!! %s\n' "$*" >&2; exit 1; }

# packages_for PURPOSE...: the packages of these sections of packages.txt.
packages_for() {
    local purpose
    for purpose in "$@"; do
        sed -n "/^\\[$purpose\\]\$/,/^\\[/ { /^[a-z0-9]/p }" packages.txt
    done
}

# install_packages PURPOSE...: installs those of these packages that are missing. Asks nothing when
# none is.
install_packages() {
    local package missing=()
    while read -r package; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed \
            || missing+=("$package")
    done < <(packages_for "$@")
    [ ${#missing[@]} -gt 0 ] || return 0

    command -v apt-get >/dev/null \
        || fail "these packages are missing, and there is no apt-get to install them: ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null \
            || fail "these packages are missing; install them as root: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    quietly build/packages.log "${as_root[@]}" apt-get update || fail "looking for packages failed"
    quietly build/packages.log "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}" \
        || fail "installing the packages failed"
}

# quietly LOG COMMAND...: runs the command; prints what it wrote only when it fails.
quietly() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    "$@" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}

# build_preset PRESET: configures it, the first time, and builds it.
build_preset() {
    local preset=$1 log=build/$1.log
    say "Building $preset"
    if [ ! -f "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
        quietly "$log" cmake --preset "$preset" || fail "configuring $preset failed"
    fi
    quietly "$log" cmake --build --preset "$preset" -- --quiet || fail "building $preset failed"
}
