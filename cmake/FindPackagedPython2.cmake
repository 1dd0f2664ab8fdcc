# Finds the headers and the library of the distribution's Python 2.7 and defines the target
# PackagedPython2::Python, which a program that embeds the interpreter compiles and links with.
#
# A machine may have further ones, of pyenv or conda say, in front on the PATH or among CMake's
# prefixes; their library need not be found when the program runs. Where one of them is wanted all
# the same, Python2_ROOT_DIR names it.
#
# The target's headers are system headers to the compiler: they use `register`, which C++17 no
# longer has.

# In a function, so that the hints reach no other look-up of the project that includes this one.
function(qz_find_packaged_python2)
  if(NOT Python2_ROOT_DIR)
    set(Python2_ROOT_DIR /usr)
  endif()
  set(Python2_FIND_STRATEGY LOCATION)
  foreach(place IN ITEMS CMAKE_PATH CMAKE_ENVIRONMENT_PATH SYSTEM_ENVIRONMENT_PATH)
    set(CMAKE_FIND_USE_${place} OFF)
  endforeach()
  find_package(Python2 2.7 EXACT QUIET COMPONENTS Development.Embed)
  if(TARGET Python2::Python AND NOT TARGET PackagedPython2::Python)
    add_library(PackagedPython2::Python INTERFACE IMPORTED)
    target_link_libraries(PackagedPython2::Python INTERFACE Python2::Python)
  endif()
  set(PackagedPython2_VERSION "${Python2_VERSION}" PARENT_SCOPE)
  set(PackagedPython2_LIBRARY "${Python2_LIBRARIES}" PARENT_SCOPE)
endfunction()

qz_find_packaged_python2()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(PackagedPython2
  REQUIRED_VARS PackagedPython2_LIBRARY
  VERSION_VAR PackagedPython2_VERSION
  REASON_FAILURE_MESSAGE
  "scripts/install-deps installs it, and -DQZ_PYTHON=OFF builds without embedded Python")
