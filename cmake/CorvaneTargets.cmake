# What every target of the project has in common, so that each folder only lists what is its own.

find_program(CCACHE_PROGRAM ccache)

# Compiling a dozen sources as one unit reads the headers once: two thirds of the time of a clean
# build. The debug preset compiles each source by itself, so that includes stay honest.
option(CORVANE_UNITY "Compile the sources of each library in a few large units" OFF)

function(corvane_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_23)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
  if(CORVANE_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With more to inline, GCC 12 takes the other alternative of a result for an uninitialised one;
    # and it takes each source of a unit for a header that others may include.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized -Wno-subobject-linkage)
  elseif(CORVANE_UNITY)
    # Clang minds a name of a function that another source of the unit has for itself too.
    target_compile_options(${target} PRIVATE -Wno-shadow)
  endif()
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
  set_target_properties(corvane_${folder} PROPERTIES UNITY_BUILD "${CORVANE_UNITY}"
                                                     UNITY_BUILD_BATCH_SIZE 12)
  target_include_directories(corvane_${folder} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(corvane_${folder} PUBLIC ${ARG_USES} PRIVATE ${ARG_USES_PRIVATELY})
endfunction()

# corvane_tests(<folder> SOURCES <files> [APART <files>] [USES <targets>] [SHARDS <count>] [ABROAD] [COMMAS] [CONCURRENT])
# One test program for one folder under tests/, named <folder>_tests. CTest runs it in SHARDS parts
# that may run side by side, and with ABROAD once more in another time zone. COMMAS is for folders
# whose files and messages are no user's language: they are run once more where decimals follow a
# comma. Both are for the optimised build, since they find no faults of memory. APART are those of the sources
# that have names of their own in common with others, and so must be compiled by themselves.
# CONCURRENT is for folders whose code runs on several threads: they carry that label, and the target
# concurrent_tests builds them, for the thread sanitizer.
function(corvane_tests folder)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "ABROAD;COMMAS;CONCURRENT" "SHARDS" "SOURCES;APART;USES")
  set(program ${folder}_tests)
  add_executable(${program} ${ARG_SOURCES})
  corvane_target_defaults(${program})
  target_include_directories(${program} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${program} PRIVATE ${ARG_USES} GTest::gmock GTest::gtest_main)
  if(CORVANE_UNITY)
    # What is local to one source of a unit may have the name of something global to another.
    target_compile_options(${program} PRIVATE -Wno-shadow)
  endif()
  set_target_properties(${program} PROPERTIES UNITY_BUILD "${CORVANE_UNITY}"
                                              UNITY_BUILD_BATCH_SIZE 6
                                              RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  target_sources(${program} PRIVATE ${ARG_APART})
  corvane_compile_apart(${program} ${ARG_APART})

  # The texts that most tests expect are those of a machine without a locale of its own.
  set(home "TZ=America/Toronto;LC_ALL=C.UTF-8")
  if(NOT ARG_SHARDS)
    set(ARG_SHARDS 1)
  endif()
  math(EXPR last "${ARG_SHARDS} - 1")
  foreach(shard RANGE ${last})
    corvane_test_run(${folder}.${shard} ${program}
                     "${home};GTEST_TOTAL_SHARDS=${ARG_SHARDS};GTEST_SHARD_INDEX=${shard}")
  endforeach()
  if(ARG_CONCURRENT)
    add_dependencies(concurrent_tests ${program})
    foreach(shard RANGE ${last})
      set_tests_properties(${folder}.${shard} PROPERTIES LABELS concurrent)
    endforeach()
  endif()
  if(ARG_ABROAD AND CMAKE_BUILD_TYPE STREQUAL "Release")
    corvane_test_run(${folder}.abroad ${program} "TZ=Asia/Tokyo;LC_ALL=C.UTF-8")
  endif()
  if(ARG_COMMAS AND CMAKE_BUILD_TYPE STREQUAL "Release")
    corvane_test_run(${folder}.commas ${program} "TZ=Europe/Berlin;LC_ALL=de_DE.UTF-8")
  endif()
endfunction()

# corvane_compile_apart(<target> <files>): never in a unit with other sources.
function(corvane_compile_apart target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

function(corvane_test_run name program environment)
  add_test(NAME ${name} COMMAND ${program} --gtest_brief=1)
  # A program that hangs is ended with a signal that leaves a trace.
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${environment}" TIMEOUT 1200)
endfunction()
