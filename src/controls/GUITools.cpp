#include "zelvar/controls/GUITools.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/DialogTemplate.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFontMetrics>
#include <QtGui/QScreen>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::string_view kEllipsis = "…";

/// Moves the window with its frame.
void MoveFrameTo(QWidget &window, QRect const &frame) {
    QScreen const *screen = QGuiApplication::screenAt(frame.center());
    if (screen == nullptr)
        screen = window.screen();
    Rect const place = GUITools::KeepWithin(platform::ToRect(frame), platform::ToRect(screen->availableGeometry()));
    QSize const border = window.frameGeometry().size() - window.size();
    window.move(place.left, place.top);
    if (place.Width() < frame.width() || place.Height() < frame.height())
        window.resize(QSize(place.Width(), place.Height()) - border);
}

/// `act` on each control that is there; their number.
template <class Act>
int ForEachItem(QWidget const &dialog, std::span<int const> ids, Act &&act) {
    int found = 0;
    for (int const id : ids)
        if (QWidget *const item = platform::GetDlgItem(dialog, id)) {
            act(*item);
            ++found;
        }
    return found;
}

} // namespace

Size GUITools::DlgUnitsToPixels(QWidget const &widget, Size units) {
    Rect const pixels = platform::MapDialogRect(widget, {.right = units.cx, .bottom = units.cy});
    return {.cx = pixels.right, .cy = pixels.bottom};
}

Rect GUITools::KeepWithin(Rect rect, Rect const &screen) {
    int const width = std::min(rect.Width(), screen.Width());
    int const height = std::min(rect.Height(), screen.Height());
    rect.left = std::clamp(rect.left, screen.left, screen.right - width);
    rect.top = std::clamp(rect.top, screen.top, screen.bottom - height);
    rect.right = rect.left + width;
    rect.bottom = rect.top + height;
    return rect;
}

void GUITools::KeepOnScreen(QWidget &window) { MoveFrameTo(window, window.frameGeometry()); }

void GUITools::CenterWindow(QWidget &window) {
    window.ensurePolished();
    if (!window.testAttribute(Qt::WA_Resized))
        window.adjustSize();
    QWidget const *const parent = window.parentWidget();
    QRect const over = parent == nullptr ? window.screen()->availableGeometry() : parent->window()->frameGeometry();
    QRect frame = window.frameGeometry();
    frame.moveCenter(over.center());
    MoveFrameTo(window, frame);
}

int GUITools::EnableItems(QWidget const &dialog, std::span<int const> ids, bool enable) {
    return ForEachItem(dialog, ids, [enable](QWidget &item) { item.setEnabled(enable); });
}

int GUITools::ShowItems(QWidget const &dialog, std::span<int const> ids, bool show) {
    return ForEachItem(dialog, ids, [show](QWidget &item) { item.setVisible(show); });
}

bool GUITools::SetItemText(QWidget const &dialog, int id, DString const &text) {
    QWidget *const item = platform::GetDlgItem(dialog, id);
    QString const shown = platform::ToQString(text);
    if (auto *const label = qobject_cast<QLabel *>(item))
        label->setText(shown);
    else if (auto *const button = qobject_cast<QAbstractButton *>(item))
        button->setText(shown);
    else if (auto *const edit = qobject_cast<QLineEdit *>(item))
        edit->setText(shown);
    else if (auto *const lines = qobject_cast<QPlainTextEdit *>(item))
        lines->setPlainText(shown);
    else if (auto *const combo = qobject_cast<QComboBox *>(item))
        combo->isEditable() ? combo->setEditText(shown) : combo->setCurrentIndex(combo->findText(shown));
    else if (auto *const group = qobject_cast<QGroupBox *>(item))
        group->setTitle(shown);
    else
        return false;
    return true;
}

DString GUITools::GetItemText(QWidget const &dialog, int id) {
    QWidget const *const item = platform::GetDlgItem(dialog, id);
    QString text;
    if (auto const *const label = qobject_cast<QLabel const *>(item))
        text = label->text();
    else if (auto const *const button = qobject_cast<QAbstractButton const *>(item))
        text = button->text();
    else if (auto const *const edit = qobject_cast<QLineEdit const *>(item))
        text = edit->text();
    else if (auto const *const lines = qobject_cast<QPlainTextEdit const *>(item))
        text = lines->toPlainText();
    else if (auto const *const combo = qobject_cast<QComboBox const *>(item))
        text = combo->currentText();
    else if (auto const *const group = qobject_cast<QGroupBox const *>(item))
        text = group->title();
    return platform::ToDString(text);
}

int GUITools::TextWidth(QFont const &font, DString const &text) {
    return QFontMetrics(font).horizontalAdvance(platform::ToQString(text));
}

DString GUITools::ShortenPath(DString const &path, QFont const &font, int width) {
    DString shown = ToValidUtf8(path);
    if (TextWidth(font, shown) <= width)
        return shown;
    char const separator = PathStyle::Native().separator;
    std::vector<DString> const parts = Split(shown, separator);
    // With the first folder, then without it: as many of the last parts as fit.
    std::size_t const root = parts.front().empty() ? 2 : 1;
    for (std::size_t const kept : {root, std::size_t{0}}) {
        DString start;
        for (std::size_t i = 0; i < kept && i < parts.size(); ++i)
            start.append(parts[i]).append(1, separator);
        DString end;
        DString fitting;
        for (std::size_t i = parts.size(); i-- > kept + 1;) {
            end.insert(0, parts[i]).insert(0, 1, separator);
            DString candidate = start;
            candidate.append(kEllipsis).append(end);
            if (TextWidth(font, candidate) > width)
                break;
            fitting = std::move(candidate);
        }
        if (!fitting.empty())
            return fitting;
    }
    QString const name = platform::ToQString(parts.back());
    return platform::ToDString(QFontMetrics(font).elidedText(name, Qt::ElideMiddle, width));
}

GUITools::WaitCursor::WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
GUITools::WaitCursor::~WaitCursor() { QApplication::restoreOverrideCursor(); }

} // namespace zelvar
