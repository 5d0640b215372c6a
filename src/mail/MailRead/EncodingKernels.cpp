// Base64, 32 characters at a time. The upper four bits of a character select its group in the
// alphabet ("A-O", "P-Z", "0-9", ...), and with it what must be added to make its 6-bit value; only
// "/" shares a group with "+" and selects the entry below. Whether the character is in the alphabet
// at all is the AND of two look-ups, one by its upper and one by its lower four bits; the value of
// one that is not is cleared, so foreign characters cost nothing. Two multiplications then put four
// values into three bytes.
//
// A line is never longer than some blocks and a rest, and the rest is decoded by a last block that
// overlaps the one before it: line ends cost no more than that, and nothing is put together first.
#include "EncodingKernels.h"

#include <Processor.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "BodyLines.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace quarda::kernels {
namespace {

constexpr std::array<int8_t, 256> MakeHexDigits() {
  std::array<int8_t, 256> values{};
  values.fill(-1);
  for (int8_t digit = 0; digit < 10; ++digit) values[static_cast<size_t>('0' + digit)] = digit;
  for (int8_t digit = 10; digit < 16; ++digit) {
    values[static_cast<size_t>('A' + digit - 10)] = digit;
    values[static_cast<size_t>('a' + digit - 10)] = digit;
  }
  return values;
}

constexpr std::array<int8_t, 256> kHexDigits = MakeHexDigits();

// The byte that two hexadecimal digits denote; negative when they are none.
inline int HexByte(const char* digits) noexcept {
  return kHexDigits[static_cast<unsigned char>(digits[0])] * 16 |
         kHexDigits[static_cast<unsigned char>(digits[1])];
}

TProgress DecodePlainBytewise(const char* source, size_t size, char* target, bool headerMode,
                              TProgress done) noexcept {
  const char blank = headerMode ? ' ' : '_';
  auto [at, out] = done;
  while (at < size && source[at] != '\0') {
    if (source[at] != '=') {
      target[out++] = source[at] == '_' ? blank : source[at];
      ++at;
      continue;
    }
    const int byte = size - at >= 3 ? HexByte(source + at + 1) : -1;
    if (byte < 0) break;
    target[out++] = static_cast<char>(byte);
    at += 3;
  }
  return {at, out};
}

#if defined(__x86_64__) || defined(__i386__)

#define QD_AVX2 __attribute__((target("avx2")))

constexpr size_t kBlock = 32;
constexpr size_t kBlockBytes = 24;

QD_AVX2 inline __m256i Load(const char* source) noexcept {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
}

// The same 16 entries for both halves of a register.
QD_AVX2 inline __m256i Table(char e0, char e1, char e2, char e3, char e4, char e5, char e6, char e7,
                             char e8, char e9, char e10, char e11, char e12, char e13, char e14,
                             char e15) noexcept {
  return _mm256_setr_epi8(e0, e1, e2, e3, e4, e5, e6, e7, e8, e9, e10, e11, e12, e13, e14, e15, e0,
                          e1, e2, e3, e4, e5, e6, e7, e8, e9, e10, e11, e12, e13, e14, e15);
}

QD_AVX2 inline __m256i Base64Values(__m256i text) noexcept {
  // One bit for each shape of group: 1 "+/", 2 "0-9", 4 "A-O" and "a-o", 8 "P-Z" and "p-z", 16
  // none.
  const __m256i groupOfUpper = Table(16, 16, 1, 2, 4, 8, 4, 8, 16, 16, 16, 16, 16, 16, 16, 16);
  // The groups that lack a character with these lower bits.
  const __m256i lackingLower =
      Table(21, 17, 17, 17, 17, 17, 17, 17, 17, 17, 19, 26, 27, 27, 27, 26);
  const __m256i distance = Table(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0,
                                 0, 0, 0, 0, 0, 0, 0);
  const __m256i lowerBits = _mm256_set1_epi8(0x0F);
  const __m256i upper = _mm256_and_si256(_mm256_srli_epi32(text, 4), lowerBits);
  const __m256i lower = _mm256_and_si256(text, lowerBits);
  const __m256i foreign = _mm256_and_si256(_mm256_shuffle_epi8(groupOfUpper, upper),
                                           _mm256_shuffle_epi8(lackingLower, lower));
  const __m256i isSlash = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('/'));
  const __m256i value =
      _mm256_add_epi8(text, _mm256_shuffle_epi8(distance, _mm256_add_epi8(upper, isSlash)));
  return _mm256_and_si256(value, _mm256_cmpeq_epi8(foreign, _mm256_setzero_si256()));
}

