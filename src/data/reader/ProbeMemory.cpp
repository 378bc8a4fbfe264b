#include "zelvar/data/reader/ProbeMemory.h"

#include <algorithm>
#include <chrono>

namespace zelvar {

namespace {

/// Longer than the steps of the clocks that file systems note changes by.
bool HasSettled(FileState const &file) {
    constexpr std::chrono::nanoseconds kLongestStep = std::chrono::seconds(2);
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::nanoseconds(file.changed) + kLongestStep < now;
}

} // namespace

std::size_t ProbeMemory::Hash::operator()(FileState const &file) const {
    constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
    return (file.inode * kSpread) ^ (file.device << 7U) ^ static_cast<std::size_t>(file.changed);
}

std::size_t ProbeMemory::NumberOf(std::vector<DString> const &ids) const {
    auto const same = [&](Ids const &list) { return *list == ids; };
    return static_cast<std::size_t>(std::find_if(m_lists.begin(), m_lists.end(), same) - m_lists.begin());
}

std::size_t ProbeMemory::PlaceOf(std::vector<DString> const &ids) {
    std::size_t const number = NumberOf(ids);
    if (number == m_lists.size())
        m_lists.push_back(std::make_shared<std::vector<DString>>(ids));
    return number;
}

ProbeMemory::Ids ProbeMemory::Find(FileState const &file, Ids const &asked) const {
    std::lock_guard const lock(m_mutex);
    auto const at = m_answers.find(file);
    return at != m_answers.end() && *m_lists[at->second.asked] == *asked ? m_lists[at->second.reading] : nullptr;
}

void ProbeMemory::Keep(FileState const &file, Ids const &asked, std::vector<DString> const &reading) {
    if (file.inode == 0 || file.changed == 0 || !HasSettled(file))
        return;
    std::lock_guard const lock(m_mutex);
    if (m_answers.size() >= kMost)
        m_answers.clear();
    m_answers[file] = {.asked = PlaceOf(*asked), .reading = PlaceOf(reading)};
}

void ProbeMemory::Clear() {
    std::lock_guard const lock(m_mutex);
    m_answers.clear();
}

} // namespace zelvar
