#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/lists/CListCtrlFlex.h"
#include "zelvar/platform/ui/WindowTimers.h"

#include <QtGui/QFont>

#include <map>
#include <memory>

namespace zelvar {

/// How a row looks; a bit set.
enum RowStyle : unsigned {
    RowStyleShaded = 1,
    RowStyleAccent = 2, ///< wins over `RowStyleShaded`
    RowStyleBold = 4,
    RowStyleGrey = 8,
};

/// Row-and-column list: a table is filled with `AddCol`, `AddRow` and `SetColText`, without bookkeeping of indexes.
///
/// The current row is the target of all operations without a row; every operation that is given or makes a row makes it
/// the current one. Rows are counted by these operations: those that come or go past them are not.
class ZELVAR_API CZelListCtrl : public CListCtrlFlex {
    Q_OBJECT

public:
    /// A row to be added.
    struct RowInfo {
        int image = -1;
        ColorRef textColor = 0;
        ColorRef bkColor = 0;
        QFont const *font = nullptr; ///< not owned; null for the list's
        std::uint64_t data = 0;
        int indent = 0; ///< pixels
    };

    explicit CZelListCtrl(QWidget *parent = nullptr);
    ~CZelListCtrl() override;

    int AddRow();
    int InsertRow(int row);
    /// The cells are the pieces between "|"; what is more than the columns is dropped.
    int AddRow(DString const &text, RowInfo const *info);
    int AddRowV(char const *format, ...) __attribute__((format(printf, 2, 3)));
    int AddRowV(RowInfo const *info, char const *format, ...) __attribute__((format(printf, 3, 4)));
    int AddRowStyle(DString const &text, unsigned style);
    /// Writes the colours and the font; the rest of `info` stays.
    void SetStyle(RowInfo *info, unsigned style) const;
    void RmvRow(int row); ///< row 0 becomes the current one
    void RmvAllRow();
    [[nodiscard]] int GetNumRow() const { return m_numRow; }
    [[nodiscard]] int GetNumCol() const { return m_numCol; }
    [[nodiscard]] int GetCrntRow() const { return m_crntRow; }
    void SetCrntRow(int row) { m_crntRow = row; }
    void SetData(std::uint64_t itemData) { SetItemData(m_crntRow, itemData); }
    [[nodiscard]] std::uint64_t GetData() const { return GetItemData(m_crntRow); }
    /// The first row with this data, -1 for none.
    [[nodiscard]] int GetRowIndex(std::uint64_t itemData) const;
    /// As after construction, but for the fonts and the saved widths.
    virtual void Reset();

    void SetText(int row, int col, DString const &text);
    void SetText(DString const &text) { SetText(m_crntRow, 0, text); }
    void SetColText(int col, DString const &text) { SetText(m_crntRow, col, text); }
    void SetColText(int col, double value, int decimals);
    void SetColText(int col, double value, int decimals, DString const &unit);
    void SetColKByte(int col, int kilobytes);
    void SetImage(int row, int image);
    void SetImage(int image) { SetImage(m_crntRow, image); }
    void SetIcon(int row, unsigned iconId) { SetImage(row, m_images.GetIcon(iconId, nullptr)); }
    void SetIcon(unsigned iconId) { SetIcon(m_crntRow, iconId); }

    void AddCol(DString const &caption, ADIColType type, bool editable, int width, int format);
    /// As wide as `sample`.
    void AddCol(DString const &caption, DString const &sample, ADIColType type, int format, bool editable);
    void SetColCaption(int col, DString const &caption) { SetColumnCaption(col, caption); }
    [[nodiscard]] DString GetColCaption(int col) const; ///< at most 1,023 bytes
    void SetColWidth(int col, int width) { SetColumnWidth(col, width); }
    void SetColWidth(int col, DString const &sample) { SetColumnWidth(col, WidthOf(sample)); }
    void RmvAllCol() override;
    void ResizeColToFit();
    void ResizeColToFitUseHeader();
    void ResizeColToFit(int col);
    /// Gives `col` all the room that the other columns leave, now and after each change of the list's size.
    void EnlargeCol(int col, bool);
    /// Kept by caption, or by number where there is none; in memory only.
    void SaveColWidth();
    void RestoreColWidth();
    [[nodiscard]] bool HasSavedColWidth() const { return !m_savedWidths.empty(); }

    void SetSlct(int row, bool on); ///< nothing for a row outside
    void SetSlct(bool on) { SetSlct(m_crntRow, on); }
    int SetSlctByItemData(std::uint64_t itemData, bool on); ///< the row, negative for none
    void ClearSlct();
    [[nodiscard]] bool GetSlct(int row) const { return GetItemState(row, LVIS_SELECTED) != 0; }
    [[nodiscard]] int GetCrntSlct() const { return GetNextItem(-1, LVNI_SELECTED); } ///< the first one, -1 for none
    [[nodiscard]] int GetFrstSlct() const { return GetCrntSlct(); }
    [[nodiscard]] int GetNumSlct() const { return GetSelectedCount(); }
    /// Fills `rows` from its start and never shrinks it: the caller passes an empty one.
    void GetSlct(DVector<int> &rows) const;
    void SetMultiSlct(bool multiple) { ModifyStyle(LVS_SINGLESEL, multiple ? 0U : LVS_SINGLESEL); }
    [[nodiscard]] bool IsMultiSlct() const { return (GetStyle() & LVS_SINGLESEL) == 0; }

    /// Asks for a file (see `SaveTarget.h`) and writes the list to it as a table. The texts "---" and "undefined" go
    /// out as they are, others as the column's type reads them. A name that ends like another format of tables gets
    /// that one. Without a message, whatever comes of it.
    void SaveToFile();

    void CreateImages();
    void DestroyImages();
    [[nodiscard]] CZelImageList &GetZelImageList() { return m_images; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    bool OnClick(ReportHit hit, Point point) override;
    bool OnRClick(ReportHit hit, Point point) override { return CZelListCtrl::OnClick(hit, point); }
    void SetNumRowMember(int rows) { m_numRow = rows; } ///< for lists that store no rows

private:
    [[nodiscard]] int WidthOf(DString const &sample) const;
    [[nodiscard]] DString ColumnKey(int col) const;
    int AddFirstPiece(DString const &text, RowInfo const *info);
    void FitAll(int how);

    int m_numRow = 0;
    int m_numCol = 0;
    int m_crntRow = 0;
    int m_fitCol = -1;
    CZelImageList m_images;
    std::unique_ptr<QFont> m_mediumFont;
    std::unique_ptr<QFont> m_boldFont;
    std::map<DString, int> m_savedWidths; ///< column key to pixels
    platform::WindowTimers m_timers{*this};
};

} // namespace zelvar
