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

namespace zelvar {
namespace {

using test::ExpectPicked;
using test::FileDialogHand;
using test::Paths;
using test::RunWith;
using test::TempFolder;
using test::Told;

constexpr char kImages[] = "Images|*.tif;*.tiff|Tables (first, *)|*.csv|All Files|*.*||";

CCustomFileDlg Loading(TempFolder const &folder, char const *filter = kImages, bool opens = true) {
    CCustomFileDlg dialog(opens, opens ? "tif" : "dat", nullptr, filter, nullptr);
    dialog.GetOFN().initialDir = folder.Path();
    return dialog;
}
CCustomFileDlg Saving(TempFolder const &folder) { return Loading(folder, kImages, false); }

TEST(CustomFileDialog, AFileIsPickedWithTheMouse) {
    TempFolder const folder;
    folder.Write("a.tif");
    folder.Write("b.TIF");
    folder.Write("c.csv");
    folder.Folder("sub");
    CCustomFileDlg dialog = Loading(folder);
    ExpectPicked(dialog, Paths{folder / "b.TIF"}, [](FileDialogHand const &hand) {
        hand.ClickRow("b.TIF");
        EXPECT_EQ(hand.Shown(), (Paths{"a.tif", "b.TIF", "sub"}));
        hand.PressOk();
    });
    EXPECT_EQ(dialog.GetOFN().filterIndex, 1);
}

TEST(CustomFileDialog, ATypedFileMustBeThere) {
    TempFolder const folder;
    folder.Write("a.tif");
    Told told;
    CCustomFileDlg dialog = Loading(folder);
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [&](FileDialogHand const &hand) { // the default extension finds it
        hand.TypeAndEnter("b.tif");
        EXPECT_EQ(told.Take(), Paths{"File '" + (folder / "b.tif") + "' not found"});
        hand.TypeAndEnter("a");
    });
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
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [&](FileDialogHand const &hand) {
        hand.Type("a");
        auto const no = answer(QMessageBox::No);
        QTest::keyClick(&hand.Name(), Qt::Key_Return);
        EXPECT_TRUE(*no);
        EXPECT_TRUE(hand.Name().isVisible()) << "the dialog stays";
        auto const yes = answer(QMessageBox::Yes);
        QTest::keyClick(&hand.Name(), Qt::Key_Return);
        EXPECT_TRUE(*yes);
    });
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
    ExpectPicked(dialog, Paths{folder / "other/result.tif"}, [&](FileDialogHand const &hand) {
        auto *const history = hand.Control<CZelComboBox>(6008);
        ASSERT_NE(history, nullptr);
        EXPECT_EQ(history->GetWindowText(), folder.Path()) << "the entry of the first folder";
        hand.Type("result");
        FileDialogHand::Choose(*history, 2);
        EXPECT_EQ(told.Take(), Paths{"Folder '" + (folder / "gone") + "' not found"});
        FileDialogHand::Choose(*history, 1);
        EXPECT_EQ(hand.Name().text(), "result");
        hand.PressOk();
    });
}

TEST(CustomFileDialog, FiltersAreToldApartByTheirPlace) {
    TempFolder const folder;
    folder.Write("a.tif");
    folder.Write("plain");
    folder.Write("c[1].csv");
    std::string filter;
    for (int at = 0; at < 200; ++at)
        filter += "Same (of, all *)|*.x" + std::to_string(at) + "|";
    filter += "Same (of, all *)|c[1].*|All Files|*.*||";
    CCustomFileDlg dialog = Loading(folder, filter.c_str());
    dialog.GetOFN().filterIndex = 150;
    ExpectPicked(dialog, Paths{folder / "c[1].csv"}, [](FileDialogHand const &hand) {
        auto &types = hand.Part<QComboBox>("fileTypeCombo");
        EXPECT_EQ(types.count(), 202);
        EXPECT_EQ(types.currentText(), "Same (of, all *) (*.x149)");
        EXPECT_EQ(hand.Shown(), Paths{});
        FileDialogHand::Choose(types, 200);
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown() == Paths{"c[1].csv"}; }));
        FileDialogHand::Choose(types, 201);
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown().size() == 3; })) << "also names without a dot";
        FileDialogHand::Choose(types, 200);
        hand.ClickRow("c[1].csv");
        hand.PressOk();
    });
    EXPECT_EQ(dialog.GetOFN().filterIndex, 201);
    dialog.GetOFN().filterIndex = 999;
    EXPECT_EQ(RunWith(dialog, [](FileDialogHand const &) {}), Paths{});
    EXPECT_EQ(dialog.GetOFN().filterIndex, 202) << "the last one";
}

