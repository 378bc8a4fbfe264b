#include "zelvar/props/CZelPropList.h"

#include "zelvar/platform/ui/HintColor.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/props/PropDelegate.h"
#include "zelvar/props/PropTree.h"

#include <QtGui/QResizeEvent>
#include <QtWidgets/QColorDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr int kNameColumn = 0;
constexpr int kValueColumn = 1;

template <class Visit>
void ForEachBelow(CZelProp &prop, Visit const &visit) {
    for (int i = 0; i < prop.GetSubItemsCount(); ++i) {
        visit(*prop.GetSubItem(i));
        ForEachBelow(*prop.GetSubItem(i), visit);
    }
}

bool ComesBefore(QTreeWidgetItem const *a, QTreeWidgetItem const *b) {
    return QString::localeAwareCompare(a->text(kNameColumn), b->text(kNameColumn)) < 0;
}

/// Whether the property or one below it is shown. What holds one that is looked for is opened.
bool Filter(CZelProp &prop, QString const &text, bool groupFits) {
    bool const fits = groupFits || prop.text(kNameColumn).contains(text, Qt::CaseInsensitive) ||
                      prop.text(kValueColumn).contains(text, Qt::CaseInsensitive);
    bool shown = fits;
    for (int i = 0; i < prop.GetSubItemsCount(); ++i)
        shown = Filter(*prop.GetSubItem(i), text, fits) || shown;
    prop.setHidden(!shown);
    if (!text.isEmpty() && shown)
        prop.setExpanded(true);
    return shown;
}

} // namespace

CZelPropList::CZelPropList(QWidget *parent)
    : QWidget(parent), m_tree(new PropTree(*this)), m_description(new QLabel(this)), m_search(new QLineEdit(this)) {
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_search);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_description);
    m_description->setWordWrap(true);
    m_description->setTextFormat(Qt::PlainText);
    m_description->setMargin(4);
    m_description->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    m_description->hide();
    m_search->setPlaceholderText(platform::Shown("Search"));
    m_search->setAccessibleName(platform::Shown("Search properties"));
    m_search->setClearButtonEnabled(true);
    platform::KeepHintsReadable(*m_search);
    m_search->hide();
    setTabOrder(m_search, m_tree);
    setFocusProxy(m_tree);

    m_tree->setColumnCount(2);
    m_tree->setItemDelegate(new PropDelegate(*this));
    m_tree->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                            QAbstractItemView::AnyKeyPressed);
    m_tree->setHeaderHidden(true);
    m_tree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // a long value has its tip
    m_tree->header()->setMinimumSectionSize(m_tree->fontMetrics().averageCharWidth() * 2);
    m_tree->header()->setStretchLastSection(false); // it would keep a hundred pixels in any pane
    m_tree->header()->setSectionResizeMode(kValueColumn, QHeaderView::Stretch);
    m_tree->setIndentation(m_tree->fontMetrics().averageCharWidth() * 2);
    connect(m_search, &QLineEdit::textChanged, this,
            [this](QString const &text) { SetFilter(platform::ToDString(text)); });
    connect(m_tree->header(), &QHeaderView::sectionResized, this, [this](int column) {
        m_namesDragged = m_namesDragged || (column == kNameColumn && !m_fitting);
        if (column == kNameColumn)
            Q_EMIT m_tree->itemDelegate()->sizeHintChanged({}); // names may be broken elsewhere
    });
    connect(m_tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        auto const *const prop = static_cast<CZelProp const *>(item);
        m_description->setText(prop == nullptr ? QString() : platform::ToQString(prop->GetDescription()));
    });
}

CZelPropList::~CZelPropList() {
    m_tree->disconnect(this);
    RemoveAll();
    delete m_tree->itemDelegate(); // it would still hear of an editor that loses its focus when the tree goes
}

void CZelPropList::EnableHeaderCtrl(bool enable, DString const &nameHeading, DString const &valueHeading) {
    m_tree->setHeaderLabels({platform::ToQString(nameHeading), platform::ToQString(valueHeading)});
    m_tree->setHeaderHidden(!enable);
}

void CZelPropList::EnableDescriptionArea(bool enable) { m_description->setVisible(enable); }

void CZelPropList::EnableSearchBox(bool enable) {
    m_search->setVisible(enable);
    if (!enable)
        m_search->clear();
}

void CZelPropList::SetVSDotNetLook(bool on) {
    m_dotNetLook = on;
    for (CZelProp *const prop : m_properties) {
        Dress(*prop);
        ForEachBelow(*prop, [this](CZelProp &below) { Dress(below); });
    }
}

