#include "zelvar/data/gdal/VirtualText.h"

#include <cpl_minixml.h>

#include <algorithm>
#include <memory>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kDeepest = 64; // elements in elements
constexpr std::size_t kMostNames = 1'000'000;

bool IsAnyOf(std::string_view text, std::initializer_list<std::string_view> names) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view name) { return EqualNoCase(text, name); });
}

bool IsSchemeByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-';
}

/// What an element is for.
enum class Purpose { Other, Name, OpenOption, Statement, Words };

/// `parent` is the purpose of the element around it: what lies in words is words.
Purpose PurposeOf(std::string_view element, std::string_view key, Purpose parent) {
    if (IsAnyOf(element, {"SourceFilename", "SourceDataset", "SrcDataSource", "DEMPath", "DestinationDataset"}))
        return Purpose::Name;
    if (EqualNoCase(element, "OOI"))
        return Purpose::OpenOption;
    if (EqualNoCase(element, "SrcSQL"))
        return Purpose::Statement;
    // Where the places of pixels are told by other files.
    if (EqualNoCase(element, "MDI") && IsAnyOf(key, {"X_DATASET", "Y_DATASET", "RPC_DEM"}))
        return Purpose::Name;
    bool const isWords =
        IsAnyOf(element, {"Metadata", "Description", "GCPList", "CategoryNames", "GDALRasterAttributeTable"}) ||
        element.ends_with("SRS") || element.ends_with("srs");
    return isWords || parent == Purpose::Words ? Purpose::Words : Purpose::Other;
}

/// Options that run statements, write, or have paths mean something else.
bool IsBarredOption(std::string_view key) {
    return IsAnyOf(key, {"PRELUDE_STATEMENTS", "LIST_VIRTUAL_OGR", "ROOT_PATH", "WRITE_GFS", "DOWNLOAD_SCHEMA",
                         "CACHE_TILE_PRESENCE"});
}

/// Sources that a statement names: 'a.shp'.layer.
void AddSourcesOf(DString const &statement, std::vector<DString> &names) {
    for (std::size_t at = statement.find_first_of("'\""); at != DString::npos;) {
        std::size_t const end = statement.find(statement[at], at + 1);
        if (end == DString::npos)
            return;
        std::size_t const behind = statement.find_first_not_of(" \t\r\n", end + 1);
        if (behind != DString::npos && statement[behind] == '.')
            names.push_back(statement.substr(at + 1, end - at - 1));
        at = statement.find_first_of("'\"", end + 1);
    }
}

/// Functions of statements that open what a text names, or ask a service.
bool CallsOut(DString const &statement) {
    DString const folded = FoldCase(statement);
    constexpr char const *kNames[] = {"ogr_", "virtual", "load_extension", "attach"};
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [&](char const *name) { return folded.find(FoldCase(name)) != DString::npos; });
}

class Reading {
public:
    explicit Reading(VirtualText &result) : m_result(result) {}

    /// Goes over the element and all behind and below it.
    void Visit(CPLXMLNode const *first) {
        struct Place {
            CPLXMLNode const *node;
            Purpose purpose; ///< of the element that it lies in
            std::string_view element;
            std::string_view key;
        };
        std::vector<Place> open{{first, Purpose::Other, {}, {}}};
        while (!open.empty() && m_result.fault.empty()) {
            Place &place = open.back();
            CPLXMLNode const *const node = place.node;
            if (node == nullptr) {
                open.pop_back();
                continue;
            }
            place.node = node->psNext;
            std::string_view const text = node->pszValue == nullptr ? "" : node->pszValue;
            if (node->eType == CXT_Element) {
                std::string_view const key = CPLGetXMLValue(node, "key", "");
                if (open.size() >= kDeepest)
                    m_result.fault = "holds elements in elements without end";
                open.push_back({node->psChild, PurposeOf(text, key, place.purpose), text, key});
            } else if (node->eType == CXT_Text) {
                Take(place.purpose, place.element, place.key, DString(text));
            } else if (node->eType == CXT_Attribute && node->psChild != nullptr && place.purpose != Purpose::Words &&
                       node->psChild->pszValue != nullptr && HoldsAddress(node->psChild->pszValue)) {
                Refuse(node->psChild->pszValue);
            }
        }
    }

private:
    void Refuse(DString const &address) {
        m_result.fault = "refers to the address \"" + address + "\": a local file never uses the network";
    }
    void Take(Purpose purpose, std::string_view element, std::string_view key, DString const &text) {
        if (purpose == Purpose::Words)
            return;
        if (HoldsAddress(text)) {
            Refuse(text);
        } else if (purpose == Purpose::Name) {
            m_result.names.push_back(text);
        } else if (purpose == Purpose::OpenOption && IsBarredOption(key)) {
            m_result.fault = "sets the option " + DString(key) + ", which is not allowed inside a file";
        } else if (purpose == Purpose::Statement) {
            if (CallsOut(text))
                m_result.fault = "holds a statement that opens other sources";
            AddSourcesOf(text, m_result.names);
        } else if (EqualNoCase(element, "PixelFunctionCode") ||
                   (EqualNoCase(element, "PixelFunctionLanguage") && !EqualNoCase(text, "C"))) {
            m_result.fault = "holds a program for its pixels, which is not run";
        }
        if (m_result.names.size() > kMostNames)
            m_result.fault = "refers to too many files";
    }

    VirtualText &m_result;
};

/// "<!DOCTYPE", "<!ENTITY": comments and raw text alone begin like them.
bool HoldsDeclaration(std::string_view text) {
    for (std::size_t at = text.find("<!"); at != std::string_view::npos; at = text.find("<!", at + 2)) {
        std::string_view const rest = text.substr(at);
        if (!rest.starts_with("<!--") && !rest.starts_with("<![CDATA["))
            return true;
    }
    return false;
}

} // namespace

bool HoldsAddress(std::string_view text) {
    for (std::size_t at = text.find("://"); at != std::string_view::npos; at = text.find("://", at + 1)) {
        std::size_t begin = at;
        while (begin > 0 && IsSchemeByte(text[begin - 1]))
            --begin;
        // A name with an extension is a file's: HDF5:a.h5://group.
        bool const isFile = begin > 0 && text[begin - 1] == '.';
        if (begin < at && !isFile)
            return true;
    }
    static constexpr std::string_view kNetwork[] = {"/vsicurl", "/vsis3",    "/vsigs",   "/vsiaz",      "/vsiadls",
                                                    "/vsioss",  "/vsiswift", "/vsihdfs", "/vsiwebhdfs", "/vsismb"};
    return std::any_of(std::begin(kNetwork), std::end(kNetwork),
                       [&](std::string_view prefix) { return text.find(prefix) != std::string_view::npos; });
}

VirtualText ReadVirtualText(DString const &text) {
    VirtualText result;
    if (text.find('\0') != DString::npos || HoldsDeclaration(text)) {
        result.fault = "declares entities or holds zero bytes";
        return result;
    }
    struct Destroy {
        void operator()(CPLXMLNode *node) const { CPLDestroyXMLNode(node); }
    };
    std::unique_ptr<CPLXMLNode, Destroy> const document(CPLParseXMLString(text.c_str()));
    if (document == nullptr)
        result.fault = "is no whole document";
    else
        Reading(result).Visit(document.get());
    return result;
}

} // namespace zelvar::gdal
