#include "zelvar/connections/ConnectionTrial.h"

#include "zelvar/base/Redaction.h"
#include "zelvar/base/Translation.h"
#include "zelvar/connections/ListingWords.h"
#include "zelvar/data/ProxySettings.h"
#include "zelvar/platform/os/Dialing.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace zelvar {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char const *kFound = Mark("%s is %s.");
constexpr char const *kUnknown = Mark("No server named %s is known.");
constexpr char const *kNobodyKnows = Mark("Whether there is a server named %s could not be found out (%lld s).");
constexpr char const *kTakes = Mark("%s takes connections.");
constexpr char const *kNoPostgres = Mark("%s refuses connections: is PostgreSQL running there?");
constexpr char const *kNoServer = Mark("%s refuses connections: is a server running there?");
constexpr char const *kSilent = Mark("%s does not answer (%lld s).");
constexpr char const *kUnreachable = Mark("%s cannot be reached: %s.");
constexpr char const *kStopped = Mark("Stopped.");
constexpr char const *kInKeyring = Mark("The keyring has a password.");
constexpr char const *kInMemory = Mark("A password is kept until the program ends.");
constexpr char const *kInFile = Mark("A file of this computer has a password.");
constexpr char const *kTyped = Mark("The one that was typed is used.");
constexpr char const *kInDefinition = Mark("The definition itself holds a password, where anybody may read it.");

/// The results as they come, with the time that each took.
class Reporter {
public:
    Reporter(ConnectionTrial::OnResult const &onResult, Secret const &secret)
        : m_onResult(onResult), m_secret(secret) {}

    /// True if the next step may follow.
    bool Tell(TrialStep step, TrialState state, DString words) {
        auto const now = Clock::now();
        TrialResult const result{.step = step,
                                 .state = state,
                                 .words = Shown(std::move(words)),
                                 .took = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_begin)};
        m_begin = now;
        m_onResult(result);
        return state == TrialState::Works;
    }
    /// Those of one listing: the time of it all is that of its own step, or of the last.
    bool Tell(std::vector<TrialResult> results) {
        auto const own = std::find_if(results.begin(), results.end(),
                                      [](TrialResult const &result) { return result.step == TrialStep::Listing; });
        auto const timed = own == results.end() ? std::prev(own) : own;
        timed->took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_begin);
        for (TrialResult &result : results) {
            result.words = Shown(std::move(result.words));
            m_onResult(result);
        }
        return results.back().state == TrialState::Works;
    }

private:
    /// Without what must not be shown, should somebody else's words hold it.
    [[nodiscard]] DString Shown(DString text) const {
        std::string_view const bytes = m_secret.Reveal();
        for (std::size_t at = 0; !bytes.empty() && (at = text.find(bytes, at)) != DString::npos; at += 3)
            text.replace(at, bytes.size(), "***");
        return Redacted(text);
    }

    ConnectionTrial::OnResult const &m_onResult;
    Secret const &m_secret;
    Clock::time_point m_begin = Clock::now();
};

TrialState StateOf(int error) {
    return error == 0 ? TrialState::Works : error == ECANCELED ? TrialState::Stopped : TrialState::Failed;
}

DString LookUpWords(DString const &host, int error, long long seconds) {
    switch (error) {
    case ECANCELED:
        return Translated(kStopped);
    case ENOENT:
        return Format(Translated(kUnknown), host.c_str());
    default:
        return Format(Translated(kNobodyKnows), host.c_str(), seconds);
    }
}

DString ConnectWords(ConnectionTerms const &terms, int error, long long seconds) {
    DString const place = TextOf(terms.hosts.front());
    switch (error) {
    case 0:
        return Format(Translated(kTakes), place.c_str());
    case ECANCELED:
        return Translated(kStopped);
    case ECONNREFUSED:
        return Format(Translated(terms.kind == ConnectionKind::PostgreSql ? kNoPostgres : kNoServer), place.c_str());
    case ETIMEDOUT:
        return Format(Translated(kSilent), place.c_str(), seconds);
    default:
        return Format(Translated(kUnreachable), place.c_str(),
                      std::error_code(error, std::generic_category()).message().c_str());
    }
}

