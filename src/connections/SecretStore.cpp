#include "zelvar/connections/SecretStore.h"

#include "zelvar/base/Percent.h"
#include "zelvar/base/Translation.h"
#include "zelvar/connections/KeyringService.h"
#include "zelvar/connections/PostgreSqlService.h"
#include "zelvar/connections/SecretFiles.h"

#include <mutex>

namespace zelvar {

namespace {

constexpr std::chrono::seconds kPatience{60}; ///< for a user who is asked to unlock the keyring

using Clock = std::chrono::steady_clock;
constexpr std::chrono::minutes kSecretHolds{10};
constexpr std::chrono::seconds kSilenceHolds{10}; ///< nobody is asked again to unlock it at once

constexpr char const *kNoPassword = Mark("Nothing tells a password: type one, or choose that none is needed.");
constexpr char const *kNotInPgPass = Mark("Nothing tells a password: type one, or use ~/.pgpass.");
constexpr char const *kNotInNetrc = Mark("Nothing tells a password: type one, or use ~/.netrc.");
constexpr char const *kNoProfile = Mark("There is no profile %s in %s.");
constexpr char const *kNoService = Mark("There is no service %s in %s.");
constexpr char const *kNoKeyring = Mark("This desktop has no keyring.");
constexpr char const *kKeyringFails = Mark("The keyring refuses: %s.");
constexpr char const *kKeyringLocked = Mark("The keyring is locked, and was not unlocked.");
constexpr char const *kKeyringSilent = Mark("The keyring does not answer.");
constexpr char const *kStopped = Mark("Stopped.");

KeyringService::Attributes AttributesOf(SecretKey const &key) {
    auto const text = [](DString const &bytes) { return ToValidUtf8(bytes) == bytes ? bytes : PercentEncoded(bytes); };
    return {{"application", "zelvar"},
            {"kind", key.kind},
            {"host", text(key.host)},
            {"user", text(key.user)},
            {"key", key.key}};
}

DString KeyringWords(KeyringAnswer const &answer) {
    switch (answer.state) {
    case KeyringState::Stopped:
        return Translated(kStopped);
    case KeyringState::Late:
        return Translated(kKeyringSilent);
    case KeyringState::Locked:
        return Translated(kKeyringLocked);
    case KeyringState::Failed:
        return Format(Translated(kKeyringFails), answer.reason.c_str());
    default:
        return Translated(kNoKeyring);
    }
}

SecretAnswer FoundInFile(Secret secret, DString user = {}) {
    return {.kept = SecretAnswer::Kept::File,
            .secret = std::move(secret),
            .token = {},
            .user = std::move(user),
            .words = {}};
}
SecretAnswer NotFound(DString words) { return {.words = std::move(words)}; }

/// A text that has been used is wiped with all the passwords in it.
struct WipedText : SecretFileText {
    explicit WipedText(DString const &path, bool isPrivate) : SecretFileText(ReadSecretFile(path, isPrivate)) {}
    WipedText(WipedText const &) = delete;
    WipedText &operator=(WipedText const &) = delete;
    ~WipedText() { Wipe(text); }
};

SecretAnswer FindPgPass(Connection const &named) {
    Connection const connection = WithServiceFields(named);
    constexpr char const *kUsualPort = "5432";
    DString const port = connection.Field("port");
    LoginWish const wish{.host = connection.Field("host"),
                         .port = port.empty() ? kUsualPort : port,
                         .database = connection.Field("database"),
                         .user = connection.Field("user")};
    WipedText const file(PgPassFile(), true);
    if (!file.against.empty())
        return NotFound(file.against);
    std::optional<Secret> found = FindInPgPass(file.text, wish);
    return found ? FoundInFile(*std::move(found)) : NotFound(Translated(kNotInPgPass));
}

SecretAnswer FindNetrc(Connection const &connection) {
    std::optional<ConnectionAddress> const address = connection.Address();
    WipedText const file(NetrcFile(), true);
    if (!file.against.empty())
        return NotFound(file.against);
    std::optional<FoundLogin> found =
        address ? FindInNetrc(file.text, address->host, address->user) : std::optional<FoundLogin>();
    return found ? FoundInFile(std::move(found->password), std::move(found->user)) : NotFound(Translated(kNotInNetrc));
}

SecretAnswer FindService(Connection const &connection) {
    DString const service = connection.Field("service");
    DString files;
    for (DString const &path : PgServiceFiles()) {
        WipedText const file(path, false);
        if (std::optional<IniSection> section = FindIniSection(file.text, service)) {
            DString &password = (*section)["password"];
            return password.empty() ? FindPgPass(connection)
                                    : FoundInFile(Secret::TakenFrom(password), (*section)["user"]);
        }
        files.append(files.empty() ? "" : ", ").append(path);
    }
    return NotFound(Format(Translated(kNoService), service.c_str(), files.c_str()));
}

SecretAnswer FindAwsProfile(Connection const &connection) {
    DString const named = connection.Field("profile");
    DString const profile = named.empty() ? AwsProfile() : named;
    DString const path = AwsCredentialsFile();
    WipedText const file(path, false);
    if (!file.against.empty())
        return NotFound(file.against);
    std::optional<IniSection> section = FindIniSection(file.text, profile);
    if (!section)
        return NotFound(Format(Translated(kNoProfile), profile.c_str(), path.c_str()));
    SecretAnswer answer =
        FoundInFile(Secret::TakenFrom((*section)["aws_secret_access_key"]), (*section)["aws_access_key_id"]);
    answer.token = Secret::TakenFrom((*section)["aws_session_token"]);
    return answer.secret.IsEmpty() ? NotFound(Translated(kNoPassword)) : answer;
}

} // namespace

struct SecretStore::Memory {
    struct Told {
        SecretAnswer answer;
        Clock::time_point until;
        bool isRefusal; ///< of one that is there
    };
    std::mutex mutex;
    std::map<SecretKey, Secret> secrets;
    std::map<SecretKey, Told> byKeyring; ///< its answers: not every request of a reader is to ask it anew
};

std::optional<SecretKey> SecretKeyOf(Connection const &connection) {
    std::optional<ConnectionAddress> const address = connection.Address();
    if (!address)
        return std::nullopt;
    DString host = address->host;
    if (std::uint16_t const port = address->PortOrUsual(); port != 0)
        host = TextOf(HostAndPort{address->host, port});
    return SecretKey{.kind = WordsOf(connection.kind).word, .host = host, .user = address->user};
}

SecretStore &SecretStore::Instance() {
    static auto &store = *new SecretStore; // never destroyed: workers may still ask while the process ends
    static struct AtEnd {
        ~AtEnd() {
            std::lock_guard const lock(store.m_memory->mutex);
            store.m_memory->secrets.clear(); // which wipes them
            store.m_memory->byKeyring.clear();
        }
    } const atEnd;
    return store;
}

SecretStore::SecretStore() : m_memory(std::make_unique<Memory>()) {}
SecretStore::~SecretStore() = default;

SecretAnswer SecretStore::AskKeyring(SecretKey const &key, StopSignal const *stop) const {
    {
        std::lock_guard const lock(m_memory->mutex);
        if (auto const told = m_memory->byKeyring.find(key);
            told != m_memory->byKeyring.end() && Clock::now() < told->second.until)
            return told->second.answer;
    }
    KeyringAnswer asked = KeyringService::Look(AttributesOf(key), kPatience, stop);
    if (asked.state == KeyringState::Stopped)
        return NotFound(Translated(kStopped));
    bool const isFound = asked.state == KeyringState::Done;
    bool const isThere = asked.state != KeyringState::None && asked.state != KeyringState::Missing;
    SecretAnswer answer = NotFound(isFound   ? DString()
                                   : isThere ? KeyringWords(asked)
                                             : DString(Translated(kNoPassword)));
    if (isFound) {
        answer.kept = SecretAnswer::Kept::Keyring;
        answer.secret = std::move(asked.secret);
    }
    Clock::duration const holds = isFound ? Clock::duration(kSecretHolds) : Clock::duration(kSilenceHolds);
    std::lock_guard const lock(m_memory->mutex);
    m_memory->byKeyring[key] = {answer, Clock::now() + holds, !isFound && isThere};
    return answer;
}

DString SecretStore::KeyringRefusal(Connection const &connection) const {
    std::optional<SecretKey> const key = SecretKeyOf(connection);
    std::lock_guard const lock(m_memory->mutex);
    auto const told = key ? m_memory->byKeyring.find(*key) : m_memory->byKeyring.end();
    return told != m_memory->byKeyring.end() && told->second.isRefusal ? told->second.answer.words : DString();
}

SecretAnswer SecretStore::Find(Connection const &connection, StopSignal const *stop) const {
    std::optional<SecretKey> const key = SecretKeyOf(connection);
    if (connection.secret == SecretPlace::None || connection.secret == SecretPlace::Definition || !key)
        return {};
    {
        std::lock_guard const lock(m_memory->mutex);
        if (auto const found = m_memory->secrets.find(*key); found != m_memory->secrets.end())
            return {.kept = SecretAnswer::Kept::Memory, .secret = found->second, .token = {}, .user = {}, .words = {}};
    }
    bool const isDatabase = connection.kind == ConnectionKind::PostgreSql;
    switch (connection.secret) {
    case SecretPlace::File:
        return isDatabase ? FindPgPass(connection) : FindNetrc(connection);
    case SecretPlace::Profile:
        return isDatabase ? FindService(connection) : FindAwsProfile(connection);
    case SecretPlace::Keyring:
        return AskKeyring(*key, stop);
    default:
        return NotFound(Translated(isDatabase ? kNotInPgPass : kNoPassword));
    }
}

SecretAnswer SecretStore::Keep(Connection const &connection, Secret const &secret, StopSignal const *stop) {
    std::optional<SecretKey> const key = SecretKeyOf(connection);
    if (!key)
        return {};
    SecretAnswer kept{.kept = SecretAnswer::Kept::Memory, .secret = {}, .token = {}, .user = {}, .words = {}};
    if (connection.secret == SecretPlace::Keyring) {
        KeyringAnswer const answer = KeyringService::Store(AttributesOf(*key), "Zelvar: " + key->user + "@" + key->host,
                                                           secret, kPatience, stop);
        if (answer.state == KeyringState::Done) {
            std::lock_guard const lock(m_memory->mutex);
            m_memory->secrets.erase(*key); // one of before
            m_memory->byKeyring.erase(*key);
            kept.kept = SecretAnswer::Kept::Keyring;
            return kept;
        }
        kept.words = KeyringWords(answer);
    }
    std::lock_guard const lock(m_memory->mutex);
    m_memory->secrets[*key] = secret;
    return kept;
}

bool SecretStore::Forget(Connection const &connection, StopSignal const *stop) {
    std::optional<SecretKey> const key = SecretKeyOf(connection);
    if (!key)
        return true;
    {
        std::lock_guard const lock(m_memory->mutex);
        m_memory->secrets.erase(*key);
        m_memory->byKeyring.erase(*key);
    }
    if (connection.secret != SecretPlace::Keyring)
        return true;
    KeyringState const state = KeyringService::Forget(AttributesOf(*key), kPatience, stop).state;
    return state == KeyringState::Done || state == KeyringState::None || state == KeyringState::Missing;
}

} // namespace zelvar
