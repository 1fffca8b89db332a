# What the scripts share; sourced, not run. Leaves the shell at the top of the tree.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Lets objects built in another preset or folder with the same flags be used again.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=true CCACHE_SLOPPINESS=pch_defines,time_macros
[[ -w ${HOME:-/} ]] || export CCACHE_DIR=$PWD/out/ccache

die() { echo "$(basename "$0"): $*" >&2; exit 1; }

# Runs a command with its output in a file; shows the file only when the command fails.
quietly() {
    local log=$1 status=0
    shift
    mkdir -p "$(dirname "$log")"
    "$@" > "$log" 2>&1 || status=$?
    (( status == 0 )) || { cat "$log"; echo "$(basename "$0"): failed: $*" >&2; }
    return "$status"
}

# What configuring is told, and what builds and tests are run under.
configure_options=()
launcher=()

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    quietly "out/$preset/configure.log" cmake --preset "$preset" "${configure_options[@]}"
    quietly "out/$preset/build.log" "${launcher[@]}" cmake --build --preset "$preset" \
        ${1:+--target "$@"} -- --quiet
}
