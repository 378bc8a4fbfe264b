#include "zelvar/model/NtwDataSourceItem.h"

#include "support/ListedChildren.h"
#include "support/ScriptedDriver.h"
#include "support/ScriptedShellNamespace.h"
#include "support/Test.h"
#include "zelvar/data/RequestScope.h"

namespace zelvar::test {
namespace {

using platform::ShellId;
using platform::ShellKind;
using test::ScriptedShellNamespace;

struct NtwDataSourceItemTest : testing::Test {
    NtwDataSourceItemTest() : m_former(platform::ShellNamespace::SetCurrent(m_shell)) {}
    ~NtwDataSourceItemTest() override { platform::ShellNamespace::SetCurrent(m_former); }

    static RefItemPtr<NtwDataSourceItem> Item(char const *path, char const *driverId = nullptr) {
        return NtwDataSourceItem::CreateItem(path, nullptr, driverId);
    }
    static NtwDataSourceItem::Type TypeOf(DataSourceItem const &item) {
        return dynamic_cast<NtwDataSourceItem const &>(item).GetType();
    }

    ScriptedDrivers m_drivers;
    std::shared_ptr<ScriptedShellNamespace> m_shell = std::make_shared<ScriptedShellNamespace>();
    std::shared_ptr<platform::ShellNamespace> m_former;
};

TEST_F(NtwDataSourceItemTest, ClassifiesWhatAPathNames) {
    m_shell->AddFile("/data/a.txt");
    m_shell->AddServer("host");
    EXPECT_EQ(Item("/data")->GetType(), NtwDataSourceItem::TYPE_FOLDER);
    EXPECT_EQ(Item("/data/a.txt")->GetType(), NtwDataSourceItem::TYPE_FILE);
    EXPECT_FALSE(Item("/data/a.txt")->IsFolder());
    EXPECT_EQ(Item("smb://host")->GetType(), NtwDataSourceItem::TYPE_FOLDER);
    EXPECT_EQ(Item("/data")->GetDataSourceType(), DataSourceItem::DST_FILE_SYSTEM);
    EXPECT_EQ(Item("/missing"), nullptr);
    EXPECT_EQ(Item(nullptr), nullptr);
    EXPECT_EQ(RefItemPtr<NtwDataSourceItem>(NtwDataSourceItem::CreateItem(ShellId(), nullptr, nullptr)), nullptr);
}

TEST_F(NtwDataSourceItemTest, AFolderThatCannotBeReadAndWhatCannotBeToldAreFoldersThatComeOutEmpty) {
    m_shell->AddFile("/d/a");
    m_shell->SetUnreadable("/d");
    EXPECT_THAT(Names(*Item("/d")), IsEmpty());
    ShellId const gone = m_shell->Drives().Child("/gone", ShellKind::Unknown);
    RefItemPtr<NtwDataSourceItem> const item(NtwDataSourceItem::CreateItem(gone, nullptr, nullptr));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetType(), NtwDataSourceItem::TYPE_FOLDER);
    EXPECT_THAT(Children(*item), IsEmpty());
}

TEST_F(NtwDataSourceItemTest, ThePlaceholderHasNothing) {
    RefItemPtr<DataSourceItem> const item(NtwDataSourceItem::CreateDSItem());
    EXPECT_EQ(item->GetDataSourceType(), DataSourceItem::DST_NONE);
    EXPECT_EQ(item->GetPath(), "");
    EXPECT_EQ(item->GetName(), "");
    EXPECT_FALSE(item->IsFolder());
    EXPECT_EQ(item->GetIconIndex(), -1);
    EXPECT_EQ(item->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA), nullptr);
    item->BuildParents();
    EXPECT_EQ(item->GetParent(), nullptr);
}

TEST_F(NtwDataSourceItemTest, LeavesOutShortcutsAndTheProductsCaches) {
    for (char const *file : {"/d/a.lnk", "/d/B.LNK", "/d/.lnk", "/d/lnk", "/d/_image_cache_", "/d/x.lnk.txt"})
        m_shell->AddFile(file);
    for (char const *folder : {"/d/_image_cache", "/d/_zoom_cache", "/d/_Image_cache", "/d/folder.lnk"})
        m_shell->AddFolder(folder);
    EXPECT_THAT(Names(*Item("/d")), ElementsAre("lnk", "_image_cache_", "x.lnk.txt", "_Image_cache", "folder.lnk"));
}

