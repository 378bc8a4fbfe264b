#include "zelvar/filedlg/CCustomFileDlg.h"

#include "support/FileDialogHand.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/NameDelegate.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/props/CZelPropList.h"

#include <QtCore/QScopeGuard>
#include <QtGui/QScreen>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QTreeView>

namespace zelvar::test {
namespace {

using Hand = FileDialogHand;

constexpr char kImages[] = "Images|*.tif;*.tiff|Tables (first, *)|*.csv|All Files|*.*||";

struct CustomFileDialog : testing::Test {
    ~CustomFileDialog() override {
        EXPECT_EQ(told.Take(), Paths{});
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }
    void Write(Paths const &names) const {
        for (std::string const &name : names)
            folder.Write(name);
    }
    [[nodiscard]] CCustomFileDlg Loading(char const *filter = kImages, bool opens = true, int rowTemplate = 0,
                                         char const *name = nullptr) const {
        CCustomFileDlg dialog(opens, opens ? "tif" : "dat", name, filter, nullptr, rowTemplate);
        dialog.GetOFN().initialDir = folder.Path();
        return dialog;
    }
    [[nodiscard]] CCustomFileDlg Saving() const { return Loading(kImages, false); }
    /// The paths chosen when a text is typed.
    static Paths PathsOf(CCustomFileDlg &dialog, char const *typed) {
        return RunWith(dialog, [typed](Hand const &hand) { hand.TypeAndEnter(typed); });
    }

    TempFolder folder;
    Told told;
};

TEST_F(CustomFileDialog, AFileIsPickedWithTheMouse) {
    Write({"a.tif", "b.TIF", "c.csv", "sub/c.csv"});
    CCustomFileDlg dialog = Loading();
    ExpectPicked(dialog, Paths{folder / "b.TIF"}, [](Hand const &hand) {
        hand.ClickRow("b.TIF");
        EXPECT_EQ(hand.Shown(), (Paths{"a.tif", "b.TIF", "sub"}));
        hand.PressOk();
    });
    EXPECT_EQ(dialog.GetOFN().filterIndex, 1);
}

TEST_F(CustomFileDialog, ATypedFileMustBeThere) {
    Write({"a.tif"});
    CCustomFileDlg dialog = Loading();
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [&](Hand const &hand) { // the default extension finds it
        hand.TypeAndEnter("b.tif");
        EXPECT_EQ(told.Take(), Paths{"File '" + (folder / "b.tif") + "' not found"});
        hand.TypeAndEnter("a");
    });
}

TEST_F(CustomFileDialog, SavingAddsTheExtensionAndThenAsksOnce) {
    Write({"a.tif"});
    CCustomFileDlg dialog = Saving();
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [&](Hand const &hand) {
        hand.Type("a");
        for (auto const button : {QMessageBox::No, QMessageBox::Yes}) {
            EXPECT_TRUE(hand.Name().isVisible()) << "the dialog stays";
            auto const asked = OnNextDialog([button](QWidget &question) {
                auto const &box = dynamic_cast<QMessageBox &>(question);
                EXPECT_EQ(box.text(), "a.tif already exists.\nDo you want to replace it?");
                Click(box.button(button));
            });
            QTest::keyClick(&hand.Name(), Qt::Key_Return);
            EXPECT_TRUE(*asked);
        }
    });
    dialog.GetOFN().flags &= ~OFN_OVERWRITEPROMPT;
    EXPECT_EQ(PathsOf(dialog, "a"), Paths{folder / "a.tif"});
}

TEST_F(CustomFileDialog, TheFolderChosenInTheHistoryIsShownAndTheTypedNameStays) {
    CCustomFileDlg dialog = Saving();
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path() + "/", folder.Folder("other"), folder / "gone"});
    ExpectPicked(dialog, Paths{folder / "other/result.tif"}, [&](Hand const &hand) {
        auto &history = *hand.Control<CZelComboBox>(6008);
        EXPECT_EQ(history.GetWindowText(), folder.Path()) << "the entry of the first folder";
        hand.Type("result");
        Hand::Choose(history, 2);
        EXPECT_EQ(told.Take(), Paths{"Folder '" + (folder / "gone") + "' not found"});
        Hand::Choose(history, 1);
        EXPECT_EQ(hand.Name().text(), "result");
        hand.PressOk();
    });
}

