#include "zelvar/filedlg/FolderRoads.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QDir>
#include <QtGui/QAction>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLayout>
#include <QtWidgets/QToolButton>

#include <array>
#include <memory>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kMostVisits = 100;

/// What the toolkit calls its folders' addresses in the list of places.
constexpr int kUrlRole = Qt::UserRole + 1;

void Remember(std::vector<DString> &visits, DString folder) {
    if (visits.size() == kMostVisits)
        visits.erase(visits.begin());
    visits.push_back(std::move(folder));
}

} // namespace

FolderRoads::FolderRoads(QFileDialog &dialog, Door &door) : QObject(&dialog), m_dialog(dialog), m_door(door) {
    MakeBox();
    TakeOverButtons();
    TakeOverPlaces();
}

void FolderRoads::MakeBox() {
    // The toolkit's own box asks the system about every folder that it lists.
    auto *const former = m_dialog.findChild<QComboBox *>(QStringLiteral("lookInCombo"));
    m_box = new CZelComboBox(&m_dialog);
    m_box->setLayoutDirection(Qt::LeftToRight); // as its paths are read
    m_box->setObjectName(QStringLiteral("folderBox"));
    m_box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // What held the former one in the layout comes back to us.
    std::unique_ptr<QLayoutItem> const item(
        m_dialog.findChild<QLayout *>(QStringLiteral("hboxLayout"))->replaceWidget(former, m_box));
    former->hide();
    auto *const label = m_dialog.findChild<QLabel *>(QStringLiteral("lookInLabel"));
    label->setBuddy(m_box);
    m_box->setAccessibleName(label->text().remove(u'&'));
    QWidget::setTabOrder(m_box, m_dialog.findChild<QWidget *>(QStringLiteral("backButton")));
    connect(m_box, &QComboBox::activated, this, [this](int index) {
        if (!GoTo(m_box->GetLBText(index)))
            m_box->SetCurSel(0);
    });
}

void FolderRoads::TakeOverButtons() {
    auto const takeOver = [this](char const *name, auto act) {
        auto *const button = m_dialog.findChild<QToolButton *>(QLatin1String(name));
        button->disconnect(&m_dialog);
        connect(button, &QToolButton::clicked, this, act);
    };
    takeOver("backButton", [this] { Revisit(m_back, m_forward); });
    takeOver("forwardButton", [this] { Revisit(m_forward, m_back); });
    takeOver("toParentButton", [this] { GoUp(); });
    for (auto *const action : m_dialog.findChildren<QAction *>(QString(), Qt::FindDirectChildrenOnly)) {
        bool const up = action->objectName() == QLatin1String("qt_goto_parent_action");
        if (!up && !action->objectName().isEmpty())
            continue;
        action->disconnect(&m_dialog);
        connect(action, &QAction::triggered, this, [this, up] {
            if (up)
                GoUp();
            else
                GoTo(platform::ToDString(QDir::homePath()));
        });
    }
}

void FolderRoads::TakeOverPlaces() {
    auto *const places = m_dialog.findChild<QAbstractItemView *>(QStringLiteral("sidebar"));
    QList<QUrl> urls{QUrl::fromLocalFile(QStringLiteral("/"))};
    if (DoesPlaceAnswer(platform::ToDString(QDir::homePath())))
        urls.prepend(QUrl::fromLocalFile(QDir::homePath()));
    m_dialog.setSidebarUrls(urls);
    m_dialog.setHistory({});
    places->disconnect(&m_dialog);
    places->setDragDropMode(QAbstractItemView::NoDragDrop);
    places->setContextMenuPolicy(Qt::NoContextMenu);
    connect(places, &QAbstractItemView::clicked, this, [this](QModelIndex const &index) {
        GoTo(platform::ToDString(index.data(kUrlRole).toUrl().toLocalFile()));
    });
}

void FolderRoads::Close() {
    constexpr std::array names{"backButton", "forwardButton", "toParentButton", "newFolderButton", "sidebar"};
    for (char const *const name : names)
        m_dialog.findChild<QWidget *>(QLatin1String(name))->hide();
    for (auto *const action : m_dialog.findChildren<QAction *>(QString(), Qt::FindDirectChildrenOnly))
        if (action->objectName() != QLatin1String("qt_show_hidden_action"))
            action->setEnabled(action->objectName() == QLatin1String("qt_rename_action") ||
                               action->objectName() == QLatin1String("qt_delete_action"));
    m_box->setEnabled(false); // it still tells where
}

void FolderRoads::FillBox() {
    m_box->ResetContent();
    for (DString folder = m_door.Folder();; folder = DString(ParentPathOf(folder))) {
        m_box->AddString(folder);
        if (ParentPathOf(folder) == folder || ParentPathOf(folder).empty())
            break;
    }
    DString const home = platform::ToDString(QDir::homePath());
    if (m_box->FindStringExact(home) < 0)
        m_box->AddString(home);
    m_box->SetCurSel(0);
}

void FolderRoads::UpdateButtons() {
    m_dialog.findChild<QWidget *>(QStringLiteral("backButton"))->setEnabled(!m_back.empty());
    m_dialog.findChild<QWidget *>(QStringLiteral("forwardButton"))->setEnabled(!m_forward.empty());
    m_dialog.findChild<QWidget *>(QStringLiteral("toParentButton"))->setEnabled(m_door.Folder() != "/");
}

bool FolderRoads::GoTo(DString const &folder) {
    DString former = m_door.Folder();
    if (folder == former)
        return true;
    if (!m_door.ShowFolder(folder))
        return false;
    Remember(m_back, std::move(former));
    m_forward.clear();
    Q_EMIT Taken();
    return true;
}

void FolderRoads::GoUp() {
    DString const parent(ParentPathOf(m_door.Folder()));
    if (!parent.empty())
        GoTo(parent);
}

void FolderRoads::Revisit(std::vector<DString> &from, std::vector<DString> &to) {
    if (from.empty())
        return;
    DString const folder = std::move(from.back());
    from.pop_back();
    DString former = m_door.Folder();
    if (m_door.ShowFolder(folder))
        Remember(to, std::move(former));
    Q_EMIT Taken();
}

bool FolderRoads::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    auto const *const key = static_cast<QKeyEvent *>(event);
    if (key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Back)
        GoUp();
    else if (key->key() == Qt::Key_Left && (key->modifiers() & Qt::AltModifier) != 0)
        Revisit(m_back, m_forward);
    else
        return QObject::eventFilter(watched, event);
    return true;
}

} // namespace zelvar
