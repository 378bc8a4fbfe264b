#pragma once

#include "zelvar/props/PropRule.h"

#include <QtWidgets/QTreeWidget>

#include <cstdint>
#include <memory>
#include <vector>

namespace zelvar {

class CZelPropList;

/// Property: a named value of a property list, or a group of them. Owned by the group or list that it is added to.
///
/// To a `QTreeWidgetItem` it adds a rule of values (numbers in a range, choices, colours ...), the original value with
/// what has become of it, a description, and the owner's word. What the user has changed is shown bold.
class ZELVAR_API CZelProp : public QTreeWidgetItem {
public:
    /// A group.
    explicit CZelProp(DString const &name);
    /// A text that is shown only until `AllowEdit`; `data` is the owner's.
    CZelProp(DString const &name, DString const &value, DString description = {}, std::uint64_t data = 0);
    /// A value that the user may change by a rule.
    CZelProp(DString const &name, PropRule rule, DString const &value, DString description = {},
             std::uint64_t data = 0);
    ~CZelProp() override;
    CZelProp(CZelProp const &) = delete;
    CZelProp &operator=(CZelProp const &) = delete;

    [[nodiscard]] bool IsGroup() const { return m_isGroup; }
    /// Takes over a property that belongs to nobody yet.
    void AddSubItem(CZelProp *prop);
    void AddSubItem(std::unique_ptr<CZelProp> prop) { AddSubItem(prop.release()); }
    [[nodiscard]] int GetSubItemsCount() const { return static_cast<int>(m_subItems.size()); }
    [[nodiscard]] CZelProp *GetSubItem(int index) const; ///< null outside
    /// The group or property that this one was added to; null for one of the list's own.
    [[nodiscard]] CZelProp *GetParent() const { return m_owner; }

    [[nodiscard]] DString GetName() const;
    void SetName(DString const &name);
    [[nodiscard]] std::uint64_t GetData() const { return m_data; }
    void SetData(std::uint64_t data) { m_data = data; }
    [[nodiscard]] DString const &GetDescription() const { return m_description; }
    void SetDescription(DString description) { m_description = std::move(description); }

    [[nodiscard]] PropRule const &GetRule() const { return m_rule; }
    /// The values that a property of the kind "choice" offers.
    void AddOption(DString const &option) { m_rule.choices.push_back(option); }
    void RemoveAllOptions() { m_rule.choices.clear(); }

    /// Shows the value, in the rule's form if the rule takes it; a text of several lines on one. It does not become
    /// the original value, and nobody is told.
    void SetValue(DString const &value);
    [[nodiscard]] DString const &GetValue() const { return m_value; }
    // The value as what its kind stands for; 0, false or black if it is something else.
    [[nodiscard]] long long GetInt() const;
    [[nodiscard]] double GetDouble() const;
    [[nodiscard]] bool GetBool() const { return m_value == PropRule::FromBool(true); }
    [[nodiscard]] ColorRef GetColor() const { return PropRule::ToColor(m_value).value_or(0); }

    /// The value at construction or the one set here.
    [[nodiscard]] DString const &GetOriginalValue() const { return m_original; }
    void SetOriginalValue(DString const &value);
    void ResetOriginalValue() { SetValue(m_original); }
    [[nodiscard]] bool IsModified() const { return m_value != m_original; }

    /// Whether the user may change the value.
    void AllowEdit(bool allow);
    [[nodiscard]] bool IsEditable() const { return (flags() & Qt::ItemIsEditable) != 0; }
    /// Grey, and neither chosen nor changed by the user, while not enabled.
    void Enable(bool enable) { setDisabled(!enable); }
    [[nodiscard]] bool IsEnabled() const { return (flags() & Qt::ItemIsEnabled) != 0; }
    /// Whether the list's user can change it now.
    [[nodiscard]] bool TakesEntries() const { return !m_isGroup && IsEditable() && IsEnabled(); }

    [[nodiscard]] QVariant data(int column, int role) const override;

private:
    friend class CZelPropList;

    [[nodiscard]] DString Read(DString const &value) const { return m_rule.Read(value).value_or(value); }
    [[nodiscard]] QString Spoken() const;

    PropRule m_rule{};
    DString m_value{};
    DString m_original{};
    DString m_description{};
    std::uint64_t m_data = 0;
    bool m_isGroup = false;
    bool m_isOpen = true;                 ///< a group, while it is out of the tree
    std::vector<CZelProp *> m_subItems{}; ///< in the order they were added; owned, wherever the tree shows them
    CZelProp *m_owner = nullptr;          ///< not owned
    CZelPropList *m_list = nullptr;       ///< of a property of the list's own; not owned
};

} // namespace zelvar
