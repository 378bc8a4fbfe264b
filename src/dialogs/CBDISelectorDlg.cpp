#include "zelvar/dialogs/CBDISelectorDlg.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/dialogs/DialogResources.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

using platform::ControlKind;
using platform::DialogItem;

enum ControlIds { kOk = 1, kCancel = 2, kTree = 1001, kList = 6004 };

constexpr DialogItem kItems[] = {
    {kOk, ControlKind::DefaultButton, Mark("OK"), 118, 138, 50, 14, {100, 100, 100, 100}},
    {kCancel, ControlKind::Button, Mark("Cancel"), 184, 138, 50, 14, {100, 100, 100, 100}},
    {kTree, ControlKind::List, "", 7, 7, 144, 124, {0, 0, 100, 100}},
    {kList, ControlKind::List, "", 152, 7, 194, 124, {100, 0, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{
    .id = 583, .caption = Mark("BDI Selector Dialog"), .width = 353, .height = 159, .items = kItems};
constexpr unsigned kFlags = 3;

constexpr unsigned kNodeImages = 584; // a strip: folder, open folder, raster, table, vector
constexpr unsigned long kMagenta = 0xFF00FF;
enum NodeImages { kFolderImage = 0, kOpenFolderImage = 1, kRasterImage = 2, kTableImage = 3, kThematicImage = 4 };

constexpr int kContainers = BDINode_Container | BDINode_Folder;
constexpr int kNameWidth = 200; // pixels
// What has not answered by then, of those in sight, is asked again when it is expanded.
constexpr std::chrono::milliseconds kTimeToAsk{1000};

platform::MessageId const kAskVisible = platform::RegisterMessage();

int ImageOf(BDINode const &node) {
    switch (node.type) {
    case BDINode_Raster:
        return kRasterImage;
    case BDINode_Thematic:
        return kThematicImage;
    case BDINode_Table:
        return kTableImage;
    default: // of several kinds as well
        return kFolderImage;
    }
}

char const *TextOf(char const *text) { return text == nullptr ? "" : text; }

/// A request that Escape stops.
class StoppableRequest {
public:
    explicit StoppableRequest(std::optional<std::chrono::milliseconds> time = {})
        : m_scope(
              RequestKind::List, [this] { return m_watch.IsPressed(); }, time) {}

    bool IsStopped() { return m_watch.IsPressed(); }
    [[nodiscard]] bool IsUnanswered() const { return m_scope.IsUnanswered(); }

private:
    platform::EscapeWatch m_watch;
    RequestScope m_scope;
};

} // namespace

/// The nodes of an open repository, closed behind whoever looks at them.
class CBDISelectorDlg::Nodes {
public:
    explicit Nodes(CBDISelectorDlg const &dialog) : m_drvr(dialog.m_drvr), m_repos(dialog.m_repos) {}

    /// Calls `visit` with the node of a path. False, and not called, if it cannot be opened.
    template <class Visit>
    bool WithNode(DString const &path, Visit &&visit) const {
        BDINode *const node = m_repos == nullptr ? nullptr : m_drvr->OpenNode(m_repos, path.c_str());
        if (node == nullptr)
            return false;
        visit(std::as_const(*node));
        m_drvr->CloseNode(node);
        return true;
    }
    /// Calls `visit` with each child that has a bit of `mask`.
    template <class Visit>
    void ForEachChild(BDINode const &node, int mask, Visit &&visit) const {
        void *const find = m_drvr->FindFirstChildNode(m_repos, &node, mask);
        if (find == nullptr)
            return;
        while (BDINode const *child = m_drvr->FindNextChildNode(find))
            visit(*child);
        m_drvr->FindClose(find);
    }
    [[nodiscard]] bool HasContainers(BDINode const &node) const {
        void *const find = m_drvr->FindFirstChildNode(m_repos, &node, kContainers);
        if (find != nullptr)
            m_drvr->FindClose(find);
        return find != nullptr;
    }

private:
    BDIDrvr *m_drvr;
    void *m_repos;
};

CBDISelectorDlg::CBDISelectorDlg(BDIDrvr *drvr, char const *path, unsigned int nodeMask, char const *title,
                                 bool multiSelect, QWidget *parent)
    : cdxCDynamicDialog(kTemplate, parent, FreedomAll, kFlags), m_path(TextOf(path)), m_drvr(drvr),
      m_nodeMask(nodeMask), m_title(TextOf(title)), m_multiSelect(multiSelect) {
    static bool const initialised = [] {
        UseDialogResources();
        CZelImageList::RegisterBitmap(kNodeImages, ":/zelvar/dialogs/nodes.svg");
        return true;
    }();
    static_cast<void>(initialised);
    m_messages.On(kAskVisible, this, &CBDISelectorDlg::AskVisible);
}

CBDISelectorDlg::~CBDISelectorDlg() {
    DestroyWindow(); // while what its controls show is still there
    m_unasked.clear();
    CloseRepository();
}

void CBDISelectorDlg::OpenRepository() {
    if (m_drvr == nullptr || m_repos != nullptr)
        return;
    StoppableRequest const request;
    m_repos = m_drvr->OpenRepository(m_path.c_str(), &m_root, nullptr);
}

void CBDISelectorDlg::CloseRepository() {
    if (m_drvr != nullptr && m_root != nullptr)
        m_drvr->CloseNode(std::exchange(m_root, nullptr));
    if (m_drvr != nullptr && m_repos != nullptr)
        m_drvr->CloseRepository(std::exchange(m_repos, nullptr));
    m_drvr = nullptr;
}

QWidget *CBDISelectorDlg::MakeControl(DialogItem const &item) {
    if (item.id == kTree)
        return m_tree = new CZelTreeCtrl(this);
    if (item.id == kList)
        return m_list = new CZelListCtrl(this);
    return nullptr;
}

bool CBDISelectorDlg::OnInitDialog() {
    cdxCDynamicDialog::OnInitDialog();
    m_treePaths.Destroy();
    m_listPaths.clear();
    m_unasked.clear();
    m_btnOK = platform::GetDlgItem<QAbstractButton>(*this, kOk);
    m_btnCancel = platform::GetDlgItem<QAbstractButton>(*this, kCancel);
    if (!m_title.empty())
        setWindowTitle(platform::ToQString(m_title));
    platform::EscapeWatch const watch; // one Escape for all that is asked here
    OpenRepository();

    m_list->AddCol(Translated("Name"), ADICol_String, false, kNameWidth, LVCFMT_LEFT);
    m_list->SetMultiSlct(m_multiSelect);
    m_list->ModifyStyle(0, LVS_SHOWSELALWAYS); // what OK takes is seen from the tree, too
    m_list->SetExtendedStyle(m_list->GetExtendedStyle() | LVS_EX_LABELTIP);
    m_list->setAccessibleName(platform::Shown("Items"));
    m_tree->setAccessibleName(platform::Shown("Containers"));
    m_images.Create(kNodeImages, platform::kSmallPicture, 0, kMagenta);
    m_tree->SetImageList(m_images.GetHandle(), TVSIL_NORMAL);
    connect(m_tree, &CZelTreeCtrl::ItemExpanding, this, [this](TreeExpanding *what) { OnItemExpanding(*what); });
    connect(m_tree, &CZelTreeCtrl::ItemExpanded, this, &CBDISelectorDlg::AskLater);
    connect(m_tree, &CZelTreeCtrl::SelChanged, this, &CBDISelectorDlg::OnTreeSelChanged);
    connect(m_tree, &CZelTreeCtrl::DoubleClick, this, &CBDISelectorDlg::OnTreeDblClk);
    connect(m_list, &CZelListCtrl::DoubleClick, this, [this](int row) { OnListDblClk(row); });
    connect(m_tree->verticalScrollBar(), &QScrollBar::valueChanged, this, &CBDISelectorDlg::AskLater);
    connect(m_tree->verticalScrollBar(), &QScrollBar::rangeChanged, this, &CBDISelectorDlg::AskLater);

    m_btnOK->setEnabled(false);
    {
        StoppableRequest const request;
        Nodes(*this).WithNode(m_path, [this](BDINode const &root) { AskForChildren(AddTreeItem(nullptr, root)); });
    }
    if (TreeNode *const first = m_tree->GetRootItem()) {
        m_tree->SelectItem(first);
        if (m_list->GetNumRow() > 0 && m_list->GetNumSlct() == 0)
            m_list->SetSlct(0, true);
    }
    if (m_list->GetNumRow() > 0)
        m_list->setFocus();
    else
        m_tree->setFocus();
    return false; // the focus is set
}

HTREEITEM CBDISelectorDlg::AddTreeItem(HTREEITEM parent, BDINode const &node) {
    TreeNode *const item = m_tree->AddItem(node.name, 0, parent, TVI_LAST);
    m_tree->SetItemImage(item, ImageOf(node), ImageOf(node));
    m_treePaths[item] = node.path;
    // Others have no containers in them, whoever made them.
    if ((node.type & static_cast<std::uint32_t>(kContainers)) != 0) {
        m_tree->SetItemChildren(item, true);
        if (NodePtr kept{m_drvr->CloneNode(&node), {m_drvr}})
            m_unasked[item] = std::move(kept);
    }
    return item;
}

void CBDISelectorDlg::AskForChildren(HTREEITEM item) {
    auto const unasked = m_unasked.extract(item);
    if (unasked.empty())
        return;
    bool const has = Nodes(*this).HasContainers(*unasked.mapped());
    RequestScope const *const scope = RequestScope::Current();
    m_tree->SetItemChildren(item, has || (scope != nullptr && scope->IsUnanswered()));
}

void CBDISelectorDlg::AskLater() {
    if (!m_unasked.empty() && !std::exchange(m_askPosted, true))
        platform::PostMessage(this, kAskVisible);
}

void CBDISelectorDlg::AskVisible() {
    m_askPosted = false;
    StoppableRequest request(kTimeToAsk);
    int const bottom = m_tree->viewport()->height();
    Rect place;
    HTREEITEM item = m_tree->GetFirstVisibleItem();
    for (; item != nullptr && !request.IsStopped() && !request.IsUnanswered();
         item = m_tree->GetNextVisibleItem(item)) {
        if (!m_tree->GetItemRect(item, place, false) || place.top >= bottom)
            return;
        AskForChildren(item);
    }
}

void CBDISelectorDlg::OnItemExpanding(TreeExpanding const &expanding) {
    bool const expand = expanding.action == TVE_EXPAND;
    bool const due = expand && m_tree->ItemHasChildren(expanding.item) && m_tree->GetItemData(expanding.item) == 0;
    if (due && !FillItem(expanding.item))
        return;
    int const image = expand ? kOpenFolderImage : kFolderImage;
    m_tree->SetItemImage(expanding.item, image, image);
}

bool CBDISelectorDlg::FillItem(HTREEITEM item) {
    StoppableRequest request;
    Nodes const nodes(*this);
    nodes.WithNode(m_treePaths[item], [&](BDINode const &node) {
        nodes.ForEachChild(node, kContainers, [&](BDINode const &child) { AddTreeItem(item, child); });
    });
    if (request.IsStopped())
        return false; // another time
    m_unasked.erase(item);
    m_tree->SetItemData(item, 1);         // filled, once
    m_tree->SetItemChildren(item, false); // those that it has show its expander
    return true;
}

void CBDISelectorDlg::OnTreeSelChanged() {
    TreeNode *const item = m_tree->GetSelectedItem();
    m_btnOK->setEnabled(item != nullptr);
    m_list->RmvAllRow();
    m_listPaths.clear();
    DString const *const path = m_treePaths.Find(item);
    if (path == nullptr)
        return;
    StoppableRequest const request;
    Nodes const nodes(*this);
    nodes.WithNode(*path, [&](BDINode const &node) {
        nodes.ForEachChild(node, static_cast<int>(m_nodeMask), [this](BDINode const &child) {
            m_list->SetText(m_list->AddRow(), 0, child.name);
            m_list->SetData(m_listPaths.size());
            m_listPaths.push_back(child.path);
        });
    });
    ShowWholeNames();
}

void CBDISelectorDlg::ShowWholeNames() {
    int const width = m_list->GetColumnWidth(0);
    m_list->ResizeColToFit(0);
    m_list->SetColWidth(0, std::max(width, m_list->GetColumnWidth(0))); // never narrower than it was left
}

bool CBDISelectorDlg::Collect() {
    m_results.clear();
    DVector<int> rows;
    m_list->GetSlct(rows);
    for (int const row : rows)
        m_results.push_back(m_listPaths[m_list->GetItemData(row)]);
    DString const *const container = m_treePaths.Find(m_tree->GetSelectedItem());
    if (m_results.empty() && container != nullptr)
        m_results.push_back(*container);
    return !m_results.empty();
}

void CBDISelectorDlg::OnOK() {
    Collect();
    cdxCDynamicDialog::OnOK();
}

void CBDISelectorDlg::OnTreeDblClk(Point point, long long *result) {
    unsigned flags = 0;
    TreeNode *const item = m_tree->HitTest(point, &flags);
    if (item == nullptr || (flags & TVHT_ONITEM) == 0)
        return;
    m_tree->SelectItem(item);
    // It was selected before, perhaps, and rows with it: the container is meant as a whole.
    m_list->SetItemState(-1, 0, LVIS_SELECTED);
    if (!Collect())
        return;
    *result = 1; // it is not expanded any more
    cdxCDynamicDialog::OnOK();
}

void CBDISelectorDlg::OnListDblClk(int row) {
    if (row < 0)
        return; // beside the rows
    m_list->ClearSlct();
    m_list->SetSlct(row, true);
    OnOK();
}

bool CBDISelectorDlg::event(QEvent *event) { return m_messages.Dispatch(*event) || cdxCDynamicDialog::event(event); }

} // namespace zelvar
