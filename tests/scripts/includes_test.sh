# scripts/lint/includes accepts a tree that keeps the rules and names each file that breaks one.
set -euo pipefail
. "$(dirname "$0")/expect.sh"

# put FILE [INCLUDE...]: a file of the tree under test, with "x.h" or <x.h> as they are to stand.
put() {
    local file=$1 name
    shift
    mkdir -p "$(dirname "$file")"
    : >"$file"
    for name in "$@"; do
        printf '#include %s\n' "$name" >>"$file"
    done
}

# A tree that keeps all rules, each at its limit.
good_tree() {
    rm -rf "$scratch/tree"
    mkdir "$scratch/tree"
    cd "$scratch/tree"
    put qzUtils/xstring.h '<vector>'
    put qzUtils/src/Text.h '"qzUtils/xstring.h"'
    put qzUtils/src/Text.cpp '"Text.h"'
    put qzMacroExpander/LSToken.h '"qzUtils/xstring.h"'
    put qzMacroExpander/ParserBase.h '"qzMacroExpander/LSToken.h"'
    put qzMacroExpander/ExpressionParser.h '"qzMacroExpander/ParserBase.h"'
    put qzMacroExpander/LSVariable.h '"qzMacroExpander/LSToken.h"'
    put qzMacroExpander/ExpandedOutput.h '"qzMacroExpander/LSVariable.h"'
    put qzMacroExpander/MacroExpand.h '"qzMacroExpander/ExpandedOutput.h"'
    put qzMacroExpander/Mpfw.h '"qzMacroExpander/MacroExpand.h"'
    put qzMacroExpander/src/MacroExpander.h '"qzMacroExpander/MacroExpand.h"'
    put qzMacroExpander/src/Help.h '"qzMacroExpander/ParserBase.h"'
    put qzMacroExpander/src/ExpressionParser.cpp '"Help.h"'
    put qzMacroExpander/src/MacroExpander.cpp '"MacroExpander.h"'
    put qzMacroExpander/src/UsePython.cpp '<Python.h>'
    put qzMacroExpander/src/Mpfw/MpfwParser.cpp '"qzMacroExpander/Mpfw.h"'
    put tools/qzexpand/main.cpp '"qzMacroExpander/MacroExpand.h"'
}

# broken EXPECTED FILE INCLUDE...: the good tree with one file exchanged.
broken() {
    local expected=$1 output status=0
    shift
    good_tree
    put "$@"
    output=$("$root/scripts/lint/includes" "$scratch/tree") || status=$?
    expect_equal "$* is complained of" "$expected" "$output"
    expect_equal "$* fails" 1 "$status"
}

good_tree
expect_equal "a tree that keeps the rules" "" "$("$root/scripts/lint/includes" "$scratch/tree")"

broken "qzUtils/xstring.h: qzUtils knows nothing above it,\
 but this includes qzMacroExpander/LSToken.h" \
    qzUtils/xstring.h '"qzMacroExpander/LSToken.h"'
broken "tools/qzexpand/main.cpp: sees public headers only,\
 but includes qzMacroExpander/src/MacroExpander.h" \
    tools/qzexpand/main.cpp '"qzMacroExpander/src/MacroExpander.h"'
broken "examples/host.cpp: sees public headers only, but includes qzUtils/src/Text.h" \
    examples/host.cpp '"qzUtils/src/Text.h"'
broken "qzMacroExpander/src/Mpfw/MpfwParser.cpp: the project front end sees public headers only,\
 but includes qzMacroExpander/src/MacroExpander.h" \
    qzMacroExpander/src/Mpfw/MpfwParser.cpp '"../MacroExpander.h"'
broken "qzMacroExpander/src/MacroExpander.cpp: the insides of qzUtils are its own,\
 but this includes qzUtils/src/Text.h" \
    qzMacroExpander/src/MacroExpander.cpp '"qzUtils/src/Text.h"'
broken "qzMacroExpander/src/MacroExpanderIf.cpp: includes the source file\
 qzMacroExpander/src/MacroExpander.cpp" \
    qzMacroExpander/src/MacroExpanderIf.cpp '"MacroExpander.cpp"'
broken "qzMacroExpander/src/MacroExpanderIf.cpp: the engine knows no project front end,\
 but includes qzMacroExpander/Mpfw.h by way of qzMacroExpander/src/MacroExpanderIf.cpp" \
    qzMacroExpander/src/MacroExpanderIf.cpp '"qzMacroExpander/Mpfw.h"'
broken "qzMacroExpander/src/UsePython.h: UsePython.cpp alone includes Python.h" \
    qzMacroExpander/src/UsePython.h '<Python.h>'
broken "qzMacroExpander/src/UsePython.h: UsePython.cpp alone includes Python.h" \
    qzMacroExpander/src/UsePython.h '<python2.7/Python.h>'
broken "qzMacroExpander/ExpressionParser.h: lies below qzMacroExpander/LSVariable.h,\
 but includes it by way of qzMacroExpander/ExpressionParser.h" \
    qzMacroExpander/ExpressionParser.h '"qzMacroExpander/LSVariable.h"'
broken "qzMacroExpander/src/ExpressionParser.cpp: lies below qzMacroExpander/ExpandedOutput.h,\
 but includes it by way of qzMacroExpander/MacroExpand.h
qzMacroExpander/src/ExpressionParser.cpp: lies below qzMacroExpander/LSVariable.h,\
 but includes it by way of qzMacroExpander/ExpandedOutput.h
qzMacroExpander/src/ExpressionParser.cpp: lies below qzMacroExpander/MacroExpand.h,\
 but includes it by way of qzMacroExpander/src/MacroExpander.h
qzMacroExpander/src/ExpressionParser.cpp: lies below qzMacroExpander/src/MacroExpander.h,\
 but includes it by way of qzMacroExpander/src/Help.h" \
    qzMacroExpander/src/Help.h '"MacroExpander.h"'
finish
