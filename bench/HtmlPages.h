// Pages to measure with: one as mail programs write it, and shapes that are cheap to send and
// expensive to make harmless.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::bench {

/// A newsletter of about that size: tables, links, inline styles, now and then a script, an object
/// and an inline frame.
std::string FriendlyPage(size_t size);

struct TPage {
  std::string_view name;
  std::string html;
};
/// Each about that size.
std::vector<TPage> HostilePages(size_t size);

}  // namespace quarda::bench
