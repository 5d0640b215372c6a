// The red alert: the times of the last virus mails in "Temp\Quarda.ra", from which the engine sees
// that too many came in too short a time.
#pragma once

#include <Clock.h>
#include <QDIntf.h>

namespace quarda {

/// Notes a virus mail. False when a red alert is due. A record that cannot be read or written is
/// logged and raises no alert.
bool RecordVirusMail(IQuardaInstance& scan, const platform::TClock& clock);

}  // namespace quarda
