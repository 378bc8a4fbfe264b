#include "zelvar/data/tables/CsvScan.h"

#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace zelvar {

namespace {

/// The first of three bytes from `at` on; `end` if there is none.
inline char const *FindOne(char const *at, char const *end, char a, char b, char c) {
#ifdef __SSE2__
    constexpr std::ptrdiff_t width = 16;
    __m128i const first = _mm_set1_epi8(a);
    __m128i const second = _mm_set1_epi8(b);
    __m128i const third = _mm_set1_epi8(c);
    for (; end - at >= width; at += width) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(at));
        __m128i const found = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, first), _mm_cmpeq_epi8(bytes, second)),
                                           _mm_cmpeq_epi8(bytes, third));
        if (auto const mask = static_cast<unsigned>(_mm_movemask_epi8(found)); mask != 0)
            return at + std::countr_zero(mask);
    }
#endif
    while (at != end && *at != a && *at != b && *at != c)
        ++at;
    return at;
}

/// The quote that closes, from behind the one that opens; `end` if there is none.
char const *ClosingQuote(char const *at, char const *end) {
    while (true) {
        auto const *const quote = static_cast<char const *>(std::memchr(at, '"', static_cast<std::size_t>(end - at)));
        if (quote == nullptr)
            return end;
        if (quote + 1 == end || quote[1] != '"')
            return quote;
        at = quote + 2;
    }
}

char const *SkipBlankLines(char const *at, char const *end) {
    while (at != end && (*at == '\n' || *at == '\r'))
        ++at;
    return at;
}

/// The line end that ends a record, from one of its fields on; `end` if there is none.
char const *EndOfRecord(char const *field, char const *end, char separator) {
    for (char const *at = field; at != end; at = FindOne(at, end, '"', '\n', '\r')) {
        if (*at == '\n' || *at == '\r')
            return at;
        // A quote opens a field at its beginning; elsewhere it is a letter.
        bool const opens = *at == '"' && (at == field || at[-1] == separator);
        at = opens ? ClosingQuote(at + 1, end) : at;
        if (at == end)
            break;
        ++at;
    }
    return end;
}

} // namespace

char const *CsvScan::SkipField() {
    if (m_at != m_end && *m_at == '"') {
        m_at = ClosingQuote(m_at + 1, m_end);
        m_at += m_at == m_end ? 0 : 1;
    }
    // What stands behind a closing quote belongs to the field all the same.
    char const *const fieldEnd = FindOne(m_at, m_end, m_separator, '\n', '\r');
    m_hasField = fieldEnd != m_end && *fieldEnd == m_separator;
    m_at = fieldEnd + (fieldEnd == m_end ? 0 : 1);
    return fieldEnd;
}

bool CsvScan::Next() {
    if (m_hasField)
        m_at = EndOfRecord(m_at, m_end, m_separator);
    m_at = SkipBlankLines(m_at, m_end);
    m_hasField = m_at != m_end;
    return m_hasField;
}

void CsvScan::Skip(std::size_t fields) {
    for (std::size_t i = 0; i < fields && m_hasField; ++i)
        SkipField();
}

std::string_view CsvScan::Field() {
    if (!m_hasField)
        return {};
    char const *const begin = m_at;
    char const *const end = SkipField();
    if (begin == end || *begin != '"')
        return {begin, end};
    char const *const close = ClosingQuote(begin + 1, end);
    std::string_view const inner(begin + 1, close);
    if (end - close <= 1 && inner.find('"') == std::string_view::npos)
        return inner;
    m_joined.clear();
    for (char const *at = inner.data(); at < close; ++at) {
        m_joined += *at;
        at += *at == '"' ? 1 : 0; // one of two
    }
    if (close != end)
        m_joined.append(close + 1, end);
    return m_joined;
}

std::size_t CsvScan::RecordEnd(std::string_view text, char separator, bool isWhole) {
    char const *const end = text.data() + text.size();
    char const *const first = SkipBlankLines(text.data(), end);
    if (first == end)
        return std::string_view::npos;
    char const *const at = EndOfRecord(first, end, separator);
    if (at != end)
        return static_cast<std::size_t>(at + 1 - text.data());
    return isWhole ? text.size() : std::string_view::npos;
}

} // namespace zelvar
