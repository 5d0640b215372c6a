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

std::string Names(const std::vector<TFileRecord>& records) {
  std::string names;
  for (const TFileRecord& record : records) names += record.name + ' ';
  return names;
}

TEST_F(Files, AreListedInOrder) {
  for (const char* name : {"b.TXT", "A.txt", "c", "sub/x", "_.txt", "a b.txt"}) Put(name, "1234");
  const struct {
    const char *pattern, *names;
  } kRows[] = {{"*.*", "_.txt a b.txt A.txt b.TXT c sub "},
               {"*", "_.txt a b.txt A.txt b.TXT c sub "},
               {"?.txt", "_.txt A.txt b.TXT "},
               {"*.INP", ""},
               {"SUB*", "sub "},
               {"sub\\*", "x "},
               {"sub", "sub "},
               {"sub\\", ""},
               {".", ""},
               {"sub\\..", ""},
               {"no\\*", ""},
               {"c\\*", ""}};
  for (const auto& r : kRows) {
    EXPECT_EQ(Names(FindFiles(Path(r.pattern))), r.names) << r.pattern;
    const auto first = FindFile(Path(r.pattern));
    EXPECT_TRUE(std::string(r.names).starts_with(first ? first->name + ' ' : "")) << r.pattern;
    EXPECT_EQ(first.has_value(), *r.names != '\0') << r.pattern;
  }
  Put("And/y");
  EXPECT_EQ(FindFolders(Path("")), (std::vector<std::string>{"And", "sub"}));
  EXPECT_TRUE(FindFolders(Path("c")).empty() && FindFolders(Path("no")).empty());
  const auto file = FindFile(Path("c"));
  const auto folder = FindFile(Path("s?b"));
  EXPECT_EQ(file->size, 4u);
  EXPECT_EQ(file->attributes, kArchive);
  EXPECT_EQ(folder->size, 0u);
  EXPECT_EQ(folder->attributes, kFolder);
}

TEST_F(Files, ReadOnlyIsAnAttribute) {
  Put("a");
  std::filesystem::permissions(Native("a"), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  EXPECT_EQ(FindFile(Path("a"))->attributes, kArchive | kReadOnly);
  ExpectError("read-only", Path("a"), [&] { ReplaceFileContent(Path("a"), "new"); });
  EXPECT_TRUE(ClearAttributes(Path("a")));
  EXPECT_EQ(FindFile(Path("a"))->attributes, kArchive);
  ReplaceFileContent(Path("a"), "new");
  EXPECT_FALSE(ClearAttributes(Path("b")));
}

TEST_F(Files, AreCreatedRenamedCopiedAndRemoved) {
  Put("file", "content");
  Put("taken", "other");
  EXPECT_TRUE(CreateFolders(Path("x\\y/z\\")));
  EXPECT_TRUE(CreateFolders(Path("x\\y")));
  EXPECT_FALSE(CreateFolders(Path("file\\z")));
  EXPECT_FALSE(CreateFolders(Path("file")));
  EXPECT_FALSE(CreateFolders(""));
  EXPECT_FALSE(CreateFolders("Q:\\x"));

  EXPECT_FALSE(RenameFile(Path("file"), Path("taken")));
  EXPECT_FALSE(RenameFile(Path("file"), Path("no\\file")));
  EXPECT_FALSE(RenameFile(Path("missing"), Path("new")));
  EXPECT_TRUE(RenameFile(Path("file"), Path("x\\y\\z\\new")));
  EXPECT_EQ(Content("x/y/z/new") + Content("taken"), "contentother");

  EXPECT_TRUE(SetFileStamp(Path("x\\y\\z\\new"), 0x30A87081));
  EXPECT_TRUE(DuplicateFile(Path("x\\y\\z\\new"), Path("taken")));
  EXPECT_TRUE(DuplicateFile(Path("x\\y\\z\\new"), Path("fresh")));
  EXPECT_EQ(Content("x/y/z/new") + Content("taken") + Content("fresh"), "contentcontentcontent");
  EXPECT_EQ(FileStamp(Path("fresh")), 0x30A87081u);
  EXPECT_FALSE(DuplicateFile(Path("taken"), Path("taken")));
  EXPECT_FALSE(DuplicateFile(Path("missing"), Path("taken")));
  EXPECT_FALSE(DuplicateFile(Path("x"), Path("taken")));
  EXPECT_FALSE(DuplicateFile(Path("taken"), Path("x")));
  EXPECT_EQ(Content("taken"), "content");

  EXPECT_TRUE(RemoveFile(Path("taken")));
  EXPECT_FALSE(RemoveFile(Path("taken")));
  EXPECT_FALSE(RemoveFile(Path("x")));
  EXPECT_EQ(Names(FindFiles(Path("*"))), "fresh x ");
}

TEST_F(Files, PathsBecomeAbsolute) {
  const std::string current = CurrentFolder();
  const struct {
    std::string path, full;
  } kRows[] = {{"C:\\a\\.\\b\\..\\c", "C:\\a\\c"},
               {"c:/a//b/", "c:\\a\\b\\"},
               {"C:\\..\\..\\a", "C:\\a"},
               {"C:\\", "C:\\"},
               {"Q:\\a\\..", "Q:\\"},
               {"\\\\server\\share\\..\\a", "\\\\server\\share\\a"},
               {"a\\..\\b", current + "\\b"},
               {"..\\x", current.substr(0, current.rfind('\\')) + "\\x"},
               {"", ""}};
  for (const auto& r : kRows) EXPECT_EQ(FullPath(r.path), r.full) << r.path;
  const std::string temporary = TempFolder();
  EXPECT_TRUE(temporary.ends_with('\\') && FolderExists(temporary)) << temporary;
  Put("a");
  EXPECT_EQ(WindowsPath(NativePath(Path("a"))), Path("a"));
  EXPECT_EQ(std::filesystem::path(NativePath(Path("a"))), Native("a"));
  EXPECT_TRUE(FileExists(ShortPath(Path("a"))));
  EXPECT_EQ(ShortPath(Path("b")), "");
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
  for (const TDurability durability :
       {TDurability::kPassing, TDurability::kNormal, TDurability::kFlushed}) {
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
  RewriteFileContent(Path("a"), "new content");
  EXPECT_EQ(Content("a"), "new content");
  EXPECT_TRUE(SetFileStamp(Path("a"), 0x21'0000));
  RewriteFileContent(Path("a"), "new content");
  EXPECT_EQ(Content("a"), "new content");
  EXPECT_NE(FileStamp(Path("a")), 0x21'0000);
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
