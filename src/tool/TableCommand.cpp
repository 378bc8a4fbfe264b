#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/IRowStore.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/lists/CADIListCtrl.h"
#include "zelvar/lists/core/CellCache.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/FirstPaint.h"
#include "zelvar/tool/Screen.h"
#include "zelvar/tool/TableColumns.h"
#include "zelvar/tool/WorkNote.h"

#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QTimer>
#include <QtGui/QClipboard>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <utility>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("table");

constexpr int kAll = std::numeric_limits<int>::max();
constexpr std::size_t kBatch = 16 * 1024;      // rows
constexpr std::chrono::minutes kSortTime{600}; // who waits says when to stop
constexpr int kQuicklySorted = 100'000;        // rows
constexpr int kFittedColumns = 100;
constexpr int kWidestFitted = 300; // pixels
constexpr int kCaptionMargin = 24; // pixels beside a caption, the sort mark included

/// What is asked for beside the file.
struct Wish {
    int sortCol = -1; ///< of the list: 0 is "ID"; -1 for the order of the file
    bool ascending = true;
    int select = -1; ///< id
};

/// The first rows of others, which may know of more.
class FirstStoredRows : public IRowStore {
public:
    FirstStoredRows(std::shared_ptr<IRowStore> all, int most) : m_all(std::move(all)), m_most(most) {}
    [[nodiscard]] TableExtent const &Known() const override { return m_known; }
    [[nodiscard]] bool CountOn(std::int64_t rows, DError *error) override {
        bool const isCounted = m_all->CountOn(std::min(rows, m_most), error);
        m_known = m_all->Known();
        m_known.isEnd = m_known.isEnd || m_known.rows >= m_most;
        m_known.rows = std::min(m_known.rows, m_most);
        return isCounted;
    }
    [[nodiscard]] bool Read(std::vector<std::int64_t> const &wanted, ADIRows &rows, DError *error) override {
        return m_all->Read(wanted, rows, error);
    }
    [[nodiscard]] bool Sort(int col, bool ascending, RowOrder &order, DError *error) override {
        if (!m_all->Sort(col, ascending, order, error))
            return false;
        std::size_t kept = 0;
        bool isTied = true; // with the row that was kept last
        for (std::size_t place = 0; place < order.rows.size(); ++place) {
            isTied = isTied && order.IsTied(place);
            if (order.rows[place] >= m_known.rows)
                continue;
            order.rows[kept] = order.rows[place];
            order.SetTied(kept++, isTied);
            isTied = true;
        }
        order.rows.resize(kept);
        return true;
    }

private:
    std::shared_ptr<IRowStore> m_all;
    std::int64_t m_most;
    TableExtent m_known;
};

/// The first rows of a file's table.
class FirstRows : public ADIFile {
public:
    FirstRows(DString const &file, DString const &options, int most)
        : ADIFile(DFile(file), "", tdFormatAccess_Read, nullptr, options.c_str()), m_most(most) {}
    [[nodiscard]] bool SetRow(int row) override { return row < m_most && ADIFile::SetRow(row); }
    [[nodiscard]] std::shared_ptr<IRowStore> GetRowStore() override {
        std::shared_ptr<IRowStore> store = ADIFile::GetRowStore();
        return store == nullptr || m_most == kAll ? store : std::make_shared<FirstStoredRows>(std::move(store), m_most);
    }

private:
    int m_most;
};

std::optional<int> WholeNumber(DString const &text) {
    int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc{} && end == text.data() + text.size();
    return isWhole && number >= 0 ? std::optional(number) : std::nullopt;
}

// --- lines for scripts ---

void AppendCell(DString &line, int col, std::string_view text) {
    line += col == 0 ? "" : "\t";
    line += EscapeControlBytes(text);
}

void PrintLine(DString &line) {
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stdout);
    line.clear();
}

/// As the file has them, from row `first` on.
int PrintAsRead(IAttrData &table, int first, int most) {
    int printed = 0;
    for (DString line; printed < most && table.SetRow(first + printed); ++printed) {
        for (int col = 0; col < table.GetNumCols(); ++col)
            AppendCell(line, col, table.GetText(col));
        PrintLine(line);
    }
    return printed;
}

