#pragma once

namespace zelvar {

/// An object that must let go of something when the process forks or ends. Known from its making to its end.
class ProcessMoments {
public:
    virtual ~ProcessMoments();
    ProcessMoments(ProcessMoments const &) = delete;
    ProcessMoments &operator=(ProcessMoments const &) = delete;

    /// On the forking thread; nothing of the object may be under way until `AfterFork`.
    virtual void BeforeFork() = 0;
    virtual void AfterFork() = 0; ///< in the parent and in the child, on the same thread
    /// The process ends. The object may still be used by static objects that end later.
    virtual void BeforeExit() = 0;

protected:
    ProcessMoments();
};

} // namespace zelvar
