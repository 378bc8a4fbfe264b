#include "zelvar/base/Redaction.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

/// "--help" among the options.
bool AsksForHelp(std::vector<zelvar::DString> const &words) {
    auto const end = std::find(words.begin(), words.end(), "--");
    return std::find(words.begin(), end, "--help") != end;
}

/// Others see the words of a process: a password is wiped there.
void HideSecrets(char *word) {
    std::size_t const length = std::strlen(word);
    zelvar::DString shown = zelvar::Redacted({word, length});
    if (shown == word)
        return;
    shown.resize(length, '*');
    std::copy(shown.begin(), shown.end(), word);
}

int Run(int argc, char **argv) {
    using namespace zelvar::tool;
    zelvar::DString const command = argc > 1 ? argv[1] : "";
    std::vector<zelvar::DString> const words(argv + (argc > 1 ? 2 : 1), argv + argc);
    std::for_each(argv, argv + argc, &HideSecrets);
    if (CommandSpec const *const spec = FindCommand(command); spec != nullptr && AsksForHelp(words)) {
        std::fputs(HelpText(*spec).c_str(), stdout);
        return kDone;
    }
    zelvar::UseDefinedConnections();
    if (command == "ls")
        return RunLs(words);
    if (command == "find")
        return RunFind(words);
    if (command == "info")
        return RunInfo(words);
    if (command == "thumbnail")
        return RunThumbnail(words);
    if (command == "thumbnails")
        return RunThumbnails(words);
    if (command == "sources")
        return RunSources(words);
    if (command == "settings")
        return RunSettings(words);
    if (command == "open")
        return RunOpen(words, argc, argv);
    if (command == "save")
        return RunSave(words, argc, argv);
    if (command == "histogram")
        return RunHistogram(words, argc, argv);
    if (command == "plot")
        return RunPlot(words, argc, argv);
    if (command == "ask")
        return RunAsk(words, argc, argv);
    if (command == "table")
        return RunTable(words, argc, argv);
    if (command == "gallery")
        return RunGallery(words, argc, argv);
    if (command == "--help" || command == "help") {
        std::fputs(UsageText().c_str(), stdout);
        return kDone;
    }
    if (command == "--version") {
        std::puts("zelvar " ZELVAR_VERSION);
        return kDone;
    }
    std::fputs(UsageText().c_str(), stderr);
    return kUsage;
}

/// A full disk must not look like success to a script.
int AfterFlush(int exitCode) {
    bool const written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return written ? exitCode : zelvar::tool::Failure("cannot write the output");
}

} // namespace

int main(int argc, char **argv) {
    try {
        return AfterFlush(Run(argc, argv));
    } catch (std::exception const &error) {
        return zelvar::tool::Failure(error.what());
    }
}
