#include "zelvar/dialogs/XMessageBox.h"

#include "zelvar/base/Translation.h"
#include "zelvar/dialogs/MessageBoxWindow.h"
#include "zelvar/dialogs/PlainMessageBox.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtWidgets/QApplication>

#include <new>
#include <utility>

namespace zelvar {

namespace {

constexpr char kHelpEnding[] = ".html";

MessageBoxHelp &Help() {
    static MessageBoxHelp help;
    return help;
}

bool IsFile(DString const &file) { return QFileInfo(QFile::decodeName(file.c_str())).isFile(); }

void OpenByDesktop(DString const &file, unsigned helpId) {
    QString const name = QFile::decodeName(file.c_str());
    if (!IsFile(file))
        return;
    QUrl url = QUrl::fromLocalFile(QFileInfo(name).absoluteFilePath());
    if (helpId != 0)
        url.setFragment(QString::number(helpId));
    QDesktopServices::openUrl(url);
}

std::optional<DString> HelpFile() {
    DString const module = Help().module.empty()
                               ? QFile::encodeName(QCoreApplication::applicationFilePath()).toStdString()
                               : Help().module;
    return HelpFileOf(module, kHelpEnding);
}

void ShowHelp(unsigned helpId) {
    std::optional<DString> const file = HelpFile();
    if (!file)
        return;
    if (Help().open)
        Help().open(*file, helpId);
    else
        OpenByDesktop(*file, helpId);
}

DString ApplicationTitle() {
    QString const title = QGuiApplication::applicationDisplayName();
    bool const isChosen = title != QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    return isChosen && !title.isEmpty() ? platform::ToDString(title) : Translated("Error");
}

DString TextOf(char const *text) { return text == nullptr ? DString() : DString(text); }

/// Makes the window by way of its template.
MessageBoxWindow *MakeWindow(QWidget *parent, MessageBoxRequest const &request) {
    MessageBoxMetrics const metrics = MessageBoxWindow::Metrics(parent);
    CDialogTmpl dialogTemplate(metrics.baseUnits);
    MessageBoxState const state = BuildMessageBox(dialogTemplate, request, metrics, MessageBoxWindow::Measure);
    CDialogTmpl::Bytes const block = dialogTemplate.Block(*std::pmr::get_default_resource());
    return new MessageBoxWindow(parent, ReadDialogBlock(block).value_or(DialogBlock{}), state, request);
}

} // namespace

int XMessageBox(QWidget *parent, char const *text, char const *caption, unsigned type, char const *checkText,
                unsigned helpId) {
    DString title = TextOf(caption);
    if (title.empty())
        title = CutText(ApplicationTitle(), DlgItem::kMostBytes);
    constexpr unsigned platforms = MB_ICONHAND | MB_SYSTEMMODAL;
    if ((type & (MB_ICONMASK | MB_SYSTEMMODAL)) == platforms)
        return PlainMessageBox(parent, TextOf(text), title, type);

    QPointer<MessageBoxWindow> window;
    try {
        window = MakeWindow(parent, {.text = TextOf(text),
                                     .caption = title,
                                     .checkText = checkText == nullptr ? Translated("Don't ask me again") : checkText,
                                     .type = type});
    } catch (std::bad_alloc const &) {
        PlainMessageBox(parent, Translated("Memory allocation for dialog template failed."),
                        Translated("Allocation Failure"), MB_OK | MB_ICONEXCLAMATION);
        return IDCANCEL;
    }
    window->m_help = [helpId] { ShowHelp(helpId); };
    platform::RunModal(*window);
    if (window.isNull())
        return IDCANCEL; // its parent took it away
    int const answer = window->Answer();
    delete window;
    return answer;
}

void SetMessageBoxHelp(MessageBoxHelp help) { Help() = std::move(help); }

bool HasMessageBoxHelp() {
    std::optional<DString> const file = HelpFile();
    return file && (Help().open || IsFile(*file));
}

} // namespace zelvar
