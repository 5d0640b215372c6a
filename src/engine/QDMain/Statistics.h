// The running statistics "Temp\Statistic.txt": counters of mails, virus mails and red alerts.
#pragma once

#include <Clock.h>
#include <QDIntf.h>

namespace quarda {

/// Counts a finished scan; returns whether none was counted today before. Failures are ignored:
/// statistics never disturb a scan.
bool CountScan(IQuardaInstance& scan, bool redAlert, int32_t exitCode,
               const platform::TClock& clock) noexcept;

}  // namespace quarda
