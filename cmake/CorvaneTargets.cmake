# What every target of the project has in common, so that each folder only lists what is its own.

find_program(CCACHE_PROGRAM ccache)

function(corvane_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_23)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
  if(CCACHE_PROGRAM)
    set_target_properties(${target} PROPERTIES CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  endif()
endfunction()

# corvane_library(<folder> SOURCES <files> [USES <targets>] [USES_PRIVATELY <targets>])
# One static library for one folder under src/, named corvane_<folder>.
function(corvane_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;USES;USES_PRIVATELY")
  add_library(corvane_${folder} STATIC ${ARG_SOURCES})
  corvane_target_defaults(corvane_${folder})
  target_include_directories(corvane_${folder} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(corvane_${folder} PUBLIC ${ARG_USES} PRIVATE ${ARG_USES_PRIVATELY})
endfunction()

# corvane_tests(<folder> SOURCES <files> [USES <targets>])
# One test program for one folder under tests/, named <folder>_tests; ./test runs every program that
# it finds in the build folder's tests/.
function(corvane_tests folder)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;USES")
  add_executable(${folder}_tests ${ARG_SOURCES})
  corvane_target_defaults(${folder}_tests)
  target_include_directories(${folder}_tests PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${folder}_tests PRIVATE ${ARG_USES} GTest::gmock GTest::gtest_main)
  set_target_properties(${folder}_tests PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
endfunction()
