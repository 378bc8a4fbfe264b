#include "zelvar/data/gdal/OpenOptions.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIMoniker.h"

#include <algorithm>
#include <span>

#include <sys/stat.h>

namespace zelvar::gdal {

namespace {

/// They run statements, open what a table names, lead elsewhere, or write.
constexpr std::string_view kBarredOptions[] = {"PRELUDE_STATEMENTS", "CLOSING_STATEMENTS",  "LIST_VIRTUAL_OGR",
                                               "ROOT_PATH",          "CACHE_TILE_PRESENCE", "OPEN_REMOTE_GML",
                                               "WRITE_GFS",          "DOWNLOAD_SCHEMA",     "IMMUTABLE",
                                               "REFRESH_CACHE",      "CACHE_PATH"};

/// Their values are names of files.
constexpr std::string_view kFileOptions[] = {"XSD",         "GFS_TEMPLATE",     "REGISTRY",      "MODEL",
                                             "CONFIG_FILE", "SXF_RSC_FILENAME", "METADATA_FILE", "XML_TEMPLATE",
                                             "AUTOLOAD",    "FILENAME"};

/// What holds for every file of a format.
struct Fixed {
    std::string_view format;
    char const *option;
};
constexpr Fixed kFixed[] = {
    {"GPKG", "IMMUTABLE=YES"}, // no -wal, no -shm
    {"GML", "WRITE_GFS=NO"},
    {"GML", "DOWNLOAD_SCHEMA=NO"},
};

bool IsIn(std::string_view name, std::span<std::string_view const> names) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view known) { return EqualNoCase(known, name); });
}

bool IsKnown(Format const &format, DString const &name) {
    // GDAL itself takes this one for every format.
    return EqualNoCase(name, "OVERVIEW_LEVEL") ||
           std::any_of(format.openOptions.begin(), format.openOptions.end(),
                       [&](DString const &known) { return EqualNoCase(known, name); });
}

/// Why the value would lead to another place; empty if it does not.
DString ReasonAgainst(Source const &source, DString const &name, DString const &value) {
    // Whatever a driver takes for a place is opened by it: texts of such forms are none of any other option.
    bool const isAddress = value.find("://") != DString::npos || value.find("/vsi") != DString::npos;
    if (isAddress || value.find('\0') != DString::npos)
        return "the option " + name + " of \"" + source.text + "\" is an address";
    bool const namesFile = IsIn(name, kFileOptions);
    struct stat info {};
    bool const isThere = stat(value.c_str(), &info) == 0;
    if (namesFile && source.reach == Reach::Network)
        return "the option " + name + " of \"" + source.text + "\" would lead from an address to a file";
    if (namesFile ? !isThere || !S_ISREG(info.st_mode) : isThere && value.starts_with('/') && !S_ISREG(info.st_mode))
        return "the option " + name + " of \"" + source.text + "\" names no plain file";
    return {};
}

} // namespace

bool IsBarredOption(std::string_view name) { return IsIn(name, kBarredOptions); }

std::vector<DString> OpenOptionsFor(Source const &source, Format const &format, DString &fault) {
    std::vector<DString> options;
    for (auto const &[name, written] : source.options) {
        if (!IsKnown(format, name)) {
            Report::TraceMessage(Report::kTraceDriver, "%s takes no option \"%s\"", format.id.c_str(), name.c_str());
            continue;
        }
        DString const value = PercentDecoded(written);
        if (value.empty())
            continue;
        fault = ReasonAgainst(source, name, value);
        if (!fault.empty())
            return {};
        options.push_back(DString(name).append("=").append(value));
    }
    for (Fixed const &fixed : kFixed)
        if (fixed.format == format.id)
            options.emplace_back(fixed.option);
    return options;
}

} // namespace zelvar::gdal
