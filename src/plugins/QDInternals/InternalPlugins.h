// The plug-ins that the engine brings along: the module's only door.
#pragma once

#include <QDIntf.h>

namespace quarda {

/// Adds the internal plug-ins to the application's plug-in list, in the order in which they run.
void InstallInternalPlugins(IQuardaApp* app);

}  // namespace quarda
