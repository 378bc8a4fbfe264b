#include "zelvar/gallery/Gallery.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/Screen.h"

#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <cstdio>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("gallery");

} // namespace

int RunGallery(std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    std::optional<WindowSize> const size = ParseSize(arguments->Value("--size", "900x600"));
    if (!size)
        return UsageError(kSpec, "a size is written as 640x480");
    if (arguments->Has("--list")) {
        for (gallery::Page const &page : gallery::Pages())
            std::printf("%s\t%s\t%s\n", page.name, page.title, page.classes);
        return kDone;
    }
    bool const attended = ChoosePlatform();
    QApplication const application(argc, argv);
    PrepareWindows(*arguments);
    ZelvarInit();
    gallery::Gallery window;
    if (arguments->values.contains("--page") && !window.ShowPage(arguments->Value("--page"))) {
        DString names;
        for (gallery::Page const &page : gallery::Pages())
            names += DString(names.empty() ? "" : ", ") + page.name;
        return UsageError(kSpec, "the pages are " + names);
    }
    window.resize(size->width, size->height);
    window.show();
    window.activateWindow(); // where no window manager gives it the keyboard
    bool written = true;
    if (!attended || arguments->values.contains("--shot"))
        QTimer::singleShot(0, &window, [&] {
            if (arguments->values.contains("--shot"))
                written = window.grab().save(QFile::decodeName(arguments->Value("--shot").c_str()), "PNG");
            window.close();
        });
    QApplication::exec();
    ZelvarShutdown();
    return written ? kDone : Failure("cannot write '" + arguments->Value("--shot") + "'");
}

} // namespace zelvar::tool
