#include "zelvar/opends/basket/BasketDlg.h"

#include "zelvar/base/Report.h"
#include "zelvar/base/Translation.h"
#include "zelvar/controls/GUITools.h"
#include "zelvar/lists/CZelListCtrlVirtual.h"
#include "zelvar/model/listing/ListingTexts.h"
#include "zelvar/opends/core/FileQuestion.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/RowDrag.h"

#include <QtCore/QScopedValueRollback>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QPushButton>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

using platform::ControlKind;
using platform::DialogItem;
using platform::GetDlgItem;

enum ControlIds {
    kClose = 2,
    kRows = 1001,
    kRemove = 1002,
    kUp = 1003,
    kDown = 1004,
    kSave = 1005,
    kLoad = 1006,
    kKeep = 1007
};

constexpr platform::MoveRule kRight{100, 0, 100, 0};
constexpr DialogItem kItems[] = {
    {kRows, ControlKind::Place, "", 7, 7, 246, 166, {0, 0, 100, 100}},
    {kRemove, ControlKind::Button, Mark("Remove"), 258, 7, 73, 14, kRight},
    {kUp, ControlKind::Button, Mark("Move Up"), 258, 25, 73, 14, kRight},
    {kDown, ControlKind::Button, Mark("Move Down"), 258, 43, 73, 14, kRight},
    {kSave, ControlKind::Button, Mark("Save..."), 258, 67, 73, 14, kRight},
    {kLoad, ControlKind::Button, Mark("Load..."), 258, 85, 73, 14, kRight},
    {kKeep, ControlKind::Button, Mark("Add to Favorites..."), 258, 103, 73, 14, kRight},
    {kClose, ControlKind::DefaultButton, Mark("Close"), 258, 159, 73, 14, {100, 100, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{
    .id = 6130, .caption = Mark("Basket"), .width = 338, .height = 180, .items = kItems};
constexpr unsigned kFlags = 3;

enum Column { kName = 0, kFolder = 1, kSize = 2 };

DString Shown(DString const &name) { return platform::ToDString(platform::ToShownName(name)); }

FileQuestion QuestionFor(char const *title, bool saves) {
    return {.title = title,
            .kind = Mark("Lists of Monikers (*.txt)"),
            .extension = "txt",
            .name = "basket.txt",
            .saves = saves};
}

} // namespace

class BasketDlg::Rows : public CZelListCtrlVirtual {
public:
    Rows(BasketDlg &page, Basket const &basket) : CZelListCtrlVirtual(&page), m_page(page), m_basket(basket) {
        constexpr char const *folder = "/projects/2025/measured/stacks"; // as wide as most
        AddCol(Translated("Name"), "a name of usual length.tif", ADICol_String, LVCFMT_LEFT, false);
        AddCol(Translated("Folder"), folder, ADICol_String, LVCFMT_LEFT, false);
        AddCol(Translated("Size"), "000,000,000 KB", ADICol_String, LVCFMT_RIGHT, false);
        SetExtendedStyle(GetExtendedStyle() | LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
        ModifyStyle(0, LVS_SHOWSELALWAYS); // what the buttons act on is seen from them, too
        setAccessibleName(platform::Shown("Basket"));
    }
    DString OnGetItemText(int row, int col) override {
        BasketEntry const &entry = m_basket.All()[static_cast<std::size_t>(row)];
        if (col == kName)
            return Shown(entry.name);
        if (col == kFolder)
            return Shown(entry.place);
        return entry.bytes < 0 ? DString() : FormatFileSize(entry.bytes);
    }

protected:
    void showEvent(QShowEvent *event) override {
        CZelListCtrlVirtual::showEvent(event);
        EnlargeCol(kFolder, true); // the list has its place by now
    }
    void keyPressEvent(QKeyEvent *event) override {
        if (!m_page.OnKey(*event))
            CZelListCtrlVirtual::keyPressEvent(event);
    }

private:
    BasketDlg &m_page;
    Basket const &m_basket;
};

BasketDlg::BasketDlg(QWidget *parent, Basket &basket, std::function<void(QWidget &)> keep)
    : cdxCDynamicDialog(kTemplate, parent, FreedomAll, kFlags), m_basket(basket), m_keep(std::move(keep)) {}

BasketDlg::~BasketDlg() = default;

CZelListCtrlVirtual *BasketDlg::List() const { return m_list; }

QWidget *BasketDlg::MakeControl(DialogItem const &item) {
    return item.id == kRows ? m_list = new Rows(*this, m_basket) : nullptr;
}

bool BasketDlg::OnInitDialog() {
    cdxCDynamicDialog::OnInitDialog();
    m_list->show(); // no mere place
    m_drag = std::make_unique<RowDrag>(
        *m_list, RowDrag::Rule{.isMovable = [](int) { return true; },
                               .nameOf =
                                   [this](int row) {
                                       return m_basket.All()[static_cast<std::size_t>(row)].monikers.front().GetText();
                                   },
                               .drop = [this](int row, int beside, bool behind) { Drop(row, beside, behind); }});
    auto const onClick = [this](int id, auto act) {
        connect(GetDlgItem<QPushButton>(*this, id), &QAbstractButton::clicked, this, act);
    };
    onClick(kRemove, &BasketDlg::Remove);
    onClick(kUp, [this] { Move(false); });
    onClick(kDown, [this] { Move(true); });
    onClick(kSave, &BasketDlg::Save);
    onClick(kLoad, &BasketDlg::Load);
    onClick(kKeep, [this] { m_keep(*this); });
    GetDlgItem(*this, kKeep)->setVisible(m_keep != nullptr);
    connect(m_list, &ReportView::ItemChanged, this, &BasketDlg::ShowState);
    connect(m_list, &ReportView::RangeChanged, this, &BasketDlg::ShowState);
    Show(m_basket.IsEmpty() ? std::set<int>() : std::set{0}, 0);
    m_list->setFocus();
    return false; // the focus is set
}

bool BasketDlg::DestroyWindow() {
    m_drag.reset();
    m_list = nullptr;
    return cdxCDynamicDialog::DestroyWindow();
}

bool BasketDlg::OnKey(QKeyEvent const &key) {
    bool const isAlt = key.modifiers() == Qt::AltModifier;
    if (key.key() == Qt::Key_Delete)
        Remove();
    else if (isAlt && (key.key() == Qt::Key_Up || key.key() == Qt::Key_Down))
        Move(key.key() == Qt::Key_Down);
    else
        return false;
    return true;
}

std::set<int> BasketDlg::Selected() const {
    std::set<int> rows;
    for (int row = m_list->GetNextItem(-1, LVNI_SELECTED); row >= 0; row = m_list->GetNextItem(row, LVNI_SELECTED))
        rows.insert(rows.end(), row);
    return rows;
}

void BasketDlg::Show(std::set<int> const &selected, int focus) {
    auto const count = static_cast<int>(m_basket.All().size());
    {
        // Between two selections nothing is selected: a button that went off for that would lose the focus.
        QScopedValueRollback const filling(m_isFilling, true);
        m_list->SetItemState(-1, 0, LVIS_SELECTED);
        m_list->SetNumRow(count, 0);
        for (int const row : selected)
            m_list->SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
    }
    if (count > 0) {
        int const row = std::clamp(focus, 0, count - 1);
        m_list->SetItemState(row, LVIS_FOCUSED, LVIS_FOCUSED);
        m_list->SetSelectionMark(row);
        m_list->EnsureVisible(row);
    }
    m_list->viewport()->update();
    QString const what = platform::ToQString(m_basket.Summary());
    setWindowTitle(m_basket.IsEmpty() ? platform::Shown("Basket") : platform::Shown("Basket: %1").arg(what));
    ShowState();
}

void BasketDlg::ShowState() {
    if (m_isFilling)
        return;
    QWidget const *const focus = focusWidget();
    bool const isSelected = m_list->GetNumSlct() > 0;
    for (int const id : {kRemove, kUp, kDown})
        GetDlgItem(*this, id)->setEnabled(isSelected);
    for (int const id : {kSave, kKeep})
        GetDlgItem(*this, id)->setEnabled(!m_basket.IsEmpty());
    if (focus != nullptr && !focus->isEnabled())
        m_list->setFocus();
}

void BasketDlg::Remove() {
    std::set<int> const rows = Selected();
    if (rows.empty())
        return;
    m_basket.Remove(rows);
    // What has taken the place of the first is next.
    int const next = std::min(*rows.begin(), static_cast<int>(m_basket.All().size()) - 1);
    Show(next < 0 ? std::set<int>() : std::set<int>{next}, next);
}

void BasketDlg::Move(bool down) {
    std::set<int> const rows = Selected();
    if (rows.empty())
        return;
    std::set<int> const moved = m_basket.Move(rows, down);
    Show(moved, down ? *moved.rbegin() : *moved.begin());
}

void BasketDlg::Drop(int row, int beside, bool behind) {
    int const now = m_basket.MoveBefore(row, beside + (behind ? 1 : 0));
    Show({now}, now);
}

void BasketDlg::Save() {
    std::optional<DString> const path = AskForFile(this, QuestionFor(Mark("Save Basket"), true));
    if (!path)
        return;
    GUITools::WaitCursor const cursor;
    if (!m_basket.Save(*path))
        Report::UserNotification(Translated("The basket could not be written to '%s'"), Shown(*path).c_str());
}

void BasketDlg::Load() {
    std::optional<DString> const path = AskForFile(this, QuestionFor(Mark("Load Basket"), false));
    if (!path)
        return;
    auto const before = static_cast<int>(m_basket.All().size());
    GUITools::WaitCursor const cursor;
    if (m_basket.Load(*path))
        Show({}, before);
    else
        Report::UserNotification(Translated("'%s' is no list of monikers"), Shown(*path).c_str());
}

} // namespace zelvar
