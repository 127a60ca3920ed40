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

# Runs the tests of a preset and adds to the counts: run_tests PRESET [CTEST-ARGUMENT...]
run_tests() {
    local preset=$1 log summary failed total
    shift
    say "Testing ($preset)"
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
