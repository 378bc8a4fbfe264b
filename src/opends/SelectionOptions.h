#pragma once

#include "zelvar/data/BDIMoniker.h"
#include "zelvar/model/DataSourceExtras.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/SeriesMode.h"
#include "zelvar/opends/DriverOptionChoice.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QObject>

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <vector>

namespace zelvar {

class DSPropertyWnd;
class DriverChoices;
class ExtrasFinder;

/// What the selected items of the open dialog are opened with, and the monikers that name them so: what is set on the
/// option page, which is an installed one or is made of what the items' driver says, what a moniker brought along, and
/// the driver that the user chose.
///
/// Which page belongs to a selection is found out on a thread; the page of the selection before stays until then.
/// User-interface thread.
class SelectionOptions : public QObject {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    /// What else of the dialog has a say.
    struct Sources {
        std::function<ItemList()> selected{};                ///< items, in the order of the rows
        std::function<DString(DString const &path)> named{}; ///< options that a moniker of the path brought
        std::function<DriverChoices const *()> drivers{};    ///< null without any
        std::function<void(ItemList const &)> show{};        ///< other options hold for these now
    };
    /// With `hasDriverPages` a driver is asked where no page is installed.
    explicit SelectionOptions(bool hasDriverPages);
    ~SelectionOptions() override;

    void SetGiven(DString const &options); ///< that data are opened with; not without `hasDriverPages`
    void SetSeriesMode(SeriesMode mode) { m_seriesMode = mode; }
    [[nodiscard]] SeriesMode GetSeriesMode() const { return m_seriesMode; }

    /// From now on the options stand in that pane; the installed pages are read.
    void Open(DSPropertyWnd &pane, Sources sources);
    void Close(); ///< the pane is about to end

    /// Looks for the page of what is selected now.
    void Update(ItemList const &items);
    /// Waits for it; false if the user does not want to.
    [[nodiscard]] bool IsUpdated();
    /// Takes over what stands on a page made for a driver, for all that was selected when it was made.
    void Take();
    [[nodiscard]] bool HasDriverPages() const { return m_ofDriver != nullptr; }
    /// Whether such a page is shown.
    [[nodiscard]] bool IsDriverPageShown() const { return !m_pageItems.empty(); }

    /// What is chosen for the item beside its path, but not how a series is given.
    [[nodiscard]] DString TextFor(DataSourceItem const &item) const;
    /// What opens the item as it was chosen in this dialog, on the page of a driver or by a moniker, but no passwords;
    /// its path where nothing was. Cheap.
    [[nodiscard]] DString ChosenMonikerOf(DataSourceItem const &item) const;
    /// What names the item, with the options that are set; a series as one.
    [[nodiscard]] DString MonikerOf(DataSourceItem const &item) const;
    /// The same for a result: one for each member of a series that is given file by file.
    [[nodiscard]] std::vector<BDIMoniker> MonikersOf(DataSourceItem const &item) const;

    void Save() const; ///< what was chosen, to the settings

protected:
    bool event(QEvent *event) override;

private:
    static const platform::MessageId kFoundMessage;
    void OnFound();
    void ShowDriverPage(ItemList const &items);
    [[nodiscard]] DString NamedFor(DString const &path) const;
    /// What is typed on an installed page counts from now on.
    void ApplyPage() const;

    DSPropertyWnd *m_pane = nullptr; ///< null while there is no window
    Sources m_sources;
    DataSourceExtras m_installed;
    std::unique_ptr<DriverOptionChoice> m_ofDriver; ///< null without pages of drivers
    ItemList m_pageItems; ///< whose options stand on the page of their driver; empty without one
    SeriesMode m_seriesMode = SeriesMode::Members;
    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    std::shared_ptr<ExtrasFinder> m_finder;
};

} // namespace zelvar
