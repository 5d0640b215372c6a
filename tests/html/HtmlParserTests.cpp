#include <Files.h>
#include <MiniHtmlParser.h>
#include <PlatformError.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "HtmlReference.h"

namespace quarda {
namespace {

THtmlParser Parser(std::string text) {
  THtmlParser parser;
  parser.SetText(std::move(text));
  return parser;
}

std::vector<std::string> Tags(const std::string& text) {
  std::vector<std::string> tags;
  for (THtmlParser parser = Parser(text); parser.Next();) tags.push_back(parser.GetTag());
  return tags;
}

TEST(HtmlParser, FindsTags) {
  const struct {
    const char* text;
    std::vector<std::string> tags;
  } rows[] = {
      {"a<b>c</b>", {"<b>", "</b>"}},
      {"<a title='x>y'><b \"'>\">", {"<a title='x>y'>", "<b \"'>\">"}},
      {"<!-- <b> -->x<!--><!-->-->", {"<!-- <b> -->", "<!-->", "<!-->"}},
      {"<!-- open ><b>", {"<!-- open ><b>"}},
      {"<?xml a='?>'><?>?><? ?>", {"<?xml a='?>", "<?>", "<? ?>"}},
      {"<?xml '>'><b>", {"<?xml '>'>", "<b>"}},
      {"1 < 2 <b>", {"< 2 <b>"}},
      {"<b 'open>", {"<b 'open>"}},
      {"<", {"<"}},
      {"", {}},
  };
  for (const auto& row : rows) EXPECT_EQ(Tags(row.text), row.tags) << row.text;
  EXPECT_FALSE(THtmlParser().Next());
}

TEST(HtmlParser, KeepsItsPlace) {
  THtmlParser parser = Parser("a<b>c</b>d");
  EXPECT_FALSE(parser.GotoClosingTag());
  EXPECT_TRUE(parser.Next());
  EXPECT_EQ(parser.GetTagStart() * 100 + parser.GetIndex(), 205);
  const TAttrListGuardRef tag = parser.Get();
  EXPECT_TRUE(parser.GotoClosingTag());
  EXPECT_EQ(parser.GetTagStart() * 100 + parser.GetIndex(), 610);
  EXPECT_FALSE(parser.Next());
  EXPECT_EQ(parser.GetTagStart() * 100 + parser.GetIndex(), 1010);
  parser.GotoTag(nullptr);
  parser.DeleteTagSpan(nullptr, tag);
  EXPECT_EQ(parser.GetIndex(), 10);
  parser.GotoTag(tag);
  parser.ReplaceTag("<i>");
  EXPECT_TRUE(parser.Next());
  EXPECT_EQ(parser.GetTag(), "<i>");
  EXPECT_FALSE(parser.GotoClosingTag());
  EXPECT_EQ(parser.GetTagStart() * 100 + parser.GetIndex(), 1010);
}

TEST(HtmlParser, FindsClosingTagsAfterEditsAhead) {
  const struct {
    const char *text, *edited;
  } rows[] = {{"<b>", "<u><b>1<b></b>2</b>3"},
              {"</b>", "<u><b>1</b></b>2</b>3"},
              {"", "<u><b>1</b>2</b>3"},
              {"<b></b>", "<u><b>1<b></b></b>2</b>3"}};
  for (const auto& row : rows) {
    THtmlParser parser = Parser("<u><b>1<i></b>2</b>3");
    parser.Next();
    EXPECT_FALSE(parser.GotoClosingTag());  // from here on all tags are known
    parser.SetIndex(8);
    parser.Next();
    parser.ReplaceTag(row.text);
    EXPECT_EQ(parser.GetText(), row.edited);
    TReferenceParser truth{row.edited};
    parser.SetIndex(4);
    truth.SetIndex(4);
    EXPECT_EQ(parser.Next() && parser.GotoClosingTag(), truth.Next() && truth.GotoClosingTag());
    EXPECT_EQ(parser.GetTagStart(), truth.tagStart) << row.edited;
  }
}

TEST(HtmlParser, AMarkMadeBetweenInstructionsEndsTheFirst) {
  THtmlParser parser = Parser("<x><?a></x>Z</x><?b>");
  parser.Next();
  EXPECT_TRUE(parser.GotoClosingTag());
  EXPECT_EQ(parser.GetTagStart() * 100 + parser.GetIndex(), 812);
  parser.Insert("?>");
  parser.SetIndex(1);
  parser.Next();
  EXPECT_TRUE(parser.GotoClosingTag());
  EXPECT_EQ(parser.GetTagStart() * 100 + parser.GetIndex(), 1519);
}

std::string Repeat(std::string_view text, size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

/// What a check does that renames the elements it finds or removes them.
void Neutralise(std::string html, bool rename) {
  THtmlParser parser = Parser(std::move(html));
  while (parser.Next()) {
    const TAttrListGuardRef tag = parser.Get();
    if (tag->GetUpperTagName() != "X") continue;
    tag->GetAttrList().GetValue("src");
    if (!rename) {
      parser.SetTagOuterHTML("");
      continue;
    }
    if (parser.GotoClosingTag()) parser.ReplaceTag("</block_x>");
    parser.GotoTag(tag);
    tag->SetTagName("block_x");
    parser.ReplaceTag(tag);
  }
  EXPECT_EQ(parser.GetText().find("<x"), std::string::npos);
}

// Quadratic work on pages of this size would run into the time limit of the test.
TEST(HtmlParser, TakesLinearTimeOnHostilePages) {
  const auto nested = [](size_t n) { return Repeat("<x src=1>", n) + Repeat("</x>", n); };
  const struct {
    const char* row;
    std::string (*make)(size_t);
  } rows[] = {
      {"unclosed", [](size_t n) { return Repeat("<x>", n); }},
      {"one closing tag at the end", [](size_t n) { return Repeat("<x>", n) + "</x>"; }},
      {"nested", nested},
      {"in pairs", [](size_t n) { return Repeat("<x a='1'>t</x>", n); }},
      {"steps",
       [](size_t n) { return Repeat("<x><x></x><x>", n / 3) + Repeat("</x></x>", n / 3); }},
      {"instructions", [](size_t n) { return Repeat("<x><?p>", n / 2); }},
      {"marks", [](size_t n) { return Repeat("<x><?p>?", n / 2) + Repeat("</x>>", n / 2); }},
      {"only closing", [](size_t n) { return Repeat("<x></y>", n / 2); }},
      {"attributes", [](size_t n) { return "<x " + Repeat("a ", n) + ">"; }},
      {"open angles", [](size_t n) { return Repeat("<", n * 5) + "><x>"; }},
      {"comment", [](size_t n) { return "<x><!-- " + Repeat("-> ", n); }},
  };
  for (const auto& row : rows) {
    for (const bool rename : {false, true}) {
      SCOPED_TRACE(row.row);
      Neutralise(row.make(40000), rename);
    }
  }
}

TEST(HtmlText, SmallFunctions) {
  EXPECT_EQ(SubStr("abc", 2, 3), "bc");
  EXPECT_EQ(SubStr("abc", 3, 9) + SubStr("abc", 3, 2) + SubStr("abc", 4, 4), "c");
  EXPECT_EQ(SubStr("abc", -1, 1), "a");
  EXPECT_EQ(LineFeed(2) + LineFeed(-1), "\r\n\r\n");
  const std::string path = platform::WindowsPath(
      (std::filesystem::temp_directory_path() / "quarda-html-test.txt").string());
  WriteFileFromString(path, std::string_view("longer\0text", 11));
  WriteFileFromString(path, std::string_view("a\0b", 3));
  EXPECT_EQ(ReadFileToString(path), std::string("a\0b", 3));
  platform::RemoveFile(path);
  EXPECT_THROW(ReadFileToString(path), platform::EPlatformError);
}

}  // namespace
}  // namespace quarda
