#pragma once

#include "zelvar/dialogs/core/CDialogTmpl.h"

#include <span>

namespace zelvar {

/// What stands in a dialog template's block: the dialog and its controls, to make windows of.
struct DialogBlock {
    struct Control {
        std::uint32_t style = 0;
        Rect units{};
        std::uint16_t id = 0;
        std::uint16_t classAtom = 0;
        std::u16string title{};
    };

    DlgHeader header{};
    std::u16string caption{};
    std::vector<Control> controls{};
};

/// Nothing for a block that ends too early, or that has a menu, a class, a named class of a control or creation data.
[[nodiscard]] ZELVAR_API std::optional<DialogBlock> ReadDialogBlock(std::span<std::byte const> block);

} // namespace zelvar
