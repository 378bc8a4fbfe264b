#pragma once

#include "zelvar/controls/CZelButton.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/core/PathButtons.h"

#include <QtCore/QObject>

#include <functional>
#include <vector>

namespace zelvar {

/// A button that stands for an item on the way to the present folder.
class DSButton final : public CZelButton {
public:
    using CZelButton::CZelButton;
    RefItemPtr<DataSourceItem> item;
};

/// The row of buttons that shows the way to the present folder: makes, measures, places and reuses them.
class PathButtonRow {
public:
    /// Buttons become children of `parent`, with control ids from `firstId` on. `measure` is a hidden button with which
    /// widths are taken. Neither is owned.
    PathButtonRow(QWidget *parent, CZelButton *measure, int firstId);

    /// Shows the chain of parents of `item` in `place`, outermost first; null hides all. `clicked` gets the id of a
    /// button.
    void Show(RefItemPtr<DataSourceItem> const &item, QRect const &place, std::function<void(int id)> const &clicked);
    /// The item of the button with that id; null outside.
    [[nodiscard]] RefItemPtr<DataSourceItem> ItemOf(int id) const;
    /// The item of the last button shown.
    [[nodiscard]] RefItemPtr<DataSourceItem> LastShown() const;
    [[nodiscard]] std::vector<DSButton *> const &Buttons() const { return m_buttons; }

private:
    /// Gives the button its picture and text and yields the width that they need.
    static int SetUp(CZelButton &button, DataSourceItem &item, bool cutBefore, bool cutBehind);

    QWidget *m_parent;
    CZelButton *m_measure;
    int m_firstId;
    std::vector<DSButton *> m_buttons; ///< children of the parent
    std::size_t m_shown = 0;
};

} // namespace zelvar
