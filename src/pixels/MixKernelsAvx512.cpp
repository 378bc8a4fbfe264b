#if defined(__x86_64__)

#define ZELVAR_MIX_TARGET [[gnu::target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,prefer-vector-width=512")]]
#define ZELVAR_MIX_WIDTH 64
#include "zelvar/pixels/MixLoops.h"

namespace zelvar::mix {

AllKernels const &Avx512Kernels() { return kKernels<ZELVAR_MIX_WIDTH>; }

} // namespace zelvar::mix

#endif