/// Of a table whose rows need not be kept. Nothing if they cannot be read.
std::optional<int> PrintStored(IRowStore &store, int columns, Wish const &wish) {
    RowOrder order;
    {
        WorkNote note;
        RequestScope const scope(
            RequestKind::Properties, [&note] { return note.Show(); }, kSortTime);
        while (!store.Known().isEnd)
            if (!store.CountOn(kAll, nullptr))
                return std::nullopt;
        if (!store.Sort(wish.sortCol - 1, wish.ascending, order, nullptr))
            return std::nullopt;
    }
    std::vector<std::int64_t> wanted;
    DString line;
    for (std::size_t place = 0; place < order.rows.size();) {
        std::size_t const most = std::min(place + kBatch, order.rows.size());
        wanted.assign(order.rows.begin() + static_cast<std::ptrdiff_t>(place),
                      order.rows.begin() + static_cast<std::ptrdiff_t>(most));
        ADIRows rows;
        if (!store.Read(wanted, rows, nullptr))
            return std::nullopt;
        for (int cell = 0; cell < rows.count * columns; ++cell) {
            AppendCell(line, cell % columns, rows.Cell(static_cast<std::size_t>(cell)));
            if (cell % columns == columns - 1)
                PrintLine(line);
        }
        place += static_cast<std::size_t>(rows.count);
    }
    return static_cast<int>(order.rows.size());
}

int PrintSorted(IAttrData &table, Wish const &wish) {
    CellCache cache;
    cache.SetStride(static_cast<std::size_t>(table.GetNumCols()));
    while (table.SetRow(cache.Rows())) {
        cache.AddRow();
        for (int col = 0; col < table.GetNumCols(); ++col)
            cache.AddCell(table.GetText(col));
    }
    std::ignore = cache.Sort(wish.sortCol - 1, wish.ascending, {});
    int printed = 0;
    DString line;
    for (int position = 0; position < cache.Rows(); ++position) {
        int const id = cache.IdAt(position);
        if (wish.select >= 0 && id != wish.select)
            continue;
        for (int col = 0; col < table.GetNumCols(); ++col)
            AppendCell(line, col, cache.Cell(id, col));
        PrintLine(line);
        ++printed;
    }
    return printed;
}

int PrintTable(IAttrData &table, DString const &file, Wish const &wish) {
    DString head;
    for (int col = 0; col < table.GetNumCols(); ++col)
        AppendCell(head, col, table.GetColName(col));
    PrintLine(head);
    std::shared_ptr<IRowStore> const store = wish.sortCol > 0 && wish.select < 0 ? table.GetRowStore() : nullptr;
    std::optional<int> const printed = store != nullptr    ? PrintStored(*store, table.GetNumCols(), wish)
                                       : wish.sortCol >= 0 ? PrintSorted(table, wish)
                                       : wish.select >= 0  ? PrintAsRead(table, wish.select, 1)
                                                           : PrintAsRead(table, 0, kAll);
    if (!printed || table.HasFailed())
        return Failure("the table could not be read to its end: " + ReadingFailureOf(file));
    return *printed == 0 ? kNothing : kDone;
}

// --- the window ---

/// The list, which copies the selected rows and says when it has read some.
class ShownTable : public CADIListCtrl {
public:
    ShownTable(IAttrData *table, std::function<void()> changed) : CADIListCtrl(table), m_changed(std::move(changed)) {}