TEST(CustomFileDialog, AnotherFilterChangesTheExtensionThatIsSaved) {
    TempFolder const folder;
    CCustomFileDlg dialog = Saving(folder);
    ExpectPicked(dialog, Paths{folder / "b.csv"}, [](FileDialogHand const &hand) {
        hand.Type("a.tif");
        FileDialogHand::Choose(hand.Part<QComboBox>("fileTypeCombo"), 1);
        EXPECT_EQ(hand.Name().text(), "a.csv");
        hand.TypeAndEnter("b");
    });
    struct Row {
        int filter;
        char const *typed, *saved;
    };
    for (Row const &row : {Row{3, "b", "b"}, Row{3, "b.xyz", "b.xyz"}, Row{1, "Run 1.2", "Run 1.2.tif"},
                           Row{1, "b.csv", "b.csv"}, Row{1, "what?", "what?.tif"}}) {
        dialog.GetOFN().filterIndex = row.filter;
        EXPECT_EQ(RunWith(dialog, [&](FileDialogHand const &hand) { hand.TypeAndEnter(row.typed); }),
                  Paths{folder / row.saved});
    }
}

TEST(CustomFileDialog, SeveralFilesArePicked) {
    TempFolder const folder;
    for (char const *const name : {"a.tif", "b \"x\".tif", "c.tif"})
        folder.Write(name);
    CCustomFileDlg dialog = Loading(folder);
    dialog.GetOFN().flags |= OFN_ALLOWMULTISELECT;
    Paths const all{folder / "a.tif", folder / "b \"x\".tif", folder / "c.tif"};
    Paths const picked = RunWith(dialog, [](FileDialogHand const &hand) {
        hand.ClickRow("a.tif");
        hand.ClickRow("c.tif", Qt::ShiftModifier);
        test::Shot(hand.Dialog(), "file-multiple");
        hand.PressOk();
    });
    EXPECT_EQ(std::set(picked.begin(), picked.end()), std::set(all.begin(), all.end()))
        << "quotes in a name do no harm";
    Paths const whole = RunWith(dialog, [](FileDialogHand const &hand) {
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown().size() == 3; }));
        hand.Name().setFocus();
        EXPECT_TRUE(test::Eventually([&] { return hand.Name().hasFocus(); }));
        hand.List().selectAll();
        EXPECT_EQ(hand.Name().text(), "") << "the toolkit does not write where the user does";
        hand.PressOk();
    });
    EXPECT_EQ(whole.size(), 3U);
    EXPECT_EQ(RunWith(dialog, [](FileDialogHand const &hand) { hand.TypeAndEnter(R"("c.tif" "a.tif")"); }),
              (Paths{folder / "c.tif", folder / "a.tif"}));
    EXPECT_EQ(RunWith(dialog, [](FileDialogHand const &hand) { hand.TypeAndEnter(R"(b "x".tif)"); }),
              Paths{folder / "b \"x\".tif"});
}

TEST(CustomFileDialog, ATypedFolderIsEnteredAndATypedMaskFilters) {
    TempFolder const folder;
    folder.Write("sub/a.csv");
    folder.Write("sub/b.tif");
    CCustomFileDlg dialog = Loading(folder);
    ExpectPicked(dialog, Paths{folder / "sub/a.csv"}, [&](FileDialogHand const &hand) {
        hand.TypeAndEnter("sub");
        EXPECT_EQ(hand.Name().text(), "");
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown() == Paths{"b.tif"}; }));
        hand.TypeAndEnter("*.c?v");
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown() == Paths{"a.csv"}; }));
        auto const &shown = hand.Part<CZelComboBox>("folderBox");
        EXPECT_EQ(shown.GetWindowText(), folder / "sub");
        hand.TypeAndEnter("..");
        EXPECT_EQ(shown.GetWindowText(), folder.Path());
        QTest::keyClick(&hand.List(), Qt::Key_Left, Qt::AltModifier);
        EXPECT_TRUE(test::Eventually([&] { return shown.GetWindowText() == folder / "sub"; }));
        hand.TypeAndEnter("./a.csv");
    });
}

