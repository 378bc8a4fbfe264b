// A module of drivers that misbehave as the file that they read tells them: a tree driver and a raster driver, both
// "HOSTILE", for "*.hostile". A file is lines "CALL ACTION [ARGUMENT]", done in order when the call comes, and lines
// "FACT NUMBER". An address that ends with "/.hostile" holds such lines itself, between its host and that end, each
// with a ";" behind.
//
// Calls
//   probe      CanReadPath, IsMyFile            open   OpenRepository, OpenFile
//   find       OpenNode                         list   FindFirstChildNode
//   describe   GetNumChnl                       read   ReadBlockRsmpl, ReadPaletteRsmpl
// Actions
//   sleep SECONDS     deaf to the stop signal; a fraction will do
//   poll SECONDS      the same, but ends with failure when the stop signal comes; trees have none and sleep
//   await PATH        deaf until there is such a file
//   spin              for good, with the processor busy
//   work SECONDS      the same, until it has had so much of the processor
//   crash             writes to address 0
//   overflow          recurses until the stack is used up
//   abort
//   exit STATUS       ends the process
//   allocate MB       takes memory, fills it and keeps it; `std::bad_alloc` if there is none
//   throw TEXT        a std::runtime_error
//   fail              the call answers with null, false or no
//   trace TEXT        a line of the log
//   babble            sends bytes that are no message to the application
//   close             closes the way to the application
// Actions that try what a reader must not do and go on; what came of them is told as "write: errno 13" or "write: done"
// in "RDI_Drvr_Info" and in the value of the tree's root, "; " between several:
//   write PATH        makes or cuts a file and writes to it
//   truncate PATH   remove PATH   chmod PATH   touch PATH   mkdir PATH   flags PATH   project PATH
//   fork              makes a process, which ends at once
//   exec              runs /bin/true in place of the reader
//   connect PORT      to 127.0.0.1
//   reach HOST PORT   the same by a name, as libraries do; the connection stays open
//   raw PORT   fastopen PORT   datagram   unix   pair   sctp   listen    ways around that
//   see PATH          opens a file for reading
//   told SECRET       what the reader was told under that name
//   signal PID        sends SIGTERM
//   thread            starts a thread and waits for its end, which must work
// Facts
//   width, height     of the image; 8 and 4 by default
//   bands             channels; 1 by default
//   type              RDIDataType; 1 (8 bit unsigned) by default
//   palette           1: the one channel is shown through a palette
//   members           children of the tree's root, images "member 0", ...; a file without any is no tree
//
// The sample at (x, y) of channel c is x + 10 * y + 100 * c; palettes give it three times. Windows are read by nearest
// neighbour. Nothing of a file is remembered between calls on it.
#include "support/LoopbackPort.h"
#include "zelvar/base/Export.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/ReaderDuty.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <linux/fs.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" ZELVAR_API void zelvar_register_drivers();

namespace zelvar::test {
namespace {

using Clock = std::chrono::steady_clock;

/// "done", or why a call of the system failed.
DString Outcome(long result) { return result >= 0 ? "done" : Format("errno %d", errno); }

DString Connect(int port) {
    int const socketFile = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socketFile < 0)
        return Outcome(socketFile);
    sockaddr_in const address = Loopback(port);
    DString outcome = Outcome(connect(socketFile, reinterpret_cast<sockaddr const *>(&address), sizeof address));
    close(socketFile);
    return outcome;
}

/// Leaves the connection open: a server sees how long it lasts.
DString ReachHost(DString const &place) {
    std::istringstream words(place);
    std::string host;
    std::string port;
    words >> host >> port;
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &found) != 0)
        return "unknown";
    DString outcome;
    for (addrinfo const *address = found; address != nullptr && outcome != "done"; address = address->ai_next) {
        int const file = socket(address->ai_family, address->ai_socktype | SOCK_NONBLOCK, address->ai_protocol);
        outcome = Outcome(connect(file, address->ai_addr, address->ai_addrlen));
        if (outcome == "done" && (fcntl(file, F_GETFL) & O_NONBLOCK) == 0)
            outcome = "blocks";
    }
    freeaddrinfo(found);
    return outcome;
}

