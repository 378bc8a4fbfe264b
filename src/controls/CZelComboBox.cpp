#include "zelvar/controls/CZelComboBox.h"

#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QGuiApplication>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QStyleOption>

namespace zelvar {

namespace {

constexpr int kDataRole = Qt::UserRole;
constexpr int kBytesRole = Qt::UserRole + 1;

} // namespace

CZelComboBox::CZelComboBox(QWidget *parent) : QComboBox(parent) {
    setInsertPolicy(NoInsert);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
}

void CZelComboBox::SetEditable(bool editable) {
    setEditable(editable);
    if (completer() == nullptr)
        return;
    setDuplicatesEnabled(true); // otherwise Return would look for an entry without regard to case
    completer()->setCompletionMode(QCompleter::PopupCompletion);
    // Nor is one put in the text's place when the field is left.
    completer()->setCaseSensitivity(Qt::CaseSensitive);
}

int CZelComboBox::InsertString(int index, DString const &text) {
    int const at = index < 0 || index > count() ? count() : index;
    // The first entry is not chosen by itself.
    int const chosen = currentIndex();
    insertItem(at, platform::ToQString(text));
    setItemData(at, QByteArray(text.data(), static_cast<qsizetype>(text.size())), kBytesRole);
    if (chosen < 0 && currentIndex() >= 0)
        setCurrentIndex(-1);
    return at;
}

void CZelComboBox::SetCurSel(int index) {
    setCurrentIndex(index >= 0 && index < count() ? index : -1);
    if (index < 0 && isEditable())
        clearEditText();
}

DString CZelComboBox::GetLBText(int index) const {
    QByteArray const bytes = itemData(index, kBytesRole).toByteArray();
    return bytes.isEmpty() ? platform::ToDString(itemText(index)) : bytes.toStdString();
}

int CZelComboBox::FindStringExact(DString const &text) const {
    for (int index = 0; index < count(); ++index)
        if (GetLBText(index) == text)
            return index;
    return -1;
}

int CZelComboBox::FindString(DString const &start, int after) const {
    int const from = after < 0 || after >= count() ? 0 : after + 1;
    for (int i = 0; i < count(); ++i)
        if (int const index = (from + i) % count(); StartsWithNoCase(GetLBText(index), start))
            return index;
    return -1;
}

int CZelComboBox::SelectString(DString const &start, int after) {
    int const index = FindString(start, after);
    if (index >= 0)
        SetCurSel(index);
    return index;
}

bool CZelComboBox::SetItemData(int index, std::uint64_t word) {
    if (index < 0 || index >= count())
        return false;
    setItemData(index, QVariant::fromValue<qulonglong>(word), kDataRole);
    return true;
}

std::uint64_t CZelComboBox::GetItemData(int index) const { return itemData(index, kDataRole).toULongLong(); }

DString CZelComboBox::GetWindowText() const {
    int const index = currentIndex();
    return index >= 0 && itemText(index) == currentText() ? GetLBText(index) : platform::ToDString(currentText());
}

void CZelComboBox::SetWindowText(DString const &text) {
    int const index = FindStringExact(text);
    if (index >= 0 || !isEditable())
        SetCurSel(index);
    else
        setEditText(platform::ToQString(text));
}

void CZelComboBox::initStyleOption(QStyleOptionComboBox *option) const {
    QComboBox::initStyleOption(option);
    option->currentText = platform::Isolated(option->currentText, QGuiApplication::layoutDirection());
}

void CZelComboBox::SetTooltip(DString const &text) { setToolTip(platform::ToToolTip(platform::ToQString(text))); }
void CZelComboBox::SetCueBanner(DString const &text) { setPlaceholderText(platform::ToQString(text)); }
void CZelComboBox::SetDroppedWidth(int pixels) { view()->setMinimumWidth(pixels); }

} // namespace zelvar
