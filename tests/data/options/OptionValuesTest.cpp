#include "zelvar/data/options/OptionValues.h"

#include "support/Test.h"
#include "zelvar/data/options/OptionMemory.h"

namespace zelvar {
namespace {

using Kind = DriverOption::Kind;

std::vector<DriverOption> const kOptions{
    {.name = "SWITCH", .kind = Kind::Switch, .usual = "YES"},
    {.name = "FREE_SWITCH", .kind = Kind::Switch},
    {.name = "LEVEL", .kind = Kind::WholeNumber, .usual = "6", .least = 1, .most = 9},
    {.name = "SCALE", .kind = Kind::Number, .usual = "inf"},
    {.name = "FLAVOR", .kind = Kind::Choice, .usual = "STANDARD", .choices = {"STANDARD", "ESRI_PE"}},
    {.name = "NAME", .usual = "Lat", .longest = 4},
    {.name = "BARRED", .isBarred = true},
    {.name = "PASSWORD", .isSecret = true},
};

TEST(OptionValuesRule, OnlyWhatIsNotAsUsualAndAValueOfItsOptionIsWritten) {
    for (auto const &[name, value, written] :
         test::Rows<char const *, char const *, char const *>{{"SWITCH", "NO", "SWITCH=NO"},
                                                              {"SWITCH", "true", ""},
                                                              {"SWITCH", "maybe", ""},
                                                              {"FREE_SWITCH", "NO", "FREE_SWITCH=NO"},
                                                              {"FREE_SWITCH", "", ""},
                                                              {"LEVEL", "1", "LEVEL=1"},
                                                              {"LEVEL", "0", ""},
                                                              {"LEVEL", "9", "LEVEL=9"},
                                                              {"LEVEL", "10", ""},
                                                              {"LEVEL", "6.0", ""}, // the usual one
                                                              {"LEVEL", "1.5", ""},
                                                              {"LEVEL", "1x", ""},
                                                              {"SCALE", "1e-3", "SCALE=1e-3"},
                                                              {"SCALE", "inf", ""},
                                                              {"SCALE", "1,5", ""},
                                                              {"SCALE", "nan", ""},
                                                              {"FLAVOR", "esri_pe", "FLAVOR=esri_pe"},
                                                              {"FLAVOR", "standard", ""},
                                                              {"FLAVOR", "OTHER", ""},
                                                              {"NAME", "a&?%", "NAME=a%26%3F%25"},
                                                              {"NAME", "five5", ""},
                                                              {"BARRED", "1", ""},
                                                              {"PASSWORD", "p", "PASSWORD=p"},
                                                              {"OTHER", "1", ""}})
        EXPECT_EQ(ToOptionText(kOptions, {{name, value}}), written) << name << " " << value;
    EXPECT_EQ(ToOptionText(kOptions, {{"PASSWORD", "p"}, {"LEVEL", "2"}, {"SWITCH", "NO"}}, Secrets::Leave),
              "SWITCH=NO&LEVEL=2");
    EXPECT_EQ(FaultOf(kOptions[2], "0"), OptionFault::TooSmall);
    EXPECT_EQ(FaultOf(kOptions[2], "99"), OptionFault::TooLarge);
}

TEST(OptionValuesRule, TextsComeBackAsTheyWere) {
    OptionValues const values{{"LEVEL", "2"}, {"NAME", "%&=?"}};
    EXPECT_EQ(FromOptionText(ToOptionText(kOptions, values)), values);
    EXPECT_EQ(FromOptionText("A=1&A=2&B&=3&C=&D=x%20y"), (OptionValues{{"A", "2"}, {"C", ""}, {"D", "x y"}}));
    EXPECT_EQ(ValuesOf(kOptions, FromOptionText("level=2&OTHER=1")), (OptionValues{{"LEVEL", "2"}}));
}

TEST(OptionMemoryRule, TheFilesOwnComeBeforeThoseOfItsDriver) {
    OptionMemory memory;
    memory.Note("GTiff", "/a b\n.tif", "A=1&B=%20");
    memory.Note("PDF", "/a.pdf", "DPI=300");
    memory.Note("GTiff", "/c.tif", "");
    memory.Note("", "/d.tif", "A=1");
    for (OptionMemory const &known : {memory, OptionMemory::FromText(memory.ToText() + "no line of it\n\n")})
        for (auto const &[driver, file, text] :
             test::Rows<char const *, char const *, char const *>{{"GTiff", "/a b\n.tif", "A=1&B=%20"},
                                                                  {"GTiff", "/c.tif", ""},
                                                                  {"GTiff", "/other.tif", ""},
                                                                  {"PDF", "/other.pdf", "DPI=300"},
                                                                  {"PDF", "", "DPI=300"},
                                                                  {"PNG", "/a b\n.tif", ""}})
            EXPECT_EQ(known.For(driver, file), text) << driver << file;
    for (std::size_t i = 0; i < OptionMemory::kMostFiles; ++i)
        memory.Note("PNG", Format("/%zu.png", i), "P=1");
    EXPECT_EQ(memory.For("PDF", "/a.pdf"), "DPI=300"); // the driver's stays
    memory.Note("PDF", "", "DPI=72");
    EXPECT_EQ(memory.For("PDF", "/a.pdf"), "DPI=72"); // its own has gone
    EXPECT_EQ(memory.For("PNG", "/0.png"), "P=1");
}

} // namespace
} // namespace zelvar
