#include "zelvar/opends/DlgOpenDS.h"

#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/Told.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/OpenImage.h"
#include "zelvar/layout/SplitterBar.h"
#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/ImageExtraWnd.h"
#include "zelvar/opends/ImagePreviewWnd.h"
#include "zelvar/opends/OpenFeatures.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QScreen>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QHeaderView>

namespace zelvar::test {
namespace {

using platform::GetDlgItem;

/// Knows when a dialog has been painted and what it left for behind that is done.
class FirstPaint : public QObject {
public:
    explicit FirstPaint(QWidget &widget) { widget.installEventFilter(this); }
    [[nodiscard]] bool IsOver() const { return m_over; }

protected:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override {
        if (event->type() == QEvent::Paint && !std::exchange(m_begun, true))
            Behind([this] { Behind([this] { m_over = true; }); }); // the widget itself comes between the two
        return false;
    }

private:
    template <class Act>
    void Behind(Act act) {
        QMetaObject::invokeMethod(this, std::move(act), Qt::QueuedConnection);
    }
    bool m_begun = false;
    bool m_over = false;
};

/// Whether no driver is waited for any more to say what the files of a list are.
bool IsClassified(DSListCtrl const &list) {
    for (int row = 0; row < list.GetNumRow(); ++row)
        if (auto const *item = dynamic_cast<NtwDataSourceItem const *>(list.ItemAt(row).get());
            item != nullptr && item->IsUnclassified())
            return false;
    return true;
}

struct OpenDialog : testing::Test {
    OpenDialog() {
        UseRealDrivers();
        EnsureDrivers();
        WriteImage(folder / "grey.tif", {.width = 64, .height = 32});
        WriteImage(folder / "rgb.tif", {.channels = 3});
        folder.Write("notes.txt", "no image");
        folder.Folder("sub");
        WriteImage(folder / "sub/inner.tif");
    }
    ~OpenDialog() override { EXPECT_THAT(told.Take(), IsEmpty()); }

    DialogPtr Make(DLGTemplate purpose = DT_DATA) {
        DlgOpenDS::SetFeatures(features);
        DialogPtr dialog(DlgOpenDS::CreateDialogObject({&all, &tiff}, &all, purpose, "ImageFolders", nullptr));
        dialog->SetTitle("Open images");
        dialog->SetBDIFilter(BDINode_Raster);
        dialog->SetInitDir(folder.Path().c_str());
        return dialog;
    }
    /// Runs the dialog, does `act` once the main list has its rows, which the dialog lists again behind its first paint
    /// where a driver took its time, and closes it if `act` did not.
    static int Run(DlgOpenDS &dialog, std::function<void()> const &act) {
        FirstPaint const paint(dialog);
        auto const hasRows = [&] {
            DSListCtrl const *const list = dialog.MainList();
            return paint.IsOver() && list != nullptr && list->GetNumRow() > 0 && IsClassified(*list);
        };
        return RunWhen(dialog, hasRows, act);
    }
    static void ClickRow(DSListCtrl &list, DString const &name, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(list.viewport(), Qt::LeftButton, keys, PlaceOf(list, name));
    }
    static QPushButton *Button(DlgOpenDS &dialog, int id) { return GetDlgItem<QPushButton>(dialog, id); }

