#include "support/TablesTest.h"
#include "zelvar/data/IRowStore.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/DriverModule.h"

#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace zelvar {
namespace {

using Lines = std::vector<DString>;

/// The rows by their numbers, from the last on, written down in their order; nothing where they have none.
std::optional<Lines> Picked(DString const &path) {
    ADIFile table(DFile(path), "", tdFormatAccess_Read, nullptr, nullptr);
    std::shared_ptr<IRowStore> const store = table.GetRowStore();
    if (store == nullptr || !store->CountOn(1'000'000, nullptr) || !store->Known().isEnd)
        return std::nullopt;
    auto const columns = static_cast<std::size_t>(table.GetNumCols());
    Lines lines;
    for (std::int64_t row = store->Known().rows; row-- > 0;) {
        ADIRows read;
        EXPECT_TRUE(store->Read({row}, read, nullptr));
        lines.emplace(lines.begin());
        for (std::size_t col = 0; col < columns; ++col)
            lines.front() += (col == 0 ? "" : "|") + DString(read.Cell(col));
    }
    return lines;
}

/// Tables that somebody else wrote, badly or with bad intent.
struct HardTables : test::TablesTest {
    /// A table of one column "t" with these bytes in its one row.
    [[nodiscard]] DString WriteDbf(char const *name, DString const &bytes) const {
        DString text(32, '\0');
        text[0] = 3;
        text[4] = 1;
        text[8] = 65;
        text[10] = static_cast<char>(1 + bytes.size());
        DString field = "t";
        field.resize(11);
        field += 'C';
        field.resize(16);
        field += static_cast<char>(bytes.size());
        field.resize(32);
        return m_folder.Write(name, text + field + "\r " + bytes + "\x1A");
    }
};

DString Utf16(std::u16string_view text, bool bigEndian) {
    DString bytes;
    for (char16_t const unit : text) {
        auto const low = static_cast<char>(unit & 0xFFU);
        auto const high = static_cast<char>(unit >> 8U);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST_F(HardTables, TextsOfCommaSeparatedValuesAreTakenApartByTheBook) {
    for (auto const &[name, bytes, expected] : test::Rows<char const *, DString, Lines>{
             {"semicolons.csv", "a;b\n1,5;\"x;y\"\n", {"a:3|b:3", "1,5|x;y"}},
             {"tabs.txt", "a\tb\n1\t2\n", {"a:1|b:1", "1|2"}},
             {"bars.psv", "a|b,c\n1|2\n", {"a:1|b,c:1", "1|2"}},
             {"tabs.tsv", "a,b\tc\n1\t2", {"a,b:1|c:1", "1|2"}},
             {"no names.csv", "1,x\n2,y\n", {"field_1:1|field_2:3", "1|x", "2|y"}},
             {"lonely.csv", "word\n1\n\n\"\"\n2\n", {"word:1", "1", "", "2"}},
             {"old line ends.csv", "a,b\r1,2\r3,4\r", {"a:1|b:1", "1|2", "3|4"}},
             {"ragged.csv", "a,b\n1\n1,2,3\n", {"a:1|b:1|field_3:1", "1||", "1|2|3"}},
             {"open quote.csv", "a,b\n1,\"2\n3,4\n", {"a:1|b:3", "1|2\n3,4\n"}},
             {"text behind quote.csv", "a,b\n\"1\"2,\"x\"\"\"\n", {"a:1|b:3", "12|x\""}},
             {"mark.csv", "\xEF\xBB\xBF\"a\",b\n1,2\n", {"a:1|b:1", "1|2"}},
             {"no UTF-8.csv", "a,\xFC\nx\x80,\xC3\xA4\n", {"a:3|\xC3\xBC:3", "x\xE2\x82\xAC|\xC3\x83\xC2\xA4"}},
             {"no UTF-8.tcsv", "\xFC,\x81\n", {"\xC3\xBC:3", "\xEF\xBF\xBD"}},
             {"damaged UTF-8.csv", "a,\xC3\xA4\n\xC3,\xC3\xA4\n", {"a:3|\xC3\xA4:3", "\xEF\xBF\xBD|\xC3\xA4"}},
             {"marked.csv", "\xEF\xBB\xBF\xFC\n1\n", {"\xEF\xBF\xBD:1", "1"}},
             {"numbers.csv",
              "a,b,c,d,e\n1,1,-1,1.,1e5\n00,2.5,1234567890123456789,x,nan\n",
              {"a:3|b:2|c:3|d:3|e:3", "1|1|-1|1.|1e5", "00|2.5|1234567890123456789|x|nan"}},
             {"typed.csv",
              "code,n,x,t,empty\r\n007,1,1.50,a,\r\n010,-2,3,\"b \"\"c\"\",\nd\",\r\n",
              {"code:3|n:1|x:2|t:3|empty:3", "007|1|1.50|a|", "010|-2|3|b \"c\",\nd|"}},
             {"names only.csv", "a,b\n", {"a:3|b:3"}},
             {"one name.csv", "a", {"a:3"}},
             {"short line.tcsv", "a,1,2\nb,x\n", {"a:1|b:3", "1|x", "2|"}},
         }) {
        DString const path = m_folder.Write(name, bytes);
        EXPECT_EQ(Read(path), expected) << name;
        if (auto const picked = Picked(path)) {
            EXPECT_EQ(*picked, Lines(expected.begin() + 1, expected.end())) << name;
        }
    }
    DString const text = m_folder.Write("options.csv", "1;2\n3;4\n");
    EXPECT_EQ(Read(text + "?HEADERS=YES&SEPARATOR=COMMA"), (Lines{"1;2:3", "3;4"}));
    DString const greek = m_folder.Write("greek.csv", "\xC1\n" + DString(300'000, 'x') + "\n\xC2\n");
    EXPECT_EQ(Read(greek + "?ENCODING=ISO-8859-7").front(), "\xCE\x91:3");
    EXPECT_EQ(Open(greek).GetEncoding(), "windows-1252 (assumed)");
    // What comes late speaks for itself.
    EXPECT_EQ(Read(m_folder.Write("late.csv", DString(300'000, 'x') + "\n\xC1\n\xC3\xA4\n")),
              (Lines{DString(1024, 'x') + ":3", "\xC3\x81", "\xC3\xA4"}));
    EXPECT_EQ(Read(m_folder.Write("table.dat", "a b\n1 2\n") + "?SEPARATOR=SPACE", "TXT"), (Lines{"a:1|b:1", "1|2"}));
    for (DString const &bytes : {DString(), DString("\xEF\xBB\xBF"), DString("a,b\n\0\n", 6)})
        EXPECT_EQ(Read(m_folder.Write("none.csv", bytes)), Lines{"closed"});
}

TEST_F(HardTables, EncodingsAreThoseThatTheFileStates) {
    std::u16string text = u"\uFEFFn,t\r\n";
    for (int i = 0; i < 40'000; ++i)
        text += u"1,\u00E4\U0001F600\r\n";
    text += u"2,\xD83D\xDE00\xDE00x\xD83D\r\n3,\xD83D";
    for (bool const bigEndian : {false, true}) {
        ADIFile table = Open(m_folder.Write("a.csv", Utf16(text, bigEndian) + "z"));
        ASSERT_EQ(table.GetColName(1), "t");
        EXPECT_EQ(table.GetColType(0), ADICol_Int);
        ASSERT_TRUE(table.SetRow(40'000));
        EXPECT_EQ(table.GetText(1), "\xF0\x9F\x98\x80\xEF\xBF\xBDx\xEF\xBF\xBD");
        ASSERT_TRUE(table.SetRow(39'999));
        EXPECT_EQ(table.GetText(1), "\xC3\xA4\xF0\x9F\x98\x80");
        ASSERT_TRUE(table.SetRow(40'001)); // half a character at the end is none
        EXPECT_FALSE(table.SetRow(40'002));
    }
}

TEST_F(HardTables, EncodingsOfDBaseAreThoseOfTheCodePageBesideOrOfTheByteForTheLanguage) {
    // `language`: 3 Windows, 2 what came before it, 0x57 "ANSI", 0x65 Russian before Windows
    // `page`: content of the file beside it; null for none
    DString const wrong = "\xEF\xBF\xBD";
    DString const both = "\xC3\xA4\xE2\x80\x9E"; // a German letter and a quote
    DString const russian = "\xD1\x84\xD0\x94";
    for (auto const &[language, page, bytes, shown] : test::Rows<char, char const *, DString, DString>{
             {'\x03', nullptr, "\xE4\x84", both},
             {'\x02', nullptr, "\xE4\x84", "\xC3\xB5\xC3\xA4"},
             {'\x57', nullptr, "\xE4\x84", both},
             {'\x65', nullptr, "\xE4\x84", russian},
             {'\x57', "1251", "\xE4\x84", "\xD0\xB4\xE2\x80\x9E"},
             {'\x00', "1252", "\xE4\x84", both},
             {'\x00', "CP1252", "\x81\xE4", wrong + "\xC3\xA4"}, // the first one is none
             {'\x00', "ANSI 1252", "\xE4\x84", both},
             {'\x00', "ISO-8859-1", "\xE4", "\xC3\xA4"},
             {'\x00', "CP866\r\n", "\xE4\x84", russian},
             {'\x00', "SJIS", "\x93\xFA\x93", "\xE6\x97\xA5" + wrong},
             {'\x00', "UTF-8", "\xE4 \xC3\xA4", wrong + " \xC3\xA4"},
             {'\x00', "nonsense", "\xE4 \xC3\xA4", wrong + " \xC3\xA4"},
             {'\x03', "nonsense", "\xE4\x84", both},
             {'\x00', nullptr, "\xE4 \xC3\xA4", wrong + " \xC3\xA4"}}) {
        DString const dbf = WriteDbf("a.dbf", bytes);
        std::fstream(dbf, std::ios::in | std::ios::out | std::ios::binary).seekp(29).put(language);
        std::filesystem::remove(m_folder / "a.cpg");
        if (page != nullptr)
            m_folder.Write("a.cpg", page);
        EXPECT_EQ(Read(dbf), (Lines{"t:3", shown})) << int{language} << (page == nullptr ? "" : page);
    }
    EXPECT_EQ(Read(WriteDbf("b.dbf", "\x84") + "?ENCODING=CP866"), (Lines{"t:3", "\xD0\x94"}));
}

TEST_F(HardTables, CellsKeepWhateverBytesTheyHold) {
    DString const head(5000, 'x'); // or the NUL would make it no text
    DString const large(1'000'000, 'y');
    DString const odd("a\0b\r\n\tc", 7);
    ADIFile table = Open(m_folder.Write("a.csv", "t,u\n" + head + ",1\n\"" + odd + "\",2\n" + large + ",3\n"));
    ASSERT_TRUE(table.SetRow(1)) << table.GetError();
    EXPECT_EQ(table.GetText(0), odd);
    ASSERT_TRUE(table.SetRow(2));
    EXPECT_EQ(table.GetText(0), large);
    EXPECT_FALSE(table.SetRow(3));
}

TEST_F(HardTables, AFileThatClaimsMoreRowsThanItHasEndsWhereItsDataEnds) {
    DString const path = m_folder / "a.dbf";
    {
        ADIFile table(DFile(path), "DBF", tdFormatAccess_Write, nullptr, "");
        table.AddCol("n", ADICol_Int);
        for (int row = 0; row < 1000; ++row) {
            table.AddRow();
            table.WriteInt(row);
        }
        ASSERT_TRUE(table.Finish());
    }
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4).write("\xFF\xFF\xFF\x7F", 4);
    file.close();
    std::filesystem::resize_file(path, 32 + 32 + 1 + 700 * 4);
    ADIFile table = Open(path);
    EXPECT_TRUE(table.SetRow(699));
    EXPECT_EQ(table.GetText(0), "699");
    EXPECT_FALSE(table.SetRow(700));
    EXPECT_FALSE(table.SetRow(2'000'000'000));
    EXPECT_TRUE(table.SetRow(0));
}

TEST_F(HardTables, LayersAreTablesWithoutTheirPlaces) {
    m_folder.Write("a.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{"id":1,"x":0.5},"geometry":{"type":"Point","coordinates":[1,2]}},
        {"type":"Feature","properties":{"id":2,"x":null},"geometry":null}]})");
    EXPECT_EQ(Read(m_folder / "a.geojson"), (Lines{"id:1|x:2", "1|0.5", "2|"}));
    test::ConvertTable(m_folder / "a.geojson", m_folder / "a.shp", "ESRI Shapefile");
    EXPECT_EQ(Read(m_folder / "t.shp"), Lines{"closed"});
    std::filesystem::resize_file(m_folder / "a.shp", 100); // the places are not asked for
    EXPECT_EQ(Read(m_folder / "a.shp"), (Lines{"id:1|x:2", "1|0.5", "2|"}));
    m_folder.Write("picture.csv", DString("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16));
    EXPECT_EQ(Read(m_folder / "picture.csv"), Lines{"closed"});
    EXPECT_EQ(Read(m_folder.Folder("folder.csv")), Lines{"closed"});
    ASSERT_EQ(mkfifo((m_folder / "pipe.csv").c_str(), 0600), 0);
    EXPECT_EQ(Read(m_folder / "pipe.csv"), Lines{"closed"});
    EXPECT_NE(Open(m_folder / "pipe.csv").GetError(), "");
}

TEST_F(HardTables, SizesOutOfProportionEndATableAndNothingElse) {
    DString line;
    for (int col = 0; col < 100'000; ++col)
        line += "v,";
    ADIFile wide = Open(m_folder.Write("wide.csv", line + "x\n" + line + "1\n" + line + "2\n"));
    ASSERT_EQ(wide.GetNumCols(), 100'001);
    ASSERT_TRUE(wide.SetRow(1));
    EXPECT_EQ(wide.GetText(100'000), "2");
    EXPECT_FALSE(wide.SetRow(2));
    EXPECT_EQ(Open(m_folder.Write("wider.csv", DString(200'000, ',') + "\n")).GetNumCols(), 0);

    DString cell;
    cell.resize(20'000'000, 'x');
    DString const fat = m_folder.Write("fat.csv", "a,b\n1," + cell + "\n2,y\n3,\"");
    std::filesystem::resize_file(fat, std::uintmax_t{2} << 30U); // a cell of 2 GB
    ADIFile table = Open(fat);
    ASSERT_TRUE(table.SetRow(0));
    EXPECT_EQ(table.GetText(1).size(), std::size_t{16} << 20U);
    ASSERT_TRUE(table.SetRow(1));
    EXPECT_EQ(table.GetText(1), "y");
    EXPECT_FALSE(table.SetRow(2));
    EXPECT_TRUE(table.SetRow(0));
    std::filesystem::remove(fat);
}

TEST_F(HardTables, ARequestThatIsStoppedYieldsNoRowAndTheNextOneGoesOn) {
    DString const path = m_folder.Write("a.csv", Numbered(20'000));
    ADIFile table = Open(path);
    ASSERT_TRUE(table.SetRow(10));
    {
        RequestScope const stopped(RequestKind::Properties, [] { return true; });
        EXPECT_TRUE(table.SetRow(11)); // is here already
        EXPECT_FALSE(table.SetRow(19'999));
        EXPECT_TRUE(table.HasFailed());
        EXPECT_FALSE(table.SetRow(12)); // of what was given up nothing is left
        EXPECT_FALSE(Open(path).IsOpen());
    }
    {
        RequestScope const late(RequestKind::Properties, {}, std::chrono::milliseconds(0));
        EXPECT_FALSE(table.SetRow(19'999));
    }
    ASSERT_TRUE(table.SetRow(19'999));
    EXPECT_EQ(table.GetText(0), "19999");
    EXPECT_FALSE(table.SetRow(20'000));
    EXPECT_FALSE(table.HasFailed());
}

TEST_F(HardTables, AReaderThatIsLostIsReplacedAtTheRow) {
    ADIFile table = Open(m_folder.Write("a.csv", Numbered(20'000)));
    for (int const row : {0, 300, 15'000, 14'000}) {
        ASSERT_TRUE(table.SetRow(row));
        EXPECT_EQ(table.GetText(0), std::to_string(row));
        EndReaders(); // where there are any
    }
}

TEST_F(HardTables, RowsAreFoundByTheirNumbersAndSortedUnlessTheFileIsAnotherOne) {
    DString const path = m_folder.Write("a.csv", Numbered(20'000));
    std::shared_ptr<IRowStore> store = Open(path).GetRowStore(); // the table itself is closed
    ASSERT_NE(store, nullptr);
    ASSERT_TRUE(store->CountOn(15'000, nullptr));
    EXPECT_FALSE(store->Known().isEnd);
    ADIRows rows;
    RowOrder order;
    DError error;
    EXPECT_FALSE(store->Read({19'999}, rows, &error)); // not known yet
    for (bool const ascending : {true, false}) {
        ASSERT_TRUE(store->CountOn(30'000, nullptr));
        EXPECT_EQ(store->Known().rows, 20'000);
        ASSERT_TRUE(store->Sort(0, ascending, order, nullptr));
        EXPECT_EQ(order.rows[1], ascending ? 19'998U : 1U);
        EXPECT_FALSE(order.IsTied(1));
        ASSERT_TRUE(store->Sort(1, ascending, order, nullptr));
        EXPECT_TRUE(order.rows[1] == 1 && order.IsTied(1));
        ASSERT_TRUE(store->Read({19'999, 3, 4, 3}, rows, nullptr));
        EXPECT_EQ(rows.texts, "19999343");
        EndReaders(); // where there are any, the next one finds the same
    }
    {
        RequestScope const stopped(RequestKind::Properties, [] { return true; });
        EXPECT_FALSE(store->Sort(0, true, order, &error));
    }
    EXPECT_FALSE(store->Sort(2, true, order, &error));
    std::fstream(path, std::ios::in | std::ios::out | std::ios::app) << "more,\n"; // behind what is known
    EXPECT_TRUE(store->Read({3}, rows, &error)) << error.Text();
    std::fstream(path, std::ios::in | std::ios::out).seekp(50'000).put('x');
    EXPECT_TRUE(store->Read({3}, rows, &error)) << error.Text();
    EXPECT_FALSE(store->Sort(0, true, order, &error));
    EXPECT_THAT(error.Text(), HasSubstr("has changed"));
    EndReaders();
    EXPECT_EQ(store->Read({3}, rows, &error), std::getenv("ZELVAR_TEST_READER") == nullptr);
    m_folder.Write("a.csv", "n,m\nanother,one\n");
    EXPECT_FALSE(store->Read({3}, rows, &error));
}

TEST_F(HardTables, RowsComeInAnyOrder) {
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

TEST_F(HardTables, AllKindsOfTablesAreRead) {
    DString const csv = m_folder.Write("t.csv", "id,name,x\n1,\xC3\xA4,0.1\n2,b,\n");
    test::Rows<char const *, char const *, char const *> const cases = {
        {"GPKG", "t.gpkg", ""},      {"GPKG", "l.gpkg", "?LAYER=t"}, {"SQLite", "t.sqlite", "?LAYER=t"},
        {"XLSX", "t.xlsx", ""},      {"ODS", "t.ods", ""},           {"ESRI Shapefile", "t.dbf", ""},
        {"GeoJSON", "t.geojson", ""}};
    for (auto const &[format, file, suffix] : cases) {
        test::ConvertTable(csv, m_folder / file, format);
        EXPECT_EQ(Read((m_folder / file) + suffix), (Lines{"id:1|name:3|x:2", "1|\xC3\xA4|0.1", "2|b|"})) << file;
    }
    EXPECT_EQ(Read((m_folder / "l.gpkg") + "?LAYER=no"), (Lines{"closed"}));
}

} // namespace
} // namespace zelvar
