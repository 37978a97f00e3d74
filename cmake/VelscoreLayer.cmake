# One room of the house: a library made of a folder, with the project's flags and its whole view of the
# world.
#
#   velscore_layer(velmodels OBJECT SOURCES a.cpp b.cpp SEES velhost velstats)
#
# KIND is OBJECT, STATIC or SHARED. SEES is what the room may include from and link with; beside its own
# folder it finds no other header of the project.
function(velscore_layer name kind)
  cmake_parse_arguments(LAYER "" "" "SOURCES;SEES" ${ARGN})
  add_library(${name} ${kind} ${LAYER_SOURCES})
  velscore_flags(${name})
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
             OUTPUT_VARIABLE folder)
  velscore_show(${name} PUBLIC ${folder})
  target_link_libraries(${name} PUBLIC ${LAYER_SEES})
  velscore_precompile(${name} ${LAYER_SEES})
endfunction()

# Headers of a room that may be included without seeing the rest of it: data that needs nothing linked.
#
#   velscore_plain_headers(velprecise stats/precise.h)
function(velscore_plain_headers name)
  add_library(${name} INTERFACE)
  velscore_show(${name} INTERFACE ${ARGN})
endfunction()

# Lets a target include from a folder of the tree, or a single header, and from nothing beside it: the
# include root of each holds a link to that alone, so that an arrow between rooms that the build doesn't
# list doesn't compile.
function(velscore_show name scope)
  foreach(path ${ARGN})
    string(REPLACE / - room ${path})
    set(root ${PROJECT_BINARY_DIR}/rooms/${room})
    cmake_path(GET path PARENT_PATH above)
    file(MAKE_DIRECTORY ${root}/${above})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${path} ${root}/${path} SYMBOLIC)
    target_include_directories(${name} ${scope} $<BUILD_INTERFACE:${root}>)
    # Coverage counts a line for its file, by whatever link that was found.
    if(CMAKE_CXX_FLAGS MATCHES "--coverage")
      target_compile_options(${name} ${scope}
        $<BUILD_INTERFACE:-fprofile-prefix-map=${root}/=${PROJECT_SOURCE_DIR}/>)
    endif()
  endforeach()
endfunction()

# Headers that nearly every source of a target includes, parsed once for it. A source includes what it
# uses all the same: scripts/lint.sh looks at it without them.
function(velscore_precompile name)
  set(headers <algorithm> <cmath> <functional> <map> <memory> <optional> <string> <string_view>
              <unordered_map> <vector>)
  if("XercesC::XercesC" IN_LIST ARGN)
    list(APPEND headers <xercesc/dom/DOM.hpp>)
  endif()
  if("GTest::gtest_main" IN_LIST ARGN)
    list(APPEND headers <gtest/gtest.h> <sstream>)
  endif()
  target_precompile_headers(${name} PRIVATE ${headers})
  # So that ccache can keep what is compiled with them.
  target_compile_options(${name} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
    "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endfunction()

# Warnings, and the order of floating-point operations, which is part of the behaviour: no contraction,
# no fast-math. What is released ends where its stack was written over, a buffer of the C library's
# functions overflows, or a jump lands where none leads.
function(velscore_flags name)
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wconversion -Wshadow -ffp-contract=off
                                         # g++ 12 warns falsely about string + string
                                         $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
                                         $<$<BOOL:${VELSCORE_WERROR}>:-Werror>)
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_compile_options(${name} PRIVATE "$<$<CONFIG:Release>:${VELSCORE_HARDENING}>")
  endif()
endfunction()

# Which of the hardening options the compiler knows: -fcf-protection is of x86 alone.
include(CheckCXXCompilerFlag)
set(VELSCORE_HARDENING)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
  string(MAKE_C_IDENTIFIER "VELSCORE_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    list(APPEND VELSCORE_HARDENING ${flag})
  endif()
endforeach()
# Some compilers define it themselves.
list(APPEND VELSCORE_HARDENING -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)

# One test program for a room: velscore_tests(host SOURCES a_test.cpp SEES velhost). It is run in
# SHARDS processes side by side (1 unless given), each of which takes its share of the tests.
function(velscore_tests room)
  cmake_parse_arguments(TESTS "" "SHARDS" "SOURCES;SEES" ${ARGN})
  add_executable(${room}_tests ${TESTS_SOURCES})
  velscore_flags(${room}_tests)
  velscore_show(${room}_tests PRIVATE tests)
  # A test's own code runs once: what counts is how long it compiles. What it tests is optimised.
  target_compile_options(${room}_tests PRIVATE -O0 -U_FORTIFY_SOURCE)
  target_link_libraries(${room}_tests PRIVATE ${TESTS_SEES} GTest::gtest_main)
  velscore_precompile(${room}_tests ${TESTS_SEES} GTest::gtest_main)
  if(NOT TESTS_SHARDS)
    set(TESTS_SHARDS 1)
  endif()
  foreach(shard RANGE 1 ${TESTS_SHARDS})
    math(EXPR index "${shard} - 1")
    add_test(NAME ${room}_tests.${shard} COMMAND ${room}_tests --gtest_brief=1
             WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
    set_tests_properties(${room}_tests.${shard} PROPERTIES LABELS ${room} TIMEOUT 1200
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${TESTS_SHARDS};GTEST_SHARD_INDEX=${index}")
  endforeach()
endfunction()
