#include "zelvar/dialogs/DlgFltrFind.h"

#include "zelvar/base/Translation.h"
#include "zelvar/dialogs/core/FilterFindRules.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QSignalBlocker>
#include <QtGui/QShortcut>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

#include <algorithm>
#include <unordered_set>

namespace zelvar {

namespace {

using platform::ControlKind;
using platform::DialogItem;

enum ControlIds {
    kOk = 1,
    kCancel = 2,
    kFilter = 1980,
    kFind = 1981,
    kListTitle = 1982,
    kList = 1983,
    kDescription = 1984,
    kClear = 1985,
    kDescriptionFrame = 6003,
    // Without a number of their own; labels.
    kFilterLabel = 65001,
    kFindLabel = 65002,
};

constexpr DialogItem kItems[] = {
    {kFilter, ControlKind::DropDownList, "", 31, 7, 92, 74},
    {kFind, ControlKind::Edit, "", 159, 7, 65, 13},
    {kClear, ControlKind::Button, "X", 231, 8, 12, 11, {}, false},
    {kOk, ControlKind::DefaultButton, Mark("OK"), 133, 215, 50, 14, {100, 100, 100, 100}},
    {kCancel, ControlKind::Button, Mark("Cancel"), 193, 215, 50, 14, {100, 100, 100, 100}},
    {kFilterLabel, ControlKind::Label, Mark("Filter:"), 7, 9, 20, 8},
    {kFindLabel, ControlKind::Label, Mark("Find:"), 138, 9, 17, 8},
    {kListTitle, ControlKind::Label, Mark("Found:"), 7, 29, 24, 8},
    {kDescriptionFrame, ControlKind::Group, Mark("Description"), 7, 156, 236, 51, {0, 100, 100, 100}},
    {kDescription, ControlKind::Label, "...", 15, 170, 220, 28, {0, 100, 100, 100}},
    {kList, ControlKind::List, "", 7, 41, 236, 108, {0, 0, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{
    .id = 6001, .caption = Mark("Filter & Find"), .width = 250, .height = 236, .items = kItems};
constexpr unsigned kFlags = 3;

bool ComesBefore(DlgFltrFind::Item const *a, DlgFltrFind::Item const *b) {
    int const byGroup = a->group.compare(b->group);
    return byGroup != 0 ? byGroup < 0 : a->name < b->name;
}

} // namespace

// NOLINTNEXTLINE(modernize-pass-by-value): applications call it so
DlgFltrFind::DlgFltrFind(DString const &startFltr, QWidget *parent)
    : cdxCDynamicDialog(kTemplate, parent, FreedomAll, kFlags), m_startFltr(startFltr) {}

DlgFltrFind::~DlgFltrFind() {
    DestroyWindow(); // while what its list shows is still there
    for (Item const *const item : m_items)
        delete item;
}

void DlgFltrFind::SetStartFltr(char const *startFltr) { m_startFltr = startFltr == nullptr ? "" : startFltr; }

void DlgFltrFind::AddItem(DString const &name, DString const &category, DString const &group,
                          DString const &description, std::uint64_t value) {
    m_items.push_back(new Item{name, description, category, group, value});
}

bool DlgFltrFind::CreateModeless(QWidget *parent) {
    if (parent != parentWidget())
        setParent(parent, windowFlags());
    show();
    return true;
}

void DlgFltrFind::GetFinalSlct(DVector<Item *> *selection) const {
    if (selection != nullptr)
        selection->insert(selection->end(), m_items.begin(), m_items.end());
}

void DlgFltrFind::SetListBoxTitle(DString const &title) {
    m_listTitle = title;
    if (!IsWindow())
        return;
    auto *const label = platform::GetDlgItem<QLabel>(*this, kListTitle);
    label->setText(platform::ToQString(title));
    label->resize(std::max(label->width(), label->sizeHint().width()), label->height());
    m_list->setAccessibleName(label->text().remove(u'&'));
}

void DlgFltrFind::SetDscr(DString const &description) {
    if (!IsWindow())
        return;
    auto *const label = platform::GetDlgItem<QLabel>(*this, kDescription);
    label->setText(platform::ToQString(description));
    label->setToolTip(platform::ToToolTip(label->text())); // it may be longer than its place
}

void DlgFltrFind::UpdtContent() {
    if (!IsWindow())
        return;
    FillCombo();
    UpdtList();
}

void DlgFltrFind::Sort(DVector<Item *> *items) {
    // Most often nothing has changed since the last letter.
    if (!std::is_sorted(items->begin(), items->end(), ComesBefore))
        std::stable_sort(items->begin(), items->end(), ComesBefore);
}

void DlgFltrFind::OnDblClckList() { OnOK(); }

QWidget *DlgFltrFind::MakeControl(DialogItem const &item) {
    if (item.id == kList)
        return m_list = new ResizeListBox(this);
    return nullptr;
}

bool DlgFltrFind::OnInitDialog() {
    cdxCDynamicDialog::OnInitDialog();
    m_cmbFilter = platform::GetDlgItem<QComboBox>(*this, kFilter);
    m_edtFind = platform::GetDlgItem<QLineEdit>(*this, kFind);
    m_btnClear = platform::GetDlgItem(*this, kClear);
    WireControls();
    SetListBoxTitle(m_listTitle);
    m_edtFind->setText(platform::ToQString(m_find));
    m_btnClear->setVisible(!m_find.empty());
    connect(m_edtFind, &QLineEdit::textChanged, this, &DlgFltrFind::OnEditChng);
    UpdtContent();
    m_edtFind->setFocus();
    return false; // the focus is set
}

void DlgFltrFind::WireControls() {
    auto *const description = platform::GetDlgItem<QLabel>(*this, kDescription);
    description->setWordWrap(true);
    description->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_btnClear->setAccessibleName(platform::Shown("Clear"));
    m_btnClear->setToolTip(platform::Shown("Clear the text to find"));
    m_edtFind->installEventFilter(this);
    connect(m_cmbFilter, &QComboBox::currentIndexChanged, this, &DlgFltrFind::OnComboSelChng);
    connect(static_cast<QPushButton *>(m_btnClear), &QPushButton::clicked, this, &DlgFltrFind::OnBttnClck);
    connect(m_list, &ResizeListBox::SelectionChanged, this, &DlgFltrFind::OnListSelChng);
    connect(m_list, &QListView::doubleClicked, this, [this] { OnDblClckList(); });
    connect(new QShortcut(QKeySequence::Find, m_edtFind, nullptr, nullptr, Qt::WindowShortcut), &QShortcut::activated,
            m_edtFind, qOverload<>(&QWidget::setFocus));
    QWidget *previous = m_cmbFilter; // as a user goes through them
    for (int const id : {kFind, kClear, kList, kOk, kCancel}) {
        QWidget *const next = platform::GetDlgItem(*this, id);
        setTabOrder(previous, next);
        previous = next;
    }
}

bool DlgFltrFind::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_edtFind && event->type() == QEvent::KeyPress) {
        int const key = static_cast<QKeyEvent *>(event)->key();
        bool const goesToList = key == Qt::Key_Down || key == Qt::Key_PageDown;
        if (goesToList && m_list->model()->rowCount() > 0) {
            if (!m_list->currentIndex().isValid())
                m_list->setCurrentIndex(m_list->model()->index(0, 0));
            m_list->setFocus();
            return true;
        }
    }
    return cdxCDynamicDialog::eventFilter(watched, event);
}

void DlgFltrFind::FillCombo() {
    QSignalBlocker const blocker(m_cmbFilter); // the list follows anyway
    m_cmbFilter->clear();
    m_categories = {"All"};
    std::unordered_set<DString> known{"All"};
    for (Item const *const item : m_items)
        if (known.insert(item->category).second)
            m_categories.push_back(item->category);
    QStringList lines;
    for (DString const &category : m_categories)
        lines.push_back(platform::ToQString(category));
    lines.front() = platform::Shown(Mark("All"));
    m_cmbFilter->addItems(lines);
    auto const start = std::find(m_categories.begin(), m_categories.end(), m_startFltr);
    bool const isThere = !m_startFltr.empty() && start != m_categories.end();
    m_cmbFilter->setCurrentIndex(isThere ? static_cast<int>(start - m_categories.begin()) : 0);
}

void DlgFltrFind::UpdtList() {
    m_list->SetItems({}); // what Sort may ask of the dialog is true meanwhile
    int const index = m_cmbFilter->currentIndex();
    DString const category = index > 0 ? m_categories[static_cast<std::size_t>(index)] : DString();
    Sort(&m_items);
    AsciiCaseFinder const finder(m_find);
    DVector<Item *> found;
    for (Item *const item : m_items)
        if ((category.empty() || category == item->category) && finder.IsIn(item->name))
            found.push_back(item);
    m_list->SetItems(std::move(found));
    OnListSelChng();
}

void DlgFltrFind::OnComboSelChng() { UpdtList(); }

void DlgFltrFind::OnEditChng() {
    m_find = platform::ToDString(m_edtFind->text());
    UpdtList();
    if (m_find.empty() && m_btnClear->hasFocus())
        m_edtFind->setFocus(); // else it went on to a button that ends the dialog
    m_btnClear->setVisible(!m_find.empty());
}

void DlgFltrFind::OnBttnClck() {
    m_find.clear();
    m_edtFind->clear(); // goes on as if the user had
}

void DlgFltrFind::OnListSelChng() {
    Item const *const item = m_list->CurrentSelection();
    SetDscr(item == nullptr ? m_noDscr : item->description);
}

void DlgFltrFind::OnOK() {
    OrganiseItemsList();
    cdxCDynamicDialog::OnOK();
}

void DlgFltrFind::OrganiseItemsList() {
    DVector<Item *> const selected = m_list->SelectedItems();
    std::unordered_set<Item const *> const kept(selected.begin(), selected.end());
    m_list->SetItems({}); // it looks at none of those that go
    std::erase_if(m_items, [&kept](Item const *item) {
        bool const goes = !kept.contains(item);
        if (goes)
            delete item;
        return goes;
    });
    m_list->SetItems(m_items);
}

} // namespace zelvar
