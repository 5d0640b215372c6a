// Inputs of single modules that are cheap to send and, for a reader with a quadratic step,
// expensive to read. Whole mails of that kind are among the shapes of MailFactory.h.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::bench {

/// `make(n)` grows linearly with n; the result of `run` is used, so that no compiler leaves it out.
struct TTrap {
  std::string_view name;
  size_t n;  // the largest size to measure
  std::function<std::string(size_t n)> make;
  std::function<size_t(const std::string& input)> run;
};

std::vector<TTrap> Traps();

}  // namespace quarda::bench
