#include "support/OpenDialogHand.h"
#include "support/ReportStage.h"
#include "support/ScriptedDriver.h"
#include "support/ScriptedShellNamespace.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/ListingsShared.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/NetworkScanner.h"
#include "zelvar/opends/WantedRow.h"
#include "zelvar/platform/ui/UserMessages.h"

#include <QtGui/QContextMenuEvent>
#include <QtGui/QHelpEvent>
#include <QtWidgets/QToolTip>

namespace zelvar::test {
namespace {

using ItemList = DSListCtrl::ItemList;

struct ListPanes : testing::Test {
    void SetUp() override {
        SetDriverProvider([] {});
        BDIDrvrMngr::Instance()->Reset();
        shell->AddDrive("/data", "Data", platform::ShellKind::Fixed);
        platform::ShellNamespace::SetCurrent(shell);
        NtwDataSourceItem::Initialize();
    }
    void TearDown() override { platform::ShellNamespace::SetCurrent(nullptr); }

    static RefItemPtr<DataSourceItem> Item(char const *path) {
        return {NtwDataSourceItem::CreateItem(path, nullptr, nullptr)};
    }
    void AddFiles(std::initializer_list<char const *> files) {
        for (char const *const file : files)
            shell->AddFile(file);
    }
    std::unique_ptr<DSListCtrl> List(DSListCtrl::Mode mode) {
        auto list = std::make_unique<DSListCtrl>();
        list->SetMode(DSListCtrl::ModeRecursive); // three columns
        list->Create(0, {0, 0, 500, 300}, DT_DATA, nullptr, 3);
        list->SetMode(mode);
        list->ApplyFileFilter("*.*", nullptr);
        list->SetCoordinator(&coordinator);
        list->SetSelChangeMessage(WM_DS_IMAGE_SELECTED);
        list->SetDblClckMessage(WM_DS_IMAGE_DBLCLICK);
        list->show();
        return list;
    }
    /// A list of those files, by name.
    std::unique_ptr<DSListCtrl> Listed(std::initializer_list<char const *> files) {
        AddFiles(files);
        auto list = List(DSListCtrl::ModeFiles);
        list->Sort(0, true);
        list->ResetItems({Item("/data")});
        EXPECT_TRUE(HasRows(*list, static_cast<int>(files.size())));
        return list;
    }
    static bool HasRows(DSListCtrl const &list, int rows) {
        return Eventually([&] { return list.GetNumRow() == rows; });
    }
    static std::vector<DString> Names(DSListCtrl const &list) {
        std::vector<DString> names;
        for (int row = 0; row < list.GetNumRow(); ++row)
            names.push_back(list.ItemAt(row)->GetName());
        return names;
    }

