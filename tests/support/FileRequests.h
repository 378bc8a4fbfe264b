#pragma once

#include "support/FileDialogHand.h"
#include "support/OpenDialogHand.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/store/DCnfg.h"

#include <QtWidgets/QMainWindow>

namespace zelvar::test {

/// An application's main window: with it the library's own dialog comes up for loading.
class Application : Pinned {
public:
    Application() {
        DlgOpenDS::SetFeatures(kOpenAll & ~kOpenLine); // files of tests need not hold what they are picked for
        m_window.resize(600, 400);
        m_window.show();
        platform::SetMainWindow(&m_window);
    }
    ~Application() { platform::SetMainWindow(nullptr); }
    [[nodiscard]] QMainWindow &Window() { return m_window; }

private:
    QMainWindow m_window;
};

/// The user's option that the platform's dialog comes up for loading, too.
inline void UseStandardDialog(char const *answer) {
    DUserCnfg("Options").WriteString("General_Use standard windows file selection dialog", answer);
}

/// What a request's dialog showed.
struct Shown {
    bool opened = false; ///< what the operation answered
    bool isOwn = false;  ///< the library's dialog, otherwise the platform's
    std::string caption = {};
    std::vector<std::string> types = {};   ///< entries of the type box
    std::string type = {};                 ///< the present one
    std::vector<std::string> folders = {}; ///< entries of the history
    bool hasCheckBoxes = false;            ///< "Project-Edit" and "Read-Only"
    std::string name = {};                 ///< that stands in the platform's dialog
};

namespace request {

inline void Pick(DlgOpenDS &dialog, std::string const &name) {
    DSListCtrl &list = *dialog.MainList();
    ASSERT_TRUE(Eventually([&] { return RowOf(list, name) >= 0; })) << name << " is not listed";
    list.ClearSelection();
    list.SetSlct(RowOf(list, name), true);
    PressOk(dialog);
}

inline void LookAt(QWidget &dialog, Shown &shown) {
    shown.caption = dialog.windowTitle().toStdString();
    if (auto *const own = dynamic_cast<DlgOpenDS *>(&dialog)) {
        shown.isOwn = true;
        auto const &types = *platform::GetDlgItem<CZelComboBox>(*own, kFileTypeId);
        shown.types = EntriesOf(types);
        shown.type = types.currentText().toStdString();
        shown.folders = EntriesOf(*platform::GetDlgItem<CZelComboBox>(*own, kHistoryId));
        return;
    }
    FileDialogHand const hand(dialog);
    auto const &types = hand.Part<QComboBox>("fileTypeCombo");
    shown.types = EntriesOf(types);
    shown.type = types.currentText().toStdString();
    if (auto const *const history = hand.Control<CZelComboBox>(6008); history != nullptr && !history->isHidden())
        shown.folders = EntriesOf(*history);
    shown.hasCheckBoxes = hand.Control<QWidget>(6010) != nullptr;
    shown.name = hand.Name().text().toStdString();
}

} // namespace request

/// Runs an operation whose dialog a user answers with the file `name`: a row in the library's dialog, a typed name in
/// the platform's. An empty name cancels.
inline Shown Answer(std::function<bool()> const &operation, std::string const &name,
                    std::function<void(QWidget &)> const &before = {}) {
    Shown shown;
    auto const done = OnNextDialog([&](QWidget &dialog) {
        if (dialog.findChild<QWidget *>() == nullptr)
            return;
        request::LookAt(dialog, shown);
        if (before)
            before(dialog);
        if (name.empty())
            return;
        if (auto *const own = dynamic_cast<DlgOpenDS *>(&dialog))
            request::Pick(*own, name);
        else
            FileDialogHand(dialog).TypeAndEnter(name);
    });
    shown.opened = operation();
    EXPECT_TRUE(*done) << "no dialog came";
    return shown;
}

/// A format as the platform's dialog shows it.
inline std::string OnPlatform(DFileFrmt const &format) { return format.GetName() + " (" + format.GetExtn() + ")"; }

} // namespace zelvar::test
