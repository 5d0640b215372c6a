// The root of the engine's own errors.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace quarda {

/// Every failure that the engine raises itself. The class name appears in the log beside the
/// message.
class EError : public std::exception {
 public:
  explicit EError(std::string message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.c_str(); }
  virtual const char* ClassName() const noexcept { return "EError"; }

 private:
  std::string message_;
};

/// An index outside a list.
class EListError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "EListError"; }
};

/// A value that forms no valid number, date or time.
class EConvertError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "EConvertError"; }
};

/// Raises EListError "List index out of bounds (%d)".
[[noreturn]] void RaiseListIndex(ptrdiff_t index);

/// An error as the log names it.
struct TErrorDescription {
  std::string className;
  std::string message;
};

/// Describes the exception being handled, whatever its type: our own by their class name, those of
/// the system and of the standard library by a fixed one. Call it inside a catch block.
TErrorDescription DescribeCurrentError();

}  // namespace quarda
