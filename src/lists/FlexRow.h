#pragma once

#include "zelvar/base/Color.h"

#include <cstdint>

class QFont;

namespace zelvar {

class CListCtrlFlex;

/// The record behind a row of a flexible list. Owned by the list until the list dies, longer than the row may live.
struct FlexRow {
    CListCtrlFlex *owner = nullptr;
    FlexRow *next = nullptr;     ///< the chain of all records, newest first
    std::uint64_t data = 0;      ///< the caller's
    QFont const *font = nullptr; ///< not owned; null for the list's font
    ColorRef textColor = 0;      ///< while the row is not selected, as `bkColor`
    ColorRef bkColor = 0;
    int indent = 0; ///< pixels left of the row's content
    union {
        char const *text;
        double number;
    } sortVal{nullptr}; ///< valid only during a sort
};

} // namespace zelvar
