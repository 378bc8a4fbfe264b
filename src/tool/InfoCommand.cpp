#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/DriverOptions.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/model/ItemProperties.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/PictureFile.h"

#include <cstdio>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("info");

/// What the texts of a table were taken for, where nothing tells.
void SayEncoding(DString const &path) {
    ADIFile const table(DFile(path), "", tdFormatAccess_Read, nullptr, "");
    if (DString const encoding = table.GetEncoding(); !encoding.empty())
        std::printf("Text Encoding\t%s\n", EscapeControlBytes(encoding).c_str());
}

/// The columns of a table, a line each; false for what is none.
bool SayColumns(DString const &path) {
    ADIFile const table(DFile(path), "", tdFormatAccess_Read, nullptr, "");
    for (int col = 0; col < table.GetNumCols(); ++col)
        std::printf("Column\t%s\n", EscapeControlBytes(table.GetColName(col)).c_str());
    return table.IsOpen();
}

/// What lies inside a folder that is a data set, a line each; false for nothing.
bool SayNodes(DString const &path) {
    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    void *const tree = BDIDrvrMngr::Instance()->OpenFile(path.c_str(), &driver, &root, nullptr, nullptr);
    if (tree == nullptr)
        return false;
    bool isAny = false;
    void *const walk =
        driver->FindFirstChildNode(tree, root, BDINode_Container | BDINode_Raster | BDINode_Thematic | BDINode_Table);
    while (BDINode const *const node = walk == nullptr ? nullptr : driver->FindNextChildNode(walk)) {
        std::printf("Node\t%s\n", EscapeControlBytes(node->path).c_str());
        isAny = true;
    }
    driver->FindClose(walk);
    driver->CloseNode(root);
    driver->CloseRepository(tree);
    return isAny;
}

/// Whether that keeps from reading what would else be an image; other files have properties as well.
bool IsFault(DError const &failure) {
    using enum DError::Cause;
    return failure.IsSet() && failure.Why() != Unknown && failure.Why() != NotSupported;
}

/// What values an option takes; empty for any.
DString ValuesOf(DriverOption const &option) {
    if (!option.choices.empty())
        return JoinNotEmpty(option.choices, '|');
    if (!option.least && !option.most)
        return {};
    DString const least = option.least ? Format("%.15g", *option.least) : DString();
    return least + ".." + (option.most ? Format("%.15g", *option.most) : DString());
}

/// What the preview is to show; nothing for words that say nothing.
std::optional<PreviewChoice> ChoiceIn(Arguments const &arguments) {
    constexpr int kMost = 1'000'000'000;
    PreviewChoice choice;
    std::pair<char const *, int *> const numbers[] = {
        {"--channel", &choice.channel}, {"--slice", &choice.slice}, {"--frame", &choice.frame}};
    for (auto const &[option, number] : numbers) {
        if (!arguments.values.contains(option))
            continue;
        std::optional<int> const count = CountIn(arguments.Value(option), kMost);
        if (!count)
            return std::nullopt;
        *number = *count - 1;
    }
    DString const stretch = arguments.Value("--stretch", "usual");
    if (stretch != "usual" && stretch != "full" && stretch != "most")
        return std::nullopt;
    choice.stretch = stretch == "full"   ? PreviewChoice::Stretch::Full
                     : stretch == "most" ? PreviewChoice::Stretch::Most
                                         : PreviewChoice::Stretch::Usual;
    return choice;
}

int SayOptions(DString const &path, DString const &moniker, DString driverId) {
    RequestScope const scope(RequestKind::Probe, {}, kNamedProbe);
    if (driverId.empty())
        driverId = TellDriver({path, nullptr});
    if (DString const reason = ReaderFailureOf(path); !reason.empty())
        return Failure("cannot read '" + moniker + "': " + reason);
    if (driverId.empty())
        return Failure(WithReason("cannot open '" + moniker + "'", path));
    std::vector<DriverOption> const &options = DriverOptions(driverId)->open;
    for (DriverOption const &option : options)
        std::printf("%s\t%s\t%s\t%s\t%s\n", option.name.c_str(), option.isBarred ? "not taken" : ToText(option.kind),
                    EscapeControlBytes(option.usual).c_str(), EscapeControlBytes(option.description).c_str(),
                    EscapeControlBytes(ValuesOf(option)).c_str());
    return options.empty() ? kNothing : kDone;
}

} // namespace

