# Settings that every target of this project shares.
#
# kuv_target_defaults(TARGET [CXX_STANDARD 17])
#   Warnings, visibility, floating point rules and sanitizers. C++20 unless told otherwise: host/ and
#   the module stay at 17, because a module that others load should not force the newest compiler.
function(kuv_target_defaults target)
  cmake_parse_arguments(ARG "" "CXX_STANDARD" "" ${ARGN})
  if(NOT ARG_CXX_STANDARD)
    set(ARG_CXX_STANDARD 20)
  endif()
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD ${ARG_CXX_STANDARD}
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wdouble-promotion -Wshadow
    -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Wunused -Woverloaded-virtual
    -Wformat=2 -Wimplicit-fallthrough -Wextra-semi
    # g++ 12 sees overlapping copies in "literal" + std::string where there are none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    # The same floats on every compiler and at every level of optimisation.
    -ffp-contract=off)
  if(KUV_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(KUV_SANITIZE)
    # float-cast-overflow is not part of "undefined" with either compiler; leaks come with "address".
    set(flags -fsanitize=address,undefined,float-cast-overflow)
    target_compile_options(${target} PRIVATE ${flags} -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE ${flags})
    if(KUV_WITH_FUZZERS)
      target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
  endif()
  target_link_options(${target} PRIVATE -Wl,--as-needed)
endfunction()

# kuv_test_defaults(TARGET)
#   What a test executable needs: the test libraries, the places of the project and of the models, and
#   one ctest test for every test of the executable.
function(kuv_test_defaults target)
  kuv_target_defaults(${target})
  target_link_libraries(${target} PRIVATE
    $<TARGET_NAME_IF_EXISTS:kuv_test_support> GTest::gtest GTest::gtest_main rapidcheck
    nlohmann_json::nlohmann_json Threads::Threads)
  # KUV_MODELS (environment) names the folder of the sample models; this is its default. Tests skip
  # with a word when the folder is absent.
  target_compile_definitions(${target} PRIVATE
    KUV_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    KUV_BINARY_DIR="${PROJECT_BINARY_DIR}"
    KUV_MODELS_DEFAULT="${PROJECT_SOURCE_DIR}/../shared/data")
  include(GoogleTest)
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 600)
endfunction()
