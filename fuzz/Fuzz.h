// What every fuzz target shares.
#pragma once

#include <Errors.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace quarda::fuzz {

/// The input as text.
inline std::string_view AsText(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// A truth that must hold for every input; ends the process when it does not.
inline void Require(bool truth, const char* what = "requirement") {
  if (truth) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

/// Runs the body; an error of our own is an answer, anything else a fault.
template <class Body>
int AllowErrors(Body&& body) {
  try {
    body();
  } catch (const EError&) {
  }
  return 0;
}

}  // namespace quarda::fuzz
