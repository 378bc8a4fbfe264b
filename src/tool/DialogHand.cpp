#include "zelvar/tool/DialogHand.h"

#include "zelvar/base/DFile.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/ThumbnailLook.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

#include <algorithm>
#include <functional>
#include <optional>

namespace zelvar::tool {

namespace {

constexpr int kOkId = 1;

/// The rows of the names, in their order; nothing if one is not there.
std::optional<std::vector<int>> RowsOf(std::vector<DString> const &names, int count,
                                       std::function<DString(int)> const &nameOf) {
    std::vector<int> rows;
    for (DString const &name : names) {
        int row = 0;
        while (row < count && nameOf(row) != name)
            ++row;
        if (row == count)
            return std::nullopt;
        rows.push_back(row);
    }
    return rows;
}

class OpenDialogHand final : public DialogHand {
public:
    explicit OpenDialogHand(DlgOpenDS &dialog) : m_dialog(dialog) {}
    [[nodiscard]] bool IsReady() const override { return m_dialog.isVisible() && m_dialog.MainList() != nullptr; }
    void AllowOneOnly() override { m_dialog.MainList()->SetMultiSlct(false); }
    bool Select(std::vector<DString> const &names) override {
        DSListCtrl &list = *m_dialog.MainList();
        auto const rows = RowsOf(names, list.GetNumRow(), [&](int row) { return list.ItemAt(row)->GetName(); });
        if (!rows)
            return false;
        if (!rows->empty())
            list.ClearSelection();
        for (int const row : *rows)
            list.SetSlct(row, true);
        return true;
    }
    [[nodiscard]] QAbstractButton *OkButton() const override {
        return platform::GetDlgItem<QPushButton>(m_dialog, kOkId);
    }
    [[nodiscard]] bool IsSettled() const override {
        bool const isWaiting = m_dialog.Waits() != nullptr && m_dialog.Waits()->IsWaiting();
        bool const isSearching = m_dialog.Search() != nullptr && m_dialog.Search()->IsSearching();
        bool const isPainting = m_dialog.Thumbnails() != nullptr && m_dialog.Thumbnails()->IsBusy();
        return !isWaiting && !isSearching && !isPainting && !m_dialog.PropertyWnd()->IsReading() && IsForeseen();
    }
    [[nodiscard]] bool IsForeseen() const override {
        return m_dialog.Forecast() == nullptr || m_dialog.Forecast()->IsSettled();
    }

private:
    DlgOpenDS &m_dialog;
};

/// The platform's dialog. A name to be loaded is picked in its list, one to be saved is what stands in its field.
class PlatformDialogHand final : public DialogHand {
public:
    explicit PlatformDialogHand(QFileDialog &dialog) : m_dialog(dialog) {}
    [[nodiscard]] bool IsReady() const override { return m_dialog.isVisible() && List() != nullptr; }
    [[nodiscard]] std::vector<DString> OwnNames(std::vector<DString> const &names) const override {
        DString const folder = platform::ToDString(m_dialog.directory().absolutePath());
        std::vector<DString> own;
        std::copy_if(names.begin(), names.end(), std::back_inserter(own),
                     [&](DString const &name) { return DFile(AppendPath(folder, name)).Exist(); });
        // Nothing of it is there yet: the first one is waited for.
        if (own.empty() && !names.empty())
            own.push_back(names.front());
        return own;
    }
    bool Select(std::vector<DString> const &names) override {
        QAbstractItemView *const list = List();
        if (list == nullptr)
            return false;
        QAbstractItemModel const &model = *list->model();
        QModelIndex const root = list->rootIndex();
        auto const rows = RowsOf(names, model.rowCount(root), [&](int row) {
            return platform::ToDString(model.index(row, 0, root).data().toString());
        });
        if (!rows)
            return false;
        if (rows->empty())
            return true;
        list->setFocus(); // as a click does: a field that has the focus is not written to
        list->clearSelection();
        for (int const row : *rows)
            list->selectionModel()->select(model.index(row, 0, root),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
        return true;
    }
    [[nodiscard]] bool ArePicked(std::vector<DString> const &names) const override {
        if (names.empty())
            return true;
        QAbstractItemView const *const list = List();
        return list != nullptr &&
               static_cast<std::size_t>(list->selectionModel()->selectedRows().size()) == names.size() &&
               !m_dialog.findChild<QLineEdit *>("fileNameEdit")->text().isEmpty();
    }
    [[nodiscard]] QAbstractButton *OkButton() const override {
        auto const *const box = m_dialog.findChild<QDialogButtonBox *>("buttonBox");
        bool const opens = m_dialog.acceptMode() == QFileDialog::AcceptOpen;
        return box == nullptr ? nullptr : box->button(opens ? QDialogButtonBox::Open : QDialogButtonBox::Save);
    }

private:
    /// The one of its two views that can be seen.
    [[nodiscard]] QAbstractItemView *List() const {
        for (char const *name : {"listView", "treeView"})
            if (auto *const view = m_dialog.findChild<QAbstractItemView *>(name); view != nullptr && view->isVisible())
                return view;
        return nullptr;
    }

    QFileDialog &m_dialog;
};

/// The selector of nodes in a container: a name is a row of its list, or a container of its tree.
class SelectorHand final : public DialogHand {
public:
    explicit SelectorHand(CBDISelectorDlg &dialog) : m_dialog(dialog) {}
    [[nodiscard]] bool IsReady() const override { return m_dialog.isVisible() && List() != nullptr; }
    void AllowOneOnly() override { List()->SetMultiSlct(false); }
    bool Select(std::vector<DString> const &names) override {
        CZelListCtrl &list = *List();
        auto const rows = RowsOf(names, list.GetNumRow(), [&](int row) { return list.GetItemText(row, 0); });
        if (!rows)
            return names.size() == 1 && SelectContainer(names.front());
        if (!rows->empty())
            list.ClearSlct();
        for (int const row : *rows)
            list.SetSlct(row, true);
        return true;
    }
    [[nodiscard]] QAbstractButton *OkButton() const override {
        return platform::GetDlgItem<QAbstractButton>(m_dialog, kOkId);
    }

private:
    static constexpr int kTreeId = 1001;
    static constexpr int kListId = 6004;
    [[nodiscard]] CZelListCtrl *List() const { return platform::GetDlgItem<CZelListCtrl>(m_dialog, kListId); }
    [[nodiscard]] bool SelectContainer(DString const &name) const {
        auto &tree = *platform::GetDlgItem<CZelTreeCtrl>(m_dialog, kTreeId);
        auto *const root = tree.GetRootItem();
        for (HTREEITEM item = tree.GetChildItem(root); item != nullptr; item = tree.GetNextSiblingItem(item))
            if (tree.GetItemText(item) == name)
                return tree.SelectItem(item);
        tree.Expand(root, TVE_EXPAND);
        return false;
    }

    CBDISelectorDlg &m_dialog;
};

} // namespace

std::unique_ptr<DialogHand> HandFor(QDialog &dialog) {
    if (auto *const open = dynamic_cast<DlgOpenDS *>(&dialog))
        return std::make_unique<OpenDialogHand>(*open);
    if (auto *const selector = dynamic_cast<CBDISelectorDlg *>(&dialog))
        return std::make_unique<SelectorHand>(*selector);
    if (auto *const platform = qobject_cast<QFileDialog *>(&dialog))
        return std::make_unique<PlatformDialogHand>(*platform);
    return nullptr;
}

} // namespace zelvar::tool
