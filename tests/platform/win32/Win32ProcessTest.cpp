// What only this system has: batch files, its shell, exceptions that end a program, names of
// devices.
#include <PlatformError.h>
#include <Process.h>
#include <Shell.h>
#include <windows.h>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

class Win32 : public TTestFolder {
 protected:
  static uint32_t Run(const std::string& line) {
    TProcess process({line, {}, true});
    EXPECT_TRUE(process.Wait(std::nullopt));
    return process.ExitCode();
  }
};

TEST_F(Win32, BatchFilesGetTheirArgumentsAsTheyAre) {
  Put("a b.bat",
      "@\"" + WindowsPath(QD_TEST_PROGRAM) + "\" show \"" + Path("seen") + "\" %*\r\n@exit 9\r\n");
  const std::string batch = QuoteArgument(Path("a b.bat"));
  EXPECT_EQ(Run(batch), 9u);
  // No row with a percent sign: Wine's command processor looks for variables once more in what a
  // batch file passes on.
  const struct {
    std::string given, seen;
  } kRows[] = {{"x", "x"},           {"\"a b\" c", "a b|c"},
               {"\"\"", ""},         {"\"a&b|c<d>e^f\"", "a&b|c<d>e^f"},
               {"a&exit", "a&exit"}, {"!PATH! $PATH", "!PATH!|$PATH"}};
  for (const auto& row : kRows) {
    EXPECT_EQ(Run(batch + ' ' + row.given), 9u) << row.given;
    std::string seen = Content("seen");
    seen = seen.substr(seen.find(std::string("seen\0", 5)) + 5);
    for (char& c : seen) c = c == '\0' ? '|' : c;
    EXPECT_EQ(seen, row.seen + '|') << row.given;
  }
  EXPECT_THROW(Run(batch + " \"a\nb\""), EPlatformError);
  EXPECT_THROW(Run(batch + ' ' + std::string(8'190, 'x')), EPlatformError);
}

/// What the shell says of a program agrees with the headers, which are read when the question is
/// asked for another name.
TEST_F(Win32, TheShellKnowsThePrograms) {
  constexpr uint32_t kPortable = 'P' | 'E' << 8;
  char folder[MAX_PATH];
  ASSERT_NE(::GetSystemDirectoryA(folder, sizeof folder), 0u);
  const std::string system(folder);
  const struct {
    std::string program;
    bool graphical;
  } kRows[] = {{WindowsPath(QD_TEST_PROGRAM), false},
               {system + "\\cmd.exe", false},
               {system + "\\notepad.exe", true}};
  for (const auto& row : kRows) {
    const uint32_t type = ExecutableType(row.program);
    EXPECT_EQ(type & 0xFFFF, kPortable) << row.program;
    EXPECT_EQ(type >> 16 != 0, row.graphical) << row.program;
    EXPECT_EQ(ExecutableType(row.program, "a.scr"), type) << row.program;
  }
}

TEST_F(Win32, AnExceptionIsNoExitCode) {
  TProcess process({"\"" QD_CRASHING_PROGRAM "\"", {}, true});
  EXPECT_TRUE(process.Wait(std::nullopt));
  EXPECT_TRUE(process.Crashed());
  EXPECT_NE(process.ExitCode(), 0u);
  const struct {
    uint32_t code;
    bool crashed;
  } kRows[] = {{0xC0000005, true},  {0xE06D7363, true},  {0x80000001, true},  {0x80000003, true},
               {0x80000004, true},  {0x40000015, true},  {0x80000000, false}, {0x80000005, false},
               {0x40000014, false}, {0xFFFFFFFF, false}, {255, false}};
  for (const auto& row : kRows) {
    const auto code = std::to_string(static_cast<int32_t>(row.code));
    TProcess ended({"\"" QD_TEST_PROGRAM "\" exit " + code, {}, true});
    EXPECT_TRUE(ended.Wait(std::nullopt));
    EXPECT_EQ(ended.ExitCode(), row.code);
    EXPECT_EQ(ended.Crashed(), row.crashed) << code;
  }
}

/// The name of the new content would be longer than the system takes.
TEST_F(Win32, LongPathsAreWrittenInPlace) {
  const std::string name(MAX_PATH - 1 - Path("").size(), 'x');
  Put(name, "old content");
  ReplaceFileContent(Path(name), "new");
  EXPECT_EQ(Content(name), "new");
  EXPECT_EQ(CountFiles(), 1u);
}

TEST_F(Win32, BoundProgramsEndWithWhoeverStartedThem) {
  constexpr DWORD kTwiceItsSleep = 1'500;
  const std::string program = QuoteArgument(WindowsPath(QD_TEST_PROGRAM));
  const std::string folder = Path("");
  TProcess process({program + " bound file", folder, true});
  EXPECT_TRUE(process.Wait(std::nullopt));
  {
    const TProcess released({program + " start other", folder, true, true});
    while (!FileExists(Path("other.started"))) ::Sleep(10);
  }
  ::Sleep(kTwiceItsSleep);
  EXPECT_TRUE(FileExists(Path("file.started")));
  EXPECT_FALSE(FileExists(Path("file")));
  EXPECT_TRUE(FileExists(Path("other"))) << "a bound program that is given up goes on";
}

TEST_F(Win32, DevicesAreNoFiles) {
  for (const char* name : {"NUL", "nul.txt", "COM1", "con.exe", "AUX"}) {
    EXPECT_FALSE(FileExists(Path(name))) << name;
    EXPECT_FALSE(FindFile(Path(name))) << name;
    EXPECT_THROW(TFile(Path(name), TOpenMode::kCreate), EPlatformError) << name;
    EXPECT_THROW(ReplaceFileContent(Path(name), "x"), EPlatformError) << name;
  }
  EXPECT_EQ(CountFiles(), 0u);
}

}  // namespace
}  // namespace quarda::platform
