// Local time. Whoever needs the time is given a TClock, so that tests can set it.
#pragma once

#include <cstdint>

namespace quarda::platform {

struct TLocalTime {
  int year = 1899, month = 12, day = 30;  ///< month and day from 1
  int hour = 0, minute = 0, second = 0, millisecond = 0;
};

class TClock {
 public:
  virtual TLocalTime Now() const = 0;

 protected:
  ~TClock() = default;
};

/// The clock of the system, in the local time zone.
const TClock& SystemClock();

/// Days since 1899-12-30 00:00, the fraction being the time of day.
double ToDateTime(const TLocalTime& time);
TLocalTime FromDateTime(double days);

/// The packed DOS date and time: years from 1980, seconds in units of two.
uint32_t ToDosStamp(const TLocalTime& time);
TLocalTime FromDosStamp(uint32_t stamp);

/// The stamp moved by whole units of two seconds, across days and years.
uint32_t AddToDosStamp(uint32_t stamp, int64_t units);

}  // namespace quarda::platform
