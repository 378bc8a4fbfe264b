// What chosen files become, with drivers written down by the tests.
#include "support/GuiTest.h"
#include "support/ScriptedDriver.h"
#include "zelvar/filedlg/FileDlg.h"

namespace zelvar::test {
namespace {

using Names = std::vector<std::string>;

/// A tree driver that wants options for its files.
struct OptionsDriver : ScriptedTreeDriver {
    using ScriptedTreeDriver::ScriptedTreeDriver;
    DString options;
    [[nodiscard]] DString GetDriverParameterString(BDINode const *) override { return options; }
};

struct Resolving : testing::Test {
    Resolving() : driver(*new OptionsDriver("TREE")) {
        BDIDrvrMngr::Instance()->Add(std::unique_ptr<BDIDrvr>(&driver));
        Tree("plain", {.name = "plain", .type = BDINode_Raster});
        Tree("other", {.name = "other", .type = BDINode_Thematic});
        Tree("tables", {.name = "tables", .type = BDINode_Folder, .children = {{.name = "t", .type = BDINode_Folder}}});
        ScriptedNode const one{.name = "one", .type = BDINode_Raster};
        ScriptedNode const two{.name = "two", .type = BDINode_Raster};
        ScriptedNode const road{.name = "road", .type = BDINode_Thematic};
        Tree("deep", {.name = "deep", .children = {one, {.name = "in", .children = {two}}, road}});
        ScriptedNode const shut{.name = "shut", .type = BDINode_Container | 0x100U, .children = {two}};
        Tree("hidden", {.name = "hidden", .children = {shut}});
    }
    ~Resolving() override {
        EXPECT_TRUE(driver.OpenTrees() == 0 && driver.OpenNodes() == 0 && driver.OpenFinds() == 0);
    }
    void Tree(DString const &name, ScriptedNode const &root) { driver.SetTree(name, root); }
    /// The texts of the monikers, those that have a driver with "*" before them.
    Names Resolve(Names const &names, int nodeMask = BDINode_Raster, char const *options = nullptr, int mode = 0) {
        DVectorSafe<DFile> files;
        for (DString const &name : names)
            files.push_back(DFile(name));
        DVector<BDIMoniker *> out = given;
        DFileFrmt const *const wanted = hasFormat ? &format : nullptr;
        resolved = FileDlg::ResolveBDI(mode, nodeMask, wanted, "Title", files, "*.x", out, options);
        EXPECT_EQ(std::erase(out, nullptr), given.size()) << "they stay";
        Names texts;
        for (BDIMoniker const *moniker : out)
            texts.push_back((moniker->GetDrvr() == nullptr ? "" : "*") +
                            std::unique_ptr<BDIMoniker const>(moniker)->GetText());
        return texts;
    }

    ScriptedDrivers drivers;
    OptionsDriver &driver;
    DFileFrmt format{"TREE", "Trees", "*.x"};
    bool hasFormat = true;
    DVector<BDIMoniker *> given; ///< null monikers of the caller
    bool resolved = false;
};

TEST_F(Resolving, APlainFileKeepsItsPathAndItsDriver) {
    EXPECT_EQ(Resolve({"plain"}), Names{"*plain"});
    EXPECT_EQ(Resolve({"unknown"}), Names{"*unknown"});
    EXPECT_EQ(Resolve({"other"}), Names{"other"}) << "what is of no wanted type loses its driver";
    EXPECT_EQ(Resolve({"plain"}, 0), Names{"plain"}) << "a document is opened by nobody";
    EXPECT_EQ(Resolve({"deep"}, 0), Names{"*deep"}) << "a container stays what it is";
    hasFormat = false;
    EXPECT_EQ(Resolve({"plain"}), Names{"plain"});
    given = {nullptr};
    EXPECT_EQ(Resolve({"plain"}), Names{"plain"});
    given.clear();
    EXPECT_EQ(Resolve({}), Names{});
    EXPECT_TRUE(resolved);
}

TEST_F(Resolving, OptionsFollowTheFirstQuestionMarkOrMakeIt) {
    EXPECT_EQ(Resolve({"x?b=2", "x"}, 2, "a=1"), (Names{"*x?b=2&a=1", "*x?a=1"}));
    EXPECT_EQ(Resolve({"x"}, 2, "a=1", 1), Names{"*x?a=1"});
    EXPECT_EQ(Resolve({"x"}, 2, ""), Names{"*x"});
}

TEST_F(Resolving, ADriversOptionsAreAddedOnlyToWhatCanBeOpenedAndHasNone) {
    driver.options = "k=v";
    Tree("plain?o=1", {.name = "plain", .type = BDINode_Raster});
    EXPECT_EQ(Resolve({"plain"}), Names{"*plain?k=v"});
    EXPECT_EQ(Resolve({"plain?o=1"}), Names{"*plain?o=1"});
    EXPECT_EQ(Resolve({"unknown"}), Names{"*unknown"});
    EXPECT_EQ(Resolve({"plain"}, 2, nullptr, 1), Names{"*plain"}) << "not when saving";
    EXPECT_EQ(Resolve({"hidden"}), Names{"*hidden?k=v"}) << "what is shut is not searched";
    EXPECT_EQ(Resolve({"plain", "plain?o=1", "unknown", "plain"}),
              (Names{"*plain?o=1", "*unknown", "*plain?k=v", "*plain?k=v"}));
    EXPECT_EQ(Resolve({"unknown", "plain"}), (Names{"*unknown", "*plain"})) << "the first file tells for all";
}

TEST_F(Resolving, ContainersAmongSeveralFilesGiveAllThatIsInThem) {
    EXPECT_EQ(Resolve({"plain", "deep", "other"}), (Names{"*plain", "other", "*deep/one", "*deep/in", "*deep/in/two"}));
    EXPECT_EQ(Resolve({"deep", "plain", "deep"}, BDINode_Thematic),
              (Names{"plain", "*deep/in", "*deep/road", "*deep/in", "*deep/road"}));
    EXPECT_EQ(Resolve({"deep", "deep"}, 2, nullptr, 1), (Names{"*deep", "*deep"})) << "not when saving";
    EXPECT_TRUE(resolved);
}

TEST_F(Resolving, ATableGivesItsFirstChildAndEndsTheLook) {
    EXPECT_EQ(Resolve({"tables"}, BDINode_Table), Names{"*tables/t"});
    EXPECT_EQ(Resolve({"other", "tables", "other"}, BDINode_Table), (Names{"other", "*tables/t", "*other"}))
        << "the last is not looked at any more";
}

TEST_F(Resolving, AContainerThatHoldsItselfComesToAnEnd) {
    ScriptedNode root{.name = "loop"};
    for (int depth = 0; depth < 300; ++depth)
        root = ScriptedNode{.name = "n", .children = {root}};
    Tree("loop", root);
    EXPECT_EQ(Resolve({"loop"}), Names{"*loop"});
    EXPECT_LT(Resolve({"loop", "plain"}).size(), 100U);
}

TEST_F(Resolving, AFileWithoutAFormatsDriverTakesOneThatReadsItsContainer) {
    TempFolder const folder;
    DString const file = folder.Write("a.tre", "x");
    auto &container = ScriptedDrivers::AddTree("CONTAINER", "*.tre");
    container.SetTree(file, {.name = "a", .children = {{.name = "one", .type = BDINode_Raster}}});
    hasFormat = false;
    EXPECT_EQ(Resolve({file, folder.Write("b.txt")}), (Names{folder / "b.txt", "*" + file + "/one"}));
}

} // namespace
} // namespace zelvar::test
