#include "support/TablesTest.h"

namespace zelvar {
namespace {

using Lines = std::vector<DString>;

class TableReading : public test::TablesTest {};

TEST_F(TableReading, TextsOfACsvStayAsWrittenAndTypesAreThoseThatTheySuggest) {
    DString const path = m_folder.Write("a.csv", "code,n,x,t,empty\r\n"
                                                 "007,1,1.50,a,\r\n"
                                                 "010,-2,3,\"b \"\"c\"\",\nd\",\r\n");
    EXPECT_EQ(Read(path), (Lines{"code:3|n:1|x:2|t:3|empty:3", "007|1|1.50|a|", "010|-2|3|b \"c\",\nd|"}));
}

TEST_F(TableReading, RowsComeInAnyOrder) {
    ADIFile table = Open(m_folder.Write("a.csv", Numbered(3000)), "CSV");
    ASSERT_TRUE(table.IsOpen()) << table.GetError();
    for (int const row : {0, 255, 256, 2999, 1, 700, 699, 0}) {
        ASSERT_TRUE(table.SetRow(row)) << row;
        EXPECT_EQ(table.GetText(0), std::to_string(row));
    }
    EXPECT_FALSE(table.SetRow(3000));
    EXPECT_EQ(table.GetText(0), "");
    EXPECT_FALSE(table.SetRow(-1));
    EXPECT_TRUE(table.SetRow(2999));
    EXPECT_EQ(table.GetText(2), "");
    EXPECT_EQ(table.GetText(-1), "");
}

TEST_F(TableReading, AllKindsOfTablesAreRead) {
    DString const csv = m_folder.Write("t.csv", "id,name,x\n1,\xC3\xA4,0.1\n2,b,\n");
    for (auto const &[format, file, suffix] :
         std::initializer_list<std::tuple<char const *, char const *, char const *>>{{"GPKG", "t.gpkg", ""},
                                                                                     {"GPKG", "l.gpkg", "?LAYER=t"},
                                                                                     {"SQLite", "t.sqlite", "?LAYER=t"},
                                                                                     {"XLSX", "t.xlsx", ""},
                                                                                     {"ODS", "t.ods", ""},
                                                                                     {"ESRI Shapefile", "t.dbf", ""},
                                                                                     {"GeoJSON", "t.geojson", ""}}) {
        test::ConvertTable(csv, m_folder / file, format);
        EXPECT_EQ(Read((m_folder / file) + suffix), (Lines{"id:1|name:3|x:2", "1|\xC3\xA4|0.1", "2|b|"})) << file;
    }
    EXPECT_EQ(Read((m_folder / "l.gpkg") + "?LAYER=no"), (Lines{"closed"}));
}

} // namespace
} // namespace zelvar
