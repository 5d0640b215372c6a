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

// 24 decoded bytes, followed by 8 of no meaning.
QD_AVX2 inline __m256i Base64Bytes(__m256i text) noexcept {
  const __m256i pairs = _mm256_maddubs_epi16(Base64Values(text), _mm256_set1_epi32(0x01400140));
  const __m256i triples = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i packed =
      _mm256_shuffle_epi8(triples, Table(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  return _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
}

QD_AVX2 inline void DecodeBlockExactly(const char* source, char* target) noexcept {
  const __m256i bytes = Base64Bytes(Load(source));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm256_castsi256_si128(bytes));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 16), _mm256_extracti128_si256(bytes, 1));
}

// `size` is a multiple of four and at least one block.
QD_AVX2 inline void DecodeGroups(const char* source, size_t size, char* target) noexcept {
  const char* const end = source + size;
  // A whole register may be stored while 12 more characters, which make 9 bytes, follow the block.
  while (static_cast<size_t>(end - source) >= kBlock + 12) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(target), Base64Bytes(Load(source)));
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

QD_AVX2 TProgress DecodePlainAvx2(const char* source, size_t size, char* target,
                                  bool headerMode) noexcept {
  const __m256i escape = _mm256_set1_epi8('=');
  const __m256i underscore = _mm256_set1_epi8('_');
  const __m256i blank = _mm256_set1_epi8(headerMode ? ' ' : '_');
  size_t at = 0;
  size_t out = 0;
  while (size - at >= kBlock) {
    const __m256i text = Load(source + at);
    const __m256i special = _mm256_or_si256(_mm256_cmpeq_epi8(text, escape),
                                            _mm256_cmpeq_epi8(text, _mm256_setzero_si256()));
    const __m256i copy = _mm256_blendv_epi8(text, blank, _mm256_cmpeq_epi8(text, underscore));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(target + out), copy);
    const auto mask = static_cast<unsigned>(_mm256_movemask_epi8(special));
    const size_t run = mask == 0 ? kBlock : static_cast<size_t>(__builtin_ctz(mask));
    at += run;
    out += run;
    if (mask == 0) continue;
    const int byte = source[at] == '=' && size - at >= 3 ? HexByte(source + at + 1) : -1;
    if (byte < 0) return {at, out};
    target[out++] = static_cast<char>(byte);
    at += 3;
  }
  return DecodePlainBytewise(source, size, target, headerMode, {at, out});
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
  return DecodePlainAvx2(source, size, target, headerMode);
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
