// What tells a scan by one process from a scan by another. The rows run in copies of this process,
// which only this system makes, and change what only it has, as limits and drives.
#include <Circumstances.h>
#include <Files.h>
#include <PlatformError.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

class CircumstancesOfScans : public TTestFolder {
 protected:
  std::string Seen() const {
    return ScanCircumstances(Path("in_1.inp"), ProcessCircumstances(Path("library")));
  }
  /// Whether a child process that has done this would scan the file in the same way.
  bool SameAfter(const std::function<void()>& change) const {
    const std::string before = Seen();
    EXPECT_EQ(before.size(), 16u);
    const pid_t child = ::fork();
    if (child == 0) {
      change();
      ::_exit(Seen() == before ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status) == 0;
  }
};

TEST_F(CircumstancesOfScans, DifferWithWhatDecidesAScan) {
  Put("other/in_1.inp");
  const std::string file = Native("in_1.inp").string();
  const std::string folder = Native("other").string();
  const struct {
    const char* row;
    bool same;
    std::function<void()> change;
  } kRows[] = {
      {"nothing", true, [] {}},
      {"another variable", true, [] { ::setenv("RECIPIENT", "a", 1); }},
      {"drives", false, [] { ::setenv("QUARDA_DRIVES", "E=/mnt", 1); }},
      {"no search path", false, [] { ::unsetenv("PATH"); }},
      {"current folder", false, [&] { static_cast<void>(::chdir(folder.c_str())); }},
      {"new content", true, [this] { Put("in_1.inp", "changed"); }},
      {"another file", false, [&] { ::rename((folder + "/in_1.inp").c_str(), file.c_str()); }},
      {"no file", false, [&] { ::unlink(file.c_str()); }},
      {"another library", false, [this] { Put("library", "other"); }},
      {"a longest file", false,
       [] {
         const rlimit limit{1 << 20, RLIM_INFINITY};
         ::setrlimit(RLIMIT_FSIZE, &limit);
       }},
  };
  for (const auto& row : kRows) {
    Put("in_1.inp");
    Put("other/in_1.inp");
    Put("library", "one");
    EXPECT_EQ(SameAfter(row.change), row.same) << row.row;
  }
  EXPECT_EQ(ScanCircumstances(Path("other"), "1"), "") << "a folder";
  EXPECT_EQ(ProcessCircumstances(Path("missing")), "");
}

TEST_F(CircumstancesOfScans, VisitComesBack) {
  Put("folder/file");
  const std::string before = CurrentFolder();
  {
    const TFolderVisit visit(Path("folder"));
    EXPECT_TRUE(FileExists("file"));
  }
  EXPECT_EQ(CurrentFolder(), before);
  EXPECT_THROW(TFolderVisit(Path("missing")), EPlatformError);
}

}  // namespace
}  // namespace quarda::platform
