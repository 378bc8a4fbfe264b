#pragma once

#include <QtWidgets/QAccessibleWidget>

#include <list>
#include <map>
#include <utility>

namespace zelvar {

class ReportView;

/// A report view as screen readers see it: a list of one column or a table; below it the rows, below them their cells.
/// Behind the rows stand the row of headings, while it is shown, and the viewport, while a field is open in it.
///
/// Rows and cells are made when they are asked for and stand for a place, not for what is in it; of a list of millions
/// only the last few thousand that were asked for exist.
class ReportAccessible final : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit ReportAccessible(ReportView &view);
    ~ReportAccessible() override;
    ReportAccessible(ReportAccessible const &) = delete;
    ReportAccessible &operator=(ReportAccessible const &) = delete;

    // What the view tells; next to nothing while no one listens.
    static void Forget(ReportView const &view); ///< the view begins to die
    static void RowsReset(ReportView &view);
    static void StateChanged(ReportView &view, int first, int last, unsigned oldState, unsigned newState);
    static void SortMarkMoved(ReportView &view, int col);
    static void FocusEntered(ReportView &view); ///< told behind what the toolkit tells, or nobody would hear the row

    static constexpr int kHeadings = -2; ///< the row of headings

    /// The interface of a row, or of a cell for `col` of 0 or more; null outside the view.
    [[nodiscard]] QAccessibleInterface *Part(int row, int col) const;
    [[nodiscard]] bool HasPart(int row, int col) const;
    [[nodiscard]] ReportView *View() const { return m_view; } ///< null once the view begins to die
    [[nodiscard]] bool IsList() const;

    [[nodiscard]] bool isValid() const override { return m_view != nullptr && QAccessibleWidget::isValid(); }
    [[nodiscard]] QAccessible::Role role() const override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] int indexOfChild(QAccessibleInterface const *child) const override;
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;
    [[nodiscard]] QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] QAccessibleInterface *caption() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *summary() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *cellAt(int row, int column) const override;
    [[nodiscard]] int selectedCellCount() const override;
    [[nodiscard]] QList<QAccessibleInterface *> selectedCells() const override;
    [[nodiscard]] QString columnDescription(int column) const override;
    [[nodiscard]] QString rowDescription(int) const override { return {}; }
    [[nodiscard]] int selectedColumnCount() const override { return 0; }
    [[nodiscard]] int selectedRowCount() const override;
    [[nodiscard]] int columnCount() const override;
    [[nodiscard]] int rowCount() const override;
    [[nodiscard]] QList<int> selectedColumns() const override { return {}; }
    [[nodiscard]] QList<int> selectedRows() const override;
    [[nodiscard]] bool isColumnSelected(int) const override { return false; }
    [[nodiscard]] bool isRowSelected(int row) const override;
    bool selectRow(int row) override;
    bool selectColumn(int) override { return false; }
    bool unselectRow(int row) override;
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *) override {}

private:
    [[nodiscard]] bool HasHeadings() const;
    [[nodiscard]] bool HasOpenField() const;
    /// The part if it exists, which counts as a use.
    [[nodiscard]] QAccessibleInterface *Find(int row, int col) const;

    ReportView *m_view;                ///< not owned
    using Place = std::pair<int, int>; ///< row and column
    struct Known {
        Place place{};
        QAccessible::Id id = 0;
    };
    mutable std::list<Known> m_byUse; ///< last used at the end
    mutable std::map<Place, std::list<Known>::iterator> m_parts;
};

/// From now on every report view is seen through this class. May be called again.
void InstallReportAccessibility();

} // namespace zelvar
