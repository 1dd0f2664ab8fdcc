# Debian packages of what is installed, by `cpack`. docs/packaging.md is the manual.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qzmacroexpander)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
if(NOT CPACK_PACKAGE_CONTACT)
  set(CPACK_PACKAGE_CONTACT "The qzMacroExpander authors")
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(QZ_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
# The same modes whatever the umask of whoever packs.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/packages/AddDocuments.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/packages/DropScripts.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the libraries need is found out from them; they themselves are looked for where they are
# built, and named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  "${PROJECT_BINARY_DIR}/qzUtils" "${PROJECT_BINARY_DIR}/qzMacroExpander")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/packages/triggers")

# Of DESCRIPTION the first line is the summary.
function(qz_package component)
  cmake_parse_arguments(PARSE_ARGV 1 arg
    "" "NAME;SECTION;DESCRIPTION;DEPENDS;RECOMMENDS;SUGGESTS" "")
  string(TOUPPER "${component}" COMPONENT)
  foreach(property IN ITEMS NAME SECTION DEPENDS RECOMMENDS SUGGESTS)
    set("CPACK_DEBIAN_${COMPONENT}_PACKAGE_${property}" "${arg_${property}}" PARENT_SCOPE)
  endforeach()
  set("CPACK_DEBIAN_${COMPONENT}_DESCRIPTION" "${arg_DESCRIPTION}" PARENT_SCOPE)
endfunction()

set(library "libqzmacroexpander${PROJECT_VERSION_MAJOR}")
set(same "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

qz_package(runtime NAME ${library} SECTION libs
  DESCRIPTION "macro language for any source text - libraries
Expands a macro language embedded in source text of any kind: C++, SQL,
configuration, prose. It has macros, variables, conditionals, loops, imports
and embedded Python 2.7; generated text stays laid out, and each stretch of it
leads back to where it came from.

This package holds the shared libraries.")

qz_package(development NAME libqzmacroexpander-dev SECTION libdevel
  DEPENDS "${library} ${same}"
  RECOMMENDS "qzmacroexpander-tools ${same}"
  DESCRIPTION "macro language for any source text - development files
What a program needs to be built with the libraries of qzMacroExpander: the
headers, which are their manual, and what CMake and pkg-config find them by.")

qz_package(tools NAME qzmacroexpander-tools SECTION utils
  DEPENDS "${library} ${same}"
  SUGGESTS "libqzmacroexpander-dev ${same}"
  DESCRIPTION "macro language for any source text - tools
The command-line tools of qzMacroExpander: one expands texts, as a command or
in a build, and one finds the way back from its output to the source.")

include(CPack)
