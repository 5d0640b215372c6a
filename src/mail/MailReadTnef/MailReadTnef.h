// Reads TNEF containers (application/ms-tnef): the attachments that some mail clients pack into
// one.
#pragma once

#include <Clock.h>
#include <Errors.h>
#include <Streams.h>
#include <TextBlock.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// The container breaks the format.
class ETnefError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "ETnefError"; }
};

/// One file of a container. Its bytes stay valid as long as it lives, whatever becomes of the
/// stream it was read from.
class TTnefAttachment {
 public:
  /// Writes the content; nothing when there is none.
  virtual void SaveToStream(TStream& stream) const;
  virtual ~TTnefAttachment() = default;

  /// Creates or truncates the file. Raises EPlatformError.
  void SaveToFile(std::string_view path) const;

  /// What the container says, or "tnef-tmp." and a number when it says nothing. Never empty in a
  /// loaded container. The sender's words: never use it as a path.
  const std::string& GetFileName() const noexcept { return fileName_; }
  std::string_view GetData() const noexcept { return data_; }
  /// The size of the data, or the length of 0 and less that the container claims for data that is
  /// not there.
  int32_t GetSize() const noexcept { return size_; }
  /// In the sender's local time; nothing when the container gives none.
  const std::optional<platform::TLocalTime>& GetModifyDate() const noexcept { return modifyDate_; }

 private:
  friend class TTnefReader;

  std::string fileName_;
  TTextBlock block_;  // keeps data_ alive
  std::string_view data_;
  int32_t size_ = 0;
  std::optional<platform::TLocalTime> modifyDate_;
};

/// The files of one container, in its order.
///
/// Loading stops at the first error; what was found before it stays in the list:
/// - ETnefError "Seems not to be a TNEF file", also when the signature is cut off.
/// - ETnefError "Unexpected end of data, input file may be truncated." when the key or a record is.
/// - ETnefError for an unknown level, a wrong checksum and a date of fewer than 14 bytes.
/// - EConvertError for a date that the calendar does not have.
/// Where senders are known to differ the reader is lenient, so that nothing escapes the scan: a
/// property list that claims more than it holds ends where its data ends, keeping what was whole
/// up to there, and a date is read whatever type its attribute states.
///
/// Time and memory are linear in the size of the stream. A stream that offers its block is not
/// copied; the attachments share the block.
class TTnef {
 public:
  /// Replaces the list by the attachments between the stream's position and its end.
  virtual void LoadFromStream(TStream& stream);
  virtual ~TTnef() = default;

  /// Loads a file that nobody else may write meanwhile. Raises also EPlatformError.
  void LoadFromFile(std::string_view path);

  size_t GetCount() const noexcept { return items_.size(); }
  /// Raises EListError for an index outside the list.
  const TTnefAttachment& GetItems(size_t index) const;

 private:
  std::vector<std::unique_ptr<TTnefAttachment>> items_;
};

}  // namespace quarda
