#include "zelvar/platform/ui/Reading.h"

#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/ReportTypes.h"

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <gtest/gtest.h>

namespace zelvar::platform {
namespace {

QImage Drawn(char const *text, int format, Qt::LayoutDirection window, Reading reading = Reading::ByScript) {
    QImage image(150, 20, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setLayoutDirection(window);
    DrawCellText(painter, {0, 0, 150, 20}, text, format, CellPlace::Top, reading);
    return image;
}

TEST(Reading, ATextKeepsItsOwnDirectionInEitherWindow) {
    using enum Reading;
    std::tuple<char const *, Reading, bool> const cases[] = {
        {"543 KB", ByScript, false}, {"tail.", ByScript, false},       {"(2) שלום", ByScript, true},
        {"/שלום/", ByScript, false}, {"שלום.tif", LeftToRight, false}, {"", ByScript, false}};
    for (auto const &[text, reading, fromRight] : cases) {
        QString const plain = QString::fromUtf8(text);
        QString const marked = QChar(fromRight ? 0x2067 : 0x2066) + plain + QChar(0x2069);
        EXPECT_EQ(Isolated(plain, fromRight ? Qt::RightToLeft : Qt::LeftToRight, reading), plain);
        EXPECT_EQ(Isolated(plain, fromRight ? Qt::LeftToRight : Qt::RightToLeft, reading),
                  plain.isEmpty() ? plain : marked);
        for (auto const &[here, there] : {std::pair{LVCFMT_LEFT, LVCFMT_RIGHT}, {LVCFMT_RIGHT, LVCFMT_LEFT}})
            EXPECT_EQ(Drawn(text, here, Qt::LeftToRight, reading), Drawn(text, there, Qt::RightToLeft, reading))
                << text;
    }
    EXPECT_NE(Drawn("שלום.tif", LVCFMT_LEFT, Qt::RightToLeft),
              Drawn("שלום.tif", LVCFMT_LEFT, Qt::RightToLeft, Reading::LeftToRight));
}

TEST(Reading, ANameThatWouldReadAsAnotherOneShowsWhatItIs) {
    std::pair<char const *, char const *> const cases[] = {
        {"\u202Egpj.tif", "\\u202Egpj.tif"},        {"a\u2067b\u2069", "a\\u2067b\\u2069"},
        {"new\nline\x7F", "new\\x0Aline\\x7F"},     {"a\u0085\u2028b", "a\\x85\\u2028b"},
        {"\u200Fשלום  %.tif", "\u200Fשלום  %.tif"}, {"", ""}};
    for (auto const &[name, shown] : cases)
        EXPECT_EQ(ToShownName(name), QString::fromUtf8(shown));
    EXPECT_EQ(ToShownName(std::string(1U << 20U, 'x')).size(), 4097) << "which takes no time to measure";
}

} // namespace
} // namespace zelvar::platform
