#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace zelvar {

/// Where the parts of "user:password@" stand in a text; positions of bytes.
struct LoginInText {
    std::size_t user = 0;
    std::size_t colon = 0; ///< of the password
    std::size_t at = 0;    ///< behind the password: "@", or "%40" where the address is written inside another one
};

/// Finds logins with a password behind the "://" of addresses, from the front to the end of one text. A password may
/// hold "@", and even "/" where what would else be the port is no number. Linear over all questions together.
class LoginFinder {
public:
    explicit LoginFinder(std::string_view text) : m_text(text) {}

    /// The login of the address whose "://" begins at `colon`; `colon` of later questions is never less.
    [[nodiscard]] std::optional<LoginInText> Behind(std::size_t colon);
    /// The same for the "%3A%2F%2F" of an address that is written inside another one.
    [[nodiscard]] std::optional<LoginInText> BehindEscaped(std::size_t percent) const;

private:
    [[nodiscard]] std::size_t LastAtOfRun(std::size_t from);

    std::string_view m_text;
    std::size_t m_runEnd = 0; ///< of the run of bytes that are no blanks
    std::size_t m_lastAt = std::string_view::npos;
};

} // namespace zelvar
