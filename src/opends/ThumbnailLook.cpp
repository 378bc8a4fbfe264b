#include "zelvar/opends/ThumbnailLook.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/ItemColors.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/thumbnails/cells/TablePicture.h"

#include <QtGui/QPainter>
#include <QtGui/QShortcut>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <cmath>
#include <list>
#include <utility>

namespace zelvar {

namespace {

constexpr char kSection[] = "DlgOpenDSLook";
constexpr int kTileMargin = 16; // pixels beside a thumbnail, both sides together
constexpr int kKindSide = 48;   // of the picture of an item's kind
constexpr int kNotch = 120;     // of a wheel, eighths of a degree
constexpr std::size_t kMostRoots = 8;

/// The sizes that the menu offers.
struct NamedSide {
    char const *name;
    int side;
};
constexpr NamedSide kSides[] = {
    {Mark("Small"), 96}, {Mark("Medium"), 128}, {Mark("Large"), 192}, {Mark("Very Large"), 256}};

bool IsRemote(DataSourceItem const &root) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(&root);
    if (tree != nullptr && tree->IsOnServer())
        return true;
    DString const path = tree == nullptr ? root.GetPath() : BDIMoniker(tree->GetSource(), nullptr).FindFile();
    return !path.empty() && platform::MayBlockAt(path);
}

/// Whether data may lie in it that a picture can be made of; a plain folder has that of its kind.
bool HasData(DataSourceItem const &item) {
    if (auto const *const file = dynamic_cast<NtwDataSourceItem const *>(&item))
        return file->GetType() == NtwDataSourceItem::TYPE_FILE ||
               file->GetType() == NtwDataSourceItem::TYPE_REPOSITORY_FILE ||
               file->GetType() == NtwDataSourceItem::TYPE_DATA_FOLDER;
    if (dynamic_cast<SeriesItem const *>(&item) != nullptr)
        return true;
    auto const *const node = dynamic_cast<TemplDataSourceItem const *>(&item);
    return node != nullptr && node->IsOpen() && node->IsFile(0);
}

/// What an item is called as it is now: another size, time or option, and its thumbnail is another one.
DString NameOf(DataSourceItem const &item, DString const &moniker) {
    SystemTime time;
    item.GetModificationTime(time);
    return moniker + Format("\n%lld %d-%d-%d %d:%d:%d.%d", static_cast<long long>(item.GetFileSize()), time.wYear,
                            time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
}

} // namespace

platform::MessageId const ThumbnailLook::kAnswerMessage = platform::RegisterMessage();

ThumbnailLook::ThumbnailLook(DSListCtrl &list, QWidget &window, DString key)
    : m_list(&list), m_key(std::move(key)), m_choice(LookFromText(DUserCnfg(kSection).ReadString(m_key, ""))),
      m_target(this) {
    m_messages.On(kAnswerMessage, this, &ThumbnailLook::OnAnswer);
    MakeButton();
    AddKeys(window);
    list.SetTilePainter(this);
    list.installEventFilter(this);
    list.viewport()->installEventFilter(this);
    list.GetHeaderCtrl()->installEventFilter(this);
    PlaceButton();
    Show();
}

ThumbnailLook::~ThumbnailLook() {
    m_target.Detach();
    if (m_reader != nullptr)
        m_reader->Release();
    if (m_list.isNull())
        return;
    m_list->SetTilePainter(nullptr);
    m_list->ShowTiles({});
    delete m_button;
}

// ------------------------------------------------------------------------------------------------- what is chosen

void ThumbnailLook::Choose(LookChoice const &choice) {
    if (choice == m_choice)
        return;
    m_choice = choice;
    DUserCnfg(kSection).WriteString(m_key, LookToText(choice));
    Show();
}

void ThumbnailLook::Show() {
    bool const isShown = m_choice.thumbnails && (m_choice.remote || !IsPlaceRemote());
    m_list->ShowTiles(isShown ? TileSize() : Size{});
    m_button->setIcon(
        platform::ResourceIcon(m_choice.thumbnails ? QStringLiteral("look-rows") : QStringLiteral("look-tiles")));
    QString const next = m_choice.thumbnails ? platform::Shown("Show rows") : platform::Shown("Show thumbnails");
    m_button->setToolTip(m_choice.thumbnails ? platform::Shown("Show rows (Ctrl+1)")
                                             : platform::Shown("Show thumbnails (Ctrl+2)"));
    m_button->setAccessibleName(next);
    if (!isShown && m_reader != nullptr)
        m_reader->Want({}, DeviceSide());
    m_wanted.clear();
    m_list->viewport()->update();
}

bool ThumbnailLook::IsPlaceRemote() const {
    std::list<RefItemPtr<DataSourceItem>> roots;
    m_list->GetRootItems(roots);
    std::size_t looked = 0;
    for (RefItemPtr<DataSourceItem> const &root : roots)
        if (root != nullptr && looked++ < kMostRoots && IsRemote(*root))
            return true;
    return false;
}

void ThumbnailLook::RootsChanged() { Show(); }

Size ThumbnailLook::TileSize() const {
    int const texts = 2 * (m_list->fontMetrics().height() + 1);
    return {m_choice.side + kTileMargin, m_choice.side + kTileMargin + texts};
}

int ThumbnailLook::DeviceSide() const {
    return static_cast<int>(std::lround(m_choice.side * m_list->devicePixelRatioF()));
}

// --------------------------------------------------------------------------------------------- button, keys, wheel

void ThumbnailLook::MakeButton() {
    m_button = new QToolButton(m_list);
    m_button->setAutoRaise(true);
    m_button->setFocusPolicy(Qt::NoFocus); // there are keys, and the order of the dialog stays
    m_button->setPopupMode(QToolButton::MenuButtonPopup);
    m_menu = new QMenu(m_button);
    m_button->setMenu(m_menu);
    m_button->show();
    connect(m_menu, &QMenu::aboutToShow, this, &ThumbnailLook::FillMenu);
    connect(m_button, &QToolButton::clicked, this, [this] {
        LookChoice choice = m_choice;
        choice.thumbnails = !choice.thumbnails;
        Choose(choice);
    });
}

void ThumbnailLook::FillMenu() {
    m_menu->clear();
    auto const add = [this](QString const &text, bool isChecked, LookChoice const &choice) {
        QAction *const action = m_menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(isChecked);
        connect(action, &QAction::triggered, this, [this, choice] { Choose(choice); });
        return action;
    };
    LookChoice choice = m_choice;
    choice.thumbnails = false;
    add(platform::Shown("Rows") + QStringLiteral("\tCtrl+1"), !m_choice.thumbnails, choice);
    choice.thumbnails = true;
    add(platform::Shown("Thumbnails") + QStringLiteral("\tCtrl+2"), m_choice.thumbnails, choice);
    m_menu->addSeparator();
    for (NamedSide const &named : kSides) {
        choice.side = named.side;
        add(platform::Shown(named.name), m_choice.side == named.side, choice);
    }
    m_menu->addSeparator();
    choice = m_choice;
    choice.remote = !choice.remote;
    add(platform::Shown("Thumbnails of Remote Places"), m_choice.remote, choice);
}

void ThumbnailLook::PlaceButton() {
    QHeaderView const &header = *m_list->GetHeaderCtrl();
    int const height = std::max(header.height(), 1);
    m_button->setIconSize({height - 6, height - 6});
    QSize const size(m_button->sizeHint().width(), height);
    QRect const place =
        QStyle::alignedRect(m_list->layoutDirection(), Qt::AlignRight | Qt::AlignVCenter, size, header.geometry());
    if (m_button->geometry() == place)
        return;
    m_button->setGeometry(place);
    m_button->raise();
    m_list->ReserveHeading(size.width());
}

void ThumbnailLook::AddKeys(QWidget &window) {
    auto const on = [this](QKeySequence const &keys, QWidget *where, Qt::ShortcutContext context, auto change) {
        auto *const shortcut = new QShortcut(keys, where);
        shortcut->setContext(context);
        connect(this, &QObject::destroyed, shortcut, &QObject::deleteLater);
        connect(shortcut, &QShortcut::activated, this, [this, change] {
            LookChoice choice = m_choice;
            change(choice);
            Choose(choice);
        });
    };
    auto const resize = [](int steps) {
        return [steps](LookChoice &choice) { choice = choice.thumbnails ? choice.Resized(steps) : choice; };
    };
    on(Qt::CTRL | Qt::Key_1, &window, Qt::WindowShortcut, [](LookChoice &choice) { choice.thumbnails = false; });
    on(Qt::CTRL | Qt::Key_2, &window, Qt::WindowShortcut, [](LookChoice &choice) { choice.thumbnails = true; });
    auto *const menu = new QShortcut(Qt::CTRL | Qt::Key_3, &window);
    connect(this, &QObject::destroyed, menu, &QObject::deleteLater);
    connect(menu, &QShortcut::activated, m_button, &QToolButton::showMenu);
    for (auto const key : {Qt::Key_Plus, Qt::Key_Equal})
        on(Qt::CTRL | key, m_list, Qt::WidgetWithChildrenShortcut, resize(1));
    on(Qt::CTRL | Qt::Key_Minus, m_list, Qt::WidgetWithChildrenShortcut, resize(-1));
}

void ThumbnailLook::Turn(int angle) {
    m_turned += angle;
    int const steps = m_turned / kNotch;
    m_turned -= steps * kNotch;
    if (steps != 0)
        Choose(m_choice.Resized(steps));
}

bool ThumbnailLook::eventFilter(QObject *watched, QEvent *event) {
    if (m_list.isNull())
        return false;
    if (watched == m_list->GetHeaderCtrl()) {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
            PlaceButton();
    } else if (watched == m_list->viewport() && event->type() == QEvent::Wheel && m_list->IsTiled()) {
        auto const *const wheel = static_cast<QWheelEvent *>(event);
        if ((wheel->modifiers() & Qt::ControlModifier) != 0) {
            Turn(wheel->angleDelta().y());
            return true;
        }
    } else if (watched == m_list) {
        bool const isNewSize = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
        if (isNewSize && m_list->IsTiled())
            m_list->ShowTiles(TileSize());
        if (isNewSize || event->type() == QEvent::LayoutDirectionChange)
            PlaceButton();
    }
    return false;
}

// ------------------------------------------------------------------------------------------------------- the tiles

void ThumbnailLook::DrawTile(DrawItemStruct const &request, DataSourceItem const &item) {
    QPainter &painter = request.painter;
    bool const isSelected = (request.state & LVIS_SELECTED) != 0;
    ItemColors const colors = ItemColorsOf(isSelected, m_list->hasFocus());
    QRect const tile = platform::ToQRect(request.rcItem).adjusted(1, 1, -1, -1);
    if (isSelected)
        painter.fillRect(tile, colors.background);
    int const row = request.itemID;
    DrawFace(request, item, platform::ToQRect(m_list->GetSubItemRect(row, 0, LVIR_ICON)));
    for (int col = 0; col < 2; ++col) {
        QRect const place = platform::ToQRect(m_list->GetSubItemRect(row, col, LVIR_LABEL));
        painter.setPen(col == 0 || isSelected ? colors.text : platform::Mixed(colors.text, colors.background, 0.35));
        // Names of a folder often begin alike: what differs stands at their ends.
        QString const text =
            painter.fontMetrics().elidedText(m_list->ShownText(row, col), Qt::ElideMiddle, place.width());
        int const flags = platform::ReadingFlags(text, Qt::AlignHCenter | Qt::AlignVCenter, m_list->layoutDirection(),
                                                 platform::Reading::LeftToRight);
        painter.drawText(place, flags | Qt::TextSingleLine, text);
    }
    if ((request.state & LVIS_FOCUSED) != 0)
        DrawFocusRect(painter, platform::ToRect(tile), platform::ToColorRef(colors.text));
}

/// The thumbnail, with the picture of the kind in its corner where there is more in it than is shown; or, until it is
/// there, and where there is none, that picture alone.
void ThumbnailLook::DrawFace(DrawItemStruct const &request, DataSourceItem const &item, QRect const &place) {
    QPainter &painter = request.painter;
    ThumbnailPictures::Picture const *const picture =
        HasData(item) ? m_pictures.Find(NameOf(item, MonikerOf(item))) : nullptr;
    qreal const ratio = painter.device()->devicePixelRatio();
    bool const hasList = item.GetImageList() != nullptr && item.GetIconIndex() >= 0;
    if (picture == nullptr || picture->pixmap.isNull()) {
        int const side = std::min({kKindSide, place.width(), place.height()});
        QRect const middle = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, {side, side}, place);
        if (hasList)
            painter.drawPixmap(middle.topLeft(),
                               platform::ListPicture(item.GetImageList(), item.GetIconIndex(), ratio, side));
        return;
    }
    // One of another size stands in until the right one comes.
    QSizeF size = QSizeF(picture->pixmap.size()) / ratio;
    int const room = std::min({m_choice.side, place.width(), place.height()});
    bool const isStandIn = picture->side != DeviceSide();
    if (isStandIn || size.width() > room || size.height() > room)
        size.scale(room, room, Qt::KeepAspectRatio);
    QRect const shown = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size.toSize().expandedTo({1, 1}), place);
    if (isStandIn)
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(shown, picture->pixmap);
    painter.setPen(
        platform::Mixed(m_list->palette().color(QPalette::Text), m_list->palette().color(QPalette::Base), 0.7));
    painter.drawRect(shown.adjusted(-1, -1, 0, 0));
    bool const holdsMore = item.IsFolder() || dynamic_cast<SeriesItem const *>(&item) != nullptr;
    if (hasList && holdsMore)
        painter.drawPixmap(place.left(), place.bottom() - platform::kSmallPicture,
                           platform::ListPicture(item.GetImageList(), item.GetIconIndex(), ratio));
}

