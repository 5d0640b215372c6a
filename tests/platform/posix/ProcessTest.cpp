// Starting shell scripts, which the tests write: signals, descriptors, zombies, and arguments that
// a shell would read meaning into. None of that is there on Windows.
#include <PlatformError.h>
#include <Process.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

using std::chrono::milliseconds;

class ProcessTest : public TTestFolder {
 protected:
  /// Writes a script and returns its Windows path in quotes.
  std::string Script(const std::string& name, const std::string& body) const {
    Put("my scripts/" + name, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(Native("my scripts/" + name), std::filesystem::perms::owner_all);
    return '"' + Path("my scripts\\" + name) + '"';
  }
  /// The exit code of a command that is waited for without limit.
  static uint32_t Run(const std::string& commandLine, const std::string& folder = {}) {
    TProcess process({commandLine, folder, false});
    EXPECT_TRUE(process.Wait(std::nullopt));
    return process.ExitCode();
  }
  static uint32_t StartError(const std::string& commandLine, const std::string& folder = {}) {
    try {
      TProcess process({commandLine, folder, false});
    } catch (const EPlatformError& error) {
      return error.Code();
    }
    return 0;
  }
};

TEST_F(ProcessTest, TellsACrashFromAnExitCode) {
  const struct {
    const char* program;
    uint32_t exitCode;
    bool crashed;
  } kRows[] = {{"sh -c \"kill -11 $$\"", 11, true},
               {"sh -c \"kill -9 $$\"", 9, true},
               {"sh -c \"exit 11\"", 11, false},
               {"sleep 30", 0, false}};
  for (const auto& row : kRows) {
    TProcess process({row.program, {}, false});
    process.Wait(milliseconds(row.crashed || row.exitCode != 0 ? 20000 : 50));
    process.Terminate(0);  // changes nothing for one that ended by itself
    EXPECT_EQ(process.ExitCode(), row.exitCode) << row.program;
    EXPECT_EQ(process.Crashed(), row.crashed) << row.program;
  }
}

TEST_F(ProcessTest, NeverTakesAnUnknownEndForACleanOne) {
  const auto old = ::signal(SIGCHLD, SIG_IGN);  // as a server may have left it
  EXPECT_EQ(Run("sh -c \"exit 5\""), 5u);
  EXPECT_EQ(::signal(SIGCHLD, old), SIG_IGN);
  TProcess process({"true", {}, false});
  while (::waitpid(-1, nullptr, 0) > 0) continue;  // a plug-in that takes every end
  EXPECT_TRUE(process.Wait(std::nullopt));
  EXPECT_TRUE(process.Crashed());
}

TEST_F(ProcessTest, HandsArgumentsOverWithoutAShell) {
  const std::string script = Script("show.sh", "printf '%s|' \"$@\" > \"$(dirname \"$0\")/out\"");
  EXPECT_EQ(
      Run(script + " \"a b\" $HOME ; \"`id`\" * --file=C:\\tmp C:\\tmp\\x D:\\tmp /S C:x \"\""),
      0u);
  EXPECT_EQ(Content("my scripts/out"), "a b|$HOME|;|`id`|*|--file=/tmp|/tmp/x|D:\\tmp|/S|C:x||");
}

TEST_F(ProcessTest, FindsTheProgramFromHere) {
  Script("five.sh", "exit 5");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(Native("my scripts"));
  EXPECT_EQ(Run(".\\five.sh", "C:\\tmp"), 5u);
  EXPECT_EQ(StartError("five.sh"), static_cast<uint32_t>(ENOENT)) << "a bare name";
  std::filesystem::current_path(before);
  EXPECT_EQ(StartError("five.sh", Path("my scripts")), static_cast<uint32_t>(ENOENT))
      << "a bare name";
}

TEST_F(ProcessTest, ReportsWhatCannotBeStarted) {
  Put("plain.sh", "exit 0");
  Put("text", "no program");
  std::filesystem::permissions(Native("text"), std::filesystem::perms::owner_all);
  EXPECT_EQ(StartError("\"" + Path("missing.exe") + "\" x"), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(StartError("no-such-program-anywhere"), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(StartError(Path("plain.sh")), static_cast<uint32_t>(EACCES));
  EXPECT_EQ(StartError("\"" + Path("") + "\""), static_cast<uint32_t>(EACCES));
  EXPECT_EQ(StartError(Path("text")), static_cast<uint32_t>(ENOEXEC));
}

TEST_F(ProcessTest, LeavesNoDescriptorToTheProgram) {
  const TFile open(Path("held"), TOpenMode::kCreate);
  const int leaked = ::dup(2);  // one that somebody opened without care
  EXPECT_EQ(Run(Script("list.sh",
                       "ls /proc/self/fd | grep -vc '^[0-3]$' > \"$(dirname \"$0\")/out\"; true")),
            0u);
  ::close(leaked);
  EXPECT_EQ(Content("my scripts/out"), "0\n");
}

TEST_F(ProcessTest, LeavesAPluginsOwnChildToThePlugin) {
  FILE* const child = ::popen("exit 3", "r");
  Run("sleep 0.1");
  Run("true");
  EXPECT_EQ(::pclose(child), 3 << 8);
}

TEST_F(ProcessTest, ForgottenProgramsLeaveNoZombie) {
  for (int i = 0; i < 3; ++i) TProcess({"true", {}, false});
  Run("sleep 0.2");
  Run("true");
  EXPECT_EQ(
      Run("\"/bin/sh\" -c \"ps -o stat= --ppid " + std::to_string(::getpid()) + " | grep -q Z\""),
      1u);
}

}  // namespace
}  // namespace quarda::platform
