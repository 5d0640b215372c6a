// Starting shell scripts, which the tests write: signals, descriptors, zombies, and arguments that
// a shell would read meaning into.
#include <Files.h>
#include <PlatformError.h>
#include <Process.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace quarda::platform {
namespace {

using std::chrono::milliseconds;

class ProcessTest : public testing::Test {
 protected:
  ProcessTest() {
    std::string name = (std::filesystem::temp_directory_path() / "quarda process-XXXXXX").string();
    native_ = mkdtemp(name.data());
    folder_ = WindowsPath(native_.string());
  }
  ~ProcessTest() override { std::filesystem::remove_all(native_); }

  /// Writes a script and returns its Windows path in quotes.
  std::string Script(const std::string& name, const std::string& body, bool executable = true) {
    const std::filesystem::path path = native_ / name;
    std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
    if (executable) std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return '"' + folder_ + '\\' + name + '"';
  }
  std::string Output(const std::string& name) const {
    std::ifstream file(native_ / name);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
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

  std::filesystem::path native_;
  std::string folder_;
};

TEST_F(ProcessTest, RunsScriptsAndProgramsOfTheSearchPath) {
  EXPECT_EQ(Run("true"), 0u);
  EXPECT_EQ(Run(Script("five.sh", "exit 5")), 5u);
  EXPECT_EQ(Run("\"/bin/sh\" -c \"exit 7\""), 7u);
}

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
  EXPECT_EQ(Output("out"), "a b|$HOME|;|`id`|*|--file=/tmp|/tmp/x|D:\\tmp|/S|C:x||");
}

TEST_F(ProcessTest, FindsTheProgramFromHere) {
  Script("five.sh", "exit 5");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(native_);
  EXPECT_EQ(Run(".\\five.sh", "C:\\tmp"), 5u);
  EXPECT_EQ(StartError("five.sh"), static_cast<uint32_t>(ENOENT)) << "a bare name";
  std::filesystem::current_path(before);
  EXPECT_EQ(StartError("five.sh", folder_), static_cast<uint32_t>(ENOENT)) << "a bare name";
}

TEST_F(ProcessTest, ReportsWhatCannotBeStarted) {
  EXPECT_EQ(StartError("\"" + folder_ + "\\missing.exe\" x"), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(StartError("no-such-program-anywhere"), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(StartError(Script("plain.sh", "exit 0", false)), static_cast<uint32_t>(EACCES));
  EXPECT_EQ(StartError("\"" + folder_ + "\""), static_cast<uint32_t>(EACCES));
  EXPECT_NE(StartError(""), 0u);
  EXPECT_NE(StartError("\"\""), 0u);
  EXPECT_NE(StartError(std::string("true \0x", 7)), 0u);
  EXPECT_NE(StartError("true " + std::string(1 << 20, 'x')), 0u);
  const std::filesystem::path text = native_ / "text";
  std::ofstream(text) << "no program";
  std::filesystem::permissions(text, std::filesystem::perms::owner_all);
  EXPECT_EQ(StartError("\"" + folder_ + "\\text\""), static_cast<uint32_t>(ENOEXEC));
}

TEST_F(ProcessTest, LeavesNoDescriptorToTheProgram) {
  const TFile open(folder_ + "\\held", TOpenMode::kCreate);
  const int leaked = ::dup(2);  // one that somebody opened without care
  EXPECT_EQ(Run(Script("list.sh",
                       "ls /proc/self/fd | grep -vc '^[0-3]$' > \"$(dirname \"$0\")/out\"; true")),
            0u);
  ::close(leaked);
  EXPECT_EQ(Output("out"), "0\n");
}

TEST_F(ProcessTest, SurvivesMuchOutputAndClosedHandles) {
  EXPECT_EQ(
      Run("\"/bin/sh\" -c \"head -c 5000000 /dev/zero > /dev/null; exec >&- 2>&- <&-; exit 3\""),
      3u);
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
