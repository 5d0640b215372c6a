// Message windows: how a process of the user asks another one that has no name but the class and
// title of its window.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace quarda::platform {

/// Messages of the system; those of the program begin with kUserMessage.
enum TWindowMessage : uint32_t {
  kCreateMessage = 0x0001,
  kDestroyMessage = 0x0002,
  kCloseMessage = 0x0010,
  kTimerMessage = 0x0113,
  kUserMessage = 0x0400,
};

/// A window that is never shown and takes messages one after another.
class TMessageWindow {
 public:
  /// Handles one message; the result is the reply to a sender that waits for one.
  using THandler = std::function<intptr_t(TMessageWindow& window, uint32_t message)>;

  /// Creates the window and tells the handler so. Raises EPlatformError, also when another process
  /// has just created the same one.
  TMessageWindow(std::string_view className, std::string_view title, THandler handler);
  TMessageWindow(const TMessageWindow&) = delete;
  TMessageWindow& operator=(const TMessageWindow&) = delete;
  ~TMessageWindow();

  /// From now on a timer message comes at every interval in which nothing else is handled.
  void StartTimer(uint32_t milliseconds) noexcept;
  void StopTimer() noexcept;
  /// Makes `Run` return when the present message is done.
  void PostQuit() noexcept;
  /// Handles messages until it is told to quit.
  void Run();

 private:
  struct TState;
  std::unique_ptr<TState> state_;
};

/// Whether some process of the user has such a window.
bool MessageWindowExists(std::string_view className, std::string_view title) noexcept;
/// Leaves a message for the window and does not wait. False when there is no such window.
bool PostToWindow(std::string_view className, std::string_view title, uint32_t message) noexcept;
/// Waits until the window has handled the message. Nothing when there is no such window, or when
/// its process ended meanwhile. With an `interval` (milliseconds) `goesOn` is asked each time that
/// it went by; after a no the sender gives up, and a message that nobody took up is dropped.
std::optional<intptr_t> SendToWindow(std::string_view className, std::string_view title,
                                     uint32_t message, uint32_t interval = 0,
                                     const std::function<bool()>& goesOn = {}) noexcept;

}  // namespace quarda::platform
