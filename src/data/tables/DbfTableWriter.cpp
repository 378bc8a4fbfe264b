#include "zelvar/data/tables/DbfTableWriter.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/SystemTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <tuple>

namespace zelvar {

namespace {

constexpr std::size_t kMostHeadBytes = 65535;
constexpr std::size_t kMostRecordBytes = 65535;
constexpr std::size_t kFieldBytes = 32; // of the head
constexpr std::size_t kLongestFixed = 20;
constexpr std::size_t kFewestNumberWidth = 3; // "0.0"

/// The number that a text is, or nothing.
std::optional<double> NumberIn(std::string_view text) {
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const whole = error == std::errc{} && end == text.data() + text.size();
    return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

bool IsDigits(std::string_view text) {
    std::size_t const sign = text.starts_with('-') ? 1 : 0;
    return text.size() > sign && text.find_first_not_of("0123456789", sign) == std::string_view::npos;
}

/// A number without an exponent where that is not too long. Read again it is the same.
DString NumberText(std::string_view text, double value) {
    if (IsDigits(text))
        return DString(text);
    std::array<char, 512> digits{};
    auto const fixed = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
    DString plain(digits.data(), fixed.ptr);
    if (plain.size() <= kLongestFixed)
        return plain;
    auto const shortest = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), shortest.ptr};
}

/// At most `most` bytes, whole characters.
std::string_view CutText(std::string_view text, std::size_t most) {
    if (text.size() <= most)
        return text;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
        --end;
    return text.substr(0, end);
}

void AppendNumber(DString &bytes, std::size_t value, int count) {
    for (int i = 0; i < count; ++i, value >>= 8U)
        bytes += static_cast<char>(value & 0xFFU);
}

DString CodePagePathOf(DString const &path) {
    std::string_view const extension = ExtensionOf(path);
    return path.substr(0, path.size() - (extension.empty() ? 0 : extension.size() + 1)) + ".cpg";
}

} // namespace

DbfTableWriter::DbfTableWriter(DString const &path)
    : m_path(path), m_codePagePath(CodePagePathOf(path)), m_file(path), m_codePage(m_codePagePath) {}

void DbfTableWriter::Begin(std::vector<ADIColumn> const &columns) { ChooseNames(columns); }

void DbfTableWriter::ChooseNames(std::vector<ADIColumn> const &columns) {
    std::set<DString> taken;
    for (ADIColumn const &column : columns) {
        DString wanted = column.name.empty() ? "Field" + std::to_string(m_fields.size() + 1) : column.name;
        std::replace_if(
            wanted.begin(), wanted.end(), [](unsigned char c) { return c < 0x20; }, '_');
        DString name(CutText(wanted, kLongestName));
        for (int number = 1; !taken.insert(FoldCase(name)).second; ++number) {
            DString const end = "_" + std::to_string(number);
            name = DString(CutText(wanted, kLongestName - end.size())) + end;
        }
        if (name != column.name)
            Report::TraceMessage(Report::kTraceOpen, R"(%s: column "%s" is "%s")", m_path.c_str(), column.name.c_str(),
                                 name.c_str());
        bool const isNumber = column.type == ADICol_Int || column.type == ADICol_Double;
        m_fields.push_back({.name = std::move(name),
                            .isNumber = isNumber,
                            .width = column.type == ADICol_Double ? kFewestNumberWidth : 1,
                            .decimals = column.type == ADICol_Double ? std::size_t{1} : std::size_t{0}});
    }
}

void DbfTableWriter::AddCell(std::string_view text) {
    Field &field = m_fields[m_column];
    m_column = (m_column + 1) % m_fields.size();
    if (field.isNumber) {
        auto const value = NumberIn(text);
        DString const number = value ? NumberText(text, *value) : DString();
        m_lost += !value && !text.empty() ? 1U : 0U;
        std::size_t const point = number.find('.');
        if (point != DString::npos && number.find('e') == DString::npos)
            field.decimals = std::max(field.decimals, number.size() - point - 1);
        field.width = std::max(field.width, number.size());
        m_texts += number;
    } else {
        std::string_view const kept = CutText(text, kWidestText);
        m_cut += kept.size() < text.size() ? 1U : 0U;
        field.width = std::max(field.width, kept.size());
        m_texts += kept;
    }
    m_ends.push_back(m_texts.size());
}

bool DbfTableWriter::WriteHead() {
    std::size_t record = 1; // the mark of deletion
    for (Field &field : m_fields) {
        // A point and a digit stand before the decimals.
        field.width = std::max(field.width, field.decimals == 0 ? 1 : field.decimals + 2);
        record += field.width;
    }
    std::size_t const head = kFieldBytes + m_fields.size() * kFieldBytes + 1;
    std::size_t const rows = m_fields.empty() ? 0 : m_ends.size() / m_fields.size();
    if (head > kMostHeadBytes || record > kMostRecordBytes || rows > std::numeric_limits<std::uint32_t>::max()) {
        Report::TraceMessage(Report::kTraceOpen, "%s: a table of %zu columns and %zu bytes a row is too wide",
                             m_path.c_str(), m_fields.size(), record);
        return false;
    }
    SystemTime const today = ToLocalTime(
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count());
    DString bytes = "\x03";
    bytes += static_cast<char>(today.wYear - 1900);
    bytes += static_cast<char>(today.wMonth);
    bytes += static_cast<char>(today.wDay);
    AppendNumber(bytes, rows, 4);
    AppendNumber(bytes, head, 2);
    AppendNumber(bytes, record, 2);
    bytes.resize(kFieldBytes);
    for (Field const &field : m_fields) {
        DString entry = field.name;
        entry.resize(kLongestName + 1);
        entry += field.isNumber ? 'N' : 'C';
        AppendNumber(entry, 0, 4);
        AppendNumber(entry, field.width, 1);
        AppendNumber(entry, field.decimals, 1);
        entry.resize(kFieldBytes);
        bytes += entry;
    }
    m_file.Write(bytes + '\x0D');
    return true;
}

void DbfTableWriter::WriteRecords() {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < m_ends.size(); ++i) {
        Field const &field = m_fields[i % m_fields.size()];
        std::string_view const text = std::string_view(m_texts).substr(begin, m_ends[i] - begin);
        begin = m_ends[i];
        if (i % m_fields.size() == 0)
            m_file.Write(" ");
        DString const blanks(field.width - text.size(), ' ');
        m_file.Write(field.isNumber ? blanks : text);
        m_file.Write(field.isNumber ? text : blanks);
    }
    m_file.Write("\x1A");
}

bool DbfTableWriter::Finish() {
    if (!WriteHead())
        return false;
    WriteRecords();
    m_codePage.Write("UTF-8");
    if (!Commit())
        return false;
    if (m_cut > 0)
        Report::TraceMessage(Report::kTraceOpen, "%s: %zu texts are cut at %zu bytes", m_path.c_str(), m_cut,
                             kWidestText);
    if (m_lost > 0)
        Report::TraceMessage(Report::kTraceOpen, "%s: %zu cells that hold no numbers are left empty", m_path.c_str(),
                             m_lost);
    return true;
}

bool DbfTableWriter::Commit() {
    DFile const codePage(m_codePagePath);
    DString former;
    bool const hadCodePage = codePage.ReadAll(former);
    if (!m_file.Flush() || !m_codePage.Commit())
        return false;
    if (m_file.Commit())
        return true;
    // The old table goes on with the old one.
    if (hadCodePage)
        std::ignore = codePage.WriteAtomically(former);
    else
        unlink(m_codePagePath.c_str());
    return false;
}

} // namespace zelvar
