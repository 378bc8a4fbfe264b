#include "support/Test.h"
#include "support/Told.h"
#include "zelvar/base/Report.h"
#include "zelvar/model/DataSourceDefinitions.h"
#include "zelvar/model/DataSourceTemplates.h"

#include <filesystem>

namespace zelvar {
namespace {

/// Points the definitions and templates to a folder of the test's own and keeps what the user is told.
struct DataSourceRepositoryTest : testing::Test {
    static void Use(DString const &directory) {
        setenv("ZELVAR_DEFINITIONS_DIR", directory.c_str(), 1);
        setenv("ZELVAR_TEMPLATES_DIR", directory.c_str(), 1);
    }
    void WriteDefinition(DString const &file, DString const &name, DString const &url) const {
        m_folder.Write(file, "<DataSources><DataSource name='" + name + "' url='" + url +
                                 "'><Parameters/></DataSource></DataSources>");
    }
    static std::vector<DString> Names(DataSourceRepository const &repository) {
        std::vector<DString> names;
        for (auto const &[name, node] : repository)
            names.push_back(name);
        return names;
    }

    test::TempFolder m_folder;
    test::Environment m_environment{
        {{"ZELVAR_DEFINITIONS_DIR", m_folder.Path()}, {"ZELVAR_TEMPLATES_DIR", m_folder.Path()}}};
    test::Told m_told;
};

TEST_F(DataSourceRepositoryTest, ReadsAllFilesAndConnectionsFirst) {
    WriteDefinition("a.xml", "Alpha", "a");
    WriteDefinition("connections.xml", "Conn", "c");
    m_folder.Write("z.xml", "<DataSources><Other name='o'/><DataSource/><DataSource name=''/>"
                            "<Group><DataSource name='nested'/></Group></DataSources>");
    m_folder.Write("note.txt", "<DataSources><DataSource name='text'/></DataSources>");
    DataSourceDefinitions definitions;
    EXPECT_TRUE(definitions.Load());
    EXPECT_THAT(Names(definitions), ElementsAre("Alpha", "Conn"));
    EXPECT_EQ(definitions.GetNumFiles(), 3U);
    EXPECT_EQ(definitions.GetFile(0).file.GetName(), "connections.xml");
    EXPECT_TRUE(definitions.Load()); // does not read a second time
    EXPECT_EQ(definitions.GetNumFiles(), 3U);
    EXPECT_FALSE(definitions.GetFile(99).root);
    EXPECT_FALSE(definitions.GetFile(-1).root);
}

TEST_F(DataSourceRepositoryTest, ABrokenFileIsToldOnceAndTheOthersLoad) {
    WriteDefinition("a.xml", "Alpha", "a");
    m_folder.Write("connections.xml", "<DataSources><DataSource name='half'");
    DataSourceDefinitions definitions;
    EXPECT_TRUE(definitions.Load());
    EXPECT_THAT(Names(definitions), ElementsAre("Alpha"));
    EXPECT_THAT(m_told.Take(), ElementsAre("Connections configuration can not be read (" +
                                           (m_folder / "connections.xml") + "). Check it's validity."));
    EXPECT_EQ(definitions.GetFile(0).file.GetName(), "a.xml");
}

TEST_F(DataSourceRepositoryTest, ReadingAFileTellsWhetherItWasRead) {
    struct : DataSourceTemplates {
        using DataSourceTemplates::LoadFromXMLFile;
    } templates;
    for (auto const &[path, isRead, files] :
         test::Rows<DString, bool, unsigned>{{m_folder.Write("a.xml", "<a/>"), true, 1U},
                                             {m_folder.Write("b.xml", "<a>"), false, 1U},
                                             {m_folder / "none.xml", false, 2U}}) {
        EXPECT_EQ(templates.LoadFromXMLFile(path.c_str(), true), isRead) << path;
        EXPECT_EQ(templates.GetNumFiles(), files) << path;
    }
    EXPECT_FALSE(templates.LoadFromXMLFile(nullptr, true));
    EXPECT_TRUE(!templates.LoadFromXMLFile("/none.xml", false) && templates.GetNumFiles() == 2U);
}

TEST_F(DataSourceRepositoryTest, MissingDirectoriesGiveEmptyRepositoriesWithoutAWord) {
    for (DString const &directory : {DString(), m_folder / "missing"}) {
        Use(directory);
        DataSourceDefinitions definitions;
        DataSourceTemplates templates;
        EXPECT_FALSE(definitions.Load());
        EXPECT_FALSE(templates.Load());
        // A new user's directory is made.
        EXPECT_EQ(definitions.Save(), !directory.empty());
        EXPECT_EQ(std::filesystem::exists(m_folder / "missing/connections.xml"), !directory.empty());
    }
    EXPECT_THAT(m_told.Take(), IsEmpty());
}

TEST_F(DataSourceRepositoryTest, AMissingConnectionsFileIsWrittenBySave) {
    DataSourceDefinitions definitions;
    EXPECT_FALSE(definitions.Load());
    EXPECT_FALSE(std::filesystem::exists(m_folder / "connections.xml"));
    EXPECT_TRUE(definitions.Save());
    EXPECT_THAT(test::ReadFile(m_folder / "connections.xml"), testing::HasSubstr("<DataSources"));
    DataSourceTemplates templates;
    EXPECT_FALSE(templates.Load());
    EXPECT_EQ(templates.GetNumFiles(), 1U);
}

TEST_F(DataSourceRepositoryTest, ALaterFilesDefinitionWinsAndTheFirstStaysInItsFile) {
    WriteDefinition("a.xml", "Same", "first");
    WriteDefinition("b.xml", "Same", "second");
    DataSourceTemplates templates;
    EXPECT_TRUE(templates.Load());
    EXPECT_EQ(DataSourceRepository::GetURLFromNode(templates.Get("Same")), "second");
    EXPECT_EQ(templates.GetFile(0).root->GetFirstChild()->GetAttrStr("url"), "first");
}

TEST_F(DataSourceRepositoryTest, AddReplacesSameNamesAndNeedsARebuild) {
    m_folder.Write("connections.xml", "<DataSources><DataSource name='A' url='old'/><Kept/>"
                                      "<DataSource name='A' url='older'/><DataSource name='B'/></DataSources>");
    DataSourceDefinitions definitions;
    definitions.Load();
    auto added = std::make_unique<XMLNode>("DataSource");
    added->SetAttr("name", "A");
    added->SetAttr("url", "new");
    EXPECT_FALSE(definitions.AddDataSource(99, added.get()));
    EXPECT_FALSE(definitions.AddDataSource(-1, added.get()));
    EXPECT_FALSE(definitions.AddDataSource(0, nullptr));
    XMLNode nameless("DataSource");
    EXPECT_FALSE(definitions.AddDataSource(0, &nameless));
    EXPECT_TRUE(definitions.AddDataSource(0, std::move(added)));
    EXPECT_TRUE(definitions.IsEmpty());
    EXPECT_EQ(definitions.Rebuild(), 0);
    EXPECT_THAT(Names(definitions), ElementsAre("A", "B"));
    EXPECT_EQ(definitions.Get("A")->GetAttrStr("url"), "new");
    EXPECT_EQ(definitions.GetFile(0).root->GetChldCount(), 3);
    EXPECT_TRUE(definitions.Save());
    EXPECT_THAT(test::ReadFile(m_folder / "connections.xml"),
                testing::AllOf(testing::HasSubstr("Kept"), testing::Not(testing::HasSubstr("old"))));

    WriteDefinition("more.xml", "C", "c");
    DataSourceDefinitions two;
    two.Load();
    EXPECT_TRUE(two.AddDataSource(0, two.Get("A"))); // it sits there already
    two.Rebuild();
    EXPECT_TRUE(two.AddDataSource(0, two.Get("C"))); // it moves here from the other file
    two.Rebuild();
    EXPECT_THAT(Names(two), ElementsAre("A", "B", "C"));
    EXPECT_TRUE(two.GetFile(1).m_modified);
    EXPECT_EQ(two.GetFile(1).root->GetChldCount(), 0);
    two.GetFile(1).root->SetName("DataSource");
    two.GetFile(1).root->SetAttr("name", "root");
    EXPECT_FALSE(two.AddDataSource(0, two.GetFile(1).root.get()));

    EXPECT_FALSE(definitions.RemoveAndDeleteDataSource(0, nullptr));
    EXPECT_FALSE(definitions.RemoveAndDeleteDataSource(0, definitions.GetFile(0).root.get())) << "a root has no parent";
    EXPECT_TRUE(definitions.RemoveAndDeleteDataSource(0, definitions.Get("A")));
    definitions.Rebuild();
    EXPECT_THAT(Names(definitions), ElementsAre("B"));
}

TEST_F(DataSourceRepositoryTest, CopiesShareTheTreesAndOutliveEachOther) {
    WriteDefinition("a.xml", "Alpha", "a");
    auto original = std::make_unique<DataSourceTemplates>();
    original->Load();
    DataSourceTemplates const copy(*original);
    original.reset();
    EXPECT_EQ(copy.FindByUrl("a"), "Alpha");
    EXPECT_EQ(copy.FindByUrl("A"), "");
    EXPECT_EQ(copy.FindByUrl(""), "");
}

TEST(ApplyParams, FillsPlaceholders) {
    test::Rows<char const *, char const *, char const *> const cases = {
        {"a${x}b", "x=1", "a1b"},           {"plain", "", "plain"},
        {"${x}${y}", "x=1;;y=2;", "12"},    {"${x}", "x=1;x=2", "1"},
        {"${a}", "a=b=c", "b=c"},           {"a${x}b", "x=", "ab"},
        {"${x}", "x=${y};y=z", "z"},        {"${x}", "token without equals;x=1", "1"},
        {"${}", "=empty key", "empty key"}, {"${x", "x=1", nullptr},
        {"${X}", "x=1", nullptr},           {"${x}", "x=${x}", nullptr},
        {"${x}", "x=a${x}", nullptr},       {"${x}", "x=${x}${x}", nullptr}};
    for (auto const &[text, params, expected] : cases) { // null where it fails
        DString url = text;
        EXPECT_EQ(DataSourceRepository::ApplyParams(url, params), expected != nullptr) << text;
        EXPECT_TRUE(expected == nullptr || url == expected) << url;
    }
}

TEST(GetURLFromNode, NeedsTheParametersEvenWhereNothingIsToBeFilled) {
    for (auto const &[text, url] : test::Rows<char const *, char const *>{
             {"<DataSource url='plain'/>", ""},
             {"<DataSource url='plain'><Parameters></Parameters></DataSource>", "plain"},
             {"<DataSource url='${x'><Parameters>x=1</Parameters></DataSource>", ""}}) {
        XMLNode node;
        ASSERT_TRUE(node.LoadText(text));
        EXPECT_EQ(DataSourceRepository::GetURLFromNode(&node), url) << text;
    }
    EXPECT_EQ(DataSourceRepository::GetURLFromNode(nullptr), "");
}

} // namespace
} // namespace zelvar
