// The only way in which binary data is read here: bounds first, then bytes.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quarda {

/// Walks over bytes that somebody else keeps alive, reading little-endian numbers and slices. A
/// read that would pass the end returns false and moves nothing.
class TByteCursor {
 public:
  explicit TByteCursor(std::string_view bytes) : rest_(bytes) {}

  bool AtEnd() const noexcept { return rest_.empty(); }

  template <std::unsigned_integral T>
  bool Read(T& value) noexcept {
    std::string_view bytes;
    if (!Take(sizeof(T), bytes)) return false;
    uint64_t number = 0;
    for (size_t i = sizeof(T); i-- > 0;) number = number << 8 | static_cast<uint8_t>(bytes[i]);
    value = static_cast<T>(number);
    return true;
  }

  bool Take(size_t size, std::string_view& slice) noexcept {
    if (size > rest_.size()) return false;
    slice = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return true;
  }

  /// Moves on by `size` bytes, or to the end when fewer are left.
  void Skip(size_t size) noexcept { rest_.remove_prefix(std::min(size, rest_.size())); }

 private:
  std::string_view rest_;
};

}  // namespace quarda
