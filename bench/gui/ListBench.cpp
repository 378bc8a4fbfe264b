// A virtual list of ten million rows beside the toolkit's own table view.
#include "Harness.h"
#include "zelvar/lists/CZelListCtrlVirtual.h"

#include <QtCore/QAbstractTableModel>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTableView>

#include <cstdio>
#include <memory>

namespace zelvar::bench {
namespace {

constexpr int kRows = 10'000'000;
constexpr int kColumns = 6;
constexpr int kPages = 40;
constexpr int kPicked = 5000; // rows, every other one

DString CellText(int row, int col) {
    char text[32];
    std::snprintf(text, sizeof text, "cell %d of row %d", col, row);
    return text;
}

class BigList : public CZelListCtrlVirtual {
public:
    BigList() {
        for (int col = 0; col < kColumns; ++col)
            AddCol("Column " + std::to_string(col), ADICol_String, false, 160, LVCFMT_LEFT);
        SetNumRow(kRows, 0);
    }
    DString OnGetItemText(int row, int col) override { return CellText(row, col); }
};

class BigModel : public QAbstractTableModel {
public:
    [[nodiscard]] int rowCount(QModelIndex const &) const override { return kRows; }
    [[nodiscard]] int columnCount(QModelIndex const &) const override { return kColumns; }
    [[nodiscard]] QVariant data(QModelIndex const &index, int role) const override {
        return role == Qt::DisplayRole ? QString::fromStdString(CellText(index.row(), index.column())) : QVariant();
    }
};

struct Measured {
    double showMs = 0;
    double pageMs = 0;
    double selectMs = 0;
    double megabytes = 0;
};

/// What is due on the screen is on the screen when this returns.
void Paint(QWidget &viewport) {
    while (!viewport.window()->windowHandle()->isExposed())
        QApplication::processEvents();
    viewport.update();
    QApplication::processEvents();
}

double Mebibytes(std::size_t after, std::size_t before) {
    return after > before ? static_cast<double>(after - before) / (1 << 20) : 0;
}

Measured MeasureList() {
    Measured measured;
    std::size_t const before = ResidentBytes();
    auto const list = std::make_unique<BigList>();
    list->resize(1000, 600);
    measured.showMs = BestMs(1, [&] {
        list->show();
        Paint(*list->viewport());
    });
    measured.pageMs = BestMs(3,
                             [&] {
                                 for (int page = 0; page < kPages; ++page) {
                                     list->verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
                                     Paint(*list->viewport());
                                 }
                             }) /
                      kPages;
    measured.selectMs = BestMs(1, [&] {
        for (int row = 0; row < kPicked * 2; row += 2)
            list->SetSlct(row, true);
        Paint(*list->viewport());
    });
    measured.megabytes = Mebibytes(ResidentBytes(), before);
    return measured;
}

Measured MeasureTable() {
    Measured measured;
    std::size_t const before = ResidentBytes();
    BigModel model;
    auto const table = std::make_unique<QTableView>();
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->resize(1000, 600);
    measured.showMs = BestMs(1, [&] {
        table->setModel(&model);
        table->show();
        Paint(*table->viewport());
    });
    measured.pageMs = BestMs(3,
                             [&] {
                                 for (int page = 0; page < kPages; ++page) {
                                     table->verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
                                     Paint(*table->viewport());
                                 }
                             }) /
                      kPages;
    measured.selectMs = BestMs(1, [&] {
        for (int row = 0; row < kPicked * 2; row += 2)
            table->selectionModel()->select(model.index(row, 0),
                                            QItemSelectionModel::Select | QItemSelectionModel::Rows);
        Paint(*table->viewport());
    });
    measured.megabytes = Mebibytes(ResidentBytes(), before);
    return measured;
}

Beside View(double limit, double other) { return {.limit = limit, .alternatives = {{"QTableView", other}}}; }

Register const lists("list", [] {
    { // fonts, style and pixmaps are loaded once, for neither of the two
        CZelListCtrl warm;
        warm.AddCol("Warm", ADICol_String, false, 100, LVCFMT_LEFT);
        warm.AddRow("up", nullptr);
        warm.show();
        Paint(*warm.viewport());
    }
    Measured const ours = MeasureList();
    Measured const theirs = MeasureTable();
    Figure("list.first_paint_10m", ours.showMs, "ms", View(30, theirs.showMs));
    Figure("list.page_10m", ours.pageMs, "ms", View(6, theirs.pageMs));
    Figure("list.select_5000_alternate", ours.selectMs, "ms", View(20, theirs.selectMs));
    Figure("list.memory_10m", ours.megabytes, "MiB", View(16, theirs.megabytes));

    CZelListCtrl stored;
    stored.AddCol("Number", ADICol_Double, false, 100, LVCFMT_LEFT);
    Figure("list.add_100k_rows",
           BestMs(1,
                  [&] {
                      for (int row = 0; row < 100'000; ++row)
                          stored.AddRow(std::to_string((row * 7919) % 100'003), nullptr);
                  }),
           "ms", {.limit = 200});
    Figure("list.sort_100k_numbers", BestMs(1, [&] { static_cast<CListCtrlFlex &>(stored).Sort(0, true); }), "ms",
           {.limit = 100});
    Figure("list.fit_100k_rows", BestMs(1, [&] { stored.ResizeColToFit(); }), "ms", {.limit = 60});
});

} // namespace
} // namespace zelvar::bench
