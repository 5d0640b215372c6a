// By the files themselves, of which the system keeps a number, and by the paths that lead to
// others.
#include "Circumstances.h"

#include "CodePage.h"
#include "FileCalls.h"
#include "Files.h"
#include "HashText.h"
#include "Paths.h"
#include "PlatformError.h"
#include "Program.h"
#include "Quiet.h"
#include "System.h"

namespace quarda::platform {

using namespace win32;

namespace {

/// By what the system tells a file from all others; raises when it cannot be opened.
BY_HANDLE_FILE_INFORMATION InformationOf(std::string_view path, DWORD access) {
  BY_HANDLE_FILE_INFORMATION information{};
  const std::optional<std::string> name = SystemPath(path);
  const THandle file(name ? OpenFile(*name, access, OPEN_EXISTING) : nullptr);
  if (!file || !::GetFileInformationByHandle(file.Get(), &information)) {
    throw EPlatformError(LastErrorCode(), path);
  }
  return information;
}

/// Numbers and texts as one text, each ended by a NUL.
template <class... T>
std::string Joined(const T&... facts) {
  std::string text;
  const auto add = [&text](const auto& fact) {
    if constexpr (std::is_integral_v<std::decay_t<decltype(fact)>>) {
      text += std::to_string(fact);
    } else {
      text += fact;
    }
    text += '\0';
  };
  (add(facts), ...);
  return text;
}

std::string Variable(const char* name) {
  return TextOf(
      [&](char* text, DWORD size) { return ::GetEnvironmentVariableA(name, text, size); });
}

}  // namespace

std::string ProcessCircumstances(std::string_view library) noexcept {
  return OrElse(std::string(), [&] {
    const BY_HANDLE_FILE_INFORMATION file = InformationOf(library, FILE_READ_ATTRIBUTES);
    return HashText(Joined(file.dwVolumeSerialNumber, file.nFileIndexHigh, file.nFileIndexLow,
                           file.nFileSizeHigh, file.nFileSizeLow,
                           file.ftLastWriteTime.dwHighDateTime, file.ftLastWriteTime.dwLowDateTime,
                           LowerAnsi(ProgramFolder()), Variable("PATH"), TempFolder()));
  });
}

void MarkAsServing() {
  if (!::SetEnvironmentVariableA(kServing, "1")) throw EPlatformError(LastErrorCode(), kServing);
}

bool IsServing() noexcept { return ::GetEnvironmentVariableA(kServing, nullptr, 0) != 0; }

std::string ScanCircumstances(std::string_view file, std::string_view process) noexcept {
  return OrElse(std::string(), [&] {
    const BY_HANDLE_FILE_INFORMATION found = InformationOf(file, GENERIC_READ);
    return HashText(Joined(process, LowerAnsi(CurrentFolder()), file, found.dwVolumeSerialNumber,
                           found.nFileIndexHigh, found.nFileIndexLow));
  });
}

struct TFolderVisit::TState {
  std::string before = CurrentFolder();
  std::string ours = ProgramFolder() + '\\';
};

TFolderVisit::TFolderVisit(std::string_view folder) : state_(std::make_unique<TState>()) {
  if (!::SetCurrentDirectoryA(std::string(folder).c_str())) {
    throw EPlatformError(LastErrorCode(), folder);
  }
}

TFolderVisit::~TFolderVisit() {
  // Nobody may be kept from the folder of a scan by a process that only could not leave it.
  if (!::SetCurrentDirectoryA(state_->before.c_str())) ::SetCurrentDirectoryA(state_->ours.c_str());
}

}  // namespace quarda::platform
