#include "zelvar/opends/search/FactsForm.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/WheelPast.h"

#include <QtCore/QEvent>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QStyle>

#include <algorithm>

namespace zelvar {

using platform::Shown;
using platform::ToDString;

namespace {

constexpr int kSpacing = 4;      // pixels
constexpr int kBetween = 16;     // pixels between columns
constexpr int kBoundColumns = 8; // characters that a field shows at least

using Kind = SearchQuery::Kind;
constexpr std::pair<Kind, char const *> kKinds[] = {
    {Kind::Any, Mark("Anything")},   {Kind::Image, Mark("Images")},         {Kind::File, Mark("Files")},
    {Kind::Folder, Mark("Folders")}, {Kind::Container, Mark("Containers")}, {Kind::DataSet, Mark("Folders of data")}};
constexpr int kTypes[] = {RDI_UInt8, RDI_UInt16, RDI_Int16, RDI_UInt32, RDI_Int32, RDI_Float32};

} // namespace

struct FactsForm::BoundWords {
    SearchDraft::Bounds SearchDraft::*field;
    char const *label;
    char const *least; ///< what the first field is for
    char const *most;
    char const *name; ///< of the object
};

FactsForm::FactsForm(QWidget *parent) : QWidget(parent) {
    static constexpr BoundWords kBounds[] = {
        {&SearchDraft::width, Mark("Width"), Mark("Images that are at least so many pixels wide"),
         Mark("Images that are at most so many pixels wide"), "width"},
        {&SearchDraft::height, Mark("Height"), Mark("Images that are at least so many pixels high"),
         Mark("Images that are at most so many pixels high"), "height"},
        {&SearchDraft::channels, Mark("Channels"), Mark("Images with at least so many channels"),
         Mark("Images with at most so many channels"), "channels"},
        {&SearchDraft::slices, Mark("Slices"), Mark("Images with at least so many slices"),
         Mark("Images with at most so many slices"), "slices"},
        {&SearchDraft::frames, Mark("Frames"), Mark("Images with at least so many time frames"),
         Mark("Images with at most so many time frames"), "frames"},
        {&SearchDraft::bytes, Mark("Size"), Mark("Larger than so many bytes, or as 10M"),
         Mark("Smaller than so many bytes, or as 10M"), "bytes"},
        {&SearchDraft::modified, Mark("Changed"), Mark("Newer than a date, as 2026-11-16, or than an age, as 7d"),
         Mark("Older than a date, as 2026-11-16, or than an age, as 7d"), "modified"},
    };
    m_kind = AddBox(Mark("Kind"), "kind");
    for (auto const &[kind, words] : kKinds)
        m_kind->addItem(Shown(words), static_cast<int>(kind));
    m_format = new QLineEdit(this);
    m_format->setToolTip(Shown("Part of the name of the format, as TIFF"));
    AddCell(Mark("Format"), {m_format}, "format");
    m_type = AddBox(Mark("Sample type"), "type");
    m_type->addItem(Shown("Any"), 0);
    for (int const type : kTypes)
        m_type->addItem(Shown(RDIGetDTName(type).c_str()), type);
    for (BoundWords const &words : kBounds)
        AddBounds(words);
    m_inside = AddCheck(Mark("Also inside containers"), Mark("Files that hold several images are opened"), "inside");
    m_remote = AddCheck(Mark("Places on the network"),
                        Mark("Folders on servers that lie below the place are searched, too"), "remote");
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    AlignLabels();
}

// ------------------------------------------------------------------------------------------------------ building

QWidget *FactsForm::AddCell(char const *label, std::vector<QWidget *> const &controls, char const *name) {
    auto *const cell = new QWidget(this);
    auto *const line = new QHBoxLayout(cell);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(kSpacing);
    if (label != nullptr) {
        auto *const words = new QLabel(Shown(label), cell);
        words->setTextFormat(Qt::PlainText);
        words->setBuddy(controls.front());
        line->addWidget(words);
        m_labels.push_back(words);
    }
    for (QWidget *const control : controls) {
        line->addWidget(control, 1);
        control->setObjectName(QString::fromLatin1(name) + (control == controls.front() ? "" : "Most"));
        QString const tip = control->toolTip();
        control->setAccessibleName(tip.isEmpty() && label != nullptr ? Shown(label) : tip);
        m_focusOrder.push_back(control);
    }
    m_cells.push_back(cell);
    return cell;
}

QComboBox *FactsForm::AddBox(char const *label, char const *name) {
    auto *const box = new QComboBox(this);
    platform::LetWheelPast(*box);
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    AddCell(label, {box}, name);
    return box;
}

void FactsForm::AddBounds(BoundWords const &words) {
    BoundEdits edits{.field = words.field, .least = new QLineEdit(this), .most = new QLineEdit(this)};
    edits.least->setToolTip(Shown(words.least));
    edits.least->setPlaceholderText(Shown("from"));
    edits.most->setToolTip(Shown(words.most));
    edits.most->setPlaceholderText(Shown("to"));
    for (QLineEdit *const edit : {edits.least, edits.most})
        edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * kBoundColumns);
    AddCell(words.label, {edits.least, edits.most}, words.name);
    m_bounds.push_back(edits);
}