TEST_F(NtwDataSourceItemTest, AMaskNamesFilesAndNeverFolders) {
    for (char const *file : {"/d/a.tif", "/d/b.IMG", "/d/no dot"})
        m_shell->AddFile(file);
    m_shell->AddFolder("/d/folder.txt");
    std::vector<DString> const all = Names(*Item("/d"));
    EXPECT_EQ(all.size(), 4U);
    for (char const *everything : {"", "*", "*.*"})
        EXPECT_EQ(Names(*Item("/d"), everything), all) << everything;
    EXPECT_THAT(Names(*Item("/d"), "*.tif"), ElementsAre("a.tif", "folder.txt"));
    EXPECT_THAT(Names(*Item("/d"), "*.tif;*.img"), ElementsAre("a.tif", "b.IMG", "folder.txt"));
}

TEST_F(NtwDataSourceItemTest, AChildKnowsSizeTimeAndPictureWithoutASecondLook) {
    m_shell->AddFile("/d/a.tif", {.size = 12, .modified = 1'709'450'000'123'000'000});
    m_shell->AddFolder("/d/sub");
    m_shell->AddFile("/d/b.tif", {.link = true});
    m_shell->AddFile("/d/c.zip");
    RefItemPtr<NtwDataSourceItem> const folder = Item("/d");
    auto const children = Children(*folder);
    ASSERT_EQ(children.size(), 4U);
    EXPECT_EQ(children[0]->GetFileSize(), 12);
    SystemTime time;
    ASSERT_TRUE(children[0]->GetModificationTime(time));
    EXPECT_EQ(time, ToLocalTime(1'709'450'000'123'000'000));
    EXPECT_EQ(children[0]->GetPath(), "/d/a.tif");
    EXPECT_EQ(children[0]->GetParent(), RefItemPtr<DataSourceItem>(folder));
    NtwDataSourceItem::Initialize();
    EXPECT_EQ(children[0]->GetImageList()->Get(children[0]->GetIconIndex()).name, "image-x-generic");
    EXPECT_EQ(children[1]->GetImageList()->Get(children[1]->GetIconIndex()).name, "folder");
    std::set<int> pictures; // each kind has its own, and so has a link
    for (auto const &child : children)
        pictures.insert(child->GetIconIndex());
    EXPECT_EQ(pictures.size(), 4U);
    EXPECT_EQ(children[1]->GetFileSize(), -1);
    EXPECT_FALSE(children[1]->GetModificationTime(time));
    EXPECT_EQ(m_shell->TimesCalls(), 0);
}

TEST_F(NtwDataSourceItemTest, AnItemMadeFromAPathLooksWhenItIsTold) {
    m_shell->AddFile("/d/a.tif", {.size = 12});
    RefItemPtr<NtwDataSourceItem> const item = Item("/d/a.tif");
    EXPECT_EQ(item->GetFileSize(), -1);
    item->InitProps();
    EXPECT_EQ(item->GetFileSize(), 12);
    SystemTime time;
    EXPECT_TRUE(item->GetModificationTime(time));
    m_shell->Remove("/d/a.tif");
    item->InitProps(); // gone meanwhile: what was known stays
    EXPECT_EQ(item->GetFileSize(), 12);
}

TEST_F(NtwDataSourceItemTest, AStoppedListingIsShorterAndValid) {
    for (char const *file : {"/d/1", "/d/2.txt", "/d/3", "/d/4"})
        m_shell->AddFile(file);
    CountingCancel atOnce(0);
    RefItemPtr<NtwDataSourceItem> const folder = Item("/d");
    DataSourceItemItr *const empty = folder->CreateIterator(&atOnce, nullptr, nullptr, 0, DT_DATA);
    ASSERT_NE(empty, nullptr);
    empty->First();
    EXPECT_FALSE(empty->IsValid());
    folder->DeleteIterator(empty);
    CountingCancel afterTwo(2);
    EXPECT_THAT(Names(*Item("/d"), nullptr, 0, &afterTwo), ElementsAre("1", "2.txt"));
    CountingCancel alsoForFilesLeftOut(2);
    EXPECT_THAT(Names(*Item("/d"), "?", 0, &alsoForFilesLeftOut), ElementsAre("1"));
}

TEST_F(NtwDataSourceItemTest, AnIteratorStandsOnNoChildBeforeFirstAndChildrenHoldTheirFolder) {
    struct : DataSourceItemItr {
    } unfilled;
    unfilled.First();
    EXPECT_FALSE(unfilled.IsValid());
    for (char const *file : {"/d/1", "/d/2"})
        m_shell->AddFile(file);
    RefItemPtr<NtwDataSourceItem> const folder = Item("/d");
    DataSourceItemItr *const walk = folder->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA);
    ASSERT_NE(walk, nullptr);
    EXPECT_FALSE(walk->IsValid());
    std::vector<DString> names;
    for (int round = 0; round < 2; ++round)
        for (walk->First(); walk->IsValid(); walk->Next())
            names.push_back(walk->GetItem()->GetName());
    EXPECT_THAT(names, ElementsAre("1", "2", "1", "2"));
    EXPECT_EQ(folder->RefCount(), 3);
    folder->DeleteIterator(walk);
    EXPECT_EQ(folder->RefCount(), 1) << "they let go of it";
}

