#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QWidget>

#include <cstdint>

class QLabel;

namespace zelvar {

/// Property: a named value of a property list, or a group of them. Owned by the group or list that it is added to.
class ZELVAR_API CZelProp : public QTreeWidgetItem {
public:
    /// A group.
    explicit CZelProp(DString const &name);
    /// A value; `data` is the owner's.
    CZelProp(DString const &name, DString const &value, DString description = {}, std::uint64_t data = 0);

    [[nodiscard]] bool IsGroup() const { return m_isGroup; }
    void AddSubItem(CZelProp *prop);
    [[nodiscard]] int GetSubItemsCount() const { return childCount(); }
    [[nodiscard]] CZelProp *GetSubItem(int index) const; ///< null outside
    [[nodiscard]] DString GetName() const;
    [[nodiscard]] std::uint64_t GetData() const { return m_data; }
    /// Shows the value; a text of several lines on one.
    void SetValue(DString const &value);
    [[nodiscard]] DString const &GetValue() const { return m_value; }
    [[nodiscard]] DString const &GetDescription() const { return m_description; }
    /// Whether the user may change the value; not at first.
    void AllowEdit(bool allow);

private:
    DString m_value{};
    DString m_description{};
    std::uint64_t m_data = 0;
    bool m_isGroup = false;
};

/// Property list: groups of named values in two columns, with a heading and an area that describes the current
/// property.
class ZELVAR_API CZelPropList : public QWidget {
    Q_OBJECT

public:
    explicit CZelPropList(QWidget *parent = nullptr);

    void EnableHeaderCtrl(bool enable, DString const &nameHeading = "Property", DString const &valueHeading = "Value");
    void EnableDescriptionArea(bool enable);
    /// Shaded groups and lines between the rows.
    void SetVSDotNetLook(bool on);
    /// The list owns it from now on; a group comes opened.
    void AddProperty(CZelProp *prop);
    [[nodiscard]] int GetPropertyCount() const;
    [[nodiscard]] CZelProp *GetProperty(int index) const; ///< null outside
    void RemoveAll();
    [[nodiscard]] QTreeWidget &Tree() const { return *m_tree; }

Q_SIGNALS:
    /// The user has changed a value.
    void PropertyChanged(zelvar::CZelProp *prop);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void ShadeGroups() const;
    void FitNames();

    QTreeWidget *m_tree;   ///< a child
    QLabel *m_description; ///< a child
    bool m_dotNetLook = false;
    bool m_namesDragged = false; ///< the user has set the width of the names
    bool m_fitting = false;
};

} // namespace zelvar
