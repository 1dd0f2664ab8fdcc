# Sourced by the tests of the scripts.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() {
    if [ "$2" != "$3" ]; then
        printf '%s\n  expected:\n%s\n  got:\n%s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

finish() {
    [ "$failures" -eq 0 ] || exit 1
}
