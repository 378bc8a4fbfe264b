#include "zelvar/base/Translation.h"

#include <atomic>

namespace zelvar {

namespace {

constinit std::atomic<TranslationHook> g_hook = nullptr;

char const *LookUp(char const *text, char const *english, long long count) {
    TranslationHook const hook = g_hook.load(std::memory_order_acquire);
    char const *const found = hook == nullptr || *english == '\0' ? nullptr : hook(text, english, count);
    return found == nullptr ? english : found;
}

} // namespace

char const *Translated(char const *text) { return LookUp(text, text, 1); }

char const *Translated(char const *one, char const *many, long long count) {
    return LookUp(one, count == 1 ? one : many, count);
}

void SetTranslationHook(TranslationHook hook) { g_hook.store(hook, std::memory_order_release); }

} // namespace zelvar
