# expand_sources_test.sh CMAKE CXX BUILD_DIR EXAMPLE GENERATOR: counts what is expanded and what is
# compiled when the files of the CMake example change, built on the installed package.
set -euo pipefail
cmake=$1 cxx=$2 build=$3 example=$4 generator=$5
. "$(dirname "$0")/prefix.sh"
install_into "$dir/prefix"

# Every text says when it is expanded, and the compiler writes down what it is called for.
project="$dir/a project"
cp -r "$example" "$project"
for text in "$project"/*.qz; do
    echo "@println(\"expanding $(basename "$text" .qz)\")" >>"$text"
done
cat >"$dir/launcher" <<'END'
#!/bin/sh
for last; do :; done
basename "$last" >>"$0.log"
exec "$@"
END
chmod +x "$dir/launcher"
quietly "$cmake" -S "$project" -B "$project/build" -G "$generator" "-DCMAKE_CXX_COMPILER=$cxx" \
    "-DCMAKE_CXX_COMPILER_LAUNCHER=$dir/launcher" "-DCMAKE_PREFIX_PATH=$dir/prefix"

run_build() {
    : >"$dir/launcher.log"
    "$cmake" --build "$project/build" --parallel 2 >"$dir/log" 2>&1
}

on_one_line() {
    LC_ALL=C sort | tr '\n' ' '
}

# expect_build WHAT EXPANDED COMPILED: builds, and compares the names of what that took.
expect_build() {
    run_build || { cat "$dir/log"; echo "$1: the build fails"; exit 1; }
    local expanded compiled
    expanded=$(sed -n 's/^"expanding \(.*\)"$/\1/p' "$dir/log" | on_one_line)
    compiled=$(on_one_line <"$dir/launcher.log")
    if [ "$expanded/$compiled" != "${2:+$2 }/${3:+$3 }" ]; then
        cat "$dir/log"
        echo "$1: expanded '$expanded', expected '$2'; compiled '$compiled', expected '$3'"
        exit 1
    fi
}

# Twice, since what a build leaves behind may be older than what it was made of.
expect_nothing() {
    local round
    for round in 1 2; do
        expect_build "$1, then nothing ($round)" "" ""
        if grep -vE '^(\[[ 0-9]+%\] Built target |ninja: no work to do|Consolidate compiler )' \
            "$dir/log"; then
            echo "$1: something is run although nothing has changed ($round)"
            exit 1
        fi
    done
}

# expect_program OUTPUT
expect_program() {
    "$project/build/paint" | diff - <(echo "$1")
}

# edit FILE SED_SCRIPT, at a time that file systems tell apart from that of the build before.
edit() {
    sleep 0.05
    sed "$2" "$project/$1" >"$dir/edited"
    cat "$dir/edited" >"$project/$1"
}

all_texts="banner.cpp colours.h names.cpp"
all_sources="banner.cpp main.cpp names.cpp"

expect_build "a clean build" "$all_texts" "$all_sources"
expect_program 'Ada; and $others, brush 8: green'
expect_nothing "a clean build"

edit lib/colours.qz 's/@str(colour)/@str(very colour)/'
expect_build "an import that one text uses" "colours.h names.cpp" "names.cpp"
expect_program 'Ada; and $others, brush 8: very green'
expect_nothing "an import that one text uses"

edit lib/colours.qz 's/for all texts/for every text/'
expect_build "an import to no effect" "colours.h names.cpp" ""
expect_nothing "an import to no effect"

edit lib/colours.qz 's/blue/blue, violet/'
expect_build "an import that changes a header" "colours.h names.cpp" "$all_sources"
expect_nothing "an import that changes a header"

edit banner.cpp.qz 's/brush/a brush of/'
expect_build "a text" "banner.cpp" "banner.cpp"
expect_program 'Ada; and $others, a brush of 8: very green'
expect_nothing "a text"

echo "unrelated" >"$project/lib/unrelated.qz"
expect_nothing "an unrelated file"

edit main.cpp 's/green/violet/'
expect_build "a plain source" "" "main.cpp"
expect_program 'Ada; and $others, a brush of 8: very violet'

# What is missing is for qzexpand to report, with the place of the import.
mv "$project/lib/colours.qz" "$dir/"
if run_build; then
    echo "the build goes on without a file that is imported"
    exit 1
fi
grep -qF "names.cpp.qz(2) : Can't import file: colours.qz" "$dir/log" || { cat "$dir/log"; exit 1; }
mv "$dir/colours.qz" "$project/lib/"
expect_build "an import that is back" "" ""

# A file that goes together with its import is missed by nobody.
mv "$project/lib/colours.qz" "$project/lib/paints.qz"
edit colours.h.qz 's/"colours.qz"/"paints.qz"/'
edit names.cpp.qz 's/"colours.qz"/"paints.qz"/'
expect_build "an import of another name" "colours.h names.cpp" ""
expect_nothing "an import of another name"
echo "unrelated" >"$project/lib/colours.qz"
expect_nothing "what is imported no more"

# Make knows of the stamp alone.
if [ "$generator" = Ninja ]; then
    rm "$project/build/qz/paint/banner.cpp"
    expect_build "an expansion that was deleted" "banner.cpp" "banner.cpp"
fi
quietly "$cmake" --build "$project/build" --target clean
expect_build "after a clean" "$all_texts" "$all_sources"
expect_nothing "after a clean"

# The definitions are part of the command, and a new one runs it again.
edit CMakeLists.txt 's/int:width=8/int:width=9/'
expect_build "a definition" "$all_texts" "banner.cpp"
expect_program 'Ada; and $others, a brush of 9: very violet'
expect_nothing "a definition"

sleep 0.05
touch "$dir/prefix/bin/qzexpand"
expect_build "another tool" "$all_texts" ""
expect_nothing "another tool"
