#include "LocalTime.h"

namespace quarda::platform {
namespace posix {

TLocalTime ToLocalTime(const timespec& time) {
  std::tm fields{};
  if (::localtime_r(&time.tv_sec, &fields) == nullptr) return {};
  TLocalTime local;
  local.year = fields.tm_year + 1900;
  local.month = fields.tm_mon + 1;
  local.day = fields.tm_mday;
  local.hour = fields.tm_hour;
  local.minute = fields.tm_min;
  local.second = fields.tm_sec < 60 ? fields.tm_sec : 59;  // a leap second repeats the last one
  local.millisecond = static_cast<int>(time.tv_nsec / 1'000'000);
  return local;
}

std::optional<timespec> FromLocalTime(const TLocalTime& time) {
  std::tm fields{};
  fields.tm_year = time.year - 1900;
  fields.tm_mon = time.month - 1;
  fields.tm_mday = time.day;
  fields.tm_hour = time.hour;
  fields.tm_min = time.minute;
  fields.tm_sec = time.second;
  fields.tm_isdst = -1;
  const bool inRange = time.hour < 24 && time.minute < 60 && time.second < 60;
  const std::time_t seconds = ::mktime(&fields);  // puts a day that does not exist elsewhere
  if (!inRange || fields.tm_mday != time.day || fields.tm_mon != time.month - 1) {
    return std::nullopt;
  }
  return timespec{seconds, time.millisecond * 1'000'000L};
}

}  // namespace posix

namespace {

class TSystemClock final : public TClock {
 public:
  TSystemClock() noexcept { ::tzset(); }
  TLocalTime Now() const override {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return posix::ToLocalTime(now);
  }
};

}  // namespace

const TClock& SystemClock() {
  static const TSystemClock clock;
  return clock;
}

}  // namespace quarda::platform
