#include "zelvar/base/ProcessMoments.h"

#include <cstdlib>
#include <mutex>
#include <set>

#include <pthread.h>

namespace zelvar {

namespace {

struct Registry {
    Registry() {
        pthread_atfork([] { Get().BeforeFork(); }, [] { Get().AfterFork(); }, [] { Get().AfterFork(); });
        std::atexit([] { Get().BeforeExit(); });
    }
    static Registry &Get() {
        static auto &registry = *new Registry; // never destroyed: what is registered may outlive any static object
        return registry;
    }

    void BeforeFork() {
        mutex.lock();
        for (ProcessMoments *object : objects)
            object->BeforeFork();
    }
    void AfterFork() {
        for (ProcessMoments *object : objects)
            object->AfterFork();
        mutex.unlock();
    }
    void BeforeExit() {
        std::lock_guard const lock(mutex);
        for (ProcessMoments *object : objects)
            object->BeforeExit();
    }

    std::mutex mutex;
    std::set<ProcessMoments *> objects;
};

} // namespace

ProcessMoments::ProcessMoments() {
    std::lock_guard const lock(Registry::Get().mutex);
    Registry::Get().objects.insert(this);
}

ProcessMoments::~ProcessMoments() {
    std::lock_guard const lock(Registry::Get().mutex);
    Registry::Get().objects.erase(this);
}

} // namespace zelvar
