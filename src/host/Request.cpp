// Asks the resident engine for a scan, with the command line that `quarda` takes. Whatever is in
// the way (no such engine, one that refuses or dies, a command line that is too long) this process
// runs the engine itself: no mail stays without a scan.
//
// Two mutexes keep the requests apart. The engine's own one is free between the moment at which a
// command line is written and the one at which the engine takes it up; so those who ask have
// another one among themselves and keep it until they have their reply.
#include <Files.h>
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <Program.h>
#include <SharedEngineRecord.h>

#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "Engine.h"

namespace {

using namespace quarda;

constexpr const char* kClientMutexName = "kestavon_Quarda_Client";

/// The engine stands in another folder than this process, so a file is named in full.
std::string ForEngine(const std::string& argument) {
  const bool isSwitch = argument.starts_with('-') || argument.starts_with('/');
  return !isSwitch && platform::FileExists(argument) ? platform::FullPath(argument) : argument;
}

/// The arguments as one line; nothing when an argument cannot be given in one. A quote may only
/// stand around an argument.
std::optional<std::string> CommandLine() {
  std::string line;
  for (const std::string& argument : platform::ProgramArguments()) {
    if (argument.find_first_of(std::string_view("\"\0", 2)) != std::string::npos) {
      return std::nullopt;
    }
    line.append(line.empty() ? "\"" : " \"").append(ForEngine(argument)).append("\"");
  }
  if (line.size() > sizeof(SharedEngineRecord::RequestCommandLine)) return std::nullopt;
  return line;
}

/// Puts the command line where the engine looks for it.
void LeaveCommandLine(SharedEngineRecord& record, std::string_view line) {
  std::memset(record.RequestCommandLine, 0, sizeof record.RequestCommandLine);
  std::memcpy(record.RequestCommandLine, line.data(), line.size());
}

bool Take(platform::TNamedMutex& mutex) {
  return mutex.Wait(kRequestWaitMilliseconds) != platform::TWaitResult::kTimeOut;
}

/// The verdict of the resident engine; nothing when it gave none.
std::optional<int32_t> AskEngine() {
  const std::optional<std::string> line = CommandLine();
  const platform::TNamedMemory memory(kSharedMemoryName, 0, platform::kMemoryAll);
  if (!line || memory.Address() == nullptr) return std::nullopt;  // no engine is there
  platform::TNamedMutex clients(kClientMutexName);
  platform::TNamedMutex request(kRequestMutexName);
  if (!Take(clients) || !Take(request)) return std::nullopt;
  LeaveCommandLine(*static_cast<SharedEngineRecord*>(memory.Address()), *line);
  request.Release();
  const std::optional<intptr_t> reply =
      platform::SendToWindow(kEngineWindowClass, kEngineWindowTitle, kScanRequest);
  if (!reply || *reply == kRequestRefused) return std::nullopt;
  return static_cast<int32_t>(*reply);
}

}  // namespace

int main() {
  try {
    if (const std::optional<int32_t> verdict = AskEngine()) return *verdict;
  } catch (const std::exception&) {
    // Whatever failed, the scan remains to be done.
  }
  return RunEngine("quarda-request");
}
