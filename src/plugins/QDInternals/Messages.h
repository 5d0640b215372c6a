// What the messages of the plug-ins share.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quarda {

/// The message with its placeholders `%s` replaced by the texts, in order.
inline std::string FillIn(std::string_view message, std::initializer_list<std::string_view> texts) {
  std::string filled;
  for (const std::string_view text : texts) {
    const size_t placeholder = message.find("%s");
    filled.append(message.substr(0, placeholder)).append(text);
    message.remove_prefix(placeholder + 2);
  }
  return filled.append(message);
}

}  // namespace quarda
