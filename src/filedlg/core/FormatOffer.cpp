#include "zelvar/filedlg/core/FormatOffer.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

namespace {

/// Id of the format that a raster is saved in unless another one is wanted.
constexpr std::string_view kPlainTiff = "GTiff";

/// Extension of formats that stand ahead of all others when loading and are not offered otherwise.
constexpr std::string_view kRasterFormats = "RSTR_FRMT";

template <class Formats, class Wanted>
DFileFrmt *First(Formats const &formats, Wanted const &wanted) {
    auto const at = std::find_if(formats.begin(), formats.end(),
                                 [&wanted](DFileFrmt const *format) { return format != nullptr && wanted(*format); });
    return at == formats.end() ? nullptr : *at;
}

} // namespace

bool HasMask(DFileFrmt const &format, DString const &mask) {
    std::vector<DString> const masks = Split(format.GetExtn(), ';');
    return std::find(masks.begin(), masks.end(), mask) != masks.end();
}

void FormatOffer::Add(DFileFrmt *format, bool sorted) {
    auto at = m_formats.end();
    if (sorted && format != nullptr)
        at = std::find_if(m_formats.begin(), m_formats.end(), [format](DFileFrmt const *other) {
            return other != nullptr && other->GetName() > format->GetName();
        });
    m_formats.insert(at, format);
}

void FormatOffer::Remove(DFileFrmt const *format) {
    if (auto const at = std::find(m_formats.begin(), m_formats.end(), format); at != m_formats.end())
        m_formats.erase(at);
}

void FormatOffer::RemoveId(std::string_view id) {
    if (DFileFrmt const *const format = ById(id); format != nullptr)
        Remove(format);
}

void FormatOffer::TakeOver(DList<DFileFrmt *> const &made, bool loads) {
    for (DFileFrmt *format : made)
        if (format != nullptr)
            m_named.emplace_back(format);
    auto const others = std::stable_partition(m_named.begin(), m_named.end(),
                                              [](auto const &format) { return format->GetExtn() == kRasterFormats; });
    if (loads)
        std::for_each(m_named.begin(), others, [this](auto const &format) { Add(format.get(), false); });
    std::move(m_named.begin(), others, std::back_inserter(m_ahead));
    m_named.erase(m_named.begin(), others);
    for (auto const &format : m_named)
        Add(format.get(), true);
}

void FormatOffer::Clear() {
    m_formats.clear();
    m_named.clear();
    m_ahead.clear();
}

bool FormatOffer::Owns(DFileFrmt const *format) const {
    auto const isIt = [format](auto const &owned) { return owned.get() == format; };
    return std::any_of(m_named.begin(), m_named.end(), isIt) || std::any_of(m_ahead.begin(), m_ahead.end(), isIt);
}

std::vector<DFileFrmt *> FormatOffer::Offered() const {
    std::vector<DFileFrmt *> offered = m_formats;
    std::erase(offered, nullptr);
    return offered;
}

DFileFrmt *FormatOffer::ById(std::string_view id) const {
    return First(m_formats, [id](DFileFrmt const &format) { return format.GetID() == id; });
}

DFileFrmt *FormatOffer::ByName(std::string_view name) const {
    return First(m_formats, [name](DFileFrmt const &format) { return format.GetName() == name; });
}

DFileFrmt *FormatOffer::ByExtension(std::string_view masks) const {
    return First(m_formats, [masks](DFileFrmt const &format) { return format.GetExtn() == masks; });
}

DFileFrmt *FormatOffer::Usual(bool saves, DString const &mask, DFileFrmt &all, DString const &tiff) const {
    DFileFrmt *const plain =
        First(m_formats, [](DFileFrmt const &format) { return EqualNoCase(format.GetID(), kPlainTiff); });
    if (saves && (mask.empty() || mask == tiff) && plain != nullptr)
        return plain; // variants of it have the same mask
    if (ByExtension(mask) != nullptr)
        return nullptr;
    if (!saves)
        return &all;
    DFileFrmt *const among = First(m_formats, [&](DFileFrmt const &format) { return HasMask(format, mask); });
    if (among != nullptr || plain != nullptr)
        return among != nullptr ? among : plain;
    return First(m_formats, [&](DFileFrmt const &format) { return HasMask(format, tiff); });
}

} // namespace zelvar
