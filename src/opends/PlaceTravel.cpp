#include "zelvar/opends/PlaceTravel.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QShortcut>
#include <QtWidgets/QMenu>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr int kButtonRatio = 5; // width by height, in quarters
constexpr int kGap = 6;         // pixels behind the buttons
constexpr int kMenuChars = 70;  // of a path, as wide as the font's average

CZelButton *NewButton(QWidget &dialog, char const *name, char const *picture, char const *tip) {
    auto *const button = new CZelButton(&dialog);
    button->setObjectName(name);
    button->setFlat(true);
    button->SetImage(picture);
    button->SetTooltip(tip);
    return button;
}

} // namespace

PlaceTravel::PlaceTravel(QWidget &dialog, DSListCtrl &items, DString kind, Actions actions)
    : m_dialog(dialog), m_items(items), m_kept(std::move(kind)), m_actions(std::move(actions)),
      m_back(NewButton(dialog, "goBack", "back", Translated("Back (Alt+Left)"))),
      m_forward(NewButton(dialog, "goForward", "forward", Translated("Forward (Alt+Right)"))),
      m_recent(NewButton(dialog, "goRecent", "recent", Translated("Recent places (Ctrl+H)"))) {
    connect(&items, &DSListCtrl::PlaceLeft, this, &PlaceTravel::OnLeft);
    connect(&items, &DSListCtrl::PlaceShown, this, &PlaceTravel::OnShown);
    connect(m_back, &QAbstractButton::clicked, this, [this] { Travel(-1); });
    connect(m_forward, &QAbstractButton::clicked, this, [this] { Travel(1); });
    connect(m_recent, &QAbstractButton::clicked, this, &PlaceTravel::RunMenu);
    auto const onKey = [&](QKeyCombination key, auto act) {
        auto *const shortcut = new QShortcut(key, &dialog);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    onKey(Qt::ALT | Qt::Key_Left, [this] { Travel(-1); });
    onKey(Qt::ALT | Qt::Key_Right, [this] { Travel(1); });
    onKey(Qt::CTRL | Qt::Key_H, [this] { RunMenu(); });
    ShowState();
}

PlaceTravel::~PlaceTravel() = default;

QRect PlaceTravel::Arrange(QRect row) {
    int const width = row.height() * kButtonRatio / 4;
    for (CZelButton *const button : {m_back, m_forward, m_recent}) {
        button->setGeometry(row.left(), row.top(), width, row.height());
        button->show();
        row.setLeft(row.left() + width);
    }
    row.setLeft(row.left() + kGap);
    return row;
}

void PlaceTravel::ShowState() {
    // A button that is pressed keeps the focus only while it can be pressed.
    QWidget *const focus = m_dialog.focusWidget();
    m_back->setEnabled(m_history.CanGo(-1));
    m_forward->setEnabled(m_history.CanGo(1));
    if (focus != nullptr && !focus->isEnabled())
        m_items.setFocus();
}

// ------------------------------------------------------------------------------------------ what the list shows

/// Several folders at once are a look, no place; what is not open yet has no path.
DString PlaceTravel::ShownPath() const {
    ItemList roots;
    m_items.GetRootItems(roots);
    return roots.size() == 1 && roots.front() != nullptr ? roots.front()->GetPath() : DString();
}

PlaceView PlaceTravel::View() const {
    PlaceView view;
    for (int row = m_items.GetNextItem(-1, LVNI_SELECTED); row >= 0 && view.selected.size() < PlaceView::kMostSelected;
         row = m_items.GetNextItem(row, LVNI_SELECTED))
        if (RefItemPtr<DataSourceItem> const item = m_items.ItemAt(row); item != nullptr)
            view.selected.push_back(item->GetPath());
    view.topRow = m_items.GetTopIndex();
    if (RefItemPtr<DataSourceItem> const item = m_items.ItemAt(view.topRow); item != nullptr)
        view.top = item->GetPath();
    return view;
}

void PlaceTravel::OnLeft() {
    DString const shown = ShownPath();
    if (m_history.Present() == nullptr || m_history.Present()->path != shown || (m_wanted && m_wanted->path == shown))
        return; // it is not shown, or has not come back yet
    PlaceView view = View();
    if (!view.selected.empty())
        m_isPassing = false;
    m_history.Keep(std::move(view));
}

void PlaceTravel::OnShown() {
    DString const path = ShownPath();
    if (path.empty())
        return;
    ItemList roots;
    m_items.GetRootItems(roots);
    bool const wasPassing = m_isPassing && m_since.isValid() && m_since.elapsed() < m_passing.count();
    m_history.Enter(roots.front(), wasPassing);
    m_isPassing = true;
    m_since.start();
    if (m_wanted && m_wanted->path != path)
        m_wanted.reset(); // the user has gone elsewhere
    if (m_wanted)
        RestoreSoon();
    ShowState();
}

/// Behind the rows.
void PlaceTravel::RestoreSoon() { QMetaObject::invokeMethod(this, &PlaceTravel::Restore, Qt::QueuedConnection); }

void PlaceTravel::Restore() {
    if (!m_wanted || m_items.IsListing() || m_wanted->path != ShownPath())
        return;
    PlaceView const view = std::exchange(m_wanted, std::nullopt)->view;
    if (m_items.GetNumSlct() == 0 && !view.selected.empty())
        m_items.SelectPaths(view.selected);
    auto const isTop = [&](int row) {
        RefItemPtr<DataSourceItem> const item = m_items.ItemAt(row);
        return item != nullptr && item->GetPath() == view.top;
    };
    int const count = m_items.GetNumRow();
    int top = isTop(view.topRow) ? view.topRow : -1;
    for (int row = 0; top < 0 && row < count; ++row)
        top = isTop(row) ? row : -1;
    if (top < 0)
        return;
    m_items.EnsureVisible(count - 1); // from there it comes to stand at the top
    m_items.EnsureVisible(top);
}

void PlaceTravel::Update() { Restore(); }

// ------------------------------------------------------------------------------------------------- going places

void PlaceTravel::ComeTo(PlaceHistory::Visit const &visit) {
    m_wanted = RecentPlace{visit.path, visit.view};
    RefItemPtr<DataSourceItem> const place = visit.place;
    m_actions.show(place);
    Entered();
    RestoreSoon(); // it may be what is shown already
    ShowState();
}

void PlaceTravel::Travel(int step) {
    if (!m_history.CanGo(step))
        return;
    OnLeft();
    PlaceHistory::Visit const visit = m_history.Go(step);
    ComeTo(visit);
}

void PlaceTravel::RunMenu() {
    OnLeft();
    PlaceHistory::Visit const *const present = m_history.Present();
    DString const here = present == nullptr ? DString() : present->path;
    std::vector<PlaceHistory::Visit> visits;
    std::vector<RecentPlace> places;
    auto const isThere = [&](DString const &path) {
        return path == here ||
               std::any_of(places.begin(), places.end(), [&](RecentPlace const &place) { return place.path == path; });
    };
    for (PlaceHistory::Visit const *const visit : m_history.Latest())
        if (places.size() < RecentPlaces::kMost && !isThere(visit->path)) {
            visits.push_back(*visit);
            places.push_back({visit->path, visit->view});
        }
    for (RecentPlace &place : m_kept.Read())
        if (places.size() < RecentPlaces::kMost && !isThere(place.path))
            places.push_back(std::move(place));

    QMenu menu(&m_dialog);
    menu.setObjectName(kMenu);
    menu.setToolTipsVisible(true);
    int const widest = menu.fontMetrics().averageCharWidth() * kMenuChars;
    for (RecentPlace const &place : places) {
        QString const path = platform::ToShownName(place.path);
        QString const text = menu.fontMetrics().elidedText(path, Qt::ElideMiddle, widest);
        menu.addAction(QString(text).replace('&', "&&"))->setToolTip(platform::ToToolTip(path));
    }
    if (places.empty())
        menu.addAction(platform::Shown("None yet"))->setEnabled(false);
    QList<QAction *> const actions = menu.actions();
    QAction *const chosen = platform::RunMenu(menu, m_recent->mapToGlobal(QPoint(0, m_recent->height())));
    auto const at = static_cast<std::size_t>(actions.indexOf(chosen));
    if (chosen == nullptr || at >= places.size())
        return;
    if (at < visits.size()) {
        ComeTo(visits[at]);
        return;
    }
    m_wanted = places[at];
    m_actions.goTo(places[at].path);
}

bool PlaceTravel::TakeMouse(QEvent const &event) {
    if (event.type() != QEvent::MouseButtonPress && event.type() != QEvent::MouseButtonDblClick)
        return false;
    Qt::MouseButton const button = static_cast<QMouseEvent const &>(event).button();
    if (button != Qt::BackButton && button != Qt::ForwardButton)
        return false;
    Travel(button == Qt::BackButton ? -1 : 1);
    return true;
}

void PlaceTravel::Save() {
    OnLeft();
    std::vector<RecentPlace> places;
    for (PlaceHistory::Visit const *const visit : m_history.Latest())
        if (places.size() < RecentPlaces::kMost)
            places.push_back({visit->path, visit->view});
    m_kept.Add(places);
}

} // namespace zelvar
