# The tools are a package of their own in some distributions; whoever needs them asks for the
# component "tools".
include("${CMAKE_CURRENT_LIST_DIR}/qzMacroExpanderTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/qzMacroExpanderToolsTargets.cmake" OPTIONAL
  RESULT_VARIABLE qzMacroExpander_tools_FOUND)
include("${CMAKE_CURRENT_LIST_DIR}/qzExpandSources.cmake")

foreach(component IN LISTS qzMacroExpander_FIND_COMPONENTS)
  if(NOT qzMacroExpander_${component}_FOUND AND qzMacroExpander_FIND_REQUIRED_${component})
    set(qzMacroExpander_FOUND FALSE)
    set(qzMacroExpander_NOT_FOUND_MESSAGE "The component '${component}' is not installed.")
  endif()
endforeach()