TEST_F(CustomFileDialog, FiltersAreToldApartByTheirPlace) {
    Write({"a.tif", "plain", "c[1].csv"});
    std::string filter;
    for (int at = 0; at < 200; ++at)
        filter += "Same (of, all *)|*.x" + std::to_string(at) + "|";
    filter += "Same (of, all *)|c[1].*|All Files|*.*||";
    CCustomFileDlg dialog = Loading(filter.c_str());
    dialog.GetOFN().filterIndex = 150;
    ExpectPicked(dialog, Paths{folder / "c[1].csv"}, [](Hand const &hand) {
        auto &types = hand.Part<QComboBox>("fileTypeCombo");
        EXPECT_EQ(types.count(), 202);
        EXPECT_EQ(types.currentText(), "Same (of, all *) (*.x149)");
        EXPECT_EQ(hand.Shown(), Paths{});
        Hand::Choose(types, 201);
        hand.AwaitShown({"a.tif", "c[1].csv", "plain"}); // also names without a dot
        Hand::Choose(types, 200);
        hand.AwaitShown({"c[1].csv"});
        hand.ClickRow("c[1].csv");
        hand.PressOk();
    });
    EXPECT_EQ(dialog.GetOFN().filterIndex, 201);
    dialog.GetOFN().filterIndex = 999;
    ExpectPicked(dialog, {}, [](Hand const &) {});
    EXPECT_EQ(dialog.GetOFN().filterIndex, 202) << "the last one";
}

TEST_F(CustomFileDialog, AnotherFilterChangesTheExtensionThatIsSaved) {
    CCustomFileDlg dialog = Saving();
    ExpectPicked(dialog, Paths{folder / "b.csv"}, [](Hand const &hand) {
        hand.Type("a.tif");
        Hand::Choose(hand.Part<QComboBox>("fileTypeCombo"), 1);
        EXPECT_EQ(hand.Name().text(), "a.csv");
        hand.TypeAndEnter("b");
    });
    for (auto const &[filter, typed, saved] : Rows<int, char const *, char const *>{{3, "b", "b"},
                                                                                    {3, "b.xyz", "b.xyz"},
                                                                                    {1, "Run 1.2", "Run 1.2.tif"},
                                                                                    {1, "b.csv", "b.csv"},
                                                                                    {1, "what?", "what?.tif"}}) {
        dialog.GetOFN().filterIndex = filter;
        EXPECT_EQ(PathsOf(dialog, typed), Paths{folder / saved});
    }
}

TEST_F(CustomFileDialog, SeveralFilesArePicked) {
    Write({"a.tif", "b \"x\".tif", "c.tif"}); // quotes in a name do no harm
    CCustomFileDlg dialog = Loading();
    dialog.GetOFN().flags |= OFN_ALLOWMULTISELECT;
    Paths const all{folder / "a.tif", folder / "b \"x\".tif", folder / "c.tif"};
    EXPECT_THAT(RunWith(dialog,
                        [](Hand const &hand) {
                            hand.ClickRow("a.tif");
                            hand.ClickRow("c.tif", Qt::ShiftModifier);
                            Shot(hand.Dialog(), "file-multiple");
                            hand.PressOk();
                        }),
                testing::UnorderedElementsAreArray(all));
    Paths const whole = RunWith(dialog, [](Hand const &hand) {
        EXPECT_TRUE(Eventually([&] { return hand.Shown().size() == 3; }));
        hand.Name().setFocus();
        EXPECT_TRUE(Eventually([&] { return hand.Name().hasFocus(); }));
        hand.List().selectAll();
        EXPECT_EQ(hand.Name().text(), "") << "the toolkit does not write where the user does";
        hand.PressOk();
    });
    EXPECT_EQ(whole.size(), 3U);
    EXPECT_EQ(PathsOf(dialog, R"("c.tif" "a.tif")"), (Paths{all[2], all[0]}));
    EXPECT_EQ(PathsOf(dialog, R"(b "x".tif)"), Paths{all[1]});
}