    TempFolder folder;
    Told told;
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    DFileFrmt tiff{"GTiff", "TIFF (*.tif)", "*.tif"};
    unsigned features = kOpenPlain;
};

TEST_F(OpenDialog, ImagesPickedWithTheMouseComeBackAsMonikers) {
    DialogPtr const dialog = Make();
    int const answer = Run(*dialog, [&] {
        DSListCtrl &list = *dialog->MainList();
        ASSERT_EQ(list.GetNumRow(), 3) << "files alone";
        EXPECT_EQ(list.ColumnsWidth(), list.GetClientRect().Width());
        EXPECT_TRUE(Eventually([&] { return !Button(*dialog, kOkId)->isEnabled(); })) << "nothing is selected";
        ClickRow(list, "grey.tif");
        ClickRow(list, "rgb.tif", Qt::ControlModifier);
        EXPECT_TRUE(Eventually([&] { return dialog->PropertyWnd()->Preview()->GetMode() == 0; }));
        ASSERT_TRUE(Eventually([&] { return Button(*dialog, kOkId)->isEnabled(); }));
        Shot(*dialog, "DlgOpenDS-selected");
        Click(Button(*dialog, kOkId));
    });
    EXPECT_EQ(answer, QDialog::Accepted);
    auto const &monikers = dialog->GetSelectedNodePaths();
    ASSERT_EQ(monikers.size(), 2U);
    EXPECT_EQ(monikers[0].GetText(), folder / "grey.tif");
    EXPECT_EQ(monikers[1].GetText(), folder / "rgb.tif");
    DVectorSafe<DString> history;
    DfltFldrs::Instance()->GetDirHist("ImageFolders", history, false, true);
    EXPECT_EQ(history[0], folder / "rgb.tif");
}

TEST_F(OpenDialog, ADoubleClickIsOkAndReturnInTheListTooButNothingPickedKeepsItOpen) {
    for (bool const byMouse : {false, true}) {
        DialogPtr const dialog = Make();
        auto const act = [&] {
            platform::SendMessage(dialog.get(), WM_DS_IMAGE_DBLCLICK);
            QCoreApplication::processEvents();
            EXPECT_TRUE(dialog->isVisible()) << "no moniker, no end";
            dialog->MainList()->setFocus();
            dialog->MainList()->SetSlct(0, true);
            QWidget *const rows = dialog->MainList()->viewport();
            QTest::mouseDClick(rows, Qt::LeftButton, {}, rows->rect().bottomLeft() + QPoint(40, -5));
            QCoreApplication::processEvents();
            EXPECT_TRUE(dialog->isVisible()) << "beside the rows";
            if (byMouse)
                QTest::mouseDClick(rows, Qt::LeftButton, {}, PlaceOf(*dialog->MainList(), "grey.tif"));
            else
                QTest::keyClick(dialog->MainList(), Qt::Key_Return);
            EXPECT_TRUE(Eventually([&] { return !dialog->isVisible(); })) << byMouse;
        };
        EXPECT_EQ(Run(*dialog, act), QDialog::Accepted);
        EXPECT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
    }
}

TEST_F(OpenDialog, OkWritesTheStateCancelDoesNotAndTheOrderNeverComesBack) {
    DUserCnfg("FileFilter").RemoveKey("0");
    DialogPtr dialog = Make();
    Run(*dialog, [&] {
        dialog->ApplyFileFilter("*.tif", nullptr);
        GetDlgItem<QLineEdit>(*dialog, kFileFilterId)->setText("*.tif");
    });
    EXPECT_FALSE(DUserCnfg("FileFilter").HasKey("0"));

    dialog = Make();
    Run(*dialog, [&] {
        GetDlgItem<QLineEdit>(*dialog, kFileFilterId)->setText("*.tif");
        dialog->MainList()->Sort(1, false);
        ASSERT_TRUE(Eventually([&] { return dialog->MainList()->GetNumRow() > 0; }));
        dialog->MainList()->SetSlct(0, true);
        PressOk(*dialog);
    });
    EXPECT_EQ(DUserCnfg("DlgOpenDSSorting").ReadString("0", ""), "ASC:ASC:1:DSC");
    EXPECT_EQ(DUserCnfg("DlgOpenDS").ReadString("recursive", ""), "false");

    dialog = Make();
    Run(*dialog, [&] {
        EXPECT_EQ(GetDlgItem<QLineEdit>(*dialog, kFileFilterId)->text(), "*.tif");
        EXPECT_EQ(RowOf(*dialog->MainList(), "notes.txt"), -1);
        EXPECT_EQ(dialog->MainList()->GetLastSort().GetCol(), 0);
        EXPECT_TRUE(dialog->MainList()->GetLastSort().IsSortedAscnd());
    });
    DUserCnfg("FileFilter").RemoveKey("0");
}

TEST_F(OpenDialog, ATypedPathIsGoneToAndABadOneIsToldOnce) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        auto *history = GetDlgItem<CZelComboBox>(*dialog, kHistoryId);
        history->setFocus();
        history->SetWindowText("  " + folder / "sub" + " ");
        QTest::keyClick(history->lineEdit(), Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "inner.tif") == 0; }));
        history->SetWindowText(folder / "no\u202Ewhere"); // turns what stands behind it
        QTest::keyClick(history->lineEdit(), Qt::Key_Return);
        EXPECT_THAT(told.Take(), ElementsAre("Cannot access '" + folder / "no\\u202Ewhere" + "' path"));
        EXPECT_TRUE(dialog->isVisible());
        // A file stands for its folder.
        history->SetWindowText(folder / "grey.tif");
        QTest::keyClick(history->lineEdit(), Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "rgb.tif") >= 0; }));
        // What is offered meanwhile is not taken by itself, nor what differs in case alone.
        for (DString const &other : {folder / "sub/deeper", folder / "SUB"})
            history->AddString(other);
        history->clearEditText();
        QTest::keyClicks(history->lineEdit(), QString::fromStdString(folder / "sub"));
        EXPECT_EQ(history->lineEdit()->text().toStdString(), folder / "sub");
        QWidget &offered = *history->completer()->popup();
        EXPECT_TRUE(Eventually([&] { return offered.isVisible(); }));
        QTest::keyClick(&offered, Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "inner.tif") == 0; }));
    });
}

