#include "Encodings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "BodyLines.h"
#include "EncodingKernels.h"

namespace quarda {
namespace {

constexpr std::string_view kAlphabets[] = {
    "`!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_",
    "+-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz",
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"};
static_assert(kAlphabets[meUU].size() == 64 && kAlphabets[meXX].size() == 64 &&
              kAlphabets[meBase64].size() == 64);

// The value of every character at each of the four places of a group, shifted to where it belongs
// in the 24 bits; 0 for characters outside the alphabet.
using TPlaceValues = std::array<std::array<uint32_t, 256>, 4>;

constexpr TPlaceValues MakePlaceValues(std::string_view alphabet) {
  TPlaceValues values{};
  for (uint32_t value = 0; value < alphabet.size(); ++value) {
    for (size_t place = 0; place < 4; ++place)
      values[place][static_cast<unsigned char>(alphabet[value])] = value << (18 - 6 * place);
  }
  return values;
}

constexpr TPlaceValues kPlaceValues[] = {MakePlaceValues(kAlphabets[meUU]),
                                         MakePlaceValues(kAlphabets[meXX]),
                                         MakePlaceValues(kAlphabets[meBase64])};

// Decodes the whole groups of four characters among `size` and returns the number of bytes written.
size_t DecodeGroups(const char* source, size_t size, char* target,
                    TMailEncodingType encoding) noexcept {
  const TPlaceValues& values = kPlaceValues[encoding];
  size_t at = encoding == meBase64 ? kernels::DecodeBase64(source, size, target) : 0;
  char* out = target + CalcDecodeBufSize(at);
  for (; size - at >= 4; at += 4, out += 3) {
    const auto group = reinterpret_cast<const unsigned char*>(source + at);
    const uint32_t bits =
        values[0][group[0]] | values[1][group[1]] | values[2][group[2]] | values[3][group[3]];
    out[0] = static_cast<char>(bits >> 16);
    out[1] = static_cast<char>(bits >> 8);
    out[2] = static_cast<char>(bits);
  }
  return static_cast<size_t>(out - target);
}

// Fill characters count even behind the last whole group, so a lone "=" must not go below zero.
size_t WithoutFill(size_t bytes, char beforeLast, char last) noexcept {
  const size_t fill = last != '=' ? 0 : beforeLast != '=' ? 1 : 2;
  return bytes - std::min(bytes, fill);
}

}  // namespace

bool BufferDecode(const char* source, size_t size, void* target, size_t& capacity,
                  TMailEncodingType encoding) noexcept {
  if (CalcDecodeBufSize(size) > capacity) return false;
  const size_t bytes = DecodeGroups(source, size, static_cast<char*>(target), encoding);
  const char last = size >= 1 ? source[size - 1] : '\0';
  capacity = WithoutFill(bytes, size >= 2 ? source[size - 2] : '\0', last);
  return true;
}

bool BufferEncode(const void* source, size_t size, char* target, size_t& capacity,
                  TMailEncodingType encoding) noexcept {
  const size_t needed = CalcEncodeBufSize(size);
  if (needed > capacity) return false;
  capacity = needed;
  const char* const alphabet = kAlphabets[encoding].data();
  const auto bytes = static_cast<const unsigned char*>(source);
  const auto put = [&](uint32_t bits) {
    for (int shift = 18; shift >= 0; shift -= 6) *target++ = alphabet[(bits >> shift) & 63];
  };
  size_t at = 0;
  for (; size - at >= 3; at += 3)
    put(static_cast<uint32_t>(bytes[at] << 16 | bytes[at + 1] << 8 | bytes[at + 2]));
  if (size - at == 0) return true;
  put(static_cast<uint32_t>(bytes[at] << 16 | (size - at == 2 ? bytes[at + 1] << 8 : 0)));
  target[-1] = '=';
  if (size - at == 1) target[-2] = '=';
  return true;
}

std::string TextEncode(std::string_view text, TMailEncodingType encoding) {
  std::string result(CalcEncodeBufSize(text.size()), '\0');
  size_t length = result.size();
  if (!BufferEncode(text.data(), text.size(), result.data(), length, encoding)) return {};
  result.resize(length);
  return result;
}

std::string TextDecode(std::string_view text, TMailEncodingType encoding) {
  std::string result(CalcDecodeBufSize(text.size()), '\0');
  size_t length = result.size();
  if (!BufferDecode(text.data(), text.size(), result.data(), length, encoding)) return {};
  result.resize(length);
  return result;
}

namespace {

// Decodes lines into a target: those that kernels take from where they lie, the others, whose
// groups cross line ends, by way of a small buffer.
class TLineDecoder {
 public:
  TLineDecoder(char* target, size_t capacity, TMailEncodingType encoding) noexcept
      : target_{target, capacity}, encoding_(encoding) {}

  bool Decode(TBodyLines lines) noexcept {
    std::string_view line;
    while (NextToPack(lines, line)) {
      if (!Pack(line)) return false;
    }
    return Flush();
  }
  const char* End() const noexcept { return target_.at; }

 private:
  // The next line that kernels leave to us; false at the end. What is packed is empty or waits for
  // the rest of a group.
  bool NextToPack(TBodyLines& lines, std::string_view& line) noexcept {
    if (encoding_ != meBase64 || used_ % 4 != 0 || !Flush()) return lines.Next(line);
    return kernels::DecodeBase64Lines(lines, line, target_);
  }
  bool Pack(std::string_view line) noexcept {
    while (!line.empty()) {
      const size_t piece = std::min(line.size(), sizeof packed_ - used_);
      std::memcpy(packed_ + used_, line.data(), piece);
      used_ += piece;
      line.remove_prefix(piece);
      if (used_ == sizeof packed_ && !Flush()) return false;
    }
    return true;
  }
  // Drops what fills no group: it is the end then, or there is none.
  bool Flush() noexcept {
    if (CalcDecodeBufSize(used_) > target_.room) return false;
    const size_t bytes = DecodeGroups(packed_, used_, target_.at, encoding_);
    target_.at += bytes;
    target_.room -= bytes;
    used_ = 0;
    return true;
  }

  kernels::TTarget target_;
  const TMailEncodingType encoding_;
  size_t used_ = 0;
  char packed_[4096];
};

}  // namespace

bool DecodeLines(TBodyLines lines, void* target, size_t& capacity,
                 TMailEncodingType encoding) noexcept {
  char* const start = static_cast<char*>(target);
  TLineDecoder decoder(start, capacity, encoding);
  if (!decoder.Decode(lines)) return false;
  const auto [beforeLast, last] = lines.LastTwo();
  capacity = WithoutFill(static_cast<size_t>(decoder.End() - start), beforeLast, last);
  return true;
}

}  // namespace quarda
