#pragma once

#include "zelvar/base/Report.h"

#include <optional>

namespace zelvar::gdal {

/// Listens to GDAL on this thread while it asks an object store: the store's own reason comes as a remark only. Inside
/// a `GdalScope`.
class StoreTalk {
public:
    StoreTalk();
    ~StoreTalk();
    StoreTalk(StoreTalk const &) = delete;
    StoreTalk &operator=(StoreTalk const &) = delete;

    /// Why `subject` was not given, or not to its end; not set while nothing was said against it.
    [[nodiscard]] DError Failure(DString const &subject) const;
    /// Whether anything was.
    [[nodiscard]] bool HasFailed() const { return !m_code.empty() || !m_error.empty() || m_isUnanswered || LacksKey(); }

private:
    static void OnSaid(int level, int number, char const *text);
    void Note(std::string_view answer);
    /// Whether nothing was asked, since nobody has told a key.
    [[nodiscard]] bool LacksKey() const;

    std::optional<DString> m_former;        ///< this thread's setting of remarks
    DString m_code;                         ///< "NoSuchBucket", "AccessDenied" ...; empty if it named none
    DString m_error;                        ///< what GDAL itself found wrong first; empty for nothing
    bool m_isUnanswered = false;            ///< no listing came, and nothing that tells why
    std::optional<std::int64_t> m_clockOff; ///< seconds that this computer's clock is ahead of the store's
};

} // namespace zelvar::gdal
