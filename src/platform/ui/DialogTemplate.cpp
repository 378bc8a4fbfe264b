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

/// An item and what it has become.
struct Built {
    DialogItem const &item;
    QWidget *control; ///< the dialog's
};

/// A caption that was made wider moves the one that follows it in its row along.
void KeepApart(std::vector<Built> const &controls) {
    constexpr int gap = 8; // pixels
    Built const *former = nullptr;
    for (Built const &next : controls) {
        if (former != nullptr && EndsInCaption(former->item.kind) && EndsInCaption(next.item.kind) &&
            next.item.y == former->item.y && next.item.x >= former->item.x) {
            int const left = former->control->geometry().right() + 1 + gap;
            next.control->move(std::max(left, next.control->x()), next.control->y());
        }
        former = &next;
    }
}

bool IsInRowOf(DialogItem const &item, DialogItem const &other) {
    return item.y < other.y + other.h && other.y < item.y + item.h;
}

/// A label that needs more than the template has makes the field behind it begin later.
void MakeRoomForLabels(std::vector<Built> const &controls) {
    constexpr int gap = 4; // pixels
    for (auto const &[label, caption] : controls)
        for (auto const &[item, field] : controls) {
            if (label.kind != ControlKind::Label || !IsField(item.kind) || item.x <= label.x || !IsInRowOf(label, item))
                continue;
            QRect place = field->geometry();
            place.setLeft(std::clamp(caption->geometry().right() + 1 + gap, place.left(), place.right()));
            field->setGeometry(place);
        }
}

/// What the texts of buttons need beyond the template's width. Those that keep to the right edge grow to the left and
/// move what stands before them; a text there gets shorter. Others grow to the right.
void WidenButtons(std::vector<Built> const &controls) {
    constexpr int edges = 6; // pixels, both sides together
    for (auto const &[item, control] : controls) {
        auto *const button = qobject_cast<QPushButton *>(control);
        if (button == nullptr || button->text().isEmpty())
            continue;
        int const more =
            button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + edges - button->width();
        if (more <= 0)
            continue;
        bool const toLeft = item.move.x1 == 100;
        button->setGeometry(button->geometry().adjusted(toLeft ? -more : 0, 0, toLeft ? 0 : more, 0));
        for (auto const &[other, beside] : controls) {
            if (!IsInRowOf(item, other) || (toLeft ? other.x >= item.x : other.x <= item.x))
                continue;
            if (qobject_cast<QPushButton *>(beside) != nullptr)
                beside->move(beside->x() + (toLeft ? -more : more), beside->y());
            else if (toLeft)
                beside->resize(std::max(0, beside->width() - more), beside->height());
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

    std::vector<Built> controls;
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
        controls.push_back({item, control});
    }
    KeepApart(controls);
    MakeRoomForLabels(controls);
    WidenButtons(controls);
    for (auto const &[item, control] : controls) {
        DialogItem const *const label = IsField(item.kind) ? LabelOf(item, dialogTemplate.items) : nullptr;
        if (label == nullptr)
            continue;
        control->setAccessibleName(Shown(label->text).remove(u'&'));
        auto *const caption =
            qobject_cast<QLabel *>(controls[static_cast<std::size_t>(label - dialogTemplate.items.data())].control);
        // Its letter goes to the field; without a field the toolkit would show the sign. And to screen readers a combo
        // box has no name but that of the label that leads to it.
        if (caption != nullptr && (caption->text().contains(u'&') || qobject_cast<QComboBox *>(control) != nullptr))
            caption->setBuddy(control);
    }
}

} // namespace zelvar::platform
