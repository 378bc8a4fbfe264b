#include "zelvar/platform/ui/Text.h"

#include "zelvar/base/Translation.h"

#include <QtGui/QTextDocument>

#include <algorithm>

namespace zelvar::platform {

namespace {

/// Of what is shown in a line: longer than a path can be. A text of a megabyte takes seconds to measure.
constexpr qsizetype kMostShown = 4096;

/// Marks that are characters of a direction and turn nothing else, U+200E and U+200F, stay: names in Hebrew have them.
bool MisleadsReader(QChar character) {
    char16_t const code = character.unicode();
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

} // namespace

QString ToQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

QString ToShownName(std::string_view name) {
    QString text = ToQString(name);
    if (text.size() > kMostShown)
        text.replace(kMostShown, text.size(), QChar(0x2026));
    if (std::ranges::none_of(text, MisleadsReader))
        return text;
    QString shown;
    for (QChar const character : text) {
        if (MisleadsReader(character))
            shown += QString::asprintf(character.unicode() < 0x100 ? "\\x%02X" : "\\u%04X", character.unicode());
        else
            shown += character;
    }
    return shown;
}

QString Shown(char const *text) { return QString::fromUtf8(Translated(text)); }

DString ToDString(QString const &text) { return text.toStdString(); }

QString ToToolTip(QString const &text) {
    // Marks are escaped only where the tip would take the text for markup: anywhere else it would show the escapes.
    return Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text;
}

} // namespace zelvar::platform
