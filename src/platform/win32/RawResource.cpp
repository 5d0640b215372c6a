// Raw data in the module that holds this code, which may be the engine or a test program.
#include "RawResource.h"

#include <string>

#include "System.h"

namespace quarda::platform {

std::string_view RawResource(std::string_view name) noexcept {
  const HMODULE module = win32::ThisModule();
  const HRSRC found = ::FindResourceA(module, std::string(name).c_str(), RT_RCDATA);
  const HGLOBAL loaded = found == nullptr ? nullptr : ::LoadResource(module, found);
  const void* const data = loaded == nullptr ? nullptr : ::LockResource(loaded);
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), ::SizeofResource(module, found)};
}

}  // namespace quarda::platform
