#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/Told.h"
#include "zelvar/base/DFileFrmt.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/opends/core/UnfoldedFolders.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QClipboard>
#include <QtGui/QDropEvent>

#include <filesystem>

namespace zelvar::test {
namespace {

struct DataSets : testing::Test {
    DataSets() {
        UseRealDrivers();
        for (int i = 1; i <= 12; ++i)
            if (i != 5)
                WriteImage(folder / Name(i), {.width = 8, .height = 4});
        WriteImage(folder / "map.tif", {});
        folder.Write("map.tfw", "1\n0\n0\n-1\n0\n0\n");
        folder.Write("map.tif.aux.xml", "<PAMDataset/>");
        folder.Write("cube.zarr/.zgroup", "{}");
        folder.Write("cube.zarr/notes.txt", "inside");
    }
    ~DataSets() override { EXPECT_THAT(told.Take(), IsEmpty()); }

    static DString Name(int i) { return Format("s%02d.tif", i); }
    DialogPtr Make(unsigned features) {
        DlgOpenDS::SetFeatures(features);
        DialogPtr dialog(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, nullptr, nullptr));
        dialog->SetBDIFilter(BDINode_Raster);
        dialog->SetInitDir(folder.Path().c_str());
        return dialog;
    }
    static std::vector<DString> Rows(DSListCtrl const &list) {
        std::vector<DString> rows;
        for (int row = 0; row < list.GetNumRow(); ++row)
            rows.push_back(platform::ToDString(list.ShownText(row, 0)));
        return rows;
    }
    int Run(DlgOpenDS &dialog, std::size_t rows, std::function<void()> const &act) {
        return RunWhen(
            dialog, [&] { return dialog.MainList() != nullptr && Rows(*dialog.MainList()).size() == rows; }, act);
    }
    static void Select(DSListCtrl &list, DString const &name) {
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, PlaceOf(list, name));
    }
    /// Chooses that entry of the menu over the list; the texts of all of them.
    static QStringList Choose(DSListCtrl &list, QString const &text) {
        QStringList texts;
        MenuHand const hand([&](QMenu &menu) {
            for (QAction *const action : menu.actions())
                if (texts << action->text() + (action->isChecked() ? "*" : ""); action->text() == text)
                    QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(action).center());
        });
        list.ContextMenu(list.mapToGlobal(QPoint(5, 5)));
        texts.removeAll(QString());
        return texts;
    }

    TempFolder folder;
    Told told;
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
};

TEST_F(DataSets, HaveOneRowAndMembersComeBackInTheOrderOfTheirNumbers) {
    DialogPtr const dialog = Make(kOpenAll);
    EXPECT_EQ(Run(*dialog, 3,
                  [&] {
                      DSListCtrl &list = *dialog->MainList();
                      EXPECT_THAT(Rows(list),
                                  ElementsAre("cube.zarr", "map.tif", "s[01-12].tif   11 of 12, missing 5"));
                      EXPECT_GT(list.ItemAt(1)->GetFileSize(),
                                static_cast<std::int64_t>(std::filesystem::file_size(folder / "map.tif")));
                      EXPECT_EQ(dialog->FolderList()->GetNumRow(), 0) << "a folder that is data is none to browse";
                      Select(list, "s[01-12].tif");
                      EXPECT_TRUE(Eventually([&] { return PropertyIn(*dialog->PropertyWnd(), "Image Width") == "8"; }));
                      Shot(*dialog, "DlgOpenDS-data-sets");
                      PressOk(*dialog);
                  }),
              QDialog::Accepted);
    ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 11U);
    EXPECT_EQ(dialog->GetSelectedNodePaths()[3].GetText(), folder / Name(4));
    EXPECT_EQ(dialog->GetSelectedNodePaths()[4].GetText(), folder / Name(6));
}

TEST_F(DataSets, ComeBackAsOneImageWhereTheApplicationWantsThat) {
    std::pair<SeriesMode, char const *> const cases[] = {{SeriesMode::Slices, "?SERIES=slices"},
                                                         {SeriesMode::Frames, "?SERIES=frames"}};
    for (auto const &[mode, option] : cases) {
        DialogPtr const dialog = Make(kOpenAll);
        dialog->SetSeriesMode(mode);
        Run(*dialog, 3, [&] {
            Select(*dialog->MainList(), "s[01-12].tif");
            PressOk(*dialog);
        });
        ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
        EXPECT_EQ(dialog->GetSelectedNodePaths()[0].GetText(), folder / "s[01-12].tif" + option);
    }
}

TEST_F(DataSets, AreTakenApartInTheMenuOfTheList) {
    DialogPtr const dialog = Make(kOpenAll & ~kOpenFavorites);
    Run(*dialog, 3, [&] {
        DSListCtrl &list = *dialog->MainList();
        Select(list, "map.tif");
        EXPECT_EQ(Choose(list, "Copy Moniker"),
                  QStringList({"Copy Moniker", "Show All Files", "Fold Numbered Files*"}));
        EXPECT_EQ(platform::ToDString(QGuiApplication::clipboard()->text()), folder / "map.tif");
        Choose(list, "Show All Files");
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 5; }));
        Choose(list, "Fold Numbered Files");
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 15; }));
        EXPECT_EQ(Choose(list, {}), QStringList({"Copy Moniker", "Show All Files*", "Fold Numbered Files"}));
        Select(list, "cube.zarr");
        Choose(list, "Show Contents");
        EXPECT_TRUE(Eventually([&] { return RowOf(list, "notes.txt") == 0; }));
    });
    // Numbered files stay as they were left, others are folded again.
    DialogPtr const next = Make(kOpenAll);
    Run(*next, 13, [&] { EXPECT_EQ(RowOf(*next->MainList(), "map.tfw"), -1); });
}

