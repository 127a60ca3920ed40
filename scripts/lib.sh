# Shared by the scripts of this folder; sourced, not run.
set -euo pipefail
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$ROOT"

say() { printf '\n== %s\n' "$*"; }

die() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        die "installing packages needs root: run this script as root, or install sudo"
    fi
}

# Installs those of the listed packages that are missing. Takes further package names as arguments.
install_packages() {
    command -v apt-get >/dev/null 2>&1 || die "this script installs with apt-get: it needs Debian 12 or a relative of it"
    local wanted missing=() package
    wanted=$(grep -v '^#' "$ROOT/scripts/packages.txt")
    for package in $wanted "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return
    say "Installing ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Configures and builds a preset: build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    say "Building ($preset)"
    cmake --preset "$preset" >"$ROOT/build-$preset.log" 2>&1 || {
        cat "$ROOT/build-$preset.log"
        die "configuring failed"
    }
    rm -f "$ROOT/build-$preset.log"
    cmake --build "build/$preset" --parallel "$(nproc)" -- --quiet ${@:+"$@"}
}

TESTS_PASSED=0
TESTS_FAILED=0

# Runs one part of a test program and leaves its output in a file: run_shard PROGRAM INDEX COUNT FOLDER
run_shard() {
    local log=$4/$(basename "$1").$2
    if ! GTEST_SHARD_INDEX=$2 GTEST_TOTAL_SHARDS=$3 timeout 1800 "$1" --gtest_color=no >"$log" 2>&1; then
        mv "$log" "$log.failed"
    fi
}
export -f run_shard

# Numbers in the lines of the logs in a folder that match, summed up: sum_of FOLDER PATTERN
sum_of() {
    cat "$1"/* | sed -nE "s/$2/\1/p" | awk '{sum += $1} END {print sum + 0}'
}

# How many faults and power cuts the tests of these logs tried: tell_points FOLDER
tell_points() {
    local kind points failures
    for kind in faults "power cuts"; do
        points=$(sum_of "$1" "^$kind in .*: ([0-9]+) points, [0-9]+ failures\$")
        failures=$(sum_of "$1" "^$kind in .*: [0-9]+ points, ([0-9]+) failures\$")
        [ "$points" = 0 ] || echo "$kind: $points points, $failures failures"
    done
}

# Runs the test programs of a preset, in parts side by side, and adds to the counts: run_tests PRESET
# With arguments for ctest each test is a process of its own: run_tests PRESET CTEST-ARGUMENT...
run_tests() {
    local preset=$1 logs parts=6 program index passed failed log
    shift
    say "Testing ($preset)"
    if [ $# != 0 ]; then
        run_ctest "$preset" "$@"
        return
    fi
    logs=$(mktemp -d)
    # The largest programs first, so that none of their parts is left to run alone at the end.
    ls -S build/"$preset"/bin/tolm-*-tests | while read -r program; do
        for index in $(seq 0 $((parts - 1))); do
            printf '%s %s %s %s\n' "$program" "$index" "$parts" "$logs"
        done
    done | xargs -P "$(nproc)" -L 1 bash -c 'run_shard "$@"' run_shard
    passed=$(sum_of "$logs" '^\[  PASSED  \] ([0-9]+) tests?\.$')
    failed=$(sum_of "$logs" '^\[  FAILED  \] ([0-9]+) tests?, listed below:$')
    for log in "$logs"/*.failed; do
        [ -e "$log" ] || continue
        grep -v '^\[       OK \]' "$log"
        if ! grep -q 'listed below:$' "$log"; then
            echo "$(basename "$log" .failed) did not come to its end"
            failed=$((failed + 1))
        fi
    done
    [ $((passed + failed)) != 0 ] || die "no test ran"
    cat "$logs"/* | sed -nE 's/^\[  FAILED  \] ([^ ]+\.[^ ]+(, where .*)?)$/failed: \1/p' | sort -u
    tell_points "$logs"
    rm -r "$logs"
    TESTS_FAILED=$((TESTS_FAILED + failed))
    TESTS_PASSED=$((TESTS_PASSED + passed))
    echo "$passed passed, $failed failed ($preset)"
}

run_ctest() {
    local preset=$1 log summary failed total
    shift
    log=$(mktemp)
    ctest --test-dir "build/$preset" --parallel "$(nproc)" --output-on-failure --no-tests=error "$@" >"$log" 2>&1 || true
    summary=$(grep -E 'tests? failed out of [0-9]+' "$log" || true)
    if [ -z "$summary" ]; then
        cat "$log"
        die "the tests did not run to their end"
    fi
    failed=$(sed -E 's/.* ([0-9]+) tests? failed out of.*/\1/' <<<"$summary")
    total=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<<"$summary")
    [ "$failed" = 0 ] || cat "$log"
    printf '%s\n' "$summary"
    TESTS_FAILED=$((TESTS_FAILED + failed))
    TESTS_PASSED=$((TESTS_PASSED + total - failed))
    rm -f "$log"
}