DString ThumbnailLook::MonikerOf(DataSourceItem const &item) const {
    return m_monikerOf ? m_monikerOf(item) : item.GetPath();
}

void ThumbnailLook::TilesPainted() { Ask(); }

/// What is in sight first, then the page where the user is going.
void ThumbnailLook::Ask() {
    auto const [first, behind] = m_list->GetSeenRows();
    int const page = std::max(behind - first, 1);
    if (first != m_lastTop)
        m_goesUp = first < std::exchange(m_lastTop, first);
    int const side = DeviceSide();
    std::vector<ThumbnailReader::Wish> wishes;
    auto const add = [&](int from, int to) {
        for (int row = std::max(from, 0); row < std::min(to, m_list->GetNumRow()); ++row) {
            RefItemPtr<DataSourceItem> const item = m_list->ItemAt(row);
            if (item == nullptr || !HasData(*item))
                continue;
            DString moniker = MonikerOf(*item);
            DString name = NameOf(*item, moniker);
            auto const *const known = m_pictures.Find(name);
            if (known == nullptr || (known->side != side && !known->pixmap.isNull()))
                wishes.push_back({std::move(name), std::move(moniker), item->GetRDIDriverId()});
        }
    };
    add(first, behind);
    add(m_goesUp ? first - page : behind, m_goesUp ? first : behind + page);

    std::vector<DString> names;
    names.reserve(wishes.size());
    for (ThumbnailReader::Wish const &wish : wishes)
        names.push_back(wish.name);
    if (names == m_wanted && side == m_wantedSide)
        return;
    m_wanted = std::move(names);
    m_wantedSide = side;
    if (m_reader == nullptr)
        m_reader = ThumbnailReader::Create(ThumbnailStore(), DrawTablePicture,
                                           [target = m_target] { target.Post(kAnswerMessage); });
    m_reader->Want(std::move(wishes), side);
}

bool ThumbnailLook::event(QEvent *event) { return m_messages.Dispatch(*event) || QObject::event(event); }

void ThumbnailLook::OnAnswer() {
    if (m_list.isNull() || m_reader == nullptr)
        return;
    for (ThumbnailReader::Answer const &answer : m_reader->Take())
        m_pictures.Keep(answer.name, answer.side, answer.picture, m_list->devicePixelRatioF());
    auto const [first, behind] = m_list->GetSeenRows();
    m_list->RedrawItems(first, behind - 1);
}

ThumbnailReader::Counts ThumbnailLook::GetCounts() const {
    return m_reader == nullptr ? ThumbnailReader::Counts() : m_reader->GetCounts();
}

bool ThumbnailLook::IsBusy() const { return m_reader != nullptr && m_reader->IsBusy(); }

} // namespace zelvar
