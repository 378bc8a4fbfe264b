#include "zelvar/data/reader/FileVerdicts.h"

#include <utility>

namespace zelvar {

void FileVerdicts::Set(DString const &moniker, Verdict verdict) {
    std::lock_guard const lock(m_mutex);
    if (m_verdicts.size() >= kMost)
        m_verdicts.clear();
    m_verdicts[moniker] = std::move(verdict);
}

std::optional<FileVerdicts::Verdict> FileVerdicts::Find(DString const &moniker, std::chrono::milliseconds time) const {
    std::lock_guard const lock(m_mutex);
    auto const at = m_verdicts.find(moniker);
    if (at == m_verdicts.end())
        return std::nullopt;
    Verdict const &verdict = at->second;
    bool const isLonger = verdict.givenTime.count() > 0 && time > verdict.givenTime;
    bool const mayTry = isLonger || std::chrono::steady_clock::now() > verdict.until;
    return mayTry ? std::nullopt : std::optional(verdict);
}

bool FileVerdicts::Has(DString const &moniker) const {
    std::lock_guard const lock(m_mutex);
    return m_verdicts.contains(moniker);
}

void FileVerdicts::Forget(DString const &moniker) {
    std::lock_guard const lock(m_mutex);
    m_verdicts.erase(moniker);
    m_failures.erase(moniker);
}

void FileVerdicts::Clear() {
    std::lock_guard const lock(m_mutex);
    m_verdicts.clear();
    m_failures.clear();
}

void FileVerdicts::SetFailure(DString const &moniker, DError error) {
    std::lock_guard const lock(m_mutex);
    if (m_failures.size() >= kMost)
        m_failures.clear();
    m_failures[moniker] = std::move(error);
}

DError FileVerdicts::FailureOf(DString const &moniker) const {
    std::lock_guard const lock(m_mutex);
    auto const at = m_failures.find(moniker);
    return at == m_failures.end() ? DError() : at->second;
}

} // namespace zelvar
