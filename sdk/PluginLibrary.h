// What the target QDEngine::Plugin links into a plug-in beside its own code.
#pragma once

#include <string>

namespace quarda {

/// The full path of the library that this is part of, as IPlugin::GetFileName wants it: in the
/// system's own form, which the engine translates for its log.
std::string PluginLibraryPath();

}  // namespace quarda
