# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# Functions and variables shared by the scripts, which source this file.
#
# shellcheck disable=SC2034 # the variables are used by the scripts

TAVO_ROOT=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
TAVO_JOBS=${TAVO_JOBS:-$(nproc)}
export PYTHONPATH=$TAVO_ROOT/demo # the soak and the benchmarks use modules of the demo

if [[ -t 1 && -z ${NO_COLOR:-} ]]; then
    tavo_bold=$'\e[1m' tavo_red=$'\e[31m' tavo_green=$'\e[32m' tavo_plain=$'\e[0m'
else
    tavo_bold='' tavo_red='' tavo_green='' tavo_plain=''
fi

step() {
    printf '%s==> %s%s\n' "$tavo_bold" "$*" "$tavo_plain"
}

fail() {
    printf '%s%s: %s%s\n' "$tavo_red" "${0##*/}" "$*" "$tavo_plain" >&2
    exit 1
}

usage_error() {
    printf '%s: %s\nSee %s --help.\n' "${0##*/}" "$*" "$0" >&2
    exit 2
}

# need_value <option> [value]: ends with a usage error if the option has no value
need_value() {
    (($# > 1)) || usage_error "$1 needs a value"
}

# The version in CMakeLists.txt.
project_version() {
    sed -nE 's/^project\(tavo VERSION ([0-9.]+) .*/\1/p' "$TAVO_ROOT/CMakeLists.txt"
}

run_setup() {
    "$TAVO_ROOT/scripts/setup" --quiet
}

# configure_preset <preset>
#
# The compiler launcher takes effect only in a new build folder; an existing one keeps its own.
configure_preset() {
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
        export CCACHE_BASEDIR=${CCACHE_BASEDIR-$TAVO_ROOT}
        # Lets clones share the cache, at the price of debug information that names another clone.
        export CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR-1}
    fi
    (cd -- "$TAVO_ROOT" && cmake --preset "$1")
}

# build_preset <preset> [target...]
build_preset() {
    local preset=$1
    shift
    configure_preset "$preset" &&
        cmake --build "$TAVO_ROOT/build/$preset" -j "$TAVO_JOBS" ${1+--target "$@"}
}

# Stages are named steps. print_stages() lists their outcomes and durations at the end. A failed stage
# does not end the script, so one run shows everything that is wrong.

stage_lines=()
stages_failed=0
stage_ok=true # whether the previous stage succeeded
stage_note='' # set by a stage's function; shown in the list

# run_stage <name> <command> [argument...]
run_stage() {
    local name=$1 start=$SECONDS status=0
    shift
    step "$name"
    stage_note=''
    "$@" || status=$?
    local took=$((SECONDS - start))
    if ((status == 0)); then
        stage_ok=true
        add_stage "${tavo_green}ok${tavo_plain}    " "$name" "$took"
    else
        stage_ok=false
        stages_failed=$((stages_failed + 1))
        add_stage "${tavo_red}FAILED${tavo_plain}" "$name" "$took"
        step "$name: failed with status $status"
    fi
}

# skip_stage <name>
skip_stage() {
    stage_note='not run, since the previous stage failed'
    stage_ok=false
    add_stage "${tavo_red}missed${tavo_plain}" "$1" 0
}

add_stage() {
    local line
    printf -v line '  %s  %-34s %3d:%02d%s' "$1" "$2" $(($3 / 60)) $(($3 % 60)) "${stage_note:+  $stage_note}"
    stage_lines+=("$line")
}

print_stages() {
    printf '\n%sStages (minutes:seconds)%s\n' "$tavo_bold" "$tavo_plain"
    printf '%s\n' "${stage_lines[@]}"
}