    std::shared_ptr<ScriptedShellNamespace> shell = std::make_shared<ScriptedShellNamespace>();
    Coordinator coordinator;
};

TEST_F(ListPanes, AWantedRowIsTheOneOfItsNameElseOneThatHasMoreOptions) {
    auto const list = Listed({"/data/h?COLUMN=a", "/data/h2", "/data/k", "/data/k?A=1&B=2", "/data/k?C=3"});
    for (auto const &[wanted, selected] : Rows<char const *, DString>{{"/data/h", "h?COLUMN=a"},
                                                                      {"/data/k", "k"},
                                                                      {"/data/k?A=1", "k"},
                                                                      {"/data/k?C=3&D=4", "k?C=3"},
                                                                      {"/data/n", ""}}) {
        list->SelectPaths({});
        WantedRow row;
        row.Want(wanted, *list);
        row.Update(*list, false);
        ItemList items;
        list->GetSelectedItems(items);
        EXPECT_EQ(items.empty() ? "" : items.front()->GetName(), selected) << wanted;
    }
}

TEST_F(ListPanes, FilesAreListedInNaturalOrderAndNothingTwice) {
    shell->AddFolder("/data/sub");
    auto const list = Listed({"/data/img10.tif", "/data/a", "/data/img9.tif", "/data/a.tif", "/data/a.img"});
    std::vector<DString> const ascending{"a", "a.img", "a.tif", "img9.tif", "img10.tif"};
    EXPECT_EQ(Names(*list), ascending);
    int const calls = shell->EnumerateCalls("/data");
    list->ResetItems({Item("/data")});
    EXPECT_EQ(shell->EnumerateCalls("/data"), calls) << "a request that changes nothing lists nothing";

    list->Sort(0, false);
    EXPECT_EQ(list->GetNumRow(), 0) << "rows appear at the next tick";
    ASSERT_TRUE(HasRows(*list, 5));
    EXPECT_EQ(Names(*list), std::vector<DString>(ascending.rbegin(), ascending.rend()));
}

TEST_F(ListPanes, ANameThatTurnsWhatFollowsIsShownAsWrittenAndNamedAsItIs) {
    auto const list = Listed({"/data/\u202Egpj.tif"});
    EXPECT_EQ(list->ShownText(0, 0), "\\u202Egpj.tif");
    EXPECT_EQ(list->ItemAt(0)->GetPath(), "/data/\u202Egpj.tif");
}

TEST_F(ListPanes, AListingThatIsCutShortIsTakenUpAgainByTheSameRequest) {
    AddFiles({"/data/a.tif", "/data/b.tif", "/data/sub/c.tif"});
    auto const list = List(DSListCtrl::ModeFiles);
    ItemList const roots{Item("/data")};
    {
        RequestScope const hasty(RequestKind::List, {}, std::chrono::milliseconds(0));
        list->ResetItems(roots);
        EXPECT_TRUE(hasty.IsUnanswered());
    }
    int const calls = shell->EnumerateCalls("/data");
    RequestScope const patient(RequestKind::List, {}, std::chrono::seconds(60));
    list->ResetItems(roots);
    EXPECT_TRUE(HasRows(*list, 2));
    list->ResetItems(roots);
    EXPECT_EQ(shell->EnumerateCalls("/data"), calls + 1) << "now it is whole";
    EXPECT_FALSE(patient.IsUnanswered());
}

TEST_F(ListPanes, ListsThatAreFilledTogetherReadAFolderOnce) {
    AddFiles({"/data/a.tif", "/data/b.tif", "/data/sub/c.tif"});
    auto const first = List(DSListCtrl::ModeFiles);
    auto const second = List(DSListCtrl::ModeRecursive);
    auto const third = List(DSListCtrl::ModeFiles);
    third->ApplyFileFilter("a*", nullptr);
    ItemList const roots{Item("/data")};
    int calls = shell->EnumerateCalls("/data");
    {
        ListingsShared const shared;
        ListingsShared const within;
        {
            RequestScope const hasty(RequestKind::List, {}, std::chrono::milliseconds(0));
            first->ResetItems(roots);
        }
        calls = shell->EnumerateCalls("/data");
        first->ResetItems(roots);
        EXPECT_EQ(shell->EnumerateCalls("/data"), calls + 1) << "what was cut short is of no use to others";
        second->ResetItems(roots);
        EXPECT_EQ(shell->EnumerateCalls("/data"), calls + 1);
        third->ResetItems(roots);
        EXPECT_EQ(shell->EnumerateCalls("/data"), calls + 2) << "another mask";
    }
    EXPECT_TRUE(HasRows(*first, 2) && HasRows(*second, 3) && HasRows(*third, 1));
    first->Refresh();
    EXPECT_EQ(shell->EnumerateCalls("/data"), calls + 3) << "not beyond";

    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    test::DialogPtr const dialog(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, "ImageFolders", nullptr));
    dialog->SetInitDir("/data");
    calls = shell->EnumerateCalls("/data");
    RunWhen(
        *dialog, [&] { return dialog->MainList() != nullptr && dialog->MainList()->GetNumRow() > 0; }, [] {});
    EXPECT_EQ(shell->EnumerateCalls("/data"), calls + 1) << "for both panes";
}

TEST_F(ListPanes, WhatADriverDidNotTellInTimeIsAskedAgainByTheNextListing) {
    LateDriver &driver = ScriptedDrivers::Add(std::make_unique<LateDriver>());
    AddFiles({"/data/a.tif", "/data/b.txt"});
    auto const list = List(DSListCtrl::ModeFiles);
    list->ResetItems({Item("/data")});
    EXPECT_TRUE(HasRows(*list, 2));
    driver.isLate = false;
    list->Refresh();
    EXPECT_TRUE(HasRows(*list, 1));
    EXPECT_EQ(Names(*list), std::vector<DString>{"b.txt"}) << "the other is a folder of images";
    BDIDrvrMngr::Instance()->Reset();
}

TEST_F(ListPanes, AColdRecursiveListingArrivesUnsortedAndALoopOfLinksEnds) {
    AddFiles({"/data/z.tif", "/data/sub/b.tif", "/data/sub/deep/a.tif"});
    auto const list = List(DSListCtrl::ModeRecursive);
    list->Sort(0, true);
    list->ResetItems({Item("/data")});
    ASSERT_TRUE(HasRows(*list, 3));
    EXPECT_EQ(Names(*list), (std::vector<DString>{"z.tif", "b.tif", "a.tif"}));
    list->Sort(0, true);
    ASSERT_TRUE(HasRows(*list, 3));
    EXPECT_EQ(Names(*list), (std::vector<DString>{"a.tif", "b.tif", "z.tif"}));
}

TEST_F(ListPanes, TheSelectionIsKeptByPathAndARestoredRowStaysQuietOnce) {
    AddFiles({"/data/a.tif", "/data/b.tif", "/data/c.tif"});
    auto const list = List(DSListCtrl::ModeFiles);
    list->ShowDir(Item("/data"), Item("/data/b.tif"));
    ASSERT_TRUE(HasRows(*list, 3));
    ASSERT_TRUE(Eventually([&] { return list->GetSlct(1); }));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(coordinator.told[WM_DS_IMAGE_SELECTED], 0);

    shell->AddFile("/data/a0.tif");
    list->ResetItems({Item("/data"), Item("/data")}); // one root more: listed again, the selection saved
    ASSERT_TRUE(Eventually([&] { return list->GetNumRow() >= 4; }));
    EXPECT_TRUE(list->GetSlct(RowOf(*list, "b.tif")));

    list->ClearSelection();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(30, list->GetItemRect(0).top + 5));
    EXPECT_EQ(coordinator.told[WM_DS_IMAGE_SELECTED], 0) << "posted, not sent";
    EXPECT_TRUE(Eventually([&] { return coordinator.told[WM_DS_IMAGE_SELECTED] > 0; }));
}