TEST(CustomFileDialog, NamesThatAreNoTextComeBackByteForByte) {
    TempFolder const folder;
    std::string const sub = folder.Folder("caf\xe9");
    folder.Write("caf\xe9/a\xff.tif");
    folder.Write("caf\xe9/b.tif");
    CCustomFileDlg dialog(true, "tif", "a\xff.tif", kImages, nullptr);
    dialog.GetOFN().initialDir = sub;
    EXPECT_EQ(RunWith(dialog, [](FileDialogHand const &hand) { hand.PressOk(); }), Paths{sub + "/a\xff.tif"})
        << "the name that the caller gave";
    auto const choose = [](FileDialogHand const &hand, Qt::Key key) {
        auto &names = hand.Part<QListWidget>("undecodedNames");
        EXPECT_TRUE(test::Eventually([&] { return names.isVisible() && names.count() == 1; }));
        names.setFocus();
        QTest::keyClick(&names, Qt::Key_Down);
        test::Shot(hand.Dialog(), "file-undecoded");
        QTest::keyClick(&names, key);
    };
    dialog = CCustomFileDlg(true, "tif", nullptr, kImages, nullptr);
    dialog.GetOFN().initialDir = folder.Path();
    ExpectPicked(dialog, Paths{sub + "/a\xff.tif"}, [&](FileDialogHand const &hand) { // both are shown
        choose(hand, Qt::Key_Return);
        EXPECT_EQ(hand.Part<CZelComboBox>("folderBox").GetWindowText(), sub);
        hand.TypeAndEnter("..");
        hand.TypeAndEnter("caf\xef\xbf\xbd"); // as it is shown
        hand.ClickRow("b.tif");
        EXPECT_EQ(hand.Name().text(), "b.tif") << hand.Name().hasFocus();
        choose(hand, Qt::Key_Return);
    });
}

TEST(CustomFileDialog, OneCheckBoxAtMostIsChecked) {
    TempFolder const folder;
    folder.Write("a.tif");
    CCustomFileDlg dialog(true, "tif", "a.tif", kImages, nullptr, CCustomFileDlg::kProjectTemplate);
    dialog.GetOFN().initialDir = folder.Path();
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path(), "/data/images"});
    dialog.SetOptions("x=1");
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [](FileDialogHand const &hand) {
        auto *const editOnly = hand.Control<QCheckBox>(6010);
        auto *const readOnly = hand.Control<QCheckBox>(6011);
        test::Click(readOnly);
        test::Click(editOnly);
        EXPECT_FALSE(readOnly->isChecked());
        test::Click(readOnly);
        EXPECT_FALSE(editOnly->isChecked());
        test::Shot(hand.Dialog(), "file-project");
        hand.PressOk();
    });
    EXPECT_TRUE(dialog.GetReadOnly());
    EXPECT_FALSE(dialog.GetEditOnly());
    EXPECT_EQ(dialog.GetOptions(), "x=1");
}

TEST(CustomFileDialog, TheRowFollowsTheDialogsWidth) {
    for (bool const mirrored : {true, false}) {
        QApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
        TempFolder const folder;
        CCustomFileDlg dialog(true, nullptr, nullptr, kImages, nullptr, CCustomFileDlg::kProjectTemplate);
        dialog.GetOFN().initialDir = folder.Path();
        dialog.EnableHistory(true);
        RunWith(dialog, [mirrored](FileDialogHand const &hand) {
            auto *const history = hand.Control<CZelComboBox>(6008);
            auto *const box = hand.Control<QCheckBox>(6010);
            EXPECT_EQ(history->GetCount(), 0);
            int const left = box->x();
            for (int const growth : {37, -21}) {
                int const width = history->width() + growth;
                hand.Dialog().resize(hand.Dialog().size() + QSize(growth, 50));
                EXPECT_TRUE(test::Eventually([&] { return history->width() == width; }));
            }
            EXPECT_EQ(box->x(), mirrored ? left : left + 16);
            EXPECT_EQ(hand.Control<QLabel>(6009)->x() > history->x(), mirrored);
            EXPECT_EQ(box->parentWidget()->rect().intersected(box->geometry()), box->geometry()) << "all of it is seen";
        });
    }
}

TEST(CustomFileDialog, WhatIsReadFromTheLeftStaysSoInEveryList) {
    auto const back = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });
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

TEST(CustomFileDialog, WithoutAHistoryTheRowIsGone) {
    TempFolder const folder;
    CCustomFileDlg dialog = Loading(folder);
    folder.Folder("a");
    folder.Write("b.tif", std::string(8800, 'x'));
    RunWith(dialog, [](FileDialogHand const &hand) {
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
        EXPECT_FALSE(hand.Control<CZelComboBox>(6008)->isVisible());
        EXPECT_FALSE(hand.Control<CZelComboBox>(6008)->parentWidget()->isVisible());
        EXPECT_EQ(hand.Control<QCheckBox>(6010), nullptr);
        test::Shot(hand.Dialog(), "file-load");
    });
}

