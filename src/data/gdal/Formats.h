#pragma once

#include "zelvar/data/FormatPlugin.h"

#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

namespace zelvar::gdal {

/// What we know of one of GDAL's formats.
struct Format {
    DString id;         ///< GDAL's short name
    DString name;       ///< GDAL's long name
    DString extensions; ///< "*.tif;*.tiff"
    bool raster = false;
    bool vector = false;
    bool subdatasets = false;      ///< a file may hold several
    bool isService = false;        ///< names a server, and is opened by readers of its kind alone
    std::set<DString> openOptions; ///< those that are taken
};

/// In a reader: takes the formats that reach out from GDAL, but for those of the kind of connection that it serves.
/// What a file leads to is opened by any format that is registered, whatever was allowed for the file itself.
void DeregisterServices();

/// Puts those formats back while it lives, so that GDAL knows a file of theirs: to be told of, never opened.
class KnownServices {
public:
    KnownServices();
    ~KnownServices();
    KnownServices(KnownServices const &) = delete;
    KnownServices &operator=(KnownServices const &) = delete;
};

/// The formats that data may be opened with: all of GDAL's but those that reach out by what a file or name says
/// (services, databases; readers of a connection have those of its kind), run programs, or write beside the user's
/// files. Virtual files over other sources are read
/// before GDAL gets them, see `VirtualData.h`.
class Formats {
public:
    static Formats const &Instance();

    [[nodiscard]] std::vector<Format> const &All() const { return m_formats; }
    [[nodiscard]] Format const *Find(std::string_view id) const;
    /// What each format can be used for: those of `All` and others that are files and only written.
    [[nodiscard]] std::vector<FormatFacts> const &Uses() const { return m_uses; }
    /// `BDINodeType` bits of a file of that name, told by its extension alone; 0 for what is no data.
    [[nodiscard]] std::uint32_t TypeOf(std::string_view fileName) const;
    /// Names of the allowed formats in GDAL's order, ended by null, as GDAL takes them. With a format only its own, and
    /// those of the formats that its nodes open with.
    [[nodiscard]] std::vector<char const *> AllowedNames(Format const *only) const;

    Formats(Formats const &) = delete;
    Formats &operator=(Formats const &) = delete;

private:
    Formats();
    std::vector<Format> m_formats;
    std::vector<FormatFacts> m_uses;
    std::unordered_map<DString, std::uint32_t> m_types; ///< by extension, lower case
};

} // namespace zelvar::gdal
