// What killed processes left behind: temporary files that nobody has written to for a day. The
// first scan of each day looks for them, so ordinary scans pay nothing for it.
#pragma once

#include <Clock.h>
#include <QDIntf.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// Names of temporary files: a prefix, so many digits, and the rest.
struct TStaleNames {
  std::string_view prefix;
  size_t digits;
  std::string_view suffix;  ///< "*": any extension, or none
};

/// The file whose last write tells when a scan was last counted.
std::string StatisticsPath(IQuardaInstance& scan);

/// Whether the last scan, of this stamp, was counted on another day; also when there was none.
bool IsFirstScanOfDay(std::optional<uint32_t> lastCounted, const platform::TClock& clock) noexcept;

/// The stamp before which a temporary file belongs to nobody any more.
uint32_t OldestFreshStamp(const platform::TClock& clock) noexcept;

/// Removes files of these names from the folder that were last written more than a day ago, and
/// those that were to replace a file there.
void RemoveStaleFiles(std::string_view folder, const std::vector<TStaleNames>& names,
                      const platform::TClock& clock);

}  // namespace quarda
