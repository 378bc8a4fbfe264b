#include "zelvar/views/ReportAccessible.h"

#include "zelvar/platform/ui/Announce.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/ReportView.h"

#include <QtWidgets/QHeaderView>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <unordered_map>

namespace zelvar {

namespace {

constexpr std::size_t kMostParts = 4096;
constexpr int kMostListed = 10'000; // selected rows that are listed one by one

using WatchedViews = std::unordered_map<ReportView const *, ReportAccessible *>;

WatchedViews &KnownViews() {
    static WatchedViews views;
    return views;
}

/// One row of a report view, or one cell of it; or the row of its headings, or one of them.
class PartAccessible final : public QAccessibleInterface,
                             public QAccessibleTableCellInterface,
                             public QAccessibleActionInterface {
public:
    PartAccessible(ReportAccessible const &table, int row, int col) : m_table(table), m_row(row), m_col(col) {}

    [[nodiscard]] int Row() const { return m_row; }
    [[nodiscard]] bool IsCell() const { return m_col >= 0; }
    [[nodiscard]] bool IsHeading() const { return m_row == ReportAccessible::kHeadings; }

    [[nodiscard]] bool isValid() const override { return m_table.HasPart(m_row, m_col); }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return m_table.window(); }
    [[nodiscard]] QAccessibleInterface *parent() const override {
        return IsCell() ? m_table.Part(m_row, -1) : const_cast<ReportAccessible *>(&m_table);
    }
    [[nodiscard]] int childCount() const override {
        bool const isWhole = IsCell() || (m_table.IsList() && !IsHeading());
        return isWhole ? 0 : m_table.columnCount();
    }
    [[nodiscard]] QAccessibleInterface *child(int index) const override {
        return index >= 0 && index < childCount() ? m_table.Part(m_row, index) : nullptr;
    }
    [[nodiscard]] int indexOfChild(QAccessibleInterface const *child) const override {
        auto const *const part = dynamic_cast<PartAccessible const *>(child);
        return part != nullptr && part->m_row == m_row && part->IsCell() ? part->m_col : -1;
    }
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override {
        if (!isValid())
            return nullptr;
        QPoint const at = m_table.View()->viewport()->mapFromGlobal(QPoint(x, y));
        if (IsHeading())
            return child(m_table.View()->ColumnAt(at.x()));
        ReportHit const hit = m_table.View()->SubItemHitTest({at.x(), at.y()});
        return hit.row == m_row ? child(hit.col) : nullptr;
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Description)
            return SortText();
        if (kind != QAccessible::Name || !isValid())
            return {};
        auto const shown = [this](int col) {
            return IsHeading() ? m_table.columnDescription(col) : m_table.View()->ShownText(m_row, col);
        };
        if (IsCell())
            return shown(m_col);
        QStringList words;
        for (int const col : m_table.View()->GetColumnOrderArray())
            words.append(shown(col));
        words.removeAll(QString());
        return words.join(QStringLiteral(", "));
    }
    void setText(QAccessible::Text, QString const &) override {}
    [[nodiscard]] QRect rect() const override {
        if (!isValid())
            return {};
        ReportView const &view = *m_table.View();
        if (IsHeading()) {
            QWidget const &header = *view.GetHeaderCtrl();
            QRect const all(header.mapToGlobal(QPoint()), header.size());
            int const left = view.viewport()->mapToGlobal(QPoint(IsCell() ? view.ColumnLeft(m_col) : 0, 0)).x();
            return IsCell() ? QRect(left, all.top(), view.GetColumnWidth(m_col), all.height()) : all;
        }
        Rect const place = IsCell() ? view.GetSubItemRect(m_row, m_col, LVIR_LABEL) : view.GetItemRect(m_row);
        return platform::ToQRect(place).translated(view.viewport()->mapToGlobal(QPoint()));
    }
    [[nodiscard]] QAccessible::Role role() const override {
        if (IsHeading())
            return IsCell() ? QAccessible::ColumnHeader : QAccessible::Row;
        return IsCell() ? QAccessible::Cell : m_table.IsList() ? QAccessible::ListItem : QAccessible::Row;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        ReportView const &view = *m_table.View();
        state.disabled = !view.isEnabled();
        if (IsHeading()) {
            state.invisible = !view.isVisible();
            return state;
        }
        state.selectable = true;
        state.multiSelectable = state.extSelectable = (view.GetStyle() & LVS_SINGLESEL) == 0;
        state.selected = isSelected();
        state.focusable = !IsCell();
        state.focused = !IsCell() && view.hasFocus() && view.GetFocusRow() == m_row;
        state.active = view.GetFocusRow() == m_row;
        bool const seen = !view.GetItemRect(m_row).Intersected(view.GetClientRect()).IsEmpty();
        state.offscreen = !seen;
        state.invisible = !seen || !view.isVisible();
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ActionInterface && CanBePressed())
            return static_cast<QAccessibleActionInterface *>(this);
        bool const isCell = IsCell() && !IsHeading();
        return type == QAccessible::TableCellInterface && isCell ? static_cast<QAccessibleTableCellInterface *>(this)
                                                                 : nullptr;
    }

    [[nodiscard]] bool isSelected() const override { return m_table.isRowSelected(m_row); }
    [[nodiscard]] QList<QAccessibleInterface *> columnHeaderCells() const override {
        QAccessibleInterface *const heading = m_table.Part(ReportAccessible::kHeadings, m_col);
        return heading == nullptr ? QList<QAccessibleInterface *>() : QList<QAccessibleInterface *>{heading};
    }
    [[nodiscard]] QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    [[nodiscard]] int columnIndex() const override { return m_col; }
    [[nodiscard]] int rowIndex() const override { return m_row; }
    [[nodiscard]] int columnExtent() const override { return 1; }
    [[nodiscard]] int rowExtent() const override { return 1; }
    [[nodiscard]] QAccessibleInterface *table() const override { return const_cast<ReportAccessible *>(&m_table); }

    [[nodiscard]] QStringList actionNames() const override {
        return CanBePressed() ? QStringList{pressAction()} : QStringList();
    }
    void doAction(QString const &name) override {
        if (actionNames().contains(name))
            Q_EMIT Header().sectionClicked(m_col);
    }
    [[nodiscard]] QStringList keyBindingsForAction(QString const &) const override { return {}; }