TEST_F(CustomFileDialog, ATypedFolderIsEnteredAndATypedMaskFilters) {
    Write({"sub/a.csv", "sub/b.tif"});
    CCustomFileDlg dialog = Loading();
    ExpectPicked(dialog, Paths{folder / "sub/a.csv"}, [&](Hand const &hand) {
        auto const &shown = hand.Part<CZelComboBox>("folderBox");
        hand.TypeAndEnter("sub");
        EXPECT_EQ(hand.Name().text(), "");
        hand.AwaitShown({"b.tif"});
        hand.TypeAndEnter("*.c?v");
        hand.AwaitShown({"a.csv"});
        EXPECT_EQ(shown.GetWindowText(), folder / "sub");
        hand.TypeAndEnter("..");
        QTest::keyClick(&hand.List(), Qt::Key_Left);
        EXPECT_EQ(shown.GetWindowText(), folder.Path());
        QTest::keyClick(&hand.List(), Qt::Key_Left, Qt::AltModifier);
        EXPECT_TRUE(Eventually([&] { return shown.GetWindowText() == folder / "sub"; }));
        hand.TypeAndEnter("./a.csv");
    });
}

TEST_F(CustomFileDialog, NamesThatAreNoTextComeBackByteForByte) {
    Write({"caf\xe9/a\xff.tif", "caf\xe9/b.tif"});
    std::string const sub = folder / "caf\xe9";
    CCustomFileDlg given = Loading(kImages, true, 0, "a\xff.tif");
    given.GetOFN().initialDir = sub;
    ExpectPicked(given, Paths{sub + "/a\xff.tif"}, [](Hand const &hand) { hand.PressOk(); });
    auto const choose = [](Hand const &hand) {
        auto &names = hand.Part<QListWidget>("undecodedNames");
        EXPECT_TRUE(Eventually([&] { return names.isVisible() && names.count() == 1; }));
        names.setFocus();
        QTest::keyClick(&names, Qt::Key_Down);
        Shot(hand.Dialog(), "file-undecoded");
        QTest::keyClick(&names, Qt::Key_Return);
    };
    CCustomFileDlg dialog = Loading();
    ExpectPicked(dialog, Paths{sub + "/a\xff.tif"}, [&](Hand const &hand) { // both are shown
        choose(hand);
        EXPECT_EQ(hand.Part<CZelComboBox>("folderBox").GetWindowText(), sub);
        hand.TypeAndEnter("..");
        hand.TypeAndEnter("caf\xef\xbf\xbd"); // as it is shown
        hand.ClickRow("b.tif");
        EXPECT_EQ(hand.Name().text(), "b.tif") << hand.Name().hasFocus();
        choose(hand);
    });
}

TEST_F(CustomFileDialog, OneCheckBoxAtMostIsChecked) {
    Write({"a.tif"});
    CCustomFileDlg dialog = Loading(kImages, true, CCustomFileDlg::kProjectTemplate, "a.tif");
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path(), "/data/images"});
    dialog.SetOptions("x=1");
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [](Hand const &hand) {
        auto *const editOnly = hand.Control<QCheckBox>(6010);
        auto *const readOnly = hand.Control<QCheckBox>(6011);
        Click(readOnly);
        Click(editOnly);
        EXPECT_FALSE(readOnly->isChecked());
        Click(readOnly);
        EXPECT_FALSE(editOnly->isChecked());
        Shot(hand.Dialog(), "file-project");
        hand.PressOk();
    });
    EXPECT_TRUE(dialog.GetReadOnly());
    EXPECT_FALSE(dialog.GetEditOnly());
    EXPECT_EQ(dialog.GetOptions(), "x=1");
}

