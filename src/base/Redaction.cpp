#include "zelvar/base/Redaction.h"

#include "zelvar/base/Authority.h"

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kInstead = "***";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLineEnds = "\r\n";

/// What a key stands for wherever it stands, and what only in the query of an address.
constexpr std::array<std::string_view, 4> kPasswords{"password", "passwd", "pwd", "secret_access_key"};
constexpr std::array<std::string_view, 9> kAnywhere{"x-amz-signature", "x-amz-credential", "x-amz-security-token",
                                                    "access_token",    "api_key",          "apikey",
                                                    "pgpassword",      "userpwd",          "aws_session_token"};
constexpr std::array<std::string_view, 5> kInQueries{"sig", "token", "key", "signature", "x-goog-signature"};

bool IsKeyByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

template <std::size_t Count>
bool IsAny(std::string_view key, std::array<std::string_view, Count> const &names) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view name) { return EqualNoCase(key, name); });
}

/// "db_password" is one as well, "passwords" is none.
bool IsPassword(std::string_view key) {
    return std::any_of(kPasswords.begin(), kPasswords.end(), [&](std::string_view name) {
        if (key.size() < name.size() || !EqualNoCase(key.substr(key.size() - name.size()), name))
            return false;
        return key.size() == name.size() || key[key.size() - name.size() - 1] == '_' ||
               key[key.size() - name.size() - 1] == '-';
    });
}

class Redactor {
public:
    explicit Redactor(std::string_view text) : m_text(text), m_logins(text) {}

    DString Text() {
        for (std::size_t i = m_text.find_first_of(":=%"); i != kNone; i = m_text.find_first_of(":=%", i)) {
            std::size_t const done = m_copied;
            if (m_text[i] == '=')
                AtEquals(i);
            else if (m_text[i] == ':')
                AtColon(i);
            else
                AtPercent(i);
            i = m_copied != done ? std::max(m_copied, i + 1) : i + 1;
        }
        return m_out.append(m_text.substr(m_copied));
    }

private:
    struct Key {
        std::string_view name;
        char before = '\0'; ///< the byte in front of it; zero at the text's beginning
    };

    void Replace(std::size_t begin, std::size_t end) {
        begin = std::max(begin, m_copied);
        if (end <= begin)
            return;
        m_out.append(m_text.substr(m_copied, begin - m_copied)).append(kInstead);
        m_copied = end;
    }

    /// The key that ends before `end`, blanks aside.
    [[nodiscard]] Key KeyBefore(std::size_t end) const {
        constexpr std::size_t longest = 64;
        while (end > m_copied && kBlanks.find(m_text[end - 1]) != kNone)
            --end;
        std::size_t begin = end;
        while (begin > m_copied && end - begin < longest && IsKeyByte(m_text[begin - 1]))
            --begin;
        return {m_text.substr(begin, end - begin), begin == 0 ? '\0' : m_text[begin - 1]};
    }

    [[nodiscard]] bool StandsAt(std::size_t at, std::string_view escape) const {
        return at + escape.size() <= m_text.size() && EqualNoCase(m_text.substr(at, escape.size()), escape);
    }

    /// The end of what `quote` began before `from`: doubled, or behind a backslash, it is a byte as any other.
    [[nodiscard]] std::size_t EndOfQuoted(std::size_t from, char quote) const {
        for (std::size_t i = from; i < m_text.size(); ++i) {
            if (m_text[i] == '\\' && quote != '}') {
                ++i;
            } else if (m_text[i] == quote) {
                if (i + 1 == m_text.size() || m_text[i + 1] != quote)
                    return i + 1;
                ++i;
            }
        }
        return m_text.size();
    }

    /// Whether `at` is where the text's next "key=" begins, or its end.
    [[nodiscard]] bool BeginsPair(std::size_t at) const {
        constexpr std::size_t longest = 32;
        std::size_t i = at;
        while (i < m_text.size() && i - at < longest && IsKeyByte(m_text[i]))
            ++i;
        return i == m_text.size() || (i > at && m_text[i] == '=');
    }

