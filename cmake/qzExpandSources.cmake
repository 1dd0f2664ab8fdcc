# Expands texts in the macro language as a part of a target's build:
#
#   qz_expand_sources(TARGET target FILES file.qz...
#     [INCLUDE_DIRS folder...] [DEFINES definition...] [OPTIONS option...] [DEPENDS file...]
#     [MAP] [PYTHON])
#
# docs/cmake.md is its manual. A file is expanded when it, a file that it imports, or the tool has
# changed. Of the expansion, only what has become other bytes gets a new time, so the command of a
# file leaves a stamp behind, which tells the build engine when it was run last.

# The paths in depfiles are absolute, whatever the project that calls has set.
cmake_policy(PUSH)
cmake_policy(VERSION 3.22)

function(qz_expand_sources)
  cmake_parse_arguments(PARSE_ARGV 0 arg
    "MAP;PYTHON" "TARGET" "FILES;INCLUDE_DIRS;DEFINES;OPTIONS;DEPENDS")
  _qz_expand_check_call()
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/qz/${arg_TARGET}")
  _qz_expand_collect_options()
  foreach(file IN LISTS arg_FILES)
    _qz_expand_add_file()
  endforeach()
  _qz_expand_include_folder()
endfunction()

# What follows belongs to the function above, and works on its variables.

function(_qz_expand_fail message)
  message(FATAL_ERROR "qz_expand_sources: ${message}")
endfunction()

function(_qz_expand_check_call)
  if(arg_UNPARSED_ARGUMENTS)
    list(GET arg_UNPARSED_ARGUMENTS 0 first)
    _qz_expand_fail("unknown argument '${first}'")
  endif()
  foreach(keyword IN ITEMS TARGET FILES)
    if(NOT arg_${keyword})
      _qz_expand_fail("${keyword} is missing")
    endif()
  endforeach()
  if(arg_KEYWORDS_MISSING_VALUES)
    list(GET arg_KEYWORDS_MISSING_VALUES 0 first)
    _qz_expand_fail("nothing stands behind ${first}")
  endif()
  _qz_expand_check_target()
  if(NOT TARGET qz::qzexpand)
    _qz_expand_fail("the tool qzexpand is missing: its package is not installed, or QZ_BUILD_TOOLS \
is off in the build that qzMacroExpander is part of")
  endif()
endfunction()

# A command can be added to targets of the same folder only.
function(_qz_expand_check_target)
  if(NOT TARGET "${arg_TARGET}")
    _qz_expand_fail("there is no target '${arg_TARGET}'; it is to be made in front of the call")
  endif()
  foreach(property IN ITEMS ALIASED_TARGET IMPORTED SOURCE_DIR)
    get_target_property(${property} "${arg_TARGET}" ${property})
  endforeach()
  if(ALIASED_TARGET OR IMPORTED)
    _qz_expand_fail("'${arg_TARGET}' is only a name for a target that is made elsewhere")
  endif()
  if(NOT SOURCE_DIR STREQUAL CMAKE_CURRENT_SOURCE_DIR)
    _qz_expand_fail("the target '${arg_TARGET}' is made in another folder, ${SOURCE_DIR}")
  endif()
endfunction()

# Sets options, the part of the command line that all files share. Within the list the semicolons
# of a value are escaped.
function(_qz_expand_collect_options)
  set(options "")
  foreach(folder IN LISTS arg_INCLUDE_DIRS)
    if(NOT folder MATCHES "^\\$<")
      get_filename_component(folder "${folder}" ABSOLUTE)
    endif()
    list(APPEND options -I "${folder}")
  endforeach()
  foreach(definition IN LISTS arg_DEFINES)
    string(REPLACE ";" "\\;" definition "${definition}")
    list(APPEND options -D "${definition}")
  endforeach()
  if(arg_PYTHON)
    list(APPEND options --python)
  endif()
  foreach(option IN LISTS arg_OPTIONS)
    string(REPLACE ";" "\\;" option "${option}")
    list(APPEND options "${option}")
  endforeach()
  set(options "${options}" PARENT_SCOPE)
