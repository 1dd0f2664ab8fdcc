# expand_sources_forms_test.sh CMAKE CXX BUILD_DIR PROJECT GENERATOR WITH_PYTHON: all forms
# in which qz_expand_sources can be called give what they should.
set -euo pipefail
cmake=$1 cxx=$2 build=$3 project=$4 generator=$5 python=$6
. "$(dirname "$0")/prefix.sh"
install_into "$dir/prefix"
quietly "$cmake" -S "$project" -B "$dir/out" -G "$generator" "-DCMAKE_CXX_COMPILER=$cxx" \
    "-DCMAKE_PREFIX_PATH=$dir/prefix" "-DWITH_PYTHON=$python"
quietly "$cmake" --build "$dir/out" --parallel 2

"$dir/out/program/program" | diff - <(echo '1 2 3 42')
texts=$dir/out/qz/texts
diff "$texts/first/text.txt" - <<'END'
a;b $c "d" 'e' \f #g %h &i|j* ;|one;two|"here"
END
diff "$texts/second/text.txt" <(echo second)
diff "$texts/made/late.txt" <(echo '@import "later.qz"very delayed')
others=$dir/out/qz/others
diff "$others/first/text.txt" <(echo '1|2|"there"')
quietly "$dir/prefix/bin/qzmap" check "$others/first/text.txt.map"
if [ "$python" = ON ]; then
    diff "$others/second/python.txt" <(echo '[0,1,4,9]')
fi
