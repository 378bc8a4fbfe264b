#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/FileDescriptor.h"

#include <optional>

namespace zelvar {

/// A file that takes the place of another only when it is whole: what is written goes to a temporary file beside the
/// target, which `Commit` flushes to disk and renames. Until then, and if anything fails, the target stays as it was.
/// One thread; in the child of a fork it writes nothing, since the file is the parent's.
class ZELVAR_API AtomicFile {
public:
    /// Begins. A target that is no plain file or may not be written is refused; that of a link is what it leads to.
    explicit AtomicFile(DString const &target);
    ~AtomicFile(); ///< without `Commit`: leaves no trace
    AtomicFile(AtomicFile const &) = delete;
    AtomicFile &operator=(AtomicFile const &) = delete;

    /// Whether all has gone well so far.
    [[nodiscard]] bool IsGood() const { return m_good && m_process == getpid(); }
    /// Adds bytes at the end; nothing once something has failed.
    void Write(std::string_view bytes);
    /// Everything is on disk, under the temporary name. Another file can be made ready before both take their places.
    [[nodiscard]] bool Flush();
    /// Puts the file in its place; flushes it if that is not done. False leaves the target.
    [[nodiscard]] bool Commit();

private:
    void WriteBuffer();
    [[nodiscard]] bool TakeFormerRights();

    DString m_target;
    DString m_temporary;                  ///< empty when there is none
    std::optional<FileDescriptor> m_file; ///< until it is flushed
    DString m_buffer;
    pid_t const m_process = getpid(); ///< that writes it
    bool m_good = false;
};

} // namespace zelvar
