#pragma once

#include "zelvar/data/options/OptionMemory.h"
#include "zelvar/data/options/OptionValues.h"

#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zelvar {

/// Which options data are opened with, or written, as chosen on a page made of what their driver says: what somebody
/// has set in this dialog, else what a moniker brought along, else what was chosen before, for the file or for the
/// driver.
///
/// What a moniker says that is none of the driver's options is kept as it stands there.
class DriverOptionChoice {
public:
    enum class Use { Reading, Writing };
    /// Remembers what the settings hold.
    explicit DriverOptionChoice(Use use);

    /// Options that hold for all data until somebody sets others.
    void SetGiven(DString text) { m_given = std::move(text); }
    /// The driver whose page is shown; without options there is none.
    void SetDriver(DString driverId, std::shared_ptr<DriverOptionLists const> lists);
    [[nodiscard]] bool HasPage() const { return !Options().empty(); }
    [[nodiscard]] DString const &DriverId() const { return m_driverId; }
    [[nodiscard]] std::vector<DriverOption> const &Options() const {
        return m_use == Use::Reading ? m_lists->open : m_lists->create;
    }

    // Of what is yet to be written the path is empty. `named`: what a moniker of that path brought along; may be empty.
    [[nodiscard]] OptionValues ValuesFor(DString const &path, DString const &named) const;
    /// The whole text behind "?".
    [[nodiscard]] DString TextFor(DString const &path, DString const &named) const;

    /// What was set for the path in this dialog, whichever driver it was for, but no passwords; nothing where nothing
    /// was.
    [[nodiscard]] std::optional<DString> ChangedText(DString const &path) const;
    void Change(std::vector<DString> const &paths, OptionValues const &values);
    void Save() const; ///< to the settings

private:
    Use m_use;
    std::shared_ptr<DriverOptionLists const> m_lists = std::make_shared<DriverOptionLists>(); ///< never null
    DString m_driverId;
    DString m_given;
    std::map<std::pair<DString, DString>, OptionValues> m_changed; ///< in this dialog, by driver and path
    std::map<DString, DString> m_changedTexts;                     ///< by path
    OptionMemory m_memory;
};

} // namespace zelvar