TEST_F(OpenDialog, PathButtonsLeadUpAndTheStarRemembersTheInnermost) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        auto const shown = [&] { return dialog->PathRow().LastShown(); };
        ASSERT_TRUE(Eventually([&] { return shown() != nullptr; }));
        EXPECT_EQ(shown()->GetPath(), folder.Path());
        Click(Button(*dialog, kFavoritesId));
        EXPECT_TRUE(Favorites::Contains(folder.Path()));
        std::vector<DSButton *> const buttons = dialog->PathRow().Buttons();
        ASSERT_GE(buttons.size(), 2U);
        EXPECT_EQ(buttons[1]->geometry().left(), buttons[0]->geometry().right() + 2) << "one pixel between them";
        DSButton *const parent = buttons[buttons.size() - 2];
        DString const parentPath = parent->item->GetPath();
        EXPECT_EQ(parent->toolTip().toStdString(), parent->item->GetName());
        parent->setFocus();
        QTest::keyClick(parent, Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return shown()->GetPath() == parentPath; }));
        EXPECT_TRUE(parent->isVisible() && buttons.back()->isHidden());
        Click(Button(*dialog, kHomeId));
        EXPECT_TRUE(dialog->DataSourceWnd()->IsDataSourceView());
        dialog->DataSourceWnd()->SwitchToFolderView();
        RefItemPtr<DataSourceItem> const top(NtwDataSourceItem::CreateItem(folder.Path().c_str(), nullptr, nullptr));
        dialog->Hierarchy()->ResetDataSources({top});
        platform::SendMessage(dialog.get(), WM_DS_ROOT_ITEM_CHANGED);
        EXPECT_TRUE(dialog->DataSourceWnd()->IsDataSourceView()) << "nothing is above it";
        Shot(*dialog, "DlgOpenDS-sources");
    });
    Favorites::Remove(folder.Path());
}

TEST_F(OpenDialog, SubfoldersAreSearchedOnDemandAndTheFileTypeFilters) {
    folder.Write("sub/of sub", "x");
    folder.Folder("sub/deep");
    folder.Write("sub/deep/of deep", "x");
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        DSListCtrl const &list = *dialog->MainList();
        Button(*dialog, kRecursiveId)->setFocus();
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return RowOf(list, "inner.tif") >= 0 && list.GetNumRow() == 6; }));
        auto *types = GetDlgItem<CZelComboBox>(*dialog, kFileTypeId);
        ASSERT_EQ(types->GetCount(), 2);
        EXPECT_EQ(types->GetCurSel(), 0);
        types->setFocus();
        QTest::keyClick(types, Qt::Key_Down);
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 3 && RowOf(list, "notes.txt") < 0; }));
        EXPECT_EQ(GetDlgItem<QLineEdit>(*dialog, kFileFilterId)->text(), "*.tif");
        EXPECT_EQ(dialog->GetFormat(), &tiff);
        QTest::keyClick(types, Qt::Key_Up);
        EXPECT_EQ(dialog->GetFormat(), &all);
        EXPECT_TRUE(Eventually([&] { return RowOf(list, "notes.txt") >= 0; }));
        dialog->SetRecursive(false);
        DSListCtrl *folders = dialog->FolderList();
        for (char const *const step : {"sub", "deep"}) { // from pane to pane
            ASSERT_TRUE(Eventually([&] { return RowOf(*folders, step) >= 0; }));
            ClickRow(*folders, step);
            EXPECT_TRUE(Eventually([&] { return RowOf(list, "of " + DString(step)) >= 0; }));
            folders = dialog->Hierarchy()->GetPane(0);
        }
    });
}

