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
