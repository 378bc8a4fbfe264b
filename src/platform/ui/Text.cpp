#include "zelvar/platform/ui/Text.h"

#include "zelvar/base/Translation.h"

#include <QtGui/QTextDocument>

namespace zelvar::platform {

QString ToQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

QString Shown(char const *text) { return QString::fromUtf8(Translated(text)); }

DString ToDString(QString const &text) { return text.toStdString(); }

QString ToToolTip(QString const &text) {
    // Marks are escaped only where the tip would take the text for markup: anywhere else it would show the escapes.
    return Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text;
}

} // namespace zelvar::platform
