#include "support/HttpServer.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zelvar::test {

namespace {

/// Waits until something can be read; false once the pipe's other end is closed.
bool AwaitReadable(int descriptor, int wake) {
    std::array<pollfd, 2> waits{pollfd{descriptor, POLLIN, 0}, pollfd{wake, POLLIN, 0}};
    while (poll(waits.data(), waits.size(), -1) < 0)
        continue;
    return waits[1].revents == 0;
}

} // namespace

HttpServer::HttpServer() {
    if (pipe(m_wake) != 0)
        throw std::runtime_error("no server on the loopback interface");
    m_thread = std::thread([this] { Run(); });
}

HttpServer::~HttpServer() {
    close(m_wake[1]);
    m_thread.join();
    close(m_wake[0]);
}

std::string HttpServer::Url() const { return "http://" + m_listener.Place(); }

void HttpServer::Serve(std::string const &path, std::string bytes, std::string const &type) {
    std::lock_guard const lock(m_mutex);
    m_resources[path] = {std::move(bytes), type};
}

void HttpServer::Refuse(std::string const &path, int status, std::string body) {
    std::lock_guard const lock(m_mutex);
    m_resources[path] = {.bytes = std::move(body), .type = {}, .status = status};
}

void HttpServer::SendOn(std::string const &path, std::string const &address) {
    std::lock_guard const lock(m_mutex);
    m_resources[path] = {.bytes = {}, .type = {}, .status = 302, .location = address};
}

void HttpServer::Demand(std::string const &login) {
    std::lock_guard const lock(m_mutex);
    m_login = login;
}

bool HttpServer::Wait(int connection, std::chrono::milliseconds time) const {
    std::array<pollfd, 2> waits{pollfd{m_wake[0], POLLIN, 0}, pollfd{connection, POLLRDHUP, 0}};
    return poll(waits.data(), waits.size(), static_cast<int>(time.count())) == 0;
}

void HttpServer::Send(int connection, std::string const &text) {
    std::size_t done = 0;
    while (done < text.size()) {
        if (m_drips && !Wait(connection, std::chrono::seconds(1))) {
            shutdown(connection, SHUT_RDWR);
            return;
        }
        std::size_t const part = m_drips ? 1 : text.size() - done;
        ssize_t const count = send(connection, text.data() + done, part, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        done += static_cast<std::size_t>(count);
    }
}

std::vector<std::string> HttpServer::Requests() const {
    std::lock_guard const lock(m_mutex);
    return m_requests;
}

std::set<std::string> HttpServer::Logins() const {
    std::lock_guard const lock(m_mutex);
    return m_logins;
}

void HttpServer::Run() {
    while (AwaitReadable(m_listener.Socket(), m_wake[0])) {
        int const connection = accept4(m_listener.Socket(), nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            continue;
        ++m_connections;
        m_talks.emplace_back([this, connection] {
            Talk(connection);
            close(connection);
            ++m_endedConnections;
        });
    }
    for (std::thread &talk : m_talks)
        talk.join();
}

void HttpServer::Talk(int connection) {
    std::string received;
    while (AwaitReadable(connection, m_wake[0])) {
        std::array<char, 4096> part{};
        ssize_t const count = recv(connection, part.data(), part.size(), 0);
        if (count <= 0)
            return;
        received.append(part.data(), static_cast<std::size_t>(count));
        for (std::size_t end = received.find("\r\n\r\n"); end != std::string::npos; end = received.find("\r\n\r\n")) {
            std::string const request = received.substr(0, end + 2);
            std::string const length = HeaderOf(request, "Content-Length");
            std::size_t const whole = end + 4 + (length.empty() ? 0 : std::stoul(length));
            if (received.size() < whole)
                break;
            received.erase(0, whole);
            if (!Answer(connection, request))
                return;
        }
    }
}

bool HttpServer::Answer(int connection, std::string const &request) {
    std::string const line = request.substr(0, request.find(" HTTP"));
    Resource resource;
    bool found = false;
    {
        std::lock_guard const lock(m_mutex);
        m_requests.push_back(line);
        if (std::string const login = HeaderOf(request, "Authorization"); !login.empty())
            m_logins.insert(login.substr(0, login.find_last_not_of("\r\n") + 1));
        std::string const target = line.substr(line.find(' ') + 1);
        auto at = m_resources.find(line);
        if (at == m_resources.end() && !line.starts_with("PROPFIND"))
            at = m_resources.find(target);
        if (at != m_resources.end()) {
            resource = at->second;
            found = !resource.type.empty();
        } else if (auto answer = m_store.AnswerTo(request)) {
            constexpr int done = 200;
            found = answer->status == done;
            resource = {std::move(answer->body), found ? "application/xml" : "", answer->status};
        } else if (line.starts_with("PROPFIND")) {
            resource.status = 405;
        }
        if (!m_login.empty() && HeaderOf(request, "Authorization") != "Basic " + m_login) {
            resource = {.bytes = {}, .type = {}, .status = 401};
            found = false;
        }
    }
    if (m_hangs)
        return true;
    if (m_delay > 0 && !Wait(connection, std::chrono::milliseconds(m_delay)))
        return false;
    if (!found) {
        std::string head = "HTTP/1.1 " + std::to_string(resource.status) +
                           " No\r\nContent-Length: " + std::to_string(resource.bytes.size()) + "\r\n";
        if (!resource.location.empty())
            head += "Location: " + resource.location + "\r\n";
        if (resource.status == 401)
            head += "WWW-Authenticate: Basic realm=\"x\"\r\n";
        Send(connection, head + "\r\n" + (line.starts_with("HEAD") ? std::string() : resource.bytes));
        return true;
    }
    std::size_t first = 0;
    std::size_t last = resource.bytes.empty() ? 0 : resource.bytes.size() - 1;
    std::string const range = HeaderOf(request, "Range");
    if (range.starts_with("bytes=")) {
        first = std::stoul(range.substr(6));
        if (std::string const to = range.substr(range.find('-') + 1); !to.empty())
            last = std::min<std::size_t>(last, std::stoul(to));
        if (first > last) {
            Send(connection, "HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\n\r\n");
            return true;
        }
    }
    std::string const body = resource.bytes.substr(first, last - first + 1);
    std::string head = range.empty() ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 206 Partial Content\r\n";
    if (!range.empty())
        head += "Content-Range: bytes " + std::to_string(first) + "-" + std::to_string(last) + "/" +
                std::to_string(resource.bytes.size()) + "\r\n";
    head += "Accept-Ranges: bytes\r\nContent-Type: " + resource.type +
            "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    Send(connection, head);
    if (!line.starts_with("HEAD")) {
        Send(connection, body);
        m_bytesSent += body.size();
    }
    return true;
}

} // namespace zelvar::test