    /// The selected rows that have been read, a line each.
    [[nodiscard]] DString SelectedLines() {
        DString lines;
        for (int row = GetFrstSlct(); row >= 0 && row < GetCacheRows(); row = GetNextItem(row, LVNI_SELECTED)) {
            for (int col = 1; col < GetNumCol(); ++col)
                lines += (col == 1 ? "" : "\t") + EscapeControlBytes(OnGetItemText(row, col));
            lines += '\n';
        }
        return lines;
    }

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->matches(QKeySequence::Copy))
            QApplication::clipboard()->setText(platform::ToQString(SelectedLines()));
        else
            CADIListCtrl::keyPressEvent(event);
    }
    // Whatever changes what there is to be seen ends in a paint.
    void paintEvent(QPaintEvent *event) override {
        CADIListCtrl::paintEvent(event);
        QTimer::singleShot(0, this, [this] { m_changed(); });
    }

private:
    std::function<void()> m_changed;
};

/// A window of one table. It takes its picture when it closes.
class TableWindow : public QWidget {
public:
    TableWindow(IAttrData *table, DString const &title, WindowSize size)
        : m_list(*new ShownTable(table, [this] { OnPainted(); })), m_rows(*new QLabel) {
        setWindowTitle(platform::ToQString(title));
        m_list.ModifyStyle(0, LVS_SHOWSELALWAYS);
        m_list.SetExtendedStyle(LVS_EX_HEADERDRAGDROP | LVS_EX_LABELTIP);
        m_list.setAccessibleName(platform::ToQString(title));
        m_list.AddAllColumns();
        m_rows.setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_rows.setContentsMargins(6, 2, 6, 4);
        auto *const layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(&m_list, 1);
        layout->addWidget(&m_rows);
        resize(size.width, size.height);
        m_list.resize(size.width, size.height);
        m_list.setFocus();
    }

    /// Reads what the first page shows, or all of it for a sort; a long sort begins when the first page is on the
    /// screen. False if there is no row to select.
    [[nodiscard]] bool Prepare(Wish const &wish, bool isLarge) {
        m_list.SetNumRow(std::max(m_list.GetCountPerPage(), std::min(wish.select, kAll - 1)) + 1, 0);
        std::ignore = m_list.OnGetItemText(0, 0);
        if (isLarge && wish.select < 0)
            m_toBeSorted = wish;
        else
            Sort(wish);
        SayRows();
        if (wish.select < 0)
            return true;
        for (int position = 0; position < m_list.GetCacheRows(); ++position)
            if (m_list.GetID(position) == wish.select) {
                m_list.SetItemState(position, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
                m_toBeSeen = position;
                return true;
            }
        return false;
    }
    /// Until it is closed or, where nobody could close it, painted. False if the picture cannot be written.
    bool Run(bool attended, DString const &shot) {
        m_shot = shot;
        TraceFirstPaint(*this);
        show();
        m_list.EnsureVisible(m_toBeSeen);
        FitColumns();
        m_list.EnsureVisible(m_toBeSeen); // a bar below wide columns takes a row's room
        m_isAttended = attended;
        if (!attended && m_toBeSorted.sortCol < 0)
            QTimer::singleShot(0, this, &QWidget::close);
        QApplication::exec();
        return m_isShotWritten;
    }

protected:
    void closeEvent(QCloseEvent *event) override {
        if (!m_shot.empty()) {
            std::ignore = m_list.grab(); // which may read more
            SayRows();
            m_isShotWritten = grab().save(QFile::decodeName(m_shot.c_str()), "PNG");
        }
        QWidget::closeEvent(event);
    }
    void keyPressEvent(QKeyEvent *event) override {
        if (event->key() == Qt::Key_Escape)
            close();
        else
            QWidget::keyPressEvent(event);
    }

private:
    void FitColumns() {
        for (int col = 0; col < std::min(m_list.GetNumCol(), kFittedColumns); ++col) {
            int const caption = m_list.fontMetrics().horizontalAdvance(platform::ToQString(m_list.GetColCaption(col)));
            m_list.SetColumnWidth(col, LVSCW_AUTOSIZE);
            int const width = std::max(m_list.GetColumnWidth(col), caption + kCaptionMargin);
            m_list.SetColumnWidth(col, std::min(width, kWidestFitted));
        }
    }
    void Sort(Wish const &wish) {
        if (wish.sortCol < 0)
            return;
        m_list.Sort(wish.sortCol, wish.ascending);
        if (!m_list.IsSorted())
            return;
        m_list.GetLastSort() = LastSort(wish.sortCol, wish.ascending);
        m_list.SetSortMark(wish.sortCol, wish.ascending);
    }
    void OnPainted() {
        SayRows();
        if (m_toBeSorted.sortCol < 0)
            return;
        Sort(std::exchange(m_toBeSorted, {}));
        FitColumns();
        if (!m_isAttended)
            close();
    }
    void SayRows() {
        QString const count = QLocale(QLocale::English).toString(m_list.GetCacheRows());
        int const rows = m_list.GetCacheRows();
        char const *const form = m_list.IsReadThrough() ? Translated("%1 row", "%1 rows", rows)
                                                        : Translated("%1 row read so far", "%1 rows read so far", rows);
        QString const text = QString::fromUtf8(form).arg(count);
        if (m_rows.text() != text)
            m_rows.setText(text);
    }

    ShownTable &m_list; ///< a child
    QLabel &m_rows;     ///< a child
    int m_toBeSeen = 0; ///< row
    Wish m_toBeSorted;  ///< once the first page is on the screen
    bool m_isAttended = true;
    DString m_shot;
    bool m_isShotWritten = true;
};

int ShowTable(std::unique_ptr<IAttrData> table, DString const &title, WindowSize size, Wish const &wish, bool attended,
              DString const &shot) {
    std::shared_ptr<IRowStore> const store = wish.sortCol > 0 ? table->GetRowStore() : nullptr;
    bool const isLarge = store != nullptr && store->CountOn(kQuicklySorted, nullptr) && !store->Known().isEnd;
    TableWindow window(table.release(), title, size);
    if (!window.Prepare(wish, isLarge)) {
        std::ignore = Failure(Format("there is no row %d", wish.select));
        return kNothing;
    }
    return window.Run(attended, shot) ? kDone : Failure("cannot write '" + shot + "'");
}

} // namespace

