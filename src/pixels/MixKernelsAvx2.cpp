#if defined(__x86_64__)

#define ZELVAR_MIX_TARGET [[gnu::target("avx2")]]
#define ZELVAR_MIX_WIDTH 32
#include "zelvar/pixels/MixLoops.h"

namespace zelvar::mix {

AllKernels const &Avx2Kernels() { return kKernels<ZELVAR_MIX_WIDTH>; }

} // namespace zelvar::mix

#endif
