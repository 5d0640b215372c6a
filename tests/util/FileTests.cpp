#include <TempFolder.h>
#include <Utils.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

namespace quarda {
namespace {

std::string Content(const std::string& path) {
  return platform::FileExists(path) ? platform::ReadWholeFile(path) : "(none)";
}

TEST(Files, SizeAndRecord) {
  const TTempFolder folder;
  folder.Write("b.txt", "four");
  folder.Write("a.txt", "six...");
  EXPECT_EQ(FileGetSize(folder.Path("*.txt")), 6);
  EXPECT_EQ(FileGetInfo(folder.Path("b.*")).name, "b.txt");
  EXPECT_EQ(FileGetSize(folder.Path("c.txt")), 0);
  EXPECT_EQ(FileGetInfo(folder.Path("none\\c.txt")).stamp, 0u);
  EXPECT_TRUE(GetTempDir().ends_with('\\'));
}

TEST(Files, Move) {
  const TTempFolder folder;
  const std::string target = folder.Path("deep\\er\\target");
  EXPECT_FALSE(MoveFile(folder.Path("missing"), target));
  EXPECT_FALSE(platform::FolderExists(folder.Path("deep")));
  EXPECT_FALSE(MoveFile("", target));
  EXPECT_FALSE(MoveFile(folder.Write("source", "new"), ""));
  EXPECT_TRUE(MoveFile(folder.Path("source"), target));
  EXPECT_EQ(Content(target), "new");
  EXPECT_FALSE(platform::FileExists(folder.Path("source")));

  std::filesystem::permissions(folder.Native() / "deep/er/target",
                               std::filesystem::perms::owner_read);
  EXPECT_TRUE(MoveFile(folder.Write("source", "newer"), target));
  EXPECT_EQ(Content(target), "newer");

  EXPECT_FALSE(MoveFile(target, folder.Path("deep\\er\\TARGET")));
  EXPECT_EQ(Content(target), "newer");

  // A folder in the way: neither rename nor copy can succeed, the source stays.
  EXPECT_FALSE(MoveFile(target, folder.Path("deep")));
  EXPECT_EQ(Content(target), "newer");
}

TEST(Files, Backup) {
  const TTempFolder folder;
  const std::string log = folder.Write("a.log", "1"), backup = folder.Write("a.bak", "0");
  BackupFile(log);
  EXPECT_EQ(Content(log) + Content(backup), "(none)1");
  RestoreBackupFile(log);
  EXPECT_EQ(Content(log) + Content(backup), "1(none)");
  RestoreBackupFile(log);
  EXPECT_EQ(Content(log), "1");
  folder.Write("a.bak", "2");
  RestoreBackupFile(log);
  EXPECT_EQ(Content(log) + Content(backup), "2(none)");
  BackupFile(log);
  BackupFile(log);
  EXPECT_EQ(Content(log) + Content(backup), "(none)(none)");
}

/// A program for the console: its DOS header, and at 64 the header of the system.
std::string Program() {
  std::string file(0x200, '\0');
  file.replace(0, 2, "MZ");
  file[0x3C] = 64;
  file.replace(64, 2, "PE");
  file[64 + 92] = 3;  // subsystem
  return file;
}

TEST(Files, KindOfProgram) {
  const TTempFolder folder;
  const struct {
    const char* name;
    std::string content;
    int32_t kind;
  } rows[] = {{"dos.exe", "MZ" + std::string(100, '\0'), 0},
              {"console.exe", Program(), 1},
              {"window.EXE", Program().replace(64 + 92, 1, "\2"), 2},
              {"mail.inp", Program(), 1},
              {"text.inp", "From: me", -1},
              {"x.txt", Program(), -1},
              {"x.bat", "echo", 0}};
  for (const auto& row : rows) {
    const std::string path = folder.Write(row.name, row.content);
    EXPECT_EQ(GetFileInfo(path), row.kind) << row.name;
    EXPECT_EQ(Content(path), row.content) << row.name;
  }
  EXPECT_EQ(GetFileInfo(folder.Path("none.exe")), -1);
  EXPECT_EQ(GetFileInfo(folder.Path("none.inp")), -1);

  folder.Write("taken.exe", "MZ");
  EXPECT_EQ(GetFileInfo(folder.Write("taken.inp", "MZ")), 0) << "not the other one's business";
  EXPECT_EQ(GetFileInfo(folder.Write("taken.inp", "text")), -1);
  EXPECT_EQ(Content(folder.Path("taken.exe")) + Content(folder.Path("taken.inp")), "MZtext");
}

}  // namespace
}  // namespace quarda
