# Turns the document of a tool into the Markdown that its manual page is made of:
#
#   awk -v tool=qzexpand -v version=1.0 -v others=qzmap -f page.awk docs/qzexpand.md
#
# The title and the first sentence make the section NAME, the first block of code the SYNOPSIS, and
# what follows up to the first heading the DESCRIPTION. Tables of two columns become lists of terms,
# the form in which manual pages show options. Links become their text, as there is nothing to
# follow. others are the names of further tools, for SEE ALSO.

BEGIN {
    usual["STATUS"] = "EXIT STATUS"
    usual["ERRORS"] = "DIAGNOSTICS"
    print "% " toupper(tool) " 1 \"\" \"" tool " " version "\" \"\"\n"
}

# Sections are in capitals, under the names that readers of manual pages look for.
function heading(text) {
    text = toupper(text)
    print "## " (text in usual ? usual[text] : text) "\n"
}

# The text of a line without its links.
function unlinked(line,   before, link) {
    while (match(line, /\[[^]]*\]\([^)]*\)/)) {
        before = substr(line, 1, RSTART - 1)
        link = substr(line, RSTART + 1, RLENGTH - 2)
        line = before substr(link, 1, index(link, "](") - 1) substr(line, RSTART + RLENGTH)
    }
    return line
}

# "| term | text |"; the header and the rule below it are left out.
function row(line,   cells) {
    if (++rows <= 2)
        return
    sub(/^\| */, "", line)
    sub(/ *\|$/, "", line)
    split(line, cells, / \| /)
    print cells[1] "\n: " cells[2] "\n"
}

# ---- code stays as it is, but for that of a list item: go-md2man wants it outside of the list
/^ *```/ {
    if (part == "title") {
        heading("synopsis")
        part = "synopsis"
    }
    inCode = !inCode
    if (inCode) {
        match($0, /^ */)
        indentation = RLENGTH
        if (indentation > 0)
            print "[end of the list]: #\n"
    }
    print substr($0, indentation + 1)
    if (!inCode && part == "synopsis") {
        print ""
        heading("description")
        part = "body"
    }
    next
}
inCode { print substr($0, indentation + 1); next }
indentation > 0 && /^[^ ]/ { indentation = 0; print "" }
indentation > 0 { $0 = substr($0, indentation + 1) }

# ---- the title and the sentence below it
/^# / { part = "title"; heading("name"); next }
part == "title" {
    if ($0 == "")
        next
    sub(/\.$/, "")
    print tool " - " tolower(substr($0, 1, 1)) substr($0, 2) "\n"
    next
}

# ---- the rest
{ $0 = unlinked($0) }
/^\|/ {
    if (rows == 0)
        columns = gsub(/\|/, "|") - 1
    if (columns == 2) {
        row($0)
        next
    }
}
!/^\|/ { rows = 0 }
/^## / { heading(substr($0, 4)); next }
{ print }

END {
    if (others == "")
        exit
    heading("see also")
    count = split(others, names, " ")
    for (i = 1; i <= count; ++i)
        printf "%s`%s`(1)", i == 1 ? "" : ", ", names[i]
    print ""
}
