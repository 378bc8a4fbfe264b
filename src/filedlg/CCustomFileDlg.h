#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DString.h"

#include <functional>
#include <vector>

class QWidget;

namespace zelvar {

/// Bits of `OpenFileName::flags`.
enum OpenFileNameFlags : unsigned {
    OFN_OVERWRITEPROMPT = 0x2, ///< saving over a file is asked about
    OFN_NOCHANGEDIR = 0x8,     ///< the dialog cannot leave its folder
    OFN_ENABLEHOOK = 0x20,     ///< goes with the former, changes nothing by itself
    OFN_ENABLETEMPLATE = 0x40, ///< there is a child template; always set
    OFN_ALLOWMULTISELECT = 0x200,
    OFN_ENABLESIZING = 0x800000, ///< always set
};

/// What a file dialog is given before it runs; the filter index is also what the user chose. Paths are bytes.
struct OpenFileName {
    unsigned flags = OFN_OVERWRITEPROMPT | OFN_ENABLETEMPLATE | OFN_ENABLESIZING;
    DString title{};      ///< empty for the usual one
    DString initialDir{}; ///< dropped silently if it cannot be reached
    DString file{};       ///< the name that stands in the field at first
    int filterIndex = 1;  ///< counted from 1
};

/// Custom file dialog: the toolkit's file dialog, never the desktop's, with a row below it that leads to the folders
/// used last and, in one template, two check boxes.
///
/// Made on the stack, filled through `GetOFN` and the setters, run once with `DoModal`, then read. It never waits for a
/// place that does not answer. User interface thread.
class ZELVAR_API CCustomFileDlg {
public:
    /// Child templates: the history row alone, and with the check boxes "Project-Edit" and "Read-Only".
    enum Template { kHistoryTemplate = 6102, kProjectTemplate = 6103 };

    /// `open` loads, otherwise it saves. `defaultExtension` (may be null) is added to a name without one of the
    /// filters' extensions, if the chosen filter has none of its own and does not let every name pass; a pattern such
    /// as "*.txt" counts as its extension. `filter` is "description|pattern|description|pattern||", patterns are
    /// separated by ";". `templateId` 0 stands for 6102.
    CCustomFileDlg(bool open, char const *defaultExtension, char const *fileName, DString filter, QWidget *parent,
                   int templateId = 0);

    [[nodiscard]] OpenFileName &GetOFN() { return m_ofn; }
    [[nodiscard]] OpenFileName const &GetOFN() const { return m_ofn; }
    /// Whether the history row is shown.
    void EnableHistory(bool show) { m_bHistory = show; }
    void SetHistory(DVectorSafe<DString> folders) { m_hist = std::move(folders); }
    /// What stands behind "?" of the moniker; of options that can be chosen the values to begin with.
    void SetOptions(DString options) { m_options = std::move(options); }
    /// Has the user choose options for writing: `driverOf` tells the driver of an entry of the filter, counted from 0,
    /// or an empty id.
    void OfferOptions(std::function<DString(int filter)> driverOf) { m_driverOf = std::move(driverOf); }

    /// 1 for OK, 2 for cancel.
    [[nodiscard]] int DoModal();

    // Results.
    /// `for (auto at = dialog.GetStartPosition(); at != 0;) path = dialog.GetNextPathName(at);` 0 without a path.
    [[nodiscard]] std::size_t GetStartPosition() const { return m_paths.empty() ? 0 : 1; }
    /// An absolute path as the file system has it, byte for byte; `position` becomes 0 behind the last one.
    [[nodiscard]] DString GetNextPathName(std::size_t &position) const;
    [[nodiscard]] bool GetReadOnly() const { return m_bReadOnly; }
    [[nodiscard]] bool GetEditOnly() const { return m_bEditOnly; }
    [[nodiscard]] DString const &GetOptions() const { return m_options; }

private:
    bool m_open;
    DString m_defaultExtension;
    DString m_filter;
    QWidget *m_parent; ///< not owned
    int m_templateId;
    OpenFileName m_ofn;
    DString m_options; ///< no control of the two templates shows it
    std::function<DString(int filter)> m_driverOf;
    bool m_bReadOnly = false;
    bool m_bEditOnly = false;
    DVectorSafe<DString> m_hist; ///< folders, the one used last first
    bool m_bHistory = false;
    std::vector<DString> m_paths;
};

} // namespace zelvar
