// Asks the resident engine for a scan, with the command line that `quarda` takes. Whatever is in
// the way (no such engine, one that refuses, dies or does not work any more, a command line that is
// too long) this process goes on as `quarda`: no mail stays without a scan.
//
// Two mutexes keep the requests apart. The engine's own one is free between the moment at which a
// command line is written and the one at which the engine takes it up; so those who ask have
// another one among themselves and keep it until they have their reply.
#include <CodePage.h>
#include <Files.h>
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <Program.h>
#include <SharedEngineRecord.h>
#include <TextUtils.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace quarda;

constexpr const char* kProgramName = QD_HOST_FILE;

struct TRequest {
  std::string line;  // the arguments as one line
  std::string file;  // the file to scan, in full; empty when there is none
};

bool IsSwitch(std::string_view argument) {
  return argument.starts_with('-') || argument.starts_with('/');
}

/// Whether the argument is the name of the file to scan, as the engine looks for it.
bool IsFileName(std::string_view argument) {
  return !argument.empty() && !IsSwitch(argument) && platform::FileExists(argument);
}

/// Nothing when the arguments cannot be given in one line, in which a quote may only stand around
/// an argument, or when they are not about a scan.
std::optional<TRequest> ReadArguments() {
  TRequest request;
  for (std::string argument : platform::ProgramArguments()) {
    if (argument.find_first_of(std::string_view("\"\0", 2)) != std::string::npos) {
      return std::nullopt;
    }
    const bool isProgram = request.line.empty();
    if (!isProgram && IsSwitch(argument) &&
        platform::SameAnsiText(std::string_view(argument).substr(1), kResidentSwitch)) {
      return std::nullopt;
    }
    if (!isProgram && request.file.empty() && IsFileName(Trim(argument))) {
      // The engine stands in another folder than this process.
      request.file = argument = platform::FullPath(Trim(argument));
    }
    request.line.append(isProgram ? "\"" : " \"").append(argument).append("\"");
  }
  if (request.line.size() > sizeof(SharedEngineRecord::RequestCommandLine)) return std::nullopt;
  return request;
}

/// The command line, where the engine looks for it.
class TSharedLine {
 public:
  explicit TSharedLine(SharedEngineRecord& record) : field_(record.RequestCommandLine) {}

  void Write(std::string_view line) {
    std::memset(field_, 0, kSize);
    std::memcpy(field_, line.data(), line.size());
  }
  bool Holds(std::string_view line) const {
    return std::memcmp(field_, line.data(), line.size()) == 0 &&
           (line.size() == kSize || field_[line.size()] == '\0');
  }

 private:
  static constexpr size_t kSize = sizeof(SharedEngineRecord::RequestCommandLine);
  char* field_;
};

bool Take(platform::TNamedMutex& mutex) {
  return mutex.Wait(kRequestWaitMilliseconds) != platform::TWaitResult::kTimeOut;
}

/// Whether the engine has the mutex, as it does while it scans.
bool IsAtWork(platform::TNamedMutex& mutex) {
  if (mutex.Wait(0) == platform::TWaitResult::kTimeOut) return true;
  mutex.Release();
  return false;
}

/// The verdict of the resident engine; nothing when it gave none, or gave it on another's line.
std::optional<int32_t> AskEngine(const TRequest& request) {
  const platform::TNamedMemory memory(kSharedMemoryName, 0, platform::kMemoryAll);
  if (memory.Address() == nullptr) return std::nullopt;  // no engine is there
  auto& record = *static_cast<SharedEngineRecord*>(memory.Address());
  if (!platform::IsCompanion(record.ProcessId, request.file)) return std::nullopt;
  platform::TNamedMutex clients(kClientMutexName);
  platform::TNamedMutex mutex(kRequestMutexName);
  if (!Take(clients) || !Take(mutex)) return std::nullopt;
  TSharedLine line(record);
  line.Write(request.line);
  mutex.Release();
  const std::optional<intptr_t> reply =
      platform::SendToWindow(kEngineWindowClass, kEngineWindowTitle, kScanRequest,
                             kRequestWaitMilliseconds, [&mutex] { return IsAtWork(mutex); });
  if (!reply || *reply == kRequestRefused || !line.Holds(request.line)) return std::nullopt;
  return static_cast<int32_t>(*reply);
}

std::optional<int32_t> AskEngine() {
  try {
    const std::optional<TRequest> request = ReadArguments();
    return request ? AskEngine(*request) : std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;  // whatever failed, the scan remains to be done
  }
}

}  // namespace

int main() {
  if (const std::optional<int32_t> verdict = AskEngine()) return *verdict;
  try {
    return platform::RunInPlace(kProgramName);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quarda-request: %s\n", error.what());
    return 0;  // without an engine no mail is blocked
  }
}
