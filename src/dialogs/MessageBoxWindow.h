#pragma once

#include "zelvar/dialogs/core/DialogBlock.h"
#include "zelvar/dialogs/core/MessageBoxTemplate.h"

#include <QtWidgets/QDialog>

#include <functional>

class QAbstractButton;

namespace zelvar {

class MessageText;

/// The window of a message box, made from its template's block.
class MessageBoxWindow : public QDialog {
public:
    MessageBoxWindow(QWidget *parent, DialogBlock const &block, MessageBoxState const &state,
                     MessageBoxRequest const &request);

    std::function<void()> m_help; ///< the help button was pressed
    /// What the box was ended with.
    [[nodiscard]] int Answer() const { return m_answer; }

    /// The font of message boxes.
    [[nodiscard]] static QFont Font();
    /// What a template depends on, for a box over `parent`.
    [[nodiscard]] static MessageBoxMetrics Metrics(QWidget const *parent);
    /// Width and height of a text wrapped in that font, also within words that have no room. No more is measured than
    /// any screen is high.
    [[nodiscard]] static Size Measure(DString const &text, Size box);

    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *MakeControl(DialogBlock::Control const &control);
    void PlaceControls(DialogBlock const &block);
    void OnCommand(int id);
    void End(int id);

    MessageBoxState m_state;
    MessageBoxRequest m_request;
    MessageText *m_text = nullptr;
    int m_answer = IDCANCEL;
};

} // namespace zelvar
