// The INI rules.
#include <IniFile.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace quarda {
namespace {

std::string Reread(std::string_view text) {
  TIniFile ini;
  ini.SetText(text);
  return ini.Text();
}

TEST(IniFile, ReadsWhatItWouldWrite) {
  const struct {
    const char* row;
    std::string_view text, expected;
  } rows[] = {
      {"nothing", "", ""},
      {"empty lines and comments go", "[a]\n\n;x\n ;y\nk=v\n \t\n", "[a]\r\nk=v\r\n\r\n"},
      {"lines before the first section go", "k=v\nline\n[a]\n", "[a]\r\n\r\n"},
      {"every kind of line end", "[a]\rx\ny\r\nz", "[a]\r\nx\r\ny\r\nz\r\n\r\n"},
      {"a header again continues", "[a]\nx\n[b]\ny\n[A]\nz\n",
       "[a]\r\nx\r\nz\r\n\r\n[b]\r\ny\r\n\r\n"},
      {"blanks at the ends of headers", " [ a ] \nx\n[a]\ny", "[a]\r\nx\r\ny\r\n\r\n"},
      {"blanks in lines stay", "[a]\n x \nk = v \n", "[a]\r\n x \r\nk = v \r\n\r\n"},
      {"brackets that make no header", "[a]\n[\n[x\nx]\n", "[a]\r\n[\r\n[x\r\nx]\r\n\r\n"},
      {"brackets inside a name", "[a]b]\nx\n[]\ny", "[a]b]\r\nx\r\n\r\n[]\r\ny\r\n\r\n"},
      {"letter case above 127", "[\xC4]\nx\n[\xE4]\ny", "[\xC4]\r\nx\r\ny\r\n\r\n"},
      {"UTF-8 mark, only at the start", "\xEF\xBB\xBF[a]\n\xEF\xBB\xBF[b]",
       "[a]\r\n\xEF\xBB\xBF[b]\r\n\r\n"},
      {"equal keys stay", "[a]\nk=1\nK=2", "[a]\r\nk=1\r\nK=2\r\n\r\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Reread(row.text), row.expected) << row.row;
    EXPECT_EQ(Reread(row.expected), row.expected) << row.row;
  }
}

TEST(IniFile, FindsValues) {
  TIniFile ini;
  ini.SetText("[One]\nline\nk=a=b\nK=second\nempty=\n=nameless\nwide = v \ntight= w\n[Two]\nk=2");
  const struct {
    const char *section, *key, *value;  // null: missing
  } rows[] = {{"one", "K", "a=b"},      {"ONE", "empty", ""},  {"One", "", "nameless"},
              {"One", "line", nullptr}, {"Two", "k", "2"},     {"Two", "wide", nullptr},
              {"Three", "k", nullptr},  {"One", "wide", "v "}, {"One", "tight", " w"},
              {" one ", " wide ", "v "}};
  for (const auto& row : rows) {
    const auto value = ini.Value(row.section, row.key);
    ASSERT_EQ(value.has_value(), row.value != nullptr) << row.section << "/" << row.key;
    EXPECT_EQ(value.value_or(""), row.value ? row.value : "") << row.section << "/" << row.key;
  }
}

TEST(IniFile, WritesInPlaceOrAtTheEnd) {
  TIniFile ini;
  ini.SetText("[a]\nk=1\nK=2\nline\n[b]\nx=1");
  ini.SetValue("A", "K", "new");
  ini.SetValue("a", "z", "");
  ini.SetValue("c", "y", " 3");
  ini.DeleteValue("b", "X");
  ini.DeleteValue("none", "x");
  EXPECT_EQ(ini.Text(), "[a]\r\nK=new\r\nK=2\r\nline\r\nz=\r\n\r\n[b]\r\n\r\n[c]\r\ny= 3\r\n\r\n");
  ini.DeleteValue("a", "k");
  EXPECT_FALSE(ini.Value("a", "k")) << "every line of the key goes";
  ini.DeleteSection("C");
  ini.DeleteSection("C");
  EXPECT_EQ(ini.Lines().SeparateText("|"), "[a]|line|z=||[b]|");
}

TEST(IniFile, ARewrittenSectionIsReadAgainAtTheEnd) {
  const struct {
    const char *row, *before, *lines, *after;
  } rows[] = {
      {"moves", "[a]\nx\n[b]\ny", "n", "[b]|y||[A]|n|"},
      {"is new", "[b]\ny", "n", "[b]|y||[A]|n|"},
      {"is empty", "[a]\nx\n[b]", "", "[b]||[A]|"},
      {"loses empty lines and comments", "", "1,,;c,2,", "[A]|1|2|"},
      {"opens another section", "", "1,[n],2", "[A]|1||[n]|2|"},
      {"continues an older section", "[b]\ny", "1,[B],2,[a],3", "[b]|y|2||[A]|1|3|"},
  };
  for (const auto& row : rows) {
    TIniFile ini;
    ini.SetText(row.before);
    TStringList lines;
    lines.SetSeparateText(row.lines, ",");
    ini.WriteSection("A", lines);
    EXPECT_EQ(ini.Lines().SeparateText("|"), row.after) << row.row;
  }
}

// Entries that reading would take for a comment or a header change when a section is written,
// because the whole content passes through the form of the file.
TEST(IniFile, WritingASectionReadsEverythingAgain) {
  TIniFile ini;
  ini.SetValue("a", ";k", "1");
  ini.SetValue("a", "[n", "1]");
  ini.SetValue("a", "k", "2");
  EXPECT_EQ(ini.Lines().SeparateText("|"), "[a]|;k=1|[n=1]|k=2|");
  ini.WriteSection("z", {});
  EXPECT_EQ(ini.Lines().SeparateText("|"), "[a]||[n=1]|k=2||[z]|");
}

// A hundred thousand of anything: quadratic work would run into the time limit of the test.
TEST(IniFile, StaysLinear) {
  constexpr int kMany = 100000;
  std::string text = "[keys]\n";
  for (int i = 0; i < kMany; ++i) text += "key" + std::to_string(i) + "=1\n";
  for (int i = 0; i < kMany; ++i) text += "[section" + std::to_string(i) + "]\nk=1\n";
  TIniFile ini;
  ini.SetText(text);
  for (int i = 0; i < kMany; ++i) {
    const std::string number = std::to_string(i);
    ini.SetValue("keys", "KEY" + number, number);
    ini.SetValue("Section" + number, "new", number);
  }
  EXPECT_EQ(ini.Value("keys", "key99999"), "99999");
  for (int i = 0; i < kMany; ++i) {
    const std::string number = std::to_string(i);
    ini.DeleteValue("keys", "key" + number);
    EXPECT_FALSE(ini.Value("keys", "key" + number));
    ini.WriteSection("section" + number, {});
  }
  EXPECT_EQ(ini.Section("keys").Count(), 0u);
  EXPECT_EQ(ini.SectionNames().Count(), kMany + 1u);
}

}  // namespace
}  // namespace quarda
