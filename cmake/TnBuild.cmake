# What every target of this tree is built with.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(TN_PLUGIN_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/plugins")
set(TN_PLUGIN_INSTALL_DIR "${CMAKE_INSTALL_LIBDIR}/tnhost/plugins")

option(TN_SANITIZE "Build with the address, undefined behaviour and leak sanitizers" OFF)
option(TN_FUZZ "Build what fuzzing needs; clang only" OFF)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

# Interface target that carries the warnings; linked privately by every target of ours.
add_library(tn_options INTERFACE)
target_compile_options(tn_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
  -Werror)
target_compile_definitions(tn_options INTERFACE
  QT_DEPRECATED_WARNINGS QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
if(TN_SANITIZE)
  # For all targets, the generated ones included: a half-instrumented program reports nonsense.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -O1)
  add_link_options(-fsanitize=address,undefined)
endif()
if(TN_FUZZ)
  # Casts are checked as well: readers turn stated numbers into counts.
  set(fuzzChecks address,undefined,float-cast-overflow)
  add_compile_options(-fsanitize=fuzzer-no-link,${fuzzChecks} -fno-sanitize-recover=all -O1)
  add_link_options(-fsanitize=${fuzzChecks})
endif()
