#pragma once

#include "support/Test.h"

#include <thread>

#include <fcntl.h>
#include <linux/fuse.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::test {

/// A mounted file system with one file that can be looked at and opened, but not read: who reads is held in the kernel,
/// deaf to every signal, until `Answer` or the end of this object. A server that has gone, played without a network.
/// Needs the superuser and /dev/fuse.
class SilentMount : Pinned {
public:
    explicit SilentMount(std::string name)
        : m_name(std::move(name)), m_point(m_folder.Folder("silent")), m_device(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
        std::string const options = "fd=" + std::to_string(m_device) + ",rootmode=40000,user_id=0,group_id=0";
        m_mounted = m_device >= 0 && mount("silent", m_point.c_str(), "fuse.silent", 0, options.c_str()) == 0;
        if (m_mounted)
            m_server = std::thread([this] { Serve(); });
    }
    ~SilentMount() {
        Answer();
        if (m_mounted)
            umount2(m_point.c_str(), MNT_DETACH);
        if (m_server.joinable())
            m_server.join();
        if (m_device >= 0)
            close(m_device);
    }

    /// From now on names are not looked up either.
    void FallSilent() { m_isSilent = true; }
    [[nodiscard]] bool IsMounted() const { return m_mounted; }
    [[nodiscard]] std::string File() const { return m_point + "/" + m_name; }
    /// Whether somebody is held.
    [[nodiscard]] bool IsSomebodyHeld() const { return m_heldRead != 0; }
    /// Lets go of who is held: the read fails.
    void Answer() {
        if (std::uint64_t const held = m_heldRead.exchange(0); held != 0)
            Reply(held, -EIO, nullptr, 0);
    }

private:
    static constexpr std::uint64_t kFile = 2;
    static constexpr std::uint64_t kSize = 4096;

    static fuse_attr AttributesOf(std::uint64_t node) {
        fuse_attr attributes{};
        attributes.ino = node;
        attributes.mode = node == kFile ? S_IFREG | 0444 : S_IFDIR | 0555;
        attributes.size = node == kFile ? kSize : 0;
        attributes.nlink = 1;
        return attributes;
    }
    void Reply(std::uint64_t request, int error, void const *body, std::size_t size) const {
        std::array<char, 512> bytes{};
        fuse_out_header const head{
            .len = static_cast<std::uint32_t>(sizeof(fuse_out_header) + size), .error = error, .unique = request};
        std::memcpy(bytes.data(), &head, sizeof head);
        if (size > 0)
            std::memcpy(bytes.data() + sizeof head, body, size);
        [[maybe_unused]] ssize_t const written = write(m_device, bytes.data(), head.len);
    }
    template <class Body>
    void Reply(std::uint64_t request, Body const &body) const {
        Reply(request, 0, &body, sizeof body);
    }
    void Serve() {
        std::array<char, 1U << 17U> request{};
        while (read(m_device, request.data(), request.size()) >= static_cast<ssize_t>(sizeof(fuse_in_header))) {
            fuse_in_header head{};
            std::memcpy(&head, request.data(), sizeof head);
            Handle(head, request.data() + sizeof head);
        }
    }
    void Handle(fuse_in_header const &head, char const *body) {
        bool const isQuestion = head.opcode == FUSE_LOOKUP || head.opcode == FUSE_GETATTR;
        if (isQuestion && m_isSilent) {
            m_heldRead = head.unique;
            return;
        }
        switch (head.opcode) {
        case FUSE_INIT: {
            fuse_init_out answer{};
            answer.major = FUSE_KERNEL_VERSION;
            answer.minor = 26; // an old form that every kernel speaks
            answer.max_write = 4096;
            Reply(head.unique, answer);
            break;
        }
        case FUSE_LOOKUP: {
            fuse_entry_out answer{};
            answer.nodeid = kFile;
            answer.attr = AttributesOf(kFile);
            if (m_name == body)
                Reply(head.unique, answer);
            else
                Reply(head.unique, -ENOENT, nullptr, 0);
            break;
        }
        case FUSE_GETATTR: {
            fuse_attr_out answer{};
            answer.attr = AttributesOf(head.nodeid);
            Reply(head.unique, answer);
            break;
        }
        case FUSE_OPEN:
        case FUSE_OPENDIR:
            Reply(head.unique, fuse_open_out{});
            break;
        case FUSE_READ:
            m_heldRead = head.unique;
            break;
        case FUSE_FORGET:
        case FUSE_BATCH_FORGET:
        case FUSE_INTERRUPT:
            break; // not answered
        case FUSE_RELEASE:
        case FUSE_RELEASEDIR:
        case FUSE_FLUSH:
            Reply(head.unique, 0, nullptr, 0);
            break;
        default:
            Reply(head.unique, -ENOSYS, nullptr, 0);
        }
    }

    TempFolder m_folder;
    std::string m_name;
    std::string m_point;
    int m_device;
    bool m_mounted = false;
    std::atomic<bool> m_isSilent{false};
    std::atomic<std::uint64_t> m_heldRead{0};
    std::thread m_server;
};

} // namespace zelvar::test
