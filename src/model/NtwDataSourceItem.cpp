#include "zelvar/model/NtwDataSourceItem.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/NtwDataSourceItemItr.h"
#include "zelvar/model/SystemImages.h"
#include "zelvar/model/TemplDataSourceItem.h"

#include <algorithm>

namespace zelvar {

using platform::ShellId;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

BDIDrvr *FindDriver(char const *driverId) {
    return driverId == nullptr || *driverId == '\0' ? nullptr : BDIDrvrMngr::Instance()->GetDrvr(driverId);
}

bool HoldsSeveralImages(BDIDrvr const &driver) { return driver.GetAttrInt("BDI_Multiple_Images") == 1; }

/// For a file among others: who lists many has little time for each. `path` is made only if a driver has to be asked.
/// `*unanswered` is set if one that was gave no answer in time.
template <class MakePath>
bool CanOpen(std::string_view fileName, char const *driverId, MakePath const &path, bool *unanswered) {
    if (BDIDrvr const *const driver = FindDriver(driverId)) {
        RequestScope const scope(RequestKind::Probe);
        bool const can = HoldsSeveralImages(*driver) && driver->CanReadPath(path());
        *unanswered = scope.IsUnanswered();
        return can;
    }
    // The others would not claim a file of that name, so the answer is that of asking them all.
    std::vector<BDIDrvr *> const &candidates = BDIDrvrMngr::Instance()->CandidatesFor(fileName);
    if (candidates.empty())
        return false;
    DString const text = path();
    RequestScope const scope(RequestKind::Probe);
    bool const can = std::any_of(candidates.begin(), candidates.end(), [&](BDIDrvr const *driver) {
        return HoldsSeveralImages(*driver) && driver->CanReadPath(text);
    });
    *unanswered = !can && scope.IsUnanswered();
    return can;
}

/// For a file that somebody has named: it gets its time, and what it is called decides nothing.
std::optional<bool> CanOpenNamed(DString const &path, char const *driverId, RequestScope::StopQuestion isStopped) {
    RequestScope const scope(RequestKind::Probe, std::move(isStopped), kNamedProbe);
    BDIDrvr const *const driver = FindDriver(driverId);
    bool const can = driver != nullptr ? HoldsSeveralImages(*driver) && driver->CanReadPath(path)
                                       : BDIDrvrMngr::Instance()->FindContainerDriver(path) != nullptr;
    return !can && scope.IsUnanswered() ? std::nullopt : std::optional(can);
}

} // namespace

bool IsUnclassified(DataSourceItem const &item) {
    auto const *const file = dynamic_cast<NtwDataSourceItem const *>(&item);
    return file != nullptr && file->IsUnclassified();
}

bool BecomeContainer(DataSourceItem &item) {
    auto *const folder = dynamic_cast<NtwDataSourceItem *>(&item);
    if (folder == nullptr || folder->GetType() != NtwDataSourceItem::TYPE_FOLDER || folder->IsUnreachable())
        return false;
    DString const path = folder->GetPath();
    std::optional<FoundDataFolder> const found = path.starts_with('/') ? LookForDataFolder(path) : std::nullopt;
    if (!found || !CanOpenAsRepository(path, nullptr))
        return false;
    folder->BecomeDataFolder(found->kind);
    folder->SetClassified(true);
    return true;
}

bool CanOpenAsRepository(DString const &path, char const *driverId) {
    return CanOpenNamed(path, driverId, {}).value_or(false);
}

std::optional<bool> ClassifyAtLeisure(DString const &path, StopSignal const *stop) {
    return CanOpenNamed(path, nullptr, [stop] { return stop != nullptr && stop->load(std::memory_order_relaxed); });
}

HIMAGELIST NtwDataSourceItem::hImageList = nullptr;

bool NtwDataSourceItem::Initialize() {
    if (hImageList == nullptr)
        hImageList = &SystemImages();
    return true;
}

NtwDataSourceItem *NtwDataSourceItem::CreateDSItem() { return new NtwDataSourceItem; }

NtwDataSourceItem *NtwDataSourceItem::CreateItem(ShellId const &id, RefItemPtr<DataSourceItem> parent,
                                                 char const *driverId) {
    std::unique_ptr<NtwDataSourceItem> item(new NtwDataSourceItem);
    item->m_id = id;
    item->SetParent(std::move(parent));
    return item->InitItem(driverId, Asked::ByName) ? item.release() : nullptr;
}

NtwDataSourceItem *NtwDataSourceItem::CreateItem(char const *path, RefItemPtr<DataSourceItem> parent,
                                                 char const *driverId) {
    if (path == nullptr || !DoesPlaceAnswer(path))
        return nullptr;
    ShellId const id = ShellNamespace::Current().Parse(path);
    return id.IsNull() ? nullptr : CreateItem(id, std::move(parent), driverId);
}

