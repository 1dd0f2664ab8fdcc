# The README's first two blocks are the example and its expansion: example_test.sh QZEXPAND.
set -euo pipefail

qzexpand=$1
root=$(cd "$(dirname "$0")/../.." && pwd)
example=$root/examples/hello/hello.txt.qz

# The text of the Nth fenced block of the README.
block() {
    awk -v wanted="$1" '
    /^```/ { fences++; next }
    fences == 2 * wanted - 1' "$root/README.md"
}

diff -u --label README.md --label examples/hello/hello.txt.qz <(block 1) "$example"
diff -u --label README.md --label "qzexpand's output" <(block 2) <("$qzexpand" "$example")
