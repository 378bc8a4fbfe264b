#pragma once

#include "zelvar/filedlg/PlatformFileDialog.h"

#include <vector>

namespace zelvar {

/// What typed names mean in the folder that a file dialog shows: which paths, and whether these can be loaded or saved.
/// What cannot be is told to the user.
class TypedPaths {
public:
    /// `typeIndex`: which of the filters is chosen, counted from 0; -1 for none. What is given outlives this.
    TypedPaths(PlatformFileDialog::Setup const &setup, DString const &folder, int typeIndex)
        : m_setup(setup), m_folder(folder), m_typeIndex(typeIndex) {}

    /// One path, or several where several names are allowed.
    [[nodiscard]] std::vector<DString> Read(DString const &typed) const;
    /// With the extension of the chosen filter, unless it has one that is offered.
    [[nodiscard]] DString Complete(DString path) const;
    /// The file is there, or is with the extension, which the path then gets.
    [[nodiscard]] bool IsReadyForLoading(DString &path) const;
    [[nodiscard]] bool IsReadyForSaving(DString const &path) const;

private:
    [[nodiscard]] DString PathOf(DString const &typed) const;
    [[nodiscard]] DString ExtensionToAdd() const;
    [[nodiscard]] DString OfferedMasks() const; ///< of all filters

    PlatformFileDialog::Setup const &m_setup;
    DString const &m_folder;
    int m_typeIndex;
};

} // namespace zelvar
