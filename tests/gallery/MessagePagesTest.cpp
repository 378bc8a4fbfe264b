#include "support/RealDrivers.h"
#include "support/SelectorHands.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/store/SettingsStore.h"

#include <QtWidgets/QMainWindow>
#include <QtWidgets/QStackedWidget>

namespace zelvar::gallery {
namespace {

/// A page in its user's hands.
class DialogPage {
public:
    explicit DialogPage(char const *name) {
        SettingsStore::Instance().RemoveTree("Profile");
        EXPECT_TRUE(m_gallery.ShowPage(name));
        m_gallery.show();
    }
    [[nodiscard]] QAbstractButton *Button(char const *text) const {
        for (auto *button : m_gallery.findChild<QStackedWidget *>()->currentWidget()->findChildren<QAbstractButton *>())
            if (button->text() == QString::fromUtf8(text))
                return button;
        return nullptr;
    }
    [[nodiscard]] std::string Said() const {
        for (auto const *label : m_gallery.findChild<QStackedWidget *>()->currentWidget()->findChildren<QLabel *>())
            if (label->accessibleName() == "What happened last")
                return label->text().toStdString();
        return {};
    }
    /// Presses a button that opens a dialog, and works that with `act`; what the page says then.
    std::string Open(char const *button, std::function<void(QWidget &)> act) {
        auto const done = test::OnNextDialog(std::move(act));
        test::Click(Button(button));
        EXPECT_TRUE(*done) << button;
        return Said();
    }

private:
    Gallery m_gallery;
};

void Escape(QWidget &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }

TEST(DialogPages, SayWhatWasAnsweredAndPicked) {
    DialogPage box("message-box");
    EXPECT_EQ(box.Open("Show...",
                       [](QWidget &dialog) {
                           test::Click(platform::GetDlgItem(dialog, 5555));
                           test::Click(platform::GetDlgItem(dialog, 7));
                       }),
              "Answer 7: No, and not to ask again");
    EXPECT_EQ(box.Open("Show...", Escape), "Answer 2: Cancel");
    EXPECT_EQ(DialogPage("message-details").Open("Show...", Escape), "It was closed");

    DialogPage features("filter-find");
    EXPECT_EQ(features.Open("Pick features...",
                            [](QWidget &dialog) {
                                QTest::keyClicks(platform::GetDlgItem(dialog, 1981), "ness");
                                QTest::keyClick(platform::GetDlgItem(dialog, 1981), Qt::Key_Down);
                                QTest::keyClick(platform::GetDlgItem(dialog, 1983), Qt::Key_A, Qt::ControlModifier);
                                test::Click(platform::GetDlgItem(dialog, 1));
                            }),
              "8 picked: Compactness, Roundness, ...");
    test::Click(features.Button("Beside this window"));
    QDialog *const beside = features.Button("Beside this window")->window()->findChild<QDialog *>();
    ASSERT_NE(beside, nullptr);
    test::Click(platform::GetDlgItem(*beside, 2));
    EXPECT_EQ(features.Said(), "Cancelled");
}

TEST(DialogPages, TheSelectorOpensASampleArchive) {
    test::UseRealDrivers();
    EXPECT_EQ(DialogPage("node-selector")
                  .Open("In a sample archive...",
                        [](QWidget &dialog) {
                            test::SelectorHands const hands(dialog);
                            TreeNode *const root = hands.tree.GetRootItem();
                            hands.tree.Expand(root, TVE_EXPAND);
                            EXPECT_EQ(hands.Tree(), "plate.zip[- 1] row A[+ 0] row B[+ 0]");
                            hands.tree.SelectItem(hands.tree.GetNextVisibleItem(root));
                            EXPECT_EQ(hands.Rows(), "well 1.tif well 2.tif well 3.tif");
                            hands.ClickRow(1);
                            test::Shot(dialog, "selector-sample");
                            test::Click(&hands.ok);
                        }),
              "1 picked: plate.zip row A/well 2.tif");
}

TEST(DialogPages, ALayoutOfBarsComesBackOnceItIsSaved) {
    DialogPage const bars("bars");
    for (char const *const said : {"No layout has been saved", "The saved layout is back"}) {
        test::Click(bars.Button("Restore layout"));
        EXPECT_EQ(bars.Said(), said);
        test::Click(bars.Button("Save layout"));
        EXPECT_THAT(bars.Said(), HasSubstr(" bytes:   <BAR id"));
    }
    for (char const *const text : {"Bars", "Large", "Texts"}) {
        QWidget &window = *bars.Button(text)->parentWidget()->findChild<QMainWindow *>();
        QImage const before = test::PictureOf(window);
        test::Click(bars.Button(text));
        EXPECT_NE(test::PictureOf(window), before) << text;
    }
}

TEST(DialogPages, TheDynamicDialogIsFilledInAndSaysHowItWasLeft) {
    DialogPage layout("layout");
    for (auto const &[id, said] :
         {std::pair{1, "OK; the dialog comes back where it was and as large"}, {2, "Cancelled"}})
        EXPECT_EQ(layout.Open("&Open as a dialog",
                              [id = id](QWidget &dialog) {
                                  EXPECT_EQ(platform::GetDlgItem<QLineEdit>(dialog, 101)->text(), "Nuclei, plate 3");
                                  test::Click(platform::GetDlgItem(dialog, id));
                              }),
                  said);
}

TEST(DialogPages, PanesAreSplitWhileThereIsRoom) {
    DialogPage const panes("splitter");
    char const *const none = "There is no room for more";
    for (auto const &[way, said] : {std::pair{"Split &row", "A row more"},
                                    {"Split &row", "A row more"},
                                    {"Split &row", none},
                                    {"Split &column", "A column more"},
                                    {"Split &column", none},
                                    {"&Delete the last row", none},
                                    {"Split &row", "A row more"}}) {
        test::Click(panes.Button(way));
        EXPECT_EQ(panes.Said(), said) << way;
    }
}

TEST(DialogPages, EachFileDialogComesUpAndIsCancelled) {
    DialogPage files("file-dialogs");
    for (char const *button : {"Browse...", "Save as...", "Folder...", "Pick..."})
        EXPECT_EQ(files.Open(button, Escape), "Cancelled") << button;
}

} // namespace
} // namespace zelvar::gallery
