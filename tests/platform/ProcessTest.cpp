// Starting programs: another program of these tests. What only scripts and signals show stands in
// the folders of the systems.
#include <PlatformError.h>
#include <Process.h>

#include <chrono>
#include <thread>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

using std::chrono::milliseconds;

TEST(ProgramLine, SplitsByTheWindowsRules) {
  const struct {
    const char* line;
    std::vector<std::string> pieces;
  } kRows[] = {
      {"", {}},
      {"  \t ", {}},
      {" prog  a\tb ", {"prog", "a", "b"}},
      {R"("C:\my dir\p.exe" "a b" c)", {R"(C:\my dir\p.exe)", "a b", "c"}},
      {R"("C:\dir\" x)", {R"(C:\dir\)", "x"}},
      {R"(p "a\"b" c\\d "e\\" f\"g)", {"p", "a\"b", R"(c\\d)", R"(e\)", "f\"g"}},
      {R"(p "a""b" "" x"y z"w)", {"p", "a\"b", "", "xy zw"}},
      {R"(p "open end)", {"p", "open end"}},
      {R"(p \)", {"p", R"(\)"}},
      {R"("")", {""}},
  };
  for (const auto& row : kRows) EXPECT_EQ(SplitProgramLine(row.line), row.pieces) << row.line;
}

TEST(ProgramLine, QuotesAnyArgument) {
  for (const char* argument : {"", "a", "a b", R"(a\)", R"(a b\)", R"(\\x y\\)", R"("a")",
                               R"(a\" b)", R"(\")", "a\t\n\"\"b"}) {
    const std::string line = "p " + QuoteArgument(argument) + " next";
    EXPECT_EQ(SplitProgramLine(line), (std::vector<std::string>{"p", argument, "next"})) << line;
  }
  const std::string line = R"( "a b"c  d\" e" "f g)";
  EXPECT_EQ(RawProgramLine(line),
            (std::vector<std::string_view>{R"("a b"c)", R"(d\")", R"(e" "f)", "g"}));
}

class Processes : public TTestFolder {
 protected:
  static std::string Line(const std::string& arguments) {
    return QuoteArgument(WindowsPath(QD_TEST_PROGRAM)) + ' ' + arguments;
  }
  static uint32_t Run(const std::string& line, const std::string& folder = {}) {
    TProcess process({line, folder, true});
    EXPECT_TRUE(process.Wait(std::nullopt));
    EXPECT_FALSE(process.Crashed());
    return process.ExitCode();
  }
  static uint32_t StartError(const std::string& line, const std::string& folder = {}) {
    try {
      TProcess process({line, folder, true});
    } catch (const EPlatformError& error) {
      return error.Code();
    }
    return 0;
  }
  /// Waits until the file is there.
  bool Appears(const std::string& name, milliseconds limit) const {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!FileExists(Path(name)) && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(milliseconds(10));
    }
    return FileExists(Path(name));
  }
};

TEST_F(Processes, GiveTheirExitCode) {
  EXPECT_EQ(Run(Line("exit 0")), 0u);
  EXPECT_EQ(Run(Line("exit 200")), 200u);
  EXPECT_EQ(Run("platform_program exit 5"), 5u) << "a bare name is found in the base folder";
  TProcess process({Line("exit 7"), {}, false});
  process.Wait(milliseconds(20'000));
  process.Terminate(0);  // changes nothing for one that ended by itself
  EXPECT_EQ(process.ExitCode(), 7u);
}

TEST_F(Processes, StartInTheFolder) {
  Put("sub folder/x");
  EXPECT_EQ(Run(Line("folder \"" + Path("seen") + "\""), Path("sub folder")), 0u);
  EXPECT_EQ(Content("seen"), Path("sub folder"));
  EXPECT_NE(StartError(Line("exit 0"), Path("missing")), 0u);
}

TEST_F(Processes, CannotAllBeStarted) {
  Put("text.exe", "no program");
  for (const std::string& line :
       {"\"" + Path("missing.exe") + "\" x", "\"" + Path("text.exe") + "\"", "\"" + Path("") + "\"",
        std::string("no-such-program-anywhere"), std::string(), std::string("\"\""),
        Line(std::string("exit 0 \0x", 9))}) {
    EXPECT_NE(StartError(line), 0u) << line;
  }
}

TEST_F(Processes, EndWithAllThatTheyStarted) {
  const std::string folder = Path("");
  TProcess process({Line("start file"), folder, true});
  EXPECT_TRUE(Appears("file.started", milliseconds(20'000)));
  EXPECT_FALSE(process.Wait(milliseconds(1)));
  EXPECT_EQ(process.ExitCode(), TProcess::kStillActive);
  process.Terminate(3);
  EXPECT_EQ(process.ExitCode(), 3u);
  EXPECT_FALSE(process.Crashed());
  EXPECT_FALSE(Appears("file", milliseconds(1'000))) << "what it started went on";
}

}  // namespace
}  // namespace quarda::platform