int RunTable(std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    std::optional<WindowSize> const size = ParseSize(arguments->Value("--size", "900x600"));
    std::optional<int> const rows = WholeNumber(arguments->Value("--rows", std::to_string(kAll)));
    std::optional<int> const select = WholeNumber(arguments->Value("--select", "0"));
    if (!size)
        return UsageError(kSpec, "a size is written as 640x480");
    if (!rows || !select)
        return UsageError(kSpec, "rows are whole numbers from 0");
    if (arguments->Has("--descending") && !arguments->values.contains("--sort"))
        return UsageError(kSpec, "--descending needs --sort");

    // The readers start while the toolkit does.
    UseReaderDrivers();
    WarmReaders();
    bool const printsOnly = arguments->Has("--print");
    bool const attended = printsOnly || ChoosePlatform();
    std::optional<QApplication> application;
    if (!printsOnly) {
        application.emplace(argc, argv);
        PrepareWindows(*arguments);
        ZelvarInit();
    }
    DString const file = PlaceOf(arguments->words.front());
    DString const layer = arguments->Value("--layer");
    auto table = std::make_unique<FirstRows>(file, layer.empty() ? "" : "LAYER=" + PercentEncoded(layer), *rows);
    if (!table->IsOpen())
        return Failure("cannot read '" + file + "'" + (table->GetError().empty() ? "" : ": " + table->GetError()));
    Wish wish{.ascending = !arguments->Has("--descending")};
    if (arguments->values.contains("--select"))
        wish.select = *select;
    if (arguments->values.contains("--sort")) {
        DString const name = arguments->Value("--sort");
        wish.sortCol = FindColumn(*table, name) + 1;
        if (wish.sortCol == 0 && name != "ID")
            return Failure("there is no column '" + name + "'");
    }
    if (printsOnly)
        return PrintTable(*table, file, wish);
    int const result = ShowTable(std::move(table), BDIMoniker(file, nullptr).GetDisplayName(), *size, wish, attended,
                                 arguments->Value("--shot"));
    ZelvarShutdown();
    return result;
}

} // namespace zelvar::tool
