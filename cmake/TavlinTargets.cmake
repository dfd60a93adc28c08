# Targets of this project are made with the functions below, so that flags and include
# roots are said once.

# What every target of ours is compiled with.  Warnings are errors.
add_library(tavlin_options INTERFACE)
target_compile_options(tavlin_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  # nobody replaces functions of ours at run time, so they may be inlined in position-independent code
  -fno-semantic-interposition
  # so that programs can leave out what they do not use
  -ffunction-sections -fdata-sections)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies in std::string operator+ where there are none
  target_compile_options(tavlin_options INTERFACE -Wno-restrict)
endif()
target_include_directories(tavlin_options INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)

# Tests loop over lists of plain numbers, of which only Clang minds the sign.
add_library(tavlin_test_options INTERFACE)
target_compile_options(tavlin_test_options INTERFACE
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)

set_property(GLOBAL PROPERTY TAVLIN_COMPONENTS "")

# tavlin_component(NAME model SOURCES a.cpp ... [DEPENDS other-component ...]
#                  [LIBRARIES external ...] [SEPARATE])
#
# One folder of the library: a static library tavlin_<name> that tests link on its own.
# Its objects also become part of the installed library, unless SEPARATE is given.
function(tavlin_component)
  cmake_parse_arguments(C "SEPARATE" "NAME" "SOURCES;DEPENDS;LIBRARIES" ${ARGN})
  set(target tavlin_${C_NAME})
  add_library(${target} STATIC ${C_SOURCES})
  target_link_libraries(${target} PRIVATE tavlin_options)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  foreach(dependency ${C_DEPENDS})
    target_link_libraries(${target} PUBLIC tavlin_${dependency})
  endforeach()
  target_link_libraries(${target} PRIVATE ${C_LIBRARIES})
  if(NOT C_SEPARATE)
    set_property(GLOBAL APPEND PROPERTY TAVLIN_COMPONENTS ${target})
  endif()
endfunction()

# tavlin_test(NAME model SOURCES ATest.cpp ... LINKS component ...)
#
# One test program for one folder, run by CTest case by case.
function(tavlin_test)
  cmake_parse_arguments(T "" "NAME" "SOURCES;LINKS;LIBRARIES" ${ARGN})
  set(target test_${T_NAME})
  add_executable(${target} ${T_SOURCES})
  target_link_libraries(${target} PRIVATE tavlin_options tavlin_test_options
    GTest::gmock GTest::gtest_main)
  foreach(component ${T_LINKS})
    target_link_libraries(${target} PRIVATE tavlin_${component})
  endforeach()
  target_link_libraries(${target} PRIVATE ${T_LIBRARIES})
  target_compile_definitions(${target} PRIVATE
    TAVLIN_SOURCE_DIR="${PROJECT_SOURCE_DIR}" TAVLIN_BUILD_DIR="${PROJECT_BINARY_DIR}")
  # One CTest entry a program: thousands of processes cost more than they tell.
  add_test(NAME ${T_NAME} COMMAND ${target})
  set_tests_properties(${T_NAME} PROPERTIES TIMEOUT 900)
endfunction()
