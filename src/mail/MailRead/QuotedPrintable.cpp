// Quoted-printable in bodies and header words. The decoder copies whole runs up to the next escape
// and can stop at any place of the text, so that it goes on from one piece of it to the next; every
// character is read once.
#include <algorithm>
#include <cstring>
#include <optional>

#include "BodyLines.h"
#include "EncodingKernels.h"
#include "Encodings.h"

namespace quarda {
namespace {

// "=" and two digits.
constexpr size_t kEscapeSize = 3;
constexpr std::string_view kLineEnd = "\r\n";

class TQuotedPrintableDecoder {
 public:
  explicit TQuotedPrintableDecoder(bool headerMode) noexcept : headerMode_(headerMode) {}

  // Decodes to `out`, which must have room for `text.size()` bytes and is moved on. Returns how
  // much of the text was read: unless it is the last piece, a possible escape at its end is not.
  size_t Decode(std::string_view text, bool isLast, char*& out) noexcept {
    size_t at = 0;
    while (!ended_ && at < text.size()) {
      if (inSoftBreak_ && IsDroppedInBreak(text[at])) {
        ++at;
        continue;
      }
      inSoftBreak_ = false;
      const auto [read, written] =
          kernels::DecodePlainQuoted(text.data() + at, text.size() - at, out, headerMode_);
      at += read;
      out += written;
      if (at == text.size()) break;
      if (text[at] == '\0') {
        ended_ = true;
      } else {
        if (text.size() - at < kEscapeSize && !isLast) break;
        at += DecodeOtherEscape(text.substr(at), out);
      }
    }
    return at;
  }
  // A NUL was met: nothing more will come.
  bool HasEnded() const noexcept { return ended_; }

 private:
  static bool IsDroppedInBreak(char c) noexcept { return c == '\r' || c == '\n' || c == '='; }

  // An "=" that does not begin two hexadecimal digits: a soft line break, or just itself.
  size_t DecodeOtherEscape(std::string_view text, char*& out) noexcept {
    const char next = text.size() > 1 ? text[1] : '\0';
    inSoftBreak_ = next == '\n' || next == '\r' || next == ' ';
    if (inSoftBreak_) return 2;
    *out++ = '=';
    return 1;
  }

  const bool headerMode_;
  bool inSoftBreak_ = false;
  bool ended_ = false;
};

// Decodes lines as if they were joined. Lines that stand joined in memory are decoded in one go;
// what does not fit into the target is decoded into a buffer and only counted.
class TJoinedLinesDecoder {
 public:
  TJoinedLinesDecoder(char* target, size_t capacity) noexcept
      : target_(target), capacity_(capacity) {}

  size_t Decode(TBodyLines lines) noexcept {
    std::string_view text;
    std::string_view next;
    for (bool more = lines.NextJoined(text); more && !decoder_.HasEnded(); text = next) {
      more = lines.NextJoined(next);
      const size_t read = DecodeText(text, !more);
      if (more) DecodeLineEnd(text.substr(read));
    }
    return size_;
  }

 private:
  // Returns how much was read.
  size_t DecodeText(std::string_view text, bool isLast) noexcept {
    size_t at = 0;
    for (bool done = false; !done;) {
      const size_t room = capacity_ - std::min(capacity_, size_);
      // Decoding in place may write as far as the source is long: the room must be known.
      const bool fits = room > 0 && capacity_ != SIZE_MAX && text.size() - at <= room;
      const std::string_view piece = text.substr(at, fits ? text.npos : sizeof buffer_);
      done = at + piece.size() == text.size();
      char* const start = fits ? target_ + size_ : buffer_;
      char* out = start;
      at += decoder_.Decode(piece, isLast && done, out);
      const auto size = static_cast<size_t>(out - start);
      if (!fits && room > 0) std::memcpy(target_ + size_, buffer_, std::min(size, room));
      size_ += size;
      done = done || decoder_.HasEnded();
    }
    return at;
  }

