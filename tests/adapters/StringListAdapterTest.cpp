// The string list that plug-ins see.
#include <Errors.h>
#include <QDStringsAdapters.h>
#include <TempFolder.h>
#include <TestLists.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quarda {
namespace {

// What the list itself does is tried out in tests/util; here each operation reaches its own one.
TEST(StringListAdapter, EditsLines) {
  const auto list = ListOf({"b", "key=1=2", "KEY=3"});
  list->Insert(0, "a");
  list->Insert(list->GetCount(), "z");
  list->SetStrings(1, "B");
  EXPECT_EQ(Joined(list), "a|B|key=1=2|KEY=3|z|");
  EXPECT_EQ(list->IndexOf("b") * 10 + list->IndexOf("none"), 9);
  EXPECT_EQ(list->IndexOfName("Key") * 10 + list->IndexOfName("a"), 19);
  EXPECT_EQ(list->GetNames(2), "key");
  EXPECT_EQ(list->GetNames(0), "");
  EXPECT_EQ(list->GetValues("KEY"), "1=2");
  list->SetValues("Key", "");
  list->SetValues("New", "x");
  list->Delete(0);
  EXPECT_EQ(list->GetText(), "B\r\nKEY=3\r\nz\r\nNew=x\r\n");
  EXPECT_EQ(list->GetSeparateText(", "), "B, KEY=3, z, New=x");
  list->SetText("1\r2\n3\r\n\r\n4");
  EXPECT_EQ(list->Add(" \t"), 5);
  list->EraseEmptyLines();
  EXPECT_EQ(Joined(list), "1|2|3|4|");
  list->SetSeparateText("a; b;c; ", "; ");
  EXPECT_EQ(Joined(list), "a|b;c|");
  list->Clear();
  EXPECT_EQ(list->GetCount(), 0);
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
  EXPECT_EQ(Joined(list), "a|");
}

TEST(StringListAdapter, CopiesThroughTheTextFormOrLineByLine) {
  const auto source = ListOf({"one\r\ntwo"});
  const auto assigned = ListOf({"old"});
  assigned->Assign(source.Get());
  EXPECT_EQ(Joined(assigned), "one|two|");
  const auto copy = source->CopyList();
  EXPECT_EQ(copy->GetCount(), 2);
  copy->Clear();

  const auto appended = ListOf({"old"});
  appended->AddStrings(source.Get());
  appended->AddStrings(nullptr);
  appended->AddStrings(appended.Get());
  EXPECT_EQ(Joined(appended), "old|one\r\ntwo|old|one\r\ntwo|");
  EXPECT_EQ(IStringListToStrings(source.Get())->Line(0), "one\r\ntwo");
  EXPECT_EQ(IStringListToStrings(nullptr), nullptr);

  assigned->Assign(nullptr);
  EXPECT_EQ(assigned->GetCount(), 0);
  EXPECT_EQ(source->GetCount(), 1) << "copies share nothing with it";
}

TEST(StringListAdapter, BorrowsOrOwnsItsList) {
  struct TCounter : TStringListObserver {
    void StringListChanged() override { ++told; }
    int told = 0;
  } counter;
  TStringList lines;
  lines.SetObserver(&counter);
  StringListAdapter(lines)->AddStrings(ListOf({"a", "b", "c"}).Get());
  EXPECT_EQ(lines.Line(2), "c");
  EXPECT_EQ(counter.told, 1) << "once for each line would make appending quadratic";

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
  EXPECT_EQ(Joined(loaded), "a||b|c|");
}

}  // namespace
}  // namespace quarda
