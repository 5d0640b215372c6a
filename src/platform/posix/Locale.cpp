#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <memory>
#include <type_traits>

#include "CodePage.h"

namespace quarda::platform {
namespace {

/// The locale the user chose for numbers; empty when none was chosen.
std::string_view NumericLocaleName() {
  for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
    const char* name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return {};
}

/// Locales that are known to write a point; asking the C library would read files.
bool IsPlainLocale(std::string_view name) {
  return name.empty() || name == "C" || name == "POSIX" || name.starts_with("C.");
}

struct TFreeLocale {
  void operator()(locale_t locale) const noexcept { ::freelocale(locale); }
};

}  // namespace

char DecimalSeparator() {
  if (IsPlainLocale(NumericLocaleName())) return '.';
  const std::unique_ptr<std::remove_pointer_t<locale_t>, TFreeLocale> locale(
      ::newlocale(LC_NUMERIC_MASK, "", nullptr));
  if (locale == nullptr) return '.';
  const std::string_view separator = ::nl_langinfo_l(RADIXCHAR, locale.get());
  return separator.size() == 1 ? separator[0] : '.';
}

}  // namespace quarda::platform
