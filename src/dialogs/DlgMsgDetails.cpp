#include "zelvar/dialogs/DlgMsgDetails.h"

#include "zelvar/base/Translation.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace zelvar {

namespace {

using platform::ControlKind;
using platform::DialogItem;

enum ControlIds { kOk = 1, kDetails = 6005, kShowDetails = 6006, kMessage = 6007 };
enum Answer { kAnswerOk = 1, kAnswerCancel = 2 };

constexpr DialogItem kItems[] = {
    {kOk, ControlKind::DefaultButton, Mark("OK"), 227, 7, 50, 14},
    {kShowDetails, ControlKind::Button, Mark("Details..."), 227, 31, 50, 14},
    {kDetails, ControlKind::MultiLineEdit, "", 7, 67, 270, 96},
    {kMessage, ControlKind::Label, "", 7, 7, 211, 55},
};
constexpr platform::DialogTemplate kTemplate{.id = 6101, .caption = "", .width = 284, .height = 170, .items = kItems};

/// The message is read like a label: it wraps, also within a long path, and scrolls where the template has no room.
QWidget *MakeMessage(QWidget &dialog, DialogItem const &item) {
    if (item.id != kMessage)
        return nullptr;
    auto *const text = new QPlainTextEdit(&dialog);
    text->setFrameShape(QFrame::NoFrame);
    text->viewport()->setAutoFillBackground(false);
    text->document()->setDocumentMargin(0);
    text->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // nothing is wider
    return text;
}

DString TextOf(char const *text) { return text == nullptr ? DString() : DString(text); }

DString WithReturns(DString const &text) {
    DString lines;
    lines.reserve(text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    for (char const c : text) {
        if (c == '\n')
            lines += '\r';
        lines += c;
    }
    return lines;
}

} // namespace

DlgMsgDetails::DlgMsgDetails(char const *caption, char const *message, char const *details, QWidget *parent)
    : QDialog(parent), m_caption(TextOf(caption)), m_message(TextOf(message)), m_details(WithReturns(TextOf(details))) {
    BuildDialog(*this, kTemplate, MakeMessage);
    m_detailsEdit = platform::GetDlgItem<QPlainTextEdit>(*this, kDetails);
    m_detailsButton = platform::GetDlgItem<QPushButton>(*this, kShowDetails);
    connect(platform::GetDlgItem<QPushButton>(*this, kOk), &QPushButton::clicked, this, &QDialog::accept);
    connect(m_detailsButton, &QPushButton::clicked, this, &DlgMsgDetails::OnBnClickedDetails);
    OnInitDialog();
}

int DlgMsgDetails::DoModal() { return platform::RunModal(*this) == Accepted ? kAnswerOk : kAnswerCancel; }

void DlgMsgDetails::setVisible(bool visible) {
    if (visible && !isVisible())
        Collapse();
    QDialog::setVisible(visible);
}

void DlgMsgDetails::OnInitDialog() {
    setWindowTitle(platform::ToQString(m_caption));
    auto *const message = platform::GetDlgItem<QPlainTextEdit>(*this, kMessage);
    message->setPlainText(platform::ToQString(m_message));
    m_detailsEdit->setPlainText(platform::ToQString(m_details).remove(u'\r')); // the field breaks lines by itself
    m_detailsEdit->setAccessibleName(platform::Shown("Details"));
    message->setAccessibleName(platform::Shown("Message"));
    for (QPlainTextEdit *const text : {message, m_detailsEdit}) {
        text->setReadOnly(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        text->setTabChangesFocus(true);
    }
    m_rcFull = size();
    Collapse();
}

void DlgMsgDetails::Collapse() {
    int const full = m_rcFull.height();
    int const edit = m_detailsEdit->height();
    int const text = platform::GetDlgItem(*this, kMessage)->height();
    m_detailsButton->setEnabled(true);
    m_detailsEdit->hide(); // else the keyboard would reach what cannot be seen
    setFixedSize(m_rcFull.width(), full - edit - (full - edit - text) / 3);
}

void DlgMsgDetails::OnBnClickedDetails() {
    m_detailsButton->setEnabled(false);
    m_detailsEdit->show();
    m_detailsEdit->setFocus(); // a disabled button must not keep it
    setFixedSize(m_rcFull);
}

} // namespace zelvar
