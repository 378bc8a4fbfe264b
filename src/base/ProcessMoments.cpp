#include "zelvar/base/ProcessMoments.h"

#include <cstdlib>
#include <mutex>
#include <set>
#include <utility>

#include <pthread.h>

namespace zelvar {

namespace {

struct Registry {
    Registry() {
        pthread_atfork([] { Get().BeforeFork(); }, [] { Get().AfterFork(ProcessMoments::Side::Parent); },
                       [] { Get().AfterFork(ProcessMoments::Side::Child); });
        std::atexit([] { Get().BeforeExit(); });
    }
    static Registry &Get() {
        static auto &registry = *new Registry; // never destroyed: what is registered may outlive any static object
        return registry;
    }

    void BeforeFork() {
        mutex.lock();
        for (auto const &[locks, object] : objects)
            object->BeforeFork();
    }
    void AfterFork(ProcessMoments::Side side) {
        for (auto at = objects.rbegin(); at != objects.rend(); ++at)
            at->second->AfterFork(side);
        mutex.unlock();
    }
    void BeforeExit() {
        std::lock_guard const lock(mutex);
        for (auto const &[locks, object] : objects)
            object->BeforeExit();
    }

    std::mutex mutex;
    std::set<std::pair<ProcessMoments::Locks, ProcessMoments *>> objects;
};

} // namespace

ProcessMoments::Known::Known(ProcessMoments &object, Locks locks) : m_object(object), m_locks(locks) {
    std::lock_guard const lock(Registry::Get().mutex);
    Registry::Get().objects.emplace(m_locks, &m_object);
}

ProcessMoments::Known::~Known() {
    std::lock_guard const lock(Registry::Get().mutex);
    Registry::Get().objects.erase({m_locks, &m_object});
}

} // namespace zelvar
