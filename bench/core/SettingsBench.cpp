#include "Harness.h"
#include "zelvar/store/SettingsStore.h"

#include <cstdlib>
#include <filesystem>

namespace {

using namespace zelvar;

// One value that is safe from a kill as soon as the call returns, in a store of 10,000 keys.
bench::Register const settings("settings", [] {
    std::string folder = (std::filesystem::temp_directory_path() / "zelvar-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return;
    {
        constexpr int keys = 10'000;
        constexpr int writes = 2'000;
        SettingsStore store(folder + "/settings.db");
        store.Transact([&] {
            for (int i = 0; i < keys; ++i)
                store.Write("Section" + std::to_string(i % 100) + "\\Key" + std::to_string(i), "value",
                            DString("text"));
            return true;
        });
        std::int64_t value = 0;
        double const writeMs = bench::BestMs(5, [&] {
            for (int i = 0; i < writes; ++i)
                store.Write("Section7\\Key1207", "value", ++value);
        });
        bench::Figure("settings.write_among_10000", writeMs / writes, "ms", "below 0.1");
        double const readMs = bench::BestMs(5, [&] {
            for (int i = 0; i < writes; ++i)
                value += store.ReadInt("Section7\\Key1207", "value", 0) > 0 ? 0 : 1;
        });
        bench::Figure("settings.read_among_10000", readMs / writes, "ms", "below 0.1");
    }
    std::filesystem::remove_all(folder);
});

} // namespace