TEST_F(CustomFileDialog, TheRowFollowsTheDialogsWidth) {
    for (bool const mirrored : {true, false}) {
        QApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
        CCustomFileDlg dialog = Loading(kImages, true, CCustomFileDlg::kProjectTemplate);
        dialog.EnableHistory(true);
        RunWith(dialog, [mirrored](Hand const &hand) {
            auto *const history = hand.Control<CZelComboBox>(6008);
            auto *const box = hand.Control<QCheckBox>(6010);
            EXPECT_EQ(history->GetCount(), 0);
            int const left = box->x();
            for (int const growth : {37, -21}) {
                int const width = history->width() + growth;
                hand.Dialog().resize(hand.Dialog().size() + QSize(growth, 50));
                EXPECT_TRUE(Eventually([&] { return history->width() == width; }));
            }
            EXPECT_EQ(box->x(), mirrored ? left : left + 16);
            EXPECT_EQ(hand.Control<QLabel>(6009)->x() > history->x(), mirrored);
            EXPECT_TRUE(box->parentWidget()->rect().contains(box->geometry())) << "all of it is seen";
        });
    }
}

TEST_F(CustomFileDialog, WhatIsReadFromTheLeftStaysSoInEveryList) {
    QApplication::setLayoutDirection(Qt::RightToLeft);
    using Put = std::function<void(DString const &)>;
    CZelComboBox combo;
    CZelPropList properties;
    auto *const property = new CZelProp("Path", PropRule{}, "");
    properties.AddProperty(property);
    CZelTreeCtrl tree;
    HTREEITEM const item = tree.InsertItem("");
    QListWidget names;
    names.setItemDelegate(new NameDelegate(&names));
    names.addItem(QString());
    for (auto const &[view, put] : std::vector<std::pair<QWidget *, Put>>{
             {&combo, [&](DString const &text) { combo.ResetContent(), combo.SetCurSel(combo.AddString(text)); }},
             {&properties, [&](DString const &text) { property->SetValue(text); }},
             {&tree, [&](DString const &text) { tree.SetItemText(item, text); }},
             {&names, [&](DString const &text) { names.item(0)->setText(QString::fromStdString(text)); }}}) {
        put("/a (1).");
        QImage const plain = view->grab().toImage();
        put("\u2066/a (1).\u2069"); // marks that keep it whatever is around
        EXPECT_EQ(plain, view->grab().toImage()) << view->metaObject()->className();
    }
}

TEST_F(CustomFileDialog, WithoutAHistoryTheRowIsGone) {
    CCustomFileDlg dialog = Loading();
    folder.Folder("a");
    folder.Write("b.tif", std::string(8800, 'x'));
    RunWith(dialog, [](Hand const &hand) {
        hand.ClickRow("b.tif");
        hand.List().setFocus();
        QTest::keyClick(&hand.List(), Qt::Key_A);
        EXPECT_EQ(hand.List().currentIndex().data().toString(), "a");
        EXPECT_EQ(hand.Dialog().findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open)->text(), "&Open");
        auto const &tree = dynamic_cast<QTreeView &>(hand.List());
        for (int column = 0; column < 4; ++column) {
            QModelIndex const cell = tree.currentIndex().siblingAtColumn(column).siblingAtRow(1);
            EXPECT_GE(tree.visualRect(cell).width(), tree.sizeHintForIndex(cell).width()) << column;
            EXPECT_TRUE(tree.viewport()->rect().contains(tree.visualRect(cell))) << column;
        }
        EXPECT_FALSE(hand.Control<CZelComboBox>(6008)->parentWidget()->isVisible());
        EXPECT_EQ(hand.Control<QCheckBox>(6010), nullptr);
        Shot(hand.Dialog(), "file-load");
    });
}

