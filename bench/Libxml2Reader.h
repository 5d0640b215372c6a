// The HTML reader that the scanner is compared with.
#pragma once

#include <cstddef>
#include <string_view>

namespace quarda::bench {

/// Pushes the page through libxml2's HTML parser, which builds no tree, and counts the elements; 0
/// when the library was not there at build time.
size_t Libxml2Elements(std::string_view html);

}  // namespace quarda::bench
