#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/ConnectionActions.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("sources");

void Print(int group, DataSourceRows const &rows) {
    for (RefItemPtr<DataSourceItem> const &row : rows)
        std::printf("%s\t%s\t%s\n", DataSourceGroupName(group), EscapeControlBytes(RowTextOf(*row)).c_str(),
                    EscapeControlBytes(row->GetPath()).c_str());
}

int ListSources() {
    UseReaderDrivers();
    DataSourceRows drives;
    CollectDrives(LocalDriveKinds(), drives);
    Print(kGroupDrives, drives);
    DataSourceRows networkDrives;
    CollectDrives(NetworkDriveKinds(), networkDrives);
    Print(kGroupNetworkDrives, networkDrives);
    DataSourceRows definitions;
    CollectDefinitions(definitions);
    Print(kGroupDataSources, definitions);
    DataSourceRows favorites;
    CollectFavorites(favorites);
    Print(kGroupFavorites, favorites);
    return kDone;
}

/// What stands in the words behind an action.
struct Action {
    char const *name;
    std::size_t fewest; ///< words
    std::size_t most;
    int (*run)(Arguments const &arguments);
};
constexpr Action kActions[] = {
    {"list", 0, 0, [](Arguments const &) { return ListSources(); }},
    {"add", 0, 1, &AddSource},
    {"remove", 1, 1, &RemoveSource},
    {"test", 1, 1, &TestSource},
    {"export", 2, 2, &ExportSource},
    {"import", 1, 1, &ImportSources},
};

} // namespace

int RunSources(std::vector<DString> const &words) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    DString const name = arguments->words.empty() ? "list" : arguments->words.front();
    auto const *const action =
        std::find_if(std::begin(kActions), std::end(kActions), [&](Action const &known) { return name == known.name; });
    if (action == std::end(kActions))
        return UsageError(kSpec, "list, add, remove, test, export or import");
    std::size_t const count = arguments->words.empty() ? 0 : arguments->words.size() - 1;
    if (count < action->fewest || count > action->most)
        return UsageError(kSpec, count < action->fewest ? "an argument is missing" : "too many arguments");
    return action->run(*arguments);
}

} // namespace zelvar::tool
