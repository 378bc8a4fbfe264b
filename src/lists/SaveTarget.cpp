#include "zelvar/lists/SaveTarget.h"

#include <utility>

namespace zelvar {

namespace {

SaveTargetProvider &Provider() {
    static SaveTargetProvider provider;
    return provider;
}

} // namespace

void SetSaveTargetProvider(SaveTargetProvider provider) { Provider() = std::move(provider); }

std::optional<TableTarget> AskSaveTarget(QWidget *parent, char const *title) {
    SaveTargetProvider const provider = Provider();
    return provider ? provider(parent, title) : std::nullopt;
}

} // namespace zelvar
