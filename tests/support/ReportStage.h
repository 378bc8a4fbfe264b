#pragma once

#include "support/GuiTest.h"
#include "support/Teller.h"
#include "zelvar/base/ImageList.h"
#include "zelvar/views/ReportView.h"

#include <QtWidgets/QHeaderView>

namespace zelvar::test {

/// Shows a view as big as wanted, waits for the focus and lets the tests press on rows and headings as a user does.
class Stage {
public:
    explicit Stage(ReportView &view, int width = 400, int height = 300) : m_view(view) {
        view.resize(width, height);
        view.show();
        view.activateWindow();
        view.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
    }
    [[nodiscard]] QPoint Middle(int row, int col = 0) const {
        Rect const cell = m_view.GetSubItemRect(row, col, LVIR_LABEL).Intersected(m_view.GetClientRect());
        EXPECT_FALSE(cell.IsEmpty()) << "row " << row << " is not to be seen";
        return {(cell.left + cell.right) / 2, (cell.top + cell.bottom) / 2};
    }
    void Click(int row, Qt::KeyboardModifiers modifiers = {}, Qt::MouseButton button = Qt::LeftButton, int col = 0) {
        QTest::mouseClick(m_view.viewport(), button, modifiers, Middle(row, col));
    }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&m_view, key, modifiers); }
    void ClickHeading(int col) {
        QHeaderView &header = *m_view.GetHeaderCtrl();
        QPoint const at(header.sectionViewportPosition(col) + header.sectionSize(col) / 2, header.height() / 2);
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, at);
    }
    /// "1 3-5", ascending.
    [[nodiscard]] std::string Selected() const {
        std::string text;
        for (int row = m_view.GetNextItem(-1, LVNI_SELECTED); row >= 0; row = m_view.GetNextItem(row, LVNI_SELECTED))
            text += (text.empty() ? "" : " ") + std::to_string(row);
        return text;
    }

private:
    ReportView &m_view;
};

/// A view that writes down what it is told.
class TellingView : public ReportView, public Teller {
public:
    using ReportView::Geometry;
    bool takes = false; ///< the clicks, which nobody else is told of then

protected:
    bool OnItemChanged(int row, unsigned, unsigned newState) override {
        Tell("row " + std::to_string(row) + "=" + std::to_string(newState));
        return false;
    }
    bool OnRangeChanged(int first, int last, unsigned, unsigned newState) override {
        Tell("rows " + std::to_string(first) + "-" + std::to_string(last) + "=" + std::to_string(newState));
        return false;
    }
    bool OnColumnClick(int col) override { return Tell("heading " + std::to_string(col)), takes; }
    bool OnClick(ReportHit hit, Point) override { return Tell("click " + std::to_string(hit.row)), takes; }
    bool OnRClick(ReportHit hit, Point) override { return Tell("right " + std::to_string(hit.row)), takes; }
    bool OnDblClick(ReportHit hit, Point) override { return Tell("double " + std::to_string(hit.row)), takes; }
};

/// Three columns; rows "row 0", "row 1", ...
template <class View>
void FillStored(View &view, int rows) {
    view.InsertColumn(0, "Name", LVCFMT_LEFT, 150);
    view.InsertColumn(1, "Size", LVCFMT_RIGHT, 80);
    view.InsertColumn(2, "Kind", LVCFMT_CENTER, 90);
    for (int row = 0; row < rows; ++row) {
        view.InsertItem({.row = row, .text = "row " + std::to_string(row), .data = row});
        view.SetItemText(row, 1, std::to_string(row * 100) + " KB");
        view.SetItemText(row, 2, row % 2 == 0 ? "image" : "table");
    }
}

} // namespace zelvar::test
