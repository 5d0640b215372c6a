// The string that crosses the plug-in boundary.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "QDCall.h"

namespace quarda {

/// An immutable 8-bit string: one pointer to a reference-counted block. The block carries the
/// function that frees it, so whoever drops the last reference frees it where it was made, whatever
/// compiler or allocator made it. The empty string is a null pointer. Counts are plain integers:
/// there is one thread.
class AnsiString {
 public:
  AnsiString() noexcept = default;
  AnsiString(std::string_view text) : block_(Make(text)) {}
  AnsiString(const char* text) : AnsiString(std::string_view(text)) {}
  AnsiString(const std::string& text) : AnsiString(std::string_view(text)) {}
  AnsiString(const AnsiString& other) noexcept : block_(other.block_) {
    if (block_) ++block_->references;
  }
  AnsiString(AnsiString&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
  AnsiString& operator=(AnsiString other) noexcept {
    TBlock* const mine = block_;
    block_ = other.block_;
    other.block_ = mine;
    return *this;
  }
  ~AnsiString() {
    if (block_ && --block_->references == 0) block_->release(block_);
  }

  size_t Size() const noexcept { return block_ ? block_->size : 0; }
  bool IsEmpty() const noexcept { return block_ == nullptr; }
  std::string_view View() const noexcept {
    return block_ ? std::string_view(Characters(block_), block_->size) : std::string_view();
  }
  std::string Str() const { return std::string(View()); }
  /// Ended by a NUL byte.
  const char* CStr() const noexcept { return block_ ? Characters(block_) : ""; }
  operator std::string_view() const noexcept { return View(); }

  friend bool operator==(const AnsiString& a, const AnsiString& b) noexcept {
    return a.View() == b.View();
  }
  friend bool operator==(const AnsiString& a, std::string_view b) noexcept { return a.View() == b; }
  friend bool operator==(const AnsiString& a, const char* b) noexcept { return a.View() == b; }
  friend bool operator==(const AnsiString& a, const std::string& b) noexcept {
    return a.View() == b;
  }

 private:
  // The characters follow the block, ended by a NUL byte.
  struct TBlock {
    int32_t references;
    uint32_t size;
    void(QDCALL* release)(TBlock*);
  };

  static char* Characters(TBlock* block) noexcept {
    return reinterpret_cast<char*>(block) + sizeof(TBlock);
  }
  static TBlock* Make(std::string_view text) {
    if (text.empty()) return nullptr;
    void* const memory = ::operator new(sizeof(TBlock) + text.size() + 1);
    TBlock* const block =
        new (memory) TBlock{1, static_cast<uint32_t>(text.size()), &AnsiString::Release};
    char* const characters = Characters(block);
    std::memcpy(characters, text.data(), text.size());
    characters[text.size()] = '\0';
    return block;
  }
  static void QDCALL Release(TBlock* block) { ::operator delete(block); }

  TBlock* block_ = nullptr;
};

static_assert(sizeof(AnsiString) == sizeof(void*), "an AnsiString is one pointer");

}  // namespace quarda
