// The compiler keeps 32-byte registers on the stack at addresses that are multiples of 32, and the
// calling convention of this system promises 16 only; code that spills one of them would crash.
// The engine therefore runs its portable code here.
#include "Processor.h"

namespace quarda::platform {

bool HasAvx2() noexcept { return false; }

}  // namespace quarda::platform
