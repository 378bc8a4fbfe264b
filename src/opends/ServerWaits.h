#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Report.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/ConnectionOffer.h"
#include "zelvar/opends/EmptyPlace.h"
#include "zelvar/opends/WantedRow.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QObject>

#include <functional>
#include <list>
#include <memory>
#include <vector>

namespace zelvar {

class DSListCtrl;
class DataSourceList;
class HierarchyList;
class PlaceNotice;
class PlaceOpener;

/// What the open dialog waits for from servers: connections that open, addresses that somebody named, listings. All of
/// it goes on behind the window; this says so where the rows will stand, ends it when the user wants, tells why it
/// failed and tries again. User-interface thread.
class ZELVAR_API ServerWaits : public QObject {
public:
    /// The windows must outlive it.
    struct Panes {
        DataSourceList &sources;
        HierarchyList &folders;
        DSListCtrl &parents; ///< that stands in place of the sources
        DSListCtrl &items;
    };
    struct Actions {
        std::function<void(RefItemPtr<DataSourceItem>)> show; ///< what was found and can be listed
        /// A place that was named is none, for dialogs that have no notice.
        std::function<void(DString const &place, DError const &error)> refuse;
        std::function<void()> forget; ///< what was selected is not there any more
    };
    ServerWaits(Panes const &panes, Actions actions, bool hasNotice);
    ~ServerWaits() override;

    /// Looks for a place if it is one of a server; false if it is not, and nothing was done. With `report` a place that
    /// is not there is told of.
    bool GoTo(DString const &place, bool report);
    /// The same for data on a server: shows what lists them, where their row is selected. `moniker` may have options.
    bool GoToData(DString const &moniker, bool report);
    /// Selects the row of data once it is listed, unless the user selects another one meanwhile. The place that lists
    /// them was asked for, or is about to be.
    void Want(DString const &moniker);
    /// Opens a connection that is not open, and shows it then; false, and nothing done, for any other item.
    bool Show(RefItemPtr<DataSourceItem> const &item);
    /// Something else was chosen: what was looked for is not wanted any more.
    void Forget();
    /// Ends all that is under way, or takes away what hides rows that are there; false if there is nothing of it.
    bool Stop();
    /// Tries what has failed, or was stopped, once more; false if nothing has.
    bool Retry();
    [[nodiscard]] bool IsWaiting() const;
    /// Says what there is to say. To be called when things may have changed, a few times a second.
    void Update();
    /// Null in a dialog without.
    [[nodiscard]] PlaceNotice *Notice() const { return m_notice; }

protected:
    bool event(QEvent *event) override;

private:
    static const platform::MessageId kFoundMessage;
    static const platform::MessageId kChangedMessage;
    static const platform::MessageId kFolderMessage;
    struct State {
        DString words{};
        bool isWaiting = false;
        DError failure{}; ///< of a server
        DString place{};  ///< whose it is: an address, or "source:NAME"
    };
    [[nodiscard]] bool GoToPlaceOf(DataSourceItem const *found);
    void Find(DString const &place, std::vector<DString> data, bool report);
    void TakeOffer();
    void OnChanged();
    void OnFound();
    void ShowBusy(bool isBusy);
    [[nodiscard]] State Waiting() const;
    [[nodiscard]] State Failed() const;

    Panes m_panes;
    Actions m_actions;
    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    std::shared_ptr<PlaceOpener> m_opener;
    PlaceNotice *m_notice = nullptr;    ///< a child of its list
    RefItemPtr<DataSourceItem> m_shown; ///< a connection that is opened to be shown; null for a place
    DString m_place;                    ///< that was looked for last; empty once it is there
    DError m_failure;                   ///< why that is not
    std::vector<DString> m_data;        ///< names of data below it, whose group is looked for; empty for none
    WantedRow m_wanted;                 ///< data that were named, in the place that lists them
    bool m_reports = false;
    bool m_isStopped = false; ///< by the user, while the list had these roots
    std::list<RefItemPtr<DataSourceItem>> m_stoppedRoots;
    bool m_isBusy = false; ///< as the pointer says
    EmptyPlace m_empty;
    ConnectionOffer m_offer; ///< as the notice shows it
};

} // namespace zelvar
