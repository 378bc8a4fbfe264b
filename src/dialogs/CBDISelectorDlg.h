#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/platform/ui/WindowMessage.h"
#include "zelvar/views/TreeTypes.h"

#include <memory>
#include <unordered_map>

class QAbstractButton;

namespace zelvar {

class CZelListCtrl;
class CZelTreeCtrl;

/// Selector of nodes inside one data source: a tree of its containers, and a list of what the selected one holds.
///
/// All questions to the driver are asked on the user-interface thread; Escape stops one that takes long. What cannot be
/// opened stays without children and rows, and nobody is told.
class ZELVAR_API CBDISelectorDlg : public cdxCDynamicDialog {
    Q_OBJECT

public:
    /// `drvr` stays the caller's and must outlive the dialog. `nodeMask`: `BDINodeType` bits of the items that are
    /// listed. An empty title leaves the dialog's own.
    CBDISelectorDlg(BDIDrvr *drvr, char const *path, unsigned int nodeMask, char const *title, bool multiSelect,
                    QWidget *parent);
    ~CBDISelectorDlg() override;

    DVectorSafe<DString> m_results; ///< paths of the chosen nodes, after OK

protected:
    bool OnInitDialog() override;
    void OnOK() override;
    QWidget *MakeControl(platform::DialogItem const &item) override;
    bool event(QEvent *event) override;

private:
    class Nodes;
    struct CloseNode {
        BDIDrvr *drvr = nullptr;
        void operator()(BDINode *node) const { drvr->CloseNode(node); }
    };
    using NodePtr = std::unique_ptr<BDINode, CloseNode>;

    void OpenRepository();
    void CloseRepository();
    HTREEITEM AddTreeItem(HTREEITEM parent, BDINode const &node);
    void OnItemExpanding(TreeExpanding const &expanding);
    bool FillItem(HTREEITEM item); ///< false if the user stopped it
    void OnTreeSelChanged();
    void OnTreeDblClk(Point point, long long *result);
    void OnListDblClk(int row);
    void ShowWholeNames();
    bool Collect();

    // Whether an item has children is asked when it comes into sight: among thousands of items most never do. Until
    // then it is marked as having some.
    void AskLater();
    void AskVisible();
    void AskForChildren(HTREEITEM item);

    DString m_path;
    DVectorSafe<DString> m_listPaths; ///< of the list's rows; a row's data is its place here, however they are sorted
    // The window's children, while it is up.
    CZelTreeCtrl *m_tree = nullptr;
    CZelListCtrl *m_list = nullptr;
    QAbstractButton *m_btnCancel = nullptr;
    QAbstractButton *m_btnOK = nullptr;
    BDIDrvr *m_drvr; ///< not owned
    std::uint32_t m_nodeMask;
    CZelImageList m_images;
    DString m_title;
    DMap<HTREEITEM, DString> m_treePaths;
    bool m_multiSelect;
    void *m_repos = nullptr;   ///< the driver's
    BDINode *m_root = nullptr; ///< closed by the driver
    std::unordered_map<HTREEITEM, NodePtr> m_unasked;
    platform::MessageMap m_messages;
    bool m_askPosted = false;
};

} // namespace zelvar