private:
    [[nodiscard]] QHeaderView &Header() const { return *m_table.View()->GetHeaderCtrl(); }
    [[nodiscard]] bool IsColumnHeading() const { return IsHeading() && IsCell() && isValid(); }
    [[nodiscard]] bool CanBePressed() const {
        return IsColumnHeading() && Header().sectionsClickable() && m_table.View()->isEnabled();
    }
    /// What the arrow in a heading says.
    [[nodiscard]] QString SortText() const {
        if (!IsColumnHeading() || !Header().isSortIndicatorShown() || Header().sortIndicatorSection() != m_col)
            return {};
        return Header().sortIndicatorOrder() == Qt::AscendingOrder ? platform::Shown("sorted ascending")
                                                                   : platform::Shown("sorted descending");
    }

    ReportAccessible const &m_table; ///< not owned; outlives its parts
    int m_row;
    int m_col; ///< -1 for the row itself
};

QAccessibleInterface *MakeInterface(QString const &className, QObject *object) {
    auto *const view = className == QLatin1String(ReportView::staticMetaObject.className())
                           ? qobject_cast<ReportView *>(object)
                           : nullptr;
    return view == nullptr ? nullptr : new ReportAccessible(*view);
}

/// Someone has looked at the view: only then it is worth telling what happens there.
bool IsWatched(ReportView const &view) { return KnownViews().contains(&view); }

void Notify(ReportView &view, QAccessible::Event what, int row) {
    QAccessibleEvent event(&view, what);
    event.setChild(row);
    platform::Announce(event);
}

} // namespace

void InstallReportAccessibility() {
    static bool const installed = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(installed);
}

ReportAccessible::ReportAccessible(ReportView &view) : QAccessibleWidget(&view, QAccessible::Table), m_view(&view) {
    KnownViews()[&view] = this;
}

