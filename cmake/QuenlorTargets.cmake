# quenlor_library(<name> SOURCES ... [DEPENDS ...] [PRIVATE ...])
# One static library per folder. DEPENDS and PRIVATE name other libraries: "base" means quenlor::base,
# a name with "::" is taken as it is.
function(quenlor_qualified out)
  set(names "")
  foreach(name IN LISTS ARGN)
    if(name MATCHES "::|^-|/" OR name STREQUAL "dl")
      list(APPEND names "${name}")
    else()
      list(APPEND names "quenlor::${name}")
    endif()
  endforeach()
  set(${out} "${names}" PARENT_SCOPE)
endfunction()

function(quenlor_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;PRIVATE" ${ARGN})
  add_library(quenlor_${name} STATIC ${arg_SOURCES})
  add_library(quenlor::${name} ALIAS quenlor_${name})
  quenlor_qualified(depends ${arg_DEPENDS})
  quenlor_qualified(private ${arg_PRIVATE})
  target_link_libraries(quenlor_${name} PUBLIC quenlor_flags ${depends} PRIVATE ${private})
endfunction()

# Compiling tests is most of a build, so they are not optimised. Fortified headers would need it. gcc 12
# sees overruns of std::string's own buffer that are none, and precompiled headers are no system headers to it.
function(quenlor_unoptimised target)
  target_compile_options(${target} PRIVATE
    $<$<NOT:$<CONFIG:Debug>>:-O0> -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread
    -Wno-restrict)
  set_target_properties(${target} PROPERTIES QUENLOR_UNFORTIFIED ON)
endfunction()

# The headers that every test includes, compiled once; they are half of what compiling a test costs.
function(quenlor_test_headers)
  add_executable(test_headers "${PROJECT_SOURCE_DIR}/tests/support/TestHeaders.cpp")
  target_link_libraries(test_headers PRIVATE quenlor::testsupport GTest::gmock_main)
  quenlor_unoptimised(test_headers)
  target_precompile_headers(test_headers PRIVATE
    <gmock/gmock.h> <gtest/gtest.h> <filesystem> <fstream> <map> <memory> <sstream> <string> <vector>)
endfunction()

# quenlor_test(<name> SOURCES ... DEPENDS ...)
# A GoogleTest program test_<name>; each of its tests becomes a ctest test with the label "unit".
function(quenlor_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(test_${name} ${arg_SOURCES})
  quenlor_qualified(depends ${arg_DEPENDS})
  target_link_libraries(test_${name} PRIVATE ${depends} quenlor::testsupport GTest::gmock_main)
  target_compile_definitions(test_${name} PRIVATE
    QUENLOR_SOURCE_DIR="${PROJECT_SOURCE_DIR}" QUENLOR_BINARY_DIR="${PROJECT_BINARY_DIR}")
  quenlor_unoptimised(test_${name})
  target_precompile_headers(test_${name} REUSE_FROM test_headers)
  gtest_discover_tests(test_${name} TEST_PREFIX "${name}." PROPERTIES LABELS unit TIMEOUT 120
                       DISCOVERY_TIMEOUT 60)
endfunction()
