// Pages to measure with: one as mail programs write it, and shapes that are cheap to send and
// expensive to make harmless.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::bench {

/// A newsletter of about that size: tables, links, inline styles, now and then a script, an object
/// and an inline frame.
std::string FriendlyPage(size_t size);

/// `make(size)` makes a page of about that size.
struct TPage {
  std::string_view name;
  std::function<std::string(size_t size)> make;
};
std::vector<TPage> HostilePages();

}  // namespace quarda::bench
