# install_test.sh CMAKE CXX BUILD_DIR SOURCE_DIR: installs into an empty prefix, and builds an
# outside project against it with CMake and with pkg-config.
set -euo pipefail
cmake=$1 cxx=$2 build=$3 source=$4
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

"$cmake" --install "$build" --prefix "$dir/first" > "$dir/log" 2>&1 || { cat "$dir/log"; exit 1; }
# What is installed can be moved as a whole.
mv "$dir/first" "$dir/prefix"

"$cmake" -S "$source/outside_cmake" -B "$dir/cmake" -G Ninja "-DCMAKE_CXX_COMPILER=$cxx" \
  "-DCMAKE_PREFIX_PATH=$dir/prefix" > "$dir/log" 2>&1 || { cat "$dir/log"; exit 1; }
"$cmake" --build "$dir/cmake" > "$dir/log" 2>&1 || { cat "$dir/log"; exit 1; }
"$dir/cmake/outside" | diff - <(echo 'Hello, world!')
diff "$dir/cmake/expanded.txt" <(echo 'Hello, CMake!')

pc=$(dirname "$(find "$dir/prefix" -name qzMacroExpander.pc)")
read -ra flags <<<"$(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs qzMacroExpander)"
libdir=$(PKG_CONFIG_PATH=$pc pkg-config --variable=libdir qzMacroExpander)
"$cxx" -std=c++17 "$source/outside.cpp" "${flags[@]}" "-Wl,-rpath,$libdir" -o "$dir/outside"
"$dir/outside" | diff - <(echo 'Hello, world!')
