// The content of a part: its body decoded, and replaced by something encoded.
#include <Streams.h>

#include <algorithm>
#include <cstring>

#include "AsciiText.h"
#include "BodyLines.h"
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

// The lines that hold the encoded content. A body that nobody has asked for as a list is read from
// its text: the list would cost more than the text where lines are short.
TBodyLines TMailPart::EncodedLines(mail::TEncodeType encoding) {
  if (encoding == mail::eUUE) {
    const TStringList& lines = *ShareBody();
    const auto [first, end] = FramedLines(lines);
    return {lines, first, end};
  }
  ReadBack();
  return body_ == TBodyState::kText ? TBodyLines(text_) : TBodyLines(Lines());
}

size_t TMailPart::GetFileContent(void* buffer) {
  const mail::TEncodeType encoding = GetEncodeType();
  return EncodedLines(encoding).Join(Separator(encoding), static_cast<char*>(buffer));
}

std::string TMailPart::GetFileContent() {
  const mail::TEncodeType encoding = GetEncodeType();
  const TBodyLines lines = EncodedLines(encoding);
  std::string content(lines.Join(Separator(encoding), nullptr), '\0');
  lines.Join(Separator(encoding), content.data());
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
  const TBodyLines lines = EncodedLines(encoding);
  switch (encoding) {
    case mail::eQuotedPrintable:
      return DecodeQuotedPrintableLines(lines, buffer, buffer ? SIZE_MAX : 0);
    case mail::eBase64:
    case mail::eUUE: {
      if (!buffer) return CalcDecodeBufSize(lines.CountCharacters());
      size_t size = SIZE_MAX;  // the caller has asked for it, and made the buffer large enough
      if (!DecodeLines(lines, buffer, size, Alphabet(encoding))) {
        throw EMailDecodeError("Error decoding mail part.");
      }
      return size;
    }
    default:
      return lines.Join(Separator(encoding), static_cast<char*>(buffer));
  }
}

std::string TMailPart::DecodedContent() {
  const mail::TEncodeType encoding = RequireDecodable();
  if (encoding == mail::eQuotedPrintable) return DecodeQuotedPrintableLines(EncodedLines(encoding));
  std::string content(DecodedContent(nullptr), '\0');
  content.resize(DecodedContent(content.data()));
  return content;
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
