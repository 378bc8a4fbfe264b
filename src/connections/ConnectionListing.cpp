#include "zelvar/connections/ConnectionListing.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/DataSourceDefinitions.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <list>
#include <mutex>

namespace zelvar {

namespace {

constexpr char const *kImage = Mark("%s is an image of %d x %d.");
constexpr char const *kThere = Mark("%s is there.");
constexpr char const *kFolder = Mark("The folder %s is listed.");
constexpr char const *kFirstFails = Mark("%s cannot be opened: %s.");

constexpr std::size_t kMost = 500; // what is counted; a bucket may hold any number

struct Tried {
    std::mutex mutex;
    std::list<ConnectionBook::Entry const *> entries; ///< guarded; the last one first
};
Tried &TheTried() {
    static auto &tried = *new Tried; // never destroyed: workers may still ask while the process ends
    return tried;
}

/// Whether a driver is there for the kind.
bool CanBeListed(ConnectionKind kind) {
    switch (kind) {
    case ConnectionKind::WebFolder:
    case ConnectionKind::ObjectStore:
    case ConnectionKind::Address:
        return true;
    default:
        return BDIDrvrMngr::Instance()->GetDrvr(WordsOf(kind).driver) != nullptr;
    }
}

/// The definition that would be written.
std::unique_ptr<XMLNode> NodeOf(Connection const &connection, DString const &name) {
    DataSourceDefinitions definitions;
    if (!name.empty())
        definitions.Load();
    if (name.empty() || !definitions.Find(name))
        return connection.ToNode();
    std::unique_ptr<XMLNode> node = definitions.Get(name)->Copy();
    connection.WriteTo(*node);
    return node;
}

struct CancelBySignal final : DataSourceItem::ICancel {
    explicit CancelBySignal(StopSignal const *signal) : stop(signal) {}
    bool IsCanceled() override { return stop != nullptr && *stop; }
    StopSignal const *stop;
};

bool IsOfServer(DError const &error) {
    switch (error.Why()) {
    case DError::Cause::NotPermitted:
    case DError::Cause::Server:
    case DError::Cause::Late:
    case DError::Cause::NoAnswer:
    case DError::Cause::Untrusted:
        return true;
    default:
        return false;
    }
}

std::uint32_t TypeOf(DataSourceItem const &item) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(&item);
    return tree == nullptr || tree->GetNode() == nullptr ? 0 : tree->GetNode()->type;
}

void Count(std::vector<ListedItem> const &items, ListedConnection &listed) {
    for (ListedItem const &row : items) {
        std::uint32_t const type = TypeOf(*row.item);
        if (row.item->IsFolder())
            ++listed.folders;
        else if ((type & BDINode_Raster) != 0)
            ++listed.images;
        else if ((type & (BDINode_Thematic | BDINode_Table)) != 0)
            ++listed.tables;
        else
            ++listed.others;
    }
}

/// A look at the first thing that can be opened, or else into the first folder.
void LookAtFirst(std::vector<ListedItem> const &items, ListedConnection &listed, CancelBySignal &cancel) {
    auto const leaf =
        std::find_if(items.begin(), items.end(), [](ListedItem const &row) { return !row.item->IsFolder(); });
    ListedItem const &first = leaf == items.end() ? items.front() : *leaf;
    listed.first = first.name;
    char const *const name = listed.first.c_str();
    if (leaf == items.end()) {
        RequestScope const scope(RequestKind::List, [&] { return cancel.IsCanceled(); });
        bool isRead = true;
        std::ignore = ListItems(
            first.item,
            {.most = kMost, .cancel = &cancel, .onUnread = [&](DataSourceItem &, std::error_code) { isRead = false; }});
        auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(first.item.get());
        if (!isRead && tree != nullptr)
            listed.firstFailure = tree->GetFailure();
        listed.firstWords = Format(Translated(kFolder), name);
    } else {
        RequestScope const scope(RequestKind::Properties, [&] { return cancel.IsCanceled(); });
        ImageInfo image;
        DError error;
        BDIMoniker const moniker(first.path, nullptr);
        bool const isImage = ReadImageInfo(moniker, first.item->GetRDIDriverId(), cancel.stop, image, &error);
        if (!isImage && IsOfServer(error))
            listed.firstFailure = error;
        listed.firstWords =
            isImage ? Format(Translated(kImage), name, image.width, image.height) : Format(Translated(kThere), name);
    }
    if (listed.firstFailure.IsSet())
        listed.firstWords = Format(Translated(kFirstFails), name, CauseInWords(listed.firstFailure).c_str());
}

} // namespace

TriedConnection::TriedConnection(ConnectionBook::Entry entry) : m_entry(std::move(entry)) {
    Tried &tried = TheTried();
    std::lock_guard const lock(tried.mutex);
    tried.entries.push_front(&m_entry);
}

TriedConnection::~TriedConnection() {
    Tried &tried = TheTried();
    std::lock_guard const lock(tried.mutex);
    tried.entries.remove(&m_entry);
}

std::optional<ConnectionBook::Entry> TriedConnection::FindByAddress(std::string_view address) {
    Tried &tried = TheTried();
    std::lock_guard const lock(tried.mutex);
    for (ConnectionBook::Entry const *const entry : tried.entries) {
        std::optional<ConnectionAddress> const own = entry->connection.Address();
        std::optional<ConnectionAddress> const wanted = ParseConnectionAddress(address);
        if (own && wanted ? own->Holds(*wanted) : entry->connection.Field("address") == address)
            return *entry;
    }
    return std::nullopt;
}

std::optional<ListedConnection> ListConnection(ConnectionBook::Entry const &entry, DString const &definition,
                                               StopSignal const *stop) {
    if (!CanBeListed(entry.connection.kind))
        return std::nullopt;
    TriedConnection const tried(entry);
    CancelBySignal cancel(stop);
    ListedConnection listed;
    RefItemPtr<TemplDataSourceItem> const item(
        TemplDataSourceItem::CreateItem(NodeOf(entry.connection, definition).get()));
    std::vector<ListedItem> items;
    if (item != nullptr && !cancel.IsCanceled()) {
        RequestScope const scope(RequestKind::List, [&] { return cancel.IsCanceled(); });
        item->Prepare();
        bool isRead = true;
        if (!cancel.IsCanceled())
            items = ListItems(item, {.most = kMost + 1,
                                     .cancel = &cancel,
                                     .onUnread = [&](DataSourceItem &, std::error_code) { isRead = false; }});
        listed.failure = item->GetFailure();
        if (!isRead && !listed.failure.IsSet())
            listed.failure.Set("no driver opens it", DError::Cause::NotSupported);
    }
    if (std::optional<ConnectionAddress> const address = entry.connection.Address();
        address && !cancel.IsCanceled() && listed.failure.Why() == DError::Cause::Untrusted) {
        RequestScope const scope(RequestKind::List, [&] { return cancel.IsCanceled(); });
        listed.certificate = ReadServerCertificate(address->ToText());
    }
    if (!cancel.IsCanceled() && !listed.failure.IsSet()) {
        listed.hasMore = items.size() > kMost;
        items.resize(std::min(items.size(), kMost));
        Count(items, listed);
        if (!items.empty())
            LookAtFirst(items, listed, cancel);
    }
    listed.isStopped = cancel.IsCanceled();
    return listed;
}

} // namespace zelvar
