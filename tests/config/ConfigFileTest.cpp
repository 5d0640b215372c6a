// INI files as objects: names, typed reads, what counts as a change, what reaches the disk.
#include <PlatformError.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "ConfigFolder.h"

namespace quarda {
namespace {

TEST(ConfigFile, ResolvesNamesAgainstTheBaseFolder) {
  const TConfigFolder folder;
  const std::string base = folder.Path();
  EXPECT_EQ(folder.Open("a.ini")->GetFileName().Str(), base + "\\a.ini");
  EXPECT_EQ(folder.Open("sub\\a.ini")->GetFileName().Str(), base + "\\sub\\a.ini");
  EXPECT_EQ(folder.Open("\\a.ini")->GetFileName().Str(), base + "\\a.ini");
  EXPECT_EQ(folder.Open("D:\\x\\a.ini")->GetFileName(), "D:\\x\\a.ini");
  EXPECT_EQ(folder.Open("")->GetFileName(), "");
  EXPECT_EQ(folder.app->AddRef(), 2) << "a file that died gave its reference back";
  folder.app->Release();
}

TEST(ConfigFile, ReadsNumbers) {
  const TConfigFolder folder;
  const auto file = folder.Open();
  const struct {
    const char* text;
    int32_t number;  // 77: the default
    bool truth;      // with the default true
  } rows[] = {
      {"0", 0, false},  {" 6 ", 6, true},        {"0X0", 0, false},
      {"", 77, true},   {"yes", 77, true},       {"0xFFFFFFFF", -1, true},
      {"1a", 77, true}, {"2147483648", 77, true}};  // the rest stands in the tests of the texts
  for (const auto& row : rows) {
    file->WriteString("s", "k", row.text);
    EXPECT_EQ(file->ReadInteger("s", "k", 77), row.number) << row.text;
    EXPECT_EQ(file->ReadBool("S", "K", true), row.truth) << row.text;
    EXPECT_EQ(file->ReadString("s", "k", "default"), row.text);
  }
  EXPECT_EQ(file->ReadString("s", "none", "default"), "default");
  EXPECT_FALSE(file->ReadBool("none", "k", false));
}

// The disk shows what counted as a change: a save writes only then.
TEST(ConfigFile, SavesOnlyRealChanges) {
  const struct {
    const char* row;
    std::function<void(IConfigFile&)> change;
    bool saved;
    const char* value;  // of k afterwards
  } rows[] = {
      {"same text", [](IConfigFile& f) { f.WriteString("s", "k", "7"); }, false, "7"},
      {"other letter case", [](IConfigFile& f) { f.WriteString("s", "t", "X"); }, true, "7"},
      {"new empty key", [](IConfigFile& f) { f.WriteString("s", "n", ""); }, true, "7"},
      {"same number", [](IConfigFile& f) { f.WriteInteger("s", "hex", 16); }, false, "7"},
      {"other number", [](IConfigFile& f) { f.WriteInteger("s", "k", 8); }, true, "8"},
      {"0 for a missing key", [](IConfigFile& f) { f.WriteInteger("s", "n", 0); }, true, "7"},
      {"0 for what is no number", [](IConfigFile& f) { f.WriteInteger("s", "t", 0); }, false, "7"},
      {"same truth", [](IConfigFile& f) { f.WriteBool("s", "k", true); }, false, "1"},
      {"other truth", [](IConfigFile& f) { f.WriteBool("s", "k", false); }, true, "0"},
      {"false for a missing key", [](IConfigFile& f) { f.WriteBool("s", "n", false); }, true, "7"},
      {"deleting nothing", [](IConfigFile& f) { f.DeleteValue("s", "none"); }, true, "7"},
      {"deleting no section", [](IConfigFile& f) { f.DeleteSection("none"); }, true, "7"},
      {"writing a section", [](IConfigFile& f) { f.WriteSection("z", nullptr); }, true, "7"},
      {"clearing", [](IConfigFile& f) { f.Clear(); }, true, "gone"},
      {"new lines",
       [](IConfigFile& f) {
         f.SetLines(ListOf({"[s]", "k=9"}).Get());
       },
       false, "9"},
      {"a change, then the same",
       [](IConfigFile& f) {
         f.WriteString("s", "k", "8");
         f.WriteString("s", "k", "7");
       },
       true, "7"},
      {"a change taken back",
       [](IConfigFile& f) {
         f.WriteString("s", "k", "8");
         f.DiscardChanges();
       },
       true, "7"},
      {"a change saved before",
       [](IConfigFile& f) {
         f.WriteString("s", "t", "y");
         f.Save();
         std::filesystem::remove(platform::NativePath(f.GetFileName()));
       },
       false, "7"},
  };
  const std::string content = "[s]\r\nk=7\r\nhex=0x10\r\nt=x\r\n\r\n";
  for (const auto& row : rows) {
    const TConfigFolder folder;
    folder.Write("a.ini", content);
    auto file = folder.Open();
    std::filesystem::remove(platform::NativePath(file->GetFileName()));
    if (std::string(row.row) == "a change taken back") folder.Write("a.ini", content);
    row.change(*file);
    EXPECT_EQ(file->ReadString("s", "k", "gone"), row.value) << row.row;
    std::filesystem::remove(platform::NativePath(file->GetFileName()));
    const std::string expected = file->GetLines()->GetText().Str();
    file.Reset();  // saves
    EXPECT_EQ(folder.Exists("a.ini"), row.saved) << row.row;
    EXPECT_EQ(folder.Read("a.ini"), row.saved ? expected : "") << row.row;
  }
}

TEST(ConfigFile, DeletesItsFile) {
  const TConfigFolder folder;
  folder.Write("a.ini", "[s]\nk=1\n");
  auto file = folder.Open();
  file->DeleteFile();
  EXPECT_FALSE(folder.Exists("a.ini"));
  EXPECT_FALSE(file->SectionExists("s"));
  file->DeleteFile();
  file.Reset();
  EXPECT_FALSE(folder.Exists("a.ini")) << "deleting leaves nothing to save";
}

TEST(ConfigFile, ListsSectionsAndLines) {
  const TConfigFolder folder;
  folder.Write("a.ini", "[b]\nline\nk=1\n[a]\n");
  const auto file = folder.Open();
  EXPECT_EQ(Joined(file->ReadSections()), "b|a|");
  EXPECT_EQ(Joined(file->ReadSection("B")), "line|k=1|");
  EXPECT_EQ(Joined(file->ReadSection("none")), "");
  EXPECT_EQ(Joined(file->GetLines()), "[b]|line|k=1||[a]||");
  EXPECT_TRUE(file->SectionExists("A") && file->ValueExists("b", "K"));
  EXPECT_FALSE(file->ValueExists("b", "line") || file->ValueExists("a", "k"));
}

TEST(ConfigFile, AFailedSaveIsReportedAndKeepsTheChange) {
  const TConfigFolder folder;
  const auto file = folder.Open("missing\\a.ini");
  file->WriteString("s", "k", "1");
  EXPECT_THROW(file->Save(), platform::EPlatformError);
  EXPECT_THROW(file->Save(), platform::EPlatformError);
}

}  // namespace
}  // namespace quarda