int RunInfo(std::vector<DString> const &words) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    std::optional<PreviewChoice> const choice = ChoiceIn(*arguments);
    if (!choice)
        return UsageError(kSpec, "channels, slices and frames are counted from 1, a stretch is usual, full or most");
    if (*choice != PreviewChoice() && !arguments->values.contains("--preview"))
        return UsageError(kSpec, "a channel, a slice, a frame and a stretch are those of --preview");
    UseReaderDrivers();
    WarmReaders();

    // The moniker's own options stay with it; a place such as source:NAME is first turned into what it stands for.
    DString const moniker = PlaceOf(arguments->words.front());
    DString path = moniker;
    DString driverId;
    if (moniker.starts_with("source:")) {
        RefItemPtr<DataSourceItem> const item = ItemFromPlace(moniker);
        if (item == nullptr)
            return Failure(WithReason("cannot read '" + moniker + "'", moniker));
        path = item->GetPath();
        if (auto const *const tree = dynamic_cast<TemplDataSourceItem *>(item.get()); tree != nullptr && path.empty())
            return Failure(WithReason("cannot read '" + moniker + "' at '" + tree->GetSource() + "'", tree->GetSource(),
                                      tree->GetFailure().IsSet() ? tree->GetFailure().Text() : kNotOpened));
        driverId = item->GetRDIDriverId();
    }
    if (arguments->Has("--options"))
        return SayOptions(path, moniker, driverId);
    PropertyMap props;
    DError failure;
    bool const isImage = ReadItemProperties(path, driverId, {}, DT_DATA, nullptr, props, &failure);
    if (DString const reason = ReaderFailureOf(path); !reason.empty())
        return Failure("cannot read '" + moniker + "': " + reason);
    // A table on a server has no file to tell of.
    if (props.empty() && failure.Why() == DError::Cause::NotSupported && SayColumns(path))
        return kDone;
    if (props.empty())
        return Failure(WithReason("cannot open '" + moniker + "'", path, failure.Text()));
    if (!isImage && IsFault(failure))
        return Failure("cannot read '" + moniker + "': " + failure.Text());
    for (auto const rows : {PropertyRows(), MorePropertyRows()})
        for (PropertyRow const &row : rows)
            if (auto const text = props.find(row.id); text != props.end() && !text->second.empty())
                std::printf("%s\t%s\n", row.name, EscapeControlBytes(text->second).c_str());

    std::optional<FoundDataFolder> const folder = isImage ? std::nullopt : LookForDataFolder(path);
    if (folder && !SayNodes(path))
        return Failure("cannot open '" + moniker + "': nothing in this " + ToText(folder->kind) + " can be read");
    if (!isImage && !folder)
        SayEncoding(path);
    if (!arguments->values.contains("--preview"))
        return kDone;
    DCanvas canvas;
    bool const hasPreview =
        isImage && ReadItemPreview(path, driverId, {}, nullptr, canvas, Enlarge::No, &failure, nullptr, *choice) &&
        canvas.HasData();
    if (DString const reason = ReaderFailureOf(path); !reason.empty())
        return Failure("cannot read '" + moniker + "': " + reason);
    if (!hasPreview && *choice != PreviewChoice() && failure.IsSet())
        return Failure("cannot show '" + moniker + "': " + failure.Text());
    if (!hasPreview)
        std::puts("Preview is not available");
    else if (!SavePicture(canvas, arguments->Value("--preview")))
        return Failure("cannot write '" + arguments->Value("--preview") + "'");
    return isImage && IsFault(failure) ? Failure("cannot read '" + moniker + "': " + failure.Text()) : kDone;
}

} // namespace zelvar::tool