TEST_F(OpenDialog, TheTabKeyGoesRoundThePanesAndF5ListsAgain) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        dialog->Hierarchy()->GetSplitter()->StaticSplitColumn(50, nullptr);
        QWidget *const round[] = {dialog->FolderList(),
                                  dialog->Hierarchy()->GetPane(0),
                                  dialog->Hierarchy()->GetPane(1),
                                  dialog->MainList(),
                                  GetDlgItem(*dialog, kHistoryId),
                                  GetDlgItem(*dialog, kFileFilterId),
                                  GetDlgItem(*dialog, kFileTypeId),
                                  dialog->FolderList()};
        QString names = GetDlgItem(*dialog, kStatusId)->accessibleName();
        for (QWidget const *const part : round)
            names += "|" + part->accessibleName();
        EXPECT_EQ(names, "Selected|Folders|Hierarchy||Items|Go to folder|File Name Filter|File Type|Folders");
        QString tips;
        for (int const id : {kHomeId, kFavoritesId, kRestoreLayoutId, kRecursiveId})
            tips += Button(*dialog, id)->toolTip() + "|";
        EXPECT_EQ(tips, "Show Data Source panel|Add to favorites|Restore layouts|Search subfolders|");
        round[0]->setFocus();
        for (std::size_t i = 1; i < std::size(round); ++i) {
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
            EXPECT_TRUE(round[i] == dialog->focusWidget() || round[i]->isAncestorOf(dialog->focusWidget())) << i;
        }
        round[3]->setFocus();
        for (int i = 3; i-- > 0;) {
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
            EXPECT_EQ(round[i], dialog->focusWidget()) << i;
        }
        folder.Write("new.txt", "x");
        dialog->MainList()->setFocus();
        QTest::keyClick(dialog->MainList(), Qt::Key_F5);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "new.txt") >= 0; }));
        Click(GetDlgItem(*dialog, kRestoreLayoutId));
        EXPECT_NEAR(dialog->Hierarchy()->GetPane(0)->width(), dialog->Hierarchy()->GetPane(1)->width(), 4);
    });
}

TEST_F(OpenDialog, TheBarsBetweenThePanesMoveByKeyboardAndNoKeyOfTheirsEndsTheDialog) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        DSListCtrl &list = *dialog->MainList();
        list.SetSlct(0, true);
        list.setFocus();
        int const before = list.width();
        QTest::keyClick(&list, Qt::Key_F8);
        auto *const bar = qobject_cast<SplitterBar *>(dialog->focusWidget());
        ASSERT_NE(bar, nullptr);
        QTest::keyClick(bar, Qt::Key_Left);
        EXPECT_EQ(list.width(), before + 10);
        Shot(*dialog, "DlgOpenDS-bar");
        QTest::keyClick(bar, Qt::Key_F5); // nothing of the dialog's
        QTest::keyClick(bar, Qt::Key_F8);
        QTest::keyClick(dialog->focusWidget(), Qt::Key_F8);
        auto *const rows = qobject_cast<SplitterBar *>(dialog->focusWidget());
        ASSERT_TRUE(rows != nullptr && rows->Orientation() == Qt::Horizontal) << "inside the left column";
        QTest::keyClick(rows, Qt::Key_Escape);
        EXPECT_EQ(list.width(), before);
        EXPECT_TRUE(list.hasFocus());
        QTest::keyClick(&list, Qt::Key_F8);
        QTest::keyClick(bar, Qt::Key_Return);
        QCoreApplication::processEvents();
        EXPECT_TRUE(list.hasFocus());
        EXPECT_TRUE(dialog->isVisible()) << "neither picked nor cancelled";
    });
    EXPECT_TRUE(dialog->GetSelectedNodePaths().empty());
}

TEST_F(OpenDialog, AWorkspaceOffersTwoWaysOfOpeningOfWhichOneExcludesTheOther) {
    folder.Write("w.wsp", "x");
    DialogPtr const dialog = Make(DT_WORKSPACE);
    EXPECT_EQ(Run(*dialog,
                  [&] {
                      auto *readOnly = GetDlgItem<QCheckBox>(*dialog, kReadOnlyId);
                      auto *editOnly = GetDlgItem<QCheckBox>(*dialog, kEditOnlyId);
                      EXPECT_GE(editOnly->x(), readOnly->geometry().right() + 5) << "they touch";
                      EXPECT_GE(readOnly->width(), readOnly->sizeHint().width());
                      Click(readOnly);
                      Click(editOnly);
                      EXPECT_FALSE(readOnly->isChecked());
                      EXPECT_EQ(dialog->PropertyWnd()->GetTabsNum(), 1) << "no preview of documents";
                      EXPECT_FALSE(dialog->MainList()->IsMultiSlct());
                      ClickRow(*dialog->MainList(), "w.wsp");
                      Shot(*dialog, "DlgOpenDS-workspace");
                      PressOk(*dialog);
                  }),
              QDialog::Accepted);
    EXPECT_TRUE(dialog->GetEditOnly() && !dialog->GetReadOnly());
}

