#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"

#include <cstdio>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("sources");

void Print(int group, DataSourceRows const &rows) {
    for (RefItemPtr<DataSourceItem> const &row : rows)
        std::printf("%s\t%s\t%s\n", DataSourceGroupName(group), EscapeControlBytes(RowTextOf(*row)).c_str(),
                    EscapeControlBytes(row->GetPath()).c_str());
}

} // namespace

int RunSources(std::vector<DString> const &words) {
    DString error;
    if (!ParseArguments(kSpec, words, error))
        return UsageError(kSpec, error);
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

} // namespace zelvar::tool
