#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/Translation.h"
#include "zelvar/layout/cdxCDynamicDialog.h"

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QListView>

class QComboBox;
class QLineEdit;

namespace zelvar {

class FilterFindModel;

/// "Filter & Find": adds to the dynamic dialog a list that the user narrows with a category and a text, and from which
/// one or several items are picked.
///
/// Fill it with `AddItem`, show it modally or modelessly, read the selection with `GetFinalSlct`. Items are listed by
/// group, then by name. Meant for 100,000 items and more: each letter lists them anew at once. User-interface thread.
class ZELVAR_API DlgFltrFind : public cdxCDynamicDialog {
    Q_OBJECT

public:
    struct Item {
        DString name{};         ///< what the text is looked for in
        DString description{};  ///< shown while the item is selected
        DString category{};     ///< empty: only among all
        DString group{};        ///< shown in front of the name
        std::uint64_t data = 0; ///< the caller's
    };
    class ResizeListBox;

    /// `startFltr`: the category selected first; all if it is empty or there is none like it.
    explicit DlgFltrFind(DString const &startFltr, QWidget *parent = nullptr);
    ~DlgFltrFind() override;

    void SetStartFltr(char const *startFltr);
    void AddItem(DString const &name, DString const &category, DString const &group, DString const &description,
                 std::uint64_t value);
    /// Shows the dialog beside its parent, which may be null, and returns at once.
    bool CreateModeless(QWidget *parent);
    /// Appends the items that are still there, all before OK, those picked behind it, in the order of the list. They
    /// stay the dialog's. A null vector does nothing.
    void GetFinalSlct(DVector<Item *> *selection) const;

    void SetListBoxTitle(DString const &title); ///< above the list, "Found:" at first
    void SetDscr(DString const &description);   ///< what the description says until something else is selected
    /// Lists the items anew. Does nothing before the dialog is shown, so it may be filled at any time.
    virtual void UpdtContent();

protected:
    /// Called before each listing. Here: by group, then by name, bytes compared; those alike stay as they are.
    virtual void Sort(DVector<Item *> *items);
    virtual void OnDblClckList();

    bool OnInitDialog() override;
    QWidget *MakeControl(platform::DialogItem const &item) override;
    void OnOK() override;
    void OnComboSelChng();
    void OnEditChng();
    void OnBttnClck();
    void OnListSelChng();

    DString m_find;           ///< what is looked for
    DString m_startFltr;      ///< category
    DVector<Item *> m_items;  ///< owned
    DString m_noDscr = "..."; ///< the description with nothing selected

private:
    void FillCombo();
    void UpdtList();
    void OrganiseItemsList();
    bool eventFilter(QObject *watched, QEvent *event) override;
    void WireControls();

    DString m_listTitle = Translated("Found:");
    DVector<DString> m_categories; ///< of the combo box's entries, the first one is "All"
    // The window's children, while it is up.
    ResizeListBox *m_list = nullptr;
    QComboBox *m_cmbFilter = nullptr;
    QLineEdit *m_edtFind = nullptr;
    QWidget *m_btnClear = nullptr;
};

/// The list of "Filter & Find": adds to a list view that its lower edge can be dragged, which shifts the boundary
/// between the list and the description below.
class ZELVAR_API DlgFltrFind::ResizeListBox : public QListView {
    Q_OBJECT

public:
    explicit ResizeListBox(DlgFltrFind *dialog);
    ~ResizeListBox() override;

    void SetItems(DVector<Item *> items); ///< nothing is selected then
    [[nodiscard]] DVector<Item *> SelectedItems() const;
    /// Of the selected items the one that was touched last, or the first; null with nothing selected.
    [[nodiscard]] Item const *CurrentSelection() const;
    /// Typed letters go to the next line whose name begins with them: all lines begin with "<".
    void keyboardSearch(QString const &typed) override;

Q_SIGNALS:
    void SelectionChanged();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void selectionChanged(QItemSelection const &selected, QItemSelection const &deselected) override;

private:
    void DragTo(int y); ///< in the dialog

    DlgFltrFind *m_pDlg; ///< not owned
    FilterFindModel *m_model;
    QString m_typed; ///< letters of a running search
    QElapsedTimer m_typedAt;
    bool m_bDragging = false;
};

} // namespace zelvar