/// Without the functions of libraries, to 127.0.0.1.
DString ConnectRaw(int port, bool isFastOpen) {
    int const file = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in const address = Loopback(port);
    DString outcome = Outcome(isFastOpen ? syscall(SYS_sendto, file, "x", 1, MSG_FASTOPEN, &address, sizeof address)
                                         : syscall(SYS_connect, file, &address, sizeof address));
    close(file);
    return outcome;
}

DString MakeSocket(int domain, int type, int protocol) {
    int const file = socket(domain, type, protocol);
    DString outcome = Outcome(file);
    close(file);
    return outcome;
}

DString MakePair() {
    std::array<int, 2> ends{-1, -1};
    return Outcome(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends.data()));
}

DString Listen() {
    int const file = socket(AF_INET, SOCK_STREAM, 0);
    DString outcome = Outcome(listen(file, 1));
    close(file);
    return outcome;
}

DString See(DString const &path) {
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    DString outcome = Outcome(file);
    close(file);
    return outcome;
}

DString Told(DString const &name) {
    ReaderDuty const *const duty = OwnDuty();
    if (duty == nullptr || !duty->connection)
        return "nothing";
    auto const at = duty->connection->secrets.find(name);
    return at == duty->connection->secrets.end() ? "nothing" : at->second;
}

DString Write(DString const &path) {
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    DString outcome = Outcome(file < 0 ? file : write(file, "hostile", 7));
    if (file >= 0)
        close(file);
    return outcome;
}

DString Fork() {
    pid_t const child = fork();
    if (child == 0)
        _exit(0);
    DString outcome = Outcome(child);
    if (child > 0)
        waitpid(child, nullptr, 0);
    return outcome;
}

DString Exec() {
    std::array<char, 10> program{"/bin/true"};
    std::array<char *, 2> arguments{program.data(), nullptr};
    return Outcome(execv(program.data(), arguments.data()));
}

/// Asks the file system for a change of what it keeps beside the file.
DString Change(DString const &path, unsigned long request) {
    std::array<char, 64> nothing{};
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    DString outcome = Outcome(ioctl(file, request, nothing.data()));
    close(file);
    return outcome;
}

DString StartThread() {
    std::thread([] {}).join();
    return "done";
}

/// What a reader must not do, by the name of the action.
std::map<DString, std::function<DString(DString const &)>> const &Attempts() {
    static auto const &attempts = *new std::map<DString, std::function<DString(DString const &)>>{
        {"write", Write},
        {"truncate", [](DString const &path) { return Outcome(truncate(path.c_str(), 0)); }},
        {"remove", [](DString const &path) { return Outcome(unlink(path.c_str())); }},
        {"chmod", [](DString const &path) { return Outcome(chmod(path.c_str(), 0777)); }},
        {"touch", [](DString const &path) { return Outcome(utimensat(AT_FDCWD, path.c_str(), nullptr, 0)); }},
        {"mkdir", [](DString const &path) { return Outcome(mkdir(path.c_str(), 0700)); }},
        {"flags", [](DString const &path) { return Change(path, FS_IOC_SETFLAGS); }},
        {"project", [](DString const &path) { return Change(path, FS_IOC_FSSETXATTR); }},
        {"fork", [](DString const &) { return Fork(); }},
        {"exec", [](DString const &) { return Exec(); }},
        {"connect", [](DString const &port) { return Connect(std::atoi(port.c_str())); }},
        {"reach", ReachHost},
        {"raw", [](DString const &port) { return ConnectRaw(std::atoi(port.c_str()), false); }},
        {"fastopen", [](DString const &port) { return ConnectRaw(std::atoi(port.c_str()), true); }},
        {"datagram", [](DString const &) { return MakeSocket(AF_INET, SOCK_DGRAM, 0); }},
        {"unix", [](DString const &) { return MakeSocket(AF_UNIX, SOCK_STREAM, 0); }},
        {"sctp", [](DString const &) { return MakeSocket(AF_INET, SOCK_STREAM, IPPROTO_SCTP); }},
        {"pair", [](DString const &) { return MakePair(); }},
        {"listen", [](DString const &) { return Listen(); }},
        {"see", See},
        {"told", Told},
        {"signal", [](DString const &process) { return Outcome(kill(std::atoi(process.c_str()), SIGTERM)); }},
        {"thread", [](DString const &) { return StartThread(); }}};
    return attempts;
}

