// Addresses of header values, and the small text functions beside them.
#include <Addresses.h>
#include <StringList.h>
#include <TempFolder.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quarda {
namespace {

const struct {
  const char* row;
  std::string_view text;
  std::string_view address;
} kAddresses[] = {
    {"bracket inside quotes", "\"a <J>\" <j@b>", "j@b"},
    {"comment behind", "j@b (J)", "j@b"},
    {"no address", "John", ""},
    {"blanks inside brackets", "J < j@b\t>", "j@b"},
    {"bracket not closed", "J <j@b", "j@b"},
    {"anything in brackets", "<>", ""},
    {"bracket behind an at sign", "j@b <x@y>", "j@b"},
    {"at sign inside quotes", "\"x@y\" j@b", "j@b"},
    {"escaped quote does not close", "\"a\\\" x@y\" <j@b>", "j@b"},
    {"quote never closed", "\"j@b", ""},
    {"quote ends the address", "\"J\"j@b\"x", "j@b"},
    {"at sign alone", "a @ b", "@"},
    {"tab does not end it but is trimmed", "\tj@b\t", "j@b"},
};

TEST(Addresses, BareAddress) {
  for (const auto& r : kAddresses) EXPECT_EQ(HeaderEmailToAddress(r.text), r.address) << r.row;
}

const struct {
  const char* row;
  std::string_view value;
  std::vector<std::string_view> entries;
} kLists[] = {
    {"empty", "", {}},
    {"one comma", ",", {""}},
    {"ends in a comma", "a@b,", {"a@b"}},
    {"blank behind the last comma", "a@b, ", {"a@b", ""}},
    {"quoted comma, empty entry",
     "a@b, \"Doe, J\" <c@d>,,e@f",
     {"a@b", "\"Doe, J\" <c@d>", "", "e@f"}},
    {"comma and quote in brackets", "<a,\"b>,c", {"<a,\"b>", "c"}},
    {"bracket not closed", "a,<b,c,", {"a", "<b,c,"}},
    {"quote not closed", "a,\"b,", {"a", "\"b,"}},
    {"escaped quote", "\\\"a,b", {"\\\"a", "b"}},
};

TEST(Addresses, ListIsTakenApart) {
  for (const auto& r : kLists) {
    TStringList list;
    list.Add("kept");
    ExtractAddressList(r.value, list);
    ASSERT_EQ(list.Count(), r.entries.size() + 1) << r.row;
    for (size_t i = 0; i < r.entries.size(); ++i) EXPECT_EQ(list[i + 1], r.entries[i]) << r.row;
  }
}

TEST(Addresses, ListIsPutTogether) {
  TStringList list;
  EXPECT_EQ(MakeAddressList(list), "");
  for (const char* line : {"", " a@b ", "\t", "c@d"}) list.Add(line);
  EXPECT_EQ(MakeAddressList(list), "a@b\r\n\tc@d");
}

// Each would take minutes if a step looked at the rest of the value again.
TEST(Addresses, HugeValues) {
  std::string folded;
  for (int i = 0; i < 400000; ++i) folded += "\"a, b\" <c@d>,\r\n\t";
  TStringList list;
  ExtractAddressList(folded, list);
  EXPECT_EQ(list.Count(), 400001u);
  ExtractAddressList(std::string(4000000, '<'), list);
  EXPECT_EQ(list.Count(), 400002u);
  EXPECT_EQ(HeaderEmailToAddress(std::string(4000000, '"') + "@").size(), 1u);
}

TEST(HeaderTexts, NameValuePair) {
  const struct {
    std::string_view text, name, value;
    bool isPair;
  } rows[] = {{" a ", " a ", "", false},
              {" a = b=c ", "a", "b=c", true},
              {"=", "", "", true},
              {"", "", "", false}};
  for (const auto& r : rows) {
    std::string name = "old";
    std::string value(r.text);
    EXPECT_EQ(ExtractNameValuePair(value, name, value), r.isPair) << r.text;  // a view of a target
    EXPECT_EQ(name, r.name) << r.text;
    EXPECT_EQ(value, r.value) << r.text;
  }
}

TEST(HeaderTexts, RemoveQuotes) {
  const struct {
    std::string_view text, bare;
  } rows[] = {{"\"a\"", "a"}, {"'a'", "a"},    {"\"a'", "\"a'"}, {"\"", "\""},
              {"\"\"", ""},   {"a\"", "a\""},  {"", ""},         {"\"\"a\"\"", "\"a\""},
              {"aba", "aba"}, {" 'a'", " 'a'"}};
  for (const auto& r : rows) EXPECT_EQ(RemoveQuotes(r.text), r.bare) << r.text;
}

TEST(HeaderTexts, PosAnyChar) {
  const TCharSet set(std::string_view(";\xFF\0", 3));
  EXPECT_EQ(PosAnyChar("ab;c\xFF", set), 3u);
  EXPECT_EQ(PosAnyChar("\xFF", set), 1u);
  EXPECT_EQ(PosAnyChar(std::string_view("a\0", 2), set), 2u);
  EXPECT_EQ(PosAnyChar("abc", set), 0u);
  EXPECT_EQ(PosAnyChar("", set), 0u);
}

TEST(HeaderTexts, FileSize) {
  const TTempFolder folder;
  EXPECT_EQ(GetFileSize(folder.Write("five.txt", "12345")), 5);
  const std::string huge = folder.Write("huge.bin", "");
  std::filesystem::resize_file(folder.Native() / "huge.bin", (uintmax_t{1} << 32) + 7);
  EXPECT_EQ(GetFileSize(huge), INT32_MAX);
  EXPECT_EQ(GetFileSize(folder.Path("none.txt")), 0);
  EXPECT_EQ(GetFileSize(folder.Path()), 0) << "a folder is no file";
}

}  // namespace
}  // namespace quarda
