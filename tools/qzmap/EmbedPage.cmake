# Writes a C++ source that holds the files of the page as texts:
#
#   cmake -DFOLDER=page -DOUT=PageFiles.cpp -P EmbedPage.cmake
set(html page.html)
set(css page.css)
set(js texts.js pane.js page.js)

set(code "#include \"PageFiles.h\"\n\nnamespace qztools {\n")
foreach(kind html css js)
  string(APPEND code "\nconst char s_${kind}[] =")
  foreach(file IN LISTS ${kind})
    file(READ "${FOLDER}/${file}" text)
    string(APPEND code "\n    R\"file(${text})file\"")
  endforeach()
  string(APPEND code ";\n")
endforeach()
string(APPEND code "\n}  // namespace qztools\n")
file(WRITE "${OUT}" "${code}")
