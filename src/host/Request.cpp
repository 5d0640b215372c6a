// Asks the resident engine for a scan, with the command line that `quarda` takes. Whatever is in
// the way (no such engine, one that refuses, dies or does not work any more, a command line that is
// too long or names no file) this process goes on as `quarda`: no mail stays without a scan.
//
// Only the engine knows what it finds under a name and what it may do. So this process tells in
// which folder it stands and by which circumstances it would scan; an engine whose own ones differ
// refuses, and a reply counts only from an engine that has noted that it compared them.
//
// Two mutexes keep the requests apart. The engine's own one is free between the moment at which a
// command line is written and the one at which the engine takes it up; so those who ask have
// another one among themselves and keep it until they have their reply.
#include <Circumstances.h>
#include <CodePage.h>
#include <Files.h>
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <Program.h>
#include <SharedRequest.h>
#include <TextUtils.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace quarda;

constexpr const char* kProgramName = QD_HOST_FILE;

// For the other clients, for the engine's mutex and for a first sign of work. Even together they
// are less than most servers give a scan.
constexpr uint32_t kWaitMilliseconds = 10'000;

bool IsSwitch(std::string_view argument) {
  return argument.starts_with('-') || argument.starts_with('/');
}

/// The file that the argument names, as the engine looks for it; empty when it names none.
std::string FileOf(std::string_view argument) {
  if (argument.empty() || IsSwitch(argument) || !platform::FileExists(argument)) return {};
  std::string file(argument);
  std::ranges::replace(file, '/', '\\');
  return file;
}

struct TArgumentLine {
  std::string line;  // the arguments as one line
  std::string file;  // the file to scan
};

/// Nothing when the arguments name no file, when they cannot be given in one line, in which a quote
/// may only stand around an argument, or when they are not about a scan.
std::optional<TArgumentLine> ReadArguments() {
  TArgumentLine read;
  for (const std::string& argument : platform::ProgramArguments()) {
    if (argument.find_first_of(std::string_view("\"\0", 2)) != std::string::npos) {
      return std::nullopt;
    }
    const bool isProgram = read.line.empty();
    if (!isProgram && IsSwitch(argument) &&
        platform::SameAnsiText(std::string_view(argument).substr(1), kResidentSwitch)) {
      return std::nullopt;
    }
    if (!isProgram && read.file.empty()) read.file = FileOf(Trim(argument));
    read.line.append(isProgram ? "\"" : " \"").append(argument).append("\"");
  }
  if (read.file.empty()) return std::nullopt;
  return read;
}

/// Nothing when it cannot be told what the engine has to compare, or when that is too long.
std::optional<TSharedRequest> MakeRequest(const TArgumentLine& arguments) {
  const std::string process =
      platform::ProcessCircumstances(platform::ProgramFolder() + "\\" + QD_ENGINE_FILE);
  if (process.empty()) return std::nullopt;
  const TSharedRequest request{arguments.line, platform::ScanCircumstances(arguments.file, process),
                               platform::CurrentFolder()};
  if (request.circumstances.empty() || !FitsRequest(request)) return std::nullopt;
  return request;
}

bool Take(platform::TNamedMutex& mutex) {
  return mutex.Wait(kWaitMilliseconds) != platform::TWaitResult::kTimeOut;
}

/// Whether the engine has the mutex, as it does while it scans.
bool IsAtWork(platform::TNamedMutex& mutex) {
  if (mutex.Wait(0) == platform::TWaitResult::kTimeOut) return true;
  mutex.Release();
  return false;
}

/// The verdict of the resident engine; nothing when it gave none, or gave it on another's request.
std::optional<int32_t> AskEngine(const TArgumentLine& arguments) {
  const platform::TNamedMemory memory(kSharedMemoryName, 0, platform::kMemoryAll);
  if (memory.Address() == nullptr) return std::nullopt;  // no engine is there
  auto& record = *static_cast<SharedEngineRecord*>(memory.Address());
  // The engine of another installation would refuse, but perhaps not soon.
  if (!platform::IsCompanion(record.ProcessId)) return std::nullopt;
  const std::optional<TSharedRequest> request = MakeRequest(arguments);
  if (!request) return std::nullopt;
  platform::TNamedMutex clients(kClientMutexName);
  platform::TNamedMutex mutex(kRequestMutexName);
  if (!Take(clients) || !Take(mutex)) return std::nullopt;
  WriteRequest(record, *request);
  mutex.Release();
  const std::optional<intptr_t> reply =
      platform::SendToWindow(kEngineWindowClass, kEngineWindowTitle, kScanRequest,
                             kWaitMilliseconds, [&mutex] { return IsAtWork(mutex); });
  if (!reply || *reply == kRequestRefused || !IsAcceptedRequest(record, *request)) {
    return std::nullopt;
  }
  return static_cast<int32_t>(*reply);
}

std::optional<int32_t> AskEngine() {
  try {
    // A scanner that the engine waits for would wait for the engine.
    if (platform::IsServing()) return std::nullopt;
    const std::optional<TArgumentLine> arguments = ReadArguments();
    return arguments ? AskEngine(*arguments) : std::nullopt;
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