TEST_F(OpenDialog, TheLiftedPreviewCoversTheDialogUntilAClickEscapeOrItsEnd) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        ClickRow(*dialog->MainList(), "rgb.tif");
        ImagePreviewWnd &preview = *dialog->PropertyWnd()->Preview();
        ASSERT_TRUE(Eventually([&] { return preview.GetMode() == ImagePreviewWnd::ModeCanvas; }));
        QRect const home = preview.geometry();
        for (auto const &putBack : std::initializer_list<std::function<void()>>{
                 [&] { Click(&preview); }, [&] { preview.close(); }, // by the desktop
                 [&] { QTest::keyClick(&preview, Qt::Key_Escape); }}) {
            Click(&preview);
            ASSERT_TRUE(preview.IsLifted());
            EXPECT_EQ(preview.geometry(), QRect(dialog->mapToGlobal(QPoint()), dialog->size()));
            EXPECT_TRUE(preview.isWindow() && preview.parentWidget() == dialog.get());
            Shot(preview, "ImagePreviewWnd-lifted");
            putBack();
            EXPECT_TRUE(!preview.IsLifted() && preview.isVisible() && dialog->isVisible());
            EXPECT_EQ(preview.geometry(), home);
        }
        Click(&preview);
        ASSERT_TRUE(preview.IsLifted()) << "the dialog ends while it is";
    });
}

TEST_F(OpenDialog, ControlsFollowTheWindowWithoutOverlapping) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        for (QSize const size : {dialog->minimumSize(), dialog->minimumSize() + QSize(300, 200)}) {
            dialog->resize(size);
            QCoreApplication::processEvents();
            std::vector<QWidget *> shown;
            for (platform::DialogItem const &item : kOpenDialogTemplate.items)
                if (QWidget *child = GetDlgItem(*dialog, item.id); child != nullptr && child->isVisible())
                    shown.push_back(child);
            for (std::size_t i = 0; i < shown.size(); ++i) {
                EXPECT_TRUE(dialog->rect().contains(shown[i]->geometry())) << platform::GetDlgCtrlID(*shown[i]);
                for (std::size_t j = i + 1; j < shown.size(); ++j)
                    EXPECT_FALSE(shown[i]->geometry().intersects(shown[j]->geometry()))
                        << platform::GetDlgCtrlID(*shown[i]) << " and " << platform::GetDlgCtrlID(*shown[j]);
            }
            EXPECT_EQ(GetDlgItem(*dialog, kSplitterId)->geometry(), GetDlgItem(*dialog, kSplitterPlaceId)->geometry());
        }
    });
}

TEST_F(OpenDialog, AContainerIsEnteredAndItsImagesAreListed) {
    WritePages(folder / "pages.tif", 3);
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        EXPECT_EQ(RowOf(*dialog->MainList(), "pages.tif"), -1) << "it is a folder of images";
        dialog->FolderList()->SetSlct(RowOf(*dialog->FolderList(), "pages.tif"), true);
        ASSERT_TRUE(Eventually([&] {
            return dialog->MainList()->GetNumRow() == 3 &&
                   dialog->MainList()->ItemAt(0)->GetDataSourceType() == DataSourceItem::DST_REPOSITORY;
        }));
        dialog->MainList()->SetSlct(1, true);
        PressOk(*dialog);
    });
    ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
    EXPECT_NE(dialog->GetSelectedNodePaths()[0].GetDrvr(), nullptr);
}

