// What the tests start as another process: its first argument says what it does. It always ends
// without closing anything, as a process does that is killed.
#include <Files.h>
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <Process.h>
#include <Program.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <map>
#include <thread>

namespace {

using namespace quarda::platform;
using TArguments = std::vector<std::string>;

std::string Joined(const TArguments& lines) {
  std::string text;
  for (const std::string& line : lines) text.append(line).append(1, '\0');
  return text;
}

/// Has the system start this program once more, to write the file after a while.
int StartWriter(const TArguments& arguments) {
  return std::system(("\"" + NativePath(arguments[0]) + "\" write " + arguments[2]).c_str());
}

/// Ends once the program that it started, bound to it, runs.
int StartBoundWriter(const TArguments& arguments) {
  new TProcess({"\"" + arguments[0] + "\" write " + arguments[2], {}, true, true});
  while (!FileExists(arguments[2] + ".started")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return 0;
}

int WriteLater(const TArguments& arguments) {
  ReplaceFileContent(arguments[2] + ".started", "");
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  ReplaceFileContent(arguments[2], "late");
  return 0;
}

int OpenObjects(const TArguments& arguments) {
  new TNamedMutex(arguments[2] + "x");
  new TNamedMemory(arguments[2], 10, kMemoryAll);
  return 0;
}

int OwnMutex(const TArguments& arguments) {
  return (new TNamedMutex(arguments[2]))->Wait(0) == TWaitResult::kOwned ? 0 : 1;
}

int OpenWindow(const TArguments& arguments) {
  new TMessageWindow(arguments[2], "t", [](TMessageWindow&, uint32_t) { return 0; });
  return 0;
}

/// Looks for the window and says nothing, then leaves a message.
int Post(const TArguments& arguments) {
  return MessageWindowExists(arguments[2], "t") && PostToWindow(arguments[2], "t", kUserMessage + 5)
             ? 0
             : 1;
}

int Show(const TArguments& arguments) {
  ReplaceFileContent(arguments[2], Joined(arguments));
  return 0;
}

int ShowFolder(const TArguments& arguments) {
  ReplaceFileContent(arguments[2], CurrentFolder());
  return 0;
}

int Exit(const TArguments& arguments) { return std::stoi(arguments[2]); }

}  // namespace

int main() {
  const TArguments arguments = ProgramArguments();
  const std::map<std::string, std::function<int(const TArguments&)>> kCommands = {
      {"show", Show},
      {"folder", ShowFolder},
      {"exit", Exit},
      {"start", StartWriter},
      {"bound", StartBoundWriter},
      {"write", WriteLater},
      {"objects", OpenObjects},
      {"mutex", OwnMutex},
      {"window", OpenWindow},
      {"post", Post}};
  std::_Exit(kCommands.at(arguments.at(1))(arguments));
}
