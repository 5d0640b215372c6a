// The folder of the objects that processes share by name.
#pragma once

#include <string>
#include <string_view>

#include "FileCalls.h"

namespace quarda::platform::posix {

/// The folder, which only this user may enter. Raises EPlatformError when it cannot be made, or
/// when what has its name belongs to somebody else or may be entered by others.
class TRuntimeFolder {
 public:
  TRuntimeFolder();

  std::string Path(std::string_view name) const;
  int Get() const noexcept { return folder_.Get(); }

 private:
  std::string path_;
  TDescriptor folder_;
};

/// While it lives no other process opens or closes a named object. Everybody keeps it for moments
/// only, so whoever keeps it for seconds does not work any more: then it raises EPlatformError.
class TRuntimeLock {
 public:
  TRuntimeLock();

  std::string Path(std::string_view name) const { return folder_.Path(name); }

 private:
  TRuntimeFolder folder_;
};

}  // namespace quarda::platform::posix
