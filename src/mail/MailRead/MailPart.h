// One node of a mail's part tree (RFC 2045 and 2046; dispositions as in RFC 2183).
#pragma once

#include <Errors.h>
#include <StringList.h>
#include <TextBlock.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Header.h"
#include "MailTypes.h"

namespace quarda {

class TBodyLines;
class TMail;
class TMailPart;
class TStream;
class TTextStreamer;

/// A body that cannot be decoded.
class EMailDecodeError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "EMailDecodeError"; }
};

/// A part: its header, its body as lines, its child parts, which it owns. References to a part are
/// valid until it, a parent of it or the mail is deleted, cleared, assigned or loaded.
///
/// A body read from memory stays the slice of the text it was read from until somebody asks for its
/// lines; a deferred one stays in the mail's file and is read when it is needed: whatever reads a
/// body raises EPlatformError when the file cannot be read, and finds no lines when it is gone. The
/// mail keeps one body at a time that was read for its content or for `ShareBody` alone; it is read
/// again when it is needed again, with EError when it is not the same any more. An index outside
/// the children raises EListError. Nothing here follows the nesting of the parts by recursion.
class TMailPart {
 public:
  TMailPart(TMail* mail, TMailPart* parent) noexcept;
  TMailPart(const TMailPart&) = delete;
  TMailPart& operator=(const TMailPart&) = delete;
  virtual ~TMailPart();

  /// Copies header, body and the whole child tree.
  void Assign(TMailPart& source);
  TMailPart& Add();
  void Delete(size_t index);
  /// Nothing when the part is no child.
  void Delete(const TMailPart& part);
  /// -1 when the part is no child. Costs little for one child after the other.
  ptrdiff_t IndexOf(const TMailPart& part) const noexcept;
  void Move(size_t from, size_t to);
  void Exchange(size_t index1, size_t index2);
  /// Deletes all children.
  void Clear();
  size_t GetCount() const noexcept { return parts_.size(); }
  TMailPart& GetParts(size_t index) const;
  /// Copies the part's content into the child.
  void SetParts(size_t index, TMailPart& part);
  TMailPart* GetParent() const noexcept { return parent_; }
  TMail* GetMail() const noexcept { return mail_; }

  THeader& GetHeader() noexcept { return header_; }
  const THeader& GetHeader() const noexcept { return header_; }
  void SetHeader(const THeader& header);
  /// The lines of the body, read from the mail's file first when they are deferred. The list has
  /// the same address as long as the part lives.
  TStringList& GetBody();
  void SetBody(const TStringList& lines);
  /// The same list as `GetBody`, for somebody who says when it is needed no more: a deferred body
  /// that nobody holds or changed is not kept in memory for ever.
  std::shared_ptr<TStringList> ShareBody();
  /// Whether the body is in memory.
  bool IsBodyResident() const noexcept { return body_ != TBodyState::kDeferred; }
  void LoadBody();
  /// Makes the body empty, without reading it.
  void DropBody();

  /// Own changes and those of the header, not those of the children.
  bool GetModified() const noexcept { return modified_ || header_.GetModified(); }
  /// Sets the mark of this part; every part above it is marked as modified.
  void SetModified(bool modified) noexcept;

  std::string GetContentType() const;
  void SetContentType(std::string_view value);
  std::string GetContentTypeType() const;
  void SetContentTypeType(std::string_view type);
  std::string GetContentTypeSubType() const;
  void SetContentTypeSubType(std::string_view subType);
  std::string GetContentTransferEncoding() const;
  void SetContentTransferEncoding(std::string_view value);
  mail::TEncodeType GetEncodeType() const;
  std::string GetBoundary() const;
  void SetBoundary(std::string_view boundary);
  std::string GetContentID() const;
  void SetContentID(std::string_view value);
  std::string GetName() const;
  void SetName(std::string_view name);
  /// A generated one for an attachment that has none.
  std::string GetFileName() const;
  void SetFileName(std::string_view fileName);
  bool GetMultipartSection() const;
  void SetMultipartSection(bool multipart);
  /// The lines that open and close a child; empty without a boundary.
  std::string BoundaryBegin() const;
  std::string BoundaryEnd() const;
  bool IsAttachment() const;
  bool IsText() const;