TEST_F(CustomFileDialog, ALockedOneCannotLeaveItsFolder) {
    Write({"here/a.tif", "here/sub/b.tif", "c.tif"});
    CCustomFileDlg dialog = Loading();
    dialog.GetOFN().initialDir = folder / "here";
    dialog.GetOFN().flags |= OFN_NOCHANGEDIR | OFN_ENABLEHOOK;
    ExpectPicked(dialog, Paths{folder / "here/a.tif"}, [&](Hand const &hand) {
        hand.AwaitShown({"a.tif"});
        for (char const *const name :
             {"lookInCombo", "backButton", "forwardButton", "toParentButton", "newFolderButton", "sidebar"})
            EXPECT_FALSE(hand.Part<QWidget>(name).isVisible()) << name;
        EXPECT_FALSE(hand.Part<QWidget>("folderBox").isEnabled());
        Shot(hand.Dialog(), "file-locked");
        for (char const *const text : {"..", "sub", "sub/b.tif", "../c.tif", "/", "~", "."}) {
            hand.TypeAndEnter(text);
            EXPECT_EQ(told.Take(), Paths{"The folder cannot be changed here"}) << text;
        }
        hand.List().setFocus();
        for (QWidget *const widget : {static_cast<QWidget *>(&hand.List()), &hand.Dialog()})
            for (char const *keys : {"Backspace", "Alt+Up", "Ctrl+Up", "Alt+Left", "Ctrl+Shift+H", "Ctrl+Shift+N"})
                QTest::keySequence(widget, QKeySequence(keys));
        EXPECT_EQ(hand.Shown(), Paths{"a.tif"});
        hand.TypeAndEnter("a.tif");
    });
}

TEST_F(CustomFileDialog, WhatIsNewShowsWhenTheUserComesBackOrAsks) {
    CCustomFileDlg dialog = Loading();
    RunWith(dialog, [&](Hand const &hand) {
        hand.Type("keep");
        Write({"a.tif"});
        QTest::keyClick(&hand.Name(), Qt::Key_F5);
        hand.AwaitShown({"a.tif"});
        Write({"b.tif"});
        QWidget other;
        other.show();
        other.activateWindow();
        hand.Dialog().activateWindow();
        hand.AwaitShown({"a.tif", "b.tif"});
        EXPECT_EQ(hand.Name().text(), "keep");
    });
}

TEST_F(CustomFileDialog, ItKeepsItsSize) {
    CCustomFileDlg dialog = Loading();
    QSize kept;
    RunWith(dialog, [&](Hand const &hand) {
        kept = hand.Dialog().minimumSizeHint().expandedTo({701, 399}) + QSize(30, 20);
        hand.Dialog().resize(kept);
    });
    RunWith(dialog, [&](Hand const &hand) {
        EXPECT_EQ(hand.Dialog().size(), kept.boundedTo(hand.Dialog().screen()->availableSize()));
    });
}

TEST_F(CustomFileDialog, NoTextIsCut) {
    CCustomFileDlg dialog = Loading(kImages, false, CCustomFileDlg::kProjectTemplate);
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path()});
    RunWith(dialog, [](Hand const &hand) {
        Shot(hand.Dialog(), "file-save");
        for (auto const *const label : hand.Dialog().findChildren<QLabel *>())
            EXPECT_FALSE(label->isVisible() && label->width() < label->sizeHint().width()) << qPrintable(label->text());
        for (auto const *const button : hand.Dialog().findChildren<QAbstractButton *>()) {
            if (!button->isVisible() || button->text().isEmpty())
                continue;
            SCOPED_TRACE(button->text().toStdString());
            EXPECT_GE(button->width(), button->minimumSizeHint().width());
            EXPECT_GE(button->height(), button->fontMetrics().height());
            EXPECT_TRUE(hand.Dialog().rect().contains({button->mapTo(&hand.Dialog(), QPoint()), button->size()}));
        }
    });
}

} // namespace
} // namespace zelvar::test