TEST_F(NtwDataSourceItemTest, ACloneKeepsIdentityNameAndParentButNoPictureOfItsOwn) {
    m_shell->AddFile("/d/a.tif", {.size = 3});
    RefItemPtr<DataSourceItem> const item = Children(*Item("/d")).at(0);
    ImageList const pictures;
    item->SetOwnIcon(&pictures, 0);
    item->SetGroup(4);
    RefItemPtr<DataSourceItem> const copy = item->Clone();
    EXPECT_EQ(copy->GetPath(), "/d/a.tif");
    EXPECT_EQ(copy->GetName(), "a.tif");
    EXPECT_EQ(copy->GetFileSize(), 3);
    EXPECT_EQ(copy->GetParent(), item->GetParent());
    EXPECT_FALSE(copy->HasOwnIcon());
    EXPECT_EQ(copy->GetGroup(), 0);
    EXPECT_EQ(item->GetIconIndex(), 0);
    EXPECT_EQ(item->GetImageList(), &pictures);
}

TEST_F(NtwDataSourceItemTest, ParentsAreBuiltUpToTheDriveAndUpToTheServerByTheirNames) {
    m_shell->AddDrive("/mnt/stick", "Stick", ShellKind::Removable);
    m_shell->AddFile("/mnt/stick/a/b/c.tif");
    m_shell->AddFile("smb://host/share/x.tif");
    auto const chain = [](RefItemPtr<DataSourceItem> item) {
        std::vector<DString> names;
        for (item->BuildParents(); item; item = item->GetParent())
            names.push_back(item->GetName());
        return names;
    };
    EXPECT_THAT(chain(Item("/mnt/stick/a/b/c.tif")), ElementsAre("c.tif", "b", "a", "Stick"));
    EXPECT_THAT(chain(Item("smb://host/share/x.tif")), ElementsAre("x.tif", "share", "host"));
    EXPECT_THAT(chain(Children(*Item("/mnt/stick/a")).at(0)), ElementsAre("b", "a", "Stick"));
    RefItemPtr<NtwDataSourceItem> const drive = Item("/mnt/stick");
    for (char const *set : {"..", ""}) {
        drive->SetName(set);
        EXPECT_EQ(drive->GetName(), *set == '\0' ? "Stick" : set);
    }
}

TEST_F(NtwDataSourceItemTest, OnlyDriversThatMayClaimANameAreAsked) {
    m_shell->AddFile("/d/a.tif");
    m_shell->AddFile("/d/b.txt");
    m_shell->AddFile("/d/c.TIF");
    AnyUrlDriver const &single =
        m_drivers.AddAnyUrl("single", "*.tif", [](auto &driver) { driver.attributes["BDI_Multiple_Images"] = 0; });
    AnyUrlDriver const &refusing = m_drivers.AddAnyUrl("refusing", "*.tif", [](auto &driver) { driver.reads = false; });
    AnyUrlDriver const &multiple = m_drivers.AddAnyUrl("multiple", "*.tif");
    std::vector<NtwDataSourceItem::Type> types;
    for (auto const &child : Children(*Item("/d")))
        types.push_back(TypeOf(*child));
    EXPECT_THAT(types, ElementsAre(NtwDataSourceItem::TYPE_REPOSITORY_FILE, NtwDataSourceItem::TYPE_FILE,
                                   NtwDataSourceItem::TYPE_REPOSITORY_FILE));
    EXPECT_EQ(single.probes, 0);
    EXPECT_EQ(refusing.probes, 2);
    EXPECT_EQ(multiple.probes, 2); // once a file
    EXPECT_EQ(multiple.tries, 0);
}

TEST_F(NtwDataSourceItemTest, ANamedDriverAloneDecides) {
    m_shell->AddFile("/d/a.tif");
    m_drivers.AddAnyUrl("any", "*.tif");
    m_drivers.AddAnyUrl("single", "*.tif", [](auto &driver) { driver.attributes["BDI_Multiple_Images"] = 0; });
    m_drivers.AddAnyUrl("blind", "*.tif", [](auto &driver) { driver.reads = false; });
    EXPECT_TRUE(CanOpenAsRepository("/d/a.tif", nullptr));
    EXPECT_TRUE(CanOpenAsRepository("/d/a.tif", "unknown id"));
    EXPECT_TRUE(CanOpenAsRepository("/d/a.tif", "any"));
    EXPECT_FALSE(CanOpenAsRepository("/d/a.tif", "single"));
    EXPECT_FALSE(CanOpenAsRepository("/d/a.tif", "blind"));
    EXPECT_FALSE(Item("/d/a.tif", "blind")->IsFolder());
}

