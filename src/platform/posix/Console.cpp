#include "Console.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace quarda::platform {
namespace {

constexpr int kNone = -1;

// Not closed on exec, because the descriptor may itself be one of the three standard ones.
int OpenDevice(const char* path, int flags) noexcept {
  int file = ::open(path, flags | O_NOCTTY);
  while (file == -1 && errno == EINTR) file = ::open(path, flags | O_NOCTTY);
  return file;
}

void PutOn(int file, int standard) noexcept {
  if (file == standard || file < 0) return;
  while (::dup2(file, standard) == -1 && (errno == EINTR || errno == EBUSY)) {
  }
}

void CloseExtra(int file) noexcept {
  if (file > STDERR_FILENO) ::close(file);
}

}  // namespace

// Invalid handles are the null device here: nothing that is opened later can then take their place
// and be written to by mistake, and children find the null device without more ado.
TConsoleHandles::TConsoleHandles() noexcept : console_(OpenDevice("/dev/tty", O_WRONLY)) {
  const int console = static_cast<int>(console_);
  const int null = OpenDevice("/dev/null", O_RDWR);
  const int output = console >= 0 ? console : null;
  PutOn(output, STDOUT_FILENO);
  PutOn(output, STDERR_FILENO);
  PutOn(null, STDIN_FILENO);
  if (console >= 0) CloseExtra(console);
  CloseExtra(null);
}

TConsoleHandles::~TConsoleHandles() {
  if (console_ == kNone) return;
  PutOn(STDIN_FILENO, STDOUT_FILENO);
  PutOn(STDIN_FILENO, STDERR_FILENO);
}

// The bell of the terminal; standard error may as well be a file, which wants none.
void Beep() noexcept {
  if (::isatty(STDERR_FILENO) != 1) return;
  while (::write(STDERR_FILENO, "\a", 1) == -1 && errno == EINTR) {
  }
}

}  // namespace quarda::platform
