#include "DateText.h"

namespace quarda {
namespace {

void AppendNumber(std::string& text, int value, int digits) {
  char buffer[12];
  int at = static_cast<int>(sizeof buffer);
  for (unsigned rest = static_cast<unsigned>(value); rest > 0 || digits > 0; rest /= 10, --digits) {
    buffer[--at] = static_cast<char>('0' + rest % 10);
  }
  text.append(buffer + at, sizeof buffer - static_cast<size_t>(at));
}

}  // namespace

std::string DateText(const platform::TLocalTime& time) {
  std::string text;
  AppendNumber(text, time.year, 4);
  text += '-';
  AppendNumber(text, time.month, 2);
  text += '-';
  AppendNumber(text, time.day, 2);
  return text;
}

std::string ShortTimeText(const platform::TLocalTime& time) {
  std::string text;
  AppendNumber(text, time.hour, 2);
  text += ':';
  AppendNumber(text, time.minute, 2);
  return text;
}

std::string TimeText(const platform::TLocalTime& time) {
  std::string text = ShortTimeText(time) + ':';
  AppendNumber(text, time.second, 2);
  return text;
}

}  // namespace quarda
