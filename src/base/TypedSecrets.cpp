#include "zelvar/base/TypedSecrets.h"

#include "zelvar/base/Authority.h"
#include "zelvar/base/Percent.h"
#include "zelvar/base/ProcessMoments.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>

namespace zelvar {

namespace {

constexpr std::size_t kNone = DString::npos;
constexpr std::string_view kMark = "://";
constexpr std::size_t kMost = 1000; // who types that many has forgotten the first
constexpr std::string_view kRedacted = "***";

class Memory final : public ProcessMoments {
public:
    void BeforeFork() override { m_mutex.lock(); }
    void AfterFork(Side) override { m_mutex.unlock(); }

    void Keep(DString const &key, DString secret) {
        std::lock_guard const lock(m_mutex);
        if (m_secrets.size() >= kMost && !m_secrets.contains(key))
            m_secrets.erase(m_secrets.begin());
        m_secrets[key] = std::move(secret);
    }
    [[nodiscard]] std::optional<DString> Find(DString const &key) {
        std::lock_guard const lock(m_mutex);
        auto const at = m_secrets.find(key);
        return at == m_secrets.end() ? std::nullopt : std::optional(at->second);
    }

private:
    std::mutex m_mutex;
    std::map<DString, DString> m_secrets;
    Known m_known{*this, Locks::Inner};
};

// Never destroyed: workers may still ask while the process ends.
Memory &TheMemory() {
    static auto &memory = *new Memory;
    return memory;
}

bool IsSchemeByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-' ||
           c == '.';
}

/// "scheme://user@host:port" of the address whose "://" stands at `mark`; users are told apart by case, hosts are not.
DString KeyOf(std::string_view text, std::size_t mark, std::string_view user, std::size_t host) {
    std::size_t scheme = mark;
    while (scheme > 0 && IsSchemeByte(text[scheme - 1]))
        --scheme;
    std::size_t const end = std::min(text.find_first_of("/?#:{} \t\r\n\"<>", host), text.size());
    std::size_t const portEnd = end < text.size() && text[end] == ':'
                                    ? std::min(text.find_first_not_of("0123456789", end + 1), text.size())
                                    : end;
    return FoldCase(text.substr(scheme, mark - scheme)) + DString(kMark) + DString(user) + "@" +
           FoldCase(text.substr(host, portEnd - host));
}

/// As it may stand between ":" and "@"; what is escaped already stays.
DString Escaped(std::string_view secret) {
    DString out;
    for (char const c : secret)
        out += std::string_view("@/?#:[]{}\"<>\\^`| '").find(c) != kNone ? PercentEncoded({&c, 1}) : DString{c};
    return out;
}

} // namespace

DString TakeSecrets(DString text) {
    std::size_t mark = text.find(kMark);
    if (mark == kNone || text.find('@', mark) == kNone)
        return text;
    DString out;
    std::size_t copied = 0;
    LoginFinder logins(text);
    for (; mark != kNone; mark = text.find(kMark, mark + kMark.size())) {
        auto const login = logins.Behind(mark);
        if (!login || login->colon < copied)
            continue;
        std::string_view const view(text);
        DString secret(view.substr(login->colon + 1, login->at - login->colon - 1));
        if (secret != kRedacted)
            TheMemory().Keep(KeyOf(text, mark, view.substr(login->user, login->colon - login->user), login->at + 1),
                             std::move(secret));
        out.append(text, copied, login->colon - copied);
        copied = login->at;
    }
    return copied == 0 ? text : out.append(text, copied);
}

DString WithSecrets(DString text) {
    std::size_t mark = text.find(kMark);
    if (mark == kNone || text.find('@', mark) == kNone)
        return text;
    for (; mark != kNone; mark = text.find(kMark, mark + kMark.size())) {
        std::size_t const user = mark + kMark.size();
        std::size_t const end = std::min(text.find_first_of("/?# \t\r\n\"<>", user), text.size());
        std::string_view const authority = std::string_view(text).substr(user, end - user);
        std::size_t const at = authority.rfind('@');
        if (at == kNone || authority.substr(0, at).find(':') != kNone)
            continue;
        if (auto const secret = TheMemory().Find(KeyOf(text, mark, authority.substr(0, at), user + at + 1)))
            text.insert(user + at, ":" + Escaped(*secret));
    }
    return text;
}

} // namespace zelvar
