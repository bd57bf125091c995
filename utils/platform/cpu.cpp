// Processor features, through the compiler's own CPUID wrappers (the same on both targets).
#include "utils/platform/cpu.h"

namespace qm::platform {

bool HasByteShuffle512() {
#if defined(__x86_64__) || defined(__i386__)
    static const bool has = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
               __builtin_cpu_supports("avx512vbmi");
    }();
    return has;
#else
    return false;
#endif
}

}  // namespace qm::platform