/// The sockets that this process holds: the way to its application.
template <class Visit>
void ForEachSocket(Visit const &visit) {
    constexpr int mostFiles = 1024;
    for (int file = 0; file < mostFiles; ++file)
        if (struct stat info{}; fstat(file, &info) == 0 && S_ISSOCK(info.st_mode))
            visit(file);
}

[[gnu::noinline]] int Recurse(int depth) {
    std::array<char volatile, 4096> room{};
    room.back() = static_cast<char>(depth);
    return depth < 0 ? room.back() : Recurse(depth + 1) + room.back();
}

void Allocate(std::size_t megabytes) {
    constexpr std::size_t piece = std::size_t{1} << 20U;
    for (std::size_t i = 0; i < megabytes; ++i)
        // Kept on purpose, and reached from nowhere.
        static_cast<void>(std::memset(new char[piece], static_cast<int>(i % 100 + 1), piece));
}

void Crash() {
    int volatile *volatile nowhere = nullptr;
    *nowhere = 1;
}

constexpr char kAddressEnd[] = "/.hostile";

/// What a file says, and what came of it.
class Script {
public:
    explicit Script(DString const &path) {
        bool const isAddress = IsUrl(path);
        std::ifstream file(std::filesystem::is_directory(path) ? path + "/.zgroup" : path);
        std::size_t const begin = isAddress ? path.find('/', path.find("://") + 3) + 1 : 0;
        std::istringstream inName(isAddress ? path.substr(begin, path.size() - begin - sizeof kAddressEnd + 1) : "");
        std::istream &text = isAddress ? static_cast<std::istream &>(inName) : file;
        for (std::string line; std::getline(text, line, isAddress ? ';' : '\n');) {
            std::istringstream words(line);
            Line read;
            words >> read.call >> read.action;
            std::getline(words >> std::ws, read.argument);
            m_lines.push_back(read);
        }
    }

    [[nodiscard]] int Fact(DString const &name, int fallback) const {
        for (Line const &line : m_lines)
            if (line.call == name)
                return std::atoi(line.action.c_str());
        return fallback;
    }
    /// Does what the file says for the call; false if it is to fail.
    bool Run(DString const &call, StopSignal const *stop = nullptr) {
        return std::ranges::all_of(m_lines, [&](Line const &line) { return line.call != call || Do(line, stop); });
    }
    [[nodiscard]] DString const &Told() const { return m_told; }

private:
    struct Line {
        DString call;
        DString action;
        DString argument;
    };

    bool Do(Line const &line, StopSignal const *stop) {
        if (auto const attempt = Attempts().find(line.action); attempt != Attempts().end()) {
            m_told += (m_told.empty() ? "" : "; ") + line.action + ": " + attempt->second(line.argument);
            return true;
        }
        double const number = std::strtod(line.argument.c_str(), nullptr);
        if (line.action == "sleep" || line.action == "poll")
            return Sleep(number, line.action == "poll" ? stop : nullptr);
        if (line.action == "trace")
            Report::TraceMessage(Report::kTraceOpen, "%s", line.argument.c_str());
        else if (line.action == "allocate")
            Allocate(static_cast<std::size_t>(number));
        else if (line.action == "throw")
            throw std::runtime_error(line.argument);
        else if (line.action == "babble")
            ForEachSocket([](int file) { static_cast<void>(send(file, "no message at all", 17, MSG_NOSIGNAL)); });
        else if (line.action == "close")
            ForEachSocket([](int file) { shutdown(file, SHUT_RDWR); });
        else
            End(line, static_cast<int>(number));
        return line.action != "fail";
    }
    static void End(Line const &line, int status) {
        if (line.action == "crash")
            Crash();
        else if (line.action == "overflow")
            std::exit(Recurse(0));
        else if (line.action == "abort")
            std::abort();
        else if (line.action == "exit")
            _exit(status);
        while (line.action == "await" && access(line.argument.c_str(), F_OK) != 0)
            Sleep(0.01, nullptr);
        for (int volatile turns = 0; line.action == "spin";)
            turns = turns ^ 1;
        auto const worked = static_cast<std::clock_t>(std::strtod(line.argument.c_str(), nullptr) * CLOCKS_PER_SEC);
        for (std::clock_t const begin = std::clock(); line.action == "work" && std::clock() - begin < worked;)
            ;
    }
    /// False if it was stopped.
    static bool Sleep(double seconds, StopSignal const *stop) {
        auto const end = Clock::now() + std::chrono::duration<double>(seconds);
        while (Clock::now() < end) {
            if (stop != nullptr && stop->load())
                return false;
            timespec const moment{.tv_sec = 0, .tv_nsec = 2'000'000};
            nanosleep(&moment, nullptr);
        }
        return true;
    }

