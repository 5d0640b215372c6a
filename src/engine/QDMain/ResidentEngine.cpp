#include "ResidentEngine.h"

#include <Circumstances.h>
#include <NamedObjects.h>
#include <PlatformError.h>
#include <Program.h>
#include <SharedMMFMem.h>
#include <SharedRequest.h>

#include <cmath>
#include <exception>
#include <optional>

#include "Application.h"
#include "Arguments.h"

namespace quarda {
namespace {

constexpr uint32_t kTimerMilliseconds = 1000;
constexpr int32_t kDefaultIdleMinutes = 2;
constexpr double kMinutesPerDay = 1440;

double Now(const TEngineEnvironment& environment) {
  return platform::ToDateTime(environment.clock->Now());
}

/// The record, in shared memory for as long as this lives.
class TSharedRecord {
 public:
  TSharedRecord()
      : block_(
            SharedAllocMem(kSharedMemoryName, sizeof(SharedEngineRecord), platform::kMemoryAll)) {}
  TSharedRecord(const TSharedRecord&) = delete;
  TSharedRecord& operator=(const TSharedRecord&) = delete;
  ~TSharedRecord() { SharedFreeMem(block_); }

  SharedEngineRecord* Get() const noexcept { return static_cast<SharedEngineRecord*>(block_); }

 private:
  void* block_;
};

bool WindowExists() noexcept {
  return platform::MessageWindowExists(kEngineWindowClass, kEngineWindowTitle);
}

}  // namespace

TEngineWindow::TEngineWindow(SharedEngineRecord& record, const TEngineEnvironment& environment)
    : record_(record),
      environment_(environment),
      circumstances_(platform::ProcessCircumstances(platform::ModulePath())) {}

intptr_t TEngineWindow::Handle(platform::TMessageWindow& window, uint32_t message) {
  switch (message) {
    case platform::kCreateMessage:
      window.StartTimer(kTimerMilliseconds);
      return 0;
    case platform::kDestroyMessage:
      window.StopTimer();
      return 0;
    case platform::kCloseMessage:
      window.PostQuit();
      return 0;
    case platform::kTimerMessage:
      if (IsIdle()) window.PostQuit();
      return 0;
    case kScanRequest:
      return ServeRequest();
    default:
      return 0;
  }
}

bool TEngineWindow::IsIdle() const {
  return std::abs(Now(environment_) - record_.LastActivity) > record_.IdleMinutes / kMinutesPerDay;
}

/// Whether this process finds and may do what the one who asks would, for which it must stand in
/// his folder.
bool TEngineWindow::ScansAsAsked(const TSharedRequest& request) const {
  const AnsiString file = MakeRef<TArguments>(request.line)->GetFilename();
  return platform::ScanCircumstances(file, circumstances_) == request.circumstances;
}

int32_t TEngineWindow::ServeRequest(uint32_t wait) {
  int32_t reply = kRequestRefused;
  try {
    platform::TNamedMutex mutex(kRequestMutexName);
    if (!mutex.Existed() || mutex.Wait(wait) != platform::TWaitResult::kOwned) return reply;
    const TSharedRequest request = ReadRequest(record_);
    std::optional<platform::TFolderVisit> visit;
    if (!request.circumstances.empty()) {
      visit.emplace(request.folder);
      if (!ScansAsAsked(request)) return reply;
      AcceptRequest(record_);
    }
    reply = RunCommandLine(request.line, environment_);
    ++record_.RequestCount;
    record_.LastActivity = Now(environment_);
  } catch (const std::exception&) {
    // Without the mutex nothing is scanned; whoever asked hears that from the reply.
  }
  return reply;
}

namespace {

/// Serves requests, if this process gets the record and the window.
void Serve(const TEngineEnvironment& environment) {
  const TSharedRecord record;
  if (record.Get() == nullptr) return;
  TEngineWindow engine(*record.Get(), environment);
  try {
    // The window and its socket go when this returns, before the block does; nobody can tell.
    platform::TMessageWindow window(kEngineWindowClass, kEngineWindowTitle,
                                    [&engine](platform::TMessageWindow& self, uint32_t message) {
                                      return engine.Handle(self, message);
                                    });
    // Of two that start at once only one gets the window, and the record is that one's alone. No
    // message is handled before Run.
    record.Get()->ProcessId = platform::ProcessId();
    record.Get()->LastActivity = Now(environment);
    record.Get()->IdleMinutes = kDefaultIdleMinutes;
    platform::MarkAsServing();
    window.Run();
  } catch (const platform::EPlatformError&) {
    // Another engine was faster, or the system allows no window: nobody is served here.
    if (!WindowExists()) LogOutsideScans(environment);
  }
}

}  // namespace

void RunResidentEngine(bool quit, const TEngineEnvironment& environment) {
  if (WindowExists()) {
    if (quit) {
      platform::PostToWindow(kEngineWindowClass, kEngineWindowTitle, platform::kCloseMessage);
    }
    return;
  }
  try {
    Serve(environment);
  } catch (const std::exception&) {
    LogOutsideScans(environment);  // whoever starts an engine rarely sees what the host prints
    throw;
  }
}

}  // namespace quarda
