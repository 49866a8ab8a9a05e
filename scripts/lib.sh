# shellcheck shell=bash
# What the commands of this tree share. Sourced, with the working directory at the root of the tree.

say() { printf '%s\n' "$*"; }
die() { printf '%s\n' "$*" >&2; exit 1; }
usage_error() { printf '%s\n' "$*" >&2; exit 2; }

# Compilers at once: one a processor, as far as each finds 1.5 GB of memory.
build_jobs() {
    local processors memory
    processors=$(nproc 2>/dev/null || echo 2)
    memory=$(awk '/^MemAvailable:/ { print int($2 / 1572864) }' /proc/meminfo 2>/dev/null || true)
    memory=${memory:-$processors}
    if [ "$memory" -lt 1 ]; then memory=1; fi
    echo $((processors < memory ? processors : memory))
}

# build_preset <preset> [target...]: configures and builds into build/<preset>; one line a phase, everything else in
# build/<preset>/build.log, which is shown when a phase fails. A folder that was configured stays so: Ninja configures
# again by itself when a file of the build changed, and only the presets are not among those.
build_preset() {
    local preset=$1 folder=build/$1 log fresh=()
    shift
    log=$folder/build.log
    mkdir -p "$folder" 2>/dev/null || die "Cannot write to $PWD/build."
    # A tree that was moved or copied with its build folder: CMake refuses the cache of another place.
    if [ -f "$folder/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt"; then
        fresh=(--fresh)
    fi
    : > "$log"
    if [ ! -f "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ] || [ "${#fresh[@]}" -gt 0 ]; then
        say "Configuring $folder"
        if ! cmake --preset "$preset" "${fresh[@]}" > "$log" 2>&1; then
            build_failed "$log" "Configuring failed"
        fi
    fi
    if [ -d "$folder/bin" ]; then say "Building $folder"; else say "Building $folder; the first time takes some minutes"; fi
    if ! cmake --build "$folder" --parallel "$(build_jobs)" ${1:+--target "$@"} >> "$log" 2>&1; then
        build_failed "$log" "The build failed"
    fi
}

build_failed() {
    tail -n 300 "$1" >&2
    die "$2. The full log: $PWD/$1"
}

# A folder of the user's own for sockets, which Qt looks for at start.
ensure_runtime_dir() {
    if [ -n "${XDG_RUNTIME_DIR:-}" ] && [ -d "$XDG_RUNTIME_DIR" ]; then return; fi
    local folder
    folder=${TMPDIR:-/tmp}/ostrel-runtime-$(id -u)
    if ! mkdir -m 700 "$folder" 2>/dev/null && { [ -L "$folder" ] || [ ! -O "$folder" ]; }; then
        folder=$(mktemp -d)
    fi
    chmod 700 "$folder"
    export XDG_RUNTIME_DIR=$folder
}