TEST_F(ListPanes, ATypedLetterSelectsTheFirstRowThatBeginsWithItEveryTime) {
    auto const list = Listed({"/data/apple.tif", "/data/bear.tif", "/data/boat.tif"});
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(30, 5));
    for (int press = 0; press < 2; ++press) {
        QTest::keyClicks(list.get(), "B");
        EXPECT_EQ(list->GetCrntSlct(), 1);
        EXPECT_EQ(list->GetNumSlct(), 1);
    }
    QTest::keyClicks(list.get(), "x");
    EXPECT_EQ(list->GetCrntSlct(), 1) << "no row begins with it";
    QTest::keyClick(list.get(), Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(list->GetCrntSlct(), 1) << "a range begins where the typing led";
}

TEST_F(ListPanes, AfterAListingTheKeyboardAndTheSelectionAreWhereTheyWereAndInSight) {
    constexpr int kRows = 60;
    for (int i = 0; i < kRows; ++i)
        shell->AddFile(Format("/data/f%d", i));
    auto const list = List(DSListCtrl::ModeFiles);
    list->Sort(0, true);
    list->ResetItems({Item("/data")});
    ASSERT_TRUE(HasRows(*list, kRows));
    list->SetItemState(50, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    auto const isAt = [&](char const *name) {
        RefItemPtr<DataSourceItem> const item = list->ItemAt(list->GetFocusRow());
        Rect const row = list->GetItemRect(list->GetFocusRow());
        return item != nullptr && item->GetName() == name &&
               row.Intersected(list->GetClientRect()).Height() == row.Height();
    };
    list->Sort(0, false);
    list->Sort(0, true); // before the rows have come
    ASSERT_TRUE(HasRows(*list, kRows));
    EXPECT_TRUE(isAt("f50"));
    list->SetItemState(20, LVIS_SELECTED, LVIS_SELECTED); // without the keyboard
    list->ApplyFileFilter("*", "format");
    ASSERT_TRUE(HasRows(*list, kRows));
    EXPECT_TRUE(isAt("f50") && list->GetSlct(20));
    list->Reset();
    list->ShowDir(Item("/data"), Item("/data/f40"));
    ASSERT_TRUE(HasRows(*list, kRows));
    EXPECT_TRUE(isAt("f40") && list->GetSlct(40));
}

TEST_F(ListPanes, ANarrowedMaskDropsRowsAtARefreshWithoutAskingForTheOthers) {
    auto const list = Listed({"/data/a.tif", "/data/b.img"});
    list->ApplyFileFilter("*.tif", nullptr);
    EXPECT_EQ(list->GetNumRow(), 2) << "a mask alone is no change here";
    list->Refresh();
    ASSERT_TRUE(HasRows(*list, 1));
    EXPECT_EQ(Names(*list), std::vector<DString>{"a.tif"});
}

TEST_F(ListPanes, AFolderListShowsTheRootsNameAndAParentRow) {
    shell->AddFolder("/data/sub/one");
    shell->AddFile("/data/sub/file.tif");
    DSListCtrl list;
    list.SetShowParentFolderItem(true);
    list.Create(0, {0, 0, 200, 200}, DT_DATA, nullptr, 3);
    Stage(list).ClickHeading(0);
    EXPECT_FALSE(list.GetHeaderCtrl()->isSortIndicatorShown());
    list.Sort(0, true);
    list.ResetItems({Item("/data/sub")});
    EXPECT_EQ(list.GetColCaption(0), "sub");
    list.SetSlct(0, true); // while the folders are still to come
    ASSERT_TRUE(HasRows(list, 2));
    EXPECT_TRUE(!list.GetSlct(0) && list.GetSlct(1) && list.GetFocusRow() == 1) << "what was picked moves on";
    EXPECT_EQ(list.GetColumnWidth(0), list.GetClientRect().Width());
    EXPECT_EQ(Names(list), (std::vector<DString>{"one", ".."})) << "an ascending listing begins in front of it";
    EXPECT_EQ(list.ItemAt(1)->GetDataSourceType(), DataSourceItem::DST_NONE) << "a root has no parent";
    RefItemPtr<DataSourceItem> const renamed = Item("/data/sub");
    renamed->SetName("new");
    list.ResetItems({renamed});
    EXPECT_EQ(list.GetColCaption(0), "new") << "of the same place";
    list.Reset();
    EXPECT_EQ(list.GetColCaption(0), "");
}

TEST_F(ListPanes, ASingleBatchMayTakeRowsBeyondTheLimit) {
    constexpr int kRows = 32100;
    for (int i = 0; i < kRows; ++i)
        shell->AddFile(Format("/data/f%d", i));
    auto const list = List(DSListCtrl::ModeFiles);
    list->ResetItems({Item("/data")});
    EXPECT_TRUE(HasRows(*list, kRows));
}

// ------------------------------------------------------------------------------------------------- data sources

/// The sources that documents come from.
struct Sources : DataSourceList {
    Sources() {
        resize(200, 300);
        Fill(DT_WORKSPACE);
    }
};

std::vector<DString> RowsOf(DataSourceList const &list, int group) {
    std::vector<DString> names;
    for (int row = 0; row < list.GetItemCount(); ++row)
        if (list.GetItemGroup(row) == group)
            names.push_back(list.ShownText(row, 0).toStdString());
    return names;
}

TEST_F(ListPanes, DrivesFavouritesAndNetworkPlacesStandInTheirGroups) {
    shell->AddDrive("/mnt/net", "Share", platform::ShellKind::NetDrive);
    shell->AddFolder("/data/fav");
    shell->AddServer("alpha", "DOMAIN");
    Sources list;
    EXPECT_EQ(RowsOf(list, kGroupDrives), std::vector<DString>{"Data"});
    EXPECT_EQ(RowsOf(list, kGroupNetworkDrives), std::vector<DString>{"Share"});
    EXPECT_TRUE(RowsOf(list, kGroupDataSources).empty()) << "documents are picked from no data source";
    EXPECT_TRUE(Eventually([&] { return RowsOf(list, kGroupNetwork).size() == 1; }));

    list.AddFavorite(Item("/data/fav"));
    list.AddFavorite(Item("/data/fav"));
    EXPECT_EQ(RowsOf(list, kGroupFavorites).size(), 1U);
    EXPECT_TRUE(Favorites::Contains("/DATA/fav"));

    shell->Remove("/data/fav");
    Sources later;
    EXPECT_TRUE(RowsOf(later, kGroupFavorites).empty()) << "its place is gone";
    EXPECT_TRUE(Favorites::Contains("/data/fav")) << "it may come back";
    Favorites::Remove("/data/fav");
    later.Fill(Item("/data")); // alone from now on, and without a row
    Sources const last;
    EXPECT_TRUE(Eventually([&] { return RowsOf(last, kGroupNetwork).size() == 1; }));
    EXPECT_TRUE(RowsOf(later, kGroupNetwork).empty());
}

TEST_F(ListPanes, AFavouriteOnAServerThatDoesNotAnswerIsSaidToBeUnreachable) {
    platform::ShellNamespace::SetCurrent(nullptr);
    for (char const *path : {"smb://127.0.0.1:9/a", "smb://127.0.0.1:9/b/c"})
        Favorites::Add(path);
    Sources const list;
    EXPECT_TRUE(RowsOf(list, kGroupFavorites).empty()) << "nobody waits for it";
    EXPECT_TRUE(Eventually([&] {
        return RowsOf(list, kGroupFavorites) == std::vector<DString>{"a (unreachable)", "c (unreachable)"};
    }));
    for (char const *path : {"smb://127.0.0.1:9/a", "smb://127.0.0.1:9/b/c"})
        Favorites::Remove(path);
}

TEST_F(ListPanes, OnlySelectedFavouritesAreDeletedWhateverElseIsSelected) {
    shell->AddFolder("/data/one");
    shell->AddFolder("/data/two");
    Sources list;
    list.ModifyStyle(LVS_SINGLESEL, 0);
    list.AddFavorite(Item("/data/one"));
    list.AddFavorite(Item("/data/two"));
    list.SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED);
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_TRUE(RowsOf(list, kGroupFavorites).empty());
    EXPECT_EQ(RowsOf(list, kGroupDrives).size(), 1U);
    EXPECT_FALSE(Favorites::Contains("/data/one") || Favorites::Contains("/data/two"));
    list.AddFavorite(list.ItemAt(0)); // the drive's own item, as the path buttons hand it over
    list.AddFavorite(Item("/data/two"));
    for (int const row : {0, 1}) {
        list.SetItemState(-1, 0, LVIS_SELECTED);
        list.SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
        QTest::keyClick(&list, Qt::Key_Delete);
        EXPECT_EQ(list.GetItemCount(), row == 0 ? 3 : 2) << "a drive is no favourite";
    }
    EXPECT_EQ(list.ItemAt(1)->GetPath(), "/data/two");
    Favorites::Remove("/data/two");
    EXPECT_FALSE(Favorites::Contains("/data"));
}

