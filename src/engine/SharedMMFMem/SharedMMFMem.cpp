#include "SharedMMFMem.h"

#include <NamedObjects.h>

#include <algorithm>
#include <list>
#include <string>

namespace quarda {
namespace {

struct TOpenBlock {
  std::string name;
  platform::TNamedMemory memory;
};

/// In the order of opening.
std::list<TOpenBlock>& OpenBlocks() {
  static std::list<TOpenBlock> blocks;
  return blocks;
}

void CheckName(std::string_view name) {
  if (name.empty() || name.find('\\') != std::string_view::npos) {
    throw ESharedMemError("Invalid MMF name \"" + std::string(name) + "\"");
  }
  const auto isSame = [name](const TOpenBlock& block) { return block.name == name; };
  if (std::ranges::any_of(OpenBlocks(), isSame)) {
    throw ESharedMemError("Shared MMF name \"" + std::string(name) + "\" already opened.");
  }
}

}  // namespace

uint32_t SharedGetMem(void*& block, std::string_view name, uint32_t size, uint32_t access) {
  block = nullptr;
  CheckName(name);
  platform::TNamedMemory memory(name, size, access);
  const bool existed = memory.Existed();
  if (memory.Address() == nullptr) return 0;
  OpenBlocks().push_back({std::string(name), std::move(memory)});
  block = OpenBlocks().back().memory.Address();
  return existed ? kSharedMemExisted : 0;
}

// A new block is zeros already. Filling it here could wipe out what another process, which found
// the block a moment later, has written by now.
void* SharedAllocMem(std::string_view name, uint32_t size, uint32_t access) {
  void* block = nullptr;
  SharedGetMem(block, name, size, access);
  return block;
}

bool SharedOpenMem(void*& block, std::string_view name, uint32_t access) {
  return SharedGetMem(block, name, 0, access) == kSharedMemExisted;
}

void* SharedOpenMem(std::string_view name, uint32_t access) {
  void* block = nullptr;
  SharedGetMem(block, name, 0, access);
  return block;
}

bool SharedFreeMem(void*& block) noexcept {
  auto& blocks = OpenBlocks();
  const auto found = std::ranges::find_if(
      blocks, [block](const TOpenBlock& open) { return open.memory.Address() == block; });
  if (block == nullptr || found == blocks.end()) return false;
  blocks.erase(found);
  block = nullptr;
  return true;
}

bool SharedCloseMem(void*& block) noexcept { return SharedFreeMem(block); }

}  // namespace quarda
