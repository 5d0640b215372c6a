#include "TextBlock.h"

#include <Memory.h>

#include <new>

namespace quarda {
namespace {

// From here on the memory comes fresh from the system, and touching it costs more than filling it.
constexpr size_t kFresh = 256 << 10;

// Systems hand out memory in pages of that size where a block lies right for them.
constexpr size_t kLargePage = 2 << 20;
constexpr std::align_val_t kAlignment{kLargePage};

/// Whole large pages, unless more than half of the last one would be waste.
size_t RoomFor(size_t size) {
  const size_t rest = size % kLargePage;
  return rest > kLargePage / 2 ? size - rest + kLargePage : size;
}

std::shared_ptr<char[]> LargePages(size_t size) {
  const size_t room = RoomFor(size);
  std::shared_ptr<char[]> bytes(static_cast<char*>(::operator new[](room, kAlignment)),
                                [](char* start) { ::operator delete[](start, kAlignment); });
  platform::ProvideMemory(bytes.get(), room);
  return bytes;
}

std::shared_ptr<char[]> SmallPages(size_t size) {
  auto bytes = std::make_shared_for_overwrite<char[]>(size);
  if (size >= kFresh) platform::ProvideMemory(bytes.get(), size);
  return bytes;
}

}  // namespace

TTextBlock::TTextBlock(size_t size)
    : bytes_(size > kLargePage / 2 ? LargePages(size) : SmallPages(size)), size_(size) {}

}  // namespace quarda
