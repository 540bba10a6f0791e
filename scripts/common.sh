# Shared by ./run and ./test; sourced, with the tree's root as current directory.

say() { printf '== %s\n' "$*" >&2; }
fail() { printf '!! %s\n' "$*" >&2; exit 1; }

# Installs the Debian packages of packages.txt that are missing. Asks nothing when none is.
install_packages() {
    local package missing=()
    while read -r package; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed \
            || missing+=("$package")
    done < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' packages.txt)
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
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update \
        && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        fail "installing the packages failed"
    fi
    rm -f "$log"
}

# Configures (once) and builds a preset; prints the compiler's words only when it fails.
build_preset() {
    local preset=$1 log
    mkdir -p build
    log=build/$preset.log
    say "Building $preset"
    if [ ! -f "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
        cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; fail "configuring $preset failed"; }
    fi
    cmake --build --preset "$preset" >"$log" 2>&1 \
        || { grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Automatic)' "$log" >&2 || true; fail "building $preset failed"; }
}
