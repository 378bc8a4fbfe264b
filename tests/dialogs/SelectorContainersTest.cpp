// The selector over real files, with drivers in this process and in readers, and over files that hang and crash.
#include "support/HostileFiles.h"
#include "support/ImageFiles.h"
#include "support/RealDrivers.h"
#include "support/SelectorHands.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"

#include <QtCore/QMetaObject>

#include <filesystem>

namespace zelvar {
namespace {

using test::SelectorHands;

std::string RunSelector(BDIDrvr *driver, DString const &path, unsigned mask,
                        std::function<void(SelectorHands const &)> const &act) {
    CBDISelectorDlg dialog(driver, path.c_str(), mask, "", true, nullptr);
    auto const done = test::OnNextDialog([&](QWidget &window) {
        QApplication::processEvents();
        act(SelectorHands(window));
    });
    dialog.DoModal();
    EXPECT_TRUE(*done);
    std::string chosen;
    for (DString const &node : dialog.m_results)
        chosen += (chosen.empty() ? "" : ", ") + node;
    return chosen;
}

struct SelectorContainers : testing::Test {
    SelectorContainers() {
        Forget();
        test::UseRealDrivers();
    }
    ~SelectorContainers() override {
        Forget();
        SetDriverProvider({});
    }
    static void Forget() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
    }
    static BDIDrvr *DriverOf(DString const &path) {
        BDIDrvr *driver = nullptr;
        BDINode *root = nullptr;
        void *const repository = BDIDrvrMngr::Instance()->OpenFile(path.c_str(), &driver, &root, nullptr, nullptr);
        EXPECT_NE(repository, nullptr) << path;
        if (repository != nullptr) {
            driver->CloseNode(root);
            driver->CloseRepository(repository);
        }
        return driver;
    }
    test::TempFolder m_folder;
};

TEST_F(SelectorContainers, PagesLayersTablesAndVariablesAreListedByTheirKind) {
    test::WritePages(m_folder / "pages.tif", 3);
    test::WriteGeoPackage(m_folder / "all.gpkg", 2, 1, 2);
    test::WriteNetCdf(m_folder / "cube.nc", 3);
    struct Case {
        char const *file;
        unsigned mask;
        int rows;
        char const *some; ///< within the rows' names
    };
    Case const cases[] = {
        {"pages.tif", BDINode_Raster, 3, "Page 2"},   {"all.gpkg", BDINode_Raster, 2, "picture 1"},
        {"all.gpkg", BDINode_Thematic, 2, "layer 2"}, {"all.gpkg", BDINode_Table, 1, "table 1"},
        {"cube.nc", BDINode_Raster, 3, "var2"},
    };
    for (Case const &file : cases) {
        SCOPED_TRACE(file.file);
        DString const path = m_folder / file.file;
        std::string const chosen = RunSelector(DriverOf(path), path, file.mask, [&](SelectorHands const &hands) {
            EXPECT_EQ(hands.list.GetNumRow(), file.rows);
            EXPECT_NE(hands.Rows().find(file.some), std::string::npos) << hands.Rows();
            EXPECT_FALSE(hands.tree.ItemHasChildren(hands.tree.GetRootItem())); // none is a container
            test::Shot(hands.window, QString("selector-") + file.file);
            test::Click(&hands.ok);
        });
        EXPECT_NE(chosen.find(file.file), std::string::npos) << chosen;
    }
}

TEST_F(SelectorContainers, AnArchiveShowsItsFoldersAndTheContainersInThem) {
    test::WritePages(m_folder / "pages.tif", 1);
    test::WriteGeoPackage(m_folder / "two.gpkg", 0, 0, 2);
    DString const path = m_folder / "archive.zip";
    test::WriteZip(path, {{"folder/inside.tif", m_folder / "pages.tif"}, {"folder/two.gpkg", m_folder / "two.gpkg"}});
    std::string const chosen = RunSelector(DriverOf(path), path, BDINode_Raster, [](SelectorHands const &hands) {
        TreeNode *const root = hands.tree.GetRootItem();
        hands.tree.Expand(root, TVE_EXPAND);
        QApplication::processEvents();
        TreeNode *const folder = hands.tree.FindItem("folder");
        ASSERT_NE(folder, nullptr);
        hands.tree.SelectItem(folder);
        EXPECT_EQ(hands.Rows(), "inside.tif two.gpkg"); // which opens as an image, too
        hands.tree.Expand(folder, TVE_EXPAND);
        TreeNode *const inner = hands.tree.FindItem("two.gpkg");
        ASSERT_NE(inner, nullptr) << hands.Tree();
        hands.tree.SelectItem(inner);
        EXPECT_EQ(hands.list.GetNumRow(), 2) << hands.Rows();
        QApplication::processEvents();
        EXPECT_FALSE(hands.tree.ItemHasChildren(inner));
        test::Shot(hands.window, "selector-archive");
        hands.ClickRow(1);
        test::Click(&hands.ok);
    });
    EXPECT_NE(chosen.find("two.gpkg"), std::string::npos) << chosen;
    EXPECT_NE(chosen.find("picture"), std::string::npos) << chosen;
}

TEST_F(SelectorContainers, GroupsOfAFileAreItsContainers) {
    DString const path = m_folder / "groups.h5";
    test::WriteGroups(path);
    std::string const chosen = RunSelector(DriverOf(path), path, BDINode_Raster, [](SelectorHands const &hands) {
        hands.tree.Expand(hands.tree.GetRootItem(), TVE_EXPAND);
        hands.tree.Expand(hands.tree.FindItem("outer"), TVE_EXPAND);
        QApplication::processEvents();
        EXPECT_EQ(hands.Tree(), "groups.h5[- 1] outer[- 1] inner[0]");
        hands.tree.SelectItem(hands.tree.FindItem("outer"));
        EXPECT_EQ(hands.list.GetNumRow(), 2);
        test::Shot(hands.window, "selector-groups");
        hands.ClickRow(0);
        test::Click(&hands.ok);
    });
    EXPECT_NE(chosen.find("/outer/one"), std::string::npos) << chosen;
}

TEST_F(SelectorContainers, WhatIsDamagedOrVanishesStaysEmpty) {
    test::WritePages(m_folder / "pages.tif", 1);
    DString const broken = m_folder.Write("broken.gpkg", "SQLite format 3 that is none");
    DString const path = m_folder / "archive.zip";
    test::WriteZip(path, {{"folder/inside.tif", m_folder / "pages.tif"}, {"folder/broken.gpkg", broken}});
    BDIDrvr *const driver = DriverOf(path);
    EXPECT_EQ(RunSelector(driver, m_folder / "no such.zip", BDINode_Raster,
                          [](SelectorHands const &hands) {
                              EXPECT_EQ(hands.tree.GetCount(), 0U);
                              EXPECT_FALSE(hands.ok.isEnabled());
                          }),
              "");
    RunSelector(driver, path, BDINode_Raster, [&](SelectorHands const &hands) {
        hands.tree.Expand(hands.tree.GetRootItem(), TVE_EXPAND);
        TreeNode *const folder = hands.tree.FindItem("folder");
        hands.tree.Expand(folder, TVE_EXPAND);
        QApplication::processEvents();
        if (TreeNode *const inner = hands.tree.FindItem("broken.gpkg")) {
            hands.tree.SelectItem(inner);
            EXPECT_EQ(hands.Rows(), "");
            EXPECT_FALSE(hands.tree.Expand(inner, TVE_EXPAND));
        } else {
            ADD_FAILURE() << hands.Tree();
        }
        std::filesystem::remove(path);
        hands.tree.SelectItem(hands.tree.GetRootItem());
        hands.tree.SelectItem(folder);
        EXPECT_TRUE(hands.window.isVisible());
    });
}

struct SelectorHangs : test::HostileFiles {
    /// Escape for what goes on from now, when it is heard. Queued calls come through while a driver is waited for.
    static void PressEscapeLater(QObject *window, Clock::time_point begin = Clock::now()) {
        QMetaObject::invokeMethod(
            window,
            [=] {
                if (Clock::now() - begin < std::chrono::milliseconds(450))
                    return PressEscapeLater(window, begin);
                for (QEvent::Type const type : {QEvent::KeyPress, QEvent::KeyRelease})
                    QCoreApplication::postEvent(window, new QKeyEvent(type, Qt::Key_Escape, Qt::NoModifier));
            },
            Qt::QueuedConnection);
    }
    static constexpr double kSoon = 5000; // milliseconds, where the file wants 30 seconds
};

TEST_F(SelectorHangs, EscapeEndsTheWaitAndWhatDoesNotAnswerStaysEmpty) {
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    auto const begin = Clock::now();
    for (char const *action : {"open sleep 30", "list sleep 30", "list crash"}) {
        SCOPED_TRACE(action);
        QWidget other;
        other.show();
        PressEscapeLater(&other);
        RunSelector(driver, Write(action, DString("members 3\n") + action + "\n"), BDINode_Raster,
                    [&](SelectorHands const &hands) {
                        EXPECT_EQ(hands.Rows(), "");
                        EXPECT_TRUE(hands.window.isVisible()); // the key was for the wait
                    });
    }
    EXPECT_LT(MillisecondsSince(begin), kSoon);
}

} // namespace
} // namespace zelvar
