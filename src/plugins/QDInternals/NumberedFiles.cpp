#include "NumberedFiles.h"

#include <Errors.h>
#include <PlatformError.h>
#include <Utils.h>

#include <utility>

#include "Messages.h"

namespace quarda {
namespace {

// A name that was taken may be free again when we look, so a failure alone proves nothing.
constexpr int kFailuresAllowed = 3;

// What has the name where a copy grows.
constexpr const char* kUnfinished = ".tmp";

// Stops at the name that the file cannot be given though nothing has it.
std::optional<std::string> RenameToFreeName(std::string_view source, TNumberedNames& names) {
  for (; auto target = names.Next(); ++names.next) {
    if (platform::NameExists(*target)) continue;
    if (platform::RenameFile(source, *target)) return target;
    if (!platform::NameExists(*target)) break;  // else another process was faster
  }
  return std::nullopt;
}

[[noreturn]] void RaiseCannotMove(std::string_view source, std::string_view target) {
  throw EError(FillIn("Cannot move \"%s\" to \"%s\".", {source, target}));
}

bool RemoveInAnyCase(const std::string& path) {
  if (platform::RemoveFile(path)) return true;
  platform::ClearAttributes(path);
  return platform::RemoveFile(path);
}

// The original goes when the copy is on the disk; one that cannot go is not moved.
std::optional<std::string> CopyToFreeName(std::string_view source, TNumberedNames& names) {
  TTempFile copy({names.prefix, names.digits, kUnfinished, 1, names.last}, {});
  if (!platform::DuplicateFile(source, copy.Path())) RaiseCannotMove(source, copy.Path());
  platform::ClearAttributes(copy.Path());  // one that may not be written to cannot be flushed
  platform::TFile(copy.Path(), platform::TOpenMode::kUpdate).Flush();
  auto target = copy.MoveTo(names);
  if (!target) return std::nullopt;
  const bool isFlushed = platform::FlushFolder(ExtractFileDir(*target));
  if (isFlushed && RemoveInAnyCase(std::string(source))) return target;
  RemoveInAnyCase(*target);
  RaiseCannotMove(source, *target);
}

}  // namespace

std::optional<std::string> TNumberedNames::Next() const {
  if (next > last) return std::nullopt;
  return Concat({prefix, IntToNullStr(next, digits), suffix});
}

struct TTempFile::TNewFile {
  std::string path;
  platform::TFile file;
};

TTempFile::TNewFile TTempFile::Create(TNumberedNames& names) {
  for (int failures = 0; const auto path = names.Next(); ++names.next) {
    try {
      return {*path, platform::TFile(*path, platform::TOpenMode::kCreateNew)};
    } catch (const platform::EPlatformError&) {
      if (!platform::NameExists(*path) && ++failures == kFailuresAllowed) throw;
    }
  }
  throw EError("No free number for a file \"" + names.prefix + "\".");
}

TTempFile::TTempFile(TNumberedNames names, std::string_view content)
    : TTempFile(Create(names), content) {}

TTempFile::TTempFile(const TNewFile& file) : path_(file.path) {}

// The file exists already; with the first constructor done, a failing write removes it again.
TTempFile::TTempFile(TNewFile file, std::string_view content) : TTempFile(file) {
  if (!content.empty()) file.file.Write(content.data(), content.size());
}

TTempFile::~TTempFile() {
  if (!path_.empty()) RemoveInAnyCase(path_);
}

std::optional<std::string> TTempFile::MoveTo(TNumberedNames& names) {
  auto target = RenameToFreeName(path_, names);
  if (target) {
    path_.clear();  // whoever takes that name from now on keeps it
  } else if (const auto refused = names.Next()) {
    RaiseCannotMove(path_, *refused);
  }
  return target;
}

std::optional<std::string> MoveToFreeName(std::string_view source, TNumberedNames& names) {
  auto target = RenameToFreeName(source, names);
  return target || !names.Next() ? target : CopyToFreeName(source, names);
}

}  // namespace quarda
