#include <MiniHtmlParser.h>
#include <gtest/gtest.h>

#include <string>

namespace quarda {
namespace {

TAttrList List(std::string_view text) {
  TAttrList list;
  list.SetAsString(std::string(text));
  return list;
}

TEST(AttrList, ReadsAndWrites) {
  const struct {
    const char* text;
    int32_t count;
    const char *written, *proper;  // written anew, on one line before it was read
  } rows[] = {
      {"", 0, "", ""},
      {"checked", 1, "checked", "checked"},
      {"a='x y' b=c", 2, "a='x y' b=c", "a='x y' b=c"},
      {"a='x'b=c", 2, "a='x' b=c", "a='x'b=c"},
      {"a = b", 3, "a  b", "a = b"},
      {"a\n b", 2, "a\r\n b", "a b"},
      {"a \r\n\n  b", 2, "a\r\n\r\n  b", "a b"},
      {"a='1\r\n2' b", 2, "a='1\n2' b", "a='1 2' b"},
      {"a\tb c\rd", 2, "a\tb cd", "a\tb cd"},
      {"\"q\"'r's 'open", 3, "\"q\" 'r' s ", "\"q\"'r's 'open"},
  };
  for (const auto& row : rows) {
    TAttrList list = List(row.text);
    EXPECT_EQ(list.GetAsString(), row.text);
    EXPECT_EQ(list.GetAsProperString(), row.proper);
    EXPECT_EQ(list.GetCount(), row.count) << row.text;
    // The white space behind the last attribute counts only while another one follows it.
    const std::string written = row.written;
    EXPECT_EQ(list.GetAsString(), written.substr(0, written.find_last_not_of(' ') + 1)) << row.text;
  }
}

TEST(AttrList, Changes) {
  const struct {
    const char* row;
    void (*change)(TAttrList&);
    const char* expected;
  } rows[] = {
      {"value", [](TAttrList& l) { l.SetValue("B", "clsid:1"); }, "a=1  b=clsid:1 c"},
      {"quoted value", [](TAttrList& l) { l.SetValues(0, "x y"); }, "a=\"x y\" b='2'   c"},
      {"new value", [](TAttrList& l) { l.SetValue("d", "it's"); }, "a=1  b='2'   c d=\"it's\""},
      {"name", [](TAttrList& l) { l.SetNames(1, "z"); }, "a=1  z='2' c"},
      {"no name", [](TAttrList& l) { l.SetNames(1, ""); }, "a=1  c"},
      {"attribute", [](TAttrList& l) { l.SetAttrString("A", "y=q w"); }, "y=q w b='2'   c"},
      {"no attribute", [](TAttrList& l) { l.SetAttrStrings(2, ""); }, "a=1  b='2'  "},
      {"new attribute", [](TAttrList& l) { l.SetAttrString("x", "k='v'"); },
       "a=1  b='2'   c k='v'"},
      {"nothing new", [](TAttrList& l) { l.SetAttrString("x", ""); }, "a=1  b='2'   c"},
      {"outside", [](TAttrList& l) { l.SetValues(3, "x"), l.SetNames(-1, ""); }, "a=1  b='2'   c"},
      {"delete", [](TAttrList& l) { l.DeleteName("B"), l.DeleteName("x"); }, "a=1  c"},
  };
  for (const auto& row : rows) {
    TAttrList list = List("a=1  b='2'   c");
    row.change(list);
    EXPECT_EQ(list.GetAsString(), row.expected) << row.row;
  }
  TAttrList list = List("href=1 \r\n\n  HREF=2");
  EXPECT_TRUE(list.HasAttr(1));
  EXPECT_EQ(list.GetAsProperString(), "href=1 HREF=2");
  EXPECT_EQ(list.FindAttribute("Href", false), 0);
  EXPECT_EQ(list.FindAttribute("HREF", true), 1);
  EXPECT_EQ(list.FindAttribute("Href", true), -1);
  EXPECT_FALSE(list.Delete(-1) || list.Delete(2) || list.HasAttr(2) || list.HasAttrName("x"));
  EXPECT_TRUE(list.HasAttrName("hReF"));
  EXPECT_EQ(list.GetValue("x") + list.GetAttrString("x") + list.GetNames(2), "");
}

// The list answers the first questions by looking at every attribute, later ones by order.
TEST(AttrList, FindsTheFirstAmongMany) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += "n" + std::to_string(i % 200) + " ";
  TAttrList list = List(text);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(list.FindAttribute("N" + std::to_string(i), false), i);
  EXPECT_EQ(list.FindAttribute("n200", false), -1);
  list.Delete(99);
  EXPECT_EQ(list.FindAttribute("n99", false), 298);
  list.SetNames(0, "N99");
  EXPECT_EQ(list.FindAttribute("n99", false), 0);
}

TEST(AttrList, QuotesWhatNeedsIt) {
  const struct {
    const char *value, *quoted;
  } rows[] = {{"abc", "abc"},       {"a b", "\"a b\""}, {"a\"b c'", "'a\"b c''"},
              {"it's", "\"it's\""}, {"'x y", "'x y"},   {"\"", "\""},
              {"a!", "\"a!\""},     {"", ""},           {"a>\"", "\"a>\"\""}};
  for (const auto& row : rows) EXPECT_EQ(NeedQuotations(row.value), row.quoted);
}

TEST(Tag, KeepsItsNameAndPlace) {
  EXPECT_EQ(ParseTag("<a\r\n\r\nb>", 1, 2)->GetAsString(), "<a b>");
  EXPECT_EQ(ParseTag("<br />", 1, 2)->GetAsString(), "<br />");
  const TAttrListGuardRef tag = ParseTag("</b >", 3, 7);
  EXPECT_EQ(tag->GetUpperTagName(), "/B");
  tag->SetTagName(" \n");
  EXPECT_EQ(tag->GetTagName(), "/b");
  tag->SetTagName(" i ");
  EXPECT_EQ(tag->GetAsString(), "<i>");
  EXPECT_EQ(tag->GetStart() * 10 + tag->GetEnd(), 37);
}

}  // namespace
}  // namespace quarda
