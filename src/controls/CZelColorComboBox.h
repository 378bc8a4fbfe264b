#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/controls/CZelComboBox.h"

#include <span>

namespace zelvar {

/// Combo box of colours, each a swatch and a name. It adds to `CZelComboBox` a standard palette, an entry "Automatic"
/// if wanted, and "More colours…", which asks for any colour in a dialog. A colour that has no entry gets one of its
/// own, named by its number as in web pages.
class ZELVAR_API CZelColorComboBox : public CZelComboBox {
    Q_OBJECT

public:
    struct NamedColor {
        ColorRef color = 0;
        char const *name = "";
    };

    /// With the standard palette and "More colours…"; black is chosen.
    explicit CZelColorComboBox(QWidget *parent = nullptr);

    /// Other colours in place of those that are there; the chosen one stays chosen.
    void SetColors(std::span<NamedColor const> colors);
    /// The new or the existing entry of that colour. An empty name is the colour's number.
    int AddColor(ColorRef color, DString const &name = {});
    /// A first entry that stands for `color`, which the application knows; an empty label takes it away.
    void EnableAutomatic(DString const &label, ColorRef color);
    /// The last entry, which opens the dialog; an empty label takes it away.
    void EnableOther(DString const &label);

    /// Automatic or not.
    [[nodiscard]] ColorRef GetColor() const { return m_color; }
    void SetColor(ColorRef color);
    [[nodiscard]] bool IsAutomatic() const { return m_automatic; }
    /// False if there is no such entry.
    bool SelectAutomatic();
    /// As a click on "More colours…"; false if the user left the dialog without a colour.
    bool AskForColor();

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// Another colour is chosen, by the user or the application, or the same one in another way.
    void ColorChanged(zelvar::ColorRef color, bool automatic);

protected:
    void changeEvent(QEvent *event) override;

private:
    enum class Kind : std::uint8_t { Color, Automatic, Other };
    [[nodiscard]] Kind KindOf(int index) const;
    [[nodiscard]] int FindKind(Kind kind) const;
    [[nodiscard]] int FindColor(ColorRef color) const;
    void Insert(int index, DString const &text, Kind kind, ColorRef color);
    void EnableOtherEntry(bool enable);
    void OnCurrentChanged(int index);
    void FitSwatches();

    ColorRef m_color = 0;
    bool m_automatic = false;
};

} // namespace zelvar
