// A window is a socket in the runtime folder; a message is one packet that a sender leaves there.
// The packet says whether the sender waits: the reply goes back the same way. Senders of another
// user are turned away, and one that connects and says nothing is passed over.
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

/// A short name of fixed length, because that of a socket is limited (FNV-1a over both texts).
std::string SocketPath(std::string_view className, std::string_view title) {
  uint64_t hash = 0xCBF29CE484222325;
  const std::string text = std::string(className).append(1, '\0').append(title);
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  std::string name = "window-";
  for (int shift = 60; shift >= 0; shift -= 4) name += "0123456789abcdef"[hash >> shift & 15];
  return RuntimePath(name);
}

/// False when the path is longer than the system takes.
bool SetAddress(sockaddr_un& address, const std::string& path) {
  address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, path.data(), path.size());
  return true;
}

int NewSocket() noexcept { return ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0); }

TDescriptor Connect(const std::string& path) {
  sockaddr_un address;
  TDescriptor connection(NewSocket());
  if (connection && SetAddress(address, path)) {
    const auto* const where = reinterpret_cast<const sockaddr*>(&address);
    if (::connect(connection.Get(), where, sizeof address) == 0) return connection;
  }
  return TDescriptor();
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

int64_t Milliseconds() noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace

struct TMessageWindow::TState {
  TState(std::string_view className, std::string_view title)
      : path(SocketPath(className, title)), listener(NewSocket()) {
    sockaddr_un address;
    if (!listener || !SetAddress(address, path)) Raise();
    const TRuntimeLock lock;
    if (Connect(path)) throw EPlatformError(EADDRINUSE, title);
    UnlinkPath(path);  // what a killed process left
    const auto* const where = reinterpret_cast<const sockaddr*>(&address);
    if (::bind(listener.Get(), where, sizeof address) != 0) Raise();
    if (::listen(listener.Get(), SOMAXCONN) != 0) Raise();
  }

  [[noreturn]] void Raise() const { throw EPlatformError(LastErrorCode(), path); }

  int TimeToWait() const noexcept;
  void Accept();
  /// Takes the message of a sender, or finds that it went away.
  void Serve(TMessageWindow& window, int connection);

  std::string path;
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
  const int connection = ::accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC);
  if (connection < 0) return;  // it went away meanwhile
  if (IsOfThisUser(connection)) {
    senders.push_back({connection, POLLIN, 0});
  } else {
    CloseFile(connection);
  }
}

void TMessageWindow::TState::Serve(TMessageWindow& window, int connection) {
  TPacket packet{};
  const TDescriptor sender(connection);
  if (!ReceiveValue(connection, packet, MSG_DONTWAIT)) return;
  if (packet.message == kTimerMessage || packet.message == kCreateMessage) return;
  const int64_t reply = handler(window, packet.message);
  if (packet.waits != 0) SendValue(connection, reply);
}

TMessageWindow::TMessageWindow(std::string_view className, std::string_view title, THandler handler)
    : state_(std::make_unique<TState>(className, title)) {
  state_->handler = std::move(handler);
  state_->handler(*this, kCreateMessage);
}

TMessageWindow::~TMessageWindow() {
  OrElse(0, [this] { return static_cast<int>(state_->handler(*this, kDestroyMessage)); });
  UnlinkPath(state_->path);
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
    if (ready > 0 && waiting.back().revents != 0) state.Accept();
    for (size_t i = 0; ready > 0 && i + 1 < waiting.size() && !state.quits; ++i) {
      if (waiting[i].revents == 0) continue;
      std::erase_if(state.senders, [&](const pollfd& one) { return one.fd == waiting[i].fd; });
      state.Serve(*this, waiting[i].fd);
    }
    if (state.interval != 0 && Milliseconds() >= state.nextTick && !state.quits) {
      state.nextTick = Milliseconds() + state.interval;
      state.handler(*this, kTimerMessage);
    }
  }
}

bool MessageWindowExists(std::string_view className, std::string_view title) noexcept {
  return OrElse(false, [&] { return static_cast<bool>(Connect(SocketPath(className, title))); });
}

bool PostToWindow(std::string_view className, std::string_view title, uint32_t message) noexcept {
  return OrElse(false, [&] {
    const TDescriptor window = Connect(SocketPath(className, title));
    return window && SendValue(window.Get(), TPacket{message, 0});
  });
}

std::optional<intptr_t> SendToWindow(std::string_view className, std::string_view title,
                                     uint32_t message) noexcept {
  return OrElse(std::optional<intptr_t>(), [&]() -> std::optional<intptr_t> {
    const TDescriptor window = Connect(SocketPath(className, title));
    int64_t reply = 0;
    if (!window || !SendValue(window.Get(), TPacket{message, 1}) ||
        !ReceiveValue(window.Get(), reply)) {
      return std::nullopt;
    }
    return static_cast<intptr_t>(reply);
  });
}

}  // namespace quarda::platform
