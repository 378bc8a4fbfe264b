#include "zelvar/tool/Commands.h"

#include <cstdio>
#include <exception>

namespace {

constexpr char kUsageText[] =
    "usage: zelvar COMMAND ...\n"
    "  open [PLACE] [--for KIND] [--multiple] [--standard] [--filter MASK] [--recursive] [--select NAME]...\n"
    "       [--accept] [--title T] [--shot FILE.png] [--size WxH]\n"
    "                                                        pick data in a dialog, print monikers\n"
    "  save --for KIND [NAME] [--accept] [--overwrite] [--title T] [--shot FILE.png] [--size WxH]\n"
    "                                                        pick a name to save under, print the path\n"
    "  ls PLACE [--folders] [--recursive] [--filter MASK] [--sort name|size|date] [--descending] [--json]\n"
    "  info MONIKER [--preview FILE.png]                     properties and preview of one item\n"
    "  sources                                               the rows of the data source list\n"
    "  settings export FILE [--key KEY] | import FILE        settings as XML; an import comes whole or not at all\n"
    "  histogram FILE [--band N | --column C] [--slots N] [--print] [--click X,Y]...\n"
    "       [--shot FILE.png] [--size WxH]\n"
    "  plot FILE --x COLUMN --y COLUMN [--line] [--click X,Y]... [--shot FILE.png] [--size WxH]\n"
    "                                                        charts of samples and columns; print what is picked\n"
    "  ask TEXT|- [--caption T] [--buttons SET] [--icon NAME] [--default N] [--dont-ask [TEXT]] [--help-id N]\n"
    "      [--press NAME] [--check] [--shot FILE.png]        ask a question, print the button pressed\n"
    "  table FILE [--layer NAME] [--sort COLUMN [--descending]] [--rows N] [--print] [--select ROW] [--shot FILE.png]\n"
    "       [--size WxH]\n"
    "                                                        rows of a table, the first N of them; ROW is one's ID\n"
    "                                                        from 0. Sorted, large numbers come first and texts go\n"
    "                                                        from A to Z; --descending turns that round\n"
    "  gallery [--page NAME] [--shot FILE.png] [--size WxH] | gallery --list\n"
    "                                                        controls to play with; the pages with their classes\n"
    "KIND: raster (default of open), thematic, attributes, metadata (open only), table, tiff, xml, project, "
    "workspace,\n"
    "process, ruleset, solution, all.\n"
    "SET: ok, ok-cancel, abort-retry-ignore, yes-no, yes-no-cancel, retry-cancel, keep, continue-abort.\n"
    "PLACE and MONIKER: a path, an address, a node inside a container as printed by ls, or source:NAME.\n"
    "Exit codes: 0 done, 1 cancelled or nothing found, 2 usage, 3 failed.\n";

int Run(int argc, char **argv) {
    using namespace zelvar::tool;
    zelvar::DString const command = argc > 1 ? argv[1] : "";
    std::vector<zelvar::DString> const words(argv + (argc > 1 ? 2 : 1), argv + argc);
    if (command == "ls")
        return RunLs(words);
    if (command == "info")
        return RunInfo(words);
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
        std::fputs(kUsageText, stdout);
        return kDone;
    }
    if (command == "--version") {
        std::puts("zelvar " ZELVAR_VERSION);
        return kDone;
    }
    std::fputs(kUsageText, stderr);
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
