// Lines over a byte stream: the only way in which the mail model reads and writes mails.
#pragma once

#include <Streams.h>
#include <TextBlock.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quarda {

enum class TStreamerMode { kRead, kWrite };

/// Reads a byte stream line by line, or writes one; a streamer does one of the two for life, from
/// the stream's current position on. Streams in memory are read in place and must not change
/// meanwhile; others are read in blocks. Errors of the stream pass through. An operation of the
/// other mode raises EError; only reading at the end of the input, where a writer always is, gives
/// an empty line.
///
/// A view returned by a reading operation is valid until the next operation; over a stream in
/// memory it is valid as long as the stream's content.
class TTextStreamer {
 public:
  /// Borrows the stream.
  TTextStreamer(TStream& stream, TStreamerMode mode);
  /// Takes the stream, which must not be null.
  TTextStreamer(std::unique_ptr<TStream> stream, TStreamerMode mode);
  TTextStreamer(const TTextStreamer&) = delete;
  TTextStreamer& operator=(const TTextStreamer&) = delete;
  /// Writes what is left in the cache; a failure of that is lost, so call `Flush` first.
  ~TTextStreamer();

  /// The next line without its LF or CR LF; empty at the end of the input. A lone CR is part of the
  /// line.
  std::string_view ReadLn();
  /// Skips lines up to the next one that begins with "--" and reads that one; false when there is
  /// none. Every byte of the skipped lines, line ends included, is appended to `skipped` when
  /// given. Without one, `LastLine` is undefined.
  bool ReadToDashes(std::string* skipped = nullptr);

  void WriteLn(std::string_view line);
  void Write(std::string_view text);
  /// Writes the cache to the stream. After an error what it held is gone.
  void Flush();
  /// Truncates the stream being written to nothing.
  void Clear();

  /// Goes on reading at an offset of the stream; behind its end there is nothing to read.
  void SetPosition(uint64_t offset);
  /// Goes to the start and reads up to that many lines.
  void SetLine(size_t count);

  /// The offset of the next byte to be read or written.
  uint64_t GetPosition() const noexcept { return position_ - (buffered_ - index_); }
  bool IsEof() const noexcept { return GetPosition() >= size_; }
  /// What `ReadLn` returned last.
  std::string_view LastLine() const noexcept { return lastLine_; }
  /// The offset at which the last line begins.
  uint64_t LineStart() const noexcept { return lineStart_; }

  /// Whether the source lies in memory, so that the four below serve.
  bool IsInMemory() const noexcept { return content_.has_value(); }
  /// The bytes between two offsets, and those from the position on. Behind the end are none.
  std::string_view Content(uint64_t start, uint64_t end) const noexcept {
    const uint64_t from = std::min(start, size_);
    return {content_->data() + from, static_cast<size_t>(std::min(end, size_) - from)};
  }
  std::string_view Rest() const noexcept { return Content(position_, size_); }
  /// A block that holds the source; made by a copy when the stream has none.
  const TTextBlock& Block();
  /// Skips bytes of a source in memory, at most those of `Rest`.
  void Skip(size_t size) noexcept;

 private:
  static constexpr size_t kBlockSize = 24576;
  static constexpr size_t kCacheSize = 26624;

  void Open();
  void RequireMode(TStreamerMode mode) const;
  bool Fill();
  std::string_view ReadBufferedLine(std::string_view begun);
  std::string_view LineInMemory() noexcept;
  bool ReadToDashesInMemory(std::string* skipped);
  bool ReadToDashesBuffered(std::string* skipped);
  void SkipInBuffer(size_t size, std::string* skipped);

  std::unique_ptr<TStream> owned_;
  TStream& stream_;
  const TStreamerMode mode_;
  std::optional<std::string_view> content_;  // of a source in memory
  TTextBlock block_;
  uint64_t size_ = 0;
  uint64_t position_ = 0;  // behind the bytes fetched, or accepted for writing
  uint64_t lineStart_ = 0;
  std::unique_ptr<char[]> buffer_;  // read block or write cache
  size_t index_ = 0;                // next unread byte of the read block
  size_t buffered_ = 0;             // bytes in the read block
  size_t cached_ = 0;               // bytes in the write cache
  std::string line_;                // a line put together from several blocks
  std::string_view lastLine_;
};

}  // namespace quarda
