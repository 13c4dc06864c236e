# What every target of the project has in common, so that each folder only lists what is its own.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  # Paths below the checkout count as relative ones, so that checkouts side by side serve each other.
  set(CORVANE_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
                                CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
endif()

# The large programs, most of them tests, are links of much the same libraries, each of which takes GNU's
# linker six times as long. It makes no difference to what a program does.
find_program(CORVANE_LLD ld.lld)

# Compiling two dozen sources as one unit reads the headers once, and instantiates templates once:
# three quarters of the time of a clean build. The debug preset compiles each source by itself, so that
# includes stay honest.
option(CORVANE_UNITY "Compile the sources of each library in a few large units" OFF)

function(corvane_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_23)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
  if(CORVANE_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With more to inline, GCC 12 takes the other alternative of a result for an uninitialised one;
    # and it takes each source of a unit for a header that others may include.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized -Wno-subobject-linkage)
    # A unit needs hardly more than a gigabyte in all. To look for memory that it could use again takes
    # a twentieth of its time.
    target_compile_options(${target} PRIVATE --param=ggc-min-heapsize=1048576)
  elseif(CORVANE_UNITY)
    # Clang minds a name of a function that another source of the unit has for itself too.
    target_compile_options(${target} PRIVATE -Wno-shadow)
  endif()
  get_target_property(type ${target} TYPE)
  if(CORVANE_LLD AND type STREQUAL "EXECUTABLE")
    target_link_options(${target} PRIVATE -fuse-ld=lld)
  endif()
  if(CCACHE_PROGRAM)
    set_target_properties(${target} PROPERTIES CXX_COMPILER_LAUNCHER "${CORVANE_COMPILER_LAUNCHER}")
  endif()
endfunction()

# corvane_sources(<target> ROOT <folder> BATCH <count> SOURCES <files>): what a target is compiled of,
# in units of at most BATCH sources where CORVANE_UNITY says so. A unit names its sources from ROOT,
# which is among the target's include directories: CMake's own units name them by their whole path, which
# no two checkouts have in common. Qt's moc finds the headers of the sources.
function(corvane_sources target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "ROOT;BATCH" "SOURCES")
  if(NOT CORVANE_UNITY)
    target_sources(${target} PRIVATE ${ARG_SOURCES})
    return()
  endif()
  get_property(unit GLOBAL PROPERTY CORVANE_UNITS_OF_${target})
  if(NOT unit)
    set(unit 0)
  endif()
  # Of one size, so that the machine's cores end together.
  list(LENGTH ARG_SOURCES left)
  math(EXPR units_left "(${left} + ${ARG_BATCH} - 1) / ${ARG_BATCH}")
  while(ARG_SOURCES)
    list(LENGTH ARG_SOURCES left)
    math(EXPR count "(${left} + ${units_left} - 1) / ${units_left}")
    math(EXPR units_left "${units_left} - 1")
    set(text "")
    foreach(_ RANGE 1 ${count})
      list(POP_FRONT ARG_SOURCES source)
      get_filename_component(path "${source}" ABSOLUTE)
      file(RELATIVE_PATH name "${ARG_ROOT}" "${path}")
      string(APPEND text "#include \"${name}\"\n")
      string(REGEX REPLACE "[.]cpp$" ".h" header "${path}")
      if(EXISTS "${header}")
        target_sources(${target} PRIVATE "${header}")
      endif()
    endforeach()
    set(file "${PROJECT_BINARY_DIR}/units/${target}_${unit}.cpp")
    file(CONFIGURE OUTPUT "${file}" CONTENT "${text}" @ONLY)
    target_sources(${target} PRIVATE "${file}")
    math(EXPR unit "${unit} + 1")
  endwhile()
  set_property(GLOBAL PROPERTY CORVANE_UNITS_OF_${target} ${unit})
endfunction()

# corvane_library(<folder> SOURCES <files> [USES <targets>] [USES_PRIVATELY <targets>])
# One static library for one folder under src/, named corvane_<folder>.
function(corvane_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;USES;USES_PRIVATELY")
  add_library(corvane_${folder} STATIC)
  corvane_target_defaults(corvane_${folder})
  corvane_library_sources(${folder} ${ARG_SOURCES})
  target_include_directories(corvane_${folder} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(corvane_${folder} PUBLIC ${ARG_USES} PRIVATE ${ARG_USES_PRIVATELY})
endfunction()

# corvane_library_sources(<folder> <files>): more sources of a library.
function(corvane_library_sources folder)
  corvane_sources(corvane_${folder} ROOT "${PROJECT_SOURCE_DIR}/src" BATCH 30 SOURCES ${ARGN})
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
  add_executable(${program})
  corvane_target_defaults(${program})
  target_include_directories(${program} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${program} PRIVATE ${ARG_USES} GTest::gmock GTest::gtest_main)
  if(CORVANE_UNITY)
    # What is local to one source of a unit may have the name of something global to another.
    target_compile_options(${program} PRIVATE -Wno-shadow)
  endif()
  # Tests take longer to compile than what they test, and run for seconds: -O1 spares a quarter of that.
  # Undefined behaviour is looked for in the libraries; in the tests' own code, with what it instantiates,
  # the checks would take as long again as those of addresses.
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(${program} PRIVATE -O1)
  elseif(CMAKE_CXX_FLAGS_DEBUG MATCHES "undefined")
    target_compile_options(${program} PRIVATE -fno-sanitize=undefined)
  endif()
  set_target_properties(${program} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  corvane_test_sources(${program} SOURCES ${ARG_SOURCES} APART ${ARG_APART})
  add_dependencies(tests ${program})

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

# corvane_test_sources(<program> SOURCES <files> [APART <files>]): more sources of a test program.
function(corvane_test_sources program)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;APART")
  corvane_sources(${program} ROOT "${PROJECT_SOURCE_DIR}/tests" BATCH 13 SOURCES ${ARG_SOURCES})
  target_sources(${program} PRIVATE ${ARG_APART})
endfunction()

function(corvane_test_run name program environment)
  add_test(NAME ${name} COMMAND ${program} --gtest_brief=1)
  # A program that hangs is ended with a signal that leaves a trace.
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${environment}" TIMEOUT 1200)
endfunction()
