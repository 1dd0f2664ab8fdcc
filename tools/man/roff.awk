# What go-md2man leaves to be done in a manual page.

# A line whose hyphens can be copied and searched for as those of an option. Readers take a bare one
# for that of prose.
function exact(line) {
    gsub(/-/, "\\-", line)
    return line
}

# The same for what is bold in a line: names, options and code.
function exactBold(line,   result) {
    while (match(line, /\\fB([^\\]|\\[^f])*\\fR/)) {
        result = result substr(line, 1, RSTART - 1) exact(substr(line, RSTART, RLENGTH))
        line = substr(line, RSTART + RLENGTH)
    }
    return result line
}

# A typeface that not every reader knows, beside one that all do.
{ gsub(/\\fC/, "") }

# ---- code, without the empty lines at its end
/^\.nf$/ { inCode = 1; print; next }
/^\.fi$/ { inCode = 0; empty = 0; print; next }
inCode && /^$/ { ++empty; next }
inCode {
    for (; empty > 0; --empty)
        print ""
    print exact($0)
    next
}

# ---- text, without the room that the macros make anyway
/^$/ { next }
/^\.PP$/ && isBehindHeading { next }
{ isBehindHeading = /^\.S[HS] /; print exactBold($0) }
