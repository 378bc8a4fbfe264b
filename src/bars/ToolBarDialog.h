#pragma once

#include <QtGui/QIcon>
#include <QtWidgets/QDialog>

#include <map>
#include <utility>

class QCheckBox;
class QListWidget;
class QPushButton;

namespace zelvar {

class CZelToolBar;
class XMLNode;

/// Where a user chooses which buttons of a tool bar are shown, in which order, and how large. Nothing changes before
/// OK.
class ToolBarDialog final : public QDialog {
    Q_OBJECT

public:
    /// `designed` is the arrangement that "Reset" brings back.
    ToolBarDialog(CZelToolBar const &bar, XMLNode const &designed, QWidget *parent);

    /// The chosen arrangement, as `CZelToolBar::SaveButtons` writes it.
    void SaveButtons(XMLNode &bar) const;
    [[nodiscard]] bool WantsLargeIcons() const;

private:
    void Fill(XMLNode const &arrangement);
    void Move(int by);
    void UpdateButtons();

    std::map<int, std::pair<QString, QIcon>> m_names; ///< of buttons by id: the bar may die before the dialog
    QListWidget *m_elements;
    QCheckBox *m_large;
    QPushButton *m_up;
    QPushButton *m_down;
};

} // namespace zelvar