platform::Patience PatienceWith(ConnectionTerms const &terms, StopSignal const *stop) {
    return {terms.connectTime, [stop] { return stop != nullptr && *stop; }};
}

/// Whether its server is reached through another.
bool HasProxy(ConnectionTerms const &terms, StopSignal const *stop) {
    return ProxySettings().Find(terms, terms.hosts.front().host, PatienceWith(terms, stop)).has_value();
}

/// Both steps of the way to the server, to which nothing is sent.
bool ReachServer(ConnectionTerms const &terms, Reporter &reporter, StopSignal const *stop) {
    HostAndPort const &server = terms.hosts.front();
    long long const seconds = std::chrono::duration_cast<std::chrono::seconds>(terms.connectTime).count();
    int error = 0;
    std::vector<wire::HostNumber> const numbers = platform::ResolveHost(server.host, PatienceWith(terms, stop), error);
    DString const words =
        error == 0 ? Format(Translated(kFound), server.host.c_str(), platform::TextOf(numbers.front()).c_str())
                   : LookUpWords(server.host, error, seconds);
    if (!reporter.Tell(TrialStep::Name, StateOf(error), words))
        return false;
    platform::Patience const forAll = PatienceWith(terms, stop);
    for (wire::HostNumber const &number : numbers)
        if (platform::DialHost(number, server.port, forAll, error).IsOpen() || error == ECANCELED)
            break;
    return reporter.Tell(TrialStep::Connection, StateOf(error), ConnectWords(terms, error, seconds));
}

bool FindPassword(ConnectionBook::Entry const &entry, Reporter &reporter, StopSignal const *stop) {
    if (!entry.secret.IsEmpty())
        return reporter.Tell(TrialStep::Password, TrialState::Works,
                             Translated(entry.connection.secret == SecretPlace::Definition ? kInDefinition : kTyped));
    SecretAnswer const answer = SecretStore::Instance().Find(entry.connection, stop);
    TrialState const failure = stop != nullptr && *stop ? TrialState::Stopped : TrialState::Failed;
    switch (answer.kept) {
    case SecretAnswer::Kept::Keyring:
        return reporter.Tell(TrialStep::Password, TrialState::Works, Translated(kInKeyring));
    case SecretAnswer::Kept::Memory:
        return reporter.Tell(TrialStep::Password, TrialState::Works, Translated(kInMemory));
    case SecretAnswer::Kept::File:
        return reporter.Tell(TrialStep::Password, TrialState::Works, Translated(kInFile));
    default:
        return reporter.Tell(TrialStep::Password, failure, answer.words);
    }
}

} // namespace

char const *TrialStepInWords(TrialStep step) {
    static constexpr std::array kWords{Mark("name"),  Mark("connection"), Mark("password"),  Mark("encryption"),
                                       Mark("login"), Mark("listing"),    Mark("first item")};
    return Translated(kWords.at(static_cast<std::size_t>(step)));
}

ConnectionTrial::ConnectionTrial(ConnectionBook::Entry entry, Listing listing)
    : m_entry(std::move(entry)), m_listing(std::move(listing)) {}

bool ConnectionTrial::Run(OnResult const &onResult, StopSignal const *stop) const {
    Reporter reporter(onResult, m_entry.secret);
    Connection const &connection = m_entry.connection;
    // Its secret is a step of its own.
    ConnectionBook::Entry plain = m_entry;
    plain.connection.secret = SecretPlace::None;
    plain.secret = {};
    ConnectionTerms const terms = MakeTerms(plain, stop);
    bool const isServer = !terms.hosts.empty() && !terms.hosts.front().host.starts_with("*") &&
                          connection.kind != ConnectionKind::Odbc && !HasProxy(terms, stop);
    if (isServer && !ReachServer(terms, reporter, stop))
        return false;
    if (connection.secret != SecretPlace::None && !FindPassword(m_entry, reporter, stop))
        return false;
    std::optional<ListedConnection> const listed = m_listing ? m_listing() : std::nullopt;
    return !listed || reporter.Tell(ListingInSteps(connection, *listed));
}

} // namespace zelvar
