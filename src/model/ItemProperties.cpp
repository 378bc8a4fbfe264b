#include "zelvar/model/ItemProperties.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/SystemTime.h"
#include "zelvar/base/Translation.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/platform/os/ShellNamespace.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <array>
#include <cstdlib>
#include <ctime>

#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale is declared here alone

namespace zelvar {

namespace {

enum PropertyId {
    kImageHeight = 5106,
    kImageWidth = 5107,
    kSlices = 5108,
    kTimeFrames = 5109,
    kDataType = 5110,
    kChannels = 5111,
    kMembers = 5112,
    kDifferences = 5113,
    kExtent = 5114,
    kPath = 5204,
    kDriver = 5205,
    kModified = 5206,
    kCreated = 5207,
    kAccessed = 5208,
};

constexpr std::array<PropertyRow, 11> kRows{{
    {kPath, Mark("File"), Mark("Path")},
    {kModified, Mark("File"), Mark("Modified")},
    {kCreated, Mark("File"), Mark("Created")},
    {kAccessed, Mark("File"), Mark("Accessed")},
    {kImageWidth, Mark("Image"), Mark("Image Width")},
    {kImageHeight, Mark("Image"), Mark("Image Height")},
    {kDataType, Mark("Image"), Mark("Data Type")},
    {kChannels, Mark("Image"), Mark("Number of Channels")},
    {kSlices, Mark("Image"), Mark("Number of slices")},
    {kTimeFrames, Mark("Image"), Mark("Number of time frames")},
    {kDriver, Mark("Image"), Mark("Driver")},
}};

constexpr std::array<PropertyRow, 3> kMoreRows{{
    {kMembers, Mark("Image"), Mark("Members")},
    {kDifferences, Mark("Image"), Mark("Differences")},
    {kExtent, Mark("Image"), Mark("Extent")},
}};

/// The date in words, as the user's language writes it.
DString LongDate(std::int64_t nanoseconds) {
    if (nanoseconds == 0)
        return {};
    SystemTime const local = ToLocalTime(nanoseconds);
    std::tm fields{};
    fields.tm_year = local.wYear - 1900;
    fields.tm_mon = local.wMonth - 1;
    fields.tm_mday = local.wDay;
    fields.tm_wday = local.wDayOfWeek;
    static locale_t const user = newlocale(LC_TIME_MASK, "", nullptr); // lives as long as the process
    constexpr char kFormat[] = "%A, %d %B %Y";
    std::array<char, 100> text{};
    std::size_t const length = user == nullptr ? std::strftime(text.data(), text.size(), kFormat, &fields)
                                               : strftime_l(text.data(), text.size(), kFormat, &fields, user);
    return {text.data(), length};
}

BDIMoniker MakeMoniker(DString const &path, DString const &options) {
    return {options.empty() ? path : path + "?" + options, nullptr};
}

DString PhysicalFile(BDIMoniker const &moniker) {
    DString const &text = moniker.GetText();
    if (DFile(text).Exist())
        return text;
    DString onDisk = moniker.FindFile();
    return onDisk.empty() ? text.substr(0, text.find('?')) : onDisk;
}

void ReadFileRows(DString const &path, BDIMoniker const &moniker, PropertyMap &props) {
    platform::ShellNamespace const &shell = platform::ShellNamespace::Current();
    platform::ShellId const file = shell.Parse(PhysicalFile(moniker));
    std::optional<platform::FileTimes> const times = file.IsNull() ? std::nullopt : shell.Times(file);
    if (!times)
        return;
    props[kPath] = path;
    props[kModified] = LongDate(times->modified);
    props[kCreated] = LongDate(times->created);
    props[kAccessed] = LongDate(times->accessed);
}

} // namespace

std::span<PropertyRow const> PropertyRows() { return kRows; }
std::span<PropertyRow const> MorePropertyRows() { return kMoreRows; }

ImageExtent ExtentOf(PropertyMap const &props) {
    auto const number = [&props](PropertyId id) {
        auto const text = props.find(id);
        return text == props.end() ? 0 : std::atoi(text->second.c_str());
    };
    return {.channels = number(kChannels), .slices = number(kSlices), .frames = number(kTimeFrames)};
}

bool ReadItemProperties(DString const &path, DString const &driverId, DString const &options, DLGTemplate dlgTemplate,
                        StopSignal const *stop, PropertyMap &props, DError *error, ImageInfo *image) {
    props.clear();
    if (error != nullptr)
        error->Clear();
    if (path.empty())
        return false;
    if (platform::IsSmbAddress(path) && !DoesPlaceAnswer(path)) { // a reader would wait as long again
        if (error != nullptr)
            error->Set("its place does not answer", DError::Cause::NoAnswer);
        return false;
    }
    BDIMoniker const moniker = MakeMoniker(path, options);
    ReadFileRows(path, moniker, props);
    if (PicksDocument(dlgTemplate))
        return true;
    ImageInfo info;
    if (!ReadImageInfo(moniker, driverId, stop, info, error))
        return false;
    if (image != nullptr)
        *image = info;
    props[kChannels] = Format("%d", info.channels);
    props[kImageHeight] = Format("%d", info.height);
    props[kImageWidth] = Format("%d", info.width);
    props[kSlices] = Format("%d", info.slices);
    props[kTimeFrames] = Format("%d", info.timeFrames);
    if (info.isOfAnyResolution)
        props[kImageWidth] = props[kImageHeight] = Translated("any resolution");
    if (!info.extent.empty())
        props[kExtent] = info.extent;
    props[kDriver] = info.driver;
    props[kDataType] = RDIGetDTName(info.dataType);
    if (info.members.empty())
        return true;
    props[kPath] = path; // there is no file to ask for it
    props[kMembers] = info.members;
    if (!info.differences.empty())
        props[kDifferences] = info.differences;
    return true;
}

bool ReadItemPreview(DString const &path, DString const &driverId, DString const &options, StopSignal const *stop,
                     DCanvas &canvas, Enlarge enlarge, DError *error, RDIRowsRead *read, PreviewChoice const &choice) {
    return ReadPreview(MakeMoniker(path, options), driverId, stop, canvas, enlarge, error, read, choice);
}

bool ReadItemValues(DString const &path, DString const &driverId, DString const &options, StopSignal const *stop,
                    PreviewChoice const &choice, PreviewValues &values) {
    return ReadPreviewValues(MakeMoniker(path, options), driverId, stop, choice, values);
}

} // namespace zelvar
