#pragma once

#include "zelvar/base/Geometry.h"

class QWidget;

namespace zelvar {

class OpenPanes;
class OpenSearch;
class SearchForm;
class cdxCDynamicDialog;

/// Where the search of the open dialog stands: its button beside the path, and its bar over the panes, which are lower
/// by as much while it is shown. User-interface thread.
class SearchPlace {
public:
    /// Both outlive it.
    SearchPlace(cdxCDynamicDialog &dialog, OpenPanes &panes) : m_dialog(dialog), m_panes(panes) {}

    /// Makes the button, which takes its room from the path.
    void AddButton(OpenSearch &search) const;
    /// Gives the bar its place, and its fields theirs in the order of the keyboard.
    void TakeForm(SearchForm &form) const;
    /// The bar has come, gone, or wants another height. It takes from the properties what it takes from the pane above
    /// them, and gives it back.
    void LayOut() const;
    /// Makes the place of panes and bar, `rect` without a bar, the one that `child` has now; others stay as they are.
    void Fit(QWidget const *child, OpenSearch const &search, Rect &rect) const;

private:
    cdxCDynamicDialog &m_dialog;
    OpenPanes &m_panes;
};

} // namespace zelvar
