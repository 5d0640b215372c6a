# One module, one target. A module exports its own folder and nothing else, and whoever uses a
# header of another module must name that module under USES: an include that the layers do not
# allow does not compile.
function(qd_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_USES} qd_options)
  set_property(GLOBAL APPEND PROPERTY QD_MODULES ${name})
endfunction()

# Links the C++ runtime into a program or library (not under a sanitizer, which brings its own), and
# nothing that is not used: every library to load and every page to touch costs at each start.
# Options behind the target go to the linker as well.
function(qd_static_runtime target)
  if(NOT WIN32)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src/platform/posix/static/Terminate.cpp)
  endif()
  if(NOT QD_SANITIZE)
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc -Wl,--as-needed -Wl,--gc-sections
                                          ${ARGN})
  endif()
endfunction()

# Links a program that loads no library without any shared one, where the system has what that needs:
# its start then costs less than half.
function(qd_static_program target)
  if(QD_SANITIZE OR WIN32)
    return()
  endif()
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static)
  check_cxx_source_compiles("#include <string>\nint main(int n, char**) { return std::to_string(n).empty(); }"
                            QD_LINKS_STATICALLY)
  if(QD_LINKS_STATICALLY)
    target_link_options(${target} PRIVATE -static)
  endif()
endfunction()

# The test program of one module, run by CTest test by test. QD_TEST_DATA is the folder tests/data.
function(qd_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  target_link_libraries(${name} PRIVATE ${ARG_USES} qd_options GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE QD_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
endfunction()
