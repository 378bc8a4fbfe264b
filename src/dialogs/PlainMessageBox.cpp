#include "zelvar/dialogs/PlainMessageBox.h"

#include "zelvar/base/Translation.h"
#include "zelvar/dialogs/core/MessageBoxSet.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QPointer>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

namespace zelvar {

namespace {

constexpr MessageBoxButton kTryAgain[] = {
    {Mark("Cancel"), IDCANCEL}, {Mark("&Try Again"), IDTRYAGAIN}, {Mark("&Continue"), IDCONTINUE}};

/// The platform's sets end at 6, which is not ours.
MessageBoxSet PlatformSet(unsigned type) {
    unsigned const set = type & MB_TYPEMASK;
    if (set == MB_FILEEXISTS)
        return {.buttons = kTryAgain, .counted = 3, .allowsCancel = true};
    return SetOfMessageBox(set < MB_FILEEXISTS ? set : MB_OK);
}

QMessageBox::Icon IconOf(unsigned type) {
    switch (type & MB_ICONMASK) {
    case MB_ICONHAND:
        return QMessageBox::Critical;
    case MB_ICONQUESTION:
        return QMessageBox::Question;
    case MB_ICONEXCLAMATION:
        return QMessageBox::Warning;
    case MB_ICONASTERISK:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

} // namespace

int PlainMessageBox(QWidget *parent, DString const &text, DString const &caption, unsigned type) {
    QPointer<QMessageBox> const box = new QMessageBox(parent);
    box->setIcon(IconOf(type));
    box->setWindowTitle(platform::ToQString(caption));
    box->setTextFormat(Qt::PlainText);
    box->setText(platform::ToQString(text));
    if ((type & MB_SYSTEMMODAL) != 0)
        box->setWindowFlag(Qt::WindowStaysOnTopHint);
    MessageBoxSet const set = PlatformSet(type);
    unsigned const wanted = (type & MB_DEFMASK) >> 8U;
    QPushButton *preset = nullptr;
    for (MessageBoxButton const &button : set.buttons) {
        // All of one role: the order is told, and no button is Escape's but the one that says so.
        QPushButton *const added = box->addButton(platform::Shown(button.text), QMessageBox::AcceptRole);
        platform::SetDlgCtrlID(*added, button.id);
        if (preset == nullptr || static_cast<unsigned>(&button - set.buttons.data()) == wanted)
            preset = added;
        if (button.id == IDCANCEL)
            box->setEscapeButton(added);
    }
    box->setDefaultButton(preset);
    platform::RunModal(*box);
    if (box.isNull())
        return IDCANCEL; // its parent took it away
    QAbstractButton const *const clicked = box->clickedButton();
    int const id = clicked == nullptr ? IDCANCEL : platform::GetDlgCtrlID(*clicked);
    delete box;
    return id;
}

} // namespace zelvar
