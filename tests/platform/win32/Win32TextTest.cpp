// The tables of the code page against the system's own answer.
#include <CodePage.h>
#include <gtest/gtest.h>
#include <windows.h>

namespace quarda::platform {
namespace {

TEST(Win32Text, HasTheLetterCaseOfTheSystem) {
  if (::GetACP() != 1252) GTEST_SKIP() << "the system has another code page";
  for (int c = 1; c < 256; ++c) {
    char lower = static_cast<char>(c);
    char upper = lower;
    ::CharLowerBuffA(&lower, 1);
    ::CharUpperBuffA(&upper, 1);
    EXPECT_EQ(LowerAnsi(static_cast<char>(c)), lower) << c;
    EXPECT_EQ(UpperAnsi(static_cast<char>(c)), upper) << c;
  }
}

}  // namespace
}  // namespace quarda::platform
