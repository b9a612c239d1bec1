# Compiler and linker settings shared by every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED)

add_library(quenlor_flags INTERFACE)
target_compile_options(quenlor_flags INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Wformat=2 -Wno-format-nonliteral
  $<$<BOOL:${QUENLOR_WERROR}>:-Werror>)
target_compile_definitions(quenlor_flags INTERFACE _GNU_SOURCE)
# gcc tidies its memory up again and again while it compiles a source of this size: with some hundred
# megabytes more for each job it takes a tenth less time.
target_compile_options(quenlor_flags INTERFACE
  $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-expand=400>
  $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=1000000>)
target_include_directories(quenlor_flags INTERFACE "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}")
target_link_libraries(quenlor_flags INTERFACE Threads::Threads)

if(QUENLOR_SANITIZE)
  # The program is what undefined behaviour is looked for in; looking in the tests' own code for it as well
  # costs a third of what compiling them takes. Address and thread sanitizers have to see both sides.
  string(REPLACE "," ";" sanitizers "${QUENLOR_SANITIZE}")
  foreach(sanitizer IN LISTS sanitizers)
    if(sanitizer STREQUAL "undefined")
      target_compile_options(quenlor_flags INTERFACE
        $<$<NOT:$<BOOL:$<TARGET_PROPERTY:QUENLOR_TEST_CODE>>>:-fsanitize=undefined>)
    else()
      target_compile_options(quenlor_flags INTERFACE -fsanitize=${sanitizer})
    endif()
  endforeach()
  # -g1: functions and lines, which is what a report names; types and variables double an object file.
  target_compile_options(quenlor_flags INTERFACE -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
  target_link_options(quenlor_flags INTERFACE -fsanitize=${QUENLOR_SANITIZE})
else()
  target_compile_options(quenlor_flags INTERFACE
    -fstack-protector-strong -fstack-clash-protection -fcf-protection
    $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:$<TARGET_PROPERTY:QUENLOR_TEST_CODE>>>>:-U_FORTIFY_SOURCE>
    $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:$<TARGET_PROPERTY:QUENLOR_TEST_CODE>>>>:-D_FORTIFY_SOURCE=3>)
endif()

# Coverage feedback from every library that a fuzz target calls, and the speed that fuzzing lives on.
if(QUENLOR_BUILD_FUZZERS)
  target_compile_options(quenlor_flags INTERFACE -fsanitize=fuzzer-no-link -O1)
endif()
