#include "zelvar/views/ColumnArea.h"

#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportPainter.h"

#include <QtCore/QAbstractTableModel>
#include <QtCore/QEvent>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <utility>

namespace zelvar {

/// The captions as the header view wants them: a table of columns without rows.
class ColumnArea::Model final : public QAbstractTableModel {
public:
    [[nodiscard]] int rowCount(QModelIndex const &) const override { return 0; }
    [[nodiscard]] int columnCount(QModelIndex const &) const override { return Count(); }
    [[nodiscard]] QVariant data(QModelIndex const &, int) const override { return {}; }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation, int role) const override {
        ReportColumn const &column = At(section);
        if (role == Qt::DisplayRole)
            return platform::Isolated(platform::ToQString(column.caption), QGuiApplication::layoutDirection());
        if (role == Qt::TextAlignmentRole)
            return static_cast<int>(AlignmentOf(column.format) | Qt::AlignVCenter);
        return {};
    }

    [[nodiscard]] int Count() const { return static_cast<int>(m_columns.size()); }
    [[nodiscard]] bool Has(int col) const { return col >= 0 && col < Count(); }
    [[nodiscard]] ReportColumn const &At(int col) const { return m_columns[static_cast<std::size_t>(col)]; }

    void Insert(int col, ReportColumn column) {
        beginInsertColumns({}, col, col);
        for (ReportColumn &other : m_columns)
            other.subItem += other.subItem >= col && col < Count() ? 1 : 0;
        m_columns.insert(m_columns.begin() + col, std::move(column));
        endInsertColumns();
    }
    void Delete(int col) {
        beginRemoveColumns({}, col, col);
        m_columns.erase(m_columns.begin() + col);
        for (ReportColumn &other : m_columns)
            other.subItem -= other.subItem > col ? 1 : 0;
        endRemoveColumns();
    }
    template <class Value>
    void Set(int col, Value ReportColumn::*field, Value value) {
        m_columns[static_cast<std::size_t>(col)].*field = std::move(value);
        Q_EMIT headerDataChanged(Qt::Horizontal, col, col);
    }

private:
    std::vector<ReportColumn> m_columns; ///< `width` unused: the header view keeps it
};

ColumnArea::ColumnArea(QWidget *parent)
    : QAbstractScrollArea(parent), m_model(std::make_unique<Model>()), m_header(new QHeaderView(Qt::Horizontal, this)) {
    m_header->setModel(m_model.get());
    m_header->setMinimumSectionSize(0);
    m_header->setSectionsClickable(true);
    m_header->setHighlightSections(false);
    m_header->setFocusPolicy(Qt::NoFocus);
    connect(m_header, &QHeaderView::sectionResized, this, &ColumnArea::ColumnsChanged);
    connect(m_header, &QHeaderView::sectionMoved, this, &ColumnArea::ColumnsChanged);
    connect(m_header, &QHeaderView::sectionClicked, this, [this](int col) { HeadingClicked(col); });
    connect(m_header, &QHeaderView::sectionHandleDoubleClicked, this,
            [this](int col) { SetColumnWidth(col, LVSCW_AUTOSIZE); });
    PlaceHeader();
}

// The header looks at the model until it dies itself.
ColumnArea::~ColumnArea() {
    m_header->disconnect(this);
    delete m_header;
}

int ColumnArea::InsertColumn(int col, DString const &caption, int format, int width, int subItem) {
    if (col < 0)
        return -1;
    int const at = std::min(col, GetColumnCount());
    m_model->Insert(at, {caption, format, 0, subItem < 0 ? at : subItem});
    m_header->resizeSection(at, std::max(width, 0));
    ColumnInserted(at);
    // To ask the header for its height costs as much as a hundred columns: of many it is asked once, behind the last.
    constexpr int few = 8;
    if (GetColumnCount() <= few)
        PlaceHeader();
    else if (!std::exchange(m_isHeaderDue, true))
        QMetaObject::invokeMethod(this, &ColumnArea::PlaceHeader, Qt::QueuedConnection);
    ColumnsChanged();
    return at;
}

int ColumnArea::DeleteColumn(int col) {
    if (!m_model->Has(col))
        return 0;
    m_model->Delete(col);
    ColumnDeleted(col);
    ColumnsChanged();
    return 1;
}

int ColumnArea::GetColumnCount() const { return m_model->Count(); }

bool ColumnArea::GetColumn(int col, ReportColumn &column) const {
    if (!m_model->Has(col))
        return false;
    column = m_model->At(col);
    column.width = GetColumnWidth(col);
    return true;
}

int ColumnArea::GetColumnSubItem(int col) const { return m_model->Has(col) ? m_model->At(col).subItem : col; }

bool ColumnArea::SetColumnCaption(int col, DString const &caption) {
    if (!m_model->Has(col))
        return false;
    m_model->Set(col, &ReportColumn::caption, caption);
    return true;
}

bool ColumnArea::SetColumnFormat(int col, int format) {
    if (!m_model->Has(col))
        return false;
    m_model->Set(col, &ReportColumn::format, format);
    viewport()->update();
    return true;
}

int ColumnArea::GetColumnWidth(int col) const { return m_model->Has(col) ? m_header->sectionSize(col) : 0; }

