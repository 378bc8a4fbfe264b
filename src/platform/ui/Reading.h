#pragma once

#include "zelvar/base/Export.h"

#include <QtCore/QString>
#include <QtCore/Qt>

namespace zelvar::platform {

/// How a text is read, whatever the direction of the window that it stands in.
enum class Reading {
    ByScript,    ///< from the side where its first letter's script begins; from the left without letters, and paths
    LeftToRight, ///< names of files, sizes and dates
};

/// Flags for `QPainter::drawText`: `alignment` counts from where the window begins to read, and the text runs in its
/// own direction. The toolkit alone would turn both, and "543 KB" into "KB 543".
[[nodiscard]] ZELVAR_API int ReadingFlags(QString const &text, Qt::Alignment alignment, Qt::LayoutDirection window,
                                          Reading reading = Reading::ByScript);

/// A text for what the toolkit draws itself in the direction `around`, which is the view's in item views and the
/// application's elsewhere: with marks, which are not seen, that keep its own. For drawing only, never to be stored or
/// compared.
[[nodiscard]] ZELVAR_API QString Isolated(QString const &text, Qt::LayoutDirection around,
                                          Reading reading = Reading::ByScript);

} // namespace zelvar::platform
