#pragma once

#include <utility>

#include <unistd.h>

namespace zelvar {

/// Owns a file descriptor of the system; below 0 for none.
class FileDescriptor {
public:
    explicit FileDescriptor(int number) : m_number(number) {}
    FileDescriptor(FileDescriptor const &) = delete;
    FileDescriptor &operator=(FileDescriptor const &) = delete;
    FileDescriptor(FileDescriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~FileDescriptor() {
        if (m_number >= 0)
            close(m_number);
    }

    [[nodiscard]] int Get() const { return m_number; }
    [[nodiscard]] bool IsOpen() const { return m_number >= 0; }
    /// Gives the descriptor away: the caller closes it.
    [[nodiscard]] int Release() { return std::exchange(m_number, -1); }
    /// Closes now; false if the system tells only here that something written was lost.
    [[nodiscard]] bool Close() { return m_number >= 0 && close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

} // namespace zelvar
