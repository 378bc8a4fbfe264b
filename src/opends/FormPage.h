#pragma once

#include "zelvar/opends/form/HtmlForm.h"
#include "zelvar/opends/form/OptionText.h"

#include <QtWidgets/QWidget>

#include <functional>
#include <map>
#include <vector>

class QButtonGroup;
class QGridLayout;
class QBoxLayout;
class QLineEdit;

namespace zelvar {

/// An option page as native controls in the page's order. Nothing on it runs; its buttons tell their id.
class FormPage : public QWidget {
    Q_OBJECT

public:
    FormPage(FormNode const &page, QWidget *parent);

    /// The text fields and selects as they stand now, in the page's order.
    [[nodiscard]] std::vector<OptionField> Fields() const;
    /// All controls that hold a value, by name, check boxes as "YES" and "NO".
    [[nodiscard]] std::map<DString, DString> Values() const;
    /// Into that control; nobody is told. A select takes a value that it has.
    void SetValue(DString const &name, DString const &value);
    /// The text field of that name, or null.
    [[nodiscard]] QLineEdit *TextField(DString const &name) const;

Q_SIGNALS:
    /// A button was pressed; `id` is its element's id, or its name where it has none.
    void Pressed(QString const &id);
    /// The user has put another value into a control and is done with it.
    void Changed();
    /// While a text is typed.
    void Typed(QLineEdit *field);

private:
    void AddFlow(std::vector<FormNode> const &nodes, QBoxLayout &lines);
    void AddTable(FormNode const &table, QBoxLayout &lines);
    [[nodiscard]] QWidget *MakeControl(FormNode const &node);
    [[nodiscard]] QWidget *MakeSelect(FormNode const &node);
    static void AddLine(std::vector<QWidget *> &line, QBoxLayout &lines);

    struct Reader {
        DString name;
        bool isSelect = false;
        std::function<DString()> value;
    };
    std::vector<Reader> m_readers;
    struct Value {
        std::function<DString()> get;
        std::function<void(DString const &)> set;
    };
    std::map<DString, Value> m_values;               ///< by name
    std::map<DString, QButtonGroup *> m_radioGroups; ///< by name; children of this window
};

} // namespace zelvar
