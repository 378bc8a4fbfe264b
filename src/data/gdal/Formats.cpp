#include "zelvar/data/gdal/Formats.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/gdal/GdalScope.h"
#include "zelvar/data/gdal/OptionLists.h"
#include "zelvar/data/gdal/VirtualData.h"

#include <cpl_string.h>
#include <gdal.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zelvar::gdal {

namespace {

/// A format that is not opened, but for readers of the kind that it serves.
struct Barred {
    std::string_view id;
    bool reachesOut; ///< to servers that a name or a file tells of
    std::optional<ConnectionKind> servedBy{};
};
constexpr Barred kBarred[] = {
    {"AmigoCloud", true},                                // service
    {"CSW", true},                                       // service
    {"Carto", true},                                     // service
    {"DAAS", true},                                      // service
    {"DERIVED", false},                                  // virtual
    {"EEDA", true},                                      // service
    {"EEDAI", true},                                     // service
    {"Elasticsearch", true},                             // service
    {"GMLAS", false},                                    // fetches schemas
    {"GNMDatabase", true},                               // database
    {"GNMFile", false},                                  // opens what it names
    {"GPSBabel", false},                                 // runs a program
    {"HTTP", true},                                      // fetches
    {"KMLSUPEROVERLAY", false},                          // follows links
    {"MEM", false},                                      // an address in memory
    {"MRF", false},                                      // fetches what it names and keeps it beside the file
    {"MSSQLSpatial", true},                              // database
    {"Memory", false},                                   // not on disk
    {"MySQL", true},                                     // database
    {"NAS", false},                                      // writes .gfs
    {"NGW", true},                                       // service
    {"OAPIF", true},                                     // service
    {"ODBC", true},                                      // databases, read without it
    {"OGCAPI", true},                                    // service
    {"OGR_OGDI", true},                                  // service
    {"PGeo", true},                                      // database driver
    {"PLMOSAIC", true},                                  // service
    {"PLSCENES", true},                                  // service
    {"PostGISRaster", true, ConnectionKind::PostgreSql}, // database
    {"PostgreSQL", true},                                // database, read without it
    {"RDA", true},                                       // service
    {"Rasterlite", false},                               // opens tiles with any format
    {"STACIT", false},                                   // opens what it names
    {"STACTA", false},                                   // opens what it names
    {"VFK", false},                                      // writes .db
    {"WCS", true, ConnectionKind::MapService},           // service
    {"WFS", true, ConnectionKind::MapService},           // service
    {"WMS", true, ConnectionKind::MapService},           // service
    {"WMTS", true, ConnectionKind::MapService},          // service
};

Barred const *FindBarred(std::string_view id) {
    auto const *const at = std::ranges::find(kBarred, id, &Barred::id);
    return at == std::end(kBarred) ? nullptr : at;
}

/// Whether this process is a reader of the kind that the format is for.
bool IsServedHere(Barred const &barred) {
    ReaderDuty const *const duty = OwnDuty();
    return duty != nullptr && duty->connection && barred.servedBy == duty->connection->kind;
}

/// Extensions in use that GDAL does not tell.
constexpr std::pair<std::string_view, std::string_view> kMoreExtensions[] = {
    {"GTiff", "gtiff btf tf8 lsm svs"},
    {"netCDF", "nc4 cdf"},
    {"HDF5", "he5"},
    {"HDF4", "hdf4 he4"},
    {"JPEG", "jpe jfif"},
    {"JP2OpenJPEG", "jpx jpf j2c jpc"},
    {"FITS", "fit fts"},
    {"HEIF", "heif"},
    {"ENVI", "bsq bip"},
    {"NITF", "nitf nsf"},
};
/// Extensions that many other programs use too: a file is not taken for data by them.
constexpr std::string_view kAmbiguous[] = {"txt", "dat", "bin", "xml", "hdr", "db",  "sql",
                                           "mid", "ili", "000", "n1",  "toc", "err", "ter"};
/// Extensions of tables.
constexpr std::string_view kTables[] = {"csv", "dbf", "xls", "xlsx", "xlsm", "ods"};
/// Formats of tables without places.
constexpr std::string_view kTableFormats[] = {"CSV", "XLS", "XLSX", "ODS"};
/// Formats whose files are entered like folders.
constexpr std::string_view kContainers[] = {"netCDF", "HDF5", "HDF4", "GPKG", "SQLite"};
/// The nodes of a file of the first format open with the second.
constexpr std::pair<std::string_view, std::string_view> kNodeFormats[] = {{"HDF5", "HDF5Image"}, {"HDF4", "HDF4Image"}};

template <class Range, class Value>
bool Contains(Range const &range, Value const &value) {
    return std::find(std::begin(range), std::end(range), value) != std::end(range);
}

DString Metadata(GDALDriverH driver, char const *key) {
    char const *value = GDALGetMetadataItem(driver, key, nullptr);
    return value == nullptr ? DString() : DString(value);
}

/// The key of an extension in our tables, which hold them in lower case.
DString LowerCase(std::string_view text) {
    DString lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

DString Masks(DString const &id, DString extensions) {
    for (auto const &[format, more] : kMoreExtensions)
        if (format == id)
            extensions += " " + DString(more);
    DString masks;
    for (DString const &extension : Split(extensions, ' '))
        if (!extension.empty())
            masks += (masks.empty() ? "*." : ";*.") + extension;
    return masks;
}

/// What GDAL says that a format can do. Layers of vectors are tables as well.
FormatFacts UsesOf(GDALDriverH driver, Format const &format) {
    bool const creates = Metadata(driver, GDAL_DCAP_CREATE) == "YES";
    bool const copies = Metadata(driver, GDAL_DCAP_CREATECOPY) == "YES";
    std::uint32_t const layers = Contains(kTableFormats, format.id) ? BDINode_Table : BDINode_Thematic | BDINode_Table;
    std::uint32_t const pictureUse = format.raster ? BDINode_Raster : 0U;
    std::uint32_t const layerUse = format.vector ? layers : 0U;
    FormatFacts facts{.id = format.id, .name = format.name, .extensions = format.extensions};
    if (Metadata(driver, GDAL_DCAP_OPEN) == "YES")
        facts.reads = pictureUse | layerUse;
    if (!IsVirtual(format)) // there is nothing in it
        facts.writes = (creates || copies ? pictureUse : 0U) | (creates ? layerUse : 0U);
    return facts;
}

} // namespace

namespace {

/// The drivers that were taken from GDAL; filled once, before any is asked for.
std::vector<GDALDriverH> &TakenOut() {
    static std::vector<GDALDriverH> taken;
    return taken;
}

} // namespace

void DeregisterServices() {
    for (Barred const &barred : kBarred)
        if (GDALDriverH const driver = GDALGetDriverByName(DString(barred.id).c_str());
            driver != nullptr && barred.reachesOut && !IsServedHere(barred)) {
            GDALDeregisterDriver(driver);
            TakenOut().push_back(driver);
        }
}

KnownServices::KnownServices() { std::ranges::for_each(TakenOut(), &GDALRegisterDriver); }
KnownServices::~KnownServices() { std::ranges::for_each(TakenOut(), &GDALDeregisterDriver); }

Formats const &Formats::Instance() {
    static Formats const formats;
    return formats;
}

Formats::Formats() {
    StartGdal();
    for (int i = 0; i < GDALGetDriverCount(); ++i) {
        GDALDriverH driver = GDALGetDriver(i);
        Format format;
        format.id = GDALGetDriverShortName(driver);
        format.name = GDALGetDriverLongName(driver);
        format.raster = Metadata(driver, GDAL_DCAP_RASTER) == "YES";
        format.vector = Metadata(driver, GDAL_DCAP_VECTOR) == "YES";
        format.subdatasets = Metadata(driver, GDAL_DMD_SUBDATASETS) == "YES";
        Barred const *const barred = FindBarred(format.id);
        if ((!format.raster && !format.vector) || (barred != nullptr && !IsServedHere(*barred)))
            continue;
        format.isService = barred != nullptr;
        format.extensions = Masks(format.id, Metadata(driver, GDAL_DMD_EXTENSIONS));
        if (FormatFacts uses = UsesOf(driver, format); uses.reads != 0 || uses.writes != 0)
            m_uses.push_back(std::move(uses));
        if (Metadata(driver, GDAL_DCAP_OPEN) != "YES")
            continue;
        for (DriverOption const &option : OpenOptionsOf(format.id))
            if (!option.isBarred)
                format.openOptions.insert(option.name);
        for (DString const &mask : Split(format.extensions, ';')) {
            DString const extension = LowerCase(ExtensionOf(mask));
            if (extension.empty() || Contains(kAmbiguous, extension))
                continue;
            std::uint32_t &type = m_types[extension];
            // A format that also draws vectors (a portable document) is taken for a picture.
            type |= Contains(kTables, extension) ? BDINode_Table : format.raster ? BDINode_Raster : BDINode_Thematic;
            type |= Contains(kContainers, format.id) ? BDINode_Container : 0U;
        }
        m_formats.push_back(std::move(format));
    }
    m_types["zip"] = BDINode_Container;
}

Format const *Formats::Find(std::string_view id) const {
    auto const at = std::find_if(m_formats.begin(), m_formats.end(),
                                 [&](Format const &format) { return EqualNoCase(format.id, id); });
    return at == m_formats.end() ? nullptr : &*at;
}

std::uint32_t Formats::TypeOf(std::string_view fileName) const {
    auto const at = m_types.find(LowerCase(ExtensionOf(fileName)));
    return at == m_types.end() ? 0 : at->second;
}

std::vector<char const *> Formats::AllowedNames(Format const *only) const {
    std::vector<char const *> names;
    names.reserve(m_formats.size() + 1);
    for (Format const &format : m_formats) {
        bool const wanted = only == nullptr || &format == only ||
                            Contains(kNodeFormats, std::pair<std::string_view, std::string_view>(only->id, format.id));
        if (wanted)
            names.push_back(format.id.c_str());
    }
    names.push_back(nullptr);
    return names;
}

} // namespace zelvar::gdal
