#include "TextBlock.h"

#include <Memory.h>

namespace quarda {
namespace {

// From here on the memory comes fresh from the system, and touching it costs more than filling it.
constexpr size_t kLargeBlock = 256 << 10;

}  // namespace

TTextBlock::TTextBlock(size_t size)
    : bytes_(std::make_shared_for_overwrite<char[]>(size)), size_(size) {
  if (size >= kLargeBlock) platform::ProvideMemory(bytes_.get(), size);
}

}  // namespace quarda
