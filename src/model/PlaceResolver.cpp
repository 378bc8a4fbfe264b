#include "zelvar/model/PlaceResolver.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/OpenImage.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/SeriesPlace.h"
#include "zelvar/model/DataSourceDefinitions.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <filesystem>
#include <tuple>

namespace zelvar {

namespace {

constexpr std::string_view kSource = "source:";
constexpr std::string_view kFileScheme = "file://";

RefItemPtr<DataSourceItem> FromDefinition(DString const &name) {
    DataSourceDefinitions definitions;
    definitions.Load();
    RefItemPtr<DataSourceItem> item(TemplDataSourceItem::CreateItem(definitions.Get(name)));
    if (item)
        item->Prepare();
    return item;
}

RefItemPtr<DataSourceItem> FromPath(DString const &path) {
    RefItemPtr<DataSourceItem> item(NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr));
    if (item)
        item->BuildParents();
    return item;
}

RefItemPtr<DataSourceItem> FromContainer(DString const &container, DString const &node) {
    RefItemPtr<DataSourceItem> const file = FromPath(container);
    if (!file)
        return nullptr;
    RefItemPtr<TemplDataSourceItem> const tree(TemplDataSourceItem::CreateItem(nullptr, container.c_str(), file));
    return TemplDataSourceItem::CreateNodeItem(tree, node.c_str());
}

DString ReasonOfImage(DString const &moniker) {
    DError error;
    OpenImage const image({moniker, nullptr}, "", nullptr, &error);
    return image.IsOpen() ? DString() : error.Text();
}

} // namespace

RefItemPtr<DataSourceItem> ItemFromPlace(DString const &typed, DError *error) {
    DString const place = TakeSecrets(typed);
    if (place.starts_with(kSource))
        return FromDefinition(place.substr(kSource.size()));
    if (StartsWithNoCase(place, kFileScheme))
        return FromPath(BDIMoniker(place, nullptr).FindFile());
    if (RefItemPtr<DataSourceItem> item = FromPath(place);
        item || (platform::IsSmbAddress(place) && !SeriesPlace::Of(place)))
        return item;
    if (RefItemPtr<DataSourceItem> series(SeriesItem::CreateItem(place, nullptr)); series) {
        series->BuildParents();
        return series;
    }
    BDIMoniker const moniker(place, nullptr);
    if (moniker.IsUrl())
        return TemplDataSourceItem::CreateItem(nullptr, place.c_str(), nullptr, error);
    // What a driver puts before a path ends at the first separator.
    if (std::size_t const slash = place.find('/'); slash != DString::npos && !DoesPlaceAnswer(place.substr(slash)))
        return nullptr;
    DString const container = moniker.FindFile();
    return container.empty() || container == place ? nullptr : FromContainer(container, place);
}

DString ReasonAgainst(DString const &place) {
    if (place.starts_with(kSource))
        return "there is no such definition";
    if (!DoesPlaceAnswer(place))
        return platform::IsSmbAddress(place) ? "its server does not answer" : "its place does not answer";
    if (SeriesOf({place, nullptr}))
        return ReasonOfImage(place);
    if (place.empty() || BDIMoniker(place, nullptr).IsUrl())
        return {};
    std::error_code error;
    std::ignore = std::filesystem::status(place, error);
    return error ? error.message() : DString();
}

} // namespace zelvar
