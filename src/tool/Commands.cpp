#include "zelvar/tool/Commands.h"

#include "zelvar/tool/CommandTable.h"

#include <cstdio>

namespace zelvar::tool {

int UsageError(CommandSpec const &spec, DString const &why) {
    std::fprintf(stderr, "zelvar: %s\nusage: zelvar %s\n", why.c_str(), Synopsis(spec).c_str());
    return kUsage;
}

int Failure(DString const &why) {
    std::fprintf(stderr, "zelvar: %s\n", why.c_str());
    return kFailed;
}

} // namespace zelvar::tool
