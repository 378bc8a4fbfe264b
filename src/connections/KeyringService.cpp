#include "zelvar/connections/KeyringService.h"

#include "zelvar/base/LateLibrary.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/RequestScope.h"

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#define SECRET_API_SUBJECT_TO_CHANGE // NOLINT: of the paths of items, which has not changed for ten years
#include <libsecret/secret.h>
#include <unistd.h>

namespace zelvar {

namespace {

/// The functions of libsecret, and of the libraries below it, that are used.
struct Library {
    decltype(&secret_password_lookupv_sync) lookUp = nullptr;
    decltype(&secret_password_storev_sync) store = nullptr;
    decltype(&secret_password_clearv_sync) clear = nullptr;
    decltype(&secret_service_get_sync) getService = nullptr;
    decltype(&secret_service_search_for_dbus_paths_sync) findPaths = nullptr;
    decltype(&secret_password_free) freePassword = nullptr;
    decltype(&secret_error_get_quark) secretErrors = nullptr;
    decltype(&g_strfreev) freeTexts = nullptr;
    decltype(&g_hash_table_new) newTable = nullptr;
    decltype(&g_hash_table_insert) insert = nullptr;
    decltype(&g_hash_table_unref) unrefTable = nullptr;
    decltype(&g_str_hash) hash = nullptr;
    decltype(&g_str_equal) equal = nullptr;
    decltype(&g_cancellable_new) newCancellable = nullptr;
    decltype(&g_cancellable_cancel) cancel = nullptr;
    decltype(&g_object_unref) unref = nullptr;
    decltype(&g_error_free) freeError = nullptr;
    decltype(&g_error_matches) matches = nullptr;
    decltype(&g_io_error_quark) ioErrors = nullptr;
    decltype(&g_dbus_error_quark) busErrors = nullptr;
    decltype(&g_bus_get_sync) getBus = nullptr;
    decltype(&g_dbus_connection_set_exit_on_close) setExitOnClose = nullptr;

    /// Null if the library or one of the functions is missing.
    static Library const *Get() {
        static Library library;
        static bool const isLoaded = library.Load();
        return isLoaded ? &library : nullptr;
    }

private:
    bool Load() {
        LateLibrary const library("libsecret-1.so.0");
        Report::TraceMessage(Report::kTraceDriver, "libsecret was loaded? %s", library.IsLoaded() ? "YES" : "NO");
        auto const find = [&library](char const *name, auto &function) { return library.Find(name, function); };
        return find("secret_password_lookupv_sync", lookUp) && find("secret_password_storev_sync", store) &&
               find("secret_password_clearv_sync", clear) && find("secret_service_get_sync", getService) &&
               find("secret_service_search_for_dbus_paths_sync", findPaths) &&
               find("secret_password_free", freePassword) && find("secret_error_get_quark", secretErrors) &&
               find("g_strfreev", freeTexts) && find("g_hash_table_new", newTable) &&
               find("g_hash_table_insert", insert) && find("g_hash_table_unref", unrefTable) &&
               find("g_str_hash", hash) && find("g_str_equal", equal) && find("g_cancellable_new", newCancellable) &&
               find("g_cancellable_cancel", cancel) && find("g_object_unref", unref) &&
               find("g_error_free", freeError) && find("g_error_matches", matches) &&
               find("g_io_error_quark", ioErrors) && find("g_dbus_error_quark", busErrors) &&
               find("g_bus_get_sync", getBus) && find("g_dbus_connection_set_exit_on_close", setExitOnClose);
    }
};

/// Not a bus that would have to be started for the question.
bool IsInSession() {
    char const *const bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    char const *const folder = std::getenv("XDG_RUNTIME_DIR");
    return (bus != nullptr && *bus != '\0') ||
           (folder != nullptr && *folder != '\0' && access((DString(folder) + "/bus").c_str(), F_OK) == 0);
}

/// What a secret is told apart by.
SecretSchema MakeSchema(KeyringService::Attributes const &attributes) {
    SecretSchema schema{};
    schema.name = "org.example.Zelvar.Connection";
    schema.flags = SECRET_SCHEMA_NONE;
    std::size_t i = 0;
    for (auto const &[name, value] : attributes)
        schema.attributes[i++] = {name.c_str(), SECRET_SCHEMA_ATTRIBUTE_STRING}; // NOLINT: a handful of 32
    return schema;
}

/// A question on its way. It may outlive whoever waits for it, and so holds all that it needs.
struct Question {
    KeyringService::Attributes attributes;
    DString label;
    Secret secret;
    Library const &library;
    GCancellable *const cancellable;
    std::mutex mutex;
    std::condition_variable arrived;
    std::optional<KeyringAnswer> answer;

