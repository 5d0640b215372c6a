#include "Errors.h"

#include <PlatformError.h>

#include <new>
#include <stdexcept>

namespace quarda {

void RaiseListIndex(ptrdiff_t index) {
  throw EListError("List index out of bounds (" + std::to_string(index) + ")");
}

TErrorDescription DescribeCurrentError() {
  const std::exception_ptr current = std::current_exception();
  if (!current) return {"EUnknownError", "Unknown error"};
  try {
    std::rethrow_exception(current);
  } catch (const EError& error) {
    return {error.ClassName(), error.what()};
  } catch (const platform::EPlatformError& error) {
    return {"EPlatformError", error.what()};
  } catch (const std::bad_alloc&) {
    return {"EOutOfMemory", "Out of memory"};
  } catch (const std::exception& error) {
    return {"EStandardError", error.what()};
  } catch (...) {
    return {"EUnknownError", "Unknown error"};
  }
}

}  // namespace quarda
