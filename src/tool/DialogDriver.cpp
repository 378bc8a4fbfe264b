#include "zelvar/tool/DialogDriver.h"

#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/tool/FirstPaint.h"

#include <QtCore/QEvent>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QMessageBox>

#include <algorithm>

namespace zelvar::tool {

namespace {

constexpr int kLookEvery = 20;   // ms
constexpr int kPatience = 30000; // ms for rows to come
constexpr int kSettling = 700;   // ms: the lists merge new rows every 300 ms

} // namespace

DialogDriver::DialogDriver(DialogScript script) : m_script(std::move(script)) {
    qApp->installEventFilter(this);
    startTimer(kLookEvery);
}

DialogDriver::~DialogDriver() { qApp->removeEventFilter(this); }

bool DialogDriver::eventFilter(QObject *watched, QEvent *event) {
    auto *const dialog =
        event->type() == QEvent::Show || event->type() == QEvent::Hide || event->type() == QEvent::Close
            ? qobject_cast<QDialog *>(watched)
            : nullptr;
    if (dialog == nullptr)
        return false;
    if (event->type() == QEvent::Show && dialog->isWindow() && dialog != m_dialog)
        Meet(*dialog);
    else if (event->type() != QEvent::Show && dialog == m_dialog)
        TakeShot(); // a user closes the dialog: what it looked like until now
    return false;
}

void DialogDriver::Meet(QDialog &dialog) {
    auto hand = HandFor(dialog);
    if (hand == nullptr)
        return;
    m_dialog = &dialog;
    m_hand = std::move(hand);
    m_sinceShown.start();
    m_sinceSelected.invalidate();
    // What the dialog before took is done with.
    for (DString const &name : m_picked)
        std::erase(m_script.select, name);
    m_picked.clear();
    m_isSetUp = m_accepted = m_shotTaken = false;
    TraceFirstPaint(dialog);
    // Behind the showing, before anything else.
    QMetaObject::invokeMethod(
        this, [this] { SetUp(); }, Qt::QueuedConnection);
}

void DialogDriver::SetUp() {
    if (m_dialog.isNull() || m_isSetUp || !m_hand->IsReady())
        return;
    m_isSetUp = true;
    if (m_script.size)
        m_dialog->resize(m_script.size->width, m_script.size->height);
    if (!m_script.title.empty() && m_isFirst)
        m_dialog->setWindowTitle(platform::ToQString(m_script.title));
    m_isFirst = false;
    if (!m_script.multiple)
        m_hand->AllowOneOnly();
    if (auto *const open = dynamic_cast<DlgOpenDS *>(m_dialog.data())) {
        DString mask = m_script.filter;
        // What a person typed into the filter the last time is not in a script's way.
        if (mask.empty() && m_script.accept && open->GetFormat() != nullptr)
            mask = open->GetFormat()->GetExtn();
        if (!mask.empty())
            open->ApplyFileFilter(mask.c_str(), nullptr);
        if (m_script.recursive)
            open->SetRecursive(true);
        if (!m_script.search.empty() && open->Search() != nullptr)
            open->Search()->Begin(m_script.search);
        if (!m_script.basket.empty() && !open->LoadBasket(m_script.basket)) {
            m_basketFailed = true;
            Cancel();
        }
    }
}

void DialogDriver::timerEvent(QTimerEvent *) {
    auto *const modal = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    bool const isScripted = m_script.accept || m_script.cancel;
    if (modal != nullptr && modal != m_dialog && isScripted)
        Answer(*modal);
    else if (modal != nullptr && modal == m_dialog)
        Work();
}

void DialogDriver::Answer(QDialog &question) {
    auto *const box = qobject_cast<QMessageBox *>(&question);
    if (box == nullptr) {
        question.reject();
        return;
    }
    DString const said = platform::ToDString(box->text().section('\n', 0, 0));
    if (!m_script.accept || box->objectName() != OpenForecast::kQuestion) {
        m_question = said;
        box->reject();
        return;
    }
    // Who says that it is to be accepted has answered already.
    DString const reason = platform::ToDString(box->detailedText());
    m_warning = reason.empty() ? said : said + " (" + reason + ")";
    box->button(QMessageBox::Yes)->click();
}

void DialogDriver::Work() {
    SetUp();
    if (!m_isSetUp)
        return;
    if (m_accepted) {
        m_refused = true; // it is still there
        Cancel();
        return;
    }
    if (!m_sinceSelected.isValid() || !m_hand->ArePicked(m_picked)) {
        Pick();
        return;
    }
    if (!MayEnd())
        return;
    if (m_script.accept && CanAccept()) {
        Accept();
    } else if (m_script.accept) {
        m_refused = true;
        Cancel();
    } else if (m_script.cancel) {
        Cancel();
    }
}

void DialogDriver::Pick() {
    if (!m_sinceSelected.isValid())
        m_picked = m_hand->OwnNames(m_script.select);
    if (m_hand->Select(m_picked)) {
        m_sinceSelected.start();
    } else if (m_sinceShown.hasExpired(kPatience)) {
        m_timedOut = true;
        Cancel();
    }
}

bool DialogDriver::CanAccept() const {
    QAbstractButton const *const ok = m_hand->OkButton();
    return ok != nullptr && ok->isEnabled();
}

bool DialogDriver::MayEnd() const {
    bool const previewWanted = !m_script.shot.empty();
    if (m_script.accept && !m_picked.empty() && !previewWanted && CanAccept())
        return m_hand->IsForeseen() || m_sinceSelected.hasExpired(kPatience);
    return m_sinceSelected.hasExpired(kSettling) && m_hand->IsSettled();
}

void DialogDriver::Accept() {
    TakeShot();
    m_accepted = true;
    // Behind this timer's event: a question that it leads to is answered by the timer.
    QMetaObject::invokeMethod(m_hand->OkButton(), &QAbstractButton::click, Qt::QueuedConnection);
}

void DialogDriver::Cancel() {
    TakeShot();
    m_dialog->reject();
}

void DialogDriver::TakeShot() {
    if (m_script.shot.empty() || m_shotTaken)
        return;
    m_shotTaken = true;
    m_shotFailed = !m_dialog->grab().save(QString::fromLocal8Bit(m_script.shot.c_str()), "PNG");
}

} // namespace zelvar::tool