TEST_F(ListPanes, TheContextMenuComesOverAFavouriteOnlyAndDeletesIt) {
    shell->AddFolder("/data/one");
    Sources list;
    list.AddFavorite(Item("/data/one"));
    list.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&list));
    EXPECT_TRUE(list.hasFocus() && ColorAt(*list.viewport(), {150, list.GetItemRect(0).top + 2}) == Qt::white);
    auto const askForMenu = [&](int row) {
        list.SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
        bool came = false;
        MenuHand const hand([&](QMenu &menu) {
            came = true;
            Shot(list, "DataSourceList-favourite");
            Shot(menu, "DataSourceList-menu");
            QTest::keyClick(&menu, Qt::Key_Down);
            QTest::keyClick(&menu, Qt::Key_Return);
        });
        Rect const rect = list.GetItemRect(row);
        QPoint const at(rect.left + 30, (rect.top + rect.bottom) / 2);
        QContextMenuEvent event(QContextMenuEvent::Mouse, at, list.viewport()->mapToGlobal(at));
        QApplication::sendEvent(list.viewport(), &event);
        return came;
    };
    EXPECT_TRUE(!askForMenu(0) && askForMenu(1) && RowsOf(list, kGroupFavorites).empty());
    EXPECT_FALSE(Favorites::Contains("/data/one"));
}

