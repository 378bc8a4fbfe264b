#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QObject>

#include <vector>

class QFileDialog;

namespace zelvar {

class CZelComboBox;

/// The ways from the shown folder of the toolkit's file dialog to others: the box of folders, back and forward, up and
/// home, the list of places, keys in the views. They are taken from the toolkit, and each leads through one door.
class FolderRoads : public QObject {
    Q_OBJECT

public:
    /// Where a folder is shown, if it can be.
    class Door {
    public:
        [[nodiscard]] virtual DString const &Folder() const = 0;
        /// False, and nothing changed, for a folder that is not there or does not answer; the user is told.
        virtual bool ShowFolder(DString const &folder) = 0;

    protected:
        Door() = default;
        Door(Door const &) = default;
        Door &operator=(Door const &) = default;
        ~Door() = default;
    };

    FolderRoads(QFileDialog &dialog, Door &door); ///< a child of the dialog; `door` outlives it

    bool GoTo(DString const &folder); ///< true too where the folder is shown already
    /// Hides and disables what would leave the folder.
    void Close();
    void FillBox(); ///< the folder that is shown and those above it
    void UpdateButtons();
    /// Watches the keys of a view that it was installed on.
    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void Taken(); ///< another folder is shown, or the way back to one was given up

private:
    void MakeBox();
    void TakeOverButtons();
    void TakeOverPlaces();
    void GoUp();
    void Revisit(std::vector<DString> &from, std::vector<DString> &to);

    QFileDialog &m_dialog;
    Door &m_door;                   ///< not owned
    CZelComboBox *m_box = nullptr;  ///< a child of the dialog
    std::vector<DString> m_back;    ///< folders left, the last one behind
    std::vector<DString> m_forward; ///< folders come back from
};

} // namespace zelvar
