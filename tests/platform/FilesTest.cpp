#include <Clock.h>
#include <PlatformError.h>

#include <functional>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

using Files = TTestFolder;
using OpenFiles = TTestFolder;
using ReplacingFiles = TTestFolder;

void ExpectError(const std::string& row, const std::string& path,
                 const std::function<void()>& body) {
  try {
    body();
    ADD_FAILURE() << row << ": no error";
  } catch (const EPlatformError& error) {
    EXPECT_NE(error.Code(), 0u) << row;
    EXPECT_EQ(error.what(), ErrorText(error.Code()) + ": " + path) << row;
  }
}

TEST_F(Files, AreFoundByPathsOfEveryShape) {
  Put("sub/a.txt");
  Put("sub/deep/b");
  const std::string root = Path("");
  const struct {
    const char* row;
    std::string path;
    bool file, folder;
  } kRows[] = {{"file", Path("sub\\a.txt"), true, false},
               {"folder", Path("sub"), false, true},
               {"folder, closing slash", Path("sub\\"), false, true},
               {"file, closing slash", Path("sub\\a.txt\\"), false, false},
               {"forward slashes", Path("sub/deep/b"), true, false},
               {"doubled slashes", Path("sub\\\\deep\\\\b"), true, false},
               {"dots", Path(".\\sub\\.\\deep\\..\\a.txt"), true, false},
               {"back from nowhere", Path("nowhere\\..\\sub\\a.txt"), true, false},
               {"above the root", "C:\\..\\.." + root.substr(2) + "sub", false, true},
               {"missing", Path("sub\\c"), false, false},
               {"below a file", Path("sub\\a.txt\\c"), false, false},
               {"root", root.substr(0, 3), false, true},
               {"empty", "", false, false},
               {"NUL", Path(std::string("sub\0\\a.txt", 10)), false, false},
               {"NUL at the end", Path(std::string("sub\\a.txt\0", 10)), false, false},
               {"network", "\\\\no.such.server\\share\\a.txt", false, false},
               {"unknown drive", "Q:\\a.txt", false, false}};
  for (const auto& r : kRows) {
    EXPECT_EQ(FileExists(r.path), r.file) << r.row;
    EXPECT_EQ(FolderExists(r.path), r.folder) << r.row;
    EXPECT_EQ(FindFile(r.path).has_value(), (r.file || r.folder) && r.path.back() != '\\') << r.row;
  }
}

TEST_F(ReplacingFiles, ReplaceOnlyWhenCommitted) {
  Put("a", "old");
  {
    TReplacingFile file(Path("a"));
    file.Write("new", 3);
  }
  EXPECT_EQ(Content("a"), "old");
  EXPECT_EQ(CountFiles(), 1u);
  const std::string large(200'000, 'x');
  for (const TDurability durability : {TDurability::kNormal, TDurability::kFlushed}) {
    TReplacingFile file(Path("a"), durability);
    file.Write("new", 3);
    file.Write(large.data(), large.size());
    file.Write("end", 3);
    EXPECT_EQ(CountFiles(), 2u);
    file.Commit();
    EXPECT_EQ(Content("a"), "new" + large + "end");
    EXPECT_EQ(CountFiles(), 1u);
    ExpectError("after the end", Path("a"), [&] { file.Write("x", 1); });
  }
  ReplaceFileContent(Path("b"), "fresh");
  EXPECT_EQ(ReadWholeFile(Path("b")), "fresh");
  ExpectError("missing folder", Path("no\\b"), [&] { ReplaceFileContent(Path("no\\b"), ""); });
}

TEST_F(OpenFiles, ReadWriteAppendAndSeek) {
  {
    TFile file(Path("a"), TOpenMode::kCreate);
    file.Write("0123456789", 10);
    file.Seek(4);
    file.Write("xy", 2);
    file.SetSize(8);
    file.Flush();
    EXPECT_EQ(file.Size(), 8u);
  }
  TFile(Path("a"), TOpenMode::kAppend).Write("end", 3);
  EXPECT_EQ(Content("a"), "0123xy67end");
  TFile first(Path("a"), TOpenMode::kRead);
  TFile file(std::move(first));
  char buffer[16];
  file.Seek(6);
  EXPECT_EQ(std::string(buffer, file.Read(buffer, 16)), "67end");
  EXPECT_EQ(file.Read(buffer, 16), 0u);
  TFile(Path("a"), TOpenMode::kCreate);
  EXPECT_EQ(Content("a"), "");
}

TEST_F(OpenFiles, FailWithCodeTextAndPath) {
  Put("a");
  std::filesystem::create_directory(Native("folder"));
  const struct {
    const char* row;
    std::string path;
    TOpenMode mode;
  } kRows[] = {{"missing", Path("b"), TOpenMode::kRead},
               {"folder", Path("folder"), TOpenMode::kRead},
               {"folder to write", Path("folder"), TOpenMode::kCreate},
               {"taken", Path("a"), TOpenMode::kCreateNew},
               {"missing folder", Path("no\\b"), TOpenMode::kCreateNew},
               {"missing folder to append", Path("no\\b"), TOpenMode::kAppend},
               {"no path", "", TOpenMode::kCreate},
               {"network", "\\\\no.such.server\\share\\b", TOpenMode::kRead}};
  for (const auto& r : kRows) ExpectError(r.row, r.path, [&] { TFile(r.path, r.mode); });
  EXPECT_EQ(Content("a"), "old");
}

}  // namespace
}  // namespace quarda::platform
