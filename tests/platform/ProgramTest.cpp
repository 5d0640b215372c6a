#include <Library.h>
#include <Memory.h>
#include <PlatformError.h>
#include <Process.h>
#include <Program.h>

#include <array>
#include <new>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

class Program : public TTestFolder {
 protected:
  /// The arguments of the test program when it is started with these, as it sees them.
  std::vector<std::string> SeenArguments(const std::string& quoted) const {
    TProcess process({"\"" QD_TEST_PROGRAM "\" show \"" + Path("seen") + "\"" + quoted, {}, true});
    process.Wait(std::nullopt);
    EXPECT_EQ(process.ExitCode(), 0u);
    const std::string text = Content("seen");
    std::vector<std::string> arguments;
    for (size_t start = 0; start < text.size(); start = text.find('\0', start) + 1) {
      arguments.emplace_back(text.c_str() + start);
    }
    return arguments;
  }
};

TEST_F(Program, GivesArgumentsAndTurnsPathsOfFiles) {
  Put("mail box/in_1.inp");
  Put("seen");
  const std::string native = Native("mail box/in_1.inp").string();
  const auto arguments =
      SeenArguments(" /quit \"" + native + "\" \"\" \"" + native + ".no\" relative/x \"a  b\" \"" +
                    Native("mail box").string() + "\"");
  const std::vector<std::string> expected = {WindowsPath(QD_TEST_PROGRAM),
                                             "show",
                                             Path("seen"),
                                             "/quit",
                                             Path("mail box\\in_1.inp"),
                                             "",
                                             native + ".no",
                                             "relative/x",
                                             "a  b",
                                             Path("mail box")};
  EXPECT_EQ(arguments, expected);
}

TEST_F(Program, KnowsItsFolder) {
  const std::string path = ProgramPath();
  EXPECT_TRUE(FileExists(path));
  EXPECT_EQ(path.rfind(ProgramFolder() + "\\tests_platform", 0), 0u) << path;
  EXPECT_EQ(ModulePath(), path);
}

TEST_F(Program, LoadsLibraries) {
  const std::string path = WindowsPath(QD_SAMPLE_LIBRARY);
  const std::string name = path.substr(path.rfind('\\') + 1);
  for (const std::string& given :
       {path, name, ".\\" + std::filesystem::relative(QD_SAMPLE_LIBRARY).string()}) {
    const TLibraryHandle library = LoadLibraryFile(given);
    ASSERT_NE(library, 0u) << given;
    const auto tell =
        reinterpret_cast<void (*)(char*, size_t)>(FindExport(library, "SampleModulePath"));
    ASSERT_NE(tell, nullptr);
    std::array<char, 4096> told{};
    tell(told.data(), told.size() - 1);
    EXPECT_EQ(FullPath(told.data()), path);
    EXPECT_EQ(FindExport(library, "NoSuchName"), nullptr);
    UnloadLibrary(library);
  }
  Put("text.so", "no library");
  for (const std::string& given :
       {Path("text.so"), Path("missing.so"), std::string("no such library"), std::string(),
        std::string("\\\\no.such.server\\a\\b.so")}) {
    EXPECT_EQ(LoadLibraryFile(given), 0u) << given;
  }
  EXPECT_EQ(FindExport(0, "x"), nullptr);
}

TEST_F(Program, SeesMemoryComeAndGo) {
  EXPECT_GT(AvailablePhysicalMemory(), 1u << 20);
  EXPECT_LT(AvailablePhysicalMemory(), uint64_t{1} << 50);
}

TEST_F(Program, NamesErrorsOfTheSystem) {
  EXPECT_NE(ErrorText(2), ErrorText(5));
  EXPECT_FALSE(FileExists(Path("missing")));
  EXPECT_NE(LastErrorCode(), 0u);
  for (const uint32_t code : {0u, 2u, 99'999u, 0xFFFFFFFFu}) {
    const std::string text = ErrorText(code);
    EXPECT_FALSE(text.empty() || text.back() == '\n' || text.back() == '\r') << code;
  }
}

}  // namespace
}  // namespace quarda::platform
