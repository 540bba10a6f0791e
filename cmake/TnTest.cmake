# tn_add_test(NAME SOURCES... LIBRARIES...): one QtTest program, run with a home, settings and
# temporary directory of its own, so that no test sees another's files or the user's.
function(tn_add_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;DEFINITIONS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tn_options Qt5::Test ${ARG_LIBRARIES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/tests")
  target_compile_definitions(${name} PRIVATE
    TN_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/samples"
    TN_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
    TN_PLUGIN_DIR="${TN_PLUGIN_OUTPUT_DIRECTORY}" ${ARG_DEFINITIONS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  add_test(NAME ${name}
    COMMAND "${PROJECT_SOURCE_DIR}/tests/support/isolated" "${CMAKE_BINARY_DIR}/sandboxes/${name}"
            $<TARGET_FILE:${name}>)
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()
