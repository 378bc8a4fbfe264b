#include "zelvar/opends/connections/FileQuestion.h"

#include <utility>

namespace zelvar {

namespace {

DefinitionFileProvider &Provider() {
    static DefinitionFileProvider provider;
    return provider;
}

} // namespace

void SetDefinitionFileProvider(DefinitionFileProvider provider) { Provider() = std::move(provider); }

std::optional<DString> AskDefinitionFile(QWidget *parent, char const *title, bool saves) {
    DefinitionFileProvider const provider = Provider();
    return provider ? provider(parent, title, saves) : std::nullopt;
}

} // namespace zelvar
