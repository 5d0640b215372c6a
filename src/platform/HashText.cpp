// FNV-1a with 64 bits: no secret and no proof, but the same in every build.
#include "HashText.h"

#include <cstdint>

namespace quarda::platform {

std::string HashText(std::string_view text) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  std::string digits;
  for (int shift = 60; shift >= 0; shift -= 4) digits += "0123456789abcdef"[hash >> shift & 15];
  return digits;
}

}  // namespace quarda::platform
