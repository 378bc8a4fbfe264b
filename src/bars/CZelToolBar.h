#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QPointer>
#include <QtWidgets/QToolBar>

#include <memory>

namespace zelvar {

class CZelImageList;
class CZelToolbarComboBoxButton;
class XMLNode;

/// Tool bar: buttons by the numbers of their commands.
///
/// To a `QToolBar` it adds pictures from an image list, check and radio buttons, tool tips with shortcuts, two sizes of
/// pictures, combo boxes as elements, an arrangement that is saved and loaded, and the keyboard: Tab comes to the bar
/// and leaves it, the arrows of its direction, Home and End walk inside, Space presses. Its context menu lets the user
/// customize it.
class ZELVAR_API CZelToolBar : public QToolBar {
    Q_OBJECT

public:
    /// What a button is, in the customary numbers; they add up.
    enum ButtonStyle : unsigned {
        TBBS_BUTTON = 0,
        TBBS_CHECKBOX = 2,   ///< stays down until it is pressed again
        TBBS_GROUP = 4,      ///< only together with `TBBS_CHECKBOX`: one of the neighbours with it is down
        TBBS_CHECKGROUP = 6, ///< both: a radio button
    };
    enum class TextPlace { None, Below, Beside };

    /// `title` names it in menus and in saved states; `id` may be 0.
    explicit CZelToolBar(DString const &title, int id = 0, QWidget *parent = nullptr);
    ~CZelToolBar() override;

    /// Where buttons that are added from now on get their pictures; not owned, null for none.
    void SetImages(CZelImageList const *images) { m_images = images; }
    /// A button for the command `id`, before the element at `index` or, outside, at the end; `image` is an index of the
    /// image list or -1. Null if there is an element of that id.
    QAction *InsertButton(int id, int image, DString const &text, DString const &tip = {}, int index = -1);
    void AddSeparator() { addSeparator(); }
    /// A combo box at the end; the bar owns it from now on. False if there is an element of its id.
    bool AddComboBox(CZelToolbarComboBoxButton *combo);
    bool RemoveButton(int id);
    /// Before the element that stands at `index` then. False if there is no such button.
    bool MoveButton(int id, int index);

    [[nodiscard]] int GetCount() const { return static_cast<int>(actions().size()); } ///< with separators
    [[nodiscard]] int CommandToIndex(int id) const;                                   ///< -1 for none
    [[nodiscard]] int GetItemID(int index) const;                                     ///< 0 for separators and outside
    /// The action of an element; null for none.
    [[nodiscard]] QAction *GetButton(int id) const;

    void SetButtonStyle(int id, unsigned style);
    [[nodiscard]] unsigned GetButtonStyle(int id) const;
    /// Nobody is told. Of the neighbours in a group the others come up.
    void PressButton(int id, bool press = true);
    [[nodiscard]] bool IsButtonPressed(int id) const;
    void EnableButton(int id, bool enable = true);
    [[nodiscard]] bool IsButtonEnabled(int id) const;
    void ShowButton(int id, bool show = true);
    [[nodiscard]] bool IsButtonShown(int id) const;
    /// The tool tip tells it.
    void SetButtonShortcut(int id, QKeySequence const &shortcut);

    void EnableLargeIcons(bool large);
    void SetTextPlace(TextPlace place);

    /// Whether the bar's context menu offers its user to customize it, as it does unless told otherwise.
    void EnableCustomization(bool enable) { m_customizable = enable; }
    /// Runs the dialog in which the user shows, hides and orders the buttons. False if it was cancelled.
    bool Customize();

    /// Order and visibility of the elements, as children of `bar`.
    void SaveButtons(XMLNode &bar) const;
    /// Elements that `bar` does not name come behind those that it does; names of none are passed over.
    void LoadButtons(XMLNode const &bar);

Q_SIGNALS:
    /// The user has pressed a button or chosen in a combo box.
    void Command(int id);

protected:
    /// Emits the signal.
    virtual void OnCommand(int id);
    void contextMenuEvent(QContextMenuEvent *event) override;
    void actionEvent(QActionEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    static void Dress(QAction &button);
    void Press(QAction &button, bool press);
    [[nodiscard]] QList<QWidget *> Stops() const;
    [[nodiscard]] bool Walk(QWidget *from, int key);
    void UpdateReach();
    void KeepDesign();

    CZelImageList const *m_images = nullptr; ///< not owned
    QPointer<QWidget> m_reach;               ///< the button that Tab comes to; not owned
    std::unique_ptr<XMLNode> m_design;       ///< the arrangement before the user's first
    bool m_customizable = true;
};

} // namespace zelvar