/// The names of the selected rows.
std::vector<DString> Selected(DSListCtrl const &list) {
    DSListCtrl::ItemList items;
    list.GetSelectedItems(items);
    std::vector<DString> names;
    for (auto const &item : items)
        names.push_back(item->GetName());
    return names;
}

TEST_F(DataSets, AreSelectedByTheirNames) {
    folder.Write("sub/deep a%20.tif", "x");
    auto const url = [&](char const *name) { return QUrl::fromLocalFile(platform::ToQString(folder / name)); };
    DialogPtr const dialog = Make(kOpenAll);
    EXPECT_EQ(Run(*dialog, 3,
                  [&] {
                      DSListCtrl &list = *dialog->MainList();
                      auto *const field = platform::GetDlgItem<CZelComboBox>(*dialog, kHistoryId)->lineEdit();
                      auto const drop = [&](QList<QUrl> const &urls) {
                          QMimeData data;
                          data.setUrls(urls);
                          QDragEnterEvent enter({}, Qt::CopyAction, &data, Qt::LeftButton, {});
                          QApplication::sendEvent(dialog.get(), &enter);
                          EXPECT_TRUE(enter.isAccepted());
                          QDropEvent dropped({}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
                          QApplication::sendEvent(dialog.get(), &dropped);
                          EXPECT_EQ(dropped.dropAction(), Qt::CopyAction);
                      };
                      drop({url("sub")});
                      EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 1; })) << "the folder is shown";
                      drop({url("map.tif"), url("s[01-12].tif"), url("gone.tif")});
                      EXPECT_THAT(Selected(list), ElementsAre("map.tif", "s[01-12].tif"));
                      drop({url("sub/deep a%20.tif")});
                      EXPECT_THAT(Selected(list), ElementsAre("deep a%20.tif"));
                      field->setFocus();
                      auto const paste = [&](DString const &text) {
                          field->clear();
                          QGuiApplication::clipboard()->setText(platform::ToQString(text));
                          QTest::keySequence(field, QKeySequence::Paste);
                      };
                      paste(folder / "map.tif");
                      EXPECT_EQ(platform::ToDString(field->text()), folder / "map.tif");
                      QTest::keyClick(field, Qt::Key_Return);
                      EXPECT_THAT(Selected(list), ElementsAre("map.tif"));
                      dialog->ApplyFileFilter("*.img", nullptr);
                      paste((folder / Name(3)) + "?A=1\n  " + (folder / Name(4)) + "\n\n");
                      EXPECT_THAT(Selected(list), ElementsAre(Name(3), Name(4))) << "single ones, in spite of the mask";
                      PressOk(*dialog);
                  }),
              QDialog::Accepted);
    ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 2U);
    EXPECT_EQ(dialog->GetSelectedNodePaths()[0].GetText(), folder / Name(3) + "?A=1");
    EXPECT_EQ(dialog->GetSelectedNodePaths()[1].GetText(), folder / Name(4));
}

TEST_F(DataSets, AreFilesOfTheirOwnWhereTheApplicationWantsNoneOfIt) {
    DialogPtr const dialog = Make(kOpenPlain);
    Run(*dialog, 14, [&] {
        EXPECT_EQ(RowOf(*dialog->FolderList(), "cube.zarr"), 0);
        EXPECT_EQ(Choose(*dialog->MainList(), {}), QStringList());
    });
    DialogPtr const unfolded = Make(kOpenDataSets);
    Run(*unfolded, 13, [&] { EXPECT_EQ(Choose(*unfolded->MainList(), {}).size(), 2); });
    DialogPtr const others = Make(kOpenBasket | kOpenFavorites);
    others->OfferBasket(true);
    Run(*others, 14, [&] {
        Select(*others->MainList(), "map.tif");
        EXPECT_EQ(Choose(*others->MainList(), {}),
                  QStringList({"Add to Basket\tIns", "Add to Favorites", "Copy Moniker"}));
    });
}

TEST(UnfoldedFolders, TheLastHundredAreRemembered) {
    UnfoldedFolders folders;
    for (int i = 0; i <= 100; ++i)
        folders.Add("/a" + std::to_string(i));
    folders.Add("/b\xff: ?\"}%");
    folders.Add("/of\ntwo lines");
    folders.Remove("/a99");
    UnfoldedFolders const read(folders.Text());
    for (auto const &[folder, isThere] : std::map<DString, bool>{
             {"/a2", false}, {"/a3", true}, {"/a99", false}, {"/b\xff: ?\"}%", true}, {"/of", false}})
        EXPECT_EQ(read.Contains(folder), isThere) << folder;
}

} // namespace
} // namespace zelvar::test
