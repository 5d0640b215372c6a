// Command lines apart from the programs that they start: those are shell scripts in the tests,
// which stand in the folder of the system that has a shell.
#include <CommandLine.h>
#include <PifFile.h>
#include <TempFolder.h>
#include <gtest/gtest.h>

namespace quarda {
namespace {

TEST(CommandLine, FallsApartIntoProgramAndArguments) {
  const struct {
    const char *command, *program, *arguments;
  } kRows[] = {{"", "", ""},
               {"  ", "", ""},
               {"scan", "scan", ""},
               {"scan  a b ", "scan", "a b"},
               {R"("C:\my dir\s.exe" "a b")", R"(C:\my dir\s.exe)", R"("a b")"},
               {R"("C:\s.exe"x y)", R"(C:\s.exe)", "y"},
               {R"("C:\s.exe)", R"(C:\s.exe )", R"(C:\s.exe)"},
               {R"("")", "", ""},
               {R"(")", " ", ""}};
  for (const auto& row : kRows) {
    EXPECT_EQ(ExtractCmdFileName(row.command), row.program) << row.command;
    EXPECT_EQ(ExtractCmdArguments(row.command), row.arguments) << row.command;
  }
}

TEST(CommandLine, OfADosProgramGetsAPif) {
  const TTempFolder folder;
  const std::string expected =
      platform::ReadWholeFile(platform::WindowsPath(QD_TEST_DATA "/pif/clean-me.pif"));
  for (const std::string& name : {std::string("clean me"), "clean me" + std::string(60, 'x')}) {
    const std::string program = folder.Write(name + ".bat", "");
    folder.Write(name + ".pif", "old");
    std::filesystem::permissions(folder.Native() / (name + ".pif"),
                                 std::filesystem::perms::owner_read);
    EXPECT_EQ(CreatePifFile(program), folder.Path(name + ".pif"));
    std::string title = name, path = program.substr(0, 62);
    title.resize(30, ' ');
    path.resize(63, '\0');
    EXPECT_EQ(folder.Read(name + ".pif"),
              std::string(expected).replace(2, 30, title).replace(36, 63, path));
  }
}

}  // namespace
}  // namespace quarda
