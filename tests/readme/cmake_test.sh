# The project that docs/cmake.md shows is the one that is built.
set -euo pipefail
. "$(dirname "$0")/../scripts/expect.sh"

expect_equal "the CMake example" "$(cat "$root/examples/cmake/CMakeLists.txt")" \
    "$(sed -n '/^```cmake$/,/^```$/ { /^```/!p }' "$root/docs/cmake.md")"
finish
