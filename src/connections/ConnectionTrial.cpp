#include "zelvar/connections/ConnectionTrial.h"

#include "zelvar/base/Translation.h"
#include "zelvar/connections/HostProbe.h"

#include <algorithm>
#include <array>
#include <cstdlib>

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
constexpr char const *kInDefinition = Mark("The definition itself holds a password, where anybody may read it.");

/// What web addresses are reached through, if anything is.
bool HasProxy(ConnectionKind kind) {
    if (kind == ConnectionKind::PostgreSql || kind == ConnectionKind::Odbc)
        return false;
    static constexpr std::array kVariables{"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"};
    return std::any_of(kVariables.begin(), kVariables.end(), [](char const *name) {
        char const *const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody of ours sets it
        return value != nullptr && *value != '\0';
    });
}

/// The results as they come, with the time that each took.
class Reporter {
public:
    explicit Reporter(ConnectionTrial::OnResult const &onResult) : m_onResult(onResult) {}

    /// True if the next step may follow.
    bool Tell(TrialStep step, TrialState state, DString words) {
        auto const now = Clock::now();
        TrialResult const result{.step = step,
                                 .state = state,
                                 .words = std::move(words),
                                 .took = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_begin)};
        m_begin = now;
        m_onResult(result);
        return state == TrialState::Works;
    }
    bool Tell(TrialResult const &result) { return Tell(result.step, result.state, result.words); }

private:
    ConnectionTrial::OnResult const &m_onResult;
    Clock::time_point m_begin = Clock::now();
};

/// Both steps of the way to the server.
bool ReachServer(ConnectionTerms const &terms, Reporter &reporter, StopSignal const *stop) {
    HostAndPort const &server = terms.hosts.front();
    DString const host = server.host;
    DString const place = TextOf(server);
    long long const seconds = std::chrono::duration_cast<std::chrono::seconds>(terms.connectTime).count();
    HostProbe probe(server, terms.connectTime, stop);
    ProbeState state = probe.LookUp();
    DString words = Format(Translated(kFound), host.c_str(), probe.Number().c_str());
    if (state == ProbeState::Unknown)
        words = Format(Translated(kUnknown), host.c_str());
    else if (state == ProbeState::Late)
        words = Format(Translated(kNobodyKnows), host.c_str(), seconds);
    auto const outcome = [](ProbeState of) {
        return of == ProbeState::Reached   ? TrialState::Works
               : of == ProbeState::Stopped ? TrialState::Stopped
                                           : TrialState::Failed;
    };
    if (state == ProbeState::Stopped)
        words = Translated(kStopped);
    if (!reporter.Tell(TrialStep::Name, outcome(state), words))
        return false;
    state = probe.Connect();
    switch (state) {
    case ProbeState::Reached:
        words = Format(Translated(kTakes), place.c_str());
        break;
    case ProbeState::Refused:
        words = Format(Translated(terms.kind == ConnectionKind::PostgreSql ? kNoPostgres : kNoServer), place.c_str());
        break;
    case ProbeState::Late:
        words = Format(Translated(kSilent), place.c_str(), seconds);
        break;
    case ProbeState::Stopped:
        words = Translated(kStopped);
        break;
    default:
        words = Format(Translated(kUnreachable), place.c_str(), probe.Error().message().c_str());
    }
    return reporter.Tell(TrialStep::Connection, outcome(state), words);
}

bool FindPassword(ConnectionBook::Entry const &entry, Reporter &reporter, StopSignal const *stop) {
    if (!entry.secret.IsEmpty())
        return reporter.Tell(TrialStep::Password, TrialState::Works, Translated(kInDefinition));
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
    static constexpr std::array kWords{Mark("name"), Mark("connection"), Mark("password"), Mark("listing")};
    return Translated(kWords.at(static_cast<std::size_t>(step)));
}

ConnectionTrial::ConnectionTrial(ConnectionBook::Entry entry, Listing listing)
    : m_entry(std::move(entry)), m_listing(std::move(listing)) {}

bool ConnectionTrial::Run(OnResult const &onResult, StopSignal const *stop) const {
    Reporter reporter(onResult);
    Connection const &connection = m_entry.connection;
    // Its secret is a step of its own.
    ConnectionBook::Entry plain = m_entry;
    plain.connection.secret = SecretPlace::None;
    plain.secret = {};
    ConnectionTerms const terms = MakeTerms(plain, stop);
    bool const isServer = !terms.hosts.empty() && !terms.hosts.front().host.starts_with("*") &&
                          connection.kind != ConnectionKind::Odbc && !HasProxy(connection.kind);
    if (isServer && !ReachServer(terms, reporter, stop))
        return false;
    if (connection.secret != SecretPlace::None && !FindPassword(m_entry, reporter, stop))
        return false;
    std::optional<TrialResult> const listed = m_listing ? m_listing() : std::nullopt;
    return !listed || reporter.Tell(*listed);
}

} // namespace zelvar
