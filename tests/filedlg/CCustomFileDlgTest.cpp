#include "zelvar/filedlg/CCustomFileDlg.h"

#include "support/FileDialogHand.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/NameDelegate.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/props/CZelPropList.h"

#include <QtCore/QDir>
#include <QtGui/QScreen>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QTreeView>

#include <filesystem>

namespace zelvar::test {
namespace {

using Hand = FileDialogHand;

constexpr char kImages[] = "Images|*.tif;*.tiff|Tables (first, *.csv)|*.csv|All Files|*.*||";

struct CustomFileDialog : FileDialogTest {
    ~CustomFileDialog() override { QApplication::setLayoutDirection(Qt::LeftToRight); }
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
};

TEST_F(CustomFileDialog, AFileIsPickedWithTheMouseOrTypedIfItIsThere) {
    Write({"a.tif", "b.TIF", "c.csv", "sub/c.csv"});
    CCustomFileDlg dialog = Loading();
    ExpectPicked(dialog, Paths{folder / "b.TIF"}, [](Hand const &hand) {
        hand.ClickRow("b.TIF");
        EXPECT_EQ(hand.Shown(), (Paths{"a.tif", "b.TIF", "sub"}));
        hand.PressOk();
    });
    EXPECT_EQ(dialog.GetOFN().filterIndex, 1);
    ExpectPicked(dialog, Paths{folder / "a.tif"}, [&](Hand const &hand) {
        hand.TypeAndEnter("gone.tif");
        EXPECT_EQ(told.Take(), Paths{"File '" + (folder / "gone.tif") + "' not found"});
        hand.TypeAndEnter("a"); // the default extension finds it
    });
}

TEST_F(CustomFileDialog, SavingAddsTheExtensionAndThenAsksOnce) {
    CCustomFileDlg dialog = Saving();
    dialog.GetOFN().initialDir = ParentPathOf(folder.Write("sub/a.tif"));
    ExpectPicked(dialog, Paths{folder / "sub/a.tif"}, [&](Hand const &hand) {
        hand.Type("a");
        for (auto const button : {QMessageBox::No, QMessageBox::Yes}) {
            EXPECT_TRUE(hand.Name().isVisible()) << "the dialog stays";
            auto const asked = OnNextDialog([&](QWidget &question) {
                auto const &box = dynamic_cast<QMessageBox &>(question);
                EXPECT_EQ(box.text(), "a.tif already exists.\nDo you want to replace it?");
                if (button == QMessageBox::Yes) // it may go meanwhile
                    std::filesystem::remove_all(folder / "sub");
                Click(box.button(button));
            });
            QTest::keyClick(&hand.Name(), Qt::Key_Return);
            EXPECT_TRUE(*asked);
        }
    });
    dialog.GetOFN().flags &= ~OFN_OVERWRITEPROMPT;
    Write({"sub/a.tif"});
    EXPECT_EQ(PathsOf(dialog, "a"), Paths{folder / "sub/a.tif"});
}

TEST_F(CustomFileDialog, TheFolderChosenInTheHistoryIsShownAndTheTypedNameStays) {
    CCustomFileDlg dialog = Saving();
    dialog.EnableHistory(true);
    dialog.SetHistory({folder.Path() + "/", folder.Folder("other"), folder / "gone"});
    ExpectPicked(dialog, Paths{folder / "other/result.tif"}, [&](Hand const &hand) {
        auto &history = *hand.Control<CZelComboBox>(6008);
        EXPECT_EQ(history.GetWindowText(), folder.Path()) << "the entry of the first folder";
        hand.Type("result");
        Choose(history, 2);
        EXPECT_EQ(told.Take(), Paths{"Folder '" + (folder / "gone") + "' not found"});
        Choose(history, 1);
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
        Choose(types, 201);
        hand.AwaitShown({"a.tif", "c[1].csv", "plain"}); // also names without a dot
        Choose(types, 200);
        hand.AwaitShown({"c[1].csv"});
        hand.DoubleClickRow("c[1].csv");
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
        Choose(hand.Part<QComboBox>("fileTypeCombo"), 1);
        EXPECT_EQ(hand.Part<QComboBox>("fileTypeCombo").currentText(), "Tables (first, *.csv)"); // masks stand once
        EXPECT_EQ(hand.Name().text(), "a.csv");
        hand.TypeAndEnter("b");
    });
    Rows<int, char const *, char const *> const cases = {
        {3, "b", "b"},         {3, "b.xyz", "b.xyz"}, {1, "Run 1.2", "Run 1.2.tif"},
        {1, "b.csv", "b.csv"}, {1, "b.", "b."},       {1, "what?", "what?.tif"}};
    for (auto const &[filter, typed, saved] : cases) {
        dialog.GetOFN().filterIndex = filter;
        EXPECT_EQ(PathsOf(dialog, typed), Paths{folder / saved});
    }
}

TEST_F(CustomFileDialog, SeveralFilesArePicked) {
    Write({"a.tif", "b \"x\".tif", "c.tif"}); // quotes in a name do no harm
    CCustomFileDlg dialog = Loading();
    dialog.GetOFN().flags |= OFN_ALLOWMULTISELECT;
    Paths const all{folder / "a.tif", folder / "b \"x\".tif", folder / "c.tif"};
    Paths const clicked = RunWith(dialog, [](Hand const &hand) {
        hand.ClickRow("a.tif");
        hand.ClickRow("c.tif", Qt::ShiftModifier);
        Shot(hand.Dialog(), "file-multiple");
        hand.PressOk();
    });
    EXPECT_THAT(clicked, testing::UnorderedElementsAreArray(all));
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
        hand.TypeAndEnter("../sub/./a.csv");
    });
}