    std::vector<Line> m_lines;
    DString m_told;
};

constexpr char kId[] = "HOSTILE";
constexpr char kMask[] = "*.hostile";

bool IsHostile(DString const &path) {
    return IsUrl(path) ? path.ends_with(kAddressEnd) : path.ends_with(".hostile") && access(path.c_str(), R_OK) == 0;
}

class HostileTree final : public BDIDrvr {
public:
    [[nodiscard]] DString GetId() const override { return kId; }
    [[nodiscard]] DString GetInfo() const override { return "trees that misbehave"; }
    [[nodiscard]] DString GetExtensions() const override { return kMask; }
    [[nodiscard]] int GetAttrInt(char const *name) const override {
        return std::strcmp(name, "BDI_Multiple_Images") == 0 ? 1 : 0;
    }
    [[nodiscard]] bool CanReadPath(DString const &path) const override {
        return IsHostile(path) && Script(path).Run("probe") && Script(path).Fact("members", 0) > 0;
    }

    void *OpenRepository(char const *url, BDINode **root, char const *) override {
        if (!IsHostile(url))
            return nullptr;
        auto open = std::make_unique<Repository>(url, Script(url));
        if (!open->script.Run("open"))
            return nullptr;
        *root = new BDINode(Root(*open));
        return open.release();
    }
    void CloseRepository(void *repository) override { delete static_cast<Repository *>(repository); }
    BDINode *OpenNode(void *repository, char const *path) override {
        auto &open = *static_cast<Repository *>(repository);
        if (!open.script.Run("find"))
            return nullptr;
        if (open.url == path)
            return new BDINode(Root(open));
        for (int i = 0; i < open.script.Fact("members", 0); ++i)
            if (BDINode const member = Member(open, i); member.path == path)
                return new BDINode(member);
        return nullptr;
    }
    BDINode *CloneNode(BDINode const *node) override { return new BDINode(*node); }
    void CloseNode(BDINode *node) override { delete node; }
    void *FindFirstChildNode(void *repository, BDINode const *node, int mask) override {
        auto &open = *static_cast<Repository *>(repository);
        int const members = open.script.Fact("members", 0);
        if (!open.script.Run("list") || node->path != open.url || (static_cast<unsigned>(mask) & BDINode_Raster) == 0 ||
            members <= 0)
            return nullptr;
        return new Walk{.repository = &open, .left = members};
    }
    BDINode const *FindNextChildNode(void *find) override {
        auto &walk = *static_cast<Walk *>(find);
        if (walk.next == walk.left)
            return nullptr;
        walk.node = Member(*walk.repository, walk.next++);
        return &walk.node;
    }
    void FindClose(void *find) override { delete static_cast<Walk *>(find); }

private:
    struct Repository {
        Repository(DString path, Script read) : url(std::move(path)), script(std::move(read)) {}
        DString url;
        Script script;
    };
    struct Walk {
        Repository *repository = nullptr;
        int left = 0;
        int next = 0;
        BDINode node = {};
    };
    static BDINode Root(Repository const &open) {
        BDINode root;
        root.type = BDINode_Container;
        root.path = open.url;
        root.name = open.url.substr(open.url.rfind('/') + 1);
        root.value = open.script.Told();
        return root;
    }
    static BDINode Member(Repository const &open, int number) {
        BDINode member;
        member.type = BDINode_Raster;
        member.name = "member " + std::to_string(number);
        member.path = open.url + "/" + member.name;
        return member;
    }
};

