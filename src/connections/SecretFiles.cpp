#include "zelvar/connections/SecretFiles.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/connections/FilledWords.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr std::size_t kMostBytes = 1U << 20U;
constexpr char const *kUnreadable = Mark("%s cannot be read.");
constexpr char const *kTooLarge = Mark("%s is too large for a file of passwords.");
constexpr char const *kOpenToOthers = Mark("%s may be read by others and is not used: chmod 600 it.");

DString FromEnvironment(char const *name) {
    char const *const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody of ours sets it
    return value == nullptr ? DString() : DString(value);
}

DString InHome(char const *name) {
    DString const home = FromEnvironment("HOME");
    return home.empty() ? DString() : AppendPath(home, name);
}

DString NamedOrInHome(char const *variable, char const *name) {
    DString const named = FromEnvironment(variable);
    return named.empty() ? InHome(name) : named;
}

/// Calls `visit` with each line, without its end, until it returns false.
template <class Visit>
void ForEachLine(std::string_view text, Visit &&visit) {
    for (bool goesOn = true; goesOn && !text.empty();) {
        std::size_t const end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        goesOn = visit(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// The fields between ":"; a backslash takes the next character as it is. A last field has the rest of the line.
std::array<DString, 5> PgPassFields(std::string_view line) {
    std::array<DString, 5> fields;
    std::size_t field = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && i + 1 < line.size())
            fields[field] += line[++i];
        else if (line[i] == ':' && field + 1 < fields.size())
            ++field;
        else if (line[i] == ':')
            break;
        else
            fields[field] += line[i];
    }
    return fields;
}

/// The words of a netrc file: by blanks, or in quotes with backslashes.
class NetrcWords {
public:
    explicit NetrcWords(std::string_view text) : m_rest(text) {}

    /// Nothing at the end. A "#" begins a comment where it is the first of its line.
    std::optional<DString> Next() {
        while (!m_rest.empty()) {
            if (kBlanks.find(m_rest.front()) != std::string_view::npos) {
                m_isLineBegin = m_isLineBegin || m_rest.front() == '\n';
                m_rest.remove_prefix(1);
            } else if (m_rest.front() == '#' && m_isLineBegin) {
                m_rest.remove_prefix(std::min(m_rest.find('\n'), m_rest.size()));
            } else {
                m_isLineBegin = false;
                return m_rest.front() == '"' ? Quoted() : Plain();
            }
        }
        return std::nullopt;
    }
    /// A macro goes to the next empty line.
    void SkipMacro() {
        std::size_t const end = m_rest.find("\n\n");
        m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end);
    }

private:
    static constexpr std::string_view kBlanks = " \t\r\n";

    DString Plain() {
        std::size_t const end = std::min(m_rest.find_first_of(kBlanks), m_rest.size());
        DString word(m_rest.substr(0, end));
        m_rest.remove_prefix(end);
        return word;
    }
    DString Quoted() {
        DString word;
        std::size_t at = 1;
        for (; at < m_rest.size() && m_rest[at] != '"'; ++at)
            word += m_rest[at] == '\\' && at + 1 < m_rest.size() ? m_rest[++at] : m_rest[at];
        m_rest.remove_prefix(std::min(at + 1, m_rest.size()));
        return word;
    }

    std::string_view m_rest;
    bool m_isLineBegin = true;
};

} // namespace

std::optional<Secret> FindInPgPass(std::string_view text, LoginWish const &wish) {
    std::optional<Secret> found;
    ForEachLine(text, [&](std::string_view line) {
        if (line.empty() || line.front() == '#')
            return true;
        std::array<DString, 5> fields = PgPassFields(line);
        auto const fits = [](DString const &field, DString const &value) { return field == "*" || field == value; };
        if (!fields[4].empty() && fits(fields[0], wish.host) && fits(fields[1], wish.port) &&
            fits(fields[2], wish.database) && fits(fields[3], wish.user))
            found = Secret(fields[4]);
        Wipe(fields[4]);
        return !found.has_value();
    });
    return found;
}

