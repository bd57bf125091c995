// What the processor offers beyond the build's baseline, checked once at first use (internal).
// Kernels compiled for wider instructions are called only when these answer true; there is no
// ifunc, which Windows lacks.
#pragma once

namespace qm::platform {

// 64-byte vectors with byte permutations (AVX-512 F, BW and VBMI); false off x86.
bool HasByteShuffle512();

}  // namespace qm::platform
