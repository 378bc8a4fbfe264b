#include "zelvar/data/DefinitionUse.h"

#include <map>
#include <mutex>

namespace zelvar {

namespace {

struct Uses {
    std::mutex mutex;
    std::map<DString, std::uint64_t> last;
    std::uint64_t count = 0;
};
Uses &TheUses() {
    static auto &uses = *new Uses; // never destroyed: workers may still ask while the process ends
    return uses;
}

} // namespace

void NoteUseOf(DString const &definition) {
    Uses &uses = TheUses();
    std::lock_guard const lock(uses.mutex);
    uses.last[definition] = ++uses.count;
}

std::uint64_t LastUseOf(DString const &definition) {
    Uses &uses = TheUses();
    std::lock_guard const lock(uses.mutex);
    auto const found = uses.last.find(definition);
    return found == uses.last.end() ? 0 : found->second;
}

} // namespace zelvar
