// A program of somebody else's, which has nothing but the installed library.

#include <cstdio>

#include "qzMacroExpander/MacroExpand.h"

int main() {
    const vorn::xstring text("@def greet(who) = Hello, who!\ngreet(world)\n");
    vorn::FileScopeVarFrame frame;
    vorn::xstring result;
    vorn::MacroExpand(nullptr, &frame, text, 0, 0, result);
    std::fputs(result.c_str(), stdout);
}