TEST_F(CustomFileDialog, EveryRoadLeadsToItsFolder) {
    DString const in = folder.Folder("sub/in");
    DString const sub = folder / "sub";
    DString const top = folder.Path();
    DString const home = QDir::homePath().toStdString();
    Rows<char const *, DString> const roads = {
        {"toParentButton", sub}, {"backButton", in}, {"Alt+Left", in},   {"forwardButton", sub}, {"Left", sub},
        {"Alt+Left", in},        {"Alt+Right", sub}, {"Backspace", top}, {"Alt+Left", sub},      {"Ctrl+Up", top},
        {"Ctrl+Shift+H", home},  {"Alt+Left", top},  {"Alt+Right", home}};
    CCustomFileDlg dialog = Loading();
    dialog.GetOFN().initialDir = in;
    RunWith(dialog, [&](Hand const &hand) {
        auto &box = hand.Part<CZelComboBox>("folderBox");
        auto &places = hand.Part<QAbstractItemView>("sidebar");
        EXPECT_TRUE(Eventually([&] { return hand.Dialog().isActiveWindow(); })); // for its keys
        for (char const *nowhere : {"backButton", "forwardButton"})
            EXPECT_FALSE(hand.Part<QWidget>(nowhere).isEnabled());
        for (auto const &[road, place] : roads) {
            if (auto *const button = hand.Dialog().findChild<QWidget *>(QLatin1String(road)))
                Click(button);
            else
                QTest::keySequence(&hand.List(), QKeySequence(road));
            EXPECT_TRUE(Eventually([&, wanted = place] { return box.GetWindowText() == wanted; })) << road;
        }
        Choose(box, 1);
        EXPECT_EQ(box.GetWindowText(), ParentPathOf(home));
        for (int const row : {0, 1}) {
            QModelIndex const place = places.model()->index(row, 0);
            QTest::mouseClick(places.viewport(), Qt::LeftButton, {}, places.visualRect(place).center());
            EXPECT_EQ(box.GetWindowText(), row == 0 ? home : "/");
        }
        EXPECT_FALSE(hand.Part<QWidget>("toParentButton").isEnabled());
        EXPECT_EQ(EntriesOf(box), (Paths{"/", home}));
    });
}