std::optional<FoundLogin> FindInNetrc(std::string_view text, DString const &host, DString const &user) {
    std::optional<FoundLogin> found;
    FoundLogin entry;
    bool isOfHost = false;
    auto const conclude = [&] {
        if (isOfHost && !found && !entry.password.IsEmpty() && (user.empty() || entry.user == user))
            found = entry;
        entry = {};
    };
    NetrcWords words(text);
    for (std::optional<DString> word = words.Next(); word && !found; word = words.Next()) {
        if (*word == "machine" || *word == "default") {
            conclude();
            isOfHost = *word == "default" || EqualNoCase(words.Next().value_or(DString()), host);
        } else if (*word == "login") {
            entry.user = words.Next().value_or(DString());
        } else if (*word == "password") {
            DString password = words.Next().value_or(DString());
            entry.password = Secret::TakenFrom(password);
        } else if (*word == "account") {
            std::ignore = words.Next();
        } else if (*word == "macdef") {
            words.SkipMacro();
        }
    }
    conclude();
    return found;
}

std::optional<IniSection> FindIniSection(std::string_view text, DString const &name) {
    std::optional<IniSection> section;
    bool isInside = false;
    ForEachLine(text, [&](std::string_view line) {
        std::string_view const trimmed = Trimmed(line);
        if (trimmed.starts_with('[')) {
            isInside = trimmed.ends_with(']') && Trimmed(trimmed.substr(1, trimmed.size() - 2)) == name;
            if (isInside && !section)
                section.emplace();
            return true;
        }
        std::size_t const equals = trimmed.find('=');
        bool const isComment = trimmed.starts_with('#') || trimmed.starts_with(';');
        // What is indented belongs to the line before.
        if (isInside && !isComment && equals != std::string_view::npos && trimmed.data() == line.data())
            section->emplace(Trimmed(trimmed.substr(0, equals)), Trimmed(trimmed.substr(equals + 1)));
        return true;
    });
    return section;
}

SecretFileText ReadSecretFile(DString const &path, bool isPrivate) {
    if (path.empty())
        return {};
    auto const against = [&path](char const *words) { return SecretFileText{{}, FilledWords(words, path)}; };
    // Not a pipe: nobody may be at its other end.
    FileDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen())
        return errno == ENOENT || errno == ENOTDIR ? SecretFileText() : against(kUnreadable);
    struct stat status {};
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        return against(kUnreadable);
    if (isPrivate && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return against(kOpenToOthers);
    SecretFileText result;
    result.text.resize(kMostBytes + 1);
    std::size_t size = 0;
    for (ssize_t got = 1; got > 0 && size < result.text.size(); size += static_cast<std::size_t>(got)) {
        got = read(file.Get(), result.text.data() + size, result.text.size() - size);
        if (got < 0)
            return against(kUnreadable);
    }
    if (size > kMostBytes)
        return against(kTooLarge);
    result.text.resize(size);
    return result;
}

DString PgPassFile() { return NamedOrInHome("PGPASSFILE", ".pgpass"); }

std::vector<DString> PgServiceFiles() {
    std::vector<DString> files{NamedOrInHome("PGSERVICEFILE", ".pg_service.conf")};
    DString const folder = FromEnvironment("PGSYSCONFDIR");
    files.push_back(AppendPath(folder.empty() ? "/etc/postgresql-common" : folder, "pg_service.conf"));
    return files;
}

std::vector<DString> OdbcSourceFiles() {
    DString const folder = FromEnvironment("ODBCSYSINI");
    return {NamedOrInHome("ODBCINI", ".odbc.ini"), AppendPath(folder.empty() ? "/etc" : folder, "odbc.ini")};
}

DString NetrcFile() { return NamedOrInHome("NETRC", ".netrc"); }
DString AwsCredentialsFile() { return NamedOrInHome("AWS_SHARED_CREDENTIALS_FILE", ".aws/credentials"); }
DString AwsConfigFile() { return NamedOrInHome("AWS_CONFIG_FILE", ".aws/config"); }

DString AwsProfile() {
    DString const named = FromEnvironment("AWS_PROFILE");
    return named.empty() ? "default" : named;
}

} // namespace zelvar
