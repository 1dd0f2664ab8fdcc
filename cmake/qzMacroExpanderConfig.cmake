include("${CMAKE_CURRENT_LIST_DIR}/qzMacroExpanderTargets.cmake")
