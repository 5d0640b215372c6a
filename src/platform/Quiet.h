// For the functions that answer a failure and never raise one.
#pragma once

#include <utility>

namespace quarda::platform {

/// What the body answers, or `failure` when it raises anything (memory may run out).
template <class Answer, class Body>
Answer OrElse(Answer failure, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return failure;
  }
}

}  // namespace quarda::platform
