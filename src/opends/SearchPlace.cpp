#include "zelvar/opends/SearchPlace.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/opends/OpenControls.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenPanes.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/search/SearchForm.h"
#include "zelvar/platform/ui/ControlId.h"

namespace zelvar {

using platform::GetDlgItem;

void SearchPlace::AddButton(OpenSearch &search) const {
    QWidget *const path = GetDlgItem(m_dialog, kPathPlaceId);
    cdxCDynamicWnd::Position place;
    cdxCDynamicWnd::Position pathPlace;
    if (!m_dialog.GetControlPosition(GetDlgItem(m_dialog, kFavoritesId), place) ||
        !m_dialog.GetControlPosition(path, pathPlace))
        return;
    auto *const button = new CZelButton(&m_dialog);
    platform::SetDlgCtrlID(*button, kSearchId);
    SetUpToolButton(m_dialog, kSearchId, "search", Translated("Search below this place (Ctrl+F)"));
    int const step = place.right - place.left;
    pathPlace.right -= step;
    place.left -= step;
    place.right -= step;
    m_dialog.AddSzControl(path, pathPlace, true);
    m_dialog.AddSzControl(button, place, true);
    button->show();
    QObject::connect(button, &QAbstractButton::clicked, &search, &OpenSearch::Open);
    QWidget::setTabOrder(GetDlgItem(m_dialog, kHomeId), button);
}

void SearchPlace::TakeForm(SearchForm &form) const {
    m_dialog.AddSzControl(&form, GetDlgItem(m_dialog, kSplitterPlaceId), true);
    QWidget *before = GetDlgItem(m_dialog, kRecursiveId);
    for (QWidget *const control : form.FocusOrder()) {
        QWidget::setTabOrder(before, control);
        before = control;
    }
}

void SearchPlace::LayOut() const {
    m_panes.ChangeHeight([this] { m_dialog.Layout(); });
}

void SearchPlace::Fit(QWidget const *child, OpenSearch const &search, Rect &rect) const {
    bool const isForm = child != nullptr && child == search.Form();
    if (child != m_panes.Splitter() && !isForm)
        return;
    int const height = search.HeightFor(rect.Width(), rect.Height() * 2 / 3);
    if (isForm)
        rect.bottom = rect.top + height;
    else
        rect.top += height;
}

} // namespace zelvar
