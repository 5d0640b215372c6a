// The C library asked the processor when the process started. The compiler's own support would ask
// once more at every start, which takes as long as many system calls in a virtual machine.
#include "Processor.h"

#if __has_include(<sys/platform/x86.h>)
#ifdef __clang__
using _Bool = bool;  // the header uses C's name for it, which g++ knows in C++, too
#endif
#include <sys/platform/x86.h>
#endif

namespace quarda::platform {

bool HasAvx2() noexcept {
#ifdef CPU_FEATURE_ACTIVE
  return CPU_FEATURE_ACTIVE(AVX2);
#else
  return false;
#endif
}

}  // namespace quarda::platform
