// The list of "Filter & Find": its lines and its lower edge.
#include "zelvar/dialogs/FilterFindModel.h"
#include "zelvar/dialogs/core/FilterFindRules.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QApplication>

#include <algorithm>

namespace zelvar {

namespace {

enum ControlIds { kDescription = 1984, kDescriptionFrame = 6003 };

Rect RectOf(QWidget const &widget) {
    QRect const place = widget.geometry();
    return {place.left(), place.top(), place.right() + 1, place.bottom() + 1};
}

void Place(QWidget &widget, Rect const &place) {
    widget.setGeometry(place.left, place.top, place.Width(), place.Height());
}

} // namespace

QVariant FilterFindModel::data(QModelIndex const &index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    DlgFltrFind::Item const &item = *ItemAt(index.row());
    QString const line = platform::ToQString("<" + item.group + "> " + item.name);
    return role == Qt::DisplayRole ? line : platform::ToToolTip(line);
}

DlgFltrFind::ResizeListBox::ResizeListBox(DlgFltrFind *dialog)
    : QListView(dialog), m_pDlg(dialog), m_model(new FilterFindModel(this)) {
    setModel(m_model);
    setSelectionMode(ExtendedSelection);
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // long lines end in "...", their tool tips hold them whole
    setTextElideMode(Qt::ElideRight);
    viewport()->setMouseTracking(true);
}

DlgFltrFind::ResizeListBox::~ResizeListBox() = default;

void DlgFltrFind::ResizeListBox::SetItems(DVector<Item *> items) { m_model->SetItems(std::move(items)); }

DVector<DlgFltrFind::Item *> DlgFltrFind::ResizeListBox::SelectedItems() const {
    DVector<Item *> items;
    for (QItemSelectionRange const &range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            items.push_back(m_model->ItemAt(row));
    return items;
}

DlgFltrFind::Item const *DlgFltrFind::ResizeListBox::CurrentSelection() const {
    if (QModelIndex const current = currentIndex(); current.isValid() && selectionModel()->isSelected(current))
        return m_model->ItemAt(current.row());
    QItemSelection const selection = selectionModel()->selection();
    return selection.isEmpty() ? nullptr : m_model->ItemAt(selection.front().top());
}

void DlgFltrFind::ResizeListBox::keyboardSearch(QString const &typed) {
    if (typed.isEmpty()) { // the toolkit's word for a new search
        m_typedAt.invalidate();
        return;
    }
    bool const goesOn = m_typedAt.isValid() && m_typedAt.elapsed() < QApplication::keyboardInputInterval();
    m_typedAt.start();
    m_typed = goesOn && m_typed != typed ? m_typed + typed : typed; // the same letter again goes on to the next
    DString const wanted = platform::ToDString(m_typed);
    int const rows = m_model->rowCount();
    int const first = currentIndex().row() + (m_typed.size() > 1 ? 0 : 1); // row -1 without a current line
    for (int step = 0; step < rows; ++step) {
        int const row = (std::max(first, 0) + step) % rows;
        if (StartsWithNoCase(m_model->ItemAt(row)->name, wanted)) {
            setCurrentIndex(m_model->index(row, 0));
            return;
        }
    }
}

void DlgFltrFind::ResizeListBox::selectionChanged(QItemSelection const &selected, QItemSelection const &deselected) {
    QListView::selectionChanged(selected, deselected);
    Q_EMIT SelectionChanged();
}

void DlgFltrFind::ResizeListBox::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && IsOnBoundary(event->position().toPoint().y(), viewport()->height()))
        m_bDragging = true; // the toolkit hands the mouse to us until it is released
    else
        QListView::mousePressEvent(event);
}

void DlgFltrFind::ResizeListBox::mouseMoveEvent(QMouseEvent *event) {
    QPoint const point = event->position().toPoint();
    bool const onBoundary = m_bDragging || IsOnBoundary(point.y(), viewport()->height());
    viewport()->setCursor(onBoundary ? Qt::SizeVerCursor : Qt::ArrowCursor);
    if (m_bDragging)
        DragTo(viewport()->mapTo(m_pDlg, point).y());
    else
        QListView::mouseMoveEvent(event);
}

void DlgFltrFind::ResizeListBox::mouseReleaseEvent(QMouseEvent *event) {
    if (m_bDragging)
        m_bDragging = false;
    else
        QListView::mouseReleaseEvent(event);
}

// The layout's own places stay as they are: the next resize of the dialog puts all three back.
void DlgFltrFind::ResizeListBox::DragTo(int y) {
    QWidget *const text = platform::GetDlgItem(*m_pDlg, kDescription);
    QWidget *const frame = platform::GetDlgItem(*m_pDlg, kDescriptionFrame);
    if (text == nullptr || frame == nullptr)
        return;
    std::optional<ListAndDescription> const moved =
        DragBoundary({.list = RectOf(*this), .text = RectOf(*text), .frame = RectOf(*frame)}, y);
    if (!moved)
        return;
    Place(*this, moved->list);
    Place(*text, moved->text);
    Place(*frame, moved->frame);
}

} // namespace zelvar
