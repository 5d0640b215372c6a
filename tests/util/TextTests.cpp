#include <Utils.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace quarda {
namespace {

using TTextFunction = std::string (*)(std::string_view);

struct TTextRow {
  TTextFunction function;
  std::string text;
  std::string expected;
};

TEST(Text, Converts) {
  using namespace std::string_literals;
  const TTextRow rows[] = {
      {ConvHtmlToUml, "M&uuml;ller &amp; S&ouml;hne", "M\xFCller & S\xF6hne"},
      {ConvHtmlToUml, "&euml;&#252;&;&LT;&nbspx;&amp", "&euml;&#252;&;&LT;&nbspx;&amp"},
      {ConvHtmlToUml, "&a;&x &lt;&amp;lt;", "\xE4&x <&lt;"},
      {ConvHtmlToUml, "&nb;&oc;&e;&ec;&l;&au;&qu;", " \xF4&e;\xEA&l;\xE4&qu;"},
      {ConvHtmlToUml, "&&Auml;&Ou;&szlig;&apos", "&\xC4\xD6\xDF&apos"},
      {ConvHtmlToUml, "&Uuml;&uuml;", "\xDC\xFC"},
      {ConvHtmlToUml, "\0&gt;\0"s, "\0>\0"s},
      {RemoveHtmlTags, "a<br>b<BR />c<br/>d", "a\r\nb\r\ncd"},
      {RemoveHtmlTags, "<a title='x>y'>t</a>u<b \"'>\">v", "tuv"},
      {RemoveHtmlTags, "1<!-- a > b -->2<x 'never closed>3", "1 b -->2"},
      {RemoveHtmlTags, "x<a <br> c>&lt;b&gt;<script>y</script>", "x<b>y"},
      {CTextToText, "\"a\\nb\"", "a\r\nb"},
      {CTextToText, "\\m\\\\n\\\"\\x\\", "\n\\n\"x\\"},
      {CTextToText, "\"", ""},
      {CTextToText, "\"open", "\"open"},
      {TextToCText, "a\"b\\\r\nc\n\rd\re\n", "\"a\\\"b\\\\\\nc\\nd\\me\""},
      {TextToCText, "x\r\n", "\"x\\n\""},
      {TextToCText, "\r\r\n\n\n", "\"\\m\\n\\m\""},
      {DelQuotes, "'a'", "a"},
      {DelQuotes, "'a\"", "'a\""},
      {DelQuotes, "\"", ""},
      {InvertString, "abc", "cba"},
      {ExtractFileExt, "C:\\a.b\\c", ""},
      {ExtractFileExt, "C:\\a.b\\c.d.EXE", ".EXE"},
      {ExtractFileExt, "x.y:z", ""},
      {ExtractFileExt, "x.", "."},
      {ExtractFileName, "C:x", "x"},
      {ExtractFileName, "a\\b\\", ""},
      {ExtractFileDir, "C:\\x", "C:\\"},
      {ExtractFileDir, "C:\\a\\x", "C:\\a"},
      {ExtractFileDir, "C:x", "C:"},
      {ExtractFileDir, "\\x", "\\"},
      {ExtractFileDir, "x", ""},
      {AddTrailingBackslash, "C:\\", "C:\\"},
      {AddTrailingBackslash, "C:\\a", "C:\\a\\"},
  };
  for (const TTextRow& row : rows) EXPECT_EQ(row.function(row.text), row.expected) << row.text;
}

TEST(Text, CountsAndPads) {
  EXPECT_EQ(Trim(std::string_view("\0 \t a b\r\n", 9)), "a b");
  EXPECT_EQ(Trim(" \n "), "");
  EXPECT_EQ(DelChars("aabcab", "ab"), "c");
  EXPECT_EQ(IntToNullStr(-5, 3), "-005");
  EXPECT_EQ(IntToNullStr(12345, 3), "12345");
  EXPECT_EQ(IntToNullStr(0, 0), "0");
  EXPECT_EQ(IntToNullStr(INT32_MIN, 12), "-002147483648");
  EXPECT_EQ(HexToInt("fFa0"), 0xFFA0u);
  EXPECT_EQ(HexToInt("FFFFFFFF") + HexToInt(""), 0xFFFFFFFFu);
  EXPECT_EQ(CountChar('a', std::string_view("aba\0a", 5)), 2u);
  EXPECT_EQ(RepeatChar('x', -1) + RepeatChar('y', 2), "yy");
  EXPECT_EQ(PosLastChar('a', "aba"), 3u);
  EXPECT_EQ(PosLastChar('c', "aba"), 0u);
  const std::string_view words[] = {"Off",
                                    "\xC4"
                                    "rger",
                                    "On"};
  EXPECT_EQ(CaseStringOf("\xE4RGER", words), 1);
  EXPECT_EQ(CaseStringOf("of", words), -1);
  EXPECT_EQ(ChangeFileExt("C:\\a.b\\mail", ".bak"), "C:\\a.b\\mail.bak");
  EXPECT_EQ(ChangeFileExt("mail.old.txt", ".bak"), "mail.old.bak");
  EXPECT_EQ(JoinPath("C:\\a\\", "\\b"), "C:\\a\\b");
  EXPECT_EQ(PathRoot("\\\\server\\share\\x\\y"), "\\\\server\\share");
  EXPECT_EQ(PathRoot("\\\\server\\share"), "\\\\server\\share");
  EXPECT_EQ(PathRoot("C:\\x"), "C:");
}

TEST(Text, ReadsNumbers) {
  const struct {
    const char* text;
    std::optional<int32_t> decimal;
    std::optional<int32_t> any;
  } rows[] = {
      {"42", 42, 42},
      {"  -2147483648", INT32_MIN, INT32_MIN},
      {"+7", 7, 7},
      {"2147483648", {}, {}},
      {"", {}, {}},
      {"-", {}, {}},
      {"+-1", {}, {}},
      {"7 ", {}, {}},
      {"0x1f", {}, 31},
      {"0XFFFFFFFF", {}, -1},
      {"0x100000000", {}, {}},
      {"0x", {}, {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(TryStrToInt(row.text), row.decimal) << row.text;
    EXPECT_EQ(TryStrToIntOrHex(row.text), row.any) << row.text;
  }
}

TEST(Wildcards, Match) {
  const struct {
    const char *text, *mask;
    bool exact, folded, inverted;
  } rows[] = {
      {"", "", true, true, true},           {"", "**", true, true, true},
      {"", "?", false, false, false},       {"a", "", false, false, false},
      {"abc", "a*", true, true, true},      {"abc", "A?C", false, true, true},
      {"ab", "*b", true, true, true},       {"abb", "*b", false, false, true},
      {"a*b", "**b", true, true, false},    {"a.b.exe", "*.exe", false, false, true},
      {"a?c", "*?c", true, true, true},     {"abc", "abc**", true, true, false},
      {"abcd", "abc", false, false, false}, {"\xC4pfel", "\xE4*", false, true, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(MatchStr(row.text, row.mask), row.exact) << row.text << " " << row.mask;
    EXPECT_EQ(MatchText(row.text, row.mask), row.folded) << row.text << " " << row.mask;
    EXPECT_EQ(MatchTextInvert(row.text, row.mask), row.inverted) << row.text << " " << row.mask;
  }
}

TEST(NumberList, FindsAndExpands) {
  const struct {
    const char* list;
    int32_t number;
    int found;  // -1: an error
    bool valid;
    std::vector<uint16_t> numbers;
  } rows[] = {
      {"1-3;5", 5, 1, true, {1, 2, 3, 5}},
      {"1-3,abc", 2, 1, false, {}},
      {"1-3,abc", 9, -1, false, {}},
      {"3-1", 2, -1, false, {}},
      {"70000", 1, -1, false, {}},
      {"65535-65535", 65535, 1, true, {65535}},
      {"1-3,2", 4, 0, true, {1, 2, 3, 2}},
      {"", 0, 0, true, {}},
      {"3,7,", 7, 1, true, {3, 7}},
      {",", 1, -1, false, {}},
      {"3,,7", 7, -1, false, {}},
      {"-5", -5, -1, false, {}},
      {"5-", 5, -1, false, {}},
      {"1-2-3", 1, -1, false, {}},
  };
  const auto answer = [](auto&& question) -> int {
    try {
      return question();
    } catch (const ENumberListError& error) {
      EXPECT_STREQ(error.what(), "Ung\xFCltige Nummernliste");
      return -1;
    }
  };
  for (const auto& row : rows) {
    EXPECT_EQ(answer([&] { return IsInNumberList(row.number, row.list); }), row.found) << row.list;
    std::vector<uint16_t> numbers;
    EXPECT_EQ(answer([&] { return (numbers = ParseNumberList(row.list), 0); }) == 0, row.valid)
        << row.list;
    EXPECT_EQ(numbers, row.numbers) << row.list;
  }
}

TEST(Html, BreaksLinesAndFindsAttributes) {
  std::string text = "a\r\nb\nc";
  LineBreakToBR(text);
  EXPECT_EQ(text, "a\r\n <br>b\n <br>c<br><hr><br>");
  const struct {
    const char *tag, *name, *value;
  } rows[] = {
      {"<a href=x>", "HREF", "x"},
      {"<a\thref='x y>' b>", "href", "'x y>'"},
      {"<a href='x\"y z' w\" b=c>", "b", ""},  // the inner quote took over and closes behind w
      {"<a checked b= c=\"\">", "b", "b"},
      {"<a checked b= c=\"\">", "checked", ""},
      {"<a b=c", "b", "c"},
      {"<a >b=c", "b", ""},
      {"<a b =c>", "b", ""},
      {"<a b =c>", "", "c"},
      {"", "b", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(GetHtmlTagAttr(row.tag, row.name), row.value) << row.tag;
}

TEST(Text, RecognisesMails) {
  const struct {
    const char* text;
    bool mail;
  } rows[] = {
      {"From: x\r\n\r\nbody", true},
      {"From: x\r\n", false},
      {"Hello\n\n", false},
      {"\nFrom: x\n\n", false},
      {"x-REPLY-TO: y\n\rz\r\r", true},
      {"Subject: x\r\n\nbody", false},  // one break: the run belongs to it
      {"Subject: x\n\n", true},
      {"a\n\nSubject: x\n\n", false},
      {"", false},
      {"From: x\n ", false},
  };
  for (const auto& row : rows) EXPECT_EQ(IsEmailFile(row.text), row.mail) << row.text;
}

TEST(Macros, ReplaceWhatTheCallbackKnows) {
  const auto replace = [](std::string_view text) {
    return ReplaceMacrosEx(text, 7, [](std::string& macro, int32_t data) {
      if (macro == "$A$") return macro = "changed, but unknown", false;
      if (macro != "$B$") return false;
      macro = "$B$" + std::to_string(data);
      return true;
    });
  };
  EXPECT_EQ(replace("x$A$y$B$"), "x$A$y$B$7");
  EXPECT_EQ(replace("$A$B$"), "$A$B$");
  EXPECT_EQ(replace("$B$$B$$"), "$B$7$B$7$");
  EXPECT_EQ(replace("$$B$"), "$$B$");
  EXPECT_EQ(replace("open $B"), "open $B");
}

// A million of whatever a function looks for: quadratic work would run into the time limit of the
// whole test program.
TEST(Text, StaysLinear) {
  const auto many = [](std::string_view piece) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += piece;
    return text;
  };
  const std::string as = many("a");
  const struct {
    const char* piece;
    std::function<void(const std::string&)> function;
  } rows[] = {
      {"*a", [&](auto& mask) { EXPECT_TRUE(MatchText(as, mask)); }},
      {"**", [&](auto& mask) { EXPECT_FALSE(MatchText(as, mask)); }},
      {"?", [&](auto& mask) { EXPECT_TRUE(MatchTextInvert(as, mask)); }},
      {"&", ConvHtmlToUml},
      {"&;", ConvHtmlToUml},
      {"&lt;", ConvHtmlToUml},
      {"<", RemoveHtmlTags},
      {"<'\">", RemoveHtmlTags},
      {"<br>", RemoveHtmlTags},
      {"\n", [](std::string text) { LineBreakToBR(text); }},
      {"a= ", [](auto& tag) { EXPECT_EQ(GetHtmlTagAttr(tag, "b"), ""); }},
      {"a\n", IsEmailFile},
      {"a\n\r", IsEmailFile},
      {"\\", CTextToText},
      {"\r\n", TextToCText},
      {"7,", [](auto& list) { EXPECT_FALSE(IsInNumberList(8, list)); }},
      {"1-2;", [](auto& list) { EXPECT_EQ(ParseNumberList(list).size(), 2000000u); }},
      {"$a$",
       [](auto& text) { ReplaceMacrosEx(text, [](std::string& m) { return m = "", true; }); }},
      {"$", [](auto& text) { ReplaceMacrosEx(text, [](std::string&) { return false; }); }},
      {"\r", [](auto& text) { TStringList().SetText(std::string_view(text)); }},
      {"/", [](auto& text) { TStringList().SetSeparateText(text, "/"); }},
  };
  for (const auto& row : rows) {
    row.function(many(row.piece));
  }
}

}  // namespace
}  // namespace quarda