ReportAccessible::~ReportAccessible() {
    for (Known const &part : m_byUse)
        QAccessible::deleteAccessibleInterface(part.id);
    if (m_view != nullptr)
        KnownViews().erase(m_view);
}

void ReportAccessible::Forget(ReportView const &view) {
    auto const known = KnownViews().find(&view);
    if (known == KnownViews().end())
        return;
    known->second->m_view = nullptr;
    KnownViews().erase(known);
}

void ReportAccessible::RowsReset(ReportView &view) {
    if (!IsWatched(view))
        return;
    QAccessibleTableModelChangeEvent event(&view, QAccessibleTableModelChangeEvent::ModelReset);
    platform::Announce(event);
}

void ReportAccessible::StateChanged(ReportView &view, int first, int last, unsigned oldState, unsigned newState) {
    if (!IsWatched(view))
        return;
    if ((newState & ~oldState & LVIS_FOCUSED) != 0 && view.hasFocus())
        Notify(view, QAccessible::Focus, first);
    if (((oldState ^ newState) & LVIS_SELECTED) == 0)
        return;
    bool const selected = (newState & LVIS_SELECTED) != 0;
    Notify(view,
           first != last ? QAccessible::SelectionWithin
           : selected    ? QAccessible::SelectionAdd
                         : QAccessible::SelectionRemove,
           first);
}

void ReportAccessible::SortMarkMoved(ReportView &view, int col) {
    auto const known = KnownViews().find(&view);
    QAccessibleInterface *const heading = known == KnownViews().end() ? nullptr : known->second->Part(kHeadings, col);
    if (heading == nullptr)
        return;
    QAccessibleEvent event(heading, QAccessible::DescriptionChanged);
    platform::Announce(event);
}

void ReportAccessible::FocusEntered(ReportView &view) {
    auto const tell = [&view] {
        if (IsWatched(view) && view.hasFocus() && view.GetFocusRow() >= 0)
            Notify(view, QAccessible::Focus, view.GetFocusRow());
    };
    QMetaObject::invokeMethod(&view, tell, Qt::QueuedConnection);
}

bool ReportAccessible::IsList() const { return columnCount() <= 1; }

QAccessibleInterface *ReportAccessible::Find(int row, int col) const {
    auto const found = m_parts.find({row, col});
    if (found == m_parts.end())
        return nullptr;
    m_byUse.splice(m_byUse.end(), m_byUse, found->second);
    return QAccessible::accessibleInterface(found->second->id);
}

bool ReportAccessible::HasHeadings() const {
    return m_view != nullptr && columnCount() > 0 && !m_view->GetHeaderCtrl()->isHidden();
}

bool ReportAccessible::HasOpenField() const {
    if (m_view == nullptr)
        return false;
    QObjectList const &inside = m_view->viewport()->children();
    return std::any_of(inside.begin(), inside.end(), [](QObject *child) {
        return child->isWidgetType() && !static_cast<QWidget *>(child)->isHidden();
    });
}

bool ReportAccessible::HasPart(int row, int col) const {
    bool const isRow = row == kHeadings ? HasHeadings() : row >= 0 && row < rowCount();
    return isRow && col >= -1 && col < columnCount();
}

QAccessibleInterface *ReportAccessible::Part(int row, int col) const {
    if (!HasPart(row, col))
        return nullptr;
    // A cell is asked of its row: the row must not be the one that makes room.
    std::ignore = Find(row, -1);
    if (QAccessibleInterface *const found = Find(row, col))
        return found;
    if (m_parts.size() >= kMostParts) {
        QAccessible::deleteAccessibleInterface(m_byUse.front().id);
        m_parts.erase(m_byUse.front().place);
        m_byUse.pop_front();
    }
    QAccessible::Id const id = QAccessible::registerAccessibleInterface(new PartAccessible(*this, row, col));
    m_byUse.push_back({{row, col}, id});
    m_parts[{row, col}] = std::prev(m_byUse.end());
    return QAccessible::accessibleInterface(id);
}

