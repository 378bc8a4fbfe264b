#include "zelvar/opends/DriverOptionChoice.h"

#include "zelvar/base/DString.h"
#include "zelvar/store/DCnfg.h"

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr char kSection[] = "DlgOpenDS";
constexpr char const *kKeys[] = {"DriverOptions", "CreationOptions"};

char const *KeyOf(DriverOptionChoice::Use use) { return kKeys[static_cast<int>(use)]; }

/// The pieces of a moniker's options that the driver does not list.
DString PiecesBeside(std::vector<DriverOption> const &options, DString const &text) {
    DString beside;
    for (DString const &piece : Split(text, '&')) {
        bool const isListed = std::any_of(options.begin(), options.end(), [&](DriverOption const &option) {
            return EqualNoCase(option.name, std::string_view(piece).substr(0, piece.find('=')));
        });
        if (!isListed && !piece.empty())
            beside += (beside.empty() ? "" : "&") + piece;
    }
    return beside;
}

} // namespace

DriverOptionChoice::DriverOptionChoice(Use use)
    : m_use(use), m_memory(OptionMemory::FromText(DUserCnfg(kSection).ReadString(KeyOf(use), ""))) {}

void DriverOptionChoice::SetDriver(DString driverId, std::shared_ptr<DriverOptionLists const> lists) {
    m_driverId = std::move(driverId);
    m_lists = lists == nullptr ? std::make_shared<DriverOptionLists const>() : std::move(lists);
}

OptionValues DriverOptionChoice::ValuesFor(DString const &path, DString const &named) const {
    if (!HasPage())
        return {};
    if (auto const changed = m_changed.find({m_driverId, path}); changed != m_changed.end())
        return ValuesOf(Options(), changed->second);
    OptionValues values = ValuesOf(Options(), FromOptionText(named.empty() ? m_given : named));
    return values.empty() ? ValuesOf(Options(), FromOptionText(m_memory.For(m_driverId, path))) : values;
}

DString DriverOptionChoice::TextFor(DString const &path, DString const &named) const {
    DString const &brought = named.empty() ? m_given : named;
    if (!HasPage())
        return brought;
    DString const beside = PiecesBeside(Options(), brought);
    DString const chosen = ToOptionText(Options(), ValuesFor(path, named));
    return beside + (beside.empty() || chosen.empty() ? "" : "&") + chosen;
}

void DriverOptionChoice::Change(std::vector<DString> const &paths, OptionValues const &values) {
    if (!HasPage())
        return;
    DString const kept = ToOptionText(Options(), values, Secrets::Leave);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        m_changed[{m_driverId, paths[i]}] = values;
        m_changedTexts[paths[i]] = kept;
        if (i < OptionMemory::kMostFiles)
            m_memory.Note(m_driverId, paths[i], kept);
    }
}

std::optional<DString> DriverOptionChoice::ChangedText(DString const &path) const {
    auto const at = m_changedTexts.find(path);
    return at == m_changedTexts.end() ? std::nullopt : std::optional(at->second);
}

void DriverOptionChoice::Save() const { DUserCnfg(kSection).WriteString(KeyOf(m_use), m_memory.ToText()); }

} // namespace zelvar
