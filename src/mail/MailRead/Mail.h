// A whole mail: the root of the part tree, the file it came from, its attachments and texts.
#pragma once

#include <Errors.h>
#include <Files.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "MailPart.h"
#include "PartLists.h"

namespace quarda {

/// The file to be written cannot be created; nothing was changed, and a later attempt may succeed.
class EFileCreateError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "EFileCreateError"; }
};

/// A mail. Loading replaces the whole content; header and body list of the mail itself keep their
/// addresses, all other parts and all header items are gone.
class TMail final : public TMailPart {
 public:
  TMail() : TMailPart(this, nullptr) {}
  ~TMail() override = default;

  /// Raises EPlatformError or EMailHeaderError; the mail is then filled in part, `LoadFailed` holds
  /// and the lists are empty.
  void LoadFromFile(std::string_view fileName);
  /// The same from the stream's position on; errors of the stream pass through.
  void LoadFromStream(TStream& stream);
  /// Reads every deferred body, then replaces the file as a whole: whoever reads it, and whatever
  /// ends this process, finds the old or the new mail. The file name of the mail stays.
  ///
  /// EFileCreateError: the file could not be created, another attempt may succeed. EPlatformError:
  /// any later failure. EError: the mail was not loaded completely and this is its own file, which
  /// keeps its bytes.
  void SaveToFile(std::string_view fileName,
                  platform::TDurability durability = platform::TDurability::kFlushed);
  /// Errors of the stream pass through, and those of `LoadBody`.
  void SaveToStream(TStream& stream);
  void LoadAllBodies();
  /// Lets the body go that was read back last, unless somebody holds or changed it.
  void ReleaseBody() noexcept;
  /// The same for all bodies that a `Releasable` mail kept: they are deferred from now on. Costs a
  /// walk over the parts once.
  void ReleaseBodies();

  /// Whether the bodies are read while the mail is parsed, or stay in the file until they are
  /// needed. Set it before loading. A mail loaded from a stream always keeps them.
  bool KeepBodies = true;
  /// Whether the bodies that are kept may be given up later, when somebody else needs the memory.
  /// Set it before loading.
  bool Releasable = false;
  const std::string& GetMailFileName() const noexcept { return fileName_; }
  /// Whether the last attempt to load ended with an error.
  bool LoadFailed() const noexcept { return loadFailed_; }

  /// Brings the part lists up to date.
  void MailPartModified();
  void UpdateMailPartList() { lists_.Rebuild(*this); }
  /// Parts that are attachments, or neither text nor multipart. An index outside the list raises
  /// EListError.
  size_t GetAttachmentCount() const noexcept { return lists_.Attachments().size(); }
  TMailPart& GetAttachments(size_t index) const;
  size_t GetTextCount() const noexcept { return lists_.Texts().size(); }
  TMailPart& GetTexts(size_t index) const;
  /// The part is destroyed. The mail itself raises EError "Cannot delete myself.".
  void DeleteAttachment(TMailPart& part);
  void DeleteText(TMailPart& part) { DeleteAttachment(part); }

  std::string GetSubject() const;
  void SetSubject(std::string_view value);
  std::string GetFrom() const;
  void SetFrom(std::string_view value) { GetHeader().SetHeaderStr("From", value); }
  std::string GetTo() const;
  void SetTo(std::string_view value) { GetHeader().SetHeaderStr("To", value); }
  std::string GetCc() const;
  void SetCc(std::string_view value) { GetHeader().SetHeaderStr("Cc", value); }
  std::string GetBcc() const;
  void SetBcc(std::string_view value) { GetHeader().SetHeaderStr("Bcc", value); }
  std::string GetDate() const;
  void SetDate(std::string_view value) { GetHeader().SetHeaderStr("Date", value); }
  std::string GetMIMEVersion() const { return GetHeader().GetHeaderStr("MIME-Version"); }
  void SetMIMEVersion(std::string_view value) { GetHeader().SetHeaderStr("MIME-Version", value); }
  std::string GetReturnPath() const;
  std::string GetMessageID() const { return GetHeader().GetHeaderStr("Message-ID"); }

  /// Append the addresses of the field, one a line.
  void GetToList(TStringList& list) const;
  void GetCcList(TStringList& list) const;
  void GetBccList(TStringList& list) const;
  void SetToList(const TStringList& list);
  void SetCcList(const TStringList& list);
  void SetBccList(const TStringList& list);

 private:
  friend class TMailPart;

  void InternLoadFromStream(TStream& stream);
  bool IsOwnFile(std::string_view fileName) const;

  TPartLists lists_;
  std::string fileName_;
  TMailPart* readBack_ = nullptr;  // whose body can be read again; null when any part is deleted
  bool keepsText_ = false;         // the text of a releasable mail is in memory
  bool loading_ = false;
  bool loadFailed_ = false;
};

}  // namespace quarda