TEST_F(NtwDataSourceItemTest, WhatNoDriverTellsInTimeCountsAsAFileUntilItIsToldOtherwise) {
    m_shell->AddFile("/d/a.tif");
    LateDriver &driver = m_drivers.Add(std::make_unique<LateDriver>());
    auto const item = Item("/d/a.tif");
    EXPECT_EQ(driver.kind, RequestKind::Probe);
    EXPECT_EQ(item->GetType(), NtwDataSourceItem::TYPE_FILE);
    EXPECT_TRUE(item->IsUnclassified());
    EXPECT_TRUE(Item("/d/a.tif", "late")->IsUnclassified());
    RefItemPtr<DataSourceItem> const copy = item->Clone();
    EXPECT_TRUE(dynamic_cast<NtwDataSourceItem &>(*copy).IsUnclassified());

    item->SetClassified(true);
    EXPECT_FALSE(item->IsUnclassified());
    EXPECT_TRUE(item->IsFolder());
    item->SetClassified(false);
    EXPECT_TRUE(item->IsFolder()) << "what is known is not told again";
}

TEST_F(NtwDataSourceItemTest, WhoClassifiesAtLeisureHasTimeAndMayStopAndOneAnswerIsEnough) {
    LateDriver const &driver = m_drivers.Add(std::make_unique<LateDriver>());
    StopSignal stop{false};
    EXPECT_EQ(ClassifyAtLeisure("/d/a.tif", &stop), std::nullopt);
    EXPECT_GT(driver.time, std::chrono::seconds(5));
    EXPECT_FALSE(driver.isStopped);
    stop = true;
    EXPECT_EQ(ClassifyAtLeisure("/d/a.tif", &stop), std::nullopt);
    EXPECT_TRUE(driver.isStopped);

    m_drivers.AddAnyUrl("prompt", "*.tif");
    EXPECT_EQ(ClassifyAtLeisure("/d/a.tif", nullptr), true);
    m_shell->AddFile("/d/a.tif");
    EXPECT_FALSE(Item("/d/a.tif")->IsUnclassified());
}

TEST_F(NtwDataSourceItemTest, AContainerIsAFolderThatOpensOnce) {
    m_shell->AddFile("/d/a.tif", {.size = 10});
    AnyUrlDriver const &driver = m_drivers.AddAnyUrl("pages", "*.tif", [](auto &pages) {
        pages.Add("root", "page 1", BDINode_Raster, "Page 1");
        pages.Add("root", "page 2", BDINode_Raster, "Page 2");
    });
    {
        NtwDataSourceItem::Initialize();
        RefItemPtr<NtwDataSourceItem> const file = Item("/d/a.tif"); // named, not listed
        EXPECT_TRUE(file->IsFolder());
        EXPECT_EQ(file->GetFileSize(), -1);
        EXPECT_EQ(Children(*file, nullptr, BDINode_Raster).size(), 2U);
        auto const pages = Children(*file, "*.nothing", BDINode_Raster);
        ASSERT_EQ(pages.size(), 2U);
        EXPECT_EQ(driver.tries, 1);
        EXPECT_EQ(pages[1]->GetName(), "Page 2");
        EXPECT_EQ(pages[1]->GetDataSourceType(), DataSourceItem::DST_REPOSITORY);
        EXPECT_EQ(pages[1]->GetParent()->GetParent()->GetPath(), "/d/a.tif");
        EXPECT_GE(pages[1]->GetIconIndex(), 0);
        EXPECT_EQ(pages[1]->GetIconIndex(), file->GetIconIndex());
        EXPECT_EQ(pages[1]->GetImageList(), NtwDataSourceItem::hImageList);
    }
    // File and tree know each other; neither may keep the other alive.
    EXPECT_EQ(driver.OpenTrees(), 0);
    EXPECT_EQ(driver.OpenNodes(), 0);
}

TEST_F(NtwDataSourceItemTest, AContainerThatDoesNotOpenHasNoIterator) {
    m_shell->AddFile("/d/a.tif");
    m_drivers.AddAnyUrl("broken", "*.tif", [](auto &driver) { driver.isUrl = [](DString const &) { return false; }; });
    RefItemPtr<NtwDataSourceItem> const file = Item("/d/a.tif");
    EXPECT_TRUE(file->IsFolder());
    EXPECT_EQ(file->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA), nullptr);
    file->DeleteIterator(nullptr);
}

} // namespace
} // namespace zelvar::test
