#include <Arguments.h>
#include <Errors.h>

#include <algorithm>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

TEST(CommandLine, Splits) {
  const struct {
    const char* line;
    std::vector<std::string> arguments;
  } kRows[] = {
      {"", {}},
      {"   ", {}},
      {"engine.exe  \"C:\\mail box\\in_1.inp\"  -x",
       {"engine.exe", "C:\\mail box\\in_1.inp", "-x"}},
      {"/opt=\"a b\"", {"/opt=\"a b\""}},
      {"\"abc", {"abc"}},
      {"\"abc def", {"abc def"}},
      {"a \"\" b", {"a", "b"}},
      {"\"", {}},
      {"\"a\"b\" c", {"a\"b\" c"}},
      {"a\tb c", {"a\tb", "c"}},
  };
  for (const auto& row : kRows) EXPECT_EQ(SplitCommandLine(row.line), row.arguments) << row.line;
}

TEST(CommandLine, FindsSwitches) {
  const std::vector<std::string> arguments = {"-zero",  "/QUIT", "-quit2", "quit3",
                                              "--dash", "",      "-"};
  const struct {
    const char* name;
    bool ignoreCase;
    bool found;
  } kRows[] = {{"quit", true, true},   {"quit", false, false}, {"QUIT", false, true},
               {"quit3", true, false}, {"dash", true, false},  {"-dash", true, true},
               {"zero", true, false},  {"", true, true},       {"quit2", false, true}};
  for (const auto& row : kRows) {
    EXPECT_EQ(HasSwitch(arguments, row.name, row.ignoreCase), row.found) << row.name;
  }
  EXPECT_FALSE(HasSwitch({}, "x", true));
}

class ArgumentsTest : public TEngineTest {};

TEST_F(ArgumentsTest, TakesTheFirstExistingFile) {
  const std::string first = Mail("B.INP", "12345");
  const std::string second = Mail("c.inp");
  const auto line = [](const std::string& arguments) {
    return MakeRef<TArguments>("engine.exe " + arguments);
  };
  const auto found = line("-x \"" + Path("missing") + "\" \" " + first + " \" \"" + second + "\"");
  EXPECT_EQ(found->GetFilename(), first);
  EXPECT_EQ(found->GetFileExt(), ".inp");
  EXPECT_EQ(found->GetName(), "B.INP");
  EXPECT_EQ(found->GetFileSize(), 5);
  EXPECT_FALSE(found->GetShortFileName().IsEmpty());
  EXPECT_EQ(found->GetArgumentCount(), 4);
  EXPECT_EQ(found->GetArguments(0), "engine.exe");
  EXPECT_TRUE(found->FindCmdLineSwitch("X", true));
  EXPECT_FALSE(found->FindCmdLineSwitch("X", false));
  EXPECT_THROW(found->GetArguments(5), EListError);
  EXPECT_THROW(found->GetArguments(-1), EListError);

  std::string slashes = first;
  std::ranges::replace(slashes, '\\', '/');
  EXPECT_EQ(line("\"" + slashes + "\"")->GetName(), "B.INP") << "slashes part folders as well";

  const auto none = line("\"" + Path("base") + "\" \"" + Path("missing") + "\" /etc/passwd");
  EXPECT_TRUE(none->GetFilename().IsEmpty()) << "neither folders nor switches are files to scan";
  EXPECT_EQ(none->GetFileExt(), "");
  EXPECT_EQ(none->GetFileSize(), 0);
  EXPECT_EQ(none->GetShortFileName(), "");
}

}  // namespace
}  // namespace quarda::test
