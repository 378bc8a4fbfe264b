#include "zelvar/pixels/MixLoops.h"

namespace zelvar::mix {

AllKernels const &KernelsOf(Isa isa) {
#if defined(__x86_64__)
    if (isa == Isa::Avx2)
        return Avx2Kernels();
    if (isa == Isa::Avx512)
        return Avx512Kernels();
#endif
    return kKernels<ZELVAR_MIX_WIDTH>;
}

} // namespace zelvar::mix
