#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QComboBox>

#include <cstdint>

namespace zelvar {

/// Combo box with texts as `DString` and a word per entry. A path that is not UTF-8 comes back byte for byte: an entry
/// keeps the text it was made from.
class ZELVAR_API CZelComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit CZelComboBox(QWidget *parent = nullptr);

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
    bool SetItemData(int index, std::uint64_t word);
    [[nodiscard]] std::uint64_t GetItemData(int index) const;
    /// What the field shows: the chosen entry as it was given, or what was typed.
    [[nodiscard]] DString GetWindowText() const;
    /// Into the edit field, or the entry with that text.
    void SetWindowText(DString const &text);
};

} // namespace zelvar
