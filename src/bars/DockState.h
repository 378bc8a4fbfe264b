#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

#include <QtCore/QByteArray>

#include <memory>
#include <vector>

class QMainWindow;
class QWidget;

namespace zelvar {

class XMLNode;

// The arrangement of a main window's bars and tool bars as an XML element "DOCKBAR_DATA": what `CZelDockBar::SaveState`
// and `LoadState` are made of. A child "BAR" or "TOOLBAR" a bar, with id and name, its side and order, and the buttons.

[[nodiscard]] std::unique_ptr<XMLNode> SaveDockState(QMainWindow const &window);
bool LoadDockState(QMainWindow &window, XMLNode const &root);

/// Where a bar stands in the order of the layout, `layout` being `QMainWindow::saveState`: what Qt itself saves holds
/// the bars' names in that order, with all that are hidden or float in the places that they come back to. Qt tells it
/// in no other way.
[[nodiscard]] qsizetype PlaceIn(QByteArray const &layout, QWidget const &bar);

/// `rect` so that it can be seen and moved: no larger than a screen, and if no screen holds a good piece of its
/// caption, moved onto the one that is nearest. Any numbers will do; unchanged without screens.
[[nodiscard]] ZELVAR_API Rect BringOntoScreen(Rect const &rect, std::vector<Rect> const &screens);
/// The areas of the desktop's screens that windows may cover.
[[nodiscard]] std::vector<Rect> ScreenRects();

} // namespace zelvar
