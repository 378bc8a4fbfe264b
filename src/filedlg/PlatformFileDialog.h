#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/filedlg/FolderAlias.h"
#include "zelvar/filedlg/FolderRoads.h"
#include "zelvar/filedlg/core/FilterText.h"

#include <QtWidgets/QFileDialog>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QAbstractItemView;
class QComboBox;
class QFileSystemModel;
class QLineEdit;
class QPushButton;

namespace zelvar {

class TypedPaths;
class UndecodedNames;

/// The toolkit's file dialog, made safe: every way to another folder goes through one door that asks first whether the
/// place answers, and what is accepted is decided here, on the bytes of names.
///
/// The toolkit finds out about a folder's files on a thread of its own.
class PlatformFileDialog final : public QFileDialog, private FolderRoads::Door {
    Q_OBJECT

public:
    struct Setup {
        bool opens = true;
        bool picksFolder = false; ///< no files are shown
        bool makesFolders = true;
        bool locked = false; ///< stays in its folder
        bool multiple = false;
        bool asksOverwrite = true;
        DString title{};
        DString folder{}; ///< answers and is there, see `StartFolder`
        DString file{};
        DString defaultExtension{};
        std::vector<FileFilter> filters{};
        int filterIndex = 0;   ///< counted from 0
        DString folderMasks{}; ///< a folder can be picked if something in it matches; empty for any
    };
    [[nodiscard]] static std::unique_ptr<PlatformFileDialog> Make(Setup const &setup, QWidget *parent);
    /// Destroys a dialog. One whose thread is held by a place that has gone would hold the caller as well: it is left
    /// behind, hidden, until that thread comes back.
    static void End(std::unique_ptr<PlatformFileDialog> dialog);
    /// Where a dialog can begin: the folder wanted, else the user's home, else the root.
    [[nodiscard]] static DString StartFolder(DString wanted);

    /// Puts `row` below the dialog's own controls.
    void AddRow(QWidget &row);

    [[nodiscard]] DString const &Folder() const override { return m_folder->Folder(); }
    /// False, and nothing changed, for a folder that is not there or does not answer; the user is told. What stands in
    /// the name field stays.
    bool GoTo(DString const &folder);
    /// Reads the folder again.
    void Refresh();

    [[nodiscard]] std::vector<DString> const &Chosen() const { return m_chosen; }
    [[nodiscard]] int FilterIndex() const;

    void accept() override;

Q_SIGNALS:
    /// The user has chosen another type of files.
    void TypeChosen(int index);

protected:
    void changeEvent(QEvent *event) override;

private:
    PlatformFileDialog(Setup const &setup, QWidget *parent);
    PlatformFileDialog(Setup const &setup, std::unique_ptr<FolderAlias const> folder, QWidget *parent);

    // What is shown.
    bool ShowFolder(DString const &folder) override;
    void TakeOverInput(); ///< of the name field, the views and what reads a folder again
    void SetUpViews();
    void FitColumns();
    void SetUpUndecoded();
    void SetUpFilters();
    void LockFolder();
    void ShowFoldersAlone();
    void ApplyMasks(DString const &masks);
    void FillUndecoded();
    /// Into the name field, whatever bytes it has.
    void PutName(DString const &name);
    void ChooseUndecoded(DString const &name);
    void OnFilterChosen(int index);
    void OnActivated(QModelIndex const &index);
    void OnSelectionChanged();
    void UpdateButtons();
    /// Reads the folder again if it has changed since it was shown.
    void RefreshIfChanged();

    // What is accepted.
    void AcceptFolder();
    /// The folder that OK would pick: what is typed, the selected one, or the one that is shown.
    [[nodiscard]] DString PickedFolder() const;
    [[nodiscard]] bool CanPick(DString const &folder) const;
    [[nodiscard]] std::vector<DString> SelectedPaths(bool folders) const;
    [[nodiscard]] std::vector<DString> PathsTyped() const;
    [[nodiscard]] TypedPaths Typed() const;
    /// Goes where the path leads, if it means a folder, shows what a mask asks for, and tells what cannot be: true if
    /// there is nothing more to do.
    [[nodiscard]] bool IsNoFile(DString const &path);
    [[nodiscard]] bool MayReplace(DString const &path); ///< asks, where something is there

    Setup m_setup;
    std::unique_ptr<FolderAlias const> m_folder;
    QFileSystemModel *m_model;
    QLineEdit *m_name;
    QComboBox *m_types;
    QPushButton *m_ok;
    QString m_okText;
    DString m_masks;     ///< the toolkit's list and the other one show what they fit; empty for all
    DString m_givenName; ///< not read from the field, which shows it: it may be no text
    UndecodedNames *m_undecoded = nullptr;
    FolderRoads *m_roads = nullptr; ///< a child
    std::vector<QAbstractItemView *> m_views;
    std::optional<QString> m_selectionText; ///< what the name field shows for the selected rows; nothing once typed in
    std::vector<DString> m_chosen;
    std::int64_t m_changed = 0; ///< when the shown folder was changed last, nanoseconds since 1970
    bool m_isListing = true;    ///< the toolkit's thread is at a folder; a place that has gone may hold it there
};

} // namespace zelvar
