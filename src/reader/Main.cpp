#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/wire/ConnectionOrder.h"
#include "zelvar/data/wire/ReaderStatus.h"
#include "zelvar/reader/AcceptedCertificate.h"
#include "zelvar/reader/BrokerClient.h"
#include "zelvar/reader/Confinement.h"
#include "zelvar/reader/DatabaseEnvironment.h"
#include "zelvar/reader/DriverModules.h"
#include "zelvar/reader/Notes.h"
#include "zelvar/reader/ReadablePlaces.h"
#include "zelvar/reader/Server.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>

#include <sys/socket.h>

namespace {

using namespace zelvar;
using namespace zelvar::reader;

constexpr char const *kProxyNames[] = {"http_proxy",
                                       "https_proxy",
                                       "HTTPS_PROXY",
                                       "all_proxy",
                                       "ALL_PROXY",
                                       "ftp_proxy",
                                       "FTP_PROXY",
                                       "GDAL_HTTP_PROXY",
                                       "GDAL_HTTPS_PROXY",
                                       "GDAL_PROXY_AUTH",
                                       "GDAL_HTTP_PROXYUSERPWD"};

/// What the application wrote on the command line.
struct Order {
    int socket = -1;
    std::unique_ptr<wire::SharedMemory> status = {};
    Reach reach = Reach::Local;
    int broker = -1;                                         ///< of a reader of a connection
    std::unique_ptr<wire::ConnectionOrderT> connection = {}; ///< of the same
    std::vector<DString> modules = {};
};

/// The number of an open descriptor above those of input, output and errors, or -1.
int DescriptorOf(std::string_view word) {
    int number = -1;
    auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    bool const isNumber = error == std::errc{} && end == word.data() + word.size();
    return isNumber && number > STDERR_FILENO ? number : -1;
}

bool IsSocketOf(int wanted, int file) {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(file, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == wanted;
}

std::optional<Reach> ReachOf(std::string_view word) {
    constexpr std::pair<std::string_view, Reach> kWords[] = {
        {"local", Reach::Local}, {"network", Reach::Network}, {"connection", Reach::Connection}};
    auto const *const at = std::ranges::find(kWords, word, &std::pair<std::string_view, Reach>::first);
    return at == std::end(kWords) ? std::nullopt : std::optional(at->second);
}

/// Takes the two words of a connection; false if they are none.
bool ReadConnection(std::string_view broker, std::string_view terms, Order &order) {
    order.broker = DescriptorOf(broker);
    int const file = DescriptorOf(terms);
    if (order.broker == order.socket || order.broker == file || !IsSocketOf(SOCK_SEQPACKET, order.broker))
        return false;
    order.connection = file < 0 || file == order.socket ? nullptr : wire::UnsealOrder(file);
    return order.connection != nullptr;
}

std::optional<Order> ReadOrder(std::vector<std::string_view> const &words) {
    constexpr std::size_t fewest = 4;
    std::optional<Reach> const reach = words.size() < fewest ? std::nullopt : ReachOf(words[2]);
    std::size_t const first = reach == Reach::Connection ? 5 : 3; // of the modules
    if (!reach || words.size() <= first)
        return std::nullopt;
    Order order{.socket = DescriptorOf(words[0]),
                .reach = *reach,
                .modules = {words.begin() + static_cast<std::ptrdiff_t>(first), words.end()}};
    int const status = DescriptorOf(words[1]);
    if (status < 0 || status == order.socket || !IsSocketOf(SOCK_STREAM, order.socket))
        return std::nullopt;
    order.status = wire::SharedMemory::Map(status);
    if (order.status == nullptr || order.status->Size() < sizeof(wire::ReaderStatus))
        return std::nullopt;
    if (reach == Reach::Connection && !ReadConnection(words[3], words[4], order))
        return std::nullopt;
    return order;
}

std::map<DString, DString> TextsOf(std::vector<std::unique_ptr<wire::NamedTextT>> &named) {
    std::map<DString, DString> texts;
    for (auto &text : named)
        if (text != nullptr)
            texts[std::move(text->name)] = std::move(text->value);
    return texts;
}

ReaderDuty DutyOf(Order &order) {
    if (order.connection == nullptr)
        return {};
    auto const most = static_cast<std::uint32_t>(ConnectionKind::Odbc);
    ConnectionTerms terms{.id = order.connection->id,
                          .kind = static_cast<ConnectionKind>(std::min(order.connection->kind, most)),
                          .options = TextsOf(order.connection->options),
                          .secrets = TextsOf(order.connection->secrets)};
    return {.connection = std::move(terms), .findNote = &FindNote, .keepNote = &KeepNote};
}

/// Until the application closes its end. What drivers do meanwhile is cut off by the process's end: nothing is cleaned
/// up, and nobody waits for them.
[[noreturn]] void Serve(Order order) {
    unsetenv("ZELVAR_LOG"); // the application writes the lines
    // An image that is only looked at is not locked against the program that writes it.
    setenv("HDF5_USE_FILE_LOCKING", "FALSE", 0);
    LogCollector log;
    ReaderDuty duty = DutyOf(order);
    std::vector<int> keep{order.socket, order.status->File()};
    std::vector<DString> readable;
    FileDescriptor password(-1);
    if (order.reach == Reach::Connection) {
        keep.push_back(order.broker);
        if (int const certificate = AcceptedCertificate::Prepare(*duty.connection); certificate >= 0)
            keep.push_back(certificate);
        password = TellOfDatabase(*duty.connection);
        if (password.IsOpen())
            keep.push_back(password.Get());
        readable = PlacesToRead(*duty.connection, order.modules);
        BrokerClient::Use(order.broker);
        for (char const *name : kProxyNames) // the application speaks to proxies
            unsetenv(name);
    }
    auto const idle =
        order.connection == nullptr ? std::chrono::milliseconds(0) : std::chrono::milliseconds(order.connection->idle);
    Confine(order.reach, std::move(keep), readable);
    TakeDuty(std::move(duty));
    UseModules(std::move(order.modules));
    Server server(order.socket, std::move(order.status), log, idle);
    try {
        static_cast<void>(server.Receive());
    } catch (std::exception const &) {
        _exit(EXIT_FAILURE); // a driver has left no memory for a request
    }
    _exit(EXIT_SUCCESS);
}

} // namespace

int main(int argc, char **argv) {
    constexpr int usage = 2;
    if (std::optional<Order> order = ReadOrder({argv + 1, argv + argc}))
        Serve(std::move(*order));
    std::fputs("zelvar-reader: reads data for applications that use Zelvar, which start it\n", stderr);
    return usage;
}
