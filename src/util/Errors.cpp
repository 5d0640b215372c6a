#include "Errors.h"

#include <PlatformError.h>

#include <new>
#include <stdexcept>

namespace quarda {

TErrorDescription DescribeCurrentError() {
  try {
    throw;
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
