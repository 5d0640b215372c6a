// What the resident engine and those that ask it agree on: names, message, and the layout of the
// memory they share. Little-endian, as the processors that the engine runs on.
#pragma once

#include <MessageWindow.h>

#include <cstddef>
#include <cstdint>

namespace quarda {

inline constexpr const char* kEngineWindowClass = "kestavon_Quarda_Engine";
inline constexpr const char* kEngineWindowTitle = "kestavon Quarda Engine";
inline constexpr const char* kSharedMemoryName = "kestavon_Quarda_SharedMem";
inline constexpr const char* kRequestMutexName = "kestavon_Quarda_Mutex";
/// Keeps those who ask apart; the engine itself does not know it.
inline constexpr const char* kClientMutexName = "kestavon_Quarda_Client";
/// The switch that starts the resident engine.
inline constexpr const char* kResidentSwitch = "daemon";

/// Asks for a scan of the command line in the record; the reply is its exit code, or
/// `kRequestRefused`.
inline constexpr uint32_t kScanRequest = platform::kUserMessage + 1;
inline constexpr int32_t kRequestRefused = -1;

/// How long the engine waits for the request mutex.
inline constexpr uint32_t kRequestWaitMilliseconds = 30'000;

struct SharedEngineRecord {
  uint32_t ProcessId;             ///< of the resident engine
  int32_t IdleMinutes;            ///< it ends after so much time without a request
  double LastActivity;            ///< days since 1899-12-30, local time
  int32_t RequestCount;           ///< served so far
  char RequestCommandLine[1025];  ///< ended by a NUL, or by the end of the field; see SharedRequest
  char Reserved[3];
};
static_assert(sizeof(SharedEngineRecord) == 1048);
static_assert(offsetof(SharedEngineRecord, LastActivity) == 8);
static_assert(offsetof(SharedEngineRecord, RequestCommandLine) == 20);
static_assert(offsetof(SharedEngineRecord, Reserved) == 1045);

}  // namespace quarda
