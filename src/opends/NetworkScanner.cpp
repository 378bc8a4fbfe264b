#include "zelvar/opends/NetworkScanner.h"

#include "zelvar/model/NtwDataSourceItem.h"

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

/// Holds servers and shares but is never a row itself.
bool IsNetworkContainer(ShellKind kind) {
    return kind == ShellKind::NetRestOfNet || kind == ShellKind::NetOther || kind == ShellKind::NetDomain;
}

} // namespace

NetworkScanner::~NetworkScanner() {
    RequestStop();
    Finish();
}

bool NetworkScanner::StartScanning() {
    m_running = true;
    if (Start())
        return true;
    m_running = false;
    return false;
}

void NetworkScanner::TakeItems(std::list<RefItemPtr<DataSourceItem>> &items) {
    DSingleLock const lock(m_lock);
    items.splice(items.end(), m_found);
}

void NetworkScanner::Run() {
    // Passes that find something do not count, and the counter is not reset: a network that keeps showing new names
    // keeps the thread alive.
    std::unique_ptr<platform::NetworkListener> const listener = ShellNamespace::Current().ListenToNetwork();
    for (int empty = 0; !IsStopped() && empty < kEmptyPasses;) {
        bool const found = ScanNetwork();
        bool const news = listener != nullptr && !IsStopped() && listener->Wait(m_stop.get_token());
        empty += found || news ? 0 : 1;
    }
    m_running = false;
}

bool NetworkScanner::ScanNetwork() {
    platform::ShellId const network = ShellNamespace::Current().Network();
    return !network.IsNull() && ScanFolder(network);
}

bool NetworkScanner::ScanFolder(platform::ShellId const &folder) {
    bool found = false;
    if (IsStopped())
        return found;
    ShellNamespace::Current().Enumerate(folder, ShellNamespace::Purpose::Network, [&](ShellChild &&child) {
        if (IsNetworkContainer(child.kind))
            found = ScanFolder(child.id); // what lies below decides
        else if (TakeChild(child))
            found = true;
        return !IsStopped();
    });
    return found;
}

bool NetworkScanner::TakeChild(ShellChild const &child) {
    if (child.name.empty() || IsStopped() || !m_seen.insert(child.name).second)
        return false;
    RefItemPtr<NtwDataSourceItem> item(NtwDataSourceItem::CreateItem(child.id, nullptr, nullptr));
    if (item == nullptr)
        return false;
    static_cast<void>(item->GetIconIndex()); // the look-up happens here, not while the list paints
    item->SetName(child.name);
    DSingleLock const lock(m_lock);
    m_found.emplace_back(std::move(item));
    return true;
}

} // namespace zelvar
