// What a part's header fields say about it, and what the part is taken for.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "Addresses.h"
#include "AsciiText.h"
#include "Encodings.h"
#include "MailPart.h"

namespace quarda {
namespace {

constexpr std::string_view kContentType = "Content-Type";
constexpr std::string_view kDisposition = "Content-Disposition";
constexpr std::string_view kTransferEncoding = "Content-Transfer-Encoding";

// The value of a line `name=value`, or nothing when it is another one.
std::optional<std::string_view> ValueOf(std::string_view line, std::string_view name) noexcept {
  if (line.size() <= name.size() || line[name.size()] != '=' ||
      !SameAscii(line.substr(0, name.size()), name)) {
    return std::nullopt;
  }
  return line.substr(name.size() + 1);
}

std::string_view TypeOf(std::string_view contentType) noexcept {
  return contentType.substr(0, contentType.find('/'));
}

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace

std::string TMailPart::Parameter(std::string_view field, std::string_view name) const {
  THeaderValues values(header_, field);
  while (values.Next()) {
    if (const auto value = ValueOf(values.Line(), name)) return RemoveQuotes(*value);
  }
  return {};
}

void TMailPart::SetParameter(std::string_view name, std::string_view value) {
  THeaderItem* item = header_.GetHeader(kContentType);
  if (!item) item = &header_.Add(kContentType, {});
  item->GetValues().SetValue(name, value.empty() ? std::string() : Quoted(value));
  SetModified(true);
}

// A part without children has no use for a boundary. This leaves an empty content type in a part
// that had none, which shows when the part is written the next time.
void TMailPart::DropStaleBoundary() {
  THeaderValues values(header_, kContentType);
  bool stale = !values.Found();
  while (!stale && values.Next()) stale = ValueOf(values.Line(), "boundary").has_value();
  if (stale) SetBoundary({});
}

// What the content type field says; empty when it says nothing.
std::string TMailPart::MainValue() const {
  THeaderValues values(header_, kContentType);
  while (values.Next()) {
    if (values.Line().find('=') == std::string_view::npos) return std::string(values.Line());
  }
  return {};
}

std::string TMailPart::GetContentType() const {
  std::string type = MainValue();
  if (type.empty() && !IsAttachment()) type = "text/plain";
  return type;
}

void TMailPart::SetContentType(std::string_view value) {
  if (THeaderItem* const item = header_.GetHeader(kContentType)) {
    TStringList& values = item->GetValues();
    size_t i = 0;
    while (i < values.Count() && values[i].find('=') != std::string_view::npos) ++i;
    if (i < values.Count()) {
      values.SetLine(i, value);
    } else {
      values.Insert(0, value);
    }
  } else {
    header_.Add(kContentType, value);
  }
  NotifyMail();
  SetModified(true);
}

std::string TMailPart::GetContentTypeType() const {
  const std::string type = GetContentType();
  return std::string(TypeOf(type));
}

std::string TMailPart::GetContentTypeSubType() const {
  const std::string type = GetContentType();
  return type.substr(type.find('/') + 1);  // npos + 1 is the whole
}

void TMailPart::SetContentTypeType(std::string_view type) {
  const std::string old = GetContentType();
  const size_t slash = old.find('/');
  SetContentType(std::string(type) +
                 (slash == std::string::npos ? std::string("/plain") : old.substr(slash)));
}

void TMailPart::SetContentTypeSubType(std::string_view subType) {
  const std::string old = GetContentType();
  const size_t slash = old.find('/');
  SetContentType((slash == std::string::npos ? std::string("text/") : old.substr(0, slash + 1))
                     .append(subType));
}

std::string TMailPart::GetContentTransferEncoding() const {
  THeaderValues values(header_, kTransferEncoding);
  if (!values.Found()) return "7bit";
  return values.Next() ? std::string(values.Line()) : std::string();
}

void TMailPart::SetContentTransferEncoding(std::string_view value) {
  header_.Replace(kTransferEncoding, value);
  SetModified(true);
}

mail::TEncodeType TMailPart::GetEncodeType() const {
  const std::string encoding = GetContentTransferEncoding();
  for (int type = mail::e8bit; type <= mail::eUUE; ++type) {
    if (SameAscii(encoding, mail::EncodeTypeNames[type])) {
      return static_cast<mail::TEncodeType>(type);
    }
  }
  return mail::eUnknown;
}

std::string TMailPart::GetBoundary() const { return Parameter(kContentType, "boundary"); }

void TMailPart::SetBoundary(std::string_view boundary) { SetParameter("boundary", boundary); }

std::string TMailPart::GetContentID() const { return header_.GetHeaderStr("Content-ID"); }

void TMailPart::SetContentID(std::string_view value) {
  if (value.empty()) {
    header_.Delete("Content-ID");
  } else {
    header_.SetHeaderStr("Content-ID", value);
  }
  SetModified(true);
}

std::string TMailPart::GetName() const { return DecodeHeader(Parameter(kContentType, "name")); }

void TMailPart::SetName(std::string_view name) { SetParameter("name", name); }

std::string TMailPart::GetFileName() const {
  std::string name = DecodeHeader(Parameter(kDisposition, "filename"));
  if (name.empty() && parent_ && IsAttachment()) {
    char number[24];
    std::snprintf(number, sizeof(number), "%05lld",
                  static_cast<long long>(parent_->IndexOf(*this)));
    name = std::string("Att").append(number).append(".txt");
  }
  return name;
}

void TMailPart::SetFileName(std::string_view fileName) {
  if (fileName.empty()) {
    header_.Delete(kDisposition);
  } else {
    THeaderItem* item = header_.GetHeader(kDisposition);
    if (!item) item = &header_.Add(kDisposition, {});
    const std::string parameter = "filename=" + Quoted(fileName);
    const TStringListUpdate update(item->GetValues());
    item->ClearValues();
    item->AddValue("attachment");
    item->AddValue(parameter);
  }
  NotifyMail();
  SetModified(true);
}

bool TMailPart::GetMultipartSection() const {
  return SameAscii(TypeOf(GetContentType()), "multipart");
}

void TMailPart::SetMultipartSection(bool multipart) {
  SetContentType(multipart ? "multipart/mixed" : "text/plain");
}

std::string TMailPart::BoundaryBegin() const {
  const std::string boundary = GetBoundary();
  return boundary.empty() ? boundary : "--" + boundary;
}

std::string TMailPart::BoundaryEnd() const {
  const std::string begin = BoundaryBegin();
  return begin.empty() ? begin : begin + "--";
}

bool TMailPart::HasDispositionOf(std::string_view value) const {
  THeaderValues values(header_, kDisposition);
  while (values.Next()) {
    if (SameAscii(values.Line(), value)) return true;
  }
  return false;
}

bool TMailPart::IsAttachment() const {
  if (header_.IndexOf(kDisposition) < 0) return false;
  if (HasDispositionOf("attachment") ||
      !DecodeHeader(Parameter(kDisposition, "filename")).empty() || !GetName().empty()) {
    return true;
  }
  if (!HasDispositionOf("inline")) return false;
  const ptrdiff_t index = header_.IndexOf(kContentType);
  if (index < 0) return true;
  const size_t field = static_cast<size_t>(index);
  const std::string text = std::string(header_.NameOf(field)) + ": " + header_.ValuesAsText(field);
  return text.find(" text/") == std::string::npos;
}

bool TMailPart::IsText() const { return SameAscii(TypeOf(GetContentType()), "text"); }

// What the document lists the part as. Fetches the boundary on the way.
TMailPart::TListing TMailPart::Classify(std::string* boundary) const {
  bool hasType = false;
  bool isMultipart = false;
  bool isText = true;  // also without a type
  THeaderValues values(header_, kContentType);
  while (values.Next()) {
    const std::string_view line = values.Line();
    if (line.find('=') == std::string_view::npos) {
      if (!std::exchange(hasType, true)) {
        const std::string_view type = TypeOf(line);
        isMultipart = SameAscii(type, "multipart");
        isText = line.empty() || SameAscii(type, "text");
      }
    } else if (boundary) {
      if (const auto value = ValueOf(line, "boundary")) {
        *boundary = RemoveQuotes(*value);
        boundary = nullptr;
      }
    }
    if (hasType && !boundary) break;
  }
  if (isMultipart) return TListing::kNone;
  return isText && !IsAttachment() ? TListing::kText : TListing::kAttachment;
}

}  // namespace quarda
