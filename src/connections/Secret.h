#pragma once

#include "zelvar/base/DString.h"

#include <iosfwd>
#include <vector>

namespace zelvar {

/// A password or key. It prints itself nowhere, and its memory is wiped when it goes or gets another value.
class ZELVAR_API Secret {
public:
    Secret() = default;
    explicit Secret(std::string_view text) : m_bytes(text.begin(), text.end()) {}
    /// The same, and wipes where the text came from.
    static Secret TakenFrom(DString &text);
    Secret(Secret const &) = default;
    Secret(Secret &&other) noexcept : m_bytes(std::move(other.m_bytes)) {}
    Secret &operator=(Secret other) noexcept {
        m_bytes.swap(other.m_bytes);
        return *this;
    }
    ~Secret();

    [[nodiscard]] bool IsEmpty() const { return m_bytes.empty(); }
    /// For whoever hands it over; lives as long as this does.
    [[nodiscard]] std::string_view Reveal() const { return {m_bytes.data(), m_bytes.size()}; }

    friend bool operator==(Secret const &a, Secret const &b) { return a.m_bytes == b.m_bytes; }
    friend std::ostream &operator<<(std::ostream &, Secret const &) = delete;
    friend void PrintTo(Secret const &secret, std::ostream *out); ///< "***": for tests that fail

private:
    std::vector<char> m_bytes{}; ///< a string would keep short ones where nothing wipes them
};

/// Overwrites a text with zeros, and empties it.
ZELVAR_API void Wipe(DString &text);

} // namespace zelvar
