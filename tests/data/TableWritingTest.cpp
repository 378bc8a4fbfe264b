#include "support/Processes.h"
#include "support/TablesTest.h"

#include <charconv>
#include <filesystem>

namespace zelvar {
namespace {

using testing::Contains;
using Lines = std::vector<DString>;

constexpr std::int64_t kMostInt = std::numeric_limits<std::int64_t>::max();

using TableWriting = test::TablesTest;

/// A table with what formats find hard.
void WriteHardTable(ADIFile &table) {
    table.InitTable(3, 4);
    table.AddCol("name, \"x\"", ADICol_String);
    table.AddCol("n", ADICol_Int);
    table.AddCol("d", ADICol_Double);
    table.AddCol("e", ADICol_None);
    table.AddRow();
    table.WriteString("a\r\nb");
    table.WriteInt(kMostInt);
    table.WriteDouble(0.1);
    table.WriteString("x");
    table.WriteString("one too many");
    table.AddRow();
    table.WriteString("\xC3\xA4\xFF");
    table.WriteInt(-7);
    table.AddRow();
    table.WriteString(nullptr);
    table.WriteString("---");
    table.WriteDouble(1e300);
}

TEST_F(TableWriting, CommaSeparatedValuesAreWrittenByTheBook) {
    for (char const *format : {"CSV", "csv", "TXT", "", static_cast<char const *>(nullptr)}) {
        DString const path = m_folder / "a.csv";
        ADIFile table = Writer(path, format);
        WriteHardTable(table);
        EXPECT_EQ(test::ReadFile(path), "");
        ASSERT_TRUE(table.Finish());
        EXPECT_EQ(test::ReadFile(path), "\"name, \"\"x\"\"\",n,d,e\r\n"
                                        "\"a\r\nb\",9223372036854775807,0.1,x\r\n"
                                        "\xC3\xA4\xEF\xBF\xBD,-7,,\r\n"
                                        ",---,1e+300,\r\n");
        EXPECT_FALSE(table.Finish());
        std::filesystem::remove(path);
    }
    EXPECT_EQ(test::CountIn(m_folder.Path()), 0U);
}

TEST_F(TableWriting, ATransposedTableHasALineForEachColumn) {
    DString const path = m_folder / "a.tcsv";
    ADIFile table = Writer(path, "TCSV");
    WriteHardTable(table);
    ASSERT_TRUE(table.Finish());
    EXPECT_EQ(test::ReadFile(path), "\"name, \"\"x\"\"\",\"a\r\nb\",\xC3\xA4\xEF\xBF\xBD,\r\n"
                                    "n,9223372036854775807,-7,---\r\n"
                                    "d,0.1,,1e+300\r\n"
                                    "e,x,,\r\n");
    Lines const expected{"name, \"x\":3|n:3|d:2|e:3", "a\r\nb|9223372036854775807|0.1|x", "\xC3\xA4\xEF\xBF\xBD|-7||",
                         "|---|1e+300|"};
    EXPECT_EQ(Read(path), expected);
    std::filesystem::rename(path, m_folder / "a.txt");
    EXPECT_EQ(Read(m_folder / "a.txt", "TCSV"), expected);
}

TEST_F(TableWriting, ATableOfOneColumnKeepsItsEmptyCells) {
    for (char const *format : {"CSV", "TCSV", "DBF"}) {
        DString const path = m_folder / ("a." + FoldCase(format));
        ADIFile table = Writer(path, format);
        table.AddCol("only", ADICol_String);
        for (char const *text : {"a", "", "b", ""}) {
            table.AddRow();
            table.WriteString(text);
        }
        ASSERT_TRUE(table.Finish());
        EXPECT_EQ(Read(path), (Lines{"only:3", "a", "", "b", ""})) << format;
    }
    ADIFile none = Writer(m_folder / "none.csv", "CSV");
    none.AddRow();
    none.WriteString("x");
    EXPECT_TRUE(none.Finish());
    EXPECT_EQ(test::ReadFile(m_folder / "none.csv"), "");
}

TEST_F(TableWriting, NumbersComeBackAsTheyWere) {
    constexpr double most = std::numeric_limits<double>::max();
    std::vector<double> const values{
        0, -0.0, 0.1, 1.0 / 3, 1e300, -1e-300, most, 5e-324, 12345, 1234.5678, 1e15, 1e16, -1.23456789012345e17};
    for (char const *format : {"CSV", "TCSV", "DBF"}) {
        DString const path = m_folder / ("a." + FoldCase(format));
        ADIFile table = Writer(path, format);
        table.AddCol("d", ADICol_Double);
        table.AddCol("n", ADICol_Int);
        for (double const value : values) {
            table.AddRow();
            table.WriteDouble(value);
            table.WriteInt(-99'999'999'999'999'999);
        }
        ASSERT_TRUE(table.Finish());
        ADIFile read = Open(path);
        for (std::size_t i = 0; i < values.size(); ++i) {
            ASSERT_TRUE(read.SetRow(static_cast<int>(i)));
            DString const text = read.GetText(0);
            double value = -1;
            std::from_chars(text.data(), text.data() + text.size(), value);
            EXPECT_EQ(value, values[i]) << format << " " << text;
            EXPECT_EQ(read.GetText(1), "-99999999999999999") << format;
        }
        EXPECT_EQ(read.GetColType(0), ADICol_Double) << format;
        EXPECT_EQ(read.GetColType(1), ADICol_Int) << format;
        // The reader of another house finds the same numbers.
        EXPECT_EQ(test::NumbersOf(path, "d"), DString(format) == "TCSV" ? std::vector<double>() : values) << format;
    }
}

TEST_F(TableWriting, ADbaseTableSaysWhatItHadNoRoomFor) {
    Lines log;
    auto const former = Report::SetTraceHandler([&](int, DString const &line) { log.push_back(line); });
    DString const path = m_folder / "a.dbf";
    m_folder.Write("a.cpg", "ISO-8859-1");
    ADIFile table = Writer(path, "DBF");
    for (char const *name :
         {"a long name 1", "a long name 2", "A LONG NAME 3", "", "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4x\xC3\xA4"})
        table.AddCol(name, ADICol_String);
    table.AddCol("n", ADICol_Int);
    table.AddRow();
    table.WriteString((DString(253, 'x') + "\xC3\xA4").c_str());
    for (char const *text : {"b", "", "c", "\xC3\xA4", "undefined"})
        table.WriteString(text);
    table.AddRow();
    for (int col = 0; col < 5; ++col)
        table.WriteString("");
    table.WriteDouble(std::numeric_limits<double>::quiet_NaN());
    table.AddRow();
    for (int col = 0; col < 5; ++col)
        table.WriteString("");
    table.WriteString("12");
    ASSERT_TRUE(table.Finish());
    Report::SetTraceHandler(former);
    EXPECT_EQ(Read(path),
              (Lines{"a long nam:3|a long n_1:3|A LONG N_2:3|Field4:3|\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4x:3|n:1",
                     DString(253, 'x') + "|b||c|\xC3\xA4|", "|||||", "|||||12"}));
    EXPECT_EQ(test::ReadFile(m_folder / "a.cpg"), "UTF-8");
    EXPECT_THAT(log, Contains(HasSubstr("1 texts are cut at 254 bytes")));
    EXPECT_THAT(log, Contains(HasSubstr("2 cells that hold no numbers are left empty")));
    EXPECT_THAT(log, Contains(HasSubstr("column \"a long name 2\" is \"a long n_1\"")));
    EXPECT_EQ(std::filesystem::file_size(path), 32U + 6 * 32 + 1 + 3 * (1 + 253 + 1 + 1 + 1 + 2 + 2) + 1);
}

TEST_F(TableWriting, WideTablesAreWrittenAsFarAsTheFormatGoes) {
    for (int const columns : {300, 2046, 2047})
        for (char const *format : {"CSV", "DBF"}) {
            DString const path = m_folder / (std::to_string(columns) + "." + FoldCase(format));
            ADIFile table = Writer(path, format);
            for (int col = 0; col < columns; ++col)
                table.AddCol(("column " + std::to_string(col)).c_str(), ADICol_String);
            table.AddRow();
            for (int col = 0; col < columns; ++col)
                table.WriteString(std::to_string(col).c_str());
            bool const fits = columns <= 2046 || DString(format) == "CSV";
            EXPECT_EQ(table.Finish(), fits) << path;
            EXPECT_EQ(std::filesystem::exists(path), fits) << path;
            if (!fits)
                continue;
            ADIFile read = Open(path);
            EXPECT_EQ(read.GetNumCols(), columns);
            EXPECT_TRUE(read.SetRow(0));
            EXPECT_EQ(read.GetText(columns - 1), std::to_string(columns - 1));
        }
}

TEST_F(TableWriting, WhatCannotBeWrittenLeavesTheFormerTable) {
    m_folder.Write("a.cpg", "old");
    for (char const *format : {"CSV", "TCSV", "DBF"}) {
        DString const path = m_folder.Write("a." + FoldCase(format), "old");
        std::size_t const files = test::CountIn(m_folder.Path());
        bool finished = true;
        {
            ADIFile table = Writer(path, format);
            EXPECT_TRUE(table.IsOpen());
            WriteHardTable(table);
            test::FullDisk const full(4);
            finished = table.Finish();
        }
        EXPECT_FALSE(finished) << format;
        EXPECT_EQ(test::ReadFile(path), "old") << format;
        EXPECT_EQ(test::ReadFile(m_folder / "a.cpg"), "old");
        {
            ADIFile abandoned = Writer(path, format);
            WriteHardTable(abandoned);
        }
        EXPECT_EQ(test::ReadFile(path), "old") << format;
        EXPECT_EQ(test::CountIn(m_folder.Path()), files) << format;

        ADIFile nowhere = Writer(m_folder / ("no/a." + FoldCase(format)), format);
        EXPECT_FALSE(nowhere.IsOpen());
        EXPECT_NE(nowhere.GetError(), "");
        WriteHardTable(nowhere);
        EXPECT_FALSE(nowhere.Finish());
    }
    ADIFile unknown = Writer(m_folder / "a.xlsx", "XLSX");
    EXPECT_FALSE(unknown.IsOpen());
    WriteHardTable(unknown);
    EXPECT_FALSE(unknown.Finish());
    EXPECT_FALSE(unknown.SetRow(0));
}

TEST_F(TableWriting, ANameThatEndsLikeAFormatIsWrittenInIt) {
    EXPECT_EQ(ADIFile::WriteFormatOf("/a/x.dbf", "CSV"), "dbf");
    EXPECT_EQ(ADIFile::WriteFormatOf("/a/x.csv", "TCSV"), "csv");
    EXPECT_EQ(ADIFile::WriteFormatOf("/a/x.tif", "TCSV"), "TCSV");
    EXPECT_EQ(ADIFile::WriteFormatOf("/a/x", ""), "");
}

} // namespace
} // namespace zelvar