// Two times 12 decoded bytes, each followed by 4 of no meaning.
QD_AVX2 inline __m256i Base64Bytes(__m256i text) noexcept {
  const __m256i pairs = _mm256_maddubs_epi16(Base64Values(text), _mm256_set1_epi32(0x01400140));
  const __m256i triples = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  return _mm256_shuffle_epi8(triples,
                             Table(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

// Writes four bytes of no meaning behind the decoded ones.
QD_AVX2 inline void DecodeBlock(const char* source, char* target) noexcept {
  const __m256i bytes = Base64Bytes(Load(source));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm256_castsi256_si128(bytes));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(target + kBlockBytes / 2),
                   _mm256_extracti128_si256(bytes, 1));
}

QD_AVX2 inline void DecodeBlockExactly(const char* source, char* target) noexcept {
  const __m256i bytes = Base64Bytes(Load(source));
  const __m128i second = _mm256_extracti128_si256(bytes, 1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm256_castsi256_si128(bytes));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 12), second);
  _mm_storeu_si32(target + 20, _mm_srli_si128(second, 8));
}

// `size` is a multiple of four and at least one block.
QD_AVX2 inline void DecodeGroups(const char* source, size_t size, char* target) noexcept {
  const char* const end = source + size;
  // 8 more characters make 6 bytes.
  while (static_cast<size_t>(end - source) >= kBlock + 8) {
    DecodeBlock(source, target);
    source += kBlock;
    target += kBlockBytes;
  }
  if (static_cast<size_t>(end - source) >= kBlock) {
    DecodeBlockExactly(source, target);
    source += kBlock;
    target += kBlockBytes;
  }
  const size_t missing = kBlock - static_cast<size_t>(end - source);
  if (missing < kBlock) DecodeBlockExactly(source - missing, target - missing / 4 * 3);
}

QD_AVX2 void DecodeBase64Avx2(const char* source, size_t size, char* target) noexcept {
  DecodeGroups(source, size, target);
}

QD_AVX2 bool DecodeBase64LinesAvx2(TBodyLines& lines, std::string_view& line,
                                   TTarget& target) noexcept {
  TBodyLines rest = lines;
  TTarget out = target;
  bool stopped = false;
  while (rest.Next(line)) {
    const size_t bytes = line.size() / 4 * 3;
    stopped = line.size() % 4 != 0 || line.size() < kBlock || out.room < bytes;
    if (stopped) break;
    DecodeGroups(line.data(), line.size(), out.at);
    out.at += bytes;
    out.room -= bytes;
  }
  lines = rest;
  target = out;
  return stopped;
}

// Quoted-printable, two blocks at a time. All "=" of the two are found at once; the run before each
// is copied as if it were two blocks long, so that its length decides nothing. An escape and a soft
// line break are told apart without a branch, because mails mix them at random.

constexpr size_t kSpan = 2 * kBlock;
constexpr size_t kEscapeSize = 3;
// A run may begin behind an escape that ends behind the span.
constexpr size_t kReach = 2 * kSpan + kEscapeSize;

// A bit for each character that a run ends at: "=" and NUL.
QD_AVX2 inline uint32_t SpecialsInBlock(const char* source) noexcept {
  const __m256i text = Load(source);
  return static_cast<uint32_t>(
      _mm256_movemask_epi8(_mm256_or_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('=')),
                                           _mm256_cmpeq_epi8(text, _mm256_setzero_si256()))));
}

QD_AVX2 inline uint64_t SpecialsInSpan(const char* source) noexcept {
  return SpecialsInBlock(source) | uint64_t{SpecialsInBlock(source + kBlock)} << kBlock;
}

