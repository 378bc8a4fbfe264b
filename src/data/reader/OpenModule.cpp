#include "zelvar/data/reader/OpenModule.h"

#include "zelvar/base/PathStyle.h"

#include <dlfcn.h>

namespace zelvar {

namespace {

/// A library that comes as one of a hundred has each of its symbols looked for in all that stand before it. One that
/// comes by itself finds them at once: that halves the time that GDAL takes to load. They stay; what is not there, or
/// does not load without others, comes with GDAL.
void LoadBelowGdal() {
    static constexpr char kNames[] = ZELVAR_BELOW_GDAL;
    for (DString const &name : Split(kNames, ':'))
        static_cast<void>(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
}

} // namespace

void *OpenModule(DString const &path) {
    if (FileNameOf(path) == kGdalModule)
        LoadBelowGdal();
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

} // namespace zelvar
