#include "zelvar/data/tables/TableTexts.h"

#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <charconv>

namespace zelvar {

bool StopPoll::IsStopped() {
    constexpr unsigned looksPerQuestion = 64; // which may be a long one
    if (m_stop != nullptr && m_stop->load(std::memory_order_relaxed))
        return true;
    RequestScope const *const scope = RequestScope::Current();
    if (scope == nullptr || m_looks++ % looksPerQuestion != 0)
        return false;
    return scope->IsStopped() || (scope->TimeLeft() && *scope->TimeLeft() <= std::chrono::milliseconds(0));
}

void AppendText(DString &out, std::string_view text, std::size_t most) {
    if (text.size() > most) {
        Report::TraceMessage(Report::kTraceDriver, "a text of %zu bytes is cut", text.size());
        std::size_t end = most;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
            --end;
        text = text.substr(0, end);
    }
    bool const isAscii =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (isAscii)
        out.append(text);
    else
        out.append(ToValidUtf8(text));
}

ADIColType SuggestedType(std::string_view text) {
    constexpr std::size_t mostDigits = 18;
    std::string_view const digits = text.starts_with('-') ? text.substr(1) : text;
    auto const isDigit = [](char c) { return c >= '0' && c <= '9'; };
    bool const begins = !digits.empty() && (isDigit(digits[0]) || digits[0] == '.');
    bool const zeroInFront = digits.size() > 1 && digits[0] == '0' && isDigit(digits[1]);
    if (!begins || zeroInFront)
        return ADICol_String;
    if (std::all_of(digits.begin(), digits.end(), isDigit))
        return digits.size() <= mostDigits ? ADICol_Int : ADICol_String;
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? ADICol_Double : ADICol_String;
}

void TypeSuggestion::Look(std::size_t column, std::string_view text) {
    // Whole numbers give way to others, and those to texts.
    static_assert(ADICol_None < ADICol_Int && ADICol_Int < ADICol_Double && ADICol_Double < ADICol_String);
    if (!text.empty())
        m_types[column] = std::max(m_types[column], SuggestedType(text));
}

} // namespace zelvar
