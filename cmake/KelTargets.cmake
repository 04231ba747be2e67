# How every target of the project is built. Each function states what it adds; nothing is set globally.

add_library(kel_build_flags INTERFACE)
target_compile_features(kel_build_flags INTERFACE cxx_std_20)
target_compile_options(kel_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # Sums must come out the same on every machine.
  -ffp-contract=off)
if(KELSCORING_SANITIZERS)
  target_compile_options(kel_build_flags INTERFACE
    -fsanitize=${KELSCORING_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(kel_build_flags INTERFACE -fsanitize=${KELSCORING_SANITIZERS})
endif()

# Hidden symbols, includes from the repository root, the project's warnings.
function(kel_common_properties target)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    CXX_EXTENSIONS OFF
    BUILD_RPATH_USE_ORIGIN ON)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:kel_build_flags>)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${target} PUBLIC cxx_std_20)
endfunction()

# kel_shared_library(name SOURCES ... [PUBLIC libs...] [PRIVATE libs...])
function(kel_shared_library target)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${target} SHARED ${ARG_SOURCES})
  add_library(KelScoring::${target} ALIAS ${target})
  kel_common_properties(${target})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()

# A plug-in exports one symbol. It lands beside the libraries, where plug-ins are looked up.
# kel_plugin(name SOURCES ... LIBS ...)
function(kel_plugin target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_library(${target} MODULE ${ARG_SOURCES})
  kel_common_properties(${target})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  target_link_libraries(${target} PRIVATE ${ARG_LIBS})
endfunction()

# A test program on GoogleTest; each of its tests becomes one of ctest.
# kel_test(name SOURCES ... LIBS ...)
function(kel_test target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  kel_common_properties(${target})
  target_link_libraries(${target} PRIVATE ${ARG_LIBS} GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${target}." PROPERTIES TIMEOUT 300)
endfunction()
