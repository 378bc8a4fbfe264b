#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QWidget>

#include <vector>

class QLabel;
class QLineEdit;
class QListWidget;
class QStackedWidget;

namespace zelvar::gallery {

/// A page of the gallery: one class or a few that belong together, live, with data to play with.
struct Page {
    char const *name;    ///< as `--page` has it
    char const *title;   ///< what the user sees
    char const *classes; ///< what it shows, with blanks between
    QWidget *(*make)();  ///< the new page is the caller's
};

// The pages by family, each in its own source.
[[nodiscard]] std::vector<Page> BarPages();
[[nodiscard]] std::vector<Page> ChartPages();
[[nodiscard]] std::vector<Page> ControlPages();
[[nodiscard]] std::vector<Page> MessagePages();
[[nodiscard]] std::vector<Page> ListPages();
[[nodiscard]] std::vector<Page> ThematicPages();
[[nodiscard]] std::vector<Page> DrawingPages();
[[nodiscard]] std::vector<Page> LayoutPages();

/// All pages in order.
[[nodiscard]] std::vector<Page> const &Pages();

/// The gallery's window: the pages in a list with a search box above it, which looks into titles and names of classes,
/// and the chosen page beside it. Pages are made when they are first shown.
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
    QLabel *m_classes;
    QStackedWidget *m_pages;
    std::vector<QWidget *> m_made; ///< by page, null while it has not been shown; the stack's
};

} // namespace zelvar::gallery
