#include "zelvar/model/TemplDataSourceItem.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DefinitionUse.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/ChildWalker.h"
#include "zelvar/model/DataSourceRepository.h"
#include "zelvar/model/SystemImages.h"
#include "zelvar/model/TemplDataSourceItemItr.h"
#include "zelvar/xml/XMLNode.h"

#include <boost/make_shared.hpp>

namespace zelvar {

namespace {

constexpr int kFilterNodes = BDINode_Table; ///< filters are told by metadata nodes

char const *YesOrNo(bool answer) { return answer ? "YES" : "NO"; }

/// Closes a driver's node at the end of a block.
class NodeOwner {
public:
    NodeOwner(BDIDrvr &driver, BDINode *node) : m_driver(driver), m_node(node) {}
    ~NodeOwner() {
        if (m_node != nullptr)
            m_driver.CloseNode(m_node);
    }
    NodeOwner(NodeOwner const &) = delete;
    NodeOwner &operator=(NodeOwner const &) = delete;
    [[nodiscard]] BDINode *Get() const { return m_node; }

private:
    BDIDrvr &m_driver;
    BDINode *m_node;
};

/// The child called `name`, as a copy that the caller closes; null if there is none.
BDINode *FindChild(BDIDrvr &driver, void *repository, BDINode const &parent, std::string_view name) {
    ChildWalker walker(driver, repository, parent, kFilterNodes);
    for (walker.Start(); walker.Current() != nullptr; walker.Next())
        if (walker.Current()->name == name)
            return driver.CloneNode(walker.Current());
    return nullptr;
}

} // namespace

TemplDataSourceItem::CRep::~CRep() {
    BDIDrvr *const driver = m_drvr;
    if (driver == nullptr)
        return;
    if (m_root != nullptr)
        driver->CloseNode(m_root);
    if (m_repository != nullptr)
        driver->CloseRepository(m_repository);
    for (void *const former : m_formerRepositories)
        driver->CloseRepository(former);
}

TemplDataSourceItem *TemplDataSourceItem::CreateItem(XMLNode const *definition) {
    if (definition == nullptr)
        return nullptr;
    DString const url = TakeSecrets(DataSourceRepository::GetURLFromNode(definition));
    if (url.empty())
        return nullptr;
    DString const name = definition->GetAttrStr("name");
    Report::TraceMessage(Report::kTraceOpen, R"(Creating DataSource instance "%s" with URL "%s")", name.c_str(),
                         url.c_str());
    auto rep = boost::make_shared<CRep>();
    rep->m_url = url;
    rep->m_definition = name;
    if (XMLNode const *const driver = definition->GetChldNode("BDIDriver"))
        rep->m_drvrId = driver->GetAttrStr("id");
    if (!AreDriversPending())
        static_cast<void>(rep->Driver());
    if (XMLNode const *const driver = definition->GetChldNode("RDIDriver")) {
        rep->m_rdiDriverId = driver->GetAttrStr("id");
        Report::TraceMessage(Report::kTraceDriver, "RDI driver ID \"%s\"", rep->m_rdiDriverId.c_str());
    }
    std::unique_ptr<TemplDataSourceItem> item(new TemplDataSourceItem);
    item->m_rep = rep;
    item->m_name = name;
    item->m_kind = KindRoot;
    DString const directory = GetDataSourceTemplatesDir();
    if (XMLNode const *const icons = definition->GetChldNode("Icons"); icons != nullptr && !directory.empty())
        item->ReadIcons(*icons, directory);
    return item.release();
}

TemplDataSourceItem *TemplDataSourceItem::CreateForAddress(DString const &address) {
    std::unique_ptr<TemplDataSourceItem> item(new TemplDataSourceItem);
    item->m_rep = boost::make_shared<CRep>();
    item->m_rep->m_url = TakeSecrets(address);
    item->m_name = BDIMoniker(item->m_rep->m_url, nullptr).GetDisplayName();
    if (item->m_name.empty())
        item->m_name = item->m_rep->m_url;
    item->m_kind = KindRoot;
    return item.release();
}

void TemplDataSourceItem::ReadIcons(XMLNode const &icons, DString const &directory) {
    for (XMLNode const *icon = icons.GetFirstChild(); icon != nullptr; icon = icon->GetNext()) {
        DString const path = icon->GetAttrStr("path");
        if (icon->GetName() != "Icon" || path.empty())
            continue;
        ImageDescription picture;
        picture.kind = ImageDescription::Kind::File;
        picture.name = AppendPath(directory, path);
        if (!DFile(picture.name).Exist())
            continue;
        int const index = SystemImages().Add(picture);
        DString const type = icon->GetAttrStr("type");
        if (type == "DataSource")
            m_rep->m_iconDataSource = index;
        else if (type == "Folder")
            m_rep->m_iconFolder = index;
        else if (type == "Image")
            m_rep->m_iconImage = index;
    }
    m_rep->m_imageList = std::make_unique<ImageList>(SystemImages());
}

TemplDataSourceItem *TemplDataSourceItem::CreateItem(BDIDrvr *driver, char const *typed,
                                                     RefItemPtr<DataSourceItem> parent, DError *error) {
    if (typed == nullptr)
        return nullptr;
    DString const path = TakeSecrets(typed);
    void *repository = nullptr;
    BDINode *node = nullptr;
    if (driver != nullptr)
        repository = driver->OpenRepository(path.c_str(), &node, nullptr);
    if (repository == nullptr)
        repository = BDIDrvrMngr::Instance()->OpenFile(path.c_str(), &driver, &node, nullptr, error);
    if (repository == nullptr || driver == nullptr)
        return nullptr;
    std::unique_ptr<TemplDataSourceItem> item(new TemplDataSourceItem);
    item->m_rep = boost::make_shared<CRep>();
    item->m_rep->m_repository = repository;
    item->m_rep->m_drvr = driver;
    item->m_rep->m_file = path;
    item->m_node = node;
    if (node != nullptr)
        item->m_name = node->name;
    item->m_kind = KindRoot;
    item->m_parent = std::move(parent);
    return item.release();
}

TemplDataSourceItem *TemplDataSourceItem::CreateNodeItem(RefItemPtr<TemplDataSourceItem> const &root,
                                                         char const *path) {
    BDIDrvr *const driver = root ? root->Driver() : nullptr;
    if (driver == nullptr || root->m_rep->m_repository == nullptr)
        return nullptr;
    DSingleLock const lock(root->m_rep->m_lock);
    BDINode *const node = driver->OpenNode(root->m_rep->m_repository, path);
    if (node == nullptr)
        return nullptr;
    std::unique_ptr<TemplDataSourceItem> item(new TemplDataSourceItem);
    item->m_rep = root->m_rep;
    item->m_node = node;
    item->m_parent = root;
    item->m_kind = item->IsFolder() ? KindFolder : KindLeaf;
    return item.release();
}

// The node goes first, while the repository that it came from is still open.
TemplDataSourceItem::~TemplDataSourceItem() { TemplDataSourceItem::CloseNode(); }

BDIDrvr *TemplDataSourceItem::CRep::Driver() {
    // Not under the lock of the tree: that may be held for as long as a driver works.
    std::call_once(m_lookUp, [this] {
        if (m_drvrId.empty())
            return;
        m_drvr = BDIDrvrMngr::Instance()->GetDrvr(m_drvrId.c_str());
        Report::TraceMessage(Report::kTraceDriver, "BDI driver with ID \"%s\" was created? %s", m_drvrId.c_str(),
                             YesOrNo(m_drvr != nullptr));
    });
    return m_drvr;
}

BDIDrvr *TemplDataSourceItem::Driver() const { return m_rep ? m_rep->Driver() : nullptr; }

void TemplDataSourceItem::CloseNode() {
    if (m_node == nullptr)
        return;
    if (BDIDrvr *const driver = Driver())
        driver->CloseNode(m_node);
    m_node = nullptr;
}

void TemplDataSourceItem::SetNode(BDINode *node) {
    if (node == m_node)
        return;
    CloseNode();
    m_node = node;
}

DString TemplDataSourceItem::GetName() const {
    if (!m_name.empty() || m_node == nullptr)
        return m_name;
    return m_node->name;
}

DString TemplDataSourceItem::GetPath() const { return m_node == nullptr ? DString() : m_node->path; }

DString TemplDataSourceItem::GetSource() const {
    return !m_rep ? DString() : m_rep->m_url.empty() ? m_rep->m_file : m_rep->m_url;
}

DString TemplDataSourceItem::GetDefinition() const { return m_rep ? m_rep->m_definition : DString(); }

DString TemplDataSourceItem::GetRDIDriverId() const { return m_rep ? m_rep->m_rdiDriverId : DString(); }

DString TemplDataSourceItem::GetBDIDriverId() const {
    BDIDrvr const *const driver = Driver();
    return driver == nullptr ? DString() : driver->GetId();
}

void TemplDataSourceItem::NoteUse() const {
    if (m_rep && !m_rep->m_definition.empty())
        NoteUseOf(m_rep->m_definition);
}

DataSourceItemItr *TemplDataSourceItem::CreateIterator(ICancel *cancel, char const *filter, char const * /*driverId*/,
                                                       int nodeMask, DLGTemplate /*dlgTemplate*/) {
    NoteUse();
    auto itr = std::make_unique<TemplDataSourceItemItr>();
    return itr->Fill(*this, cancel, nodeMask, filter) ? itr.release() : nullptr;
}

RefItemPtr<TemplDataSourceItem> TemplDataSourceItem::Snapshot() const {
    RefItemPtr<TemplDataSourceItem> copy(new TemplDataSourceItem);
    copy->m_rep = m_rep;
    copy->m_name = m_name;
    copy->m_kind = m_kind;
    copy->m_iconList = m_iconList;
    copy->m_iconIdx = m_iconIdx;
    copy->m_parent = m_parent;
    if (m_node != nullptr)
        copy->m_node = Driver()->CloneNode(m_node);
    return copy;
}

RefItemPtr<DataSourceItem> TemplDataSourceItem::Clone() {
    RefItemPtr<TemplDataSourceItem> copy(new TemplDataSourceItem);
    copy->m_rep = m_rep;
    copy->m_name = m_name;
    copy->m_kind = m_kind;
    // A node of its own: both items close theirs, and a driver need not stand being asked twice for one.
    if (BDIDrvr *const driver = m_node == nullptr ? nullptr : Driver())
        copy->m_node = driver->CloneNode(m_node);
    return copy;
}

bool TemplDataSourceItem::IsFolder() const {
    return m_node != nullptr && (m_node->type & (BDINode_Container | BDINode_Folder)) != 0;
}

bool TemplDataSourceItem::IsFile(int mask) const {
    constexpr unsigned kAnyData = 0xFE; // a folder node counts for both
    return m_node != nullptr && (m_node->type & (mask == 0 ? kAnyData : static_cast<unsigned>(mask))) != 0;
}

int TemplDataSourceItem::GetIconIndex() const {
    if (HasOwnIcon())
        return m_iconIndex;
    if (HasInheritedIcon())
        return m_iconIdx;
    if (!m_rep)
        return m_iconIndex;
    if (m_kind == KindRoot)
        return m_rep->m_iconDataSource;
    constexpr unsigned kImage = 0xF6; // tables and plain containers take the folder's picture
    bool const isFolder = m_node != nullptr ? (m_node->type & kImage) == 0 : m_kind == KindFolder;
    return isFolder ? m_rep->m_iconFolder : m_rep->m_iconImage;
}

HIMAGELIST TemplDataSourceItem::GetImageList() const {
    if (HasOwnIcon())
        return m_hImageList;
    if (HasInheritedIcon())
        return m_iconList;
    return m_rep ? m_rep->m_imageList.get() : m_hImageList;
}

DError TemplDataSourceItem::GetFailure() const {
    if (!m_rep)
        return {};
    std::lock_guard const lock(m_rep->m_stateLock);
    return m_rep->m_failure.IsSet() ? m_rep->m_failure : m_listingFailure;
}

bool TemplDataSourceItem::GetModificationTime(SystemTime &time) const {
    if (m_node == nullptr || m_node->modified == 0)
        return false;
    time = ToLocalTime(m_node->modified);
    return true;
}

void TemplDataSourceItem::Prepare() { std::ignore = CreateRepository(); }

bool TemplDataSourceItem::CreateRepository() {
    if (!m_rep)
        return false;
    DSingleLock const lock(m_rep->m_lock);
    NoteUse();
    if (m_rep->m_repository == nullptr && !m_rep->m_url.empty()) {
        BDINode *node = nullptr;
        DError failure;
        void *repository = nullptr;
        if (BDIDrvr *named = m_rep->Driver()) {
            repository = named->OpenRepositoryOrSay(m_rep->m_url.c_str(), false, &named, &node, nullptr, &failure);
        } else {
            BDIDrvr *chosen = nullptr; // one that is only tried is nobody's business
            repository = BDIDrvrMngr::Instance()->OpenFile(m_rep->m_url.c_str(), &chosen, &node, nullptr, &failure);
            m_rep->m_drvr = repository == nullptr ? nullptr : chosen;
        }
        m_rep->m_repository = repository;
        // Another one that came as far as a server was not the wrong one.
        bool const isAboutDriver =
            failure.Why() == DError::Cause::Unknown || failure.Why() == DError::Cause::NotSupported;
        if (m_rep->m_repository == nullptr && m_rep->m_drvr == nullptr && !m_rep->m_drvrId.empty() && isAboutDriver)
            failure.Set("there is no driver \"" + m_rep->m_drvrId + "\"; " + failure.Text(), failure.Why(),
                        failure.Detail());
        if (RequestScope const *const scope = RequestScope::Current(); scope != nullptr && scope->IsStopped())
            failure.Clear(); // whoever stops it knows why
        if (m_rep->m_repository != nullptr)
            SetNode(node);
        else if (failure.IsSet())
            Report::TraceMessage(Report::kTraceOpen, "%s", failure.Text().c_str());
        std::lock_guard const stateLock(m_rep->m_stateLock);
        m_rep->m_failure = m_rep->m_repository == nullptr ? std::move(failure) : DError();
        if (m_rep->m_repository != nullptr && node != nullptr)
            m_rep->m_root = m_rep->Driver()->CloneNode(node);
    } else if (m_node == nullptr) {
        std::ignore = TakeOpened();
    }
    DString driver = "auto";
    if (BDIDrvr const *const chosen = m_rep->m_drvr)
        driver = Format("id: \"%s\", info: %s", chosen->GetId().c_str(), chosen->GetInfo().c_str());
    bool const isOpen = m_rep->m_repository != nullptr;
    Report::TraceMessage(Report::kTraceOpen, "Repository by URL \"%s\" was created? %s (driver %s)",
                         m_rep->m_url.c_str(), YesOrNo(isOpen), driver.c_str());
    return isOpen;
}

bool TemplDataSourceItem::TakeOpened() {
    if (m_node != nullptr || !m_rep)
        return m_node != nullptr;
    std::lock_guard const lock(m_rep->m_stateLock);
    if (m_rep->m_root != nullptr) // with it the driver is known
        m_node = m_rep->Driver()->CloneNode(m_rep->m_root);
    return m_node != nullptr;
}

bool TemplDataSourceItem::IsOnServer() const {
    DString const source = GetSource();
    return !StartsWithNoCase(source, "file://") && BDIMoniker(source, nullptr).IsUrl();
}

bool TemplDataSourceItem::IsFilterSupported() {
    BDIDrvr const *const driver = !m_rep || m_rep->m_repository == nullptr ? nullptr : Driver();
    return driver != nullptr && driver->GetAttrInt("BDI_Filtering") == 1;
}

bool TemplDataSourceItem::ResetFilter(char const *filter) {
    BDIDrvr *const driver = !m_rep || m_rep->m_repository == nullptr ? nullptr : Driver();
    if (driver == nullptr)
        return false;
    DSingleLock const lock(m_rep->m_lock);
    BDINode *node = nullptr;
    void *const repository = driver->OpenRepository(m_rep->m_url.c_str(), &node, filter);
    if (repository == nullptr)
        return false;
    SetNode(node);
    // Items listed before still hold nodes of the former one, so it is closed with the tree.
    m_rep->m_formerRepositories.push_back(m_rep->m_repository.exchange(repository));
    return true;
}

DString TemplDataSourceItem::GetFilterConf() {
    if (!IsFilterSupported())
        return {};
    BDIDrvr &driver = *Driver();
    void *const repository = m_rep->m_repository;
    DSingleLock const lock(m_rep->m_lock);
    NodeOwner const top(driver, driver.OpenNode(repository, m_rep->m_url.c_str()));
    if (top.Get() == nullptr)
        return {};
    NodeOwner const filters(driver, FindChild(driver, repository, *top.Get(), "Filters"));
    NodeOwner const metaData(driver, filters.Get() == nullptr ? FindChild(driver, repository, *top.Get(), "MetaData")
                                                              : nullptr);
    NodeOwner const nested(
        driver, metaData.Get() == nullptr ? nullptr : FindChild(driver, repository, *metaData.Get(), "Filters"));
    BDINode const *const found = filters.Get() != nullptr ? filters.Get() : nested.Get();
    if (found == nullptr)
        return {};
    DString lines;
    ChildWalker walker(driver, repository, *found, kFilterNodes);
    for (walker.Start(); walker.Current() != nullptr; walker.Next()) {
        if (walker.Current()->name != "Filter")
            continue;
        if (!lines.empty())
            lines += '\n';
        lines += walker.Current()->value;
    }
    return lines;
}

void TemplDataSourceItem::BuildParents() {
    if (m_parent)
        m_parent->BuildParents();
}

} // namespace zelvar