class HostileRaster final : public RDIDriver {
public:
    [[nodiscard]] DString GetId() const override { return kId; }
    [[nodiscard]] DString GetInfo() const override { return "images that misbehave"; }
    [[nodiscard]] DString GetExtensions() const override { return kMask; }
    [[nodiscard]] int IsMyFile(char const *path) const override {
        return IsHostile(path) && Script(path).Run("probe") ? 1 : 0;
    }

    void *OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override {
        DString const path = moniker.IsUrl() ? moniker.GetText() : moniker.FindFile(); // a member is the file's image
        auto open = std::make_unique<Handle>(Handle{Script(path), stop});
        if (IsHostile(path) && open->script.Run("open", stop))
            return open.release();
        if (error != nullptr)
            error->Set("it does not open");
        return nullptr;
    }
    void CloseFile(void *handle, bool) override { delete static_cast<Handle *>(handle); }
    [[nodiscard]] int GetNumChnl(void *handle) const override {
        Script &script = Of(handle).script;
        return script.Run("describe") ? script.Fact("bands", 1) : 0;
    }
    [[nodiscard]] int GetChnlSizeX(void *handle, int) const override { return Of(handle).script.Fact("width", 8); }
    [[nodiscard]] int GetChnlSizeY(void *handle, int) const override { return Of(handle).script.Fact("height", 4); }
    [[nodiscard]] int GetChnlDataType(void *handle, int) const override {
        return Of(handle).script.Fact("type", RDI_UInt8);
    }
    [[nodiscard]] RDIGeoCoo GetChnlGeoCode(void *, int) const override { return {}; }
    [[nodiscard]] DString GetAttrString(char const *name, void *handle, int) const override {
        return std::strcmp(name, "RDI_Drvr_Info") == 0 ? Of(handle).script.Told() : DString();
    }
    [[nodiscard]] int GetAttrInt(char const *name, void *handle, int) const override {
        return std::strcmp(name, "RDI_Drvr_Palette") == 0 ? Of(handle).script.Fact("palette", 0) : 0;
    }

    bool ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height, void *buffer,
                        int outWidth, int outHeight, int, bool, bool) override {
        int const type = GetChnlDataType(handle, channel);
        auto *out = static_cast<unsigned char *>(buffer);
        return Of(handle).script.Run("read", Of(handle).stop) &&
               ForEachSample(channel, {x, y, width, height}, outWidth, outHeight, [&](int value) {
                   if (type == RDI_Float32) {
                       auto const real = static_cast<float>(value);
                       std::memcpy(out, &real, sizeof real);
                   } else {
                       std::memcpy(out, &value, static_cast<std::size_t>(RDIGetDTSize(type)));
                   }
                   out += RDIGetDTSize(type);
               });
    }
    bool ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb, int outWidth,
                          int outHeight) override {
        auto *out = static_cast<unsigned char *>(rgb);
        return Of(handle).script.Run("read", Of(handle).stop) &&
               ForEachSample(0, {x, y, width, height}, outWidth, outHeight,
                             [&](int value) { out = std::fill_n(out, 3, static_cast<unsigned char>(value)); });
    }

private:
    struct Handle {
        Script script;
        StopSignal const *stop = nullptr;
    };
    struct Window {
        double x = 0, y = 0, width = 0, height = 0;
    };
    static Handle &Of(void *handle) { return *static_cast<Handle *>(handle); }
    template <class Put>
    static bool ForEachSample(int channel, Window const &window, int outWidth, int outHeight, Put const &put) {
        for (int row = 0; row < outHeight; ++row)
            for (int column = 0; column < outWidth; ++column) {
                int const x = static_cast<int>(window.x + (column + 0.5) * window.width / outWidth);
                int const y = static_cast<int>(window.y + (row + 0.5) * window.height / outHeight);
                put(x + 10 * y + 100 * channel);
            }
        return true;
    }
};

} // namespace
} // namespace zelvar::test

extern "C" void zelvar_register_drivers() {
    zelvar::BDIDrvrMngr::Instance()->Add(std::make_unique<zelvar::test::HostileTree>());
    zelvar::RDIDriverMngr::Instance()->Add(std::make_unique<zelvar::test::HostileRaster>());
}
