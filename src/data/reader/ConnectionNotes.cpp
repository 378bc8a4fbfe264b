#include "zelvar/data/reader/ConnectionNotes.h"

#include "zelvar/data/wire/ConnectRecords.h"
#include "zelvar/data/wire/SealedMemory.h"

#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kMost = 32;
constexpr std::size_t kMostBytes = 2 * wire::kLongestNote; // of all
constexpr std::chrono::minutes kHolds{5};

} // namespace

ConnectionNotes &ConnectionNotes::Instance() {
    static auto &notes = *new ConnectionNotes; // never destroyed: readers may still speak while the process ends
    return notes;
}

void ConnectionNotes::DropOld() {
    Clock::time_point const now = Clock::now();
    std::size_t count = 0;
    std::size_t bytes = 0;
    m_kept.remove_if([&](Kept const &kept) {
        bytes += kept.bytes;
        return now - kept.since > kHolds || ++count > kMost || bytes > kMostBytes;
    });
}

bool ConnectionNotes::Keep(TermsPtr const &of, DString const &name, FileDescriptor file) {
    auto const size = file.IsOpen() ? wire::SealedSize(file.Get()) : std::nullopt;
    if (!size || *size > wire::kLongestNote || name.empty())
        return false;
    auto kept = std::make_shared<FileDescriptor const>(std::move(file));
    std::lock_guard const lock(m_mutex);
    m_kept.remove_if([&](Kept const &other) { return other.name == name && *other.of == *of; });
    m_kept.push_front({of, name, std::move(kept), *size, Clock::now()});
    DropOld();
    return true;
}

ConnectionNotes::Note ConnectionNotes::Find(ConnectionTerms const &of, DString const &name) {
    std::lock_guard const lock(m_mutex);
    DropOld();
    for (Kept const &kept : m_kept)
        if (kept.name == name && *kept.of == of)
            return {kept.file, std::chrono::floor<std::chrono::seconds>(Clock::now() - kept.since)};
    return {};
}

void ConnectionNotes::Tidy() {
    std::lock_guard const lock(m_mutex);
    DropOld();
}

} // namespace zelvar
