#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFileFrmt.h"

#include <QtCore/QObject>

#include <functional>

class QLineEdit;
class QWidget;

namespace zelvar {

class CZelComboBox;

/// The fields at the foot of the open dialog: folders that something was picked in before, the mask of file names, and
/// the file types. They are controls of its template. User-interface thread.
class OpenFields : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void(DString const &place)> goTo; ///< one of the folders was chosen
        std::function<void()> typed;                    ///< Return, with none of those chosen that are offered
        std::function<void(std::size_t)> chooseFormat;  ///< an index into the formats
    };
    /// `dialog` has its controls, and outlives this.
    OpenFields(QWidget &dialog, Actions actions);

    /// The folders that the settings have under that key.
    void FillPlaces(DString const &historyKey);
    /// Offers those that are of single files; without the present one among them none is selected.
    void FillFormats(DVector<DFileFrmt *> const &formats, DFileFrmt const *present);

    [[nodiscard]] DString Mask() const;
    void SetMask(DString const &mask); ///< shows it, and lists nothing
    // Between dialogs of a kind, in the settings; empty for none.
    [[nodiscard]] static DString KeptMask(DString const &key);
    void KeepMask(DString const &key) const;

    [[nodiscard]] CZelComboBox *Places() const { return m_places; }
    [[nodiscard]] QLineEdit *MaskEdit() const { return m_mask; }
    [[nodiscard]] CZelComboBox *Formats() const { return m_formats; }

private:
    CZelComboBox *m_places; ///< controls of the dialog
    QLineEdit *m_mask;
    CZelComboBox *m_formats;
};

} // namespace zelvar
