// TNEF containers, record by record.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quarda {

inline std::string Little(uint64_t value, int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value);
  return text;
}

/// The level, the attribute with its type above it, the data and its sum.
inline std::string TnefRecord(int level, uint32_t id, const std::string& data) {
  uint32_t sum = 0;
  for (const char c : data) sum += static_cast<uint8_t>(c);
  return Little(static_cast<uint64_t>(level), 1) + Little(id, 4) + Little(data.size(), 4) + data +
         Little(sum, 2);
}

/// Names and contents.
using TTnefFiles = std::vector<std::pair<std::string, std::string>>;

inline std::string TnefContainer(const TTnefFiles& files) {
  std::string text = Little(0x223E9F78, 4) + Little(1, 2);
  for (const auto& [name, content] : files) {
    if (text.size() > 6) text += TnefRecord(2, 0x00069002, "");
    text += TnefRecord(2, 0x00018010, name + '\0') + TnefRecord(2, 0x0006800F, content);
  }
  return text;
}

}  // namespace quarda
