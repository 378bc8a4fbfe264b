#pragma once

#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/ConnectionSaving.h"
#include "zelvar/connections/ConnectionTrial.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/opends/connections/Errand.h"

#include <memory>
#include <optional>

class QListWidget;
class QPushButton;

namespace zelvar {

class ConnectionForm;
class TrialPane;

/// The page of a connection: its kind at the left, its fields beside, and below what trying it has shown. OK keeps the
/// password where the connection says and writes the definition.
///
/// Servers, keyrings and other processes are waited for by threads: the window stays alive, and Escape ends what is
/// under way before it closes the page. User-interface thread.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): the base has a virtual one
class ConnectionDlg : public cdxCDynamicDialog {
    Q_OBJECT

public:
    /// A new connection, or the one that is there already.
    explicit ConnectionDlg(QWidget *parent, std::optional<ConnectionBook::Entry> former = {});
    ~ConnectionDlg() override;

    /// Tries the connection as soon as the page is shown.
    void TestAtOnce() { m_testsAtOnce = true; }
    /// After OK: what it is called now.
    [[nodiscard]] DString const &SavedName() const { return m_savedName; }

    [[nodiscard]] ConnectionForm *Form() const { return m_form; }
    [[nodiscard]] TrialPane *Trial() const { return m_trial; }
    [[nodiscard]] bool IsBusy() const { return m_errand != nullptr; }

protected:
    bool OnInitDialog() override;
    bool DestroyWindow() override;
    QWidget *MakeControl(platform::DialogItem const &item) override;
    void OnOK() override;
    void OnCancel() override;
    bool event(QEvent *event) override;

private:
    void FillKinds();
    /// Their names take one line each, and the fields give way.
    void FitKinds();
    void OrderFocus();
    void ShowKind();
    void OnTest();
    void OnNews(platform::MessageParam testsAtOnce);
    void OnTrialEnded();
    /// Takes up what the trial has offered, and tries again.
    void OnOffer(DString const &field, DString const &value);
    void OnSaved(SavedConnection const &saved, bool isStopped);
    /// False, and shown, if something is wrong with the fields.
    [[nodiscard]] bool IsRight();
    [[nodiscard]] ConnectionBook::Entry Entered() const;
    void Begin(Errand::Work work);
    void End();
    void ShowBusy();

    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    std::optional<ConnectionBook::Entry> m_former;
    bool m_testsAtOnce = false;
    DString m_savedName;
    std::shared_ptr<Errand> m_errand; ///< what is under way; null for nothing
    std::shared_ptr<Handover<TrialResult>> m_results;
    std::shared_ptr<Handover<SavedConnection>> m_saved;
    ConnectionForm *m_form = nullptr; ///< children, all owned by the window tree
    TrialPane *m_trial = nullptr;
    QListWidget *m_kinds = nullptr;
    QPushButton *m_testButton = nullptr;
    QPushButton *m_okButton = nullptr;
};

} // namespace zelvar
