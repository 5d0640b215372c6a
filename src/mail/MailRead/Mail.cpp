#include "Mail.h"

#include <CodePage.h>
#include <Files.h>
#include <PlatformError.h>
#include <Streams.h>

#include <utility>
#include <vector>

#include "Addresses.h"
#include "Encodings.h"
#include "TextStreamer.h"

namespace quarda {
namespace {

constexpr int32_t kLargestWholeFile = 15728640;
constexpr uint64_t kWorthReleasing = 65536;

TMemoryStream ReadFile(std::string_view fileName) {
  platform::TFile file(fileName, platform::TOpenMode::kReadShared);
  TTextBlock block(static_cast<size_t>(file.Size()));
  const size_t size = file.Read(block.Data(), block.Size());
  if (size < block.Size()) return TMemoryStream(block.View().substr(0, size));
  return TMemoryStream(std::move(block));
}

TMailPart& At(const std::vector<TMailPart*>& list, size_t index) {
  if (index < list.size()) return *list[index];
  RaiseListIndex(static_cast<ptrdiff_t>(index));
}

TReplacingFileStream CreateFile(std::string_view fileName, platform::TDurability durability) {
  try {
    return TReplacingFileStream(fileName, durability);
  } catch (const platform::EPlatformError& error) {
    throw EFileCreateError(error.what());
  }
}

/// An encoded word with its line breaks escaped. It keeps them otherwise, and what stands behind
/// one would be written as fields and body of its own, which no check has seen.
std::string OnOneLine(std::string_view word) {
  std::string line;
  line.reserve(word.size());
  for (const char c : word) {
    if (c == '\r') {
      line += "=0D";
    } else if (c == '\n') {
      line += "=0A";
    } else {
      line += c;
    }
  }
  return line;
}

}  // namespace

void TMail::LoadFromFile(std::string_view fileName) {
  fileName_ = std::string(fileName);
  loadFailed_ = true;
  if (quarda::GetFileSize(fileName_) < kLargestWholeFile) {
    TMemoryStream stream = ReadFile(fileName_);
    InternLoadFromStream(stream);
    keepsText_ = KeepBodies && Releasable && stream.Size() >= kWorthReleasing;
  } else {
    TFileStream stream(fileName_, platform::TOpenMode::kReadShared);
    InternLoadFromStream(stream);
  }
}

void TMail::LoadFromStream(TStream& stream) {
  fileName_.clear();
  InternLoadFromStream(stream);
}

void TMail::InternLoadFromStream(TStream& stream) {
  loadFailed_ = true;
  keepsText_ = false;
  if (fileName_.empty()) KeepBodies = true;
  lists_.Clear();
  // Nobody sees the lists while the tree grows, so they are made once, of the whole.
  loading_ = true;
  try {
    TTextStreamer streamer(stream, TStreamerMode::kRead);
    LoadFromTextStreamer(streamer);
  } catch (...) {
    loading_ = false;
    throw;
  }
  loading_ = false;
  lists_.ListRead(*this);
  loadFailed_ = false;
}

bool TMail::IsOwnFile(std::string_view fileName) const {
  return !fileName_.empty() &&
         platform::SameAnsiText(platform::FullPath(fileName), platform::FullPath(fileName_));
}

void TMail::SaveToFile(std::string_view fileName, platform::TDurability durability) {
  if (loadFailed_ && IsOwnFile(fileName)) {
    throw EError("The mail was not read completely; its file is left as it is.");
  }
  LoadAllBodies();
  TReplacingFileStream stream = CreateFile(fileName, durability);
  SaveToStream(stream);
  stream.Commit();
}

void TMail::SaveToStream(TStream& stream) {
  LoadAllBodies();
  TTextStreamer streamer(stream, TStreamerMode::kWrite);
  SaveToTextStreamer(streamer);
  streamer.Flush();
}

void TMail::ReleaseBody() noexcept {
  if (readBack_) readBack_->LetBodyGo();
  readBack_ = nullptr;
}

void TMail::ReleaseBodies() {
  ReleaseBody();
  if (!std::exchange(keepsText_, false)) return;
  std::vector<TMailPart*> pending{this};
  while (!pending.empty()) {
    TMailPart& part = *pending.back();
    pending.pop_back();
    if (part.body_ == TBodyState::kText) part.LetBodyGo();
    for (const auto& child : part.parts_) pending.push_back(child.get());
  }
}

void TMail::LoadAllBodies() {
  keepsText_ = false;
  std::vector<TMailPart*> pending{this};
  while (!pending.empty()) {
    TMailPart& part = *pending.back();
    pending.pop_back();
    part.LoadBody();
    for (size_t i = part.GetCount(); i > 0; --i) pending.push_back(&part.GetParts(i - 1));
  }
}

void TMail::MailPartModified() {
  if (!loading_) lists_.Update(*this);
}

TMailPart& TMail::GetAttachments(size_t index) const { return At(lists_.Attachments(), index); }

TMailPart& TMail::GetTexts(size_t index) const { return At(lists_.Texts(), index); }

void TMail::DeleteAttachment(TMailPart& part) {
  if (&part == this) throw EError("Cannot delete myself.");
  if (TMailPart* const parent = part.GetParent()) parent->Delete(part);
  SetModified(true);
}

std::string TMail::GetSubject() const { return DecodeHeader(GetHeader().GetHeaderStr("Subject")); }

void TMail::SetSubject(std::string_view value) {
  GetHeader().SetHeaderStr("Subject", OnOneLine(EncodeHeader(value)));
}

std::string TMail::GetFrom() const { return DecodeHeader(GetHeader().GetHeaderStr("From")); }

std::string TMail::GetTo() const { return DecodeHeader(GetHeader().GetHeaderStr("To")); }

std::string TMail::GetCc() const { return DecodeHeader(GetHeader().GetHeaderStr("Cc")); }

std::string TMail::GetBcc() const { return DecodeHeader(GetHeader().GetHeaderStr("Bcc")); }

std::string TMail::GetDate() const { return DecodeHeader(GetHeader().GetHeaderStr("Date")); }

std::string TMail::GetReturnPath() const {
  return DecodeHeader(GetHeader().GetHeaderStr("Return-Path"));
}

void TMail::GetToList(TStringList& list) const { ExtractAddressList(GetTo(), list); }

void TMail::GetCcList(TStringList& list) const { ExtractAddressList(GetCc(), list); }

void TMail::GetBccList(TStringList& list) const { ExtractAddressList(GetBcc(), list); }

void TMail::SetToList(const TStringList& list) { SetTo(MakeAddressList(list)); }

void TMail::SetCcList(const TStringList& list) { SetCc(MakeAddressList(list)); }

void TMail::SetBccList(const TStringList& list) { SetBcc(MakeAddressList(list)); }

}  // namespace quarda
