# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# What the scripts share. Sourced, never run.
#
# shellcheck disable=SC2034 # variables are for the scripts that source this

TAVO_ROOT=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
TAVO_JOBS=${TAVO_JOBS:-$(nproc)}
export PYTHONPATH=$TAVO_ROOT/demo # the tools that the soak and the benchmarks share with the demo

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

# need_value <option> [value]: for an option that takes one
need_value() {
    (($# > 1)) || usage_error "$1 needs a value"
}

run_setup() {
    "$TAVO_ROOT/scripts/setup" --quiet
}

# configure_preset <preset>
#
# Only a fresh build folder takes the compiler launcher over, so an existing one is left as its owner
# made it.
configure_preset() {
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
        export CCACHE_BASEDIR=${CCACHE_BASEDIR-$TAVO_ROOT}
        # A second clone compiles nothing anew; its debug information names the folder of the first.
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

# Stages: named steps whose outcome and duration print_stages() lists at the end. A failed stage does
# not end the script, so that one run shows everything that is wrong.

stage_lines=()
stages_failed=0
stage_ok=true # how the stage before ended
stage_note='' # a stage's function may put here what the list should say about it

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
    stage_note='not run: it needs the stage before'
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
