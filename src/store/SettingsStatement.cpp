#include "zelvar/store/SettingsStatement.h"

#include <cstring>

namespace zelvar {

namespace {

using Bytes = SettingsStore::Bytes;

/// Kinds of values as they stand in the file: the position of the type in `SettingsStore::Value`.
enum Kind { kInteger, kReal, kText, kTexts, kBytes, kTyped };

/// Four bytes, lowest first.
void Put(Bytes &packed, std::size_t number) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        packed.push_back(static_cast<std::uint8_t>(number >> shift & 0xFFU));
}

bool Take(std::string_view &packed, std::size_t &number) {
    number = 0;
    if (packed.size() < 4)
        return false;
    for (unsigned i = 0; i < 4; ++i)
        number |= static_cast<std::size_t>(static_cast<unsigned char>(packed[i])) << 8U * i;
    packed.remove_prefix(4);
    return true;
}

/// Each text behind its length.
Bytes Pack(std::vector<DString> const &texts) {
    Bytes packed;
    for (DString const &text : texts) {
        Put(packed, text.size());
        packed.insert(packed.end(), text.begin(), text.end());
    }
    return packed;
}

/// The data behind its type.
Bytes Pack(SettingsStore::Typed const &typed) {
    Bytes packed;
    packed.reserve(4 + typed.data.size());
    Put(packed, typed.type);
    packed.insert(packed.end(), typed.data.begin(), typed.data.end());
    return packed;
}

bool Unpack(std::string_view packed, std::vector<DString> &texts) {
    while (!packed.empty()) {
        std::size_t length = 0;
        if (!Take(packed, length) || length > packed.size())
            return false;
        texts.emplace_back(packed.substr(0, length));
        packed.remove_prefix(length);
    }
    return true;
}

std::string_view BlobOf(sqlite3_stmt *statement, int column) {
    auto const *const bytes = static_cast<char const *>(sqlite3_column_blob(statement, column));
    auto const size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, size);
}

} // namespace

SettingsDatabase::Outcome OutcomeOf(int code) {
    using Outcome = SettingsDatabase::Outcome;
    switch (code & 0xFF) { // the extended codes tell the same in more words
    case SQLITE_OK:
    case SQLITE_ROW:
        return Outcome::Done;
    case SQLITE_DONE:
        return Outcome::Nothing;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL: // the log is being begun by another process
        return Outcome::Busy;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return Outcome::Damaged;
    default:
        return Outcome::Failed;
    }
}

SettingsDatabase::Statement::Statement(SettingsDatabase &database, Sql sql) {
    sqlite3_stmt *&prepared = database.m_statements[sql];
    if (prepared == nullptr)
        sqlite3_prepare_v3(database.m_connection, TextOf(sql), -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    m_statement = prepared;
}

SettingsDatabase::Statement::~Statement() {
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

SettingsDatabase::Statement &SettingsDatabase::Statement::Bind(std::string_view text) {
    // A null pointer would bind NULL.
    sqlite3_bind_text64(m_statement, m_next++, text.data() == nullptr ? "" : text.data(), text.size(), SQLITE_STATIC,
                        SQLITE_UTF8);
    return *this;
}

SettingsDatabase::Statement &SettingsDatabase::Statement::BindEnd(std::string_view text) {
    if (!text.empty())
        return Bind(text);
    sqlite3_bind_zeroblob(m_statement, m_next++, 0); // sorts behind all texts
    return *this;
}

SettingsDatabase::Statement &SettingsDatabase::Statement::BindValue(Value const &value) {
    sqlite3_bind_int64(m_statement, m_next++, static_cast<sqlite3_int64>(value.index()));
    switch (value.index()) {
    case kInteger:
        sqlite3_bind_int64(m_statement, m_next++, std::get<kInteger>(value));
        break;
    case kReal:
        sqlite3_bind_double(m_statement, m_next++, std::get<kReal>(value));
        break;
    case kText:
        Bind(std::get<kText>(value));
        break;
    default:
        m_packed = value.index() == kTexts   ? Pack(std::get<kTexts>(value))
                   : value.index() == kTyped ? Pack(std::get<kTyped>(value))
                                             : std::get<kBytes>(value);
        sqlite3_bind_blob64(m_statement, m_next++, m_packed.empty() ? static_cast<void const *>("") : m_packed.data(),
                            m_packed.size(), SQLITE_STATIC);
    }
    return *this;
}

SettingsDatabase::Outcome SettingsDatabase::Statement::Step() {
    // A statement that could not be prepared is null, which is misuse and fails.
    return m_statement == nullptr ? Outcome::Failed : OutcomeOf(sqlite3_step(m_statement));
}

DString SettingsDatabase::Statement::Text(int column) const { return DString(BlobOf(m_statement, column)); }

bool SettingsDatabase::Statement::ReadValue(int kindColumn, Value &value) const {
    int const column = kindColumn + 1;
    int const stored = sqlite3_column_type(m_statement, column);
    switch (sqlite3_column_int(m_statement, kindColumn)) {
    case kInteger:
        value = std::int64_t{sqlite3_column_int64(m_statement, column)};
        return stored == SQLITE_INTEGER;
    case kReal: // "not a number" is kept as NULL
        value = stored == SQLITE_NULL ? __builtin_nan("") : sqlite3_column_double(m_statement, column);
        return stored == SQLITE_FLOAT || stored == SQLITE_NULL;
    case kText:
        value = Text(column);
        return stored == SQLITE_TEXT;
    case kTexts: {
        std::vector<DString> texts;
        bool const whole = Unpack(BlobOf(m_statement, column), texts);
        value = std::move(texts);
        return whole && stored == SQLITE_BLOB;
    }
    case kBytes: {
        std::string_view const blob = BlobOf(m_statement, column);
        value = Bytes(blob.begin(), blob.end());
        return stored == SQLITE_BLOB;
    }
    case kTyped: {
        std::string_view blob = BlobOf(m_statement, column);
        std::size_t type = 0;
        bool const whole = Take(blob, type);
        value = SettingsStore::Typed{static_cast<std::uint32_t>(type), Bytes(blob.begin(), blob.end())};
        return whole && stored == SQLITE_BLOB;
    }
    default:
        return false;
    }
}

} // namespace zelvar
