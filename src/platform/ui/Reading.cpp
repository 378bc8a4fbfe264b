#include "zelvar/platform/ui/Reading.h"

#include <QtWidgets/QStyle>

namespace zelvar::platform {

namespace {

Qt::LayoutDirection DirectionOf(QString const &text, Reading reading) {
    bool const isPath = reading == Reading::LeftToRight || text.startsWith(u'/');
    return !isPath && text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

} // namespace

int ReadingFlags(QString const &text, Qt::Alignment alignment, Qt::LayoutDirection window, Reading reading) {
    // Absolute, or the text's own direction would turn the sides once more.
    Qt::Alignment const side = QStyle::visualAlignment(window, alignment) | Qt::AlignAbsolute;
    bool const fromRight = DirectionOf(text, reading) == Qt::RightToLeft;
    return static_cast<int>(side) | (fromRight ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight);
}

QString Isolated(QString const &text, Qt::LayoutDirection around, Reading reading) {
    constexpr char16_t leftToRight = 0x2066;
    constexpr char16_t rightToLeft = 0x2067;
    constexpr char16_t end = 0x2069;
    Qt::LayoutDirection const own = DirectionOf(text, reading);
    if (text.isEmpty() || own == around)
        return text;
    return QChar(own == Qt::LeftToRight ? leftToRight : rightToLeft) + text + QChar(end);
}

} // namespace zelvar::platform
