// Writes the manual pages and the shell's completion while the command is built: zelvar-manual FOLDER VERSION.
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/ManualPages.h"

#include <cstdio>
#include <fstream>

namespace {

bool Write(zelvar::DString const &path, zelvar::DString const &text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file)
        std::fprintf(stderr, "zelvar-manual: cannot write %s\n", path.c_str());
    return static_cast<bool>(file);
}

} // namespace

int main(int argc, char **argv) {
    using namespace zelvar::tool;
    if (argc != 3)
        return kUsage;
    zelvar::DString const folder = argv[1];
    zelvar::DString const version = argv[2];
    bool done = Write(folder + "/zelvar.1", ManualPage(version)) && Write(folder + "/zelvar.bash", BashCompletion());
    for (CommandSpec const &spec : AllCommands())
        done = done && Write(folder + "/zelvar-" + spec.name + ".1", ManualPage(spec, version));
    return done ? kDone : kFailed;
}