NtwDataSourceItem *NtwDataSourceItem::CreateUnreachable(char const *path) {
    ShellId const id = path == nullptr ? ShellId() : ShellNamespace::Current().ParseUnseen(path);
    if (id.IsNull())
        return nullptr;
    auto *const item = new NtwDataSourceItem;
    item->m_id = id;
    item->m_type = TYPE_FOLDER;
    item->m_unreachable = true;
    return item;
}

NtwDataSourceItem *NtwDataSourceItem::CreateChild(platform::ShellChild const &child,
                                                  RefItemPtr<DataSourceItem> const &parent, char const *driverId,
                                                  int icon, Asked asked) {
    std::unique_ptr<NtwDataSourceItem> item(new NtwDataSourceItem);
    item->m_id = child.id;
    item->m_parent = parent;
    item->m_link = child.link;
    if (!item->InitItem(driverId, asked))
        return nullptr;
    item->m_sysIcon.store(icon, std::memory_order_relaxed);
    if (item->m_type == TYPE_FILE) {
        item->m_fileSize = child.file.size;
        item->m_modified = child.file.modified;
    }
    item->SetName(child.name);
    return item.release();
}

NtwDataSourceItem *NtwDataSourceItem::CreateUnasked(platform::ShellChild const &child,
                                                    RefItemPtr<DataSourceItem> parent) {
    constexpr int kLookedUpLate = -1;
    return CreateChild(child, parent, nullptr, kLookedUpLate, Asked::ByNobody);
}

NtwDataSourceItem::~NtwDataSourceItem() = default;

bool NtwDataSourceItem::InitItem(char const *driverId, Asked asked) {
    if (m_type != TYPE_UNKNOWN)
        return true;
    if (m_id.IsNull() || m_id.IsDesktop())
        return false;
    // What cannot be told better can be entered, and comes out empty.
    m_type = TYPE_FOLDER;
    ShellKind kind = m_id.Kind();
    if (kind == ShellKind::Unknown)
        kind = ShellNamespace::Current().KindOf(m_id).value_or(ShellKind::Unknown);
    if (kind != ShellKind::File)
        return true;
    bool isContainer = asked == Asked::FoundContainer;
    m_unseen = asked == Asked::ByNobody;
    if (asked == Asked::ByName) {
        std::optional<bool> const can = CanOpenNamed(GetPath(), driverId, {});
        m_unclassified = !can;
        isContainer = can.value_or(false);
    } else if (asked == Asked::AmongOthers) {
        isContainer = CanOpen(
            m_id.Element(), driverId, [this] { return GetPath(); }, &m_unclassified);
    }
    m_type = isContainer ? TYPE_REPOSITORY_FILE : TYPE_FILE;
    return true;
}

void NtwDataSourceItem::SetClassified(bool isContainer) {
    if (!MayTurnOutContainer())
        return;
    m_unclassified = false;
    m_unseen = false;
    m_type = isContainer ? TYPE_REPOSITORY_FILE : m_dataFolder ? TYPE_DATA_FOLDER : TYPE_FILE;
}

void NtwDataSourceItem::BecomeDataFolder(DataFolder kind) {
    m_dataFolder = kind;
    m_type = TYPE_DATA_FOLDER;
    m_unseen = true;
    m_sysIcon.store(SystemImages().Add({.name = "folder-data", .fallback = "folder-data", .linkOverlay = m_link}),
                    std::memory_order_relaxed);
}

void NtwDataSourceItem::InitProps() {
    std::ignore = GetIconIndex(); // looked up here, on the listing thread, not while a list paints
    if (m_type != TYPE_FILE)
        return;
    if (std::optional<platform::FileTimes> const times = ShellNamespace::Current().Times(m_id)) {
        m_fileSize = times->size;
        m_modified = times->modified;
    }
}

void NtwDataSourceItem::Clear() {
    m_id = {};
    m_name.clear();
    m_nameIsElement = false;
}

void NtwDataSourceItem::SetName(DString const &name) {
    m_nameIsElement = !name.empty() && name == m_id.Element();
    m_name = m_nameIsElement ? DString() : name;
}

DString NtwDataSourceItem::GetName() const {
    if (m_nameIsElement)
        return DString(m_id.Element());
    if (!m_name.empty() || m_id.IsNull())
        return m_name;
    return ShellNamespace::Current().DisplayName(m_id);
}

DString NtwDataSourceItem::GetPath() const { return m_id.IsNull() ? DString() : ShellNamespace::Current().Path(m_id); }

