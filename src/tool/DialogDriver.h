#pragma once

#include "zelvar/tool/CommandLine.h"
#include "zelvar/tool/DialogHand.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <optional>
#include <vector>

class QDialog;

namespace zelvar::tool {

/// What a script wants of the dialogs that come up.
struct DialogScript {
    std::vector<DString> select; ///< names of what is to be picked
    bool multiple = false;       ///< several may be picked
    bool accept = false;         ///< press OK once they are picked
    bool cancel = false;         ///< nobody can press anything: cancel once the dialog has shown what it has
    DString title;               ///< of the first dialog; empty for its own
    DString filter;              ///< mask for the lists of the open data source dialog; empty for none
    bool recursive = false;      ///< that lists subfolders too
    DString search;              ///< part of a name or mask that it searches for; empty for none
    DString basket;              ///< file of monikers that it puts into its basket; empty for none
    std::optional<WindowSize> size;
    DString shot; ///< picture of the window just before it closes; empty for none
};

/// Works whichever dialog is up as a user would: picks what is there by then, waits for the preview, takes the picture,
/// presses OK. One dialog may follow the other. A question that a script has no word for is answered with no.
class DialogDriver : public QObject {
public:
    explicit DialogDriver(DialogScript script);
    ~DialogDriver() override;

    /// What was to be picked did not come in time.
    [[nodiscard]] bool HasTimedOut() const { return m_timedOut; }
    /// OK could not be pressed, or did not end the dialog.
    [[nodiscard]] bool WasRefused() const { return m_refused; }
    /// The question that was answered with no; empty if there was none.
    [[nodiscard]] DString const &Question() const { return m_question; }
    /// What was said against what was picked, and accepted all the same; empty if nothing was.
    [[nodiscard]] DString const &Warning() const { return m_warning; }
    /// What is to be put into the basket is no file of monikers, or the dialog has no basket.
    [[nodiscard]] bool HasFailedBasket() const { return m_basketFailed; }
    /// The picture could not be written.
    [[nodiscard]] bool HasFailedShot() const { return m_shotFailed; }

protected:
    void timerEvent(QTimerEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void Meet(QDialog &dialog);
    void SetUp();
    void Work();
    void Pick();
    [[nodiscard]] bool CanAccept() const;
    [[nodiscard]] bool MayEnd() const;
    void Accept();
    /// Answers what stands before the dialog.
    void Answer(QDialog &question);
    void Cancel();
    void TakeShot();

    DialogScript m_script;
    QPointer<QDialog> m_dialog;
    std::unique_ptr<DialogHand> m_hand;
    std::vector<DString> m_picked; ///< names of what is picked in this dialog
    QElapsedTimer m_sinceShown;
    QElapsedTimer m_sinceSelected; ///< invalid until the rows are picked
    DString m_question;
    DString m_warning;
    bool m_isSetUp = false;
    bool m_accepted = false; ///< OK was pressed in this dialog
    bool m_isFirst = true;
    bool m_timedOut = false;
    bool m_refused = false;
    bool m_shotTaken = false;
    bool m_shotFailed = false;
    bool m_basketFailed = false;
};

} // namespace zelvar::tool
