#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QWidgetAction>

#include <cstdint>

class QToolButton;

namespace zelvar {

class CZelComboBox;

/// Combo box as an element of a tool bar, by the number of its command.
///
/// To a `QWidgetAction` it adds the entries of a `CZelComboBox`, the command that is sent when the user chooses one or
/// presses Enter in an edit field, that all elements of one command in all tool bars show the same choice, and a button
/// with the entries as a menu where the bar stands upright and has no room for the box.
class ZELVAR_API CZelToolbarComboBoxButton : public QWidgetAction {
    Q_OBJECT

public:
    /// `width` is the number of letters that the field has room for.
    CZelToolbarComboBoxButton(int id, DString const &name, int width, QObject *parent = nullptr);
    ~CZelToolbarComboBoxButton() override;

    [[nodiscard]] int GetId() const { return data().toInt(); }
    /// The new entry's index.
    int AddItem(DString const &text, std::uint64_t word = 0);
    void RemoveAllItems();
    [[nodiscard]] int GetCount() const;
    [[nodiscard]] DString GetItem(int index) const;
    [[nodiscard]] std::uint64_t GetItemData(int index) const;
    [[nodiscard]] int FindItem(DString const &text) const; ///< -1 for none
    [[nodiscard]] int GetCurSel() const;                   ///< -1 for none
    [[nodiscard]] DString GetText() const;
    /// Chooses an entry, here and in the other elements of the command. The command is sent with `notify`. False if
    /// there is no such entry.
    bool SelectItem(int index, bool notify = false);
    bool SelectItem(DString const &text, bool notify = false) { return SelectItem(FindItem(text), notify); }
    void SetEditable(bool editable);
    /// The box itself, owned.
    [[nodiscard]] CZelComboBox &GetComboBox() const { return *m_combo; }

    /// A button that opens the entries, in place of the box.
    void ShowAsButton(bool on);
    [[nodiscard]] bool IsShownAsButton() const { return m_asButton; }

    /// The element of that command that was made first; null for none.
    [[nodiscard]] static CZelToolbarComboBoxButton *GetByCmd(int id);

Q_SIGNALS:
    void Command(int id);

private:
    void Send();
    void KeepInStep();
    void UpdateButton();
    void FillMenu();

    CZelComboBox *m_combo; ///< a child of the element's widget, which is owned
    QToolButton *m_button; ///< a child of the element's widget
    bool m_asButton = false;
};

} // namespace zelvar
