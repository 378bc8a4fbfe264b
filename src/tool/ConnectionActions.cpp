#include "zelvar/tool/ConnectionActions.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/connections/ConnectionFields.h"
#include "zelvar/connections/ConnectionFiles.h"
#include "zelvar/connections/ConnectionPasting.h"
#include "zelvar/connections/ConnectionSaving.h"
#include "zelvar/connections/ConnectionTrial.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/StopByUser.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <fcntl.h>
#include <termios.h>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("sources");

/// While it lives, what is typed is not shown.
class NoEcho {
public:
    explicit NoEcho(int terminal) : m_terminal(terminal), m_isOn(tcgetattr(terminal, &m_former) == 0) {
        termios silent = m_former;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        if (m_isOn)
            tcsetattr(terminal, TCSAFLUSH, &silent);
    }
    ~NoEcho() {
        if (m_isOn)
            tcsetattr(m_terminal, TCSAFLUSH, &m_former);
    }
    NoEcho(NoEcho const &) = delete;
    NoEcho &operator=(NoEcho const &) = delete;

private:
    int m_terminal;
    termios m_former{};
    bool m_isOn;
};

/// The first line of a file, or of the standard input; nothing if there is none, or it is no password of anybody.
std::optional<Secret> ReadPassword(DString const &file) {
    constexpr std::size_t kLongest = 64U << 10U;
    FileDescriptor const opened(file == "-" ? -1 : open(file.c_str(), O_RDONLY | O_CLOEXEC));
    int const input = file == "-" ? STDIN_FILENO : opened.Get();
    NoEcho const silent(input);
    DString line;
    line.reserve(kLongest); // a longer one would leave a copy behind
    char c = 0;
    while (line.size() < kLongest && read(input, &c, 1) == 1 && c != '\n')
        line += c;
    bool const isWhole = !line.empty() && line.size() < kLongest;
    Secret secret = Secret::TakenFrom(line);
    return isWhole ? std::optional(std::move(secret)) : std::nullopt;
}

/// "kind: field, field": what the user may have meant.
DString KnownFields(ConnectionKind kind) {
    DString keys;
    for (ConnectionField const &field : FieldsOf(kind))
        keys.append(keys.empty() ? "" : ", ").append(field.key);
    return keys;
}

std::optional<ConnectionKind> KindCalled(DString const &word) {
    for (ConnectionKindWords const &kind : ConnectionKinds())
        if (kind.word == word && kind.kind != ConnectionKind::Address)
            return kind.kind;
    return std::nullopt;
}

/// The connection that options and address describe; nothing, with what is wrong in `error`.
std::optional<Connection> Described(Arguments const &arguments, DString &error) {
    Connection connection;
    bool const hasAddress = arguments.words.size() > 1;
    std::optional<PastedConnection> const pasted =
        hasAddress ? ConnectionFromPasted(arguments.words[1]) : std::optional<PastedConnection>();
    if (hasAddress && !pasted)
        error = "this is no address of a connection";
    else if (pasted && !pasted->secret.IsEmpty())
        error = "an address in the arguments must hold no password: everybody on this computer can read them; use "
                "--password";
    if (pasted)
        connection = pasted->connection;
    connection.name = arguments.Value("--name");
    if (DString const word = arguments.Value("--kind"); !word.empty()) {
        std::optional<ConnectionKind> const kind = KindCalled(word);
        if (!kind)
            error = "there is no kind " + word;
        else if (pasted && *kind != connection.kind)
            error = DString("the address is one of the kind ") + WordsOf(connection.kind).word;
        else
            connection.kind = *kind;
    } else if (!hasAddress) {
        error = "a kind or an address is needed";
    }
    for (DString const &field : arguments.All("--field")) {
        std::size_t const equals = field.find('=');
        DString const key = field.substr(0, equals);
        std::vector<ConnectionField> const known = FieldsOf(connection.kind);
        bool const isKnown =
            std::any_of(known.begin(), known.end(), [&](ConnectionField const &one) { return one.key == key; });
        if (error.empty() && (!isKnown || equals == DString::npos))
            error = "fields are " + KnownFields(connection.kind) + ", each as KEY=VALUE";
        else if (isKnown && equals != DString::npos)
            connection.fields[key] = field.substr(equals + 1);
    }
    std::optional<SecretPlace> const place = ParseSecretPlace(arguments.Value("--secret", "none"));
    if (!place || *place == SecretPlace::Definition)
        error = "a secret is kept by keyring, ask, profile, file or none";
    connection.secret = place.value_or(SecretPlace::None);
    for (DString const &host : arguments.All("--allow"))
        if (std::optional<HostAndPort> allowed = ParseHostAndPort(host))
            connection.allow.push_back(*std::move(allowed));
        else
            error = "'" + host + "' is no host with a port";
    constexpr int kLongest = 3600; // s
    if (DString const limit = arguments.Value("--time-limit"); !limit.empty()) {
        std::optional<int> const seconds = CountIn(limit, kLongest);
        if (!seconds)
            error = "the time limit is from 1 to 3600 seconds";
        connection.timeLimit = std::chrono::seconds(seconds.value_or(0));
    }
    return error.empty() ? std::optional(connection) : std::nullopt;
}

