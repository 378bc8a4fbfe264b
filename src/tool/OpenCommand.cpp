// The commands that let a person, or a script in his place, answer a file dialog.
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/DriverOptions.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/options/OptionValues.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/DialogDriver.h"
#include "zelvar/tool/Kinds.h"
#include "zelvar/tool/Screen.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>

#include <cstdio>

#include <unistd.h>

namespace zelvar::tool {

namespace {

constexpr int kLoad = 0;
constexpr int kSave = 1;

CommandSpec const &kOpenSpec = SpecOf("open");
CommandSpec const &kSaveSpec = SpecOf("save");

/// What is wrong with the words; empty if nothing is.
DString FaultOf(Arguments const &arguments, Kind const *kind, int mode) {
    if (kind == nullptr)
        return "unknown kind " + arguments.Value("--for");
    if (mode == kSave && !kind->canSave)
        return DString("there is nothing to save for ") + kind->name;
    if (arguments.values.contains("--size") && !ParseSize(arguments.Value("--size")))
        return "a size is written as 640x480";
    // Behind the platform's dialog the selector of a container may follow.
    if (arguments.All("--select").size() > 1 && !arguments.Has("--multiple") && !arguments.Has("--standard"))
        return "several --select need --multiple";
    if (arguments.Has("--standard") && (arguments.Has("--recursive") || arguments.Has("--series") ||
                                        arguments.Has("--plain") || arguments.values.contains("--filter") ||
                                        arguments.values.contains("--search") || arguments.values.contains("--basket")))
        return "--basket, --filter, --recursive, --search, --series and --plain are for the library's own dialog";
    if (arguments.values.contains("--basket") && (arguments.Has("--plain") || !arguments.Has("--multiple")))
        return "--basket needs --multiple, and not --plain";
    if (arguments.values.contains("--search") && arguments.Has("--plain"))
        return "--plain knows no search";
    if (arguments.Has("--series") && arguments.Has("--plain"))
        return "--plain knows no series";
    for (DString const &option : arguments.All("--option"))
        if (std::size_t const equals = option.find('='); equals == 0 || equals == DString::npos)
            return "an option is written as KEY=VALUE";
    if (mode == kLoad && arguments.Has("--plain") && !arguments.All("--option").empty())
        return "--plain knows no options";
    return {};
}

DialogScript ScriptOf(Arguments const &arguments, bool attended) {
    bool const isSized = arguments.values.contains("--size") || (!attended && !arguments.Has("--standard"));
    return {.select = arguments.All("--select"),
            .multiple = arguments.Has("--multiple"),
            .accept = arguments.Has("--accept"),
            .cancel = !attended && !arguments.Has("--accept"),
            .title = arguments.Value("--title"),
            .filter = arguments.Value("--filter"),
            .recursive = arguments.Has("--recursive"),
            .search = arguments.Value("--search"),
            .basket = arguments.Value("--basket"),
            .size = isSized ? ParseSize(arguments.Value("--size", "920x640")) : std::nullopt,
            .shot = arguments.Value("--shot")};
}

/// What stands behind "?".
DString OptionTextOf(Arguments const &arguments) {
    DString text;
    for (DString const &option : arguments.All("--option")) {
        std::size_t const equals = option.find('=');
        text += (text.empty() ? "" : "&") + OptionPiece(option.substr(0, equals), option.substr(equals + 1));
    }
    return text;
}

/// Tells of values that are none of their driver's options; true for none.
bool AreValues(OptionValues const &given, std::vector<DriverOption> const &options) {
    bool areValues = true;
    for (auto const &[name, value] : ValuesOf(options, given))
        for (DriverOption const &option : options)
            if (option.name == name && (option.isBarred || FaultOf(option, value) != OptionFault::None)) {
                std::fprintf(stderr, "zelvar: %s is not taken for %s\n", value.c_str(), name.c_str());
                areValues = false;
            }
    return areValues;
}

/// A path from the root, whichever way it was written; an address and a node inside a container stay as they are.
DString PlaceFromRoot(DString const &place) {
    DFile const file(place);
    return file.Exist() ? file.GetAbsolutePath() : place;
}

/// Whether the dialog looks for the place itself, behind its window, and says there why it finds none: a server may
/// take its time.
bool IsFoundByDialog(DString const &place, Arguments const &arguments) {
    return !arguments.Has("--standard") && !arguments.Has("--plain") &&
           (place.starts_with("source:") || BDIMoniker(place, nullptr).IsUrl());
}

/// Why nothing can be saved under the name; empty if it can.
DString WhyNotSaved(DString const &path) {
    DFile const file(path);
    DString const folder = file.IsDirectory() ? path : file.GetPhysFilePath();
    if (access(folder.c_str(), W_OK) == 0)
        return {};
    return "cannot write to '" + folder + "'";
}

int Outcome(DialogDriver const &driver, FileDlg const &request, bool opened, Arguments const &arguments) {
    if (driver.HasTimedOut())
        std::fputs("zelvar: what is to be selected did not come within 30 s\n", stderr);
    if (!driver.Warning().empty())
        std::fprintf(stderr, "zelvar: accepted: %s\n", EscapeControlBytes(driver.Warning()).c_str());
    if (!driver.Question().empty())
        std::fprintf(stderr, "zelvar: answered no: %s\n", driver.Question().c_str());
    else if (driver.WasRefused())
        std::fputs("zelvar: OK cannot be pressed with what is selected\n", stderr);
    if (driver.HasFailedBasket())
        return Failure("cannot take '" + arguments.Value("--basket") + "' into a basket");
    if (driver.HasFailedShot())
        return Failure("cannot write '" + arguments.Value("--shot") + "'");
    if (!opened)
        return kNothing;
    for (int i = 0; i < request.GetNumSlctFiles(); ++i)
        std::printf("%s\n", EscapeControlBytes(request.GetFile(i)->GetText()).c_str());
    return kDone;
}

/// Whether what was chosen takes the options as they were given.
bool AreTaken(FileDlg const &request, int mode, OptionValues const &given) {
    if (mode == kSave)
        return request.GetFormat() == nullptr || AreValues(given, DriverOptions(request.GetFormat()->GetID())->create);
    RequestScope const scope(RequestKind::Probe, {}, kNamedProbe);
    BDIMoniker const *const first = request.GetFile(0);
    return first == nullptr || AreValues(given, DriverOptions(TellDriver(*first))->open);
}

int RunRequest(CommandSpec const &spec, int mode, std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(spec, words, error);
    if (!arguments)
        return UsageError(spec, error);
    Kind const *const kind = FindKind(arguments->Value("--for", mode == kLoad ? "raster" : ""));
    if (DString const fault = FaultOf(*arguments, kind, mode); !fault.empty())
        return UsageError(spec, fault);

    bool const attended = ChoosePlatform();
    QApplication const application(argc, argv);
    PrepareWindows(*arguments);
    ZelvarInit();
    if (!attended || arguments->Has("--accept"))
        SpeakOnStderr();

    FileDlg request(arguments->Value("--title").c_str());
    if (!arguments->words.empty()) {
        DString const &word = arguments->words.front();
        DString const place = mode == kLoad ? PlaceOf(word) : word; // what is yet to be is called just so
        bool const isFoundLater = attended && IsFoundByDialog(place, *arguments);
        if (mode == kLoad && (place.empty() || (!isFoundLater && ItemFromPlace(place) == nullptr)))
            return Failure(WithReason("cannot access '" + place + "'", place));
        DString const path = mode == kLoad ? PlaceFromRoot(place) : DFile(place).GetAbsolutePath();
        if (DString const reason = mode == kSave ? WhyNotSaved(path) : DString(); !reason.empty())
            return Failure(reason);
        request.SetInitFile(path);
    }
    if (arguments->Has("--multiple"))
        request.SetMultipleFiles();
    bool const isSeries = arguments->Has("--series");
    request.SetSeriesMode(isSeries ? SeriesMode::Slices : SeriesMode::Members);
    DlgOpenDS::SetFeatures(arguments->Has("--plain") ? kOpenPlain : isSeries ? kOpenAll : kOpenAll & ~kOpenSeries);
    DString const options = OptionTextOf(*arguments);
    request.SetOptions(options);
    request.ShowOverwritePrompt(!arguments->Has("--overwrite"));
    // The library's own dialog comes up over an application's frame window.
    std::unique_ptr<QMainWindow> const frame = arguments->Has("--standard") ? nullptr : std::make_unique<QMainWindow>();
    platform::SetMainWindow(frame.get());
    ApplicationFormats const formats;
    DialogDriver const driver(ScriptOf(*arguments, attended));
    bool const opened = kind->run(request, mode, arguments->Has("--multiple"));
    bool const areValues = !opened || options.empty() || AreTaken(request, mode, FromOptionText(options));
    ZelvarShutdown();
    if (!areValues)
        return kFailed;
    return Outcome(driver, request, opened, *arguments);
}

} // namespace

int RunOpen(std::vector<DString> const &words, int &argc, char **argv) {
    return RunRequest(kOpenSpec, kLoad, words, argc, argv);
}

int RunSave(std::vector<DString> const &words, int &argc, char **argv) {
    return RunRequest(kSaveSpec, kSave, words, argc, argv);
}

} // namespace zelvar::tool
