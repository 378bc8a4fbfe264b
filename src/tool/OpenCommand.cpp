#include "zelvar/data/BDINode.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/UserMessages.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/DialogDriver.h"
#include "zelvar/tool/FirstPaint.h"

#include <QtCore/QTimer>
#include <QtGui/QFontInfo>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <map>

namespace zelvar::tool {

namespace {

CommandSpec const kSpec{
    .usage = "open [PLACE] [--for KIND] [--multiple] [--filter MASK] [--recursive] [--select NAME]... [--accept] "
             "[--title T] [--shot FILE.png] [--size WxH]",
    .flags = {"--multiple", "--recursive", "--accept"},
    .values = {"--for", "--filter", "--select", "--title", "--shot", "--size"},
    .minArguments = 0,
    .maxArguments = 1,
};

struct Kind {
    DLGTemplate dlgTemplate;
    char const *historyKey;
    char const *title;
};

std::map<DString, Kind> const &Kinds() {
    static std::map<DString, Kind> const kinds{
        {"raster", {DT_DATA, "ImageFolders", "Open Data Source"}},
        {"workspace", {DT_WORKSPACE, "WorkspaceFolders", "Open Workspace"}},
        {"project", {DT_PROJECT, "ProjectFolders", "Open Project"}},
        {"ruleset", {DT_RULESET, "RulesetFolders", "Open Ruleset"}},
        {"solution", {DT_SOLUTION, "SolutionFolders", "Open Solution"}},
    };
    return kinds;
}

bool HasScreen() { return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY"); }

/// True if a person can work the dialog.
bool ChoosePlatform() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return !qgetenv("QT_QPA_PLATFORM").startsWith("offscreen");
    if (HasScreen())
        return true;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::fputs("zelvar: no display, running off screen\n", stderr);
    return false;
}

/// Words to the user go to stderr when nobody could close a box.
void SpeakOnStderr() {
    platform::SetUserMessageHook([](Report::Severity, DString const &text) {
        std::fprintf(stderr, "zelvar: %s\n", text.c_str());
        return true;
    });
}

struct FormatList {
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    DFileFrmt tiff{"GTiff", "TIFF (*.tif, *.tiff)", "*.tif;*.tiff"};
    DFileFrmt jpeg{"JPEG", "JPEG (*.jpg, *.jpeg)", "*.jpg;*.jpeg"};
    DFileFrmt png{"PNG", "PNG (*.png)", "*.png"};
    DFileFrmt geoPackage{"GPKG", "GeoPackage (*.gpkg)", "*.gpkg"};
    DFileFrmt netCdf{"netCDF", "netCDF (*.nc)", "*.nc"};
    DFileFrmt hdf5{"HDF5", "HDF5 (*.h5, *.hdf5)", "*.h5;*.hdf5"};
    DVector<DFileFrmt *> images{&all, &tiff, &jpeg, &png, &geoPackage, &netCdf, &hdf5};
    DVector<DFileFrmt *> documents{&all};
};

struct DeleteDialog {
    void operator()(DlgOpenDS *dialog) const { DlgOpenDS::DeleteDialogObject(dialog); }
};

/// A plain file stands for the folder that it lies in.
RefItemPtr<DataSourceItem> FolderOf(RefItemPtr<DataSourceItem> const &item) {
    item->BuildParents();
    RefItemPtr<DataSourceItem> parent = item->GetParent();
    return item->IsFolder() || parent == nullptr ? item : parent;
}

/// Where few fonts are installed the toolkit's first choice can be one of fixed pitch.
void AvoidTypewriter() {
    QFont font = QApplication::font();
    if (!QFontInfo(font).fixedPitch())
        return;
    font.setFamilies({"Liberation Sans", "Arial", "Helvetica"});
    QApplication::setFont(font);
}

} // namespace

int RunOpen(std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    auto const kind = Kinds().find(arguments->Value("--for", "raster"));
    if (kind == Kinds().end())
        return UsageError(kSpec, "unknown kind " + arguments->Value("--for"));
    std::optional<WindowSize> const size = ParseSize(arguments->Value("--size", "920x640"));
    if (!size)
        return UsageError(kSpec, "a size is written as 640x480");
    if (arguments->All("--select").size() > 1 && !arguments->Has("--multiple"))
        return UsageError(kSpec, "several --select need --multiple");

    bool const attended = ChoosePlatform();
    QApplication const application(argc, argv);
    AvoidTypewriter();
    ZelvarInit();
    if (!attended || arguments->Has("--accept"))
        SpeakOnStderr();

    DString const place = arguments->words.empty() ? DString() : arguments->words.front();
    RefItemPtr<DataSourceItem> start = place.empty() ? nullptr : ItemFromPlace(place);
    if (!place.empty() && start == nullptr)
        return Failure("cannot access '" + place + "'");

    FormatList formats;
    auto const &offered = PicksImageData(kind->second.dlgTemplate) ? formats.images : formats.documents;
    std::unique_ptr<DlgOpenDS, DeleteDialog> const dialog(DlgOpenDS::CreateDialogObject(
        offered, &formats.all, kind->second.dlgTemplate, kind->second.historyKey, nullptr));
    dialog->SetTitle(arguments->Value("--title", kind->second.title).c_str());
    if (PicksImageData(kind->second.dlgTemplate))
        dialog->SetBDIFilter(BDINode_Raster);
    dialog->SetMultiSelect(arguments->Has("--multiple"));
    if (start != nullptr)
        dialog->SetInitItem(FolderOf(start));
    TraceFirstPaint(*dialog);
    QTimer::singleShot(0, dialog.get(), [&] {
        if (arguments->values.contains("--size") || !attended)
            dialog->resize(size->width, size->height);
        if (arguments->values.contains("--filter"))
            dialog->ApplyFileFilter(arguments->Value("--filter").c_str(), nullptr);
        if (arguments->Has("--recursive"))
            dialog->SetRecursive(true);
    });
    DialogDriver const driver(*dialog, {.select = arguments->All("--select"),
                                        .accept = arguments->Has("--accept"),
                                        .cancel = !attended && !arguments->Has("--accept"),
                                        .shot = arguments->Value("--shot")});
    bool const accepted = dialog->DoModal() == QDialog::Accepted;
    ZelvarShutdown();
    if (driver.HasTimedOut())
        std::fputs("zelvar: the rows to select did not come within 30 s\n", stderr);
    if (driver.WasRefused())
        std::fputs("zelvar: OK cannot be pressed with what is selected\n", stderr);
    if (driver.HasFailedShot())
        return Failure("cannot write '" + arguments->Value("--shot") + "'");
    if (!accepted)
        return kNothing;
    for (BDIMoniker const &moniker : dialog->GetSelectedNodePaths())
        std::printf("%s\n", EscapeControlBytes(moniker.GetText()).c_str());
    return kDone;
}

} // namespace zelvar::tool
