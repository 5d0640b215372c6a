// Byte streams: memory, string and file.
#pragma once

#include <Files.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TextBlock.h"

namespace quarda {

/// A seekable stream of bytes. Failures of the system pass as EPlatformError.
class TStream {
 public:
  virtual ~TStream() = default;

  /// Reads up to `size` bytes from the position on; fewer only at the end.
  virtual size_t Read(void* buffer, size_t size) = 0;
  virtual void Write(const void* data, size_t size) = 0;
  virtual uint64_t Position() const = 0;
  virtual void SetPosition(uint64_t position) = 0;
  virtual uint64_t Size() const = 0;
  /// Cuts or extends (with zero bytes); a position behind the new end moves to it.
  virtual void SetSize(uint64_t size) = 0;

  /// The whole content when it lies in memory, else nothing. Valid until the next write.
  virtual std::optional<std::string_view> Content() const { return std::nullopt; }
  /// The block that holds the content, so that slices of it can outlive the stream; empty when the
  /// content lies elsewhere. A later write of the stream leaves a shared block alone.
  virtual TTextBlock Block() const { return {}; }
};

/// Bytes in memory that the stream owns.
class TMemoryStream : public TStream {
 public:
  TMemoryStream() = default;
  /// A stream over a copy of the bytes, positioned at the start.
  explicit TMemoryStream(std::string_view content);
  /// A stream over a block that is complete already, positioned at the start.
  explicit TMemoryStream(TTextBlock block);

  size_t Read(void* buffer, size_t size) override;
  void Write(const void* data, size_t size) override;
  uint64_t Position() const override { return position_; }
  void SetPosition(uint64_t position) override { position_ = static_cast<size_t>(position); }
  uint64_t Size() const override { return size_; }
  void SetSize(uint64_t size) override;
  std::optional<std::string_view> Content() const override { return View(); }
  TTextBlock Block() const override { return block_; }

  std::string_view View() const noexcept { return {block_.Data(), size_}; }
  void Reserve(size_t capacity);

 private:
  TTextBlock block_;  // its size is the capacity
  size_t size_ = 0;
  size_t position_ = 0;
};

/// A stream over a string that the caller owns; writes change the string.
class TStringStream : public TStream {
 public:
  explicit TStringStream(std::string& text) : text_(text) {}

  size_t Read(void* buffer, size_t size) override;
  void Write(const void* data, size_t size) override;
  uint64_t Position() const override { return position_; }
  void SetPosition(uint64_t position) override { position_ = static_cast<size_t>(position); }
  uint64_t Size() const override { return text_.size(); }
  void SetSize(uint64_t size) override;
  std::optional<std::string_view> Content() const override { return text_; }

 private:
  std::string& text_;
  size_t position_ = 0;
};

/// A file.
class TFileStream : public TStream {
 public:
  TFileStream(std::string_view path, platform::TOpenMode mode);

  size_t Read(void* buffer, size_t size) override;
  void Write(const void* data, size_t size) override;
  uint64_t Position() const override { return position_; }
  void SetPosition(uint64_t position) override;
  uint64_t Size() const override { return file_.Size(); }
  void SetSize(uint64_t size) override;

 private:
  platform::TFile file_;
  uint64_t position_ = 0;
};

/// New content for a file that must survive: what is written reaches the file by `Commit`, as a
/// whole or not at all. Write-only.
class TReplacingFileStream : public TStream {
 public:
  explicit TReplacingFileStream(std::string_view path,
                                platform::TDurability durability = platform::TDurability::kNormal)
      : file_(path, durability) {}

  size_t Read(void*, size_t) override { return 0; }
  void Write(const void* data, size_t size) override;
  uint64_t Position() const override { return written_; }
  /// Only to where it stands already.
  void SetPosition(uint64_t position) override;
  uint64_t Size() const override { return written_; }
  void SetSize(uint64_t size) override;
  void Commit() { file_.Commit(); }

 private:
  platform::TReplacingFile file_;
  uint64_t written_ = 0;
};

}  // namespace quarda
