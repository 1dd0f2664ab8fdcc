# The README's first two blocks are the example and its expansion: example_test.sh QZEXPAND.
set -euo pipefail
. "$(dirname "$0")/../scripts/expect.sh"

example=$root/examples/hello/hello.txt.qz

# The text of the Nth fenced block of the README.
block() {
    awk -v wanted="$1" '
    /^```/ { fences++; next }
    fences == 2 * wanted - 1' "$root/README.md"
}

expect_equal "the README's input" "$(cat "$example")" "$(block 1)"
expect_equal "the README's output" "$("$1" "$example")" "$(block 2)"
finish
