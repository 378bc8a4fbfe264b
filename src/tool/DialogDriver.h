#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>

#include <vector>

namespace zelvar {
class DlgOpenDS; // NOLINT(cppcoreguidelines-virtual-class-destructor): as where it is defined
}

namespace zelvar::tool {

/// What a script wants of the open data source dialog.
struct DialogScript {
    std::vector<DString> select; ///< names of rows of the main list
    bool accept = false;         ///< press OK once they are picked
    bool cancel = false;         ///< nobody can press anything: cancel once the dialog has shown what it has
    DString shot;                ///< picture of the window just before it closes; empty for none
};

/// Works the dialog as a user would: picks rows once they are there, waits for the preview, takes the picture, presses
/// OK. It lives as long as the dialog runs.
class DialogDriver : public QObject {
public:
    DialogDriver(DlgOpenDS &dialog, DialogScript script);

    /// The rows did not come in time.
    [[nodiscard]] bool HasTimedOut() const { return m_timedOut; }
    /// OK stayed disabled for what is picked.
    [[nodiscard]] bool WasRefused() const { return m_refused; }
    /// The picture could not be written.
    [[nodiscard]] bool HasFailedShot() const { return m_shotFailed; }

protected:
    void timerEvent(QTimerEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool SelectRows();
    [[nodiscard]] bool CanAccept() const;
    [[nodiscard]] bool IsSettled() const;
    void TakeShot();
    void End(bool accept);

    DlgOpenDS &m_dialog;
    DialogScript m_script;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceSelected; ///< invalid until the rows are picked
    bool m_timedOut = false;
    bool m_refused = false;
    bool m_shotTaken = false;
    bool m_shotFailed = false;
};

} // namespace zelvar::tool
