#pragma once

#include "zelvar/connections/ConnectionSaving.h"
#include "zelvar/opends/connections/Errand.h"

#include <QtCore/QObject>

#include <functional>
#include <list>
#include <memory>
#include <optional>

class QKeyEvent;
class QPoint;

namespace zelvar {

class RowDrag;
class DataSourceList;

/// What the user can do to the connections in the data source list: their menu, their keys, and the row that makes one.
///
/// Files and keyrings are changed by threads, and the rows follow when that is done. User-interface thread.
class ConnectionRows : public QObject {
    Q_OBJECT

public:
    /// Lives at most as long as the list.
    explicit ConnectionRows(DataSourceList &list);
    ~ConnectionRows() override;

    /// The menu of the selected connection, or of the row that makes one; false if neither is selected.
    bool RunMenu(QPoint screenPoint);
    /// False if the key is none of these: Insert makes a connection; of the selected one F2 changes the name, Delete
    /// removes it, Alt with an arrow moves its row.
    bool OnKey(QKeyEvent const &key);
    /// Runs the page for a new connection.
    void Make();
    /// The same behind the present event.
    void MakeSoon();
    /// Runs the page of a connection; with `tests` it is tried at once. What was changed is opened then.
    void Edit(DString const &name, bool tests);
    /// Whether a change is under way.
    [[nodiscard]] bool IsBusy() const { return !m_jobs.empty(); }

protected:
    bool event(QEvent *event) override;

private:
    using Done = std::function<void(SavedConnection const &)>;
    struct Job {
        std::shared_ptr<Errand> errand;
        std::shared_ptr<Handover<SavedConnection>> result;
        Done done;
    };
    struct Entry;

    [[nodiscard]] static std::vector<Entry> const &EntriesOfConnection();
    [[nodiscard]] static std::vector<Entry> const &EntriesOfMaker();
    /// The name of the selected connection; nothing for another row.
    [[nodiscard]] std::optional<DString> Selected() const;
    [[nodiscard]] bool IsMakerSelected() const;
    [[nodiscard]] std::vector<DString> Names() const; ///< in the order of the rows
    void Connect(DString const &name);
    void Duplicate(DString const &name);
    void Rename(DString const &name);
    void Move(DString const &name, int by);
    [[nodiscard]] bool IsConnection(int row) const;
    void MoveBefore(int row, int before); ///< a row that is none stands behind all
    void KeepOrder(std::vector<DString> const &names);
    void Remove(DString const &name);
    void Export(std::vector<DString> const &names);
    void Import();
    void AskAboutConflicts(DString const &file, std::vector<DString> const &names);
    /// Has a thread work; `done` is called unless it fails, which is told.
    void Start(std::function<SavedConnection(StopSignal const &)> work, Done done);
    void OnNews();
    void ShowChanged(SavedConnection const &saved);

    DataSourceList &m_list;
    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    std::list<Job> m_jobs;
    std::unique_ptr<RowDrag> m_drag;
};

} // namespace zelvar
