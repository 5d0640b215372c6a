#include "StaleFiles.h"

#include <Files.h>
#include <Utils.h>

#include <algorithm>

namespace quarda {
namespace {

constexpr int64_t kDay = 24 * 60 * 60 / 2;  // in units of stamps

bool Matches(std::string_view name, const TStaleNames& names) {
  if (!name.starts_with(names.prefix)) return false;
  name.remove_prefix(names.prefix.size());
  const size_t digits = std::min(name.find_first_not_of("0123456789"), name.size());
  const std::string_view rest = name.substr(digits);
  if (digits != names.digits) return false;
  return names.suffix == "*" ? rest.empty() || rest.starts_with('.') : rest == names.suffix;
}

void RemoveIfOld(std::string_view folder, const platform::TFileRecord& file, uint32_t limit) {
  if ((file.attributes & platform::kFolder) == 0 && file.stamp < limit) {
    platform::RemoveFile(JoinPath(folder, file.name));
  }
}

}  // namespace

std::string StatisticsPath(IQuardaInstance& scan) {
  return scan.GetQuardaPath().Str() + "\\Temp\\Statistic.txt";
}

bool IsFirstScanOfDay(std::optional<uint32_t> lastCounted, const platform::TClock& clock) noexcept {
  constexpr int kTimeBits = 16;
  const uint32_t now = platform::ToDosStamp(clock.Now());
  return !lastCounted || *lastCounted >> kTimeBits != now >> kTimeBits;
}

uint32_t OldestFreshStamp(const platform::TClock& clock) noexcept {
  return platform::AddToDosStamp(platform::ToDosStamp(clock.Now()), -kDay);
}

void RemoveStaleFiles(std::string_view folder, const std::vector<TStaleNames>& names,
                      const platform::TClock& clock) {
  const uint32_t limit = OldestFreshStamp(clock);
  for (const auto& file : platform::FindFiles(JoinPath(folder, platform::kReplacementFiles))) {
    RemoveIfOld(folder, file, limit);
  }
  if (names.empty()) return;
  for (const auto& file : platform::FindFiles(JoinPath(folder, "*"))) {
    const bool isOurs = std::ranges::any_of(
        names, [&](const TStaleNames& ours) { return Matches(file.name, ours); });
    if (isOurs) RemoveIfOld(folder, file, limit);
  }
}

}  // namespace quarda
