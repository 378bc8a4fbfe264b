#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QWidget>

#include <vector>

class QLineEdit;
class QListWidget;
class QStackedWidget;

namespace zelvar::tool {

/// A page of the gallery: one class, live, with data to play with.
struct GalleryPage {
    char const *name;  ///< as `--page` has it
    char const *title; ///< what the user sees
    QWidget *(*make)();
};

/// All pages in order.
[[nodiscard]] std::vector<GalleryPage> const &GalleryPages();

// What the pages are made of.
[[nodiscard]] QWidget *MakePlotPage();
[[nodiscard]] QWidget *MakeHistogramPage();
[[nodiscard]] QWidget *MakeThematicPage();

/// The gallery's window: the pages in a list with a search box above it, the chosen one beside it. Pages are made when
/// they are first shown.
class Gallery : public QWidget {
public:
    Gallery();
    /// False for a name that no page has.
    bool ShowPage(DString const &name);

private:
    void Filter(QString const &text);
    void ShowRow(int row);

    QLineEdit *m_search;
    QListWidget *m_list;
    QStackedWidget *m_pages;
    std::vector<QWidget *> m_made; ///< by page, null while it has not been shown; the stack's
};

} // namespace zelvar::tool
