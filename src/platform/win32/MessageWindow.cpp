// A window without size that is never shown. What keeps it the only one of its name is a mutex: two
// processes may look for it at the same moment, and neither would find it.
//
// A sender that may give up before its message is taken up cannot call the message back. It sends a
// ticket along, the number of an event that it keeps open as long as it waits; the window drops a
// message whose ticket is no longer there.
#include "MessageWindow.h"

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <thread>

#include "PlatformError.h"
#include "Quiet.h"
#include "System.h"

namespace quarda::platform {

using namespace win32;

namespace {

constexpr UINT_PTR kTimer = 1;
constexpr LPARAM kTicketMark = 0x51440000;  // in the number of a ticket, which others do not send

std::string GuardName(std::string_view className, std::string_view title) {
  std::string name = "Quarda window ";
  name.append(className).append(", ").append(title);
  std::ranges::replace(name, '\\', '/');  // would name a space of its own
  return name;
}

HWND Find(std::string_view className, std::string_view title) {
  return ::FindWindowA(std::string(className).c_str(), std::string(title).c_str());
}

/// Whether the message is one for the handler: the timer's is only when it is our own.
bool IsForHandler(UINT message, WPARAM argument) noexcept {
  if (message == kTimerMessage) return argument == kTimer;
  return message == kCloseMessage || (message >= kUserMessage && message < WM_APP);
}

std::string TicketName(WPARAM process, LPARAM number) {
  return "Quarda ticket " + std::to_string(process) + "-" + std::to_string(number);
}

/// Whether the sender still waits; one without a ticket always does.
bool SenderWaits(UINT message, WPARAM process, LPARAM number) {
  if (message < kUserMessage || (number & ~LPARAM{0xFFFF}) != kTicketMark) return true;
  const THandle ticket(::OpenEventA(SYNCHRONIZE, FALSE, TicketName(process, number).c_str()));
  return static_cast<bool>(ticket);
}

/// What a waiting sender and the thread that sends for it have in common. The thread may stay
/// behind: it then ends with the reply, or with the process.
struct TSending {
  HWND window = nullptr;
  UINT message = 0;
  LPARAM number = 0;
  THandle replied;
  std::optional<intptr_t> reply;
};

std::optional<intptr_t> SendAndWait(HWND window, UINT message, WPARAM first,
                                    LPARAM second) noexcept {
  constexpr UINT kForEver = 0x7FFFFFFF;
  constexpr UINT kFailWithTheProcess = 0x20;  // SMTO_ERRORONEXIT
  DWORD_PTR reply = 0;
  if (::SendMessageTimeoutA(window, message, first, second, kFailWithTheProcess, kForEver,
                            &reply) == 0) {
    return std::nullopt;
  }
  return static_cast<intptr_t>(reply);
}

std::optional<intptr_t> SendWithTicket(HWND window, UINT message, uint32_t interval,
                                       const std::function<bool()>& goesOn) {
  static std::atomic<LPARAM> count = 0;
  const auto sending = std::make_shared<TSending>();
  sending->window = window;
  sending->message = message;
  sending->number = kTicketMark | (++count & 0xFFFF);
  sending->replied = THandle(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
  const WPARAM process = ::GetCurrentProcessId();
  const THandle ticket(
      ::CreateEventA(nullptr, TRUE, FALSE, TicketName(process, sending->number).c_str()));
  if (!sending->replied || !ticket) return std::nullopt;
  std::thread([sending, process] {
    sending->reply = SendAndWait(sending->window, sending->message, process, sending->number);
    ::SetEvent(sending->replied.Get());
  }).detach();
  while (::WaitForSingleObject(sending->replied.Get(), interval) != WAIT_OBJECT_0) {
    if (!(goesOn && goesOn())) return std::nullopt;
  }
  return sending->reply;
}

}  // namespace

struct TMessageWindow::TState {
  TState(std::string_view name, std::string_view title, THandler wanted);
  TState(const TState&) = delete;
  TState& operator=(const TState&) = delete;
  ~TState();

  /// Handles a message; what the handler raises is kept for `Run`, because nothing may be raised
  /// through the system.
  LRESULT Handle(UINT message, WPARAM first, LPARAM second) noexcept;
  static LRESULT CALLBACK Receive(HWND handle, UINT message, WPARAM first, LPARAM second);