    Question(Library const &secretLibrary, KeyringService::Attributes with)
        : attributes(std::move(with)), library(secretLibrary), cancellable(secretLibrary.newCancellable()) {}
    Question(Question const &) = delete;
    Question &operator=(Question const &) = delete;
    ~Question() { library.unref(cancellable); }
};

using Put = KeyringAnswer (*)(Question &question, SecretSchema const &schema, GHashTable *table);

KeyringAnswer AnswerOf(Library const &library, GError *error) {
    KeyringAnswer answer{.state = KeyringState::Failed, .secret = {}, .reason = error->message};
    static constexpr int kNobodyThere[] = {G_DBUS_ERROR_SERVICE_UNKNOWN,    G_DBUS_ERROR_NAME_HAS_NO_OWNER,
                                           G_DBUS_ERROR_NO_REPLY,           G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND,
                                           G_DBUS_ERROR_SPAWN_CHILD_EXITED, G_DBUS_ERROR_SPAWN_EXEC_FAILED};
    for (int const code : kNobodyThere)
        if (library.matches(error, library.busErrors(), code) != 0)
            answer.state = KeyringState::Missing;
    if (library.matches(error, library.secretErrors(), SECRET_ERROR_IS_LOCKED) != 0)
        answer.state = KeyringState::Locked;
    library.freeError(error);
    return answer;
}

/// Whether there is one in a keyring that is still locked: a user who does not unlock it is told of like one who has
/// kept nothing.
bool IsLockedAway(Question &question, SecretSchema const &schema, GHashTable *table) {
    Library const &library = question.library;
    SecretService *const service = library.getService(SECRET_SERVICE_NONE, question.cancellable, nullptr);
    if (service == nullptr)
        return false;
    // Nothing is unlocked and nobody asked. Their paths alone: libraries keep some bytes of each item that they make.
    gchar **locked = nullptr;
    library.findPaths(service, &schema, table, question.cancellable, nullptr, &locked, nullptr);
    bool const isLocked = locked != nullptr && *locked != nullptr;
    library.freeTexts(locked);
    library.unref(service);
    return isLocked;
}

KeyringAnswer PutLook(Question &question, SecretSchema const &schema, GHashTable *table) {
    GError *error = nullptr;
    gchar *const found = question.library.lookUp(&schema, table, question.cancellable, &error);
    if (error != nullptr)
        return AnswerOf(question.library, error);
    if (found == nullptr)
        return {.state = IsLockedAway(question, schema, table) ? KeyringState::Locked : KeyringState::None,
                .secret = {},
                .reason = {}};
    KeyringAnswer answer{.state = KeyringState::Done, .secret = Secret(found), .reason = {}};
    question.library.freePassword(found);
    return answer;
}

KeyringAnswer PutStore(Question &question, SecretSchema const &schema, GHashTable *table) {
    GError *error = nullptr;
    DString password(question.secret.Reveal());
    bool const isStored = question.library.store(&schema, table, SECRET_COLLECTION_DEFAULT, question.label.c_str(),
                                                 password.c_str(), question.cancellable, &error) != 0;
    Wipe(password);
    if (error != nullptr)
        return AnswerOf(question.library, error);
    return {.state = isStored ? KeyringState::Done : KeyringState::Failed, .secret = {}, .reason = {}};
}

KeyringAnswer PutForget(Question &question, SecretSchema const &schema, GHashTable *table) {
    GError *error = nullptr;
    bool const isGone = question.library.clear(&schema, table, question.cancellable, &error) != 0;
    if (error != nullptr)
        return AnswerOf(question.library, error);
    return {.state = isGone ? KeyringState::Done : KeyringState::None, .secret = {}, .reason = {}};
}

/// On the question's own thread.
KeyringAnswer Work(Question &question, Put put) {
    Library const &library = question.library;
    // A program does not end with its bus, whatever GIO thinks of that.
    if (GDBusConnection *const bus = library.getBus(G_BUS_TYPE_SESSION, question.cancellable, nullptr)) {
        library.setExitOnClose(bus, FALSE);
        library.unref(bus);
    } else {
        return {};
    }
    GHashTable *const table = library.newTable(library.hash, library.equal);
    for (auto &[name, value] : question.attributes)
        library.insert(table, const_cast<char *>(name.c_str()), const_cast<char *>(value.c_str())); // NOLINT: only read
    KeyringAnswer answer = put(question, MakeSchema(question.attributes), table);
    library.unrefTable(table);
    return answer;
}

KeyringAnswer Ask(std::shared_ptr<Question> const &question, Put put, std::chrono::milliseconds time,
                  StopSignal const *stop) {
    std::thread([question, put] {
        KeyringAnswer answer = Work(*question, put);
        std::lock_guard const lock(question->mutex);
        question->answer = std::move(answer);
        question->arrived.notify_all();
    }).detach();
    constexpr std::chrono::milliseconds kPulse{20};
    auto const end = std::chrono::steady_clock::now() + time;
    std::unique_lock lock(question->mutex);
    while (!question->answer) {
        RequestScope const *const scope = RequestScope::Current();
        bool const isStopped = (stop != nullptr && *stop) || (scope != nullptr && scope->IsStopped());
        if (isStopped || std::chrono::steady_clock::now() >= end) {
            question->library.cancel(question->cancellable);
            return {.state = isStopped ? KeyringState::Stopped : KeyringState::Late, .secret = {}, .reason = {}};
        }
        question->arrived.wait_for(lock, kPulse);
    }
    return *std::exchange(question->answer, std::nullopt);
}

/// Null where nobody can be asked.
std::shared_ptr<Question> MakeQuestion(KeyringService::Attributes const &attributes) {
    Library const *const library = IsInSession() ? Library::Get() : nullptr;
    return library == nullptr ? nullptr : std::make_shared<Question>(*library, attributes);
}

} // namespace

KeyringAnswer KeyringService::Look(Attributes const &attributes, std::chrono::milliseconds time,
                                   StopSignal const *stop) {
    std::shared_ptr<Question> const question = MakeQuestion(attributes);
    return question == nullptr ? KeyringAnswer() : Ask(question, &PutLook, time, stop);
}

KeyringAnswer KeyringService::Store(Attributes const &attributes, DString const &label, Secret const &secret,
                                    std::chrono::milliseconds time, StopSignal const *stop) {
    // The service takes texts alone.
    DString text(secret.Reveal());
    bool const isText = ToValidUtf8(text) == text && text.find('\0') == DString::npos;
    Wipe(text);
    std::shared_ptr<Question> const question = isText ? MakeQuestion(attributes) : nullptr;
    if (question == nullptr)
        return {.state = isText ? KeyringState::Missing : KeyringState::Failed, .secret = {}, .reason = {}};
    question->label = ToValidUtf8(label);
    question->secret = secret;
    return Ask(question, &PutStore, time, stop);
}

KeyringAnswer KeyringService::Forget(Attributes const &attributes, std::chrono::milliseconds time,
                                     StopSignal const *stop) {
    std::shared_ptr<Question> const question = MakeQuestion(attributes);
    return question == nullptr ? KeyringAnswer() : Ask(question, &PutForget, time, stop);
}

} // namespace zelvar
