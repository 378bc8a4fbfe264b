#pragma once

#include "zelvar/opends/places/RecentPlaces.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QRect>

#include <chrono>
#include <functional>
#include <list>
#include <optional>

class QEvent;
class QPoint;
class QWidget;

namespace zelvar {

class CZelButton;
class DSListCtrl;

/// Back and forward through the places that the open dialog has shown, and a drop-down of recent ones, each of which
/// comes back with its selection and its scroll position. Keys: Alt with Left and Right, Ctrl+H for the drop-down; the
/// mouse's own buttons for back and forward. User-interface thread.
class PlaceTravel : public QObject {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    struct Actions {
        std::function<void(RefItemPtr<DataSourceItem>)> show; ///< its children in all panes
        std::function<void(DString const &path)> goTo;        ///< the same for a path, in time; tells if it is none
    };
    /// The buttons become children of `dialog`; `items` tells what is shown. Both outlive it. `kind` is that of the
    /// documents, for the recent places.
    PlaceTravel(QWidget &dialog, DSListCtrl &items, DString kind, Actions actions);
    ~PlaceTravel() override;

    /// Puts the buttons at the side of `row` where one begins to read, and gives what is left of it.
    [[nodiscard]] QRect Arrange(QRect row);
    /// The place that is shown was entered. One that was only looked at in passing, as by an arrow key held in the list
    /// of folders, gives way to the next.
    void Entered() { m_isPassing = false; }
    void Travel(int step); ///< -1 is back, 1 forward; nothing where there is none
    void RunMenu();
    /// A button of the mouse for back or forward; false for anything else.
    bool TakeMouse(QEvent const &event);
    /// What waits for rows of a server. To be called a few times a second.
    void Update();
    /// Keeps the places of this dialog for the next one.
    void Save();

    [[nodiscard]] CZelButton *Back() const { return m_back; }
    [[nodiscard]] CZelButton *Forward() const { return m_forward; }
    [[nodiscard]] CZelButton *Recent() const { return m_recent; }
    /// How long a place has to be looked at to count; 700 ms unless somebody says otherwise.
    void SetPassingTime(std::chrono::milliseconds time) { m_passing = time; }
    static constexpr char kMenu[] = "recentPlaces"; ///< name of the drop-down

private:
    void OnLeft();
    void OnShown();
    [[nodiscard]] DString ShownPath() const;
    [[nodiscard]] PlaceView View() const;
    void Restore();
    void RestoreSoon();
    void ComeTo(PlaceHistory::Visit const &visit);
    void ShowState();

    QWidget &m_dialog;
    DSListCtrl &m_items;
    RecentPlaces m_kept;
    Actions m_actions;
    PlaceHistory m_history;
    bool m_isPassing = false; ///< the present place was only looked at so far
    QElapsedTimer m_since;    ///< it is shown
    std::chrono::milliseconds m_passing{700};
    std::optional<RecentPlace> m_wanted; ///< how a place is to look once it is shown and has its rows
    CZelButton *m_back;                  ///< children of the dialog
    CZelButton *m_forward;
    CZelButton *m_recent;
};

} // namespace zelvar
