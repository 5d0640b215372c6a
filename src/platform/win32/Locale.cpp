// The number format of the user. Letter case and comparison do not ask the system: its own rules
// change with the language of the user (some pass over hyphens, some take "ss" for one letter), and
// settings, names and checks must mean the same everywhere.
#include "CodePage.h"
#include "System.h"

namespace quarda::platform {

char DecimalSeparator() {
  char separator[8] = {};
  const int size =
      ::GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator, sizeof separator);
  return size == 2 ? separator[0] : '.';  // one character and the closing NUL
}

}  // namespace quarda::platform
