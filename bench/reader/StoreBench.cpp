// Keys of an object store: the first rows of 20,000 and all of them, beside the same requests by a plain socket.
#include "Drivers.h"
#include "Harness.h"
#include "support/HttpServer.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/BDIDrvrMngr.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace zelvar::bench {
namespace {

constexpr int kKeys = 20'000;
constexpr int kOfPage = 1000;

/// Asks for pages of a bucket and reads each to its end.
class PlainClient {
public:
    explicit PlainClient(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(m_socket.Get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0)
            Fail("no connection");
    }
    void Ask(int page) {
        std::string target = "/big/?delimiter=%2F";
        if (page > 0)
            target += "&marker=" + test::KeyOf(page * kOfPage - 1);
        std::string const request = "GET " + target + " HTTP/1.1\r\nHost: x\r\n\r\n";
        if (send(m_socket.Get(), request.data(), request.size(), MSG_NOSIGNAL) < 0)
            Fail("the server has gone");
        std::string answer;
        std::size_t whole = std::string::npos;
        while (answer.size() < whole) {
            char part[65'536];
            ssize_t const count = recv(m_socket.Get(), part, sizeof part, 0);
            if (count <= 0)
                Fail("the server has gone");
            answer.append(part, static_cast<std::size_t>(count));
            std::size_t const head = answer.find("\r\n\r\n");
            if (whole == std::string::npos && head != std::string::npos)
                whole = head + 4 + std::stoul(test::HeaderOf(answer.substr(0, head + 2), "Content-Length"));
        }
    }

private:
    FileDescriptor m_socket{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

/// Opens the bucket and goes through `most` of its keys.
void List(int most) {
    BDIDrvr *driver = BDIDrvrMngr::Instance()->GetDrvr("WebDirectory");
    BDINode *root = nullptr;
    void *const tree = driver == nullptr ? nullptr : driver->OpenRepository("s3://big", &root, nullptr);
    void *const walk = tree == nullptr ? nullptr : driver->FindFirstChildNode(tree, root, 0xFF);
    int count = 0;
    while (walk != nullptr && count < most && driver->FindNextChildNode(walk) != nullptr)
        ++count;
    if (count != most)
        Fail("not all keys came");
    driver->FindClose(walk);
    driver->CloseNode(root);
    driver->CloseRepository(tree);
}

Register const kStores("stores", [] {
    test::HttpServer server;
    std::vector<std::string> keys;
    for (int i = 0; i < kKeys; ++i)
        keys.push_back(test::KeyOf(i));
    server.ServeBucket("big", std::move(keys), kOfPage);
    setenv("AWS_S3_ENDPOINT", server.Url().substr(7).c_str(), 1);
    for (char const *name : {"AWS_HTTPS", "AWS_VIRTUAL_HOSTING"})
        setenv(name, "NO", 1);
    setenv("AWS_NO_SIGN_REQUEST", "YES", 1);
    Use(Way::Reader);
    PlainClient plain(server.Port());
    List(1); // the reader is up
    constexpr int runs = 11;
    Pair const first = Compare(
        runs, [] { List(1); }, [&] { plain.Ask(0); });
    Figure("stores.first", first.firstMs, "ms",
           {.alternatives = {{"request", first.secondMs}}, .note = "first rows of 20,000 keys"});
    Pair const all = Compare(
        runs, [] { List(kKeys); },
        [&] {
            for (int page = 0; page < kKeys / kOfPage; ++page)
                plain.Ask(page);
        });
    Figure("stores.all", all.firstMs, "ms", {.alternatives = {{"requests", all.secondMs}}, .note = "all of them"});
});

} // namespace
} // namespace zelvar::bench