TEST(CustomFileDialog, ALockedOneCannotLeaveItsFolder) {
    TempFolder const folder;
    folder.Write("here/a.tif");
    folder.Write("here/sub/b.tif");
    folder.Write("c.tif");
    CCustomFileDlg dialog = Loading(folder);
    dialog.GetOFN().initialDir = folder / "here";
    dialog.GetOFN().flags |= OFN_NOCHANGEDIR | OFN_ENABLEHOOK;
    Told told;
    ExpectPicked(dialog, Paths{folder / "here/a.tif"}, [&](FileDialogHand const &hand) {
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown() == Paths{"a.tif"}; }));
        for (char const *const name :
             {"lookInCombo", "backButton", "forwardButton", "toParentButton", "newFolderButton", "sidebar"})
            EXPECT_FALSE(hand.Part<QWidget>(name).isVisible()) << name;
        EXPECT_FALSE(hand.Part<QWidget>("folderBox").isEnabled());
        test::Shot(hand.Dialog(), "file-locked");
        for (char const *const text : {"..", "sub", "sub/b.tif", "../c.tif", "/", "~", "."}) {
            hand.TypeAndEnter(text);
            EXPECT_EQ(told.Take(), Paths{"The folder cannot be changed here"}) << text;
        }
        hand.List().setFocus();
        for (QWidget *const widget : {static_cast<QWidget *>(&hand.List()), &hand.Dialog()}) {
            QTest::keyClick(widget, Qt::Key_Backspace);
            QTest::keyClick(widget, Qt::Key_Up, Qt::AltModifier);
            QTest::keyClick(widget, Qt::Key_Up, Qt::ControlModifier);
            QTest::keyClick(widget, Qt::Key_Left, Qt::AltModifier);
            QTest::keyClick(widget, Qt::Key_H, Qt::ControlModifier | Qt::ShiftModifier);
            QTest::keyClick(widget, Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
        }
        EXPECT_EQ(hand.Shown(), Paths{"a.tif"});
        hand.TypeAndEnter("a.tif");
    });
}

TEST(CustomFileDialog, WhatIsNewShowsWhenTheUserComesBackOrAsks) {
    TempFolder const folder;
    CCustomFileDlg dialog = Loading(folder);
    RunWith(dialog, [&](FileDialogHand const &hand) {
        hand.Type("keep");
        folder.Write("a.tif");
        QTest::keyClick(&hand.Name(), Qt::Key_F5);
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown() == Paths{"a.tif"}; }));
        folder.Write("b.tif");
        QWidget other;
        other.show();
        other.activateWindow();
        hand.Dialog().activateWindow();
        EXPECT_TRUE(test::Eventually([&] { return hand.Shown().size() == 2; }));
        EXPECT_EQ(hand.Name().text(), "keep");
    });
}

TEST(CustomFileDialog, ItKeepsItsSize) {
    TempFolder const folder;
    CCustomFileDlg dialog = Loading(folder);
    QSize kept;
    RunWith(dialog, [&](FileDialogHand const &hand) {
        kept = hand.Dialog().minimumSizeHint().expandedTo({701, 399}) + QSize(30, 20);
        hand.Dialog().resize(kept);
    });
    RunWith(dialog, [&](FileDialogHand const &hand) {
        EXPECT_EQ(hand.Dialog().size(), kept.boundedTo(hand.Dialog().screen()->availableSize()));
    });
}

TEST(CustomFileDialog, NoTextIsCut) {
    TempFolder const folder;
    CCustomFileDlg dialog(false, nullptr, nullptr, kImages, nullptr, CCustomFileDlg::kProjectTemplate);
    dialog.GetOFN().initialDir = folder.Path();
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path()});
    RunWith(dialog, [](FileDialogHand const &hand) {
        test::Shot(hand.Dialog(), "file-save");
        for (auto const *const label : hand.Dialog().findChildren<QLabel *>())
            EXPECT_FALSE(label->isVisible() && label->width() < label->sizeHint().width())
                << label->text().toStdString();
        for (auto const *const button : hand.Dialog().findChildren<QAbstractButton *>()) {
            if (!button->isVisible() || button->text().isEmpty())
                continue;
            EXPECT_GE(button->width(), button->minimumSizeHint().width()) << button->text().toStdString();
            EXPECT_GE(button->height(), button->fontMetrics().height()) << button->text().toStdString();
            QRect const place(button->mapTo(&hand.Dialog(), QPoint()), button->size());
            EXPECT_TRUE(hand.Dialog().rect().contains(place)) << button->text().toStdString();
        }
    });
}

} // namespace
} // namespace zelvar