TEST_F(ListPanes, ANameCutByItsPictureIsShownAsATip) {
    auto const list = Listed({"/data/a name of some length.tif"});
    int const text = list->fontMetrics().horizontalAdvance("a name of some length.tif");
    auto const tips = [&] {
        QToolTip::hideText();
        EXPECT_TRUE(Eventually([] { return !QToolTip::isVisible(); }));
        Rect const row = list->GetItemRect(0);
        QPoint const at(row.left + 30, (row.top + row.bottom) / 2);
        QHelpEvent help(QEvent::ToolTip, at, list->viewport()->mapToGlobal(at));
        QApplication::sendEvent(list->viewport(), &help);
        return QToolTip::isVisible();
    };
    list->SetColumnWidth(0, text + 30);
    EXPECT_FALSE(tips());
    list->SetColumnWidth(0, text + 10);
    EXPECT_TRUE(tips()) << "the picture takes the room of its end";
    QToolTip::hideText();
}

TEST_F(ListPanes, RowsHaveColoursThatTellTheFocus) {
    auto const list = Listed({"/data/HIH", "/data/IHI"});
    ASSERT_TRUE(QTest::qWaitForWindowActive(list.get()));
    list->setFocus();
    list->SetSlct(0, true);
    auto const back = [&](int row, int x) { return ColorAt(*list->viewport(), {x, list->GetItemRect(row).top}); };
    EXPECT_EQ(back(0, 17), list->palette().color(QPalette::Base)) << "the picture's band is never marked";
    EXPECT_EQ(back(1, 60), QColor(Qt::white));
    for (bool const isFocused : {true, false}) {
        isFocused ? list->setFocus() : list->clearFocus();
        EXPECT_EQ(back(0, 60), isFocused ? QColor(10, 36, 106) : QColor(212, 208, 200));
        DarkPalette const dark;
        EXPECT_LT(back(1, 60).lightness(), 80);
        EXPECT_NE(back(0, 60), back(1, 60));
        for (int row = 0; row < 2; ++row) {
            Rect const at = list->GetItemRect(row);
            EXPECT_GE(StrongestContrast(PictureOf(*list->viewport()), {19, at.top, 12, at.Height()}), 4.5);
        }
    }
    list->SetItemState(1, LVIS_FOCUSED, LVIS_FOCUSED);
    list->setFocus();
    EXPECT_TRUE(back(1, 60) == QColor(Qt::black) || back(1, 61) == QColor(Qt::black)) << "the frame of the keyboard";
}

