#include "zelvar/library/ZelvarInit.h"

namespace zelvar {

void ZelvarInit() {}

void ZelvarShutdown() {}

} // namespace zelvar
