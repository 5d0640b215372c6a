// The string list that plug-ins see.
#include <Errors.h>
#include <QDStringsAdapters.h>
#include <TempFolder.h>
#include <TestLists.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quarda {
namespace {

using TLines = std::vector<std::string>;

TLines LinesOf(IStringList& list) {
  TLines lines;
  for (int32_t i = 0; i < list.GetCount(); ++i) lines.push_back(list.GetStrings(i).Str());
  return lines;
}

TEST(StringListAdapter, SplitsAtSeparatorsAndJoins) {
  const struct {
    const char *text, *separator;
    TLines lines;
  } rows[] = {
      {"a,,b", ",", {"a", "", "b"}},
      {",a", ",", {"", "a"}},
      {"a,", ",", {"a"}},
      {"", ",", {}},
      {"a;b", "", {"a;b"}},
      {",,", ",", {"", ""}},
      {"a; b;c; ", "; ", {"a", "b;c"}},
      {"aaa", "aa", {"", "a"}},
  };
  for (const auto& row : rows) {
    const auto list = ListOf({"old"});
    list->SetSeparateText(row.text, row.separator);
    EXPECT_EQ(LinesOf(*list), row.lines) << row.text << " at " << row.separator;
  }
  EXPECT_EQ(ListOf({"a", "", "c"})->GetSeparateText(", "), "a, , c");
  EXPECT_EQ(ListOf({"x"})->GetSeparateText(", "), "x");
  EXPECT_EQ(ListOf({})->GetSeparateText(", "), "");
}

TEST(StringListAdapter, EditsLines) {
  const auto list = ListOf({"b", "key=1=2", "KEY=3"});
  list->Insert(0, "a");
  list->Insert(list->GetCount(), "z");
  list->SetStrings(1, "B");
  EXPECT_EQ(LinesOf(*list), (TLines{"a", "B", "key=1=2", "KEY=3", "z"}));
  EXPECT_EQ(list->IndexOf("b"), 1);
  EXPECT_EQ(list->IndexOf("none"), -1);
  EXPECT_EQ(list->IndexOfName("Key"), 2);
  EXPECT_EQ(list->IndexOfName("a"), -1);
  EXPECT_EQ(list->GetNames(2), "key");
  EXPECT_EQ(list->GetNames(0), "");
  EXPECT_EQ(list->GetValues("KEY"), "1=2");
  EXPECT_EQ(list->GetValues("absent"), "");
  list->SetValues("Key", "");
  list->SetValues("New", "x");
  list->SetValues("absent", "");
  list->Delete(0);
  EXPECT_EQ(list->GetText(), "B\r\nKEY=3\r\nz\r\nNew=x\r\n");
  EXPECT_EQ(list->Add("last"), 4);
  list->SetText("1\r2\n3\r\n\r\n4");
  EXPECT_EQ(LinesOf(*list), (TLines{"1", "2", "3", "", "4"}));
  list->Clear();
  EXPECT_EQ(list->GetCount(), 0);
}

TEST(StringListAdapter, ErasesBlankLinesAndTrimsNone) {
  const auto list = ListOf({"a", "  ", "", "\t", " b ", std::string("\0\x1F", 2)});
  list->EraseEmptyLines();
  EXPECT_EQ(LinesOf(*list), (TLines{"a", " b "}));
}

TEST(StringListAdapter, AnIndexOutsideIsAListError) {
  const auto list = ListOf({"a"});
  for (const int32_t index : {-1, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_THROW(list->GetStrings(index), EListError) << index;
    EXPECT_THROW(list->GetNames(index), EListError) << index;
    EXPECT_THROW(list->SetStrings(index, "x"), EListError) << index;
    EXPECT_THROW(list->Delete(index), EListError) << index;
  }
  EXPECT_THROW(list->Insert(-1, "x"), EListError);
  EXPECT_THROW(list->Insert(2, "x"), EListError);
  EXPECT_EQ(LinesOf(*list), TLines{"a"});
}

TEST(StringListAdapter, CopiesThroughTheTextFormOrLineByLine) {
  const auto source = ListOf({"one\r\ntwo"});
  const auto assigned = ListOf({"old"});
  assigned->Assign(source.Get());
  EXPECT_EQ(LinesOf(*assigned), (TLines{"one", "two"}));
  const auto copy = source->CopyList();
  EXPECT_EQ(copy->GetCount(), 2);
  copy->Clear();

  const auto appended = ListOf({"old"});
  appended->AddStrings(source.Get());
  appended->AddStrings(nullptr);
  appended->AddStrings(appended.Get());
  EXPECT_EQ(LinesOf(*appended), (TLines{"old", "one\r\ntwo", "old", "one\r\ntwo"}));
  EXPECT_EQ(IStringListToStrings(source.Get())->Line(0), "one\r\ntwo");
  EXPECT_EQ(IStringListToStrings(nullptr), nullptr);

  assigned->Assign(nullptr);
  EXPECT_EQ(assigned->GetCount(), 0);
  EXPECT_EQ(source->GetCount(), 1) << "copies share nothing with it";
}

// An observer that would be told once per line makes appending quadratic.
TEST(StringListAdapter, AppendingTellsTheObserverOnce) {
  struct TCounter : TStringListObserver {
    void StringListChanged() override { ++told; }
    int told = 0;
  } counter;
  TStringList lines;
  lines.SetObserver(&counter);
  StringListAdapter(lines)->AddStrings(ListOf({"a", "b", "c"}).Get());
  EXPECT_EQ(counter.told, 1);
}

TEST(StringListAdapter, BorrowsOrOwnsItsList) {
  TStringList lines;
  StringListAdapter(lines)->Add("kept");
  EXPECT_EQ(lines.Line(0), "kept");

  auto owned = std::make_unique<TStringList>();
  owned->Add("mine");
  const auto adapter = StringListAdapterOwned(std::move(owned));  // freed, or the leak is reported
  EXPECT_EQ(adapter->GetStrings(0), "mine");
}

TEST(StringListAdapter, LoadsAndSavesFiles) {
  const TTempFolder folder;
  const std::string path = folder.Path("lines.txt");
  ListOf({"a", "", "b\r\nc"})->SaveToFile(path);
  const auto loaded = ListOf({"old"});
  loaded->LoadFromFile(path);
  EXPECT_EQ(LinesOf(*loaded), (TLines{"a", "", "b", "c"}));
}

}  // namespace
}  // namespace quarda
