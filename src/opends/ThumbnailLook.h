#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/ThumbnailPictures.h"
#include "zelvar/opends/core/LookChoice.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"
#include "zelvar/thumbnails/ThumbnailReader.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <functional>
#include <memory>
#include <vector>

class QMenu;
class QToolButton;

namespace zelvar {

/// The second look of the list of items: thumbnails in place of rows.
///
/// It draws the tiles, has the thumbnails of what is in sight and of one page behind it brought by threads, keeps them
/// in memory, and offers the choice: a button in the headings' row with a menu, Ctrl+1 and Ctrl+2, for
/// the menu Ctrl+3, and for the size Ctrl with the wheel, plus or minus. What is chosen is kept in the settings. Places
/// on a network are shown as rows unless the user wants otherwise: every thumbnail there is a file that comes over the
/// line. User-interface thread.
class ZELVAR_API ThumbnailLook final : public QObject, private DSListCtrl::TilePainter {
    Q_OBJECT

public:
    /// `window` is the one whose keys choose; `key` is that of the settings.
    ThumbnailLook(DSListCtrl &list, QWidget &window, DString key);
    ~ThumbnailLook() override;

    /// What items are opened with, as a moniker; without a rule their paths are all. Asked at each paint.
    void SetMonikerRule(std::function<DString(DataSourceItem const &)> rule) { m_monikerOf = std::move(rule); }

    [[nodiscard]] LookChoice const &Choice() const { return m_choice; }
    /// Takes effect at once and is kept.
    void Choose(LookChoice const &choice);
    [[nodiscard]] QToolButton *Button() const { return m_button; }
    /// Of the thumbnails, since the first was wanted.
    [[nodiscard]] ThumbnailReader::Counts GetCounts() const;
    /// Whether some that are in sight, or on the page behind, are still to come.
    [[nodiscard]] bool IsBusy() const;

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static const platform::MessageId kAnswerMessage;

    void DrawTile(DrawItemStruct const &request, DataSourceItem const &item) override;
    void TilesPainted() override;
    void RootsChanged() override;

    void MakeButton();
    void FillMenu();
    void PlaceButton();
    void AddKeys(QWidget &window);
    void Show();
    /// Of the wheel, in eighths of a degree.
    void Turn(int angle);
    [[nodiscard]] bool IsPlaceRemote() const;
    [[nodiscard]] Size TileSize() const;
    [[nodiscard]] int DeviceSide() const;
    void DrawFace(DrawItemStruct const &request, DataSourceItem const &item, QRect const &place);
    void Ask();
    void OnAnswer();

    [[nodiscard]] DString MonikerOf(DataSourceItem const &item) const;

    QPointer<DSListCtrl> m_list;
    std::function<DString(DataSourceItem const &)> m_monikerOf;
    DString m_key;
    LookChoice m_choice;
    QToolButton *m_button = nullptr; ///< a child of the list
    QMenu *m_menu = nullptr;         ///< a child of the button
    int m_turned = 0;                ///< of the wheel, below a step
    int m_lastTop = 0;               ///< row that was on top when thumbnails were asked for last
    bool m_goesUp = false;

    ThumbnailPictures m_pictures;
    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    std::shared_ptr<ThumbnailReader> m_reader; ///< null until thumbnails are shown
    std::vector<DString> m_wanted;             ///< names, in the order in which they are wanted
    int m_wantedSide = 0;
};

} // namespace zelvar