TEST_F(OpenDialog, ADefinedConnectionIsOpenedFromTheLeftListAndItsImagesArePicked) {
    TempFolder const settings;
    WriteGeoPackage(folder / "survey.gpkg", 2, 1, 2);
    auto const definition = [](DString const &name, DString const &url, DString const &rest) {
        return "<DataSource name='" + name + "' url='" + url + "' " + rest + "</DataSource>";
    };
    settings.Write("connections.xml",
                   "<DataSources>" +
                       definition("Survey", "${place}/survey.gpkg",
                                  "><Parameters>place=" + folder.Path() + "</Parameters><BDIDriver id='GPKG'/>") +
                       definition("Scenes", folder.Path(), "><Parameters/>") +
                       definition("Gone", folder / "gone.gpkg", "><Parameters/>") +
                       definition("Hidden", folder.Path(), "visible='false'><Parameters/>") + "</DataSources>");
    Environment const place{{{"ZELVAR_DEFINITIONS_DIR", settings.Path()}}};
    features = kOpenLine;
    DialogPtr const dialog = Make();
    int const answer = Run(*dialog, [&] {
        DataSourceList &sources = *dialog->SourceList();
        auto const rowOf = [&](DString const &name) {
            for (int row = 0; row < sources.GetItemCount(); ++row)
                if (sources.ItemAt(row)->GetName() == name && sources.GetItemGroup(row) == kGroupDataSources)
                    return row;
            return -1;
        };
        auto const click = [&](DString const &name) {
            ASSERT_GE(rowOf(name), 0) << name;
            sources.EnsureVisible(rowOf(name));
            Rect const rect = sources.GetItemRect(rowOf(name));
            QTest::mouseClick(sources.viewport(), Qt::LeftButton, {}, {rect.left + 40, (rect.top + rect.bottom) / 2});
        };
        Click(Button(*dialog, kHomeId));
        EXPECT_EQ(rowOf("Hidden"), -1);
        DSListCtrl const &list = *dialog->MainList();
        click("Gone");
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 0; })) << "what does not open is an empty pane";
        EXPECT_EQ(RowTextOf(*sources.ItemAt(rowOf("Gone"))), "Gone (unreachable)");
        EXPECT_TRUE(Eventually([&] { return dialog->Forecast()->Outcome().reason.ends_with("is not there"); }));
        Shot(*dialog, "DlgOpenDS-unreachable");
        click("Scenes");
        EXPECT_TRUE(Eventually([&] { return RowOf(list, "grey.tif") >= 0 && RowOf(list, "rgb.tif") >= 0; }));
        EXPECT_EQ(RowOf(list, "notes.txt"), -1) << "nothing but images";
        ClickRow(*dialog->MainList(), "grey.tif");
        auto const *const status = GetDlgItem<platform::EllipsisLabel>(*dialog, kStatusId);
        EXPECT_TRUE(Eventually([&] { return !status->Text().isEmpty(); }));
        click("Survey");
        ASSERT_TRUE(Eventually([&] { return RowOf(list, "picture 1") >= 0 && list.GetNumRow() == 2; }));
        EXPECT_TRUE(status->Text().isEmpty()) << "of the former selection nothing stays";
        Shot(*dialog, "DlgOpenDS-definitions");
        ClickRow(*dialog->MainList(), "picture 2");
        EXPECT_TRUE(Eventually([&] { return dialog->PropertyWnd()->Preview()->GetMode() == 0; }));
        PressOk(*dialog);
    });
    EXPECT_EQ(answer, QDialog::Accepted);
    EXPECT_EQ(dialog->GetDataSourceType(), DataSourceItem::DST_REPOSITORY);
    ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
    BDIMoniker const &moniker = dialog->GetSelectedNodePaths()[0];
    ASSERT_NE(moniker.GetDrvr(), nullptr);
    EXPECT_EQ(moniker.GetDrvr()->GetId(), "GPKG");
    EXPECT_EQ(moniker.GetPathOnDisk(), folder / "survey.gpkg");
    EXPECT_NE(moniker.GetText().find("picture"), DString::npos) << moniker.GetText();
    // What an application does with it: the raster opens.
    OpenImage const image(moniker, "", nullptr);
    ASSERT_TRUE(image.IsOpen());
    EXPECT_GT(image.Driver().GetChnlSizeX(image.Handle(), 0), 0);
}

TEST_F(OpenDialog, OptionsOfTheFormatGoIntoTheMoniker) {
    TempFolder const templates;
    templates.Write("extras.xml",
                    "<DataSourceExtras><DataSourceOptions driver='GTiff' template='t.html'/></DataSourceExtras>");
    templates.Write(
        "t.html",
        "<h3>GeoTIFF</h3><table><tr><td>Geometry from<td><input name=GEOREF_SOURCES value=NONE>"
        "<tr><td>Threads<td><select name=NUM_THREADS><option>1<option>ALL_CPUS</select><tr><td>Level<td><input "
        "name=OVERVIEW_LEVEL></table>"
        "<p><input type=button id=Apply value=Apply>");
    Environment const place{{{"ZELVAR_TEMPLATES_DIR", templates.Path()}}};
    WriteImage(folder / "grey.tif", {.width = 64, .height = 32}, {2});
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        ClickRow(*dialog->MainList(), "notes.txt");
        QCoreApplication::processEvents();
        EXPECT_FALSE(dialog->PropertyWnd()->IsTabVisible(2)) << "no options of a text";
        ClickRow(*dialog->MainList(), "grey.tif");
        ASSERT_TRUE(Eventually([&] { return dialog->PropertyWnd()->GetActiveTab() == 2; }));
        dialog->PropertyWnd()->findChild<QLineEdit *>("OVERVIEW_LEVEL")->setText("0");
        Click(dialog->PropertyWnd()->Extra()->findChild<QPushButton *>());
        EXPECT_TRUE(Eventually([&] { return PropertyIn(*dialog->PropertyWnd(), "Image Width") == "32"; }));
        dialog->PropertyWnd()->findChild<QLineEdit *>("GEOREF_SOURCES")->setText("INTERNAL");
        auto *const status = GetDlgItem<platform::EllipsisLabel>(*dialog, kStatusId);
        status->SetText("");
        dialog->PropertyWnd()->Extra()->findChild<QPushButton *>()->click();
        EXPECT_TRUE(Eventually([&] { return status->Text().toStdString() == folder / "grey.tif"; }))
            << "with other options it is looked at once more";
        EXPECT_TRUE(Eventually([&] {
            ImageExtraWnd const &page = *dialog->PropertyWnd()->Extra();
            return page.isVisible() && !page.horizontalScrollBar()->isVisible() &&
                   !page.verticalScrollBar()->isVisible();
        })) << "the page fits its pane";
        Shot(*dialog, "DlgOpenDS-options");
        PressOk(*dialog); // without Apply
    });
    ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
    EXPECT_EQ(dialog->GetSelectedNodePaths()[0].GetText(),
              folder / "grey.tif" + "?GEOREF_SOURCES=INTERNAL&NUM_THREADS=1&OVERVIEW_LEVEL=0");
}

