#include "zelvar/base/Translation.h"
#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/SaveTarget.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <tuple>

namespace zelvar {

namespace {

constexpr std::size_t kLongestCaption = 511; // bytes

/// The number that a text begins with, as it is read everywhere: 0 where there is none.
template <class Number>
Number NumberAtStart(std::string_view text) {
    std::size_t const begin = text.find_first_not_of(" \t\r\n");
    text.remove_prefix(begin == std::string_view::npos ? text.size() : begin);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    Number value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        value = text.starts_with('-') ? std::numeric_limits<Number>::lowest() : std::numeric_limits<Number>::max();
    return value;
}

/// What stands for a missing value in a column of any type.
bool StandsForNothing(DString const &text) { return text == "---" || EqualNoCase(text, "undefined"); }

void WriteCell(IAttrData &table, ADIColType type, DString const &text) {
    bool const mayBeNumber = !StandsForNothing(text);
    if (mayBeNumber && type == ADICol_Int)
        table.WriteInt(NumberAtStart<std::int64_t>(text));
    else if (mayBeNumber && type == ADICol_Double)
        table.WriteDouble(NumberAtStart<double>(text));
    else
        table.WriteString(text.c_str());
}

/// As long as the buffer that captions are read into, whole characters.
DString CutCaption(DString caption) {
    std::size_t end = std::min(caption.size(), kLongestCaption);
    while (end < caption.size() && end > 0 && (static_cast<unsigned char>(caption[end]) & 0xC0U) == 0x80)
        --end;
    caption.resize(end);
    return caption;
}

} // namespace

void CZelListCtrl::SaveToFile() {
    std::optional<TableTarget> const target = AskSaveTarget(this, Translated("Save contents"));
    if (!target)
        return;
    DString const format = ADIFile::WriteFormatOf(target->path, target->formatId);
    ADIFile table(DFile(target->path), format.c_str(), tdFormatAccess_Write, nullptr, "");
    table.InitTable(m_numRow + 1, m_numCol);
    for (int col = 0; col < m_numCol; ++col)
        table.AddCol(CutCaption(GetColCaption(col)).c_str(), GetColType(col));
    std::vector<DString> cells(static_cast<std::size_t>(m_numCol));
    for (int row = 0; row < m_numRow; ++row) {
        for (int col = 0; col < m_numCol; ++col)
            cells[static_cast<std::size_t>(col)] = GetItemText(row, col);
        // A list that reads its rows on demand learns here that it has no more.
        if (row >= m_numRow)
            break;
        table.AddRow();
        for (int col = 0; col < m_numCol; ++col)
            WriteCell(table, GetColType(col), cells[static_cast<std::size_t>(col)]);
    }
    std::ignore = table.Finish(); // what fails stands in the log
}

} // namespace zelvar