endfunction()

# The path that the expansion of input gets below the target's folder: that of the input as seen
# from the source folder or the binary one, without its .qz and what leads upwards.
function(_qz_expand_name_output input)
  if(NOT input MATCHES "[^/]\\.qz$")
    _qz_expand_fail("the name of ${file} does not end in .qz")
  endif()
  set(base "${CMAKE_CURRENT_SOURCE_DIR}")
  string(FIND "${input}" "${CMAKE_CURRENT_BINARY_DIR}/" position)
  if(position EQUAL 0)
    set(base "${CMAKE_CURRENT_BINARY_DIR}")
  endif()
  file(RELATIVE_PATH name "${base}" "${input}")
  string(REGEX REPLACE "^(\\.\\./)+" "" name "${name}")
  string(REGEX REPLACE "\\.qz$" "" name "${name}")
  get_target_property(outputs "${arg_TARGET}" QZ_OUTPUTS)
  if("${folder}/${name}" IN_LIST outputs)
    _qz_expand_fail("${file} gives ${name}, which the target '${arg_TARGET}' has already")
  endif()
  set(output "${folder}/${name}" PARENT_SCOPE)
endfunction()

function(_qz_expand_check_input input)
  get_source_file_property(isMade "${input}" GENERATED)
  if(NOT isMade AND (NOT EXISTS "${input}" OR IS_DIRECTORY "${input}"))
    _qz_expand_fail("no such file: ${input}")
  endif()
endfunction()

function(_qz_expand_add_file)
  get_filename_component(input "${file}" ABSOLUTE)
  _qz_expand_name_output("${input}")
  _qz_expand_check_input("${input}")
  get_filename_component(outputFolder "${output}" DIRECTORY)
  file(MAKE_DIRECTORY "${outputFolder}")
  set(made "${output}")
  if(arg_MAP)
    list(APPEND made "${output}.map")
    list(APPEND options --map "${output}.map")
  endif()
  # CMake's makefiles collect depfiles, but add what one of them names to what it named before, so
  # that a file which is not imported any more would still count. What is collected anew is right.
  set(forget "")
  if(CMAKE_GENERATOR MATCHES "Makefiles")
    set(forget COMMAND "${CMAKE_COMMAND}" -E rm -f
      "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${arg_TARGET}.dir/compiler_depend.internal")
  endif()
  file(RELATIVE_PATH shown "${CMAKE_BINARY_DIR}" "${output}")
  add_custom_command(
    OUTPUT "${output}.stamp"
    BYPRODUCTS ${made}
    COMMAND qz::qzexpand ${options} -o "${output}"
      --depfile "${output}.d" --depfile-target "${output}.stamp" -- "${input}"
    ${forget}
    COMMAND "${CMAKE_COMMAND}" -E touch "${output}.stamp"
    DEPENDS "${input}" qz::qzexpand qz::qzMacroExpander ${arg_DEPENDS}
    DEPFILE "${output}.d"
    COMMENT "Expanding ${shown}"
    VERBATIM)
  target_sources("${arg_TARGET}" PRIVATE "${output}.stamp" ${made})
  set_property(TARGET "${arg_TARGET}" APPEND PROPERTY QZ_OUTPUTS "${output}")
  # What the author includes in quotes lies beside the text that it is included in.
  get_filename_component(inputFolder "${input}" DIRECTORY)
  set_property(SOURCE "${output}" APPEND PROPERTY INCLUDE_DIRECTORIES "${inputFolder}")
endfunction()

# Whoever compiles or links with the target finds the headers among its expansions.
function(_qz_expand_include_folder)
  get_target_property(type "${arg_TARGET}" TYPE)
  if(type STREQUAL "UTILITY")
    return()
  elseif(type STREQUAL "INTERFACE_LIBRARY")
    set(reach INTERFACE)
  else()
    set(reach PUBLIC)
  endif()
  target_include_directories("${arg_TARGET}" ${reach} "$<BUILD_INTERFACE:${folder}>")
endfunction()

cmake_policy(POP)
