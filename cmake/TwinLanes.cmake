# Shared helpers for module and test folders.

# Headless environment for every test: no display, no real pref folder, no
# real browser, and suppressions for the libraries' own process-lifetime caches
# and for races inside uninstrumented system libraries.
set(TWINLANES_TEST_ENV
  "SDL_VIDEODRIVER=dummy"
  "SDL_FRAMEBUFFER_ACCELERATION=0"
  "LANG=C.UTF-8"
  "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
  "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1"
  "ASAN_OPTIONS=detect_leaks=1"
  "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp")

# twinlanes_test(NAME <target> LABEL unit|scenario|e2e SOURCES ... LIBS ...)
# Builds a GoogleTest executable and registers each case with CTest under the
# label, with the environment every headless test needs. Its main
# (tests/support/test_main.cpp) installs the backend's graphics for the run.
function(twinlanes_test)
  cmake_parse_arguments(T "" "NAME;LABEL" "SOURCES;LIBS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} GTest::gtest GTest::gmock twinlanes_test_main)
  target_compile_definitions(${T_NAME} PRIVATE
    TWINLANES_RESOURCES="${TWINLANES_RESOURCES}"
    TWINLANES_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data")
  # gtest_discover_tests flattens list-valued properties, so a list of
  # environment variables would lose all but the first. Run each test through
  # `cmake -E env` instead: discovery and every case see the whole set.
  set_target_properties(${T_NAME} PROPERTIES
    CROSSCOMPILING_EMULATOR "${CMAKE_COMMAND};-E;env;${TWINLANES_TEST_ENV}")
  gtest_discover_tests(${T_NAME}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS ${T_LABEL})
endfunction()

# twinlanes_bench(NAME <target> SOURCES ... LIBS ...)
function(twinlanes_bench)
  cmake_parse_arguments(B "" "NAME" "SOURCES;LIBS" ${ARGN})
  add_executable(${B_NAME} ${B_SOURCES})
  target_link_libraries(${B_NAME} PRIVATE ${B_LIBS} benchmark::benchmark benchmark::benchmark_main)
  target_compile_definitions(${B_NAME} PRIVATE TWINLANES_RESOURCES="${TWINLANES_RESOURCES}")
endfunction()


# twinlanes_fuzz(NAME <target> SECONDS <n> LABEL <label> SOURCES ... LIBS ...
#                [SEEDS dir] [ARGS extra libFuzzer flags...])
# Builds a libFuzzer target (the sources under test go into SOURCES so the
# fuzzer sees their coverage) and registers one bounded run from the committed
# seeds; new inputs stay in the build tree.
function(twinlanes_fuzz)
  cmake_parse_arguments(F "" "NAME;SECONDS;LABEL;SEEDS" "SOURCES;LIBS;ARGS" ${ARGN})
  add_executable(${F_NAME} ${F_SOURCES})
  target_include_directories(${F_NAME} PRIVATE ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${F_NAME} PRIVATE ${F_LIBS})
  target_compile_options(${F_NAME} PRIVATE -fsanitize=fuzzer)
  target_link_options(${F_NAME} PRIVATE -fsanitize=fuzzer)
  if(NOT TWINLANES_TESTS)
    return()
  endif()
  set(corpus ${CMAKE_CURRENT_BINARY_DIR}/corpus)
  file(MAKE_DIRECTORY ${corpus})
  add_test(NAME ${F_NAME}
    COMMAND ${F_NAME} -max_total_time=${F_SECONDS} -timeout=25 -rss_limit_mb=2560
            -artifact_prefix=${CMAKE_CURRENT_BINARY_DIR}/ ${F_ARGS} ${corpus} ${F_SEEDS}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  math(EXPR limit "${F_SECONDS} + 120")
  set_tests_properties(${F_NAME} PROPERTIES
    LABELS ${F_LABEL} TIMEOUT ${limit} ENVIRONMENT "${TWINLANES_TEST_ENV}")
endfunction()
