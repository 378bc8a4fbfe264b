#pragma once

#include "support/LoopbackPort.h"
#include "support/StoreAnswers.h"
#include "support/Test.h"

#include <mutex>
#include <set>
#include <thread>

namespace zelvar::test {

/// A small web server on the loopback interface that knows ranges. It serves what a test gives it and tells what it was
/// asked for. It ends with the object.
class HttpServer : Pinned {
public:
    HttpServer();
    ~HttpServer();

    /// "http://127.0.0.1:<port>", without a separator at its end.
    [[nodiscard]] std::string Url() const;
    [[nodiscard]] int Port() const { return m_listener.Number(); }
    /// `path` as it stands in a request, from "/" on.
    void Serve(std::string const &path, std::string bytes, std::string const &type = "application/octet-stream");
    /// Answers with that status, a refusal or a failure, and a body where one is given. `path` may follow a method:
    /// "PROPFIND /a/".
    void Refuse(std::string const &path, int status, std::string body = {});
    /// Sends on to another address.
    void SendOn(std::string const &path, std::string const &address);
    /// Only who logs in so is served; others are answered 401. "user:password" in base 64.
    void Demand(std::string const &login);
    /// An object store's bucket at "/bucket/", listed in pages of that many keys. Folders are keys that end in "/".
    void ServeBucket(std::string const &bucket, std::vector<std::string> keys, std::size_t keysOfPage = 1000) {
        OnStore(
            [&](StoreAnswers &store) { store.SetBucket(bucket, {.keys = std::move(keys), .keysOfPage = keysOfPage}); });
    }
    /// Changes what it answers as an object store.
    template <class Change>
    void OnStore(Change const &change) {
        std::lock_guard const lock(m_mutex);
        change(m_store);
    }
    /// Waits before each answer from now on.
    void Delay(std::chrono::milliseconds delay) { m_delay = delay.count(); }
    /// Sends a byte a second from now on.
    void Drip() { m_drips = true; }
    /// Takes connections and requests, and never answers.
    void Hang(bool hangs = true) { m_hangs = hangs; }

    /// Lines such as "GET /a.tif" in the order of their coming.
    [[nodiscard]] std::vector<std::string> Requests() const;
    /// Logins that came with requests, as the header says them.
    [[nodiscard]] std::set<std::string> Logins() const;
    /// Bytes of bodies sent so far.
    [[nodiscard]] std::size_t BytesSent() const { return m_bytesSent; }
    /// Connections taken so far, with or without a request.
    [[nodiscard]] int Connections() const { return m_connections; }
    /// Of these, those that their other end has not closed.
    [[nodiscard]] int OpenConnections() const { return m_connections - m_endedConnections; }

private:
    struct Resource {
        std::string bytes;
        std::string type;
        int status = 404;          ///< of one without a type, whose bytes are a failure's body
        std::string location = {}; ///< of one that is elsewhere
    };
    void Run();
    void Talk(int connection);
    bool Answer(int connection, std::string const &request);
    void Send(int connection, std::string const &text);
    /// False if the server or the connection ends meanwhile.
    [[nodiscard]] bool Wait(int connection, std::chrono::milliseconds time) const;

    LoopbackPort m_listener{16};
    int m_wake[2] = {-1, -1}; ///< a pipe; its end ends all waits
    std::atomic<bool> m_hangs{false};
    std::atomic<bool> m_drips{false};
    std::atomic<std::int64_t> m_delay{0}; ///< ms
    std::atomic<std::size_t> m_bytesSent{0};
    std::atomic<int> m_connections{0};
    std::atomic<int> m_endedConnections{0};
    mutable std::mutex m_mutex; ///< guards all below but the threads
    std::string m_login;
    StoreAnswers m_store;
    std::map<std::string, Resource> m_resources;
    std::vector<std::string> m_requests;
    std::set<std::string> m_logins;
    std::vector<std::thread> m_talks; ///< of the thread that runs only
    std::thread m_thread;
};

} // namespace zelvar::test
