#pragma once

#include <QtCore/QString>
#include <QtWidgets/QFrame>

namespace zelvar::platform {

/// One line of plain text that is cut with an ellipsis where it does not fit; the whole is then the tool tip.
class EllipsisLabel : public QFrame {
    Q_OBJECT

public:
    explicit EllipsisLabel(QWidget *parent = nullptr);

    void SetText(QString const &text);
    [[nodiscard]] QString const &Text() const { return m_text; }
    /// What is seen at the present width.
    [[nodiscard]] QString ShownText() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    QString m_text;
};

} // namespace zelvar::platform
