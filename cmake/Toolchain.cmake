# What every target is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

set(KV_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")

# The warnings and sanitizers of the project's own code.
add_library(kv_options INTERFACE)
target_compile_options(kv_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast
  -Wcast-qual -Woverloaded-virtual -Wconversion -Wno-sign-conversion -Werror
  # g++ 12 sees overlaps in the standard library's strings that are none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # A server library with a symbol that g++ makes unique in the process would never be unloaded.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
if(KV_SANITIZE)
  target_compile_options(kv_options INTERFACE -fsanitize=${KV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(kv_options INTERFACE -fsanitize=${KV_SANITIZE})
endif()

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

find_package(Threads REQUIRED)

option(KV_PRECOMPILED_HEADERS "Compile the headers that a room shares once. Only some builds do, so that others find a missing include." OFF)

# kv_precompile(TARGET headers...), or, to use those of a target that is compiled alike, kv_precompile(TARGET FROM OTHER).
function(kv_precompile target)
  if(NOT KV_PRECOMPILED_HEADERS)
    return()
  endif()
  if(ARGV1 STREQUAL "FROM")
    target_precompile_headers(${target} REUSE_FROM ${ARGV2})
  else()
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
