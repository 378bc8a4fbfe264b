#include "zelvar/reader/DriverModules.h"

#include "zelvar/base/Report.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/reader/OpenModule.h"
#include "zelvar/data/stack/SeriesDriver.h"

#include <utility>

#include <dlfcn.h>

namespace zelvar::reader {

namespace {

void LoadModule(DString const &path) {
    void *const module = OpenModule(path);
    void *const entry = module == nullptr ? nullptr : dlsym(module, "zelvar_register_drivers");
    if (entry != nullptr)
        reinterpret_cast<void (*)()>(entry)();
    else
        Report::TraceMessage(Report::kTraceOpen, "no drivers: %s", dlerror());
}

} // namespace

void UseModules(std::vector<DString> modules) {
    SetDriverProvider([modules = std::move(modules)] {
        for (DString const &module : modules)
            LoadModule(module);
        RegisterSeriesDriver();
    });
}

} // namespace zelvar::reader
