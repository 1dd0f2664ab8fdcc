# What every target of the project is compiled with. A project that takes this one in as a
# dependency keeps its own flags: nothing here is set globally.

set(QZ_VERSION_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/vorn.map")

function(qz_compiler_settings target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(QZ_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
  endif()
endfunction()

# A shared library whose headers and sources lie side by side in its folder and which exports
# namespace vorn alone.
function(qz_add_library name)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp")
  add_library(${name} SHARED ${sources} ${headers})
  add_library(qz::${name} ALIAS ${name})
  qz_compiler_settings(${name})
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  # Calls inside the library are direct and can be inlined: nobody replaces its functions.
  target_compile_options(${name} PRIVATE -fno-semantic-interposition)
  target_link_options(${name} PRIVATE
    "LINKER:--version-script=${QZ_VERSION_SCRIPT}" LINKER:-Bsymbolic-functions)
  set_target_properties(${name} PROPERTIES
    LINK_DEPENDS "${QZ_VERSION_SCRIPT}"
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN")
  qz_install_library(${name})
endfunction()

# The library, its public headers, and what finds it: its CMake target and its pkg-config file.
function(qz_install_library name)
  file(GLOB headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
  install(TARGETS ${name} EXPORT qzMacroExpanderTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
    NAMELINK_COMPONENT development)
  install(FILES ${headers}
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${name}" COMPONENT development)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" ${name}.pc @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endfunction()
