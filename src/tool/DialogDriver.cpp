#include "zelvar/tool/DialogDriver.h"

#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QEvent>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace zelvar::tool {

namespace {

constexpr int kLookEvery = 20;   // ms
constexpr int kPatience = 30000; // ms for rows to come
constexpr int kSettling = 700;   // ms: the lists merge new rows every 300 ms
constexpr int kOkId = 1;

} // namespace

DialogDriver::DialogDriver(DlgOpenDS &dialog, DialogScript script) : m_dialog(dialog), m_script(std::move(script)) {
    m_sinceStart.start();
    m_dialog.installEventFilter(this);
    startTimer(kLookEvery);
}

void DialogDriver::timerEvent(QTimerEvent *) {
    if (!m_dialog.isVisible() || m_dialog.MainList() == nullptr)
        return;
    if (!m_sinceSelected.isValid()) {
        if (SelectRows()) {
            m_sinceSelected.start();
        } else if (m_sinceStart.hasExpired(kPatience)) {
            m_timedOut = true;
            End(false);
        }
        return;
    }
    if (!IsSettled())
        return;
    if (m_script.accept && CanAccept()) {
        End(true);
    } else if (m_script.accept) {
        m_refused = true;
        End(false);
    } else if (m_script.cancel) {
        End(false);
    }
}

bool DialogDriver::SelectRows() {
    DSListCtrl &list = *m_dialog.MainList();
    std::vector<int> rows;
    for (DString const &name : m_script.select) {
        int row = 0;
        while (row < list.GetNumRow() && list.ItemAt(row)->GetName() != name)
            ++row;
        if (row == list.GetNumRow())
            return false;
        rows.push_back(row);
    }
    if (!rows.empty())
        list.ClearSelection();
    for (int const row : rows)
        list.SetSlct(row, true);
    return true;
}

bool DialogDriver::CanAccept() const { return platform::GetDlgItem(m_dialog, kOkId)->isEnabled(); }

bool DialogDriver::IsSettled() const {
    bool const previewWanted = !m_script.shot.empty();
    if (m_script.accept && !m_script.select.empty() && !previewWanted && CanAccept())
        return true;
    return m_sinceSelected.hasExpired(kSettling) && !m_dialog.PropertyWnd()->IsReading();
}

void DialogDriver::End(bool accept) {
    TakeShot();
    if (accept)
        platform::GetDlgItem<QPushButton>(m_dialog, kOkId)->click();
    else
        m_dialog.reject();
}

void DialogDriver::TakeShot() {
    if (m_script.shot.empty() || m_shotTaken)
        return;
    m_shotTaken = true;
    m_shotFailed = !m_dialog.grab().save(QString::fromLocal8Bit(m_script.shot.c_str()), "PNG");
}

bool DialogDriver::eventFilter(QObject *watched, QEvent *event) {
    // A user closes the dialog: what it looked like until now.
    if (event->type() == QEvent::Hide || event->type() == QEvent::Close)
        TakeShot();
    return QObject::eventFilter(watched, event);
}

} // namespace zelvar::tool
