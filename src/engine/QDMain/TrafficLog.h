// The traffic logs "QDInMails.log" and "QDOutMails.log": one line for each mail, marked when the
// mail or one of its attachment files carried a virus.
#pragma once

#include <Clock.h>
#include <QDIntf.h>

namespace quarda {

/// Notes a finished scan. Nothing is written for a mail of unknown direction. Errors of the files
/// are logged and otherwise ignored; those of the mail are raised.
void WriteTrafficLog(IQuardaInstance& scan, const platform::TClock& clock);

}  // namespace quarda
