// What the processor can do.
#pragma once

namespace quarda::platform {

/// Whether AVX2 instructions may be used: the processor has them and the system saves their
/// registers.
bool HasAvx2() noexcept;

}  // namespace quarda::platform