QAccessible::Role ReportAccessible::role() const { return IsList() ? QAccessible::List : QAccessible::Table; }

int ReportAccessible::childCount() const {
    return rowCount() + static_cast<int>(HasHeadings()) + static_cast<int>(HasOpenField());
}

QAccessibleInterface *ReportAccessible::child(int index) const {
    if (index < rowCount())
        return Part(index, -1);
    if (index == rowCount() && HasHeadings())
        return Part(kHeadings, -1);
    return index < childCount() ? QAccessible::queryAccessibleInterface(m_view->viewport()) : nullptr;
}

int ReportAccessible::indexOfChild(QAccessibleInterface const *child) const {
    auto const *const part = dynamic_cast<PartAccessible const *>(child);
    if (part != nullptr)
        return part->IsCell() || !part->isValid() ? -1 : part->IsHeading() ? rowCount() : part->Row();
    bool const isViewport = child != nullptr && HasOpenField() && child->object() == m_view->viewport();
    return isViewport ? childCount() - 1 : -1;
}

QAccessibleInterface *ReportAccessible::childAt(int x, int y) const {
    if (m_view == nullptr)
        return nullptr;
    QPoint const at = m_view->viewport()->mapFromGlobal(QPoint(x, y));
    if (m_view->viewport()->childAt(at) != nullptr)
        return QAccessible::queryAccessibleInterface(m_view->viewport());
    QAccessibleInterface *const headings = Part(kHeadings, -1);
    if (headings != nullptr && headings->rect().contains(x, y))
        return headings;
    return child(m_view->SubItemHitTest({at.x(), at.y()}).row);
}

QAccessibleInterface *ReportAccessible::focusChild() const {
    if (m_view != nullptr && m_view->hasFocus() && m_view->GetFocusRow() >= 0)
        return child(m_view->GetFocusRow());
    return QAccessibleWidget::focusChild();
}

QAccessible::State ReportAccessible::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    if (m_view != nullptr)
        state.multiSelectable = (m_view->GetStyle() & LVS_SINGLESEL) == 0;
    return state;
}

void *ReportAccessible::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessibleInterface *ReportAccessible::cellAt(int row, int column) const {
    return row < 0 ? nullptr : IsList() ? Part(row, -1) : Part(row, column);
}

int ReportAccessible::selectedCellCount() const { return selectedRowCount() * std::max(columnCount(), 1); }

QList<QAccessibleInterface *> ReportAccessible::selectedCells() const {
    QList<QAccessibleInterface *> cells;
    for (int const row : selectedRows())
        for (int col = 0; col < columnCount() && cells.size() < static_cast<qsizetype>(kMostParts) / 2; ++col)
            cells.append(cellAt(row, col));
    return cells;
}

QString ReportAccessible::columnDescription(int column) const {
    ReportColumn found;
    return m_view != nullptr && m_view->GetColumn(column, found) ? platform::ToQString(found.caption) : QString();
}

int ReportAccessible::selectedRowCount() const { return m_view == nullptr ? 0 : m_view->GetSelectedCount(); }

int ReportAccessible::columnCount() const { return m_view == nullptr ? 0 : m_view->GetColumnCount(); }

int ReportAccessible::rowCount() const { return m_view == nullptr ? 0 : m_view->GetItemCount(); }

QList<int> ReportAccessible::selectedRows() const {
    QList<int> rows;
    if (m_view == nullptr)
        return rows;
    for (int row = m_view->GetNextItem(-1, LVNI_SELECTED); row >= 0 && rows.size() < kMostListed;
         row = m_view->GetNextItem(row, LVNI_SELECTED))
        rows.append(row);
    return rows;
}

bool ReportAccessible::isRowSelected(int row) const {
    return m_view != nullptr && m_view->GetItemState(row, LVIS_SELECTED) != 0;
}

bool ReportAccessible::selectRow(int row) {
    return m_view != nullptr && row >= 0 && m_view->SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
}

bool ReportAccessible::unselectRow(int row) {
    return m_view != nullptr && row >= 0 && m_view->SetItemState(row, 0, LVIS_SELECTED);
}

} // namespace zelvar