TEST_F(OpenDialog, OptionsThatTheDriverTellsGoIntoTheMonikerAndAreRemembered) {
    features = kOpenOptions;
    for (char const *const name : {"a.asc", "b.asc", "c.asc"})
        folder.Write(name, "ncols 2\nnrows 1\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n");
    auto const pick = [&](DString const &file, std::function<void(DlgOpenDS &)> const &act) {
        DialogPtr const dialog = Make();
        Run(*dialog, [&] {
            ClickRow(*dialog->MainList(), file);
            EXPECT_TRUE(Eventually([&] { return dialog->PropertyWnd()->IsTabVisible(2); }));
            act(*dialog);
            PressOk(*dialog);
        });
        DString text;
        for (BDIMoniker const &moniker : dialog->GetSelectedNodePaths())
            text += moniker.GetText().substr(folder.Path().size() + 1) + " ";
        return text;
    };
    auto const type = [](DlgOpenDS &dialog) { return dialog.PropertyWnd()->findChild<QComboBox *>("DATATYPE"); };
    auto const set = [&](DlgOpenDS &dialog, int index) {
        type(dialog)->setCurrentIndex(index);
        Q_EMIT type(dialog)->activated(index);
    };
    auto const isType = [](DlgOpenDS &dialog, char const *name) {
        return Eventually([&] { return PropertyIn(*dialog.PropertyWnd(), "Data Type") == name; });
    };
    EXPECT_EQ(pick("a.asc",
                   [&](DlgOpenDS &dialog) {
                       EXPECT_EQ(dialog.PropertyWnd()->GetActiveTab(), 0) << "the preview stays in sight";
                       EXPECT_TRUE(isType(dialog, "32 bit signed"));
                       set(dialog, 2);
                       EXPECT_TRUE(isType(dialog, "32 bit float"));
                       // Of another driver.
                       ClickRow(*dialog.MainList(), "grey.tif");
                       EXPECT_TRUE(Eventually([&] { return type(dialog) == nullptr; }));
                       EXPECT_TRUE(isType(dialog, "8 bit unsigned"));
                       ClickRow(*dialog.MainList(), "notes.txt");
                       EXPECT_TRUE(Eventually([&] { return !dialog.PropertyWnd()->IsTabVisible(2); }));
                       ClickRow(*dialog.MainList(), "b.asc");
                       EXPECT_TRUE(isType(dialog, "32 bit float")) << "as the file of the driver before";
                       dialog.PropertyWnd()->SetActiveTab(2);
                       EXPECT_TRUE(Eventually([&] {
                           ImageExtraWnd const &page = *dialog.PropertyWnd()->Extra();
                           return page.isVisible() && !page.horizontalScrollBar()->isVisible();
                       }));
                       Shot(dialog, "DlgOpenDS-driver-options");
                   }),
              "b.asc?DATATYPE=Float32 ");
    EXPECT_EQ(pick("c.asc",
                   [&](DlgOpenDS &dialog) {
                       EXPECT_TRUE(isType(dialog, "32 bit float")) << "as in the dialog before";
                       dialog.PropertyWnd()->Extra()->findChild<QPushButton *>()->click();
                       EXPECT_TRUE(isType(dialog, "32 bit signed"));
                       ClickRow(*dialog.MainList(), "a.asc", Qt::ControlModifier);
                   }),
              "a.asc?DATATYPE=Float32 c.asc ")
        << "each its own";
    features = kOpenPlain;
    DialogPtr const plain = Make();
    plain->SetOptions("DATATYPE=Float32");
    Run(*plain, [&] {
        ClickRow(*plain->MainList(), "b.asc");
        EXPECT_TRUE(isType(*plain, "32 bit signed"));
        EXPECT_FALSE(plain->PropertyWnd()->IsTabVisible(2));
        PressOk(*plain);
    });
    EXPECT_EQ(plain->GetSelectedNodePaths()[0].GetText(), folder / "b.asc");
}

