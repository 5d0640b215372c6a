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

bool IsTaken(std::string_view path) noexcept {
  return platform::FileExists(path) || platform::FolderExists(path);
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
      if (!IsTaken(*path) && ++failures == kFailuresAllowed) throw;
    }
  }
  throw EError("No free number for a file \"" + names.prefix + "\".");
}

TTempFile::TTempFile(TNumberedNames names, std::string_view content,
                     platform::TDurability durability)
    : TTempFile(Create(names), content, durability) {}

TTempFile::TTempFile(const TNewFile& file) : path_(file.path) {}

// The file exists already; with the first constructor done, a failing write removes it again.
TTempFile::TTempFile(TNewFile file, std::string_view content, platform::TDurability durability)
    : TTempFile(file) {
  file.file.Write(content.data(), content.size());
  if (durability == platform::TDurability::kFlushed) file.file.Flush();
}

TTempFile::~TTempFile() {
  if (platform::RemoveFile(path_)) return;
  platform::ClearAttributes(path_);
  platform::RemoveFile(path_);
}

std::optional<std::string> MoveToFreeName(std::string_view source, TNumberedNames& names) {
  for (; auto target = names.Next(); ++names.next) {
    if (platform::RenameFile(source, *target)) return target;
    if (IsTaken(*target)) continue;
    if (MoveFile(source, *target)) return target;
    throw EError(FillIn("Cannot move \"%s\" to \"%s\".", {source, *target}));
  }
  return std::nullopt;
}

}  // namespace quarda
