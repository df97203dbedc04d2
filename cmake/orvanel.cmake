# What every target of this project shares: warnings, sanitizers, and the three kinds of target.

option(ORVANEL_WINDOW "Build the window program (needs Qt 6)" ON)
option(ORVANEL_TESTS "Build the tests (needs GoogleTest)" ON)
option(ORVANEL_BENCH "Build the benchmarks (needs Google Benchmark and the peers)" OFF)
option(ORVANEL_FUZZ "Build the fuzz targets (needs clang)" OFF)
option(ORVANEL_WEB "Build for WebAssembly (cmake/web.cmake is the toolchain)" OFF)
option(ORVANEL_COVERAGE "Instrument for gcov" OFF)
set(ORVANEL_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

add_library(orvanel_options INTERFACE)
target_compile_features(orvanel_options INTERFACE cxx_std_20)
target_include_directories(orvanel_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
target_compile_options(orvanel_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    $<IF:$<CXX_COMPILER_ID:Clang>,-Wmissing-prototypes,-Wmissing-declarations>
    # GCC 12 warns of an overlap that isn't there wherever strings are joined at -O3.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(ORVANEL_SANITIZE)
    # A report names files and lines, and -g1 has these; for the debugger there is the preset `debug`.
    target_compile_options(orvanel_options INTERFACE
        -fsanitize=${ORVANEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
    target_link_options(orvanel_options INTERFACE -fsanitize=${ORVANEL_SANITIZE})
endif()
if(ORVANEL_FUZZ)
    target_compile_options(orvanel_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(ORVANEL_COVERAGE)
    target_compile_options(orvanel_options INTERFACE --coverage)
    target_link_options(orvanel_options INTERFACE --coverage)
endif()

# A target with the property ORVANEL_PLAIN isn't optimised: its compiling costs more than its running.
# It stands last, so it holds in every kind of build.
target_compile_options(orvanel_options INTERFACE $<$<BOOL:$<TARGET_PROPERTY:ORVANEL_PLAIN>>:-O0>)

# orvanel_library(NAME SOURCES file... [USES layer...] [NO_EXCEPTIONS] [PLAIN]): one layer, one static
# library. USES names the layers below that it may call; nothing else is there to link against.
function(orvanel_library name)
    cmake_parse_arguments(arg "NO_EXCEPTIONS;PLAIN" "" "SOURCES;USES" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC orvanel_options ${arg_USES})
    set_target_properties(${name} PROPERTIES ORVANEL_PLAIN ${arg_PLAIN})
    if(arg_NO_EXCEPTIONS)
        target_compile_options(${name} PRIVATE -fno-exceptions)
    elseif(ORVANEL_WEB)
        target_compile_options(${name} PRIVATE -fwasm-exceptions)
    endif()
endfunction()

# orvanel_program(NAME SOURCES file... TOP layer... [USES target...]): a program in bin/. TOP names
# what it has above the common layers. The layers call up through host_calls.h and down through the
# platform's seam, so all are searched as one group.
function(orvanel_program name)
    cmake_parse_arguments(arg "" "" "SOURCES;TOP;USES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    orvanel_stack(stack ${arg_TOP})
    target_link_libraries(${name} PRIVATE orvanel_options ${stack} ${arg_USES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()

# orvanel_stack(VARIABLE [layer...]): the common layers, below the named ones, as one group to link.
function(orvanel_stack variable)
    string(REPLACE ";" "," group "${ARGN};${ORVANEL_STACK}")
    set(${variable} "$<LINK_GROUP:RESCAN,${group}>" PARENT_SCOPE)
endfunction()

# orvanel_label(LABEL TESTS name... PROGRAMS target...): gives tests a label, and has the target
# LABEL_tests build the programs that they run, so that one kind of test can be built alone.
function(orvanel_label label)
    cmake_parse_arguments(arg "" "" "TESTS;PROGRAMS" ${ARGN})
    if(NOT TARGET ${label}_tests)
        add_custom_target(${label}_tests)
    endif()
    add_dependencies(${label}_tests ${arg_PROGRAMS})
    if(arg_TESTS)
        set_tests_properties(${arg_TESTS} PROPERTIES LABELS ${label})
    endif()
endfunction()

# orvanel_test(NAME SOURCES file... USES target... [LABELS label...]): a GoogleTest program; each test
# in it is a ctest case. The label `threads` is for what the thread sanitizer has to see. USES names the
# layer under test alone, so a call in the wrong direction doesn't link. The lowest layer calls down
# to the platform, which stands beside it here, and so the two are searched together.
function(orvanel_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES;LABELS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES ORVANEL_PLAIN ON)
    target_link_libraries(${name} PRIVATE orvanel_options ${arg_USES}
        "$<LINK_GROUP:RESCAN,orvanel_pipes,orvanel_test_support>" GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS "${arg_LABELS}")
    foreach(label ${arg_LABELS})
        orvanel_label(${label} PROGRAMS ${name})
    endforeach()
endfunction()