TEST_F(CustomFileDialog, NamesThatAreNoTextComeBackByteForByte) {
    Write({"caf\xe9/a\xff.tif", "caf\xe9/b.tif"});
    std::string const sub = folder / "caf\xe9";
    CCustomFileDlg given = Loading(kImages, true, 0, "a\xff.tif");
    given.GetOFN().initialDir = sub;
    ExpectPicked(given, Paths{sub + "/a\xff.tif"}, [](Hand const &hand) { hand.PressOk(); });
    Write({"in/a\xfe", "in/a\xfa", "in/a\xff", "in/a\xf9", "in/b\xff", "in/b\xef\xbf\xbd"});
    EXPECT_EQ(PathsOf(given, "../in/a\xef\xbf\xbd"), Paths{folder / "in/a\xf9"}) << "the first that is shown so";
    EXPECT_EQ(PathsOf(given, "../in/b\xef\xbf\xbd"), Paths{folder / "in/b\xef\xbf\xbd"}) << "or is so";
    CCustomFileDlg dialog = Loading();
    ExpectPicked(dialog, Paths{sub + "/a\xff.tif"}, [&](Hand const &hand) { // both are shown
        ChooseUndecoded(hand);
        EXPECT_EQ(hand.Part<CZelComboBox>("folderBox").GetWindowText(), sub);
        hand.TypeAndEnter("..");
        hand.TypeAndEnter("caf\xef\xbf\xbd"); // as it is shown
        hand.ClickRow("b.tif");
        EXPECT_EQ(hand.Name().text(), "b.tif") << hand.Name().hasFocus();
        ChooseUndecoded(hand);
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
    EXPECT_TRUE(dialog.GetReadOnly() && !dialog.GetEditOnly());
    EXPECT_EQ(dialog.GetOptions(), "x=1");
}

TEST_F(CustomFileDialog, TheRowFollowsTheDialogsWidthAndNoTextIsCut) {
    for (bool const mirrored : {true, false}) {
        QApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
        CCustomFileDlg dialog = Loading(kImages, mirrored, CCustomFileDlg::kProjectTemplate);
        dialog.EnableHistory(true);
        RunWith(dialog, [mirrored](Hand const &hand) {
            auto *const history = hand.Control<CZelComboBox>(6008);
            auto *const box = hand.Control<QCheckBox>(6010);
            EXPECT_EQ(history->GetCount(), 0);
            Shot(hand.Dialog(), mirrored ? "file-load-mirrored" : "file-save");
            for (auto const *const label : hand.Dialog().findChildren<QLabel *>())
                EXPECT_TRUE(!label->isVisible() || label->width() >= label->sizeHint().width())
                    << qPrintable(label->text());
            for (auto const *const button : hand.Dialog().findChildren<QAbstractButton *>()) {
                if (!button->isVisible() || button->text().isEmpty())
                    continue;
                SCOPED_TRACE(button->text().toStdString());
                EXPECT_GE(button->width(), button->minimumSizeHint().width());
                EXPECT_GE(button->height(), button->fontMetrics().height());
                EXPECT_TRUE(hand.Dialog().rect().contains({button->mapTo(&hand.Dialog(), QPoint()), button->size()}));
            }
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
    CZelComboBox combo;
    CZelPropList properties;
    auto *const property = new CZelProp("Path", PropRule{}, "");
    properties.AddProperty(property);
    CZelTreeCtrl tree;
    HTREEITEM const item = tree.InsertItem("");
    QListWidget names;
    names.setItemDelegate(new NameDelegate(&names));
    names.addItem(QString());
    std::vector<std::pair<QWidget *, std::function<void(DString const &)>>> const views{
        {&combo, [&](DString const &text) { combo.ResetContent(), combo.SetCurSel(combo.AddString(text)); }},
        {&properties, [&](DString const &text) { property->SetValue(text); }},
        {&tree, [&](DString const &text) { tree.SetItemText(item, text); }},
        {&names, [&](DString const &text) { names.item(0)->setText(QString::fromStdString(text)); }}};
    for (auto const &[view, put] : views) {
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
        QModelIndex const file = tree.currentIndex().siblingAtRow(1 - tree.currentIndex().row());
        EXPECT_EQ(file.siblingAtColumn(2).data(), QString("TIF File"));
        for (int column = 0; column < 4; ++column) {
            QModelIndex const cell = file.siblingAtColumn(column);
            EXPECT_GE(tree.visualRect(cell).width(), tree.sizeHintForIndex(cell).width()) << column;
            EXPECT_TRUE(tree.viewport()->rect().contains(tree.visualRect(cell))) << column;
        }
        EXPECT_FALSE(hand.Control<CZelComboBox>(6008)->parentWidget()->isVisible());
        EXPECT_EQ(hand.Control<QCheckBox>(6010), nullptr);
        Shot(hand.Dialog(), "file-load");
    });
}

TEST_F(CustomFileDialog, ALockedOneCannotLeaveItsFolder) {
    Write({"here/a.tif", "here/sub/b.tif", "here/caf\xe9/b.tif", "c.tif"});
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
        ChooseUndecoded(hand);
        EXPECT_EQ(told.Take(), Paths{"The folder cannot be changed here"});
        EXPECT_TRUE(Eventually([&] { return hand.Dialog().isActiveWindow(); }));
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

TEST_F(CustomFileDialog, ItKeepsItsSizeOverItsParent) {
    QWidget parent;
    CCustomFileDlg dialog(true, "tif", nullptr, kImages, &parent);
    QSize kept;
    RunWith(dialog, [&](Hand const &hand) {
        EXPECT_EQ(hand.Dialog().parentWidget(), &parent);
        kept = hand.Dialog().minimumSizeHint().expandedTo({701, 399}) + QSize(30, 20);
        hand.Dialog().resize(kept);
    });
    RunWith(dialog, [&](Hand const &hand) {
        EXPECT_EQ(hand.Dialog().size(), kept.boundedTo(hand.Dialog().screen()->availableSize()));
    });
}

} // namespace
} // namespace zelvar::test
