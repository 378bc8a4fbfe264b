#include "zelvar/data/gdal/SliceGrid.h"

#include "zelvar/base/DString.h"

#include <gdal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>

namespace zelvar::gdal {

namespace {

constexpr std::string_view kSpectral[] = {"band",       "bands",       "channel", "channels",
                                          "wavelength", "wavelengths", "rgb",     "rgba"};

/// How far a dimension is to be trusted to be one of time.
enum class TimeTrust { None, Unit, Name, Axis };

struct Dimension {
    int length = 0;
    TimeTrust time = TimeTrust::None;
    bool spectral = false;
};

std::string_view Metadata(GDALMajorObjectH object, DString const &key) {
    char const *value = GDALGetMetadataItem(object, key.c_str(), nullptr);
    return value == nullptr ? std::string_view() : value;
}

/// The number that the text begins with; 0 if it is none.
int LeadingNumber(std::string_view text) {
    int value = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : 0;
}

int LengthOf(GDALDatasetH dataset, DString const &name, int bands) {
    // "{length,type}"
    std::string_view const definition = Metadata(dataset, "NETCDF_DIM_" + name + "_DEF");
    if (definition.starts_with('{'))
        return LeadingNumber(definition.substr(1));
    // A dimension without values of its own is not defined there; its place then counts from 1.
    return LeadingNumber(Metadata(GDALGetRasterBand(dataset, bands), "NETCDF_DIM_" + name));
}

TimeTrust TimeTrustOf(GDALDatasetH dataset, DString const &name) {
    if (EqualNoCase(Metadata(dataset, name + "#axis"), "T"))
        return TimeTrust::Axis;
    if (EqualNoCase(name, "time") || EqualNoCase(name, "t"))
        return TimeTrust::Name;
    bool const since = Metadata(dataset, name + "#units").find(" since ") != std::string_view::npos;
    return since ? TimeTrust::Unit : TimeTrust::None;
}

/// The dimensions of the bands, outermost first; nothing if the metadata tell of none.
std::vector<Dimension> DimensionsOf(GDALDatasetH dataset, int bands) {
    // "{time,level}"
    std::string_view list = Metadata(dataset, "NETCDF_DIM_EXTRA");
    if (list.size() < 3 || !list.starts_with('{') || !list.ends_with('}'))
        return {};
    std::vector<Dimension> dimensions;
    for (DString const &name : Split(list.substr(1, list.size() - 2), ','))
        dimensions.push_back({.length = LengthOf(dataset, name, bands),
                              .time = TimeTrustOf(dataset, name),
                              .spectral = std::any_of(std::begin(kSpectral), std::end(kSpectral),
                                                      [&](auto known) { return EqualNoCase(name, known); })});
    return dimensions;
}

bool CountsAs(std::vector<Dimension> const &dimensions, int bands) {
    std::int64_t product = 1;
    for (Dimension const &dimension : dimensions) {
        product *= dimension.length;
        if (dimension.length < 1 || product > bands)
            return false;
    }
    return product == bands;
}

bool AreAlike(GDALDatasetH dataset, int bands) {
    GDALRasterBandH first = GDALGetRasterBand(dataset, 1);
    for (int i = 2; i <= bands; ++i) {
        GDALRasterBandH band = GDALGetRasterBand(dataset, i);
        if (GDALGetRasterDataType(band) != GDALGetRasterDataType(first) ||
            GDALGetRasterBandXSize(band) != GDALGetRasterBandXSize(first) ||
            GDALGetRasterBandYSize(band) != GDALGetRasterBandYSize(first))
            return false;
    }
    return true;
}

bool FitsAnInt(int size, int times) { return std::int64_t{size} * times <= std::numeric_limits<int>::max(); }

} // namespace

SliceGrid SliceGrid::OfNetCdf(void *dataset) {
    int const bands = GDALGetRasterCount(dataset);
    SliceGrid plain(bands);
    if (bands < 2)
        return plain;
    std::vector<Dimension> const dimensions = DimensionsOf(dataset, bands);
    if (dimensions.empty() || !CountsAs(dimensions, bands) || !AreAlike(dataset, bands))
        return plain;
    auto const time = std::max_element(dimensions.begin(), dimensions.end(),
                                       [](Dimension const &a, Dimension const &b) { return a.time < b.time; });
    SliceGrid grid;
    int stride = bands;
    for (auto at = dimensions.begin(); at != dimensions.end(); ++at) {
        stride /= at->length;
        bool const runsOverFrames = at == time && at->time != TimeTrust::None;
        Axes &axes = runsOverFrames ? grid.m_frames : at->spectral ? grid.m_channels : grid.m_slices;
        axes.push_back({at->length, stride});
    }
    bool const fits =
        FitsAnInt(GDALGetRasterXSize(dataset), grid.Frames()) && FitsAnInt(GDALGetRasterYSize(dataset), grid.Slices());
    return fits ? grid : plain;
}

int SliceGrid::BandOf(int channel, int slice, int frame) const {
    return 1 + Offset(m_channels, channel) + Offset(m_slices, slice) + Offset(m_frames, frame);
}

int SliceGrid::Count(Axes const &axes) {
    int count = 1;
    for (Axis const &axis : axes)
        count *= axis.length;
    return count;
}

int SliceGrid::Offset(Axes const &axes, int index) {
    int offset = 0;
    for (std::size_t i = axes.size(); i-- > 0; index /= axes[i].length)
        offset += index % axes[i].length * axes[i].stride;
    return offset;
}

} // namespace zelvar::gdal
