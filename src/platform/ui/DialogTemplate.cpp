#include "zelvar/platform/ui/DialogTemplate.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFontMetrics>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QRadioButton>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace zelvar::platform {

namespace {

constexpr int kClosedComboHeight = 14; // dialog units; the height of an edit beside it

int RoundedRatio(int value, int times, int by) {
    int const product = value * times;
    return (product + (product < 0 ? -by / 2 : by / 2)) / by;
}

QWidget *MakeLabel(QString const &text, Qt::Alignment alignment) {
    auto *const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(alignment | Qt::AlignTop);
    return label;
}

QWidget *MakePushButton(QString const &text, bool isDefault, bool checkable) {
    auto *const button = new QPushButton(text);
    button->setCheckable(checkable);
    button->setAutoDefault(isDefault);
    button->setDefault(isDefault);
    return button;
}

QWidget *MakeCombo(bool editable) {
    auto *const combo = new QComboBox;
    combo->setEditable(editable);
    combo->setInsertPolicy(QComboBox::NoInsert);
    // The template gives the width; long entries must not widen the dialog.
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return combo;
}

QWidget *MakeControl(DialogItem const &item) {
    QString const text = Shown(item.text);
    switch (item.kind) {
    case ControlKind::Button:
        return MakePushButton(text, false, false);
    case ControlKind::DefaultButton:
        return MakePushButton(text, true, false);
    case ControlKind::CheckButton:
        return MakePushButton(text, false, true);
    case ControlKind::CheckBox:
        return new QCheckBox(text);
    case ControlKind::RadioButton:
        return new QRadioButton(text);
    case ControlKind::Label:
        return MakeLabel(text, Qt::AlignLeft);
    case ControlKind::CenteredLabel:
        return MakeLabel(text, Qt::AlignHCenter);
    case ControlKind::RightLabel:
        return MakeLabel(text, Qt::AlignRight);
    case ControlKind::EllipsisLabel: {
        auto *const label = new EllipsisLabel;
        label->SetText(text);
        return label;
    }
    case ControlKind::Edit:
    case ControlKind::ReadOnlyEdit: {
        auto *const edit = new QLineEdit(text);
        edit->setReadOnly(item.kind == ControlKind::ReadOnlyEdit);
        return edit;
    }
    case ControlKind::MultiLineEdit:
        return new QPlainTextEdit(text);
    case ControlKind::Combo:
        return MakeCombo(true);
    case ControlKind::DropDownList:
        return MakeCombo(false);
    case ControlKind::Group:
        return new QGroupBox(text);
    case ControlKind::List:
        return new QListWidget;
    case ControlKind::Progress:
        return new QProgressBar;
    case ControlKind::Place:
        break;
    }
    return new QWidget;
}

/// A combo box is placed closed; what the template gives beyond that is the room of its list.
void PlaceCombo(QWidget const &dialog, DialogItem const &item, QComboBox &combo, Rect &place) {
    int const closed = MapDialogRect(dialog, {0, 0, 0, kClosedComboHeight}).bottom;
    int const height = std::max(closed, combo.minimumSizeHint().height());
    int const line = QFontMetrics(combo.font()).height() + 4;
    if (item.h > kClosedComboHeight)
        combo.setMaxVisibleItems(std::max(3, (place.Height() - height) / line));
    place.bottom = place.top + height;
}

bool IsLabel(ControlKind kind) {
    return kind == ControlKind::Label || kind == ControlKind::CenteredLabel || kind == ControlKind::RightLabel;
}

/// Controls that are only as wide as their text, with free room behind it.
bool EndsInCaption(ControlKind kind) {
    return kind == ControlKind::CheckBox || kind == ControlKind::RadioButton || kind == ControlKind::Label;
}

/// Controls that show no caption of their own.
bool IsField(ControlKind kind) {
    return kind == ControlKind::Edit || kind == ControlKind::ReadOnlyEdit || kind == ControlKind::MultiLineEdit ||
           kind == ControlKind::Combo || kind == ControlKind::DropDownList || kind == ControlKind::List;
}

/// The label above or beside a field: the nearest one that begins neither below nor right of it.
DialogItem const *LabelOf(DialogItem const &field, std::span<DialogItem const> items) {
    constexpr int slack = 4; // dialog units that a label may be set in
    DialogItem const *nearest = nullptr;
    auto const distance = [&field](DialogItem const &item) {
        return std::abs(item.x - field.x) + std::abs(item.y - field.y);
    };
    for (DialogItem const &item : items) {
        bool const before = item.y <= field.y + slack && item.x <= field.x + slack;
        if (IsLabel(item.kind) && before && (nearest == nullptr || distance(item) < distance(*nearest)))
            nearest = &item;
    }
    return nearest;
}

/// A caption that was made wider moves the one that follows it in its row along.
void KeepApart(std::span<DialogItem const> items, std::vector<QWidget *> const &controls) {
    constexpr int gap = 8; // pixels
    for (std::size_t i = 0; i + 1 < items.size(); ++i) {
        DialogItem const &next = items[i + 1];
        if (!EndsInCaption(items[i].kind) || !EndsInCaption(next.kind) || next.y != items[i].y || next.x < items[i].x)
            continue;
        int const left = controls[i]->geometry().right() + 1 + gap;
        controls[i + 1]->move(std::max(left, controls[i + 1]->x()), controls[i + 1]->y());
    }
}

bool IsInRowOf(DialogItem const &item, DialogItem const &other) {
    return item.y < other.y + other.h && other.y < item.y + item.h;
}

/// A label that needs more than the template has makes the field behind it begin later.
void MakeRoomForLabels(std::span<DialogItem const> items, std::vector<QWidget *> const &controls) {
    constexpr int gap = 4; // pixels
    for (std::size_t i = 0; i < items.size(); ++i)
        for (std::size_t j = 0; j < items.size(); ++j) {
            if (items[i].kind != ControlKind::Label || !IsField(items[j].kind) || items[j].x <= items[i].x ||
                !IsInRowOf(items[i], items[j]))
                continue;
            QRect place = controls[j]->geometry();
            place.setLeft(std::clamp(controls[i]->geometry().right() + 1 + gap, place.left(), place.right()));
            controls[j]->setGeometry(place);
        }
}

/// What the texts of buttons need beyond the template's width. Those that keep to the right edge grow to the left and
/// move what stands before them; a text there gets shorter. Others grow to the right.
void WidenButtons(std::span<DialogItem const> items, std::vector<QWidget *> const &controls) {
    constexpr int edges = 6; // pixels, both sides together
    for (std::size_t i = 0; i < items.size(); ++i) {
        auto const *const button = qobject_cast<QPushButton *>(controls[i]);
        int const needed =
            button == nullptr ? 0 : button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + edges;
        int const more = needed - controls[i]->width();
        if (button == nullptr || button->text().isEmpty() || more <= 0)
            continue;
        bool const toLeft = items[i].move.x1 == 100;
        controls[i]->setGeometry(controls[i]->geometry().adjusted(toLeft ? -more : 0, 0, toLeft ? 0 : more, 0));
        for (std::size_t j = 0; j < items.size(); ++j) {
            if (!IsInRowOf(items[i], items[j]) || (toLeft ? items[j].x >= items[i].x : items[j].x <= items[i].x))
                continue;
            if (qobject_cast<QPushButton *>(controls[j]) != nullptr)
                controls[j]->move(controls[j]->x() + (toLeft ? -more : more), controls[j]->y());
            else if (toLeft)
                controls[j]->resize(std::max(0, controls[j]->width() - more), controls[j]->height());
        }
    }
}

} // namespace