void CZelPropList::AddProperty(CZelProp *prop) {
    if (prop == nullptr || prop->m_list != nullptr || prop->m_owner != nullptr)
        return;
    prop->m_list = this;
    m_properties.push_back(prop);
    if (!m_alphabetic)
        m_tree->addTopLevelItem(prop);
    Adopt(*prop);
}

CZelProp *CZelPropList::GetProperty(int index) const {
    return index >= 0 && index < GetPropertyCount() ? m_properties[static_cast<std::size_t>(index)] : nullptr;
}

void CZelPropList::RemoveAll() {
    if (m_alphabetic)
        ShowGroups();
    for (CZelProp *const prop : std::exchange(m_properties, {}))
        prop->m_list = nullptr;
    m_tree->clear();
    m_adopted = 0;
    m_tree->setUniformRowHeights(false);
}

void CZelPropList::Forget(CZelProp const &prop) { std::erase(m_properties, &prop); }

CZelProp *CZelPropList::FindItemByData(std::uint64_t word) const {
    CZelProp *found = nullptr;
    auto const look = [&](CZelProp &prop) {
        if (found == nullptr && prop.GetData() == word)
            found = &prop;
    };
    for (CZelProp *const prop : m_properties) {
        look(*prop);
        ForEachBelow(*prop, look);
    }
    return found;
}

void CZelPropList::ExpandAll(bool expand) {
    if (expand)
        m_tree->expandAll();
    else
        m_tree->collapseAll();
}

CZelProp *CZelPropList::GetCurSel() const { return static_cast<CZelProp *>(m_tree->currentItem()); }

void CZelPropList::SetCurSel(CZelProp *prop) {
    m_tree->setCurrentItem(prop);
    if (prop != nullptr)
        m_tree->scrollToItem(prop);
}

void CZelPropList::ResetOriginalValues() {
    for (CZelProp *const prop : m_properties) {
        prop->ResetOriginalValue();
        ForEachBelow(*prop, [](CZelProp &below) { below.ResetOriginalValue(); });
    }
}

bool CZelPropList::EnterValue(CZelProp &prop, DString const &entry) {
    std::optional<DString> const value = prop.GetRule().Read(entry);
    if (!value)
        return false;
    if (*value != prop.GetValue()) {
        prop.SetValue(*value);
        OnPropertyChanged(&prop);
    }
    return true;
}

bool CZelPropList::BeginEdit(CZelProp &prop) {
    if (!prop.TakesEntries() || prop.treeWidget() != m_tree)
        return false;
    if (prop.GetRule().kind == PropRule::Kind::Boolean)
        return EnterValue(prop, PropRule::FromBool(!prop.GetBool()));
    SetCurSel(&prop);
    m_tree->editItem(&prop, kValueColumn);
    return true;
}

bool CZelPropList::OnBrowse(CZelProp &prop, DString &value) {
    if (prop.GetRule().kind != PropRule::Kind::Color)
        return m_browse && m_browse(prop, value);
    QColorDialog dialog(platform::ToQColor(PropRule::ToColor(value).value_or(prop.GetColor())), this);
    dialog.setWindowTitle(platform::ToQString(prop.GetName()));
    if (platform::RunModal(dialog) != QDialog::Accepted)
        return false;
    value = PropRule::FromColor(platform::ToColorRef(dialog.currentColor()));
    return true;
}

void CZelPropList::OnPropertyChanged(CZelProp *prop) { Q_EMIT PropertyChanged(prop); }

/// Gives a property that has come into the list, and what is below it, its place and look.
void CZelPropList::Adopt(CZelProp &prop) {
    if (m_alphabetic && prop.IsGroup()) {
        for (int i = 0; i < prop.GetSubItemsCount(); ++i)
            Adopt(*prop.GetSubItem(i));
        return;
    }
    CZelProp const *const owner = prop.m_owner;
    if (m_alphabetic && (owner == nullptr || owner->IsGroup()))
        InsertFlat(prop);
    Dress(prop);
    ++m_adopted;
    ForEachBelow(prop, [this](CZelProp &below) {
        Dress(below);
        ++m_adopted;
    });
    // To measure each row of many takes seconds; names are cut there.
    constexpr int mostMeasured = 1000;
    if (m_adopted > mostMeasured && !m_tree->uniformRowHeights())
        m_tree->setUniformRowHeights(true);
}

void CZelPropList::InsertFlat(CZelProp &prop) {
    if (prop.m_owner != nullptr)
        prop.m_owner->removeChild(&prop);
    int low = 0;
    for (int high = m_tree->topLevelItemCount(); low < high;) {
        int const middle = (low + high) / 2;
        if (ComesBefore(&prop, m_tree->topLevelItem(middle)))
            high = middle;
        else
            low = middle + 1;
    }
    m_tree->insertTopLevelItem(low, &prop);
}

