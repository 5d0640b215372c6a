# GTest::gtest_main: the installed one, or in a cross build one that is built from the sources that
# Debian's package googletest puts there.
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
else()
  set(QD_GTEST_SOURCE /usr/src/googletest/googletest CACHE PATH "Sources of GoogleTest")
  add_library(gtest_main STATIC ${QD_GTEST_SOURCE}/src/gtest-all.cc ${QD_GTEST_SOURCE}/src/gtest_main.cc)
  target_include_directories(gtest_main SYSTEM PUBLIC ${QD_GTEST_SOURCE}/include PRIVATE ${QD_GTEST_SOURCE})
  add_library(GTest::gtest_main ALIAS gtest_main)
endif()
