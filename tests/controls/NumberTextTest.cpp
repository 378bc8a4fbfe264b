#include "zelvar/controls/core/NumberText.h"

#include "support/Test.h"

#include <ostream>

namespace zelvar {

void PrintTo(NumberReading const &reading, std::ostream *out); // found by the test library
void PrintTo(NumberReading const &reading, std::ostream *out) {
    *out << static_cast<int>(reading.state) << ' ' << reading.value;
}

namespace {

using State = NumberReading::State;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ReadNumber, TakesWhatPeopleTypeAndPasteAndNothingElse) {
    test::Rows<State, double, std::vector<char const *>> const cases = {
        {State::Empty, 0, {"", " \t"}},
        {State::Number, 0, {"1e-400", "0e99999999999999999999"}},
        {State::Number, 0.0015, {"1,5E-3"}},
        {State::Number, 0.5, {".5"}},
        {State::Number, 1.234, {"1,234"}}, // the only mark is the decimal one
        {State::Number, 1.5, {"1,5"}},
        {State::Number, -1.5, {"  -1.5 \n"}},
        {State::Number, 3, {"+3"}},
        {State::Number, 5, {"5."}},
        {State::Number, -5, {"\u22125"}},
        {State::Number, 12, {"12"}},
        {State::Number, 100, {"1e+2"}},
        {State::Number, 1000, {"1e3"}},
        {State::Number, 1234.5, {"1,234.5", "1.234,5", "1 234,5"}},
        {State::Number, 12345, {"12\u2019345"}},
        {State::Number, 12345.6, {"12'345.6"}},
        {State::Number, 1234567, {"1.234.567", "1\u00A0234\u202F567"}},
        {State::Number, 1234567.25, {"1,234,567.25"}},
        {State::TooLarge, kInfinity, {"1e400", "0.00001e400"}},
        {State::TooLarge, -kInfinity, {"-1e99999999999999999999"}},
        {State::Partial, 0, {"-", ".", "-,", "1e", "1e-", "e5", "1e5.5", "1 2", "1234 567", " 1  234", "1,2,3"}},
        {State::Partial,
         0,
         {"1,23.4", "1,234.567,8", "1,234.567.890", "1.5 000", "1 234,567.8"}}, // the last parts thousands in two ways
        {State::Refused, 0, {"0x10", "nan", "-inf", "1e5e", "1-2", "--1", "12 px", "\u0663"}}};
    for (auto const &[state, value, texts] : cases)
        for (char const *const text : texts)
            EXPECT_EQ(ReadNumber(text), (NumberReading{.state = state, .value = value})) << '"' << text << '"';
}

TEST(ReadNumber, AVeryLongTextIsRefusedWhole) {
    EXPECT_EQ(ReadNumber("0." + DString(kLongestNumber - 2, '3')).state, State::Number);
    EXPECT_EQ(ReadNumber("0." + DString(kLongestNumber - 1, '3')).state, State::Refused);
    EXPECT_EQ(ReadNumber(DString(kLongestNumber, '9')).state, State::TooLarge);
    EXPECT_EQ(ReadNumber(DString(1 << 20, '9')).state, State::Refused);
}

TEST(WriteNumber, TheShortestTextIsTheSameDoubleAgain) {
    for (double const value : {0.1, -0.0, 1.0 / 3, 5e-324, 1.7976931348623157e308, 123456789012345.6, 1e15, 9.99e-6}) {
        EXPECT_EQ(ReadNumber(WriteNumber(value)).value, value);
        EXPECT_EQ(std::signbit(ReadNumber(WriteNumber(value)).value), std::signbit(value)) << value;
    }
    EXPECT_EQ(WriteNumber(100000), "100000");
    EXPECT_EQ(WriteNumber(1e22), "1e+22");
}

TEST(WriteNumber, RoundsToDecimalsAndShowsNoNegativeZero) {
    EXPECT_EQ(WriteNumber(2.5, 2), "2.50");
    EXPECT_EQ(WriteNumber(-0.004, 2), "0.00");
    EXPECT_EQ(WriteNumber(-0.006, 2), "-0.01");
    EXPECT_EQ(WriteNumber(1e300, 2), "1e+300");
    EXPECT_EQ(RoundNumber(3.14159, 2), 3.14);
}

TEST(StepNumber, LeavesNoDust) {
    EXPECT_EQ(StepNumber(0, 0.1, 3), 0.3);
    EXPECT_EQ(StepNumber(1.005, 0.1, -10), 0.005);
    EXPECT_EQ(StepNumber(1e22, 1, 1), 1e22);
    EXPECT_EQ(StepNumber(1.7e308, 1.7e308, 1), kInfinity);
}

} // namespace
} // namespace zelvar