TEST_F(ListPanes, TheNetworkScanEndsAfterThirtyEmptyPassesAndTakesANameOnce) {
    shell->AddServer("alpha", "ONE");
    shell->AddServer("alpha", "TWO");
    NetworkScanner scanner;
    ASSERT_TRUE(scanner.StartScanning());
    ASSERT_TRUE(scanner.Wait(std::chrono::seconds(5)));
    ItemList found;
    scanner.TakeItems(found);
    EXPECT_EQ(found.size(), 1U);
    EXPECT_EQ(shell->EnumerateCalls("network"), NetworkScanner::kEmptyPasses)
        << "the pass that found it ended in a domain without news, so it counts as empty";
}

/// A network place that tells of news: so many times at once, then no more.
struct TalkingNetwork : ScriptedShellNamespace {
    struct Listener : platform::NetworkListener {
        bool Wait(std::stop_token const &stop) override {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            return --left > 0 || std::condition_variable_any().wait(lock, stop, [] { return false; });
        }
        int left = 2 * NetworkScanner::kEmptyPasses;
    };
    [[nodiscard]] std::unique_ptr<platform::NetworkListener> ListenToNetwork() const override {
        return std::make_unique<Listener>();
    }
};

TEST_F(ListPanes, TheNetworkScanSleepsWhereNewsAreTold) {
    auto const network = std::make_shared<TalkingNetwork>();
    platform::ShellNamespace::SetCurrent(network);
    NetworkScanner scanner;
    ASSERT_TRUE(scanner.StartScanning());
    EXPECT_TRUE(Eventually([&] { return network->EnumerateCalls("network") == 2 * NetworkScanner::kEmptyPasses; }));
    EXPECT_TRUE(scanner.IsScanning());
    scanner.RequestStop();
    EXPECT_TRUE(scanner.Wait(std::chrono::seconds(5)));
}