bool NtwDataSourceItem::IsFolder() const { return m_type == TYPE_FOLDER || m_type == TYPE_REPOSITORY_FILE; }

int NtwDataSourceItem::GetIconIndex() const { return HasOwnIcon() ? m_iconIndex : SystemIcon(); }

int NtwDataSourceItem::SystemIcon() const {
    std::int32_t icon = m_sysIcon.load(std::memory_order_relaxed);
    if (icon < 0 && !m_id.IsNull()) {
        icon = SystemImages().Add(ShellNamespace::Current().Icon(m_id, m_link));
        m_sysIcon.store(icon, std::memory_order_relaxed);
    }
    return icon;
}

HIMAGELIST NtwDataSourceItem::GetImageList() const { return HasOwnIcon() ? m_hImageList : hImageList; }

DataSourceItem::DataSourceType NtwDataSourceItem::GetDataSourceType() const {
    return m_id.IsNull() ? DST_NONE : DST_FILE_SYSTEM;
}

bool NtwDataSourceItem::GetModificationTime(SystemTime &time) const {
    if (m_modified == 0)
        return false;
    SystemTime const local = ToLocalTime(m_modified);
    if (local.wYear == 0)
        return false;
    time = local;
    return true;
}

// Reachable as far as the model cares: failure to read shows later.
bool NtwDataSourceItem::CheckItemAccess() const { return true; }

RefItemPtr<DataSourceItem> NtwDataSourceItem::Clone() {
    RefItemPtr<NtwDataSourceItem> copy(new NtwDataSourceItem);
    copy->m_id = m_id;
    copy->m_name = m_name;
    copy->m_nameIsElement = m_nameIsElement;
    copy->m_link = m_link;
    copy->m_type = m_type;
    copy->m_unclassified = m_unclassified;
    copy->m_unseen = m_unseen;
    copy->m_unreachable = m_unreachable;
    copy->m_dataFolder = m_dataFolder;
    copy->m_sysIcon.store(m_sysIcon.load(std::memory_order_relaxed), std::memory_order_relaxed);
    copy->m_fileSize = m_fileSize;
    copy->m_modified = m_modified;
    copy->SetParent(m_parent);
    return copy;
}

RefItemPtr<DataSourceItem> NtwDataSourceItem::OpenRepositoryItem(char const *driverId) {
    DString const path = GetPath();
    if (path.empty())
        return nullptr;
    // The tree's parent is a copy of this item: this item holds the tree, and the two would keep each other alive.
    RefItemPtr<TemplDataSourceItem> item(TemplDataSourceItem::CreateItem(FindDriver(driverId), path.c_str(), Clone()));
    if (item)
        item->SetIcon(hImageList, SystemIcon()); // one that was named was not listed, nor its icon looked up
    return item;
}

DataSourceItemItr *NtwDataSourceItem::CreateIterator(ICancel *cancel, char const *filter, char const *driverId,
                                                     int nodeMask, DLGTemplate dlgTemplate) {
    switch (m_type) {
    case TYPE_FOLDER: {
        auto itr = std::make_unique<NtwDataSourceItemItr>();
        itr->Fill(m_id, cancel, this, filter, driverId);
        return itr.release();
    }
    case TYPE_REPOSITORY_FILE:
        if (!m_repositoryItem)
            m_repositoryItem = OpenRepositoryItem(driverId);
        return m_repositoryItem ? m_repositoryItem->CreateIterator(cancel, filter, driverId, nodeMask, dlgTemplate)
                                : nullptr;
    case TYPE_UNKNOWN:
    case TYPE_FILE:
    case TYPE_DATA_FOLDER:
        break;
    }
    return nullptr;
}

void NtwDataSourceItem::DeleteIterator(DataSourceItemItr *itr) {
    if (itr != nullptr && m_repositoryItem)
        m_repositoryItem->DeleteIterator(itr);
    else
        delete itr;
}

void NtwDataSourceItem::BuildParents() {
    if (m_id.IsNull())
        return;
    if (m_parent) {
        m_parent->BuildParents();
        return;
    }
    ShellNamespace const &shell = ShellNamespace::Current();
    // The chain ends below the drives place and below the network place: those two never become items.
    RefItemPtr<NtwDataSourceItem> current(this);
    for (ShellId above = m_id.Parent();
         !above.IsNull() && !above.IsDesktop() && !(above == shell.Drives()) && !(above == shell.Network());
         above = above.Parent()) {
        RefItemPtr<NtwDataSourceItem> const parent(CreateItem(above, nullptr, nullptr));
        if (!parent)
            break;
        current->SetParent(parent);
        current = parent;
    }
}

} // namespace zelvar