bool ColumnArea::SetColumnWidth(int col, int width) {
    if (!m_model->Has(col))
        return false;
    if (width == LVSCW_AUTOSIZE || width == LVSCW_AUTOSIZE_USEHEADER) {
        bool const withHeader = width == LVSCW_AUTOSIZE_USEHEADER;
        bool const last = m_header->visualIndex(col) == GetColumnCount() - 1;
        width = ContentWidth(col);
        if (withHeader)
            width = std::max(width, m_header->sectionSizeHint(col));
        if (withHeader && last)
            width = std::max(width, viewport()->width() - (ColumnsWidth() - GetColumnWidth(col)));
    }
    m_header->resizeSection(col, std::max(width, 0));
    return true;
}

std::vector<int> ColumnArea::GetColumnOrderArray() const {
    std::vector<int> order;
    order.reserve(static_cast<std::size_t>(GetColumnCount()));
    for (int visual = 0; visual < GetColumnCount(); ++visual)
        order.push_back(m_header->logicalIndex(visual));
    return order;
}

bool ColumnArea::SetColumnOrderArray(std::vector<int> const &order) {
    std::vector<int> sorted = order;
    std::sort(sorted.begin(), sorted.end());
    for (int col = 0; col < GetColumnCount(); ++col)
        if (static_cast<int>(sorted.size()) != GetColumnCount() || sorted[static_cast<std::size_t>(col)] != col)
            return false;
    for (int visual = 0; visual < GetColumnCount(); ++visual)
        m_header->moveSection(m_header->visualIndex(order[static_cast<std::size_t>(visual)]), visual);
    return true;
}

void ColumnArea::ShowHeader(bool show) {
    m_header->setVisible(show);
    PlaceHeader();
}

void ColumnArea::SetSortMark(int col, bool ascending) {
    bool const marked = m_model->Has(col);
    m_header->setSortIndicatorShown(marked);
    if (marked)
        m_header->setSortIndicator(col, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

int ColumnArea::ColumnsWidth() const { return m_header->length(); }

Rect ColumnArea::Mirrored(Rect const &rect) const {
    int const width = viewport()->width();
    return isRightToLeft() ? Rect{width - rect.right, rect.top, width - rect.left, rect.bottom} : rect;
}

// The header goes on with the order it was given, seen or not.
bool ColumnArea::StandByNumber() const { return m_header->isHidden() && m_header->sectionsMoved(); }

int ColumnArea::ColumnPosition(int col) const {
    if (!StandByNumber())
        return m_header->sectionPosition(col);
    int position = 0;
    for (int before = 0; before < col; ++before)
        position += m_header->sectionSize(before);
    return position;
}

int ColumnArea::ColumnStart(int col) const { return ColumnPosition(col) - horizontalScrollBar()->value(); }

int ColumnArea::ColumnLeft(int col) const {
    int const start = ColumnStart(col);
    return Mirrored({start, 0, start + GetColumnWidth(col), 0}).left;
}

int ColumnArea::ColumnAt(int x) const {
    for (int col = 0; StandByNumber() && col < GetColumnCount(); ++col)
        if (x >= ColumnLeft(col) && x < ColumnLeft(col) + GetColumnWidth(col))
            return col;
    // The header counts from its own right edge, which stays behind while it is hidden.
    int const lag = isRightToLeft() ? m_header->viewport()->width() - viewport()->width() : 0;
    int const visual = StandByNumber() ? -1 : m_header->visualIndexAt(x + lag);
    return visual < 0 ? -1 : m_header->logicalIndex(visual);
}

void ColumnArea::EnsureColumnVisible(int col) {
    if (!m_model->Has(col))
        return;
    UpdateHorizontalBar();
    int const left = ColumnPosition(col);
    QScrollBar &bar = *horizontalScrollBar();
    bar.setValue(std::min(std::max(bar.value(), left + GetColumnWidth(col) - viewport()->width()), left));
}

void ColumnArea::ColumnsChanged() {
    UpdateHorizontalBar();
    viewport()->update();
}

void ColumnArea::UpdateHorizontalBar() {
    int const page = viewport()->width();
    horizontalScrollBar()->setPageStep(page);
    horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * 2);
    horizontalScrollBar()->setRange(0, std::max(0, ContentsWidth() - page));
    m_header->setOffset(horizontalScrollBar()->value());
}

void ColumnArea::PlaceHeader() {
    m_isHeaderDue = false;
    int const height = m_header->isHidden() ? 0 : m_header->sizeHint().height();
    if (viewportMargins().top() != height)
        setViewportMargins(0, height, 0, 0);
    QRect const rows = viewport()->geometry();
    m_header->setGeometry(rows.left(), rows.top() - height, rows.width(), height);
}

void ColumnArea::resizeEvent(QResizeEvent *event) {
    QAbstractScrollArea::resizeEvent(event);
    PlaceHeader();
    UpdateHorizontalBar();
}

void ColumnArea::scrollContentsBy(int dx, int) {
    if (dx != 0)
        m_header->setOffset(horizontalScrollBar()->value());
    viewport()->update();
}

void ColumnArea::changeEvent(QEvent *event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        PlaceHeader();
    else if (event->type() == QEvent::LayoutDirectionChange)
        ColumnsChanged();
}

} // namespace zelvar
