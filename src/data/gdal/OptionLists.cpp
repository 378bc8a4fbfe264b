#include "zelvar/data/gdal/OptionLists.h"

#include "zelvar/data/gdal/GdalScope.h"
#include "zelvar/data/gdal/OpenOptions.h"

#include <cpl_minixml.h>
#include <gdal.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <set>
#include <utility>

namespace zelvar::gdal {

namespace {

using Kind = DriverOption::Kind;

constexpr std::size_t kMostOptions = 1000;
constexpr std::size_t kMostChoices = 1000;
constexpr std::size_t kLongestName = 128;
constexpr std::size_t kLongestValue = 1024;
constexpr std::size_t kLongestDescription = 4096;
constexpr std::size_t kLongestList = std::size_t{1} << 20U;

struct DestroyXml {
    void operator()(CPLXMLNode *node) const { CPLDestroyXMLNode(node); }
};

/// Kinds by GDAL's names of types; "string-select" is one of its own.
constexpr std::pair<std::string_view, Kind> kTypes[] = {
    {"boolean", Kind::Switch},      {"int", Kind::WholeNumber},
    {"integer", Kind::WholeNumber}, {"unsigned int", Kind::WholeNumber},
    {"float", Kind::Number},        {"double", Kind::Number},
    {"string", Kind::Text},         {"string-select", Kind::Choice},
};

DString Cut(std::string_view text, std::size_t longest) { return ToValidUtf8(text.substr(0, longest)); }

DString Attribute(CPLXMLNode const *option, char const *name, std::size_t longest = kLongestValue) {
    char const *const value = CPLGetXMLValue(option, name, nullptr);
    return value == nullptr ? DString() : Cut(Trimmed(value), longest);
}

std::optional<double> NumberIn(DString const &text) {
    double number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isNumber = error == std::errc() && end == text.data() + text.size() && !std::isnan(number);
    return isNumber && !text.empty() ? std::optional(number) : std::nullopt;
}

/// One that can stand in a moniker.
bool IsName(std::string_view name) {
    return !name.empty() && name.size() <= kLongestName && std::all_of(name.begin(), name.end(), [](char c) {
        return c > ' ' && c <= '~' && std::string_view("=&?#%").find(c) == DString::npos;
    });
}

bool NamesASecret(std::string_view name) {
    return name.find("PWD") != DString::npos || name.find("PASSWORD") != DString::npos ||
           name.find("API_KEY") != DString::npos || name.find("TOKEN") != DString::npos;
}

std::vector<DString> ChoicesOf(CPLXMLNode const *option) {
    std::vector<DString> choices;
    for (CPLXMLNode const *child = option->psChild; child != nullptr && choices.size() < kMostChoices;
         child = child->psNext)
        if (child->eType == CXT_Element && EqualNoCase(child->pszValue, "Value")) {
            DString choice = Attribute(child, "");
            if (!choice.empty() && std::find(choices.begin(), choices.end(), choice) == choices.end())
                choices.push_back(std::move(choice));
        }
    return choices;
}

DriverOption OptionFrom(CPLXMLNode const *node) {
    DriverOption option;
    option.name = Attribute(node, "name", kLongestName + 1);
    option.usual = Attribute(node, "default");
    option.description = Attribute(node, "description", kLongestDescription);
    DString const type = Attribute(node, "type");
    for (auto const &[name, kind] : kTypes)
        if (EqualNoCase(type, name))
            option.kind = kind;
    option.choices = ChoicesOf(node);
    if (option.kind == Kind::Choice ? option.choices.empty() : !option.choices.empty())
        option.kind = option.choices.empty() ? Kind::Text : Kind::Choice;
    if (option.kind == Kind::WholeNumber || option.kind == Kind::Number) {
        option.least = NumberIn(Attribute(node, "min"));
        option.most = NumberIn(Attribute(node, "max"));
        if (EqualNoCase(type, "unsigned int") && !option.least)
            option.least = 0;
        // A usual value that is none of its numbers shows that the range is not meant so.
        auto const usual = NumberIn(option.usual);
        bool const isEmpty = option.least && option.most && *option.least > *option.most;
        bool const isBeside =
            (usual && option.least && *usual < *option.least) || (usual && option.most && *usual > *option.most);
        if (isEmpty || isBeside)
            option.least = option.most = std::nullopt;
        if (!option.usual.empty() && !usual)
            option.kind = Kind::Text;
    }
    int longest = 0;
    DString const told = Attribute(node, "maxsize");
    std::from_chars(told.data(), told.data() + told.size(), longest);
    option.longest = std::max(longest, 0);
    DString const scope = Attribute(node, "scope");
    option.forRasters = scope.empty() || scope.find("raster") != DString::npos;
    option.forLayers = scope.empty() || scope.find("vector") != DString::npos;
    option.isBarred = option.name.find('*') != DString::npos; // stands for many names
    option.isSecret = NamesASecret(option.name);
    return option;
}

/// The names in `<Option ... name='...' ...>`, wherever they stand.
std::vector<DriverOption> NamesIn(DString const &text) {
    std::vector<DriverOption> options;
    for (std::size_t at = text.find("<Option"); at != DString::npos; at = text.find("<Option", at + 1)) {
        std::size_t const end = std::min(text.find_first_of("<>", at + 1), text.size());
        std::size_t const name = text.find("name=", at);
        if (name >= end || name + 6 >= text.size())
            continue;
        DriverOption option;
        option.name = text.substr(name + 6, text.find(text[name + 5], name + 6) - name - 6);
        options.push_back(std::move(option));
    }
    return options;
}

DString ListOf(DString const &formatId, char const *key) {
    GDALDriverH driver = GDALGetDriverByName(formatId.c_str());
    char const *const xml = driver == nullptr ? nullptr : GDALGetMetadataItem(driver, key, nullptr);
    return xml == nullptr ? DString() : DString(xml);
}

/// Comma-separated values are read as tables by a reader of our own: what it takes besides.
std::vector<DriverOption> OwnOptionsOf(DString const &formatId) {
    if (formatId != "CSV")
        return {};
    return {{.name = "SEPARATOR",
             .kind = Kind::Choice,
             .usual = "AUTO",
             .description = "What stands between the cells of a row",
             .choices = {"AUTO", "COMMA", "SEMICOLON", "TAB", "PIPE", "SPACE"},
             .forRasters = false},
            {.name = "ENCODING",
             .description = "What the texts are written in, as UTF-8, ISO-8859-1 or UTF-16; without it they tell",
             .forRasters = false}};
}

} // namespace

std::vector<DriverOption> ParseOptionList(DString const &xml) {
    if (Trimmed(xml).empty() || xml.size() > kLongestList)
        return {};
    GdalScope const scope(Reach::Local); // takes the parser's complaints
    std::unique_ptr<CPLXMLNode, DestroyXml> const list(CPLParseXMLString(xml.c_str()));
    std::vector<DriverOption> found;
    if (list == nullptr)
        found = NamesIn(xml);
    else
        for (CPLXMLNode const *node = list->psChild; node != nullptr; node = node->psNext)
            if (node->eType == CXT_Element && EqualNoCase(node->pszValue, "Option"))
                found.push_back(OptionFrom(node));
    std::vector<DriverOption> options;
    std::set<DString> names;
    for (DriverOption &option : found)
        if (options.size() < kMostOptions && IsName(option.name) && names.insert(FoldCase(option.name)).second)
            options.push_back(std::move(option));
    return options;
}

std::vector<DriverOption> OpenOptionsOf(DString const &formatId) {
    std::vector<DriverOption> options = ParseOptionList(ListOf(formatId, GDAL_DMD_OPENOPTIONLIST));
    for (DriverOption &own : OwnOptionsOf(formatId))
        if (std::none_of(options.begin(), options.end(),
                         [&](DriverOption const &option) { return option.name == own.name; }))
            options.push_back(std::move(own));
    for (DriverOption &option : options)
        option.isBarred = option.isBarred || IsBarredOption(option.name);
    return options;
}

std::vector<DriverOption> CreationOptionsOf(DString const &formatId) {
    return ParseOptionList(ListOf(formatId, GDAL_DMD_CREATIONOPTIONLIST));
}

} // namespace zelvar::gdal
