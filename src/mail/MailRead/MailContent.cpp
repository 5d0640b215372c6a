// The content of a part: its body decoded, and replaced by something encoded.
#include <Streams.h>

#include <algorithm>
#include <cstring>

#include "AsciiText.h"
#include "Encodings.h"
#include "MailPart.h"

namespace quarda {
namespace {

constexpr size_t kEncodedLine = 76;

TMailEncodingType Alphabet(mail::TEncodeType encoding) noexcept {
  return encoding == mail::eUUE ? meUU : meBase64;
}

bool StartsWith(std::string_view line, std::string_view word) noexcept {
  return SameAscii(line.substr(0, word.size()), word);
}

size_t TotalSize(const TStringList& lines, size_t first, size_t end) noexcept {
  size_t size = 0;
  for (size_t i = first; i < end; ++i) size += lines[i].size();
  return size;
}

// Copies the lines with a separator between them and returns their length; a null target only
// counts.
size_t JoinLines(const TStringList& lines, size_t first, size_t end, std::string_view separator,
                 char* target) noexcept {
  if (first >= end) return 0;
  const size_t size = TotalSize(lines, first, end) + (end - first - 1) * separator.size();
  if (!target) return size;
  for (size_t i = first; i < end; ++i) {
    if (i > first) target = std::copy(separator.begin(), separator.end(), target);
    target = std::copy(lines[i].begin(), lines[i].end(), target);
  }
  return size;
}

// What stands between the lines of the raw content.
std::string_view Separator(mail::TEncodeType encoding) noexcept {
  return encoding == mail::eBase64 || encoding == mail::eUUE ? "" : "\r\n";
}

// The lines between "begin" and "end" of a uuencoded body; all of them when there is no such frame.
// Empty lines may remain at both ends: they add nothing.
std::pair<size_t, size_t> FramedLines(const TStringList& lines) {
  const auto isEmpty = [&](ptrdiff_t i) { return lines[static_cast<size_t>(i)].empty(); };
  const auto startsWith = [&](ptrdiff_t i, std::string_view word) {
    return StartsWith(lines[static_cast<size_t>(i)], word);
  };
  const auto count = static_cast<ptrdiff_t>(lines.Count());
  ptrdiff_t first = 0;
  ptrdiff_t last = count - 1;
  while (first < count && isEmpty(first)) ++first;
  if (first == count) return {0, 0};
  while (last > first && isEmpty(last)) --last;
  while (first < last && !startsWith(first, "begin ")) ++first;
  if (++first >= count) first = 0;
  while (first < last && !startsWith(last, "end")) --last;
  last -= 2;
  if (last < 0) last = count - 1;
  return {static_cast<size_t>(first), static_cast<size_t>(std::max(first, last + 1))};
}

}  // namespace

// The lines that hold the encoded content, from the first up to the second (exclusive).
std::pair<size_t, size_t> TMailPart::EncodedLines(mail::TEncodeType encoding) {
  const TStringList& lines = GetBody();
  if (encoding == mail::eUUE) return FramedLines(lines);
  return {0, lines.Count()};
}

size_t TMailPart::GetFileContent(void* buffer) {
  const mail::TEncodeType encoding = GetEncodeType();
  const auto [first, end] = EncodedLines(encoding);
  return JoinLines(*lines_, first, end, Separator(encoding), static_cast<char*>(buffer));
}

std::string TMailPart::GetFileContent() {
  const mail::TEncodeType encoding = GetEncodeType();
  if (encoding != mail::eUUE) return GetBody().SeparateText(Separator(encoding));
  std::string content(GetFileContent(nullptr), '\0');
  GetFileContent(content.data());
  return content;
}

mail::TEncodeType TMailPart::RequireDecodable() const {
  const mail::TEncodeType encoding = GetEncodeType();
  if (encoding != mail::eUnknown) return encoding;
  throw EMailDecodeError(
      "Cannot decode mail part. [ContentTransferEncoding: " + GetContentTransferEncoding() + "]");
}

size_t TMailPart::DecodedContent(void* buffer) {
  const mail::TEncodeType encoding = RequireDecodable();
  const auto [first, end] = EncodedLines(encoding);
  switch (encoding) {
    case mail::eQuotedPrintable:
      return DecodeQuotedPrintableLines(*lines_, first, end, buffer, buffer ? SIZE_MAX : 0);
    case mail::eBase64:
    case mail::eUUE: {
      size_t size = CalcDecodeBufSize(TotalSize(*lines_, first, end));
      if (!buffer) return size;
      if (!DecodeLines(*lines_, first, end, buffer, size, Alphabet(encoding))) {
        throw EMailDecodeError("Error decoding mail part.");
      }
      return size;
    }
    default:
      return GetFileContent(buffer);
  }
}

std::string TMailPart::DecodedContent() {
  switch (RequireDecodable()) {
    case mail::eQuotedPrintable: {
      const TStringList& lines = GetBody();
      return DecodeQuotedPrintableLines(lines, 0, lines.Count());
    }
    case mail::eBase64:
    case mail::eUUE: {
      std::string content(DecodedContent(nullptr), '\0');
      content.resize(DecodedContent(content.data()));
      return content;
    }
    default:
      return GetFileContent();
  }
}

void TMailPart::DecodedContentStream(TStream& stream) {
  const std::string content = DecodedContent();
  stream.Write(content.data(), content.size());
}

void TMailPart::SetContent(mail::TEncodeType encoding, const void* data, size_t size) {
  SetContent(encoding,
             data ? std::string_view(static_cast<const char*>(data), size) : std::string_view());
}

void TMailPart::SetContent(mail::TEncodeType encoding, std::string_view text) {
  if (encoding == mail::eCurrent) encoding = GetEncodeType();
  TStringList& lines = Lines();
  switch (encoding) {
    case mail::eQuotedPrintable:
      lines.SetText(AnsiToQuotedPrintable(text, false));
      break;
    case mail::eBase64:
    case mail::eUUE: {
      TTextBlock block(CalcEncodeBufSize(text.size()));
      size_t capacity = block.Size();
      BufferEncode(text.data(), text.size(), block.Data(), capacity, Alphabet(encoding));
      lines.Clear();
      lines.Keep(block);
      for (std::string_view rest = block.View(); !rest.empty();) {
        lines.AddSlice(rest.substr(0, kEncodedLine));
        rest.remove_prefix(std::min(kEncodedLine, rest.size()));
      }
      break;
    }
    default:
      lines.SetText(text);
  }
  UseLines();
  if (encoding != mail::eUnknown) {
    header_.Replace("Content-Transfer-Encoding", mail::EncodeTypeNames[encoding]);
  }
  SetModified(true);
}

void TMailPart::SetContent(mail::TEncodeType encoding, const TStringList& lines) {
  SetContent(encoding, std::string_view(lines.Text()));
}

void TMailPart::SetContent(mail::TEncodeType encoding, TStream* stream) {
  const uint64_t size = stream ? stream->Size() : 0;
  if (!stream || stream->Position() >= size) {
    SetContent(encoding, std::string_view());
  } else if (const auto content = stream->Content()) {
    SetContent(encoding, content->substr(static_cast<size_t>(stream->Position())));
  } else {
    std::string copy(static_cast<size_t>(size - stream->Position()), '\0');
    copy.resize(stream->Read(copy.data(), copy.size()));
    SetContent(encoding, std::string_view(copy));
  }
  if (stream) stream->SetPosition(size);
}

}  // namespace quarda
