# Compiling goes through ccache where that is installed; -DCMAKE_CXX_COMPILER_LAUNCHER= switches it off.
if(DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  return()
endif()
find_program(QUENLOR_CCACHE ccache)
mark_as_advanced(QUENLOR_CCACHE)
if(QUENLOR_CCACHE)
  # Without these it takes no compilation that uses a precompiled header, and that is every test.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${QUENLOR_CCACHE}")
endif()
