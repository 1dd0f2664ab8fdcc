# fetch_content_test.sh CMAKE CXX SOURCE_DIR: a project that takes this one in as a part of its own
# build can expand its sources there. What the build would do is looked at and not done.
set -euo pipefail
cmake=$1 cxx=$2 source=$3
. "$(dirname "$0")/prefix.sh"

cat >"$dir/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(outer LANGUAGES CXX)
include(FetchContent)
FetchContent_Declare(qzMacroExpander SOURCE_DIR "$source")
set(QZ_BUILD_TOOLS ON)
FetchContent_MakeAvailable(qzMacroExpander)
add_subdirectory("$source/examples/cmake" paint)
END
quietly "$cmake" -S "$dir" -B "$dir/out" -G Ninja "-DCMAKE_CXX_COMPILER=$cxx"
"$cmake" --build "$dir/out" -- -t commands all >"$dir/log"

# position TEXT: the line of the build's plan that holds it, 0 for none.
position() {
    awk -v text="$1" 'index($0, text) { found = NR } END { print found + 0 }' "$dir/log"
}
tool=$(position " -o _deps/qzmacroexpander-build/tools/qzexpand/qzexpand ")
text=$(position " -o $dir/out/paint/qz/paint/names.cpp ")
object=$(position " -c $dir/out/paint/qz/paint/names.cpp")
if ! [ 0 -lt "$tool" ] || ! [ "$tool" -lt "$text" ] || ! [ "$text" -lt "$object" ]; then
    cat "$dir/log"
    echo "tool in line $tool, expansion in line $text, compiler in line $object"
    exit 1
fi
if grep -E '_test|examples/embed_host' "$dir/log"; then
    echo "tests and examples are built for somebody else's project"
    exit 1
fi
