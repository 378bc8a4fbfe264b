#include "zelvar/controls/CZelPropList.h"

#include "zelvar/platform/ui/Text.h"

#include <QtGui/QClipboard>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr int kNameColumn = 0;
constexpr int kValueColumn = 1;

/// Edits values only, and draws the lines between rows.
class PropDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, QStyleOptionViewItem const &option,
                          QModelIndex const &index) const override {
        return index.column() == kValueColumn ? QStyledItemDelegate::createEditor(parent, option, index) : nullptr;
    }
    [[nodiscard]] QSize sizeHint(QStyleOptionViewItem const &option, QModelIndex const &index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 4);
    }
};

/// Copies the current value, not the name that the row begins with.
class PropTree final : public QTreeWidget {
public:
    using QTreeWidget::QTreeWidget;

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->matches(QKeySequence::Copy) && currentItem() != nullptr)
            QApplication::clipboard()->setText(platform::ToQString(Value(*currentItem())));
        else
            QTreeWidget::keyPressEvent(event);
    }
    void drawRow(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const override {
        // A shaded group is shaded from edge to edge, under its mark of opening as well.
        if (QVariant const shade = index.data(Qt::BackgroundRole); shade.isValid())
            painter->fillRect(option.rect, shade.value<QBrush>());
        QTreeWidget::drawRow(painter, option, index);
        painter->setPen(palette().color(QPalette::Window).darker(108));
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
        if (index.parent().isValid()) {
            int const x = columnViewportPosition(kValueColumn) - 1;
            painter->drawLine(x, option.rect.top(), x, option.rect.bottom());
        }
    }

private:
    static DString const &Value(QTreeWidgetItem const &item) { return static_cast<CZelProp const &>(item).GetValue(); }
};

} // namespace

CZelProp::CZelProp(DString const &name) : m_isGroup(true) { setText(kNameColumn, platform::ToQString(name)); }

CZelProp::CZelProp(DString const &name, DString const &value, DString description, std::uint64_t data)
    : m_description(std::move(description)), m_data(data) {
    setText(kNameColumn, platform::ToQString(name));
    SetValue(value);
}

void CZelProp::AddSubItem(CZelProp *prop) {
    if (prop != nullptr)
        addChild(prop);
}

CZelProp *CZelProp::GetSubItem(int index) const { return static_cast<CZelProp *>(child(index)); }

DString CZelProp::GetName() const { return platform::ToDString(text(kNameColumn)); }

void CZelProp::SetValue(DString const &value) {
    m_value = value;
    QString const shown = platform::ToQString(value);
    setText(kValueColumn, shown.simplified());
    setToolTip(kValueColumn, platform::ToToolTip(shown));
}

void CZelProp::AllowEdit(bool allow) {
    setFlags(allow ? flags() | Qt::ItemIsEditable : flags() & ~Qt::ItemFlags(Qt::ItemIsEditable));
}

CZelPropList::CZelPropList(QWidget *parent)
    : QWidget(parent), m_tree(new PropTree(this)), m_description(new QLabel(this)) {
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_description);
    m_description->setWordWrap(true);
    m_description->setTextFormat(Qt::PlainText);
    m_description->setMargin(4);
    m_description->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    m_description->hide();
    setFocusProxy(m_tree);

    m_tree->setColumnCount(2);
    m_tree->setItemDelegate(new PropDelegate(m_tree));
    m_tree->setUniformRowHeights(true);
    m_tree->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_tree->setHeaderHidden(true);
    m_tree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // a long value has its tip
    m_tree->header()->setMinimumSectionSize(m_tree->fontMetrics().averageCharWidth() * 2);
    m_tree->header()->setStretchLastSection(false); // it would keep a hundred pixels in any pane
    m_tree->header()->setSectionResizeMode(kValueColumn, QHeaderView::Stretch);
    m_tree->setIndentation(m_tree->fontMetrics().averageCharWidth() * 2);
    connect(m_tree->header(), &QHeaderView::sectionResized, this,
            [this](int column) { m_namesDragged = m_namesDragged || (column == kNameColumn && !m_fitting); });
    connect(m_tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        auto const *const prop = static_cast<CZelProp const *>(item);
        m_description->setText(prop == nullptr ? QString() : platform::ToQString(prop->GetDescription()));
    });
    connect(m_tree, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item, int column) {
        auto *const prop = static_cast<CZelProp *>(item);
        DString const typed = platform::ToDString(item->text(kValueColumn));
        bool const byUser = column == kValueColumn && (item->flags() & Qt::ItemIsEditable) != 0 &&
                            item->text(kValueColumn) != platform::ToQString(prop->GetValue()).simplified();
        if (!byUser)
            return;
        prop->SetValue(typed);
        Q_EMIT PropertyChanged(prop);
    });
}

void CZelPropList::EnableHeaderCtrl(bool enable, DString const &nameHeading, DString const &valueHeading) {
    m_tree->setHeaderLabels({platform::ToQString(nameHeading), platform::ToQString(valueHeading)});
    m_tree->setHeaderHidden(!enable);
}

void CZelPropList::EnableDescriptionArea(bool enable) { m_description->setVisible(enable); }

void CZelPropList::SetVSDotNetLook(bool on) {
    m_dotNetLook = on;
    ShadeGroups();
}

void CZelPropList::AddProperty(CZelProp *prop) {
    if (prop == nullptr)
        return;
    m_tree->addTopLevelItem(prop);
    prop->setFirstColumnSpanned(prop->IsGroup());
    prop->setExpanded(true);
    ShadeGroups();
}

int CZelPropList::GetPropertyCount() const { return m_tree->topLevelItemCount(); }

CZelProp *CZelPropList::GetProperty(int index) const { return static_cast<CZelProp *>(m_tree->topLevelItem(index)); }

void CZelPropList::RemoveAll() { m_tree->clear(); }

void CZelPropList::ShadeGroups() const {
    QFont bold = m_tree->font();
    bold.setBold(true);
    for (int index = 0; index < GetPropertyCount(); ++index) {
        CZelProp *const prop = GetProperty(index);
        if (!prop->IsGroup())
            continue;
        prop->setFont(kNameColumn, m_dotNetLook ? bold : m_tree->font());
        prop->setBackground(kNameColumn, m_dotNetLook ? palette().brush(QPalette::Window) : QBrush());
    }
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