  std::string className;
  THandle guard;
  THandler handler;
  TMessageWindow* owner = nullptr;  // set while messages are taken
  HWND window = nullptr;
  bool quits = false;
  std::exception_ptr raised;
};

TMessageWindow::TState::TState(std::string_view name, std::string_view title, THandler wanted)
    : className(name), handler(std::move(wanted)) {
  guard = THandle(::CreateMutexA(nullptr, FALSE, GuardName(name, title).c_str()));
  const DWORD code = ::GetLastError();
  if (!guard || code == ERROR_ALREADY_EXISTS) throw EPlatformError(code, title);
  WNDCLASSA kind{};
  kind.lpfnWndProc = Receive;
  kind.hInstance = ThisModule();
  kind.lpszClassName = className.c_str();
  if (::RegisterClassA(&kind) == 0 && ::GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
    throw EPlatformError(LastErrorCode(), className);
  }
  window = ::CreateWindowExA(WS_EX_TOOLWINDOW, className.c_str(), std::string(title).c_str(),
                             WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, kind.hInstance, nullptr);
  if (window == nullptr) throw EPlatformError(LastErrorCode(), title);
  ::SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

TMessageWindow::TState::~TState() {
  ::DestroyWindow(window);
  ::UnregisterClassA(className.c_str(), ThisModule());  // kept while another window needs it
}

LRESULT TMessageWindow::TState::Handle(UINT message, WPARAM first, LPARAM second) noexcept {
  try {
    return SenderWaits(message, first, second) ? handler(*owner, message) : 0;
  } catch (...) {
    raised = std::current_exception();
    owner->PostQuit();
    return 0;
  }
}

LRESULT CALLBACK TMessageWindow::TState::Receive(HWND handle, UINT message, WPARAM first,
                                                 LPARAM second) {
  auto* const state = reinterpret_cast<TState*>(::GetWindowLongPtrA(handle, GWLP_USERDATA));
  const bool handles = state != nullptr && state->owner != nullptr && IsForHandler(message, first);
  return handles ? state->Handle(message, first, second)
                 : ::DefWindowProcA(handle, message, first, second);
}

TMessageWindow::TMessageWindow(std::string_view className, std::string_view title, THandler handler)
    : state_(std::make_unique<TState>(className, title, std::move(handler))) {
  state_->handler(*this, kCreateMessage);
  state_->owner = this;
}

TMessageWindow::~TMessageWindow() {
  state_->owner = nullptr;
  OrElse(0, [this] { return static_cast<int>(state_->handler(*this, kDestroyMessage)); });
}

void TMessageWindow::StartTimer(uint32_t milliseconds) noexcept {
  ::SetTimer(state_->window, kTimer, milliseconds, nullptr);
}

void TMessageWindow::StopTimer() noexcept { ::KillTimer(state_->window, kTimer); }

// The mark ends the loop behind the present message, whatever else waits in the queue; the posted
// message wakes a loop that handled a sent one and waits for the next.
void TMessageWindow::PostQuit() noexcept {
  state_->quits = true;
  ::PostQuitMessage(0);
}

void TMessageWindow::Run() {
  MSG message{};
  while (!state_->quits && ::GetMessageA(&message, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageA(&message);
  }
  ::PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);  // it is heeded already
  if (state_->raised) std::rethrow_exception(std::exchange(state_->raised, nullptr));
}

bool MessageWindowExists(std::string_view className, std::string_view title) noexcept {
  return OrElse(false, [&] { return Find(className, title) != nullptr; });
}

bool PostToWindow(std::string_view className, std::string_view title, uint32_t message) noexcept {
  return OrElse(false, [&] {
    const HWND window = Find(className, title);
    return window != nullptr && ::PostMessageA(window, message, 0, 0) != 0;
  });
}

std::optional<intptr_t> SendToWindow(std::string_view className, std::string_view title,
                                     uint32_t message, uint32_t interval,
                                     const std::function<bool()>& goesOn) noexcept {
  return OrElse(std::optional<intptr_t>(), [&]() -> std::optional<intptr_t> {
    const HWND window = Find(className, title);
    if (window == nullptr) return std::nullopt;
    return interval == 0 ? SendAndWait(window, message, 0, 0)
                         : SendWithTicket(window, message, interval, goesOn);
  });
}

}  // namespace quarda::platform