template <bool kHeaderMode>
QD_AVX2 inline void CopySpan(const char* source, char* target) noexcept {
  for (size_t at = 0; at < kSpan; at += kBlock) {
    __m256i text = Load(source + at);
    if constexpr (kHeaderMode) {
      const __m256i isUnderscore = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('_'));
      text = _mm256_blendv_epi8(text, _mm256_set1_epi8(' '), isUnderscore);
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(target + at), text);
  }
}

// "=" CR LF and then a character that the break does not swallow, too. A NUL may be the end of what
// is known of the text.
inline bool IsSoftLineBreak(const char* source) noexcept {
  const char next = source[kEscapeSize];
  return (source[1] == '\r') & (source[2] == '\n') & (next != '\r') & (next != '\n') &
         (next != '=') & (next != '\0');
}

// Decodes spans while the source reaches far enough behind them. True when it ended at something
// that is neither a run, nor an escape, nor a plain soft line break.
template <bool kHeaderMode>
QD_AVX2 bool DecodeSpans(const char* source, size_t size, char* target,
                         TProgress& progress) noexcept {
  auto [at, out] = progress;
  bool stopped = false;
  while (!stopped && size - at >= kReach) {
    size_t inSpan = 0;
    for (uint64_t specials = SpecialsInSpan(source + at); specials != 0; specials &= specials - 1) {
      const auto special = static_cast<size_t>(__builtin_ctzll(specials));
      CopySpan<kHeaderMode>(source + at + inSpan, target + out);
      out += special - inSpan;
      inSpan = special;
      const char* const escape = source + at + special;
      const int byte = HexByte(escape + 1);
      stopped = (*escape == '\0') | ((byte < 0) & !IsSoftLineBreak(escape));
      if (stopped) break;
      target[out] = static_cast<char>(byte);
      out += static_cast<size_t>(byte >= 0);
      inSpan += kEscapeSize;
    }
    const size_t run = stopped || inSpan > kSpan ? 0 : kSpan - inSpan;
    CopySpan<kHeaderMode>(source + at + inSpan, target + out);
    at += inSpan + run;
    out += run;
  }
  progress = {at, out};
  return stopped;
}

// The end is decoded in a copy with NULs behind it, where the last span ends.
template <bool kHeaderMode>
QD_AVX2 TProgress DecodeSpansToEnd(const char* source, size_t size, char* target) noexcept {
  TProgress whole{0, 0};
  if (DecodeSpans<kHeaderMode>(source, size, target, whole)) return whole;
  const size_t rest = size - whole.read;
  char text[2 * kReach];
  char decoded[sizeof text];
  std::memset(text + rest, 0, sizeof text - rest);
  std::memcpy(text, source + whole.read, rest);
  TProgress end{0, 0};
  DecodeSpans<kHeaderMode>(text, sizeof text, decoded, end);
  std::memcpy(target + whole.written, decoded, end.written);
  return {whole.read + end.read, whole.written + end.written};
}

#endif

}  // namespace

#if defined(__x86_64__) || defined(__i386__)

size_t DecodeBase64(const char* source, size_t size, char* target) noexcept {
  const size_t whole = size / 4 * 4;
  if (whole < kBlock || !platform::HasAvx2()) return 0;
  DecodeBase64Avx2(source, whole, target);
  return whole;
}

bool DecodeBase64Lines(TBodyLines& lines, std::string_view& line, TTarget& target) noexcept {
  return platform::HasAvx2() ? DecodeBase64LinesAvx2(lines, line, target) : lines.Next(line);
}

TProgress DecodePlainQuoted(const char* source, size_t size, char* target,
                            bool headerMode) noexcept {
  if (size < kBlock || !platform::HasAvx2())
    return DecodePlainBytewise(source, size, target, headerMode, {0, 0});
  return headerMode ? DecodeSpansToEnd<true>(source, size, target)
                    : DecodeSpansToEnd<false>(source, size, target);
}

#else

size_t DecodeBase64(const char*, size_t, char*) noexcept { return 0; }

bool DecodeBase64Lines(TBodyLines& lines, std::string_view& line, TTarget&) noexcept {
  return lines.Next(line);
}

TProgress DecodePlainQuoted(const char* source, size_t size, char* target,
                            bool headerMode) noexcept {
  return DecodePlainBytewise(source, size, target, headerMode, {0, 0});
}

#endif

}  // namespace quarda::kernels
