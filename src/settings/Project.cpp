#include "zelvar/settings/Project.h"

#include "zelvar/base/Percent.h"

#include <mutex>
#include <utility>

namespace zelvar {

namespace {

struct Present {
    std::mutex mutex;
    DString project;
};
// Never destroyed: static objects of applications may save something while the process ends.
Present &ThePresent() {
    static auto &present = *new Present;
    return present;
}

} // namespace

void SetProject(DString project) {
    std::scoped_lock const lock(ThePresent().mutex);
    ThePresent().project = std::move(project);
}

DString GetProject() {
    std::scoped_lock const lock(ThePresent().mutex);
    return ThePresent().project;
}

DString KeyOfProject(DString const &key) {
    DString const project = GetProject();
    return project.empty() ? DString() : key + "@" + PercentEncoded(project);
}

} // namespace zelvar
