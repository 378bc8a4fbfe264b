#include "zelvar/opends/core/FileQuestion.h"

#include <utility>

namespace zelvar {

namespace {

FileQuestionProvider &Provider() {
    static FileQuestionProvider provider;
    return provider;
}

} // namespace

void SetFileQuestionProvider(FileQuestionProvider provider) { Provider() = std::move(provider); }

std::optional<DString> AskForFile(QWidget *parent, FileQuestion const &question) {
    FileQuestionProvider const provider = Provider();
    return provider ? provider(parent, question) : std::nullopt;
}

} // namespace zelvar
