# Writes a C++ source that holds the files of the page as texts:
#
#   cmake -DFOLDER=page -DOUT=Page.cpp -P EmbedPage.cmake
set(code "#include \"PageFiles.h\"\n\nnamespace qztools {\n")
foreach(file page.html page.css page.js)
  file(READ "${FOLDER}/${file}" text)
  string(REGEX REPLACE "^page\\." "" kind "${file}")
  string(APPEND code "\nconst char s_${kind}[] = R\"file(${text})file\";\n")
endforeach()
string(APPEND code "\n}  // namespace qztools\n")
file(WRITE "${OUT}" "${code}")
