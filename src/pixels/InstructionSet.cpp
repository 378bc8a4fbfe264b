#include "zelvar/pixels/InstructionSet.h"

namespace zelvar {

bool IsSupported(Isa isa) {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (isa == Isa::Avx2)
        return __builtin_cpu_supports("avx2") != 0;
    if (isa == Isa::Avx512)
        return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
               __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
               __builtin_cpu_supports("avx512vbmi") != 0;
#endif
    return isa == Isa::Plain;
}

Isa FastestIsa() {
    static Isa const isa = IsSupported(Isa::Avx512) ? Isa::Avx512 : IsSupported(Isa::Avx2) ? Isa::Avx2 : Isa::Plain;
    return isa;
}

} // namespace zelvar
