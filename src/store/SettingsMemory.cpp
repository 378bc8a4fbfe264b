#include "zelvar/store/SettingsMemory.h"

#include <utility>

#include <sqlite3.h>

namespace zelvar {

namespace {

constexpr std::size_t kMostValues = 10'000;
constexpr std::size_t kLongestText = 4'096; // bytes of what is kept
constexpr int kRegionSize = 32 * 1024;      // of the index; the head is in the first

bool IsShort(SettingsMemory::Value const &value) {
    if (auto const *const text = std::get_if<DString>(&value))
        return text->size() <= kLongestText;
    return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value);
}

} // namespace

std::optional<SettingsMemory::Mark> SettingsMemory::MarkOf(sqlite3 *connection) {
    sqlite3_file *file = nullptr;
    if (sqlite3_get_autocommit(connection) == 0 ||
        sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void *>(&file)) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2)
        return std::nullopt;
    void volatile *memory = nullptr;
    if (file->pMethods->xShmMap(file, 0, kRegionSize, 0, &memory) != SQLITE_OK || memory == nullptr)
        return std::nullopt;
    Mark mark{};
    auto const *const head = static_cast<std::uint32_t const volatile *>(memory);
    for (std::size_t i = 0; i < mark.size(); ++i)
        mark[i] = head[i]; // one that is just being written equals none that was seen
    return mark;
}

DString const &SettingsMemory::PlaceOf(std::string_view key, std::string_view name) {
    m_place.assign(key).append(1, '\0').append(name);
    return m_place;
}

std::optional<SettingsMemory::Value> const *SettingsMemory::Find(Mark const &mark, std::string_view key,
                                                                 std::string_view name) {
    if (mark != m_mark)
        return nullptr;
    auto const at = m_values.find(PlaceOf(key, name));
    return at == m_values.end() ? nullptr : &at->second;
}

void SettingsMemory::Keep(Mark const &mark, std::string_view key, std::string_view name, std::optional<Value> value) {
    if (mark != m_mark || m_values.size() >= kMostValues)
        m_values.clear();
    m_mark = mark;
    if (!value || IsShort(*value))
        m_values.insert_or_assign(PlaceOf(key, name), std::move(value));
}

} // namespace zelvar
