// The folder of the objects that processes share by name.
#pragma once

#include <string>
#include <string_view>

#include "FileCalls.h"

namespace quarda::platform::posix {

/// A path in that folder, which only this user may enter. Raises EPlatformError when there is no
/// such folder, or when what has its name belongs to somebody else.
std::string RuntimePath(std::string_view name);

/// While it lives no other process opens or closes a named object.
class TRuntimeLock {
 public:
  TRuntimeLock();

 private:
  TDescriptor file_;
};

}  // namespace quarda::platform::posix
