// A window is a socket in the runtime folder; a message is one packet that a sender leaves there.
// The packet says whether the sender waits: the reply goes back the same way. Senders of another
// user are turned away. One that connects and says nothing is passed over, and is cut off when many
// others wait to say something; what a sender that is gone wanted an answer to is dropped.
#include "MessageWindow.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "FileCalls.h"
#include "HashText.h"
#include "PlatformError.h"
#include "Quiet.h"
#include "RuntimeFolder.h"

namespace quarda::platform {

using namespace posix;

namespace {

struct TPacket {
  uint32_t message;
  uint32_t waits;
};

/// How many may be connected and have said nothing yet; senders speak as soon as they connect.
constexpr size_t kMostSilentSenders = 64;
constexpr int kPauseWithoutRoom = 10;  // milliseconds

/// Where a window's socket lies, in the system's form.
class TWindowAddress {
 public:
  TWindowAddress(std::string_view className, std::string_view title)
      : name_("window-" + HashText(std::string(className).append(1, '\0').append(title))) {
    address_.sun_family = AF_UNIX;
    // The system takes short paths only; the open folder has a short one whatever its own is.
    std::string path = Path();
    if (path.size() >= sizeof address_.sun_path) {
      path = "/proc/self/fd/" + std::to_string(folder_.Get()) + "/" + name_;
    }
    std::memcpy(address_.sun_path, path.data(), path.size());
  }

  const sockaddr* Get() const noexcept { return reinterpret_cast<const sockaddr*>(&address_); }
  socklen_t Size() const noexcept { return sizeof address_; }
  std::string Path() const { return folder_.Path(name_); }

