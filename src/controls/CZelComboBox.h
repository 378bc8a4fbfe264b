#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QComboBox>

#include <cstdint>

namespace zelvar {

/// Combo box with texts as `DString` and a word per entry. It adds to the platform's combo box the customary operations
/// (find, select by text, width of the list, hint of an empty field), and a path that is not UTF-8 comes back byte for
/// byte: an entry keeps the text it was made from.
class ZELVAR_API CZelComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit CZelComboBox(QWidget *parent = nullptr);

    /// With an edit field, whose completion offers entries in a list: what stands in the field is only what was typed
    /// or taken.
    void SetEditable(bool editable);

    /// The new entry's index.
    int AddString(DString const &text) { return InsertString(count(), text); }
    int InsertString(int index, DString const &text);
    void DeleteString(int index) { removeItem(index); }
    void ResetContent() { clear(); }
    [[nodiscard]] int GetCount() const { return count(); }
    [[nodiscard]] int GetCurSel() const { return currentIndex(); } ///< -1 for none
    /// -1 selects none and empties the edit field.
    void SetCurSel(int index);
    [[nodiscard]] DString GetLBText(int index) const;
    /// The first entry with just this text, -1 for none.
    [[nodiscard]] int FindStringExact(DString const &text) const;
    /// The first entry after `after` that starts with this text in any letter case, from the top again behind the last
    /// one; -1 for none.
    [[nodiscard]] int FindString(DString const &start, int after = -1) const;
    /// Selects what `FindString` finds; -1 and nothing changed for none.
    int SelectString(DString const &start, int after = -1);
    bool SetItemData(int index, std::uint64_t word);
    [[nodiscard]] std::uint64_t GetItemData(int index) const;
    /// What the field shows: the chosen entry as it was given, or what was typed.
    [[nodiscard]] DString GetWindowText() const;
    /// Into the edit field, or the entry with that text.
    void SetWindowText(DString const &text);
    void SetTooltip(DString const &text);
    /// Shown while nothing is chosen or typed.
    void SetCueBanner(DString const &text);
    /// The least width of the open list, pixels.
    void SetDroppedWidth(int pixels);
    void ShowDropDown(bool show = true) { show ? showPopup() : hidePopup(); }

protected:
    /// The shown entry keeps its own direction.
    void initStyleOption(QStyleOptionComboBox *option) const override;
};

} // namespace zelvar