  /// The raw, still encoded content. The buffer form returns its length and fills the buffer unless
  /// that is null.
  size_t GetFileContent(void* buffer);
  std::string GetFileContent();
  /// The decoded content. With a null buffer the size that a buffer must have, otherwise the number
  /// of bytes decoded. Raises EMailDecodeError.
  size_t DecodedContent(void* buffer);
  std::string DecodedContent();
  void DecodedContentStream(TStream& stream);
  /// Replaces the body by the encoded content and names the encoding in the header; `eCurrent`
  /// keeps the part's encoding.
  void SetContent(mail::TEncodeType encoding, const void* data, size_t size);
  void SetContent(mail::TEncodeType encoding, std::string_view text);
  void SetContent(mail::TEncodeType encoding, const TStringList& lines);
  /// From the stream's position to its end; null gives no content.
  void SetContent(mail::TEncodeType encoding, TStream* stream);

  /// Reads header, body and children up to the end of the input or the parent's next boundary.
  /// After an error the part holds what was read before it.
  void LoadFromTextStreamer(TTextStreamer& streamer);
  void SaveToTextStreamer(TTextStreamer& streamer);

 private:
  friend class TMail;
  friend class TMailParser;
  friend class TPartLists;

  enum class TBodyState : uint8_t { kLines, kText, kDeferred };
  enum class TListing : uint8_t { kNone, kAttachment, kText };

  // Tells the document when the fields change: they decide what the part is listed as.
  class TPartHeader final : public THeader {
   public:
    explicit TPartHeader(TMailPart& part) noexcept : part_(part) {}

   private:
    void ChangeNotify() override;
    TMailPart& part_;
  };

  using TParts = std::vector<std::unique_ptr<TMailPart>>;

  static void DestroyAll(TParts parts) noexcept;
  TMailPart& Append();
  void CheckIndex(size_t index) const;
  void NotifyMail();
  void NotifyReordered();
  TParts CopyChildren(TMailPart& source);
  void AssignOwn(TMailPart& source);
  TStringList& Lines();
  bool ReadBack();
  void LetBodyGo() noexcept;
  void KeepReadBody() noexcept;
  void UseLines() noexcept;
  void UseText(TTextBlock block, std::string_view text);
  void SplitText();
  void ReadDeferred();
  void ClearMarks() noexcept;
  void MarkAbove() noexcept;
  void SaveOwn(TTextStreamer& streamer);
  void DropStaleBoundary();
  std::string MainValue() const;
  bool HasDispositionOf(std::string_view value) const;
  TListing Classify(std::string* boundary = nullptr) const;
  std::string Parameter(std::string_view field, std::string_view name) const;
  void SetParameter(std::string_view name, std::string_view value);
  TBodyLines EncodedLines(mail::TEncodeType encoding);
  mail::TEncodeType RequireDecodable() const;

  bool modified_ = false;
  TBodyState body_ = TBodyState::kLines;
  bool isFromFile_ = false;  // kText: so lies the body in the mail's file
  bool splitsAtCr_ = false;  // each time that it is read from there
  TListing listing_ = TListing::kNone;
  bool changePending_ = false;  // noted for the part lists
  TMail* const mail_;
  TMailPart* const parent_;
  TPartHeader header_{*this};
  std::shared_ptr<TStringList> lines_;  // made when needed, then kept while somebody may hold it
  TTextBlock textBlock_;                // kText: holds text_
  std::string_view text_;               // kText: the body with its line ends
  uint64_t bodyStart_ = 0;              // where it lies in the mail's file
  uint64_t bodyEnd_ = 0;
  size_t bodyHash_ = 0;   // of a body that was read and let go; 0: never
  uint64_t order_ = 0;    // position in the document as the part lists know it; 0: not listed
  size_t indexHint_ = 0;  // where the parent had it last
  TParts parts_;
};

}  // namespace quarda
