#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/FileState.h"

#include <chrono>
#include <memory>
#include <set>
#include <vector>

namespace zelvar {

/// Files that a listing is about to ask `BDIDrvr::CanReadPath` about: drivers that are far away answer for many at
/// once, and while they think the listing goes on. A file that they said nothing of is asked about as ever.
///
/// Files whose names say nothing about them, the nameless ones, are looked into as far as the time of the listing
/// around goes; outside of a listing none is.
class ProbeAhead {
public:
    /// So many of one listing may be under way: as many readers serve listings.
    static constexpr std::size_t kMostUnderWay = 2;

    struct File {
        DString path;
        FileState state{}; ///< as it was listed; while it stays, drivers that are far away may know the answer
    };
    using Files = std::vector<File>;

    /// What was asked of drivers that are far away. Its end, on the thread that asked, ends the question.
    class Question {
    public:
        virtual ~Question() = default;
        Question(Question const &) = delete;
        Question &operator=(Question const &) = delete;
        /// Returns when it is answered, or stopped: then the answers are at hand for this thread, those to the former
        /// question no more.
        virtual void Wait() = 0;
        /// Whether a look into the file has shown a tree of several.
        [[nodiscard]] virtual bool IsFound(DString const &path) const = 0;

    protected:
        Question() = default;
    };
    /// What drivers that are far away offer.
    struct Handlers {
        std::unique_ptr<Question> (*ask)(Files const &files, Files const &nameless) = nullptr;
        /// What a listing may spend on nameless files.
        std::chrono::milliseconds (*timeForLooks)() = nullptr;
    };

    /// Begins to ask.
    ProbeAhead(Files const &files, Files nameless);
    ~ProbeAhead();
    ProbeAhead(ProbeAhead &&other) noexcept;
    ProbeAhead &operator=(ProbeAhead &&) = delete;

    /// Waits for what drivers say. Until the end of this object's life the calling thread, the one that has begun, has
    /// the answers at hand.
    void Wait();
    /// Whether one of the nameless has turned out to be a tree of several.
    [[nodiscard]] bool IsFound(DString const &path) const;

    /// Whether there are such drivers: without them nobody needs to gather files that are told by their names.
    [[nodiscard]] static bool IsWorthwhile();
    /// Whether a nameless file would be looked into: there is a listing around, which has time left for that.
    [[nodiscard]] static bool HasTimeForLooks();
    /// Where they are; null for nowhere. At the start of a program, and for tests; the object lives as long as they do.
    static void SetHandlers(Handlers const *handlers);

private:
    std::unique_ptr<Question> m_question; ///< null where drivers work in this process
    Files m_nameless;                     ///< which these are to look into
    std::set<DString> m_found;            ///< by them
};

} // namespace zelvar
