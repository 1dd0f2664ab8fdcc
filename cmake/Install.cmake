# What is installed besides the libraries: how CMake and pkg-config find them.

include(CMakePackageConfigHelpers)

set(QZ_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/qzMacroExpander")
write_basic_package_version_file(qzMacroExpanderConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES
    "${PROJECT_SOURCE_DIR}/cmake/qzExpandSources.cmake"
    "${PROJECT_SOURCE_DIR}/cmake/qzMacroExpanderConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/qzMacroExpanderConfigVersion.cmake"
  DESTINATION "${QZ_CMAKE_DIR}" COMPONENT development)
install(EXPORT qzMacroExpanderTargets NAMESPACE qz::
  DESTINATION "${QZ_CMAKE_DIR}" COMPONENT development)
