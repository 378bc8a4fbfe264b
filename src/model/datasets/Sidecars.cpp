#include "zelvar/model/datasets/Sidecars.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/model/datasets/HashedPlaces.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

namespace zelvar {

namespace {

using Names = std::span<std::string_view const>;
using Place = std::uint32_t;

/// How the name of a file comes from that of its master.
struct Rule {
    std::string_view ending;  ///< lower-case
    bool isAppended;          ///< to the master's whole name; else in place of the master's extension
    std::string_view masters; ///< their extensions, lower-case, between blanks, the likeliest first; empty for any
};

/// Pictures that may be placed on a map by a file beside them, "" for a name without an extension.
constexpr std::string_view kPictures =
    " tif tiff jpg jpeg png gif bmp jp2 j2k ecw sid img bil bip bsq pix rst asc flt webp pgm ppm vrt ";

constexpr std::array kRules{
    // What GDAL writes beside any image, and finds there.
    Rule{".ovr", true, ""},
    Rule{".aux.xml", true, ""},
    Rule{".msk", true, ""},
    Rule{".aux", false, " img tif tiff jpg jpeg png bmp gif jp2 bil bip bsq "},
    Rule{".rrd", false, " img tif tiff "},
    Rule{".rde", false, " img "},
    Rule{".ige", false, " img "},
    Rule{".xml", true, " shp dbf tif tiff img jpg jpeg png jp2 gdb csv las "},
    // Where a picture lies.
    Rule{".wld", false, kPictures},
    Rule{".prj", false, " shp tif tiff jpg jpeg png gif bmp jp2 ecw sid img bil bip bsq asc flt sdat csv "},
    Rule{".qpj", false, " shp tif tiff asc "},
    Rule{".rpb", false, " tif tiff ntf nitf img "},
    Rule{".imd", false, " tif tiff ntf nitf "},
    Rule{"_rpc.txt", false, " tif tiff "},
    // Headers of raw images.
    Rule{".hdr", false, " bil bip bsq flt img dat raw bin dem nii dt0 dt1 dt2 . "},
    Rule{".hdr", true, " bil bip bsq flt img dat raw bin "},
    Rule{".stx", false, " bil bip bsq flt dem "},
    Rule{".clr", false, " bil bip bsq "},
    Rule{".blw", false, " bil "},
    Rule{".sgrd", false, " sdat "},
    Rule{".mgrd", false, " sdat "},
    Rule{".rdc", false, " rst "},
    Rule{".smp", false, " rst "},
    Rule{"", false, " ers "},
    Rule{".idx", false, " mrf "},
    Rule{".idx", true, " grb grb2 grib grib2 "},
    // Parts of tables.
    Rule{".shx", false, " shp "},
    Rule{".dbf", false, " shp "},
    Rule{".cpg", false, " shp dbf "},
    Rule{".sbn", false, " shp "},
    Rule{".sbx", false, " shp "},
    Rule{".qix", false, " shp "},
    Rule{".ain", false, " shp "},
    Rule{".aih", false, " shp "},
    Rule{".atx", false, " shp "},
    Rule{".idm", false, " shp dbf "},
    Rule{".qmd", false, " shp tif tiff gpkg "},
    Rule{".ind", false, " tab shp dbf "},
    Rule{".dat", false, " tab "},
    Rule{".map", false, " tab "},
    Rule{".id", false, " tab "},
    Rule{".mid", false, " mif "},
    Rule{".gfs", false, " gml xml "},
    Rule{".xsd", false, " gml "},
    Rule{".csvt", false, " csv "},
    Rule{"-wal", true, " gpkg sqlite sqlite3 db mbtiles "},
    Rule{"-shm", true, " gpkg sqlite sqlite3 db mbtiles "},
    Rule{"-journal", true, " gpkg sqlite sqlite3 db mbtiles "},
};

DString Lower(std::string_view text) {
    DString lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/// The name up to the dot of its extension.
std::string_view StemOf(std::string_view name) {
    std::string_view const extension = ExtensionOf(name);
    return extension.empty() ? name : name.substr(0, name.size() - extension.size() - 1);
}

bool EndsWith(std::string_view name, std::string_view ending) {
    return name.size() > ending.size() && EqualNoCase(name.substr(name.size() - ending.size()), ending);
}

/// What an ending is looked up by: its last part, from the dot or the dash on.
std::string_view LastPart(std::string_view ending) {
    for (std::size_t at = ending.size(); at-- > 0;) // found after few steps in most names, unlike by a search for a set
        if (ending[at] == '.' || ending[at] == '-')
            return ending.substr(at);
    return {};
}

std::unordered_multimap<std::string_view, Rule const *> const &RulesByLastPart() {
    static auto const *const rules = [] {
        auto *const all = new std::unordered_multimap<std::string_view, Rule const *>;
        for (Rule const &rule : kRules)
            all->emplace(LastPart(rule.ending), &rule);
        return all;
    }();
    return *rules;
}

/// "tfw" or "tifw" for "tif".
bool IsWorldFileOf(std::string_view extension, std::string_view master) {
    return master.size() >= 2 &&
           (extension == DString(master) + "w" || extension == DString{master.front(), master.back(), 'w'});
}
bool MayBeWorldFile(std::string_view lastPart) {
    return lastPart.size() >= 4 && lastPart.size() <= 6 && (lastPart.back() == 'w' || lastPart.back() == 'W');
}

/// Where an extension stands in a list of them: the nearer to its front the better; nothing if it does not.
std::optional<std::size_t> RankIn(std::string_view list, std::string_view extension) {
    if (list.empty())
        return 0;
    std::size_t const at = list.find(" " + (extension.empty() ? DString(".") : Lower(extension)) + " ");
    return at == std::string_view::npos ? std::nullopt : std::optional(at);
}

/// The files of a folder by what stands before their extension.
class ByStem {
public:
    explicit ByStem(Names names) : m_names(names), m_last(names.size()), m_next(names.size(), HashedPlaces::kNone) {
        for (Place i = 0; i < names.size(); ++i) {
            std::string_view const stem = StemOf(names[i]);
            Place &last = m_last.At(HashOf(stem), [&](Place place) { return StemOf(m_names[place]) == stem; });
            m_next[i] = std::exchange(last, i);
        }
    }
    template <class Visit>
    void ForEach(std::string_view stem, Visit const &visit) const {
        Place const last = m_last.Find(HashOf(stem), [&](Place place) { return StemOf(m_names[place]) == stem; });
        for (Place i = last; i != HashedPlaces::kNone; i = m_next[i])
            visit(i);
    }

private:
    static std::uint64_t HashOf(std::string_view stem) { return std::hash<std::string_view>()(stem); }

    Names m_names;
    HashedPlaces m_last;
    std::vector<Place> m_next;
};

/// The file that the one at `place` belongs to, or `place`.
Place FindMaster(Names names, Place place, ByStem const &byStem) {
    std::string_view const name = names[place];
    Place master = place;
    std::size_t bestRank = ~std::size_t{0};
    auto const offer = [&](Place other, std::optional<std::size_t> rank) {
        if (other != place && rank && *rank < bestRank)
            master = other, bestRank = *rank;
    };
    DString const last = Lower(LastPart(name));
    auto const [begin, end] = RulesByLastPart().equal_range(last);
    for (auto at = begin; at != end; ++at) {
        Rule const &rule = *at->second;
        if (!EndsWith(name, rule.ending))
            continue;
        std::string_view const before = name.substr(0, name.size() - rule.ending.size());
        byStem.ForEach(rule.isAppended ? StemOf(before) : before, [&](Place other) {
            if (!rule.isAppended || names[other] == before)
                offer(other, RankIn(rule.masters, ExtensionOf(names[other])));
        });
    }
    if (MayBeWorldFile(last))
        byStem.ForEach(StemOf(name), [&](Place other) {
            DString const extension = Lower(ExtensionOf(names[other]));
            if (IsWorldFileOf(last.substr(1), extension))
                offer(other, RankIn(kPictures, extension));
        });
    return master;
}

} // namespace

bool MayBeSidecar(std::string_view name) {
    std::string_view const last = LastPart(name);
    if (MayBeWorldFile(last))
        return true;
    // Nearly all names of a folder come here: no memory is taken for them.
    std::array<char, 10> lower{};
    if (last.size() > lower.size())
        return false;
    std::transform(last.begin(), last.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return RulesByLastPart().contains(std::string_view(lower.data(), last.size()));
}

std::vector<Place> FindMasters(Names names) {
    std::vector<Place> masters(names.size());
    std::iota(masters.begin(), masters.end(), Place{0});
    std::vector<Place> beside;
    for (Place i = 0; i < names.size(); ++i)
        if (MayBeSidecar(names[i]))
            beside.push_back(i);
    if (beside.empty())
        return masters;
    ByStem const byStem(names);
    for (Place const place : beside)
        masters[place] = FindMaster(names, place, byStem);
    // A master's own master: names get shorter on the way or end in a file that stands alone, so the way ends.
    constexpr int kMostSteps = 4; // two files that belonged to each other would go round
    for (Place &master : masters)
        for (int step = 0; step < kMostSteps && masters[master] != master; ++step)
            master = masters[master];
    return masters;
}

} // namespace zelvar
