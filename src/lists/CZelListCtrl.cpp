#include "zelvar/lists/CZelListCtrl.h"

#include <cstdarg>

namespace zelvar {

namespace {

constexpr ColorRef kWindowBack = 0xFFFFFF;

} // namespace

CZelListCtrl::CZelListCtrl(QWidget *parent) : CListCtrlFlex(parent) {}

CZelListCtrl::~CZelListCtrl() = default;

// --- rows ---

int CZelListCtrl::AddRow() { return InsertRow(m_numRow); }

int CZelListCtrl::InsertRow(int row) {
    m_crntRow = InsertItem(row, {}, 0, nullptr, 0, kWindowBack, 0);
    ++m_numRow;
    return m_crntRow;
}

int CZelListCtrl::AddFirstPiece(DString const &text, RowInfo const *info) {
    if (info == nullptr)
        return InsertItem(m_numRow, text, 0, nullptr, 0, kWindowBack, 0);
    if (info->image == -1)
        return InsertItem(m_numRow, text, info->data, info->font, info->textColor, info->bkColor, info->indent);
    return InsertItem(m_numRow, text, info->image, info->data, info->font, info->textColor, info->bkColor,
                      info->indent);
}

int CZelListCtrl::AddRow(DString const &text, RowInfo const *info) {
    std::size_t end = text.find('|');
    int const result = AddFirstPiece(text.substr(0, end), info);
    m_crntRow = m_numRow++;
    // A "|" at the very end begins no piece.
    for (int col = 1; col < m_numCol && end != DString::npos && end + 1 < text.size(); ++col) {
        std::size_t const begin = end + 1;
        end = text.find('|', begin);
        SetText(m_crntRow, col, text.substr(begin, end == DString::npos ? end : end - begin));
    }
    return result;
}

int CZelListCtrl::AddRowV(char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    DString const text = FormatV(format, arguments);
    va_end(arguments);
    return AddRow(text, nullptr);
}

int CZelListCtrl::AddRowV(RowInfo const *info, char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    DString const text = FormatV(format, arguments);
    va_end(arguments);
    return AddRow(text, info);
}

int CZelListCtrl::AddRowStyle(DString const &text, unsigned style) {
    RowInfo info;
    SetStyle(&info, style);
    return AddRow(text, &info);
}

void CZelListCtrl::SetStyle(RowInfo *info, unsigned style) const {
    RowPalette const colors = RowPalette::Current();
    info->textColor = (style & RowStyleGrey) != 0 ? colors.grey : colors.text;
    info->bkColor = colors.window;
    if ((style & RowStyleShaded) != 0)
        info->bkColor = colors.shaded;
    if ((style & RowStyleAccent) != 0)
        info->bkColor = colors.accent;
    // Grey shading wins over the accent too.
    if ((style & RowStyleGrey) != 0 && (style & RowStyleShaded) != 0)
        info->bkColor = colors.greyShaded;
    info->font = (style & RowStyleBold) != 0 ? m_boldFont.get() : nullptr;
}

void CZelListCtrl::RmvRow(int row) {
    if (DeleteItem(row))
        --m_numRow;
    m_crntRow = 0;
}

void CZelListCtrl::RmvAllRow() {
    DeleteAllItems();
    m_numRow = 0;
}

int CZelListCtrl::GetRowIndex(std::uint64_t itemData) const {
    for (int row = 0; row < m_numRow; ++row)
        if (GetItemData(row) == itemData)
            return row;
    return -1;
}

void CZelListCtrl::Reset() {
    RmvAllRow();
    RmvAllCol();
    DestroyImages();
    m_fitCol = -1;
    m_crntRow = 0;
    GetLastSort() = LastSort();
    SetSortMark(-1, true);
}

// --- cells ---

void CZelListCtrl::SetText(int row, int col, DString const &text) {
    SetItemText(row, col, text);
    m_crntRow = row;
}

void CZelListCtrl::SetColText(int col, double value, int decimals) { SetColText(col, FormatDouble(value, decimals)); }

void CZelListCtrl::SetColText(int col, double value, int decimals, DString const &unit) {
    SetColText(col, FormatDouble(value, decimals) + " " + unit);
}

void CZelListCtrl::SetColKByte(int col, int kilobytes) {
    SetColText(col, kilobytes < 1024 ? std::to_string(kilobytes) + " KB" : FormatDouble(kilobytes / 1024.0, 2) + " MB");
}

void CZelListCtrl::SetImage(int row, int image) {
    SetItemImage(row, image);
    m_crntRow = row;
}

void CZelListCtrl::CreateImages() {
    m_images.Bind(viewport());
    m_images.Create();
    SetImageList(m_images.GetHandle());
}

void CZelListCtrl::DestroyImages() {
    SetImageList(nullptr);
    m_images.Clear();
}

// --- selection ---

void CZelListCtrl::SetSlct(int row, bool on) {
    if (row < 0 || row >= m_numRow)
        return;
    if (on) {
        SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
    } else {
        SetItemState(row, 0, LVIS_SELECTED);
        SetItemState(row, 0, LVIS_FOCUSED);
    }
    m_crntRow = row;
}

int CZelListCtrl::SetSlctByItemData(std::uint64_t itemData, bool on) {
    int const row = GetRowIndex(itemData);
    SetSlct(row, on);
    return row;
}

// Row by row in a stored list, in whole ranges where millions may be selected.
void CZelListCtrl::ClearSlct() { SetItemState(-1, 0, LVIS_SELECTED); }

void CZelListCtrl::GetSlct(DVector<int> &rows) const {
    auto const count = static_cast<std::size_t>(GetNumSlct());
    if (rows.size() < count)
        rows.resize(count);
    std::size_t index = 0;
    for (int row = GetFrstSlct(); row >= 0 && index < count; row = GetNextItem(row, LVNI_SELECTED))
        rows[index++] = row;
}

bool CZelListCtrl::OnClick(ReportHit hit, Point) {
    // A row that Ctrl has just taken out of a selection of several stays out.
    if (IsMultiSlct() && (ClickModifiers() & Qt::ControlModifier) != 0)
        return false;
    if (GetNumSlct() <= 1 && hit.row != -1)
        SetSlct(hit.row, true);
    return false;
}

} // namespace zelvar
