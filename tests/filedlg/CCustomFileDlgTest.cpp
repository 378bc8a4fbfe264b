#include "zelvar/filedlg/CCustomFileDlg.h"

#include "support/FileDialogHand.h"
#include "support/TestFiles.h"
#include "zelvar/base/Report.h"
#include "zelvar/controls/CZelComboBox.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QMessageBox>

#include <functional>

namespace zelvar {
namespace {

using test::FileDialogHand;
using test::TempFolder;
using Paths = std::vector<std::string>;

constexpr char kImages[] = "Images|*.tif;*.tiff|Tables (first, *)|*.csv|All Files|*.*||";

/// What the user is told meanwhile.
class Told {
public:
    Told()
        : m_former(Report::SetUserHandler([this](Report::Severity, DString const &text) { m_texts.push_back(text); })) {
    }
    Told(Told const &) = delete;
    Told &operator=(Told const &) = delete;
    ~Told() { Report::SetUserHandler(m_former); }
    [[nodiscard]] Paths Take() { return std::exchange(m_texts, {}); }

private:
    Paths m_texts;
    Report::UserHandler m_former;
};

/// Runs the dialog while `act` works with it; the paths chosen, none when cancelled.
Paths RunWith(CCustomFileDlg &dialog, std::function<void(FileDialogHand const &)> const &act) {
    auto const done = test::OnNextDialog([&act](QWidget &window) { act(FileDialogHand(window)); });
    int const answer = dialog.DoModal();
    EXPECT_TRUE(*done);
    Paths paths;
    for (std::size_t at = dialog.GetStartPosition(); at != 0;)
        paths.push_back(dialog.GetNextPathName(at));
    EXPECT_EQ(answer, paths.empty() ? 2 : 1);
    return paths;
}

CCustomFileDlg Loading(TempFolder const &folder, char const *filter = kImages) {
    CCustomFileDlg dialog(true, "tif", nullptr, filter, nullptr);
    dialog.GetOFN().initialDir = folder.Path();
    return dialog;
}

CCustomFileDlg Saving(TempFolder const &folder, char const *filter = kImages) {
    CCustomFileDlg dialog(false, "dat", nullptr, filter, nullptr);
    dialog.GetOFN().initialDir = folder.Path();
    return dialog;
}

TEST(CustomFileDialog, AFileIsPickedWithTheMouse) {
    TempFolder const folder;
    folder.Write("a.tif");
    folder.Write("b.TIF");
    folder.Write("c.csv");
    folder.Folder("sub");
    CCustomFileDlg dialog = Loading(folder);
    EXPECT_EQ(RunWith(dialog,
                      [](FileDialogHand const &hand) {
                          hand.ClickRow("b.TIF");
                          EXPECT_EQ(hand.Shown(), (Paths{"a.tif", "b.TIF", "sub"}));
                          hand.PressOk();
                      }),
              Paths{folder / "b.TIF"});
    EXPECT_EQ(dialog.GetOFN().filterIndex, 1);
}

TEST(CustomFileDialog, ATypedFileMustBeThere) {
    TempFolder const folder;
    folder.Write("a.tif");
    Told told;
    CCustomFileDlg dialog = Loading(folder);
    EXPECT_EQ(RunWith(dialog,
                      [&](FileDialogHand const &hand) {
                          hand.TypeAndEnter("b.tif");
                          EXPECT_EQ(told.Take(), Paths{"File '" + (folder / "b.tif") + "' not found"});
                          hand.TypeAndEnter("a");
                      }),
              Paths{folder / "a.tif"})
        << "the default extension finds it";
}

TEST(CustomFileDialog, SavingAddsTheExtensionAndThenAsksOnce) {
    TempFolder const folder;
    folder.Write("a.tif");
    CCustomFileDlg dialog = Saving(folder);
    int questions = 0;
    auto const answer = [&](QMessageBox::StandardButton button) {
        return test::OnNextDialog([&questions, button](QWidget &) {
            auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box->text(), "a.tif already exists.\nDo you want to replace it?");
            ++questions;
            test::Click(box->button(button));
        });
    };
    EXPECT_EQ(RunWith(dialog,
                      [&](FileDialogHand const &hand) {
                          hand.Type("a");
                          auto const no = answer(QMessageBox::No);
                          QTest::keyClick(&hand.Name(), Qt::Key_Return);
                          EXPECT_TRUE(*no);
                          EXPECT_TRUE(hand.Name().isVisible()) << "the dialog stays";
                          auto const yes = answer(QMessageBox::Yes);
                          QTest::keyClick(&hand.Name(), Qt::Key_Return);
                          EXPECT_TRUE(*yes);
                      }),
              Paths{folder / "a.tif"});
    EXPECT_EQ(questions, 2);

    dialog.GetOFN().flags &= ~OFN_OVERWRITEPROMPT;
    EXPECT_EQ(RunWith(dialog, [](FileDialogHand const &hand) { hand.TypeAndEnter("a"); }), Paths{folder / "a.tif"});
}

TEST(CustomFileDialog, TheFolderChosenInTheHistoryIsShownAndTheTypedNameStays) {
    TempFolder const folder;
    std::string const other = folder.Folder("other");
    CCustomFileDlg dialog = Saving(folder);
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path() + "/", other, folder / "gone"});
    Told told;
    EXPECT_EQ(RunWith(dialog,
                      [&](FileDialogHand const &hand) {
                          auto *const history = hand.Control<CZelComboBox>(6008);
                          ASSERT_NE(history, nullptr);
                          EXPECT_EQ(history->GetWindowText(), folder.Path()) << "the entry of the first folder";
                          hand.Type("result");
                          FileDialogHand::Choose(*history, 2);
                          EXPECT_EQ(told.Take(), Paths{"Folder '" + (folder / "gone") + "' not found"});
                          FileDialogHand::Choose(*history, 1);
                          EXPECT_EQ(hand.Name().text(), "result");
                          hand.PressOk();
                      }),
              Paths{folder / "other/result.tif"});
}

} // namespace
} // namespace zelvar
