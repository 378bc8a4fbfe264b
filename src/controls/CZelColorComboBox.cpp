#include "zelvar/controls/CZelColorComboBox.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/ControlIcons.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QEvent>
#include <QtCore/QPointer>
#include <QtGui/QStandardItemModel>
#include <QtWidgets/QColorDialog>

#include <array>

namespace zelvar {

namespace {

constexpr int kKindRole = Qt::UserRole + 10;
constexpr int kColorRole = Qt::UserRole + 11;
constexpr ColorRef kColorBits = 0x00FFFFFF;

constexpr std::array<CZelColorComboBox::NamedColor, 20> kStandard{{
    {Rgb(0, 0, 0), Mark("Black")},        {Rgb(255, 255, 255), Mark("White")},    {Rgb(128, 128, 128), Mark("Gray")},
    {Rgb(192, 192, 192), Mark("Silver")}, {Rgb(128, 0, 0), Mark("Maroon")},       {Rgb(255, 0, 0), Mark("Red")},
    {Rgb(255, 165, 0), Mark("Orange")},   {Rgb(139, 69, 19), Mark("Brown")},      {Rgb(128, 128, 0), Mark("Olive")},
    {Rgb(255, 255, 0), Mark("Yellow")},   {Rgb(0, 128, 0), Mark("Green")},        {Rgb(0, 255, 0), Mark("Lime")},
    {Rgb(0, 128, 128), Mark("Teal")},     {Rgb(0, 255, 255), Mark("Cyan")},       {Rgb(0, 0, 128), Mark("Navy")},
    {Rgb(0, 0, 255), Mark("Blue")},       {Rgb(128, 0, 128), Mark("Purple")},     {Rgb(255, 0, 255), Mark("Magenta")},
    {Rgb(255, 192, 203), Mark("Pink")},   {Rgb(135, 206, 235), Mark("Sky blue")},
}};

} // namespace

CZelColorComboBox::CZelColorComboBox(QWidget *parent) : CZelComboBox(parent) {
    setSizeAdjustPolicy(AdjustToContents);
    FitSwatches();
    for (NamedColor const &color : kStandard)
        AddColor(color.color, Translated(color.name));
    EnableOther(Translated("More colours…"));
    SetCurSel(0);
    connect(this, &QComboBox::currentIndexChanged, this, &CZelColorComboBox::OnCurrentChanged);
    connect(this, &QComboBox::activated, this, [this](int index) {
        if (KindOf(index) == Kind::Other)
            AskForColor();
    });
}

CZelColorComboBox::Kind CZelColorComboBox::KindOf(int index) const {
    return static_cast<Kind>(itemData(index, kKindRole).toInt());
}

int CZelColorComboBox::FindKind(Kind kind) const {
    int const index = kind == Kind::Automatic ? 0 : count() - 1;
    return index >= 0 && index < count() && KindOf(index) == kind ? index : -1;
}

int CZelColorComboBox::FindColor(ColorRef color) const {
    for (int index = 0; index < count(); ++index)
        if (KindOf(index) == Kind::Color && itemData(index, kColorRole).toUInt() == color)
            return index;
    return -1;
}

void CZelColorComboBox::Insert(int index, DString const &text, Kind kind, ColorRef color) {
    int const at = InsertString(index, text);
    setItemData(at, static_cast<int>(kind), kKindRole);
    setItemData(at, color, kColorRole);
    if (kind != Kind::Other)
        setItemIcon(at, SwatchIcon(color));
}

void CZelColorComboBox::SetColors(std::span<NamedColor const> colors) {
    {
        QSignalBlocker const quiet(this);
        for (int index = count() - 1; index >= 0; --index)
            if (KindOf(index) == Kind::Color)
                removeItem(index);
        for (NamedColor const &color : colors)
            AddColor(color.color, color.name);
    }
    if (!m_automatic || !SelectAutomatic())
        SetColor(m_color);
}

int CZelColorComboBox::AddColor(ColorRef color, DString const &name) {
    color &= kColorBits;
    if (int const known = FindColor(color); known >= 0)
        return known;
    int const other = FindKind(Kind::Other);
    int const at = other < 0 ? count() : other;
    Insert(at, name.empty() ? Format("#%02X%02X%02X", RedOf(color), GreenOf(color), BlueOf(color)) : name, Kind::Color,
           color);
    return at;
}

void CZelColorComboBox::EnableAutomatic(DString const &label, ColorRef color) {
    bool const chosen = m_automatic;
    {
        QSignalBlocker const quiet(this);
        if (FindKind(Kind::Automatic) >= 0)
            removeItem(0);
        if (!label.empty())
            Insert(0, label, Kind::Automatic, color & kColorBits);
    }
    if (!chosen || !SelectAutomatic())
        SetColor(m_color);
}

void CZelColorComboBox::EnableOther(DString const &label) {
    if (int const other = FindKind(Kind::Other); other >= 0)
        removeItem(other);
    if (label.empty())
        return;
    Insert(count(), label, Kind::Other, 0);
    EnableOtherEntry(false);
}

void CZelColorComboBox::SetColor(ColorRef color) {
    int const index = AddColor(color);
    setCurrentIndex(index);
    OnCurrentChanged(index); // an entry that was current already may have stood for something else
}

bool CZelColorComboBox::SelectAutomatic() {
    int const index = FindKind(Kind::Automatic);
    if (index < 0)
        return false;
    setCurrentIndex(index);
    OnCurrentChanged(index);
    return true;
}

bool CZelColorComboBox::AskForColor() {
    if (!m_automatic || !SelectAutomatic())
        SetColor(m_color); // the field shows a colour while the dialog is open
    QPointer<CZelColorComboBox> const alive(this);
    QPointer<QColorDialog> const dialog(new QColorDialog(platform::ToQColor(m_color), window()));
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    bool const accepted = platform::RunModal(*dialog) == QDialog::Accepted;
    if (dialog.isNull())
        return false;
    ColorRef const color = platform::ToColorRef(dialog->selectedColor());
    delete dialog;
    if (accepted && !alive.isNull())
        SetColor(color);
    return accepted;
}

void CZelColorComboBox::OnCurrentChanged(int index) {
    if (index < 0 || KindOf(index) == Kind::Other)
        return;
    ColorRef const color = itemData(index, kColorRole).toUInt();
    bool const automatic = KindOf(index) == Kind::Automatic;
    if (color == m_color && automatic == m_automatic)
        return;
    m_color = color;
    m_automatic = automatic;
    Q_EMIT ColorChanged(color, automatic);
}

// Arrow keys and the wheel pass the entries of a closed list one by one and must not open a dialog on their way.
void CZelColorComboBox::EnableOtherEntry(bool enable) {
    auto *const items = qobject_cast<QStandardItemModel *>(model());
    if (int const other = FindKind(Kind::Other); items != nullptr && other >= 0)
        items->item(other)->setEnabled(enable);
}

void CZelColorComboBox::showPopup() {
    EnableOtherEntry(true);
    CZelComboBox::showPopup();
}

void CZelColorComboBox::hidePopup() {
    CZelComboBox::hidePopup();
    EnableOtherEntry(false);
}

void CZelColorComboBox::changeEvent(QEvent *event) {
    CZelComboBox::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        FitSwatches();
}

void CZelColorComboBox::FitSwatches() {
    int const height = fontMetrics().height() - 2;
    setIconSize(QSize(height * 2, height));
}

} // namespace zelvar
