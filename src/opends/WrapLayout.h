#pragma once

#include <QtWidgets/QLayout>

#include <vector>

namespace zelvar {

/// Line of controls that wraps: its items stand beside each other, and go on in the next line where the width ends.
///
/// A label stays beside its buddy as long as both fit in a line. An item wider than the line shrinks to its minimum.
class WrapLayout : public QLayout {
public:
    /// `spacing` pixels between items and between lines.
    explicit WrapLayout(int spacing);
    ~WrapLayout() override;
    WrapLayout(WrapLayout const &) = delete;
    WrapLayout &operator=(WrapLayout const &) = delete;

    void addItem(QLayoutItem *item) override;
    [[nodiscard]] int count() const override;
    [[nodiscard]] QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    /// All items in one line.
    [[nodiscard]] QSize sizeHint() const override;
    /// The widest item alone.
    [[nodiscard]] QSize minimumSize() const override;
    void setGeometry(QRect const &rect) override;

private:
    struct Placed {
        QLayoutItem *item;
        QRect rect;
    };
    /// Where each item stands in `width` pixels, from (0, 0).
    [[nodiscard]] std::vector<Placed> Place(int width) const;

    std::vector<QLayoutItem *> m_items; ///< owned
};

} // namespace zelvar
