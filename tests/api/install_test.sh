# install_test.sh CMAKE CXX BUILD_DIR SOURCE_DIR EXAMPLES: installs into an empty prefix, and builds
# outside projects against it with CMake and with pkg-config.
set -euo pipefail
cmake=$1 cxx=$2 build=$3 source=$4 examples=$5
. "$(dirname "$0")/prefix.sh"
install_into "$dir/prefix"

# outside_build SOURCE_DIR NAME: builds it in the folder of that name.
outside_build() {
    quietly "$cmake" -S "$1" -B "$dir/$2" -G Ninja "-DCMAKE_CXX_COMPILER=$cxx" \
        "-DCMAKE_PREFIX_PATH=$dir/prefix"
    quietly "$cmake" --build "$dir/$2"
}

outside_build "$source/outside_cmake" cmake
"$dir/cmake/outside" | diff - <(echo 'Hello, world!')
diff "$dir/cmake/expanded.txt" <(echo 'Hello, CMake!')

outside_build "$examples/embed_host" hosts
"$dir/hosts/memory_files" letter.txt |
    diff - <(printf '%s\n' '-- a letter --' 'Dear Ada,' '-- the end --')

pc=$(dirname "$(find "$dir/prefix" -name qzMacroExpander.pc)")
read -ra flags <<<"$(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs qzMacroExpander)"
libdir=$(PKG_CONFIG_PATH=$pc pkg-config --variable=libdir qzMacroExpander)
"$cxx" -std=c++17 "$source/outside.cpp" "${flags[@]}" "-Wl,-rpath,$libdir" -o "$dir/outside"
"$dir/outside" | diff - <(echo 'Hello, world!')
