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
  quenlor_static_library(${name} ${ARGN})
  target_precompile_headers(quenlor_${name} REUSE_FROM quenlor_standard_headers)
  quenlor_no_false_overruns(quenlor_${name})
endfunction()

# gcc 12 sees overruns of std::string's own buffer that are none, and precompiled headers are no system
# headers to it, so it tells them.
function(quenlor_no_false_overruns target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
    target_compile_options(${target} PRIVATE
      -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-restrict)
  endif()
endfunction()

# The same for what tests share.
function(quenlor_test_library name)
  quenlor_static_library(${name} ${ARGN})
  quenlor_unoptimised(quenlor_${name})
endfunction()

function(quenlor_static_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;PRIVATE" ${ARGN})
  add_library(quenlor_${name} STATIC ${arg_SOURCES})
  add_library(quenlor::${name} ALIAS quenlor_${name})
  quenlor_qualified(depends ${arg_DEPENDS})
  quenlor_qualified(private ${arg_PRIVATE})
  target_link_libraries(quenlor_${name} PUBLIC quenlor_flags ${depends} PRIVATE ${private})
endfunction()

# The standard library's headers that most sources include, compiled once: parsing them is a third of what
# compiling a source costs. Every source names those it needs all the same: clang-tidy reads it without them.
function(quenlor_standard_headers)
  add_library(quenlor_standard_headers STATIC "${PROJECT_SOURCE_DIR}/src/StandardHeaders.cpp")
  target_link_libraries(quenlor_standard_headers PRIVATE quenlor_flags)
  target_precompile_headers(quenlor_standard_headers PRIVATE
    <algorithm> <array> <charconv> <chrono> <cstdint> <functional> <map> <memory> <mutex> <optional> <set> <string>
    <string_view> <unordered_map> <utility> <variant> <vector>)
endfunction()

# Compiling and linking tests is most of a build, so they are not optimised (fortified headers would need
# it), a debugger sees them in a Debug build only, and lld links them where it is installed.
find_program(QUENLOR_LLD ld.lld)
mark_as_advanced(QUENLOR_LLD)
function(quenlor_unoptimised target)
  target_compile_options(${target} PRIVATE
    $<$<NOT:$<CONFIG:Debug>>:-O0> $<$<CONFIG:RelWithDebInfo>:-g0>)
  quenlor_no_false_overruns(${target})
  if(QUENLOR_LLD)
    target_link_options(${target} PRIVATE -fuse-ld=lld)
  endif()
  set_target_properties(${target} PROPERTIES QUENLOR_TEST_CODE ON)
endfunction()

# The headers that every test includes, compiled once; they are half of what compiling a test costs.
function(quenlor_test_headers)
  add_executable(test_headers "${PROJECT_SOURCE_DIR}/tests/support/TestHeaders.cpp")
  target_link_libraries(test_headers PRIVATE quenlor::testsupport GTest::gmock_main)
  quenlor_unoptimised(test_headers)
  target_precompile_headers(test_headers PRIVATE
    <gmock/gmock.h> <gtest/gtest.h> <filesystem> <fstream> <map> <memory> <sstream> <string> <vector>
    "${PROJECT_SOURCE_DIR}/tests/support/FakeHost.h")
endfunction()

# What `ctest -L threads` needs, for a build that is to hold no more.
add_custom_target(thread_tests)

# quenlor_test(<name> [THREADS] SOURCES ... DEPENDS ...)
# A GoogleTest program test_<name>; each of its tests becomes a ctest test with the label "unit", and where
# it starts THREADS also with the label "threads". Under a sanitizer the program is one ctest test: there
# a process takes longer to start and to end than most tests.
function(quenlor_test name)
  cmake_parse_arguments(arg "THREADS" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(test_${name} ${arg_SOURCES})
  quenlor_qualified(depends ${arg_DEPENDS})
  target_link_libraries(test_${name} PRIVATE ${depends} quenlor::testsupport GTest::gmock_main)
  target_compile_definitions(test_${name} PRIVATE
    QUENLOR_SOURCE_DIR="${PROJECT_SOURCE_DIR}" QUENLOR_BINARY_DIR="${PROJECT_BINARY_DIR}")
  quenlor_unoptimised(test_${name})
  target_precompile_headers(test_${name} REUSE_FROM test_headers)
  set(labels unit)
  if(arg_THREADS)
    list(APPEND labels threads)
    add_dependencies(thread_tests test_${name})
  endif()
  if(QUENLOR_SANITIZE)
    add_test(NAME ${name} COMMAND test_${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES LABELS "${labels}" TIMEOUT 600
      ENVIRONMENT "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.suppressions")
  else()
    gtest_discover_tests(test_${name} TEST_PREFIX "${name}." PROPERTIES LABELS unit TIMEOUT 120
                         DISCOVERY_TIMEOUT 60)
    if(arg_THREADS)  # gtest_discover_tests takes no list as a property
      set(labels_file "${CMAKE_CURRENT_BINARY_DIR}/test_${name}_labels.cmake")
      file(WRITE "${labels_file}" "if(test_${name}_TESTS)\n"
        "  set_tests_properties(\${test_${name}_TESTS} PROPERTIES LABELS \"${labels}\")\nendif()\n")
      set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${labels_file}")
    endif()
  endif()
endfunction()
