#include "zelvar/data/tables/CsvReader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kBlock = std::size_t{256} << 10U;
constexpr std::size_t kFirstBlock = std::size_t{64} << 10U;

void AppendUtf8(DString &out, std::uint32_t code) {
    auto const add = [&](std::uint32_t byte) { out += static_cast<char>(byte); };
    auto const addRest = [&](std::uint32_t shift) { add(0x80U | (code >> shift & 0x3FU)); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0U | code >> 6U);
        addRest(0);
    } else if (code < 0x10000) {
        add(0xE0U | code >> 12U);
        addRest(6);
        addRest(0);
    } else {
        add(0xF0U | code >> 18U);
        addRest(12);
        addRest(6);
        addRest(0);
    }
}

} // namespace

CsvReader::CsvReader(Read read) : m_read(std::move(read)) {
    std::array<char, 3> head{};
    std::size_t const count = m_read(0, head.data(), head.size());
    std::string_view const mark(head.data(), count);
    if (mark.starts_with("\xFF\xFE"))
        m_encoding = Encoding::LittleEndian16;
    else if (mark.starts_with("\xFE\xFF"))
        m_encoding = Encoding::BigEndian16;
    m_mark = m_encoding != Encoding::Bytes ? 2 : mark == "\xEF\xBB\xBF" ? 3 : 0;
    m_file = m_mark;
}

void CsvReader::GoTo(std::int64_t position) {
    m_text.clear();
    m_at = 0;
    m_high = 0;
    m_file = position < 0 ? m_mark : static_cast<std::uint64_t>(position);
}

std::int64_t CsvReader::Position() const {
    return m_encoding == Encoding::Bytes ? static_cast<std::int64_t>(m_file - (m_text.size() - m_at)) : -1;
}

bool CsvReader::Fill() {
    m_text.erase(0, m_at);
    m_at = 0;
    std::size_t const size = m_file == m_mark ? kFirstBlock : kBlock;
    std::size_t const before = m_text.size();
    if (m_encoding == Encoding::Bytes) {
        m_text.resize(before + size);
        std::size_t const count = m_read(m_file, m_text.data() + before, size);
        m_text.resize(before + std::min(count, size));
        m_file += std::min(count, size);
        return count > 0;
    }
    m_raw.resize(size);
    std::size_t const count = std::min(m_read(m_file, m_raw.data(), size), size) & ~std::size_t{1};
    m_file += count;
    AppendUtf16(std::string_view(m_raw).substr(0, count));
    return m_text.size() > before || (count > 0 && Fill());
}

void CsvReader::AppendUtf16(std::string_view bytes) {
    constexpr std::uint32_t replacement = 0xFFFD; // for half a character
    bool const bigEndian = m_encoding == Encoding::BigEndian16;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        auto const first = static_cast<unsigned char>(bytes[i]);
        auto const second = static_cast<unsigned char>(bytes[i + 1]);
        auto const unit = static_cast<std::uint32_t>(bigEndian ? first << 8U | second : second << 8U | first);
        bool const isLow = unit >= 0xDC00 && unit < 0xE000;
        std::uint32_t const high = std::exchange(m_high, 0);
        if (high != 0 && isLow) {
            AppendUtf8(m_text, 0x10000U + ((high - 0xD800U) << 10U) + (unit - 0xDC00U));
            continue;
        }
        if (high != 0)
            AppendUtf8(m_text, replacement);
        if (unit >= 0xD800 && unit < 0xDC00)
            m_high = unit;
        else
            AppendUtf8(m_text, isLow ? replacement : unit);
    }
}

std::string_view CsvReader::Peek(std::size_t bytes) {
    while (m_text.size() - m_at < bytes) {
        std::size_t const before = m_text.size() - m_at;
        if (!Fill() || m_text.size() - m_at == before)
            break;
    }
    return std::string_view(m_text).substr(m_at, bytes);
}

bool CsvReader::ReadQuoted(CsvRecord &record, std::size_t mostBytes) {
    ++m_at; // the quote
    while (HasByte()) {
        std::size_t const quote = std::min(m_text.find('"', m_at), m_text.size());
        record.texts.append(m_text, m_at, quote - m_at);
        m_at = quote;
        if (record.texts.size() > mostBytes)
            return false;
        if (quote == m_text.size())
            continue;
        ++m_at;
        if (!HasByte() || m_text[m_at] != '"')
            return true;
        record.texts += '"';
        ++m_at;
    }
    return true;
}

bool CsvReader::ReadPlain(CsvRecord &record, std::size_t mostBytes) {
    while (HasByte()) {
        std::size_t end = m_at;
        while (end < m_text.size() && m_text[end] != m_separator && m_text[end] != '\n' && m_text[end] != '\r')
            ++end;
        record.texts.append(m_text, m_at, end - m_at);
        m_at = end;
        if (record.texts.size() > mostBytes)
            return false;
        if (end < m_text.size())
            break;
    }
    return true;
}

CsvReader::Result CsvReader::Next(CsvRecord &record, std::size_t mostBytes) {
    record.texts.clear();
    record.ends.clear();
    while (HasByte() && (m_text[m_at] == '\n' || m_text[m_at] == '\r'))
        ++m_at;
    if (!HasByte())
        return Result::End;
    while (true) {
        bool const isQuoted = HasByte() && m_text[m_at] == '"';
        // What stands behind a closing quote belongs to the field all the same.
        if ((isQuoted && !ReadQuoted(record, mostBytes)) || !ReadPlain(record, mostBytes))
            return Result::TooLong;
        record.ends.push_back(record.texts.size());
        if (record.ends.size() > mostBytes)
            return Result::TooLong;
        if (!HasByte())
            return Result::Record;
        char const end = m_text[m_at++];
        if (end == m_separator)
            continue;
        if (end == '\r' && HasByte() && m_text[m_at] == '\n')
            ++m_at;
        return Result::Record;
    }
}

char GuessSeparator(std::string_view text) {
    constexpr std::string_view candidates = ",;\t|";
    std::array<std::size_t, candidates.size()> counts{};
    bool inQuotes = false;
    for (char const c : text.substr(std::min(text.find_first_not_of("\r\n"), text.size()))) {
        inQuotes = inQuotes != (c == '"');
        if (!inQuotes && (c == '\n' || c == '\r'))
            break;
        if (std::size_t const at = candidates.find(c); !inQuotes && at != std::string_view::npos)
            ++counts[at];
    }
    return candidates[static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin())];
}

} // namespace zelvar