TEST_F(OpenDialog, InALargeFontAllOfItIsOnTheScreen) {
    features = kOpenAll;
    QFont const former = QApplication::font();
    QFont large = former;
    large.setPixelSize(24);
    QApplication::setFont(large);
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        QRect const screen = dialog->screen()->availableGeometry();
        EXPECT_LT(dialog->height(), screen.height()) << "with a title bar";
        EXPECT_LE(dialog->geometry().bottom(), screen.bottom());
        EXPECT_TRUE(dialog->rect().contains(Button(*dialog, kOkId)->geometry()));
        EXPECT_GT(dialog->MainList()->height(), dialog->MainList()->fontMetrics().height() * 5);
    });
    QApplication::setFont(former);
}

TEST_F(OpenDialog, LongNamesAndAllItsStatesHaveRoom) {
    folder.Folder("a folder with quite a long name & a mark");
    DialogPtr const dialog = Make();
    dialog->SetInitDir((folder / "a folder with quite a long name & a mark").c_str());
    WriteImage(folder / "a folder with quite a long name & a mark/first of many.tif", {.channels = 3});
    Run(*dialog, [&] {
        DSListCtrl &list = *dialog->MainList();
        ASSERT_TRUE(Eventually([&] { return dialog->PathRow().LastShown() != nullptr; }));
        Shot(*dialog, "DlgOpenDS-long-names");
        dialog->resize(dialog->minimumSize());
        QCoreApplication::processEvents();
        ClickRow(list, "first of many.tif");
        EXPECT_TRUE(Eventually([&] { return dialog->PropertyWnd()->Preview()->GetMode() == 0; }));
        Shot(*dialog, "DlgOpenDS-narrow");
        dialog->PropertyWnd()->SetActiveTab(1);
        Shot(*dialog, "DlgOpenDS-properties");
        QTreeWidget const &tree = dialog->PropertyWnd()->Properties()->Tree();
        QCoreApplication::processEvents();
        EXPECT_FALSE(tree.horizontalScrollBar()->isVisible());
        EXPECT_EQ(tree.header()->length(), tree.viewport()->width()) << "names and values share the pane";
        auto *types = GetDlgItem<CZelComboBox>(*dialog, kFileTypeId);
        types->showPopup();
        Shot(*types->view()->window(), "DlgOpenDS-file-types");
        types->hidePopup();
        dialog->setEnabled(false);
        Shot(*dialog, "DlgOpenDS-disabled");
        dialog->setEnabled(true);
    });
}

TEST_F(OpenDialog, AMaskTypedByHandFiltersAtReturnAndKeepsTheFormat) {
    DialogPtr const dialog = Make();
    Run(*dialog, [&] {
        auto *mask = GetDlgItem<QLineEdit>(*dialog, kFileFilterId);
        mask->setFocus();
        mask->setText("g*.tif;*.txt");
        QTest::keyClick(mask, Qt::Key_Return);
        DSListCtrl const &list = *dialog->MainList();
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 2; }));
        EXPECT_EQ(RowOf(list, "rgb.tif"), -1);
        EXPECT_EQ(dialog->GetFormat(), &all);
        EXPECT_TRUE(dialog->isVisible()) << "Return was the field's";
        mask->setText("nothing.*");
        QTest::keyClick(mask, Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 0; }));
        EXPECT_TRUE(Eventually([&] { return !Button(*dialog, kOkId)->isEnabled(); }));
    });
}

TEST(Messages, TheTableForReadersNamesEveryMessageAndNoOther) {
    std::string const root = ZELVAR_SOURCE_DIR;
    auto const names = [](std::string const &text) {
        std::set<std::string> found;
        constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_";
        for (std::size_t at = text.find("WM_"); at != std::string::npos; at = text.find("WM_", at + 1))
            found.insert(text.substr(at, text.find_first_not_of(kLetters, at) - at));
        return found;
    };
    auto const documented = names(ReadFile(root + "/docs/messages.md"));
    EXPECT_EQ(documented.size(), 17U);
    EXPECT_EQ(documented, names(ReadFile(root + "/src/opends/DSMessages.h")));
}

} // namespace
} // namespace zelvar::test
