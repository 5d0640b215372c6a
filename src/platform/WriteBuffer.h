// Small writes put together, for the backends.
#pragma once

#include <cstddef>
#include <string>

namespace quarda::platform {

/// Appends to the buffer as long as it stays within `limit`; otherwise passes what it holds on to
/// `out(data, size)` and begins anew.
template <class TOut>
void WriteBuffered(std::string& buffer, const void* data, size_t size, size_t limit, TOut out) {
  if (buffer.size() + size <= limit) {
    buffer.append(static_cast<const char*>(data), size);
    return;
  }
  out(buffer.data(), buffer.size());
  buffer.clear();
  if (size >= limit) {
    out(data, size);
  } else {
    buffer.assign(static_cast<const char*>(data), size);
  }
}

}  // namespace quarda::platform