Size DialogBaseUnits(QFont const &font) {
    QFontMetrics const metrics(font);
    int const alphabet =
        metrics.horizontalAdvance(QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
    return {(alphabet / 26 + 1) / 2, metrics.height()};
}

Rect MapDialogRect(QWidget const &dialog, Rect const &units) {
    Size const base = DialogBaseUnits(dialog.font());
    return {RoundedRatio(units.left, base.cx, 4), RoundedRatio(units.top, base.cy, 8),
            RoundedRatio(units.right, base.cx, 4), RoundedRatio(units.bottom, base.cy, 8)};
}

void BuildDialog(QWidget &dialog, DialogTemplate const &dialogTemplate, ControlFactory const &factory) {
    dialog.setWindowTitle(Shown(dialogTemplate.caption));
    Rect const client = MapDialogRect(dialog, {0, 0, dialogTemplate.width, dialogTemplate.height});
    dialog.resize(client.right, client.bottom);

    std::vector<QWidget *> controls;
    for (DialogItem const &item : dialogTemplate.items) {
        QWidget *control = factory ? factory(dialog, item) : nullptr;
        if (control == nullptr)
            control = MakeControl(item);
        control->setParent(&dialog);
        SetDlgCtrlID(*control, item.id);
        Rect place = MapDialogRect(dialog, {item.x, item.y, item.x + item.w, item.y + item.h});
        if (auto *const combo = qobject_cast<QComboBox *>(control))
            PlaceCombo(dialog, item, *combo, place);
        // The style's marks and margins may need a few pixels more than the template's author had.
        if (EndsInCaption(item.kind))
            place.right = std::max(place.right, place.left + control->sizeHint().width());
        control->setGeometry(place.left, place.top, place.Width(), place.Height());
        control->setVisible(item.visible && item.kind != ControlKind::Place);
        controls.push_back(control);
    }
    KeepApart(dialogTemplate.items, controls);
    MakeRoomForLabels(dialogTemplate.items, controls);
    WidenButtons(dialogTemplate.items, controls);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        DialogItem const &item = dialogTemplate.items[i];
        DialogItem const *const label = IsField(item.kind) ? LabelOf(item, dialogTemplate.items) : nullptr;
        if (label == nullptr)
            continue;
        controls[i]->setAccessibleName(Shown(label->text).remove(u'&'));
        auto *const caption =
            qobject_cast<QLabel *>(controls[static_cast<std::size_t>(label - dialogTemplate.items.data())]);
        // Its letter goes to the field; without a field the toolkit would show the sign. And to screen readers a combo
        // box has no name but that of the label that leads to it.
        if (caption != nullptr && (caption->text().contains(u'&') || qobject_cast<QComboBox *>(controls[i]) != nullptr))
            caption->setBuddy(controls[i]);
    }
}

} // namespace zelvar::platform
