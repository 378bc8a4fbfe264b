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

namespace zelvar {

/// An option page as native controls in the page's order. Nothing on it runs; its buttons tell their id.
class FormPage : public QWidget {
    Q_OBJECT

public:
    FormPage(FormNode const &page, QWidget *parent);

    /// The text fields and selects as they stand now, in the page's order.
    [[nodiscard]] std::vector<OptionField> Fields() const;

Q_SIGNALS:
    /// A button was pressed; `id` is its element's id, or its name where it has none.
    void Pressed(QString const &id);

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
    std::map<DString, QButtonGroup *> m_radioGroups; ///< by name; children of this window
};

} // namespace zelvar
