// What only this backend has: the drive table, the search for another spelling, owners and modes,
// links, and the console as a device.
#include <CodePage.h>
#include <Console.h>
#include <PlatformError.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

class TEnvironment {
 public:
  TEnvironment(const char* name, const std::string& value) : name_(name) {
    ::setenv(name, value.c_str(), 1);
  }
  ~TEnvironment() { ::unsetenv(name_); }

 private:
  const char* name_;
};

class PosixFiles : public TTestFolder {
 protected:
  struct stat Stat(const std::string& name) const {
    struct stat info {};
    EXPECT_EQ(::stat(Native(name).c_str(), &info), 0) << name;
    return info;
  }
  void SetMode(const std::string& name, mode_t mode) const {
    EXPECT_EQ(::chmod(Native(name).c_str(), mode), 0);
  }
  /// The path with the letter case of its last `count` characters turned round.
  std::string Misspelled(std::string path, size_t count) const {
    for (size_t i = path.size() - count; i < path.size(); ++i) {
      path[i] = UpperAnsi(path[i]) == path[i] ? LowerAnsi(path[i]) : UpperAnsi(path[i]);
    }
    return path;
  }
};

/// Runs the body in a child without any privilege; true when it returned true there.
bool PassesUnprivileged(const std::function<bool()>& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) ::_exit(2);
    ::_exit(body() ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return status == 0;
}

TEST_F(PosixFiles, DrivesComeFromTheEnvironment) {
  Put("d/sub/a");
  Put("d2/b");
  const std::string root = Native("").string();
  const TEnvironment table(
      "QUARDA_DRIVES", "D=" + root + "d/;;x;F=relative;C=/nowhere;e=" + root + "d2;G=;D=/second");
  const struct {
    const char *path, *native;
  } kRows[] = {{"D:\\sub\\a", "d/sub/a"}, {"d:/sub/a", "d/sub/a"},
               {"D:sub\\a", "d/sub/a"},   {"D:\\..\\..\\sub\\a", "d/sub/a"},
               {"D:\\SUB\\A", "d/sub/a"}, {"E:\\b", "d2/b"}};
  for (const auto& r : kRows) {
    EXPECT_TRUE(FileExists(r.path)) << r.path;
    EXPECT_EQ(NativePath(r.path), root + r.native) << r.path;
  }
  for (const char* none : {"F:\\", "G:\\", "X:\\", "D:\\b"}) {
    EXPECT_FALSE(FileExists(none) || FolderExists(none)) << none;
  }
  EXPECT_TRUE(FolderExists("C:\\"));
  EXPECT_EQ(WindowsPath(root + "d/sub/a"), "D:\\sub\\a");
  EXPECT_EQ(WindowsPath(root + "d"), "D:\\");
  EXPECT_EQ(WindowsPath(root + "d2//b/"), "E:\\b");
  EXPECT_EQ(WindowsPath("//tmp/./x"), "C:\\tmp\\.\\x");
  EXPECT_EQ(WindowsPath("a/b"), "a\\b");
  EXPECT_EQ(FullPath("1:x"), CurrentFolder() + "\\1:x");
}