 private:
  TRuntimeFolder folder_;
  std::string name_;
  sockaddr_un address_{};
};

/// No call for it ever waits, unless it says so.
int NewSocket() noexcept {
  return ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

/// Null and errno when there is no such window, or when it cannot be reached.
TDescriptor Connect(const TWindowAddress& address) {
  TDescriptor connection(NewSocket());
  if (connection && ::connect(connection.Get(), address.Get(), address.Size()) == 0) {
    return connection;
  }
  const int code = errno;
  connection.Reset(-1);
  errno = code;
  return connection;
}

bool IsOfThisUser(int connection) noexcept {
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         peer.uid == ::geteuid();
}

template <class T>
bool SendValue(int connection, const T& value) noexcept {
  ssize_t sent = 0;
  do {
    sent = ::send(connection, &value, sizeof value, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(sizeof value);
}

template <class T>
bool ReceiveValue(int connection, T& value, int flags = 0) noexcept {
  ssize_t got = 0;
  do {
    got = ::recv(connection, &value, sizeof value, flags);
  } while (got < 0 && errno == EINTR);
  return got == static_cast<ssize_t>(sizeof value);
}

/// Whether the other side has not hung up.
bool IsThere(int connection) noexcept {
  char next = 0;
  const ssize_t got = ::recv(connection, &next, sizeof next, MSG_PEEK | MSG_DONTWAIT);
  return got > 0 || (got < 0 && errno == EAGAIN);
}

/// Waits until there is something to receive. False when the caller does not want to wait longer.
bool WaitForReply(int connection, uint32_t interval, const std::function<bool()>& goesOn) {
  pollfd reply{connection, POLLIN, 0};
  const int limit = interval == 0 ? -1 : static_cast<int>(interval);
  for (;;) {
    const int ready = ::poll(&reply, 1, limit);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
    if (ready == 0 && !(goesOn && goesOn())) return ::poll(&reply, 1, 0) > 0;
  }
}

int64_t Milliseconds() noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace

struct TMessageWindow::TState {
  TState(std::string_view className, std::string_view title)
      : address(className, title), listener(NewSocket()) {
    if (!listener) Raise();
    const TRuntimeLock lock;
    if (Connect(address) || errno == EAGAIN) throw EPlatformError(EADDRINUSE, title);
    if (errno == ECONNREFUSED) UnlinkPath(address.Path());  // what a killed process left
    if (::bind(listener.Get(), address.Get(), address.Size()) != 0) Raise();
    if (::listen(listener.Get(), SOMAXCONN) != 0) Raise();
  }

  [[noreturn]] void Raise() const { throw EPlatformError(LastErrorCode(), address.Path()); }

  int TimeToWait() const noexcept;
  void Accept();
  void CutOffOldest() noexcept;
  /// Takes the message of a sender, or finds that it went away.
  void Serve(TMessageWindow& window, int connection);
  /// The reply to one message. What only the system itself may tell the handler, it is not told.
  intptr_t Answer(TMessageWindow& window, uint32_t message);

  TWindowAddress address;
  TDescriptor listener;
  THandler handler;
  std::vector<pollfd> senders;  // connected; what they have to say has not come yet
  uint32_t interval = 0;        // of the timer in milliseconds; 0 = none
  int64_t nextTick = 0;
  bool quits = false;
};

int TMessageWindow::TState::TimeToWait() const noexcept {
  if (interval == 0) return -1;
  return static_cast<int>(std::clamp<int64_t>(nextTick - Milliseconds(), 0, interval));
}

void TMessageWindow::TState::Accept() {
  if (senders.size() >= kMostSilentSenders) CutOffOldest();
  const int connection = ::accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC);
  if (connection >= 0 && IsOfThisUser(connection)) {
    senders.push_back({connection, POLLIN, 0});
  } else if (connection >= 0) {
    CloseFile(connection);
  } else if (errno != EAGAIN && errno != ECONNABORTED && errno != EINTR) {
    CutOffOldest();  // no room for another one
    ::poll(nullptr, 0, kPauseWithoutRoom);
  }
}

void TMessageWindow::TState::CutOffOldest() noexcept {
  if (senders.empty()) return;
  CloseFile(senders.front().fd);
  senders.erase(senders.begin());
}

intptr_t TMessageWindow::TState::Answer(TMessageWindow& window, uint32_t message) {
  if (message == kTimerMessage || message == kCreateMessage) return 0;
  return handler(window, message);
}

void TMessageWindow::TState::Serve(TMessageWindow& window, int connection) {
  TPacket packet{};
  const TDescriptor sender(connection);
  if (!ReceiveValue(connection, packet, MSG_DONTWAIT)) return;
  if (packet.waits != 0 && !IsThere(connection)) return;
  const int64_t reply = Answer(window, packet.message);
  if (packet.waits != 0) SendValue(connection, reply);
}

TMessageWindow::TMessageWindow(std::string_view className, std::string_view title, THandler handler)
    : state_(std::make_unique<TState>(className, title)) {
  state_->handler = std::move(handler);
  state_->handler(*this, kCreateMessage);
}

TMessageWindow::~TMessageWindow() {
  OrElse(0, [this] { return static_cast<int>(state_->handler(*this, kDestroyMessage)); });
  UnlinkPath(state_->address.Path());
  for (const pollfd& sender : state_->senders) CloseFile(sender.fd);
}

void TMessageWindow::StartTimer(uint32_t milliseconds) noexcept {
  state_->interval = milliseconds;
  state_->nextTick = Milliseconds() + milliseconds;
}

void TMessageWindow::StopTimer() noexcept { state_->interval = 0; }

void TMessageWindow::PostQuit() noexcept { state_->quits = true; }

void TMessageWindow::Run() {
  TState& state = *state_;
  while (!state.quits) {
    std::vector<pollfd> waiting = state.senders;
    waiting.push_back({state.listener.Get(), POLLIN, 0});
    const int ready = ::poll(waiting.data(), waiting.size(), state.TimeToWait());
    if (ready < 0 && errno != EINTR) state.Raise();
    for (size_t i = 0; ready > 0 && i + 1 < waiting.size() && !state.quits; ++i) {
      if (waiting[i].revents == 0) continue;
      std::erase_if(state.senders, [&](const pollfd& one) { return one.fd == waiting[i].fd; });
      state.Serve(*this, waiting[i].fd);
    }
    if (ready > 0 && waiting.back().revents != 0 && !state.quits) state.Accept();
    if (state.interval != 0 && Milliseconds() >= state.nextTick && !state.quits) {
      state.nextTick = Milliseconds() + state.interval;
      state.handler(*this, kTimerMessage);
    }
  }
}

bool MessageWindowExists(std::string_view className, std::string_view title) noexcept {
  return OrElse(false,
                [&] { return static_cast<bool>(Connect(TWindowAddress(className, title))); });
}

bool PostToWindow(std::string_view className, std::string_view title, uint32_t message) noexcept {
  return OrElse(false, [&] {
    const TDescriptor window = Connect(TWindowAddress(className, title));
    return window && SendValue(window.Get(), TPacket{message, 0});
  });
}

std::optional<intptr_t> SendToWindow(std::string_view className, std::string_view title,
                                     uint32_t message, uint32_t interval,
                                     const std::function<bool()>& goesOn) noexcept {
  return OrElse(std::optional<intptr_t>(), [&]() -> std::optional<intptr_t> {
    const TDescriptor window = Connect(TWindowAddress(className, title));
    int64_t reply = 0;
    if (!window || !SendValue(window.Get(), TPacket{message, 1}) ||
        !WaitForReply(window.Get(), interval, goesOn) || !ReceiveValue(window.Get(), reply)) {
      return std::nullopt;
    }
    return static_cast<intptr_t>(reply);
  });
}

}  // namespace quarda::platform
