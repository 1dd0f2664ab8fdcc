# tools_test.sh CMAKE CXX BUILD_DIR TOOLS: the tools build on the installed library alone, away from
# its sources, and can be installed beside it afterwards.
set -euo pipefail
cmake=$1 cxx=$2 build=$3 tools=$4
. "$(dirname "$0")/prefix.sh"

for component in runtime development; do
    quietly "$cmake" --install "$build" --component $component --prefix "$dir/prefix"
done
cp -r "$tools" "$dir/tools"
quietly "$cmake" -S "$dir/tools" -B "$dir/out" -G Ninja "-DCMAKE_CXX_COMPILER=$cxx" \
    "-DCMAKE_PREFIX_PATH=$dir/prefix"
quietly "$cmake" --build "$dir/out" --parallel 2
quietly "$cmake" --install "$dir/out" --prefix "$dir/prefix"

"$dir/prefix/bin/qzexpand" -D who=tools "$(dirname "$0")/outside_cmake/greeting.txt.qz" |
    diff - <(echo 'Hello, tools!')
quietly "$cmake" -S "$(dirname "$0")/outside_cmake" -B "$dir/outside" -G Ninja \
    "-DCMAKE_CXX_COMPILER=$cxx" "-DCMAKE_PREFIX_PATH=$dir/prefix"
quietly "$cmake" --build "$dir/outside" --target expand
diff "$dir/outside/expanded.txt" <(echo 'Hello, CMake!')
