include(${CMAKE_CURRENT_LIST_DIR}/OCCommonUiTargets.cmake)
