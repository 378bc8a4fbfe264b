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
    [[nodiscard]] bool HasFailed() const { return !m_code.empty() || !m_error.empty() || IsUnanswered() || LacksKey(); }

private:
    static void OnSaid(int level, int number, char const *text);
    void Note(std::string_view answer);
    void NoteTransfer(std::string_view remark);
    /// Whether the last request got no listing. GDAL takes that for the end of one.
    [[nodiscard]] bool IsUnanswered() const { return m_status >= 0 && m_status / 100 != 2; }
    /// The same, where it is not regarded that somebody may not have told a secret.
    [[nodiscard]] DError FailureAsTold(DString const &subject) const;
    /// Whether nothing was asked, since nobody has told a key.
    [[nodiscard]] bool LacksKey() const;

    std::optional<DString> m_former;        ///< this thread's setting of remarks
    DString m_code;                         ///< "NoSuchBucket", "AccessDenied" ...; empty if it named none
    DString m_error;                        ///< what GDAL itself found wrong first; empty for nothing
    int m_status = -1;                      ///< of the last answer; 0 while one is waited for, -1 before
    DString m_said;                         ///< the last that was said of the connection while there was none
    std::optional<std::int64_t> m_clockOff; ///< seconds that this computer's clock is ahead of the store's
};

} // namespace zelvar::gdal