QCheckBox *FactsForm::AddCheck(char const *label, char const *tip, char const *name) {
    auto *const check = new QCheckBox(Shown(label), this);
    AddCell(nullptr, {check}, name);
    check->setToolTip(Shown(tip));
    check->setAccessibleName(Shown(label));
    check->setAccessibleDescription(Shown(tip));
    return check;
}

// ------------------------------------------------------------------------------------------------------- reading

void FactsForm::Read(SearchDraft &draft) const {
    draft.kind = static_cast<Kind>(m_kind->currentData().toInt());
    draft.format = ToDString(m_format->text());
    draft.dataTypes = m_type->currentData().toInt();
    draft.inside = m_inside->isChecked();
    draft.remote = m_remote->isChecked();
    for (BoundEdits const &edits : m_bounds)
        draft.*edits.field = {ToDString(edits.least->text()), ToDString(edits.most->text())};
}

void FactsForm::Fill(SearchDraft const &draft) {
    m_kind->setCurrentIndex(std::max(m_kind->findData(static_cast<int>(draft.kind)), 0));
    m_type->setCurrentIndex(std::max(m_type->findData(draft.dataTypes), 0));
    m_format->setText(platform::ToQString(draft.format));
    m_inside->setChecked(draft.inside);
    m_remote->setChecked(draft.remote);
    for (BoundEdits const &edits : m_bounds) {
        edits.least->setText(platform::ToQString((draft.*edits.field).least));
        edits.most->setText(platform::ToQString((draft.*edits.field).most));
    }
}

void FactsForm::FocusOn(SearchDraft::Fault const &fault) const {
    for (BoundEdits const &edits : m_bounds)
        if (edits.field == fault.field) {
            QLineEdit *const edit = fault.isMost ? edits.most : edits.least;
            edit->setFocus();
            edit->selectAll();
        }
}

// ------------------------------------------------------------------------------------------------------- placing

// The fields of a column begin below each other.
void FactsForm::AlignLabels() {
    int width = 0;
    for (QLabel *const label : m_labels) {
        label->setMinimumWidth(0);
        width = std::max(width, label->sizeHint().width());
    }
    for (QLabel *const label : m_labels)
        label->setMinimumWidth(width);
}

QSize FactsForm::CellSize() const {
    QSize size;
    for (QWidget const *const cell : m_cells)
        size = size.expandedTo(cell->sizeHint().expandedTo(cell->minimumSizeHint()));
    return size;
}

int FactsForm::ColumnsIn(int width) const {
    int const most = static_cast<int>(m_cells.size());
    return std::clamp((width + kBetween) / std::max(CellSize().width() + kBetween, 1), 1, most);
}

int FactsForm::heightForWidth(int width) const {
    int const columns = ColumnsIn(width);
    int const lines = (static_cast<int>(m_cells.size()) + columns - 1) / columns;
    return lines * (CellSize().height() + kSpacing);
}

QSize FactsForm::sizeHint() const {
    QSize const cell = CellSize();
    return {cell.width(), heightForWidth(cell.width())};
}

QSize FactsForm::minimumSizeHint() const {
    int width = 0;
    for (QWidget const *const cell : m_cells)
        width = std::max(width, cell->minimumSizeHint().width());
    return {width, CellSize().height()};
}

void FactsForm::Place() {
    int const columns = ColumnsIn(width());
    int const each = (width() + kBetween) / columns - kBetween;
    int const step = CellSize().height() + kSpacing;
    for (int i = 0; i < static_cast<int>(m_cells.size()); ++i) {
        QRect const place(i % columns * (each + kBetween), i / columns * step, each, step - kSpacing);
        m_cells[static_cast<std::size_t>(i)]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    }
}

void FactsForm::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    Place();
}

void FactsForm::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        Place();
    if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange)
        return;
    AlignLabels();
    updateGeometry();
}

} // namespace zelvar
