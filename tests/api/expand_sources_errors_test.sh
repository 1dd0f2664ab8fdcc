# expand_sources_errors_test.sh CMAKE BUILD_DIR: what a wrong call of qz_expand_sources says.
set -euo pipefail
cmake=$1 build=$2
. "$(dirname "$0")/prefix.sh"
install_into "$dir/prefix"
echo text >"$dir/a.txt.qz"
mkdir "$dir/folder.qz" "$dir/other" "$dir/up"
echo 'add_custom_target(elsewhere)' >"$dir/other/CMakeLists.txt"
cp "$dir/a.txt.qz" "$dir/up/"
failures=0

# expect_error PACKAGE ARGUMENTS ERROR: configuring a project that calls the function with these
# arguments fails with that error.
expect_error() {
    cat >"$dir/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(wrong LANGUAGES NONE)
find_package(qzMacroExpander $1)
add_custom_target(t)
add_library(named INTERFACE IMPORTED)
add_subdirectory(other)
qz_expand_sources($2)
END
    local said
    rm -rf "$dir/out"
    if "$cmake" -S "$dir" -B "$dir/out" "-DCMAKE_PREFIX_PATH=$dir/prefix" >"$dir/log" 2>&1; then
        echo "accepted: qz_expand_sources($2)"
        failures=$((failures + 1))
    fi
    said=$(tr -s ' \n' ' ' <"$dir/log")
    if [[ $said != *"$3"* ]]; then
        printf 'qz_expand_sources(%s)\n  is to say: %s\n  says: %s\n' "$2" "$3" "$said"
        failures=$((failures + 1))
    fi
}

expect_call_error() {
    expect_error REQUIRED "$1" "qz_expand_sources: $2"
}

expect_call_error 'FILES a.txt.qz' "TARGET is missing"
expect_call_error 'TARGET FILES a.txt.qz' "TARGET is missing"
expect_call_error 'TARGET t' "FILES is missing"
expect_call_error 'TARGET t FILES' "FILES is missing"
expect_call_error 't a.txt.qz' "unknown argument 't'"
expect_call_error 'TARGET t DEFINE a=1 FILES a.txt.qz' "unknown argument 'DEFINE'"
expect_call_error 'TARGET t FILES a.txt.qz DEFINES' "nothing stands behind DEFINES"
expect_call_error 'TARGET nosuch FILES a.txt.qz' \
    "there is no target 'nosuch'; it is to be made in front of the call"
expect_call_error 'TARGET named FILES a.txt.qz' \
    "'named' is only a name for a target that is made elsewhere"
expect_call_error 'TARGET elsewhere FILES a.txt.qz' \
    "the target 'elsewhere' is made in another folder, "
expect_call_error 'TARGET t FILES nosuch.txt.qz' "no such file: $dir/nosuch.txt.qz"
expect_call_error 'TARGET t FILES folder.qz' "no such file: $dir/folder.qz"
expect_call_error 'TARGET t FILES a.txt' "the name of a.txt does not end in .qz"
expect_call_error 'TARGET t FILES up/.qz' "the name of up/.qz does not end in .qz"
expect_call_error 'TARGET t FILES a.txt.qz ./a.txt.qz' \
    "./a.txt.qz gives a.txt, which the target 't' has already"

rm "$(find "$dir/prefix" -name qzMacroExpanderToolsTargets.cmake)"
expect_call_error 'TARGET t FILES a.txt.qz' "the tool qzexpand is missing: its package"
expect_error 'REQUIRED COMPONENTS tools' 'TARGET t FILES a.txt.qz' \
    "The component 'tools' is not installed."
exit "$failures"