/// Nothing for more than one of the options.
std::optional<IfThere> WhatIfThere(Arguments const &arguments) {
    static constexpr std::array<std::pair<char const *, IfThere>, 3> kOptions{
        {{"--keep-both", IfThere::KeepBoth}, {"--replace", IfThere::Replace}, {"--skip", IfThere::Skip}}};
    std::optional<IfThere> chosen = IfThere::Refuse;
    int count = 0;
    for (auto const &[option, ifThere] : kOptions)
        if (arguments.Has(option)) {
            chosen = ifThere;
            ++count;
        }
    return count > 1 ? std::nullopt : chosen;
}

int Conclude(ConnectionChange const &change) {
    for (DString const &name : change.names)
        std::printf("%s\n", EscapeControlBytes(name).c_str());
    return change.isDone ? kDone : Failure(change.words);
}

// For scripts: the same in every language.
char const *StepText(TrialStep step) {
    static constexpr std::array kTexts{"name",  "connection", "password",  "encryption",
                                       "login", "listing",    "first item"};
    return kTexts.at(static_cast<std::size_t>(step));
}
char const *StateText(TrialState state) {
    static constexpr std::array kTexts{"works", "failed", "stopped"};
    return kTexts.at(static_cast<std::size_t>(state));
}

/// Puts the password where the connection keeps it.
int KeepPassword(Connection const &connection, Secret const &password) {
    SecretAnswer const kept = SecretStore::Instance().Keep(connection, password);
    if (kept.kept == SecretAnswer::Kept::Keyring)
        return kDone;
    return Failure("the connection is made, and its password is not kept: " + kept.words);
}

} // namespace

int AddSource(Arguments const &arguments) {
    DString error;
    std::optional<Connection> connection = Described(arguments, error);
    std::optional<IfThere> const ifThere = WhatIfThere(arguments);
    DString const passwordFile = arguments.Value("--password");
    if (error.empty() && !ifThere)
        error = "only one of --keep-both, --replace and --skip";
    if (error.empty() && !passwordFile.empty() && connection->secret != SecretPlace::Keyring)
        error = "only --secret keyring keeps a password";
    if (!error.empty())
        return UsageError(kSpec, error);
    if (std::vector<ConnectionFault> const faults = FaultsOf(*connection); !faults.empty()) {
        for (ConnectionFault const &fault : faults)
            std::ignore = Failure(fault.field + ": " + fault.words);
        return kUsage;
    }
    std::optional<Secret> password;
    if (!passwordFile.empty()) {
        password = ReadPassword(passwordFile);
        if (!password)
            return Failure("there is no password in '" + passwordFile + "'");
    }
    ConnectionChange const change = SaveConnection(*connection, *ifThere);
    int const exitCode = Conclude(change);
    if (exitCode != kDone || !password || change.names.empty())
        return exitCode;
    return KeepPassword(*connection, *password);
}

int RemoveSource(Arguments const &arguments) {
    SavedConnection const removed = RemoveWithSecret(arguments.words[1], true);
    DString const &words = removed.change.isDone ? removed.words : removed.change.words;
    return words.empty() ? kDone : Failure(words);
}

int TestSource(Arguments const &arguments) {
    UseReaderDrivers();
    StopByUser const stopping;
    std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
    ConnectionBook::Entry const *const found = book->Find(arguments.words[1]);
    if (found == nullptr)
        return Failure("there is no connection called '" + arguments.words[1] + "'");
    if (DString const file = arguments.Value("--password"); !file.empty()) {
        std::optional<Secret> const password = ReadPassword(file);
        if (!password)
            return Failure("there is no password in '" + file + "'");
        Connection asked = found->connection;
        asked.secret = SecretPlace::Ask; // for this trial alone
        std::ignore = SecretStore::Instance().Keep(asked, *password);
    }
    bool isStopped = false;
    auto const print = [&](TrialResult const &result) {
        isStopped = result.state == TrialState::Stopped;
        std::printf("%s\t%s\t%lld\t%s\n", StepText(result.step), StateText(result.state),
                    static_cast<long long>(result.took.count()), EscapeControlBytes(result.words).c_str());
        std::fflush(stdout);
    };
    auto const list = [found, &stopping] { return ListConnection(*found, found->connection.name, &stopping.Signal()); };
    bool const works = ConnectionTrial(*found, list).Run(print, &stopping.Signal());
    return works ? kDone : isStopped ? kNothing : kFailed;
}

int ExportSource(Arguments const &arguments) {
    ConnectionChange const change = ExportConnections({arguments.words[1]}, arguments.words[2]);
    return change.isDone ? kDone : Failure(change.words);
}

int ImportSources(Arguments const &arguments) {
    std::optional<IfThere> const ifThere = WhatIfThere(arguments);
    return ifThere ? Conclude(ImportConnections(arguments.words[1], *ifThere))
                   : UsageError(kSpec, "only one of --keep-both, --replace and --skip");
}

} // namespace zelvar::tool