TEST_F(ListPanes, EnteringAFolderTellsTheRootAndAPlaceholderLeadsBack) {
    shell->AddFolder("/data/sub");
    DSDataSourceWnd pane;
    pane.resize(200, 200);
    pane.SetCoordinator(&coordinator);
    pane.SetRootChangeMessage(WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED);
    pane.SetSelChangeMessage(WM_DS_FIRST_PANE_DATA_ITEM_SELECTED);
    pane.show();
    EXPECT_TRUE(pane.IsDataSourceView());
    pane.GetDataSourceList()->Fill(DT_WORKSPACE);
    pane.GetDataSourceList()->SetItemState(0, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_TRUE(Eventually([&] { return coordinator.told[WM_DS_DATA_SOURCE_SELECTED] == 1; }));
    platform::SendMessage(&pane, WM_DS_DATA_SOURCE_DBLCLICK);
    EXPECT_TRUE(pane.IsFolderView());
    EXPECT_EQ(coordinator.told[WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED], 1) << "sent, not posted";

    DSListCtrl &folders = *pane.GetFolderList();
    ASSERT_TRUE(HasRows(folders, 1));
    folders.SetSlct(0, true);
    EXPECT_TRUE(Eventually([&] { return coordinator.told[WM_DS_FIRST_PANE_DATA_ITEM_SELECTED] == 1; }));
    platform::SendMessage(&pane, WM_DS_DATA_ITEM_DBLCLICK);
    ItemList roots;
    pane.GetRootItems(roots);
    ASSERT_EQ(roots.size(), 1U);
    EXPECT_EQ(roots.front()->GetPath(), "/data/sub");
    EXPECT_EQ(coordinator.told[WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED], 2);
}

TEST_F(ListPanes, AHierarchyShowsALevelAPaneAndADoubleClickOnNothingDoesNothing) {
    shell->AddFolder("/data/sub/deep");
    HierarchyList hierarchy;
    hierarchy.resize(300, 200);
    hierarchy.SetCoordinator(&coordinator);
    hierarchy.SetRootChangeMessage(WM_DS_ROOT_ITEM_CHANGED);
    hierarchy.show();
    ASSERT_EQ(hierarchy.GetPaneCount(), 1);
    auto const id = static_cast<platform::MessageParam>(DSplitterWnd::IdFromRowCol(0, 0));
    platform::SendMessage(&hierarchy, WM_DS_DATA_ITEM_DBLCLICK, id, 0);
    EXPECT_EQ(coordinator.told[WM_DS_DATA_ITEM_DBLCLICK], 1);
    EXPECT_EQ(coordinator.told[WM_DS_ROOT_ITEM_CHANGED], 0);

    RefItemPtr<DataSourceItem> const deep = Item("/data/sub/deep");
    deep->BuildParents();
    hierarchy.ShowDir(deep);
    ItemList roots;
    hierarchy.GetRootItems(roots);
    ASSERT_EQ(roots.size(), 1U);
    EXPECT_EQ(roots.front()->GetPath(), "/data/sub") << "the level above, with the item selected";
    ASSERT_TRUE(HasRows(*hierarchy.GetPane(0), 1));
    EXPECT_TRUE(Eventually([&] { return hierarchy.GetPane(0)->GetSlct(0); }));
    hierarchy.ApplyFileFilter("*", "format");
    EXPECT_EQ(hierarchy.GetPane(0)->GetNumRow(), 0) << "listed anew";
    EXPECT_TRUE(HasRows(*hierarchy.GetPane(0), 1));
    platform::SendMessage(&hierarchy, WM_DS_DATA_ITEM_DBLCLICK, id, 0);
    EXPECT_EQ(coordinator.told[WM_DS_ROOT_ITEM_CHANGED], 1);
    hierarchy.ShowDir(Item("/data"));
    hierarchy.GetRootItems(roots);
    EXPECT_TRUE(roots.empty()) << "a chain of one resets all panes";
    hierarchy.ResetDataSources({Item("/data/sub")});
    EXPECT_TRUE(HasRows(*hierarchy.GetPane(0), 1)) << "what was shown before it was emptied";
    hierarchy.GetSplitter()->StaticSplitColumn(100, nullptr);
    ASSERT_EQ(hierarchy.GetPaneCount(), 2);
    EXPECT_TRUE(hierarchy.GetPane(1)->isVisible() && !hierarchy.SortPane(5, 0, true));
    hierarchy.GetSplitter()->StaticSplitColumn(30, nullptr);
    ASSERT_EQ(hierarchy.GetPaneCount(), 3);
    auto const shown = [&] {
        std::string paths;
        for (int pane = 0; pane < 3; ++pane) {
            ItemList root;
            hierarchy.GetPane(pane)->GetRootItems(root);
            paths += (root.empty() ? "-" : root.front()->GetPath()) + " ";
        }
        return paths;
    };
    hierarchy.ShowDir(deep);
    EXPECT_EQ(shown(), "/data /data/sub - ");
    EXPECT_TRUE(Eventually([&] { return hierarchy.GetPane(0)->GetSlct(0) && hierarchy.GetPane(1)->GetSlct(0); }));
    for (auto const &[pane, paths] :
         {std::pair{1, "/data /data/sub /data/sub/deep "}, {0, "/data /data/sub - "}}) { // not what stood behind
        auto const window = static_cast<platform::MessageParam>(DSplitterWnd::IdFromRowCol(0, pane));
        platform::SendMessage(&hierarchy, WM_DS_DATA_ITEM_SELECTED, window, 0);
        EXPECT_EQ(shown(), paths);
    }
    hierarchy.setFocus();
    EXPECT_TRUE(hierarchy.GetPane(0)->hasFocus());
}

} // namespace
} // namespace zelvar::test
