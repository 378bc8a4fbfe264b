#include "zelvar/data/DriverModule.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/DriverProvider.h"

#include <dlfcn.h>

namespace zelvar {

namespace {

constexpr char kModule[] = "zelvar/zelvar-gdal.so"; // below the folder of this library
constexpr char kEntry[] = "zelvar_register_drivers";

DString FolderOfThisLibrary() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&UseInstalledDrivers), &info) == 0 || info.dli_fname == nullptr)
        return {};
    return DString(ParentPathOf(info.dli_fname));
}

void LoadModule() {
    DString const path = AppendPath(FolderOfThisLibrary(), kModule);
    // Never closed: GDAL registers things that outlive any use of it.
    void *const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void *const entry = module == nullptr ? nullptr : dlsym(module, kEntry);
    if (entry == nullptr) {
        Report::TraceMessage(Report::kTraceOpen, "no drivers: %s", dlerror());
        return;
    }
    reinterpret_cast<void (*)()>(entry)();
}

} // namespace

void UseInstalledDrivers() { SetDriverProvider(LoadModule); }

} // namespace zelvar
