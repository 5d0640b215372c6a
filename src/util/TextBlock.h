// Shared blocks of bytes: what lines point into.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace quarda {

/// Bytes that several owners keep alive. Nobody changes a block once a line points into it.
class TTextBlock {
 public:
  TTextBlock() = default;
  /// An uninitialised block of `size` bytes.
  explicit TTextBlock(size_t size);

  char* Data() const noexcept { return bytes_.get(); }
  size_t Size() const noexcept { return size_; }
  std::string_view View() const noexcept { return {bytes_.get(), size_}; }
  /// Whether nobody else holds the bytes.
  bool IsSole() const noexcept { return bytes_.use_count() <= 1; }
  explicit operator bool() const noexcept { return bytes_ != nullptr; }
  bool operator==(const TTextBlock& other) const noexcept { return bytes_ == other.bytes_; }

 private:
  std::shared_ptr<char[]> bytes_;
  size_t size_ = 0;
};

}  // namespace quarda
