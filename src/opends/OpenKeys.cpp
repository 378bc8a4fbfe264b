#include "zelvar/opends/OpenKeys.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/layout/SplitterBar.h"
#include "zelvar/model/ListingsShared.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/ImageExtraWnd.h"
#include "zelvar/opends/NamedData.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenFields.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/opends/OpenPanes.h"
#include "zelvar/opends/OpenParts.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceNotice.h"
#include "zelvar/opends/PlaceOpener.h"
#include "zelvar/opends/PreviewBar.h"
#include "zelvar/opends/SelectionOptions.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/search/SearchForm.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

#include <utility>

namespace zelvar {

namespace {

bool IsWithin(QWidget const *ancestor, QWidget const &widget) {
    return ancestor != nullptr && (ancestor == &widget || ancestor->isAncestorOf(&widget));
}

} // namespace

OpenKeys::OpenKeys(DlgOpenDS &dialog, OpenPanes const &panes, OpenFields const &fields, OpenParts &parts,
                   SelectionOptions const &options, Actions actions)
    : m_dialog(dialog), m_panes(panes), m_fields(fields), m_parts(parts), m_options(options),
      m_actions(std::move(actions)) {}

bool OpenKeys::Take(QKeyEvent const &key, QWidget &focus) const {
    if (m_parts.Search() != nullptr && key.matches(QKeySequence::Find)) {
        m_parts.Search()->Open();
        return true;
    }
    return ProcessKey(key.key(), focus);
}

bool OpenKeys::ProcessKey(int key, QWidget &focus) const {
    if (qobject_cast<SplitterBar *>(&focus) != nullptr)
        return false; // it has its own keys
    OpenSearch *const search = m_parts.Search();
    switch (key) {
    case Qt::Key_Down:
        return search != nullptr && search->GoToResults(focus);
    case Qt::Key_F8:
        return m_panes.Splitter()->MoveBarsByKeyboard();
    case Qt::Key_F5:
        ProcessRefreshKey(focus);
        return true;
    case Qt::Key_Escape:
        // Else it closes the dialog.
        return m_dialog.Waits()->Stop() || (search != nullptr && search->Stop());
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return ProcessReturnKey(focus);
    case Qt::Key_Tab:
        return ProcessTabKey(focus);
    case Qt::Key_Backtab:
        return ProcessBacktabKey(focus);
    case Qt::Key_Insert:
        return ProcessInsertKey(focus);
    default:
        return false;
    }
}

void OpenKeys::ProcessRefreshKey(QWidget const &focus) const {
    if (m_dialog.Waits()->Retry() || (m_parts.Search() != nullptr && m_parts.Search()->Again()))
        return;
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    if (IsWithin(m_panes.Sources(), focus)) {
        m_panes.Sources()->ResetSelectedItems();
    } else if (IsWithin(m_panes.Hierarchy(), focus)) {
        m_panes.Hierarchy()->Refresh();
        m_panes.Items()->Refresh();
    } else if (IsWithin(m_panes.Folders(), focus)) {
        m_panes.Folders()->Refresh();
    } else if (IsWithin(m_panes.Items(), focus)) {
        m_panes.Items()->Refresh();
    }
}

void OpenKeys::GoToTyped() const {
    CZelComboBox &places = *m_fields.Places();
    DString const typed = DlgOpenDS::FixPath(places.GetWindowText().c_str());
    DString const path = TakeSecrets(typed);
    if (path != typed)
        places.setEditText(platform::ToQString(path));
    bool const isOfServer = PlaceOpener::IsFor(path); // nothing waits for one
    NamedData *const named = m_parts.Named();
    if (!path.empty() && (isOfServer || named == nullptr || !named->Show({path})))
        m_dialog.GoToDir(path, true);
}

bool OpenKeys::ProcessReturnKey(QWidget &focus) const {
    if (IsWithin(m_fields.Places(), focus)) {
        GoToTyped();
        return true;
    }
    if (&focus == m_fields.MaskEdit()) {
        m_dialog.ApplyFileFilter(m_fields.Mask().c_str(), nullptr);
        return true;
    }
    // The button that has the focus is the one that is pressed, not the dialog's own.
    if (auto *const button = qobject_cast<QPushButton *>(&focus)) {
        button->click();
        return true;
    }
    if (OpenSearch *const search = m_parts.Search(); search != nullptr && IsWithin(search->Form(), focus)) {
        search->Begin();
        return true;
    }
    DSPropertyWnd const &properties = *m_panes.Properties();
    if (qobject_cast<QAbstractButton *>(&focus) != nullptr || IsWithin(properties.Bar(), focus))
        return false;
    if (IsWithin(m_panes.Sources(), focus) && m_panes.Sources()->ActivateRow())
        return true;
    if (m_options.IsDriverPageShown() && IsWithin(properties.Extra(), focus)) {
        m_panes.Properties()->ApplyOptions();
        m_actions.optionsChanged();
        return true;
    }
    m_actions.accept();
    return true;
}

bool OpenKeys::ProcessInsertKey(QWidget const &focus) const {
    if (m_parts.Basket() == nullptr || !IsWithin(m_panes.Items(), focus))
        return false;
    OpenParts::ItemList items;
    m_panes.Items()->GetSelectedItems(items);
    m_parts.AddToBasket(items);
    return true;
}

QWidget *OpenKeys::FirstPane() const {
    return m_panes.SourceWnd()->IsDataSourceView() ? static_cast<QWidget *>(m_panes.Sources()) : m_panes.Folders();
}

// The way back through the panes; elsewhere the toolkit's own order does.
bool OpenKeys::ProcessBacktabKey(QWidget const &focus) const {
    HierarchyList &hierarchy = *m_panes.Hierarchy();
    if (hierarchy.FocusPaneBefore(&focus))
        return true;
    QWidget *const before = &focus == m_panes.Items()        ? hierarchy.GetPane(hierarchy.GetPaneCount() - 1)
                            : &focus == hierarchy.GetPane(0) ? FirstPane()
                                                             : nullptr;
    if (before != nullptr)
        before->setFocus(Qt::BacktabFocusReason);
    return before != nullptr;
}

bool OpenKeys::ProcessTabKey(QWidget &focus) const {
    if (m_panes.Hierarchy()->FocusPaneBehind(&focus))
        return true;
    struct Step {
        QWidget *from;
        QWidget *to;
    };
    // Over a list without rows its buttons stand in for it.
    PlaceNotice const *const notice = m_dialog.Waits()->Notice();
    QWidget *items = m_panes.Items();
    if (QPushButton *const next = notice == nullptr ? nullptr : notice->NextButton(&focus)) {
        if (IsWithin(items, focus)) {
            next->setFocus(Qt::TabFocusReason);
            return true;
        }
        items = m_panes.Items()->GetNumRow() == 0 ? next : items;
    }
    QWidget *const hierarchy = m_panes.Hierarchy()->GetPane(0);
    auto *const line = platform::GetDlgItem<OpenLine>(m_dialog, kLineId);
    bool const hasChoice = line != nullptr && line->Drivers()->isVisible();
    QWidget *const belowPanes = hasChoice ? line->Drivers() : m_fields.Places();
    Step const steps[] = {
        {m_panes.Sources(), hierarchy},
        {m_panes.Folders(), hierarchy},
        {m_panes.Hierarchy(), items},
        {m_panes.Items(), belowPanes},
        {line, m_fields.Places()},
        {m_fields.Places(), m_fields.MaskEdit()},
        {m_fields.MaskEdit(), m_fields.Formats()},
        {m_fields.Formats(), FirstPane()},
    };
    for (Step const &step : steps) {
        if (!IsWithin(step.from, focus))
            continue;
        step.to->setFocus(Qt::TabFocusReason);
        return true;
    }
    return false;
}

} // namespace zelvar
