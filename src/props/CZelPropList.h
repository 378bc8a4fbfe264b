#pragma once

#include "zelvar/base/Translation.h"
#include "zelvar/props/CZelProp.h"

#include <QtWidgets/QWidget>

#include <functional>
#include <memory>

class QLabel;
class QLineEdit;

namespace zelvar {

/// Property list: groups of named values in two columns, with a heading, a search box and an area that describes the
/// current property.
///
/// To a `QTreeWidget`, which it holds, it adds editing in place by the rules of the values: F2, Enter, a double click,
/// a click on the current value or typing begins, Enter commits (Ctrl+Enter a text of several lines), Escape gives up,
/// Tab goes on to the next value that can be changed, F4 opens what a value's button opens, Space turns a boolean one
/// over. An entry that the rule does not take stays in the editor, which says what is wanted.
class ZELVAR_API CZelPropList : public QWidget {
    Q_OBJECT

public:
    explicit CZelPropList(QWidget *parent = nullptr);
    ~CZelPropList() override;

    void EnableHeaderCtrl(bool enable, DString const &nameHeading = Translated("Property"),
                          DString const &valueHeading = Translated("Value"));
    void EnableDescriptionArea(bool enable);
    void EnableSearchBox(bool enable);
    /// Shaded groups and lines between the rows.
    void SetVSDotNetLook(bool on);
    /// All values in one list by their names, without their groups.
    void SetAlphabeticMode(bool on);
    [[nodiscard]] bool IsAlphabeticMode() const { return m_alphabetic; }
    /// Shows only the properties with `text` in name or value, in any letter case, and the groups that hold them, which
    /// are open as long as that goes on.
    void SetFilter(DString const &text);

    /// The list owns it from now on; a group comes opened.
    void AddProperty(CZelProp *prop);
    void AddProperty(std::unique_ptr<CZelProp> prop) { AddProperty(prop.release()); }
    [[nodiscard]] int GetPropertyCount() const { return static_cast<int>(m_properties.size()); }
    [[nodiscard]] CZelProp *GetProperty(int index) const; ///< null outside
    void RemoveAll();
    /// The first property with that word, groups included; null for none.
    [[nodiscard]] CZelProp *FindItemByData(std::uint64_t word) const;
    void ExpandAll(bool expand = true);
    [[nodiscard]] CZelProp *GetCurSel() const; ///< null for none
    void SetCurSel(CZelProp *prop);
    void ResetOriginalValues();

    /// Takes an entry as if the user had made it: false, and nothing changes, if the property's rule does not take it.
    bool EnterValue(CZelProp &prop, DString const &entry);
    /// As F2 does. False if the property takes no entries.
    bool BeginEdit(CZelProp &prop);

    /// Asks for a file or a folder: puts the answer into `value` and returns true, or returns false.
    using Browse = std::function<bool(CZelProp &prop, DString &value)>;
    void SetBrowse(Browse browse) { m_browse = std::move(browse); }

    [[nodiscard]] QTreeWidget &Tree() const { return *m_tree; }

    /// A value's button was pressed. Colours are asked for here, files and folders by `SetBrowse`.
    virtual bool OnBrowse(CZelProp &prop, DString &value);

Q_SIGNALS:
    /// The user has changed a value.
    void PropertyChanged(zelvar::CZelProp *prop);

protected:
    /// The user has changed a value; emits the signal.
    virtual void OnPropertyChanged(CZelProp *prop);
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    friend class CZelProp;

    void Adopt(CZelProp &prop);
    void Forget(CZelProp const &prop);
    void InsertFlat(CZelProp &prop);
    void ShowFlat();
    void ShowGroups();
    void Dress(CZelProp &prop) const;
    static void KeepOpen(CZelProp &prop);
    void FitNames();

    QTreeWidget *m_tree;                  ///< a child
    QLabel *m_description;                ///< a child
    QLineEdit *m_search;                  ///< a child
    std::vector<CZelProp *> m_properties; ///< owned, wherever the tree shows them
    QString m_filter;
    Browse m_browse;
    bool m_dotNetLook = false;
    bool m_alphabetic = false;
    bool m_namesDragged = false; ///< the user has set the width of the names
    bool m_fitting = false;
    int m_adopted = 0; ///< properties since the list was empty
};

} // namespace zelvar