void CZelPropList::SetAlphabeticMode(bool on) {
    if (on == m_alphabetic)
        return;
    CZelProp *const current = GetCurSel();
    m_alphabetic = on;
    if (on)
        ShowFlat();
    else
        ShowGroups();
    if (current != nullptr && current->treeWidget() == m_tree)
        SetCurSel(current);
    if (!m_filter.isEmpty())
        SetFilter(platform::ToDString(m_filter));
}

void CZelPropList::ShowFlat() {
    QList<QTreeWidgetItem *> values;
    auto const collect = [&](CZelProp &prop) {
        if (!prop.IsGroup() && (prop.m_owner == nullptr || prop.m_owner->IsGroup()))
            values.append(&prop);
    };
    for (CZelProp *const prop : m_properties) {
        if (m_filter.isEmpty()) // a search has opened others
            KeepOpen(*prop);
        collect(*prop);
        ForEachBelow(*prop, collect);
    }
    while (m_tree->topLevelItemCount() > 0)
        m_tree->takeTopLevelItem(m_tree->topLevelItemCount() - 1);
    for (qsizetype i = values.size(); i-- > 0;) // from the last: no other child moves
        if (CZelProp *const owner = static_cast<CZelProp *>(values[i])->m_owner)
            owner->removeChild(values[i]);
    std::ranges::stable_sort(values, ComesBefore);
    m_tree->addTopLevelItems(values);
    for (QTreeWidgetItem *const value : std::as_const(values))
        Dress(*static_cast<CZelProp *>(value));
}

void CZelPropList::ShowGroups() {
    while (m_tree->topLevelItemCount() > 0)
        m_tree->takeTopLevelItem(m_tree->topLevelItemCount() - 1);
    for (CZelProp *const prop : m_properties) {
        auto const giveBack = [](CZelProp &group) {
            for (CZelProp *const value : group.m_subItems)
                if (value->parent() != &group)
                    group.addChild(value);
        };
        giveBack(*prop);
        ForEachBelow(*prop, giveBack);
        m_tree->addTopLevelItem(prop);
        Dress(*prop);
        ForEachBelow(*prop, [this](CZelProp &below) { Dress(below); });
    }
}

void CZelPropList::SetFilter(DString const &text) {
    QString const former = std::exchange(m_filter, platform::ToQString(text).trimmed());
    for (CZelProp *const prop : m_properties) {
        if (former.isEmpty() && !m_alphabetic)
            KeepOpen(*prop);
        Filter(*prop, m_filter, false);
        if (!former.isEmpty() && m_filter.isEmpty()) { // as the user had them
            Dress(*prop);
            ForEachBelow(*prop, [this](CZelProp &below) { Dress(below); });
        }
    }
}

/// Remembers which of a property and those below it are open.
void CZelPropList::KeepOpen(CZelProp &prop) {
    prop.m_isOpen = prop.isExpanded();
    ForEachBelow(prop, [](CZelProp &below) { below.m_isOpen = below.isExpanded(); });
}

/// What depends on the tree that a property stands in.
void CZelPropList::Dress(CZelProp &prop) const {
    if (prop.treeWidget() != m_tree)
        return;
    if (prop.IsGroup() || prop.GetSubItemsCount() > 0)
        prop.setExpanded(prop.m_isOpen);
    if (!prop.IsGroup())
        return;
    prop.setFirstColumnSpanned(true);
    QFont font = m_tree->font();
    font.setBold(m_dotNetLook);
    prop.setFont(kNameColumn, font);
    prop.setBackground(kNameColumn, m_dotNetLook ? palette().brush(QPalette::Window) : QBrush());
}

void CZelPropList::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        SetVSDotNetLook(m_dotNetLook);
}

void CZelPropList::FitNames() {
    m_fitting = true;
    m_tree->resizeColumnToContents(kNameColumn);
    m_tree->setColumnWidth(kNameColumn, std::min(m_tree->columnWidth(kNameColumn), width() * 3 / 5));
    m_fitting = false;
}

void CZelPropList::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    layout()->activate(); // the tree has its size first
    // Names are read first: they get what they need, up to three fifths, until the user drags the heading; then they
    // keep their share.
    int const before = event->oldSize().width();
    int const width = event->size().width();
    if (before > 0 && m_namesDragged)
        m_tree->setColumnWidth(kNameColumn, width * m_tree->columnWidth(kNameColumn) / before);
    else
        FitNames();
}

} // namespace zelvar
