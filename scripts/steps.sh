# Sourced by the scripts. A step prints one line; what it says goes to a log under build/logs and
# is shown only if the step fails, which ends the script.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

jobs=$(nproc)

# step NAME COMMAND...
step() {
    local name=$1 log started=$SECONDS
    shift
    mkdir -p build/logs
    log=build/logs/$(printf %s "$name" | tr -cs 'a-zA-Z0-9.+\n' -).log
    printf '%s ... ' "$name"
    if "$@" >"$log" 2>&1 </dev/null; then
        printf 'ok, %d s\n' $((SECONDS - started))
        return
    fi
    printf 'FAILED\n'
    cat "$log" >&2
    fail "the step '$name' failed; its output stands above and in $log"
}

fail() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit 1
}

# as_root COMMAND...: as root already, or by way of sudo.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# run_tests PRESET: builds everything under a preset and runs all tests; the last lines are
# ctest's own.
run_tests() {
    step "configure $1" cmake --preset "$1"
    step "build $1" cmake --build --preset "$1"
    step "test $1" ctest --preset "$1" --no-tests=error -j "$jobs"
    sed -n '/ tests passed, /,$p' "build/logs/test-$1.log"
}