  // `cut` is the beginning of a possible escape that the line end completes.
  void DecodeLineEnd(std::string_view cut) noexcept {
    char text[kEscapeSize - 1 + kLineEnd.size()];
    if (decoder_.HasEnded()) return;
    char* const end = std::ranges::copy(kLineEnd, std::ranges::copy(cut, text).out).out;
    DecodeText({text, static_cast<size_t>(end - text)}, false);
  }

  TQuotedPrintableDecoder decoder_{false};
  char* const target_;
  const size_t capacity_;
  size_t size_ = 0;
  char buffer_[8192];
};

void AppendEscape(std::string& text, unsigned char c) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const char escape[] = {'=', kDigits[c >> 4], kDigits[c & 15]};
  text.append(escape, sizeof escape);
}

bool NeedsEscape(char c, bool headerMode) noexcept {
  return c == '=' || static_cast<unsigned char>(c) >= 128 || (headerMode && c == '_');
}

bool IsPlainInHeader(char c) noexcept {
  return static_cast<unsigned char>(c) >= 32 && static_cast<unsigned char>(c) < 128;
}

}  // namespace

std::string QuotedPrintableToAnsi(std::string_view text, bool headerMode) {
  std::string result(text.size(), '\0');
  char* out = result.data();
  TQuotedPrintableDecoder(headerMode).Decode(text, true, out);
  result.resize(static_cast<size_t>(out - result.data()));
  return result;
}

std::string DecodeQuotedPrintableLines(TBodyLines lines) {
  std::string result(lines.Join(kLineEnd, nullptr), '\0');
  result.resize(TJoinedLinesDecoder(result.data(), result.size()).Decode(lines));
  return result;
}

size_t DecodeQuotedPrintableLines(TBodyLines lines, void* target, size_t capacity) {
  return TJoinedLinesDecoder(static_cast<char*>(target), capacity).Decode(lines);
}

std::string AnsiToQuotedPrintable(std::string_view text, bool headerMode) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (NeedsEscape(c, headerMode)) {
      AppendEscape(result, static_cast<unsigned char>(c));
    } else {
      result.push_back(headerMode && c == ' ' ? '_' : c);
    }
  }
  return result;
}

std::string EncodeHeader(std::string_view value) {
  if (std::all_of(value.begin(), value.end(), IsPlainInHeader)) return std::string(value);
  return "=?iso-8859-1?Q?" + AnsiToQuotedPrintable(value, true) + "?=";
}

namespace {

constexpr std::string_view kWordBegin = "=?";
constexpr std::string_view kWordEnd = "?=";

struct TEncodedWord {
  char encoding;
  std::string_view text;
  size_t end;  // behind the word
};

// The word whose character set begins at `at`; nothing when it is cut off.
std::optional<TEncodedWord> ReadWord(std::string_view value, size_t at) noexcept {
  const size_t encoding = value.find('?', at);
  if (encoding == value.npos) return std::nullopt;
  const size_t text = value.find('?', encoding + 1);
  if (text == value.npos) return std::nullopt;
  const size_t end = value.find(kWordEnd, text + 1);
  if (end == value.npos) return std::nullopt;
  return TEncodedWord{value[encoding + 1], value.substr(text + 1, end - text - 1),
                      end + kWordEnd.size()};
}

std::string DecodeWord(const TEncodedWord& word) {
  switch (word.encoding) {
    case 'Q':
    case 'q':
      return QuotedPrintableToAnsi(word.text, true);
    case 'B':
    case 'b':
      return TextDecode(word.text, meBase64);
    default:
      return std::string(word.text);
  }
}

}  // namespace

std::string DecodeHeader(std::string_view value) {
  std::string result;
  size_t at = 0;
  for (size_t begin; (begin = value.find(kWordBegin, at)) != value.npos;) {
    result.append(value, at, begin - at);
    at = begin + kWordBegin.size();
    const auto word = ReadWord(value, at);
    if (!word) break;
    result += DecodeWord(*word);
    at = word->end;
  }
  return result.append(value, at);
}

}  // namespace quarda
