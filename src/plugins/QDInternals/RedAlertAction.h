// What is done when too many virus mails came in a short time.
#pragma once

#include <QDIntf.h>

namespace quarda {

/// Performs the action of the settings: none beeps, a sound file is played, anything else is a
/// command.
void PerformRedAlertAction(IQuardaInstance& scan);

}  // namespace quarda