    /// The end of a value that no quote holds together. What ends it depends on where its key stands.
    [[nodiscard]] std::size_t EndOfPlain(std::size_t from, char before) const {
        bool const isQuery = before == '?' || before == '&';
        bool const isPart = before == ';'; // of a text whose parts may hold blanks
        for (std::size_t i = from; i < m_text.size(); ++i) {
            char const c = m_text[i];
            if (kLineEnds.find(c) != kNone || (!isPart && kBlanks.find(c) != kNone) || (isPart && c == ';') ||
                (isQuery && (c == '&' || c == '#')))
                return i;
            if ((c == ';' || c == '&') && BeginsPair(i + 1))
                return i;
            // One that closes what stands around the pair.
            if ((c == '"' || c == '\'') && (i + 1 == m_text.size() || !IsKeyByte(m_text[i + 1])))
                return i;
        }
        return m_text.size();
    }

    void AtEquals(std::size_t equals) {
        Key const key = KeyBefore(equals);
        bool const isQuery = key.before == '?' || key.before == '&';
        if (!IsPassword(key.name) && !IsAny(key.name, kAnywhere) && !(isQuery && IsAny(key.name, kInQueries)))
            return;
        std::size_t const value = std::min(m_text.find_first_not_of(kBlanks, equals + 1), m_text.size());
        if (value == m_text.size() || (value > equals + 1 && BeginsPair(value)))
            return;
        switch (m_text[value]) {
        case '\'':
        case '"':
            // Right behind it one that closes what stands around, as in '... password='.
            if (value + 1 < m_text.size())
                Replace(value, EndOfQuoted(value + 1, m_text[value]));
            break;
        case '{':
            Replace(value, EndOfQuoted(value + 1, '}'));
            break;
        default:
            Replace(value, EndOfPlain(value, key.before));
        }
    }

    void AtColon(std::size_t colon) {
        if (StandsAt(colon, "://")) {
            if (auto const login = m_logins.Behind(colon))
                Replace(login->colon + 1, login->at);
            return;
        }
        std::size_t const quote = colon > m_copied && m_text[colon - 1] == '"' ? colon - 1 : colon;
        Key const key = KeyBefore(quote);
        std::string_view constexpr header = "authorization";
        bool const isHeader =
            key.name.size() >= header.size() && EqualNoCase(key.name.substr(key.name.size() - header.size()), header);
        if (!isHeader && !EqualNoCase(key.name, "x-amz-security-token"))
            return;
        std::size_t const value = m_text.find_first_not_of(kBlanks, colon + 1);
        if (value != kNone)
            Replace(value, std::min(m_text.find_first_of(kLineEnds, value), m_text.size()));
    }

    /// An address or a pair inside another address.
    void AtPercent(std::size_t percent) {
        if (StandsAt(percent, "%3A%2F%2F")) {
            if (auto const login = m_logins.BehindEscaped(percent))
                Replace(login->colon + std::string_view("%3A").size(), login->at);
            return;
        }
        if (!StandsAt(percent, "%3D"))
            return;
        Key key = KeyBefore(percent);
        if (key.before == '%' && key.name.size() > 2)
            key.name.remove_prefix(2);
        if (!IsPassword(key.name) && !IsAny(key.name, kAnywhere))
            return;
        std::size_t const value = percent + 3;
        std::size_t end = std::min(m_text.find_first_of("& \t\r\n\"", value), m_text.size());
        bool const isQuoted = StandsAt(value, "%27");
        for (std::size_t i = value + 1; i < end; ++i)
            if (isQuoted ? StandsAt(i, "%27") : StandsAt(i, "%20") || StandsAt(i, "%26") || StandsAt(i, "%3B"))
                end = isQuoted ? i + 3 : i;
        Replace(value, end);
    }

    std::string_view m_text;
    LoginFinder m_logins;
    std::size_t m_copied = 0; ///< bytes of the text that are in `m_out`, or replaced there
    DString m_out;
};

} // namespace

DString Redacted(std::string_view text) { return Redactor(text).Text(); }

} // namespace zelvar