TEST_F(PosixFiles, AreFoundInAnySpelling) {
  Put("Folder/Sub/N\xE4me.txt", "1");
  const std::string path = Path("Folder\\Sub\\N\xE4me.txt");
  const std::string other = Misspelled(path, 19);
  ASSERT_NE(path, other);
  EXPECT_EQ(FindFile(other)->name, "N\xE4me.txt");
  EXPECT_EQ(FindFiles(Misspelled(Path("Folder\\Sub\\*.TXT"), 16)).size(), 1u);
  EXPECT_EQ(NativePath(other), Native("Folder/Sub/N\xE4me.txt"));
  EXPECT_EQ(ReadWholeFile(other), "1");
  TFile(other, TOpenMode::kAppend).Write("2", 1);
  EXPECT_EQ(ReadWholeFile(path), "12");
  ReplaceFileContent(other, "3");
  EXPECT_EQ(ReadWholeFile(path), "3");
  TFile(other, TOpenMode::kCreate).Write("4", 1);
  EXPECT_EQ(ReadWholeFile(path), "4");
  EXPECT_TRUE(DuplicateFile(path, Misspelled(Path("Folder\\new"), 10)));
  EXPECT_EQ(Content("Folder/NEW"), "4");
  EXPECT_TRUE(CreateFolders(Misspelled(Path("Folder\\Sub\\deep\\er"), 18)));
  EXPECT_TRUE(std::filesystem::is_directory(Native("Folder/Sub/DEEP/ER")));
  TFile(Misspelled(Path("Folder\\x"), 8), TOpenMode::kCreateNew);
  EXPECT_TRUE(RenameFile(other, Misspelled(Path("Folder\\y"), 8)));
  EXPECT_FALSE(RemoveExactFile(Misspelled(Path("Folder\\Y"), 8)));
  EXPECT_TRUE(RemoveFile(Misspelled(Path("Folder\\Y"), 8)));
  EXPECT_EQ(FindFiles(Path("Folder\\*")).size(), 3u);
  EXPECT_EQ(CountFiles(), 1u);

  Put("Two", "as written");
  Put("tWO", "first in byte order is Two");
  EXPECT_EQ(ReadWholeFile(Path("tWO")), "first in byte order is Two");
  EXPECT_EQ(ReadWholeFile(Path("two")), "as written");
  const std::string deep = Path(std::string(200'000, 'x') + "\\" + std::string(200'000, '\\'));
  std::string nested = "C:";
  for (int i = 0; i < 100'000; ++i) nested += "\\x";
  for (const std::string& hostile : {deep, nested}) {
    EXPECT_FALSE(FileExists(hostile) || CreateFolders(hostile) || DuplicateFile(hostile, hostile));
  }
}

TEST_F(PosixFiles, ReplacingKeepsModeOwnerAndLinks) {
  Put("a");
  SetMode("a", 0640);
  if (::geteuid() == 0) {
    EXPECT_EQ(::chown(Native("a").c_str(), 1234, 4321), 0);
  }
  const struct stat old = Stat("a");
  std::filesystem::create_directory(Native("links"));
  std::filesystem::create_symlink("../middle", Native("links/far"));
  std::filesystem::create_symlink(Native("a"), Native("middle"));
  ReplaceFileContent(Path("links\\far"), "new");
  const struct stat made = Stat("a");
  EXPECT_EQ(Content("a"), "new");
  EXPECT_NE(made.st_ino, old.st_ino);
  EXPECT_EQ(made.st_mode, old.st_mode);
  EXPECT_EQ(made.st_uid, old.st_uid);
  EXPECT_EQ(made.st_gid, old.st_gid);
  EXPECT_TRUE(std::filesystem::is_symlink(Native("links/far")));
  EXPECT_TRUE(std::filesystem::is_symlink(Native("middle")));

  std::filesystem::create_symlink("loop", Native("loop"));
  EXPECT_THROW(ReplaceFileContent(Path("loop"), "x"), EPlatformError);
  EXPECT_THROW(TFile(Path("loop"), TOpenMode::kCreateNew), EPlatformError);
  const mode_t mask = ::umask(027);
  ReplaceFileContent(Path("fresh"), "x");
  { TFile(Path("private"), TOpenMode::kCreateNew); }
  ::umask(mask);
  EXPECT_EQ(Stat("fresh").st_mode & 0777, 0640u);
  EXPECT_EQ(Stat("private").st_mode & 0777, 0600u);
}

TEST_F(PosixFiles, AreWrittenInPlaceWhereNothingCanBeCreated) {
  Put("closed/a", "the old content");
  Put("open/a", "the old content");
  for (const char* file : {"closed/a", "open/a"}) SetMode(file, 0666);
  SetMode("closed", 0555);
  SetMode("open", 0777);
  for (const std::string name : {"closed", "open"}) {
    if (name == "open" && ::geteuid() != 0) continue;  // needs a file of another user
    const struct stat old = Stat(name + "/a");
    const std::string path = Path(name + "\\a");
    EXPECT_TRUE(PassesUnprivileged([&] {
      { TReplacingFile(path).Write("lost", 4); }
      if (ReadWholeFile(path) != "the old content") return false;
      ReplaceFileContent(path, "new", TDurability::kFlushed);
      return true;
    })) << name;
    EXPECT_EQ(Content(name + "/a"), "new");
    EXPECT_EQ(Stat(name + "/a").st_ino, old.st_ino);
    EXPECT_EQ(Stat(name + "/a").st_uid, old.st_uid);
    EXPECT_EQ(FindFiles(Path(name + "\\*")).size(), 1u);
  }
  for (const char* file : {"closed\\new", "closed\\a"}) {  // missing, of another user
    SetMode("closed/a", 0644);
    if (FileExists(Path(file)) && ::geteuid() != 0) continue;
    EXPECT_TRUE(PassesUnprivileged([&] {
      try {
        TReplacingFile refused(Path(file));
      } catch (const EPlatformError& error) {
        return error.Code() == EACCES;
      }
      return false;
    })) << file;
  }
  SetMode("closed", 0755);
}

TEST_F(PosixFiles, OldTemporariesDisappear) {
  const char* stale = ".quarda-0123456789abcdef.tmp";
  const char* recent = ".quarda-0123456789abcdee.tmp";
  for (const char* name : {stale, recent, ".quarda-x.tmp"}) Put(name);
  for (const char* name : {stale, ".quarda-x.tmp"}) SetFileStamp(Path(name), 0x30A87081);
  for (int i = 0; i < 5000 && FileExists(Path(stale)); ++i) ReplaceFileContent(Path("a"), "x");
  EXPECT_FALSE(FileExists(Path(stale)));  // each replacement fails to look with 63 of 64
  EXPECT_EQ(CountFiles(), 3u);
}

TEST_F(PosixFiles, NoPartOfAnEntryStays) {
  Put("log", "old\n");
  SetMode("log", 0666);
  EXPECT_TRUE(PassesUnprivileged([&] {
    constexpr rlimit kSmall = {6, 6};
    ::signal(SIGXFSZ, SIG_IGN);
    TFile file(Path("log"), TOpenMode::kAppend);
    if (::setrlimit(RLIMIT_FSIZE, &kSmall) != 0) return false;
    try {
      file.Write("entry\n", 6);
    } catch (const EPlatformError& error) {
      return error.Code() == EFBIG;
    }
    return false;
  }));
  EXPECT_EQ(Content("log"), "old\n");
}

TEST_F(PosixFiles, HiddenOnesBeginWithADot) {
  Put(".a");
  EXPECT_EQ(FindFiles(Path("*")).front().attributes, kArchive | kHidden);
}

bool IsNullDevice(int file) {
  struct stat info;
  return ::fstat(file, &info) == 0 && S_ISCHR(info.st_mode) && info.st_rdev == makedev(1, 3);
}

TEST_F(PosixFiles, ConsoleTakesTheThreeDescriptors) {
  for (const bool closedBefore : {false, true}) {
    EXPECT_TRUE(PassesUnprivileged([&] {
      ::setsid();  // no controlling terminal any more
      if (closedBefore) {
        for (int file = 0; file < 3; ++file) ::close(file);
      }
      {
        const TConsoleHandles console;
        if (::open("/dev/null", O_RDONLY) < 3) return false;
      }
      for (int file = 0; file < 3; ++file) {
        if (!IsNullDevice(file) || ::fcntl(file, F_GETFD) != 0) return false;
      }
      return true;
    })) << closedBefore;
  }
}

TEST_F(PosixFiles, ConsoleIsTheControllingTerminal) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_TRUE(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
  const std::string terminal = ::ptsname(master);
  EXPECT_EQ(::chmod(terminal.c_str(), 0666), 0);
  const int other = ::open(terminal.c_str(), O_RDWR | O_NOCTTY);  // keeps what the child wrote
  EXPECT_TRUE(PassesUnprivileged([&] {
    ::setsid();
    const int input = ::open(terminal.c_str(), O_RDWR);  // becomes the controlling one
    if (input < 0 || ::dup2(input, 0) != 0) return false;
    {
      const TConsoleHandles console;
      if (!IsNullDevice(0) || !::isatty(1) || ::write(2, "hello", 5) != 5) return false;
      Beep();
    }
    Beep();  // into the null device
    return IsNullDevice(1) && IsNullDevice(2);
  }));
  char text[16] = {};
  ssize_t size = 0;
  for (int tries = 0; size < 6 && tries < 500; ++tries) {  // what was written comes by and by
    if (tries > 0) ::usleep(10'000);
    size += std::max<ssize_t>(::read(master, text + size, 6 - static_cast<size_t>(size)), 0);
  }
  EXPECT_STREQ(text, "hello\a");
  ::close(other);
  ::close(master);
}

TEST_F(PosixFiles, DecimalSeparatorIsTheUsersChoice) {
  Put("source",
      "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n");
  const std::string compile = "cd \"" + Native("").string() +
                              "\" && localedef -c -i source -f UTF-8 ./xx_XX >/dev/null 2>&1";
  const bool compiled = std::system(compile.c_str()) >= 0 && FolderExists(Path("xx_XX"));
  // Asked in children: the C library leaks a little when LOCPATH is set.
  const TEnvironment path("LOCPATH", Native("").string());
  const TEnvironment language("LANG", "xx_XX");
  if (compiled) {
    EXPECT_TRUE(PassesUnprivileged([] { return DecimalSeparator() == ','; }));
  }
  EXPECT_EQ(std::to_string(1.5), "1.500000");
  const TEnvironment numbers("LC_NUMERIC", "no such locale");
  EXPECT_TRUE(PassesUnprivileged([] { return DecimalSeparator() == '.'; }));
  const TEnvironment all("LC_ALL", "C");
  EXPECT_EQ(DecimalSeparator(), '.');
}

}  // namespace
}  // namespace quarda::platform
