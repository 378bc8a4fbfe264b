#include "zelvar/data/wire/ReaderStatus.h"
#include "zelvar/reader/Confinement.h"
#include "zelvar/reader/DriverModules.h"
#include "zelvar/reader/Server.h"

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

/// What the application wrote on the command line.
struct Order {
    int socket = -1;
    std::unique_ptr<wire::SharedMemory> status = {};
    Reach reach = Reach::Local;
    std::vector<DString> modules = {};
};

/// The number of an open descriptor above those of input, output and errors, or -1.
int DescriptorOf(std::string_view word) {
    int number = -1;
    auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    bool const isNumber = error == std::errc{} && end == word.data() + word.size();
    return isNumber && number > STDERR_FILENO ? number : -1;
}

bool IsStreamSocket(int file) {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(file, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

std::optional<Order> ReadOrder(std::vector<std::string_view> const &words) {
    constexpr std::size_t fewest = 4;
    if (words.size() < fewest || (words[2] != "local" && words[2] != "network"))
        return std::nullopt;
    Order order{.socket = DescriptorOf(words[0]),
                .reach = words[2] == "local" ? Reach::Local : Reach::Network,
                .modules = {words.begin() + 3, words.end()}};
    int const status = DescriptorOf(words[1]);
    if (status < 0 || status == order.socket || !IsStreamSocket(order.socket))
        return std::nullopt;
    order.status = wire::SharedMemory::Map(status);
    if (order.status == nullptr || order.status->Size() < sizeof(wire::ReaderStatus))
        return std::nullopt;
    return order;
}

/// Until the application closes its end. What drivers do meanwhile is cut off by the process's end: nothing is cleaned
/// up, and nobody waits for them.
[[noreturn]] void Serve(Order order) {
    unsetenv("ZELVAR_LOG"); // the application writes the lines
    // An image that is only looked at is not locked against the program that writes it.
    setenv("HDF5_USE_FILE_LOCKING", "FALSE", 0);
    LogCollector log;
    Confine(order.reach, {order.socket, order.status->File()});
    UseModules(std::move(order.modules));
    Server server(order.socket, std::move(order.status), log);
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
