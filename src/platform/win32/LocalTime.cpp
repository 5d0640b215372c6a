// Local time and file times, by the calls with which the system shows them.
#include "LocalTime.h"

namespace quarda::platform {
namespace win32 {
namespace {

TLocalTime FromFields(const SYSTEMTIME& fields) noexcept {
  return {fields.wYear,   fields.wMonth,  fields.wDay,         fields.wHour,
          fields.wMinute, fields.wSecond, fields.wMilliseconds};
}

}  // namespace

TLocalTime ToLocalTime(const FILETIME& time) noexcept {
  FILETIME local{};
  SYSTEMTIME fields{};
  const bool known =
      ::FileTimeToLocalFileTime(&time, &local) && ::FileTimeToSystemTime(&local, &fields);
  return known ? FromFields(fields) : TLocalTime{};
}

std::optional<FILETIME> FromLocalTime(const TLocalTime& time) noexcept {
  SYSTEMTIME fields{};
  fields.wYear = static_cast<WORD>(time.year);
  fields.wMonth = static_cast<WORD>(time.month);
  fields.wDay = static_cast<WORD>(time.day);
  fields.wHour = static_cast<WORD>(time.hour);
  fields.wMinute = static_cast<WORD>(time.minute);
  fields.wSecond = static_cast<WORD>(time.second);
  fields.wMilliseconds = static_cast<WORD>(time.millisecond);
  FILETIME local{};
  FILETIME result{};
  SYSTEMTIME back{};  // a day that does not exist may be taken for a later one
  const bool valid = ::SystemTimeToFileTime(&fields, &local) &&
                     ::FileTimeToSystemTime(&local, &back) && back.wDay == fields.wDay &&
                     ::LocalFileTimeToFileTime(&local, &result);
  return valid ? std::optional<FILETIME>(result) : std::nullopt;
}

class TSystemClock final : public TClock {
 public:
  TLocalTime Now() const override {
    SYSTEMTIME fields{};
    ::GetLocalTime(&fields);
    return FromFields(fields);
  }
};

}  // namespace win32

const TClock& SystemClock() {
  static const win32::TSystemClock clock;
  return clock;
}

}  // namespace quarda::platform
