#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// An object that must let go of something when the process forks or ends. Its last member makes it known.
class ZELVAR_API ProcessMoments {
public:
    enum class Side { Parent, Child };
    /// In what order locks are taken before a fork: those that are taken while others are held come last.
    enum class Locks { Outer, Inner };

    virtual ~ProcessMoments() = default;
    ProcessMoments(ProcessMoments const &) = delete;
    ProcessMoments &operator=(ProcessMoments const &) = delete;

    /// On the forking thread; nothing of the object may be under way until `AfterFork`.
    virtual void BeforeFork() = 0;
    virtual void AfterFork(Side side) = 0; ///< in the parent and in the child, on the same thread
    /// The process ends. The object may still be used by static objects that end later.
    virtual void BeforeExit() {}

protected:
    ProcessMoments() = default;

    /// While it lives its object is told of those moments. The last member of a class that has no derived ones: another
    /// thread may fork before the object's constructor has ended, or while its destructor is at work.
    class ZELVAR_API Known {
    public:
        explicit Known(ProcessMoments &object, Locks locks = Locks::Outer);
        ~Known();
        Known(Known const &) = delete;
        Known &operator=(Known const &) = delete;

    private:
        ProcessMoments &m_object;
        Locks const m_locks;
    };
};

} // namespace zelvar
