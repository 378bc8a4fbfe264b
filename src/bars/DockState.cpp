#include "zelvar/bars/DockState.h"

#include "zelvar/bars/CZelDockBar.h"
#include "zelvar/bars/CZelToolBar.h"
#include "zelvar/layout/core/SplitPlaces.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/xml/XMLNode.h"

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QLayout>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QTabBar>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <tuple>
#include <utility>

namespace zelvar {

namespace {

constexpr char kRootName[] = "DOCKBAR_DATA";
constexpr int kFarthest = 1 << 20;    ///< pixels; no screen reaches as far
constexpr int kLargestSide = 1 << 15; ///< pixels
constexpr std::array<char const *, 4> kSideNames{"left", "top", "right", "bottom"};

/// Index into `kSideNames`; -1 for none of them.
int SideOf(int area) {
    switch (area) {
    case Qt::LeftDockWidgetArea:
        return 0;
    case Qt::TopDockWidgetArea:
        return 1;
    case Qt::RightDockWidgetArea:
        return 2;
    case Qt::BottomDockWidgetArea:
        return 3;
    default:
        return -1;
    }
}
constexpr std::array kDockAreas{Qt::LeftDockWidgetArea, Qt::TopDockWidgetArea, Qt::RightDockWidgetArea,
                                Qt::BottomDockWidgetArea};
constexpr std::array kToolAreas{Qt::LeftToolBarArea, Qt::TopToolBarArea, Qt::RightToolBarArea, Qt::BottomToolBarArea};
/// The bars of this side stand one above the other.
bool IsUpright(int side) { return side == 0 || side == 2; }

int ReadInt(XMLNode const &node, char const *name, int fallback, int least, int most) {
    return static_cast<int>(std::clamp<long long>(node.GetAttrInt(name, fallback), least, most));
}

int ReadSide(XMLNode const &node) {
    DString const name = node.GetAttrStr("side");
    auto const *const found = std::ranges::find(kSideNames, name);
    return found == kSideNames.end() ? -1 : static_cast<int>(found - kSideNames.begin());
}

/// What names a bar: its id, or its name if that is 0.
using BarKey = std::pair<long long, DString>;
BarKey KeyOf(QWidget const &bar) {
    int const id = platform::GetDlgCtrlID(bar);
    return {id, id == 0 ? platform::ToDString(bar.objectName()) : DString()};
}
BarKey KeyOf(XMLNode const &node) {
    long long const id = node.GetAttrInt("id", 0);
    return {id, id == 0 ? node.GetAttrStr("name") : DString()};
}

XMLNode &AddBar(XMLNode &root, char const *kind, QWidget const &bar, int side, int order) {
    XMLNode &node = *root.AddChld(kind);
    node.SetAttrInt("id", platform::GetDlgCtrlID(bar));
    node.SetAttr("name", platform::ToDString(bar.objectName()));
    if (side >= 0)
        node.SetAttr("side", kSideNames[static_cast<std::size_t>(side)]);
    node.SetAttrInt("order", order);
    node.SetAttrBool("visible", !bar.isHidden());
    return node;
}

// Saving

/// Bars that share a place, in the order of their tabs, and the one that is shown.
struct TabGroup {
    QList<CZelDockBar *> bars;
    CZelDockBar *front = nullptr;
    Size tabBar{}; ///< what the tabs take of the room in one direction
};

TabGroup GroupOf(QMainWindow const &window, CZelDockBar &bar) {
    TabGroup group{{&bar}, &bar};
    for (QDockWidget *const other : window.tabifiedDockWidgets(&bar))
        if (auto *const known = qobject_cast<CZelDockBar *>(other))
            group.bars.append(known);
    // Which one is shown is told by the tab bars only, whose data are the bars' addresses.
    for (QTabBar const *const tabs : window.findChildren<QTabBar *>(QString(), Qt::FindDirectChildrenOnly))
        for (CZelDockBar *const one : std::as_const(group.bars))
            if (tabs->tabData(tabs->currentIndex()).value<quintptr>() ==
                reinterpret_cast<quintptr>(static_cast<QWidget const *>(one))) {
                bool const across = tabs->shape() == QTabBar::RoundedNorth || tabs->shape() == QTabBar::RoundedSouth;
                group.front = one;
                group.tabBar = across ? Size{0, tabs->height()} : Size{tabs->width(), 0};
            }
    return group;
}

void SaveBar(XMLNode &node, CZelDockBar const &bar, Rect const &docked, bool upright) {
    node.SetAttrBool("floating", bar.isFloating());
    Rect const &floating = bar.GetFloatingRect();
    if (!floating.IsEmpty()) {
        node.SetAttrInt("left", floating.left);
        node.SetAttrInt("top", floating.top);
        node.SetAttrInt("width", floating.Width());
        node.SetAttrInt("height", floating.Height());
    }
    if (!docked.IsEmpty()) { // how far into the window, and along its side
        node.SetAttrInt("size", upright ? docked.Width() : docked.Height());
        node.SetAttrInt("length", upright ? docked.Height() : docked.Width());
    }
}

/// The bars of one side that stand beside others of it, with their places. What is hidden or floats has none.
std::map<CZelDockBar const *, SplitPlace> SharedPlaces(QMainWindow const &window, QList<CZelDockBar *> const &row,
                                                       bool upright) {
    QList<CZelDockBar *> fronts;
    std::vector<Rect> areas;
    for (CZelDockBar *const bar : row) {
        if (bar->isHidden() || bar->isFloating() || bar->GetDockedRect().IsEmpty() ||
            GroupOf(window, *bar).front != bar)
            continue;
        fronts.append(bar);
        areas.push_back(bar->GetDockedRect());
    }
    std::vector<SplitPlace> const places = SplitPlaces(areas, upright);
    std::map<CZelDockBar const *, SplitPlace> shared;
    for (std::size_t i = 0; i < places.size(); ++i)
        if (places[i].size() > 1)
            shared.emplace(fronts[static_cast<qsizetype>(i)], places[i]);
    return shared;
}

DString TextOf(SplitPlace const &place) {
    DString text;
    for (int const number : place)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

SplitPlace ReadPlace(DString const &text) {
    constexpr std::size_t deepest = 16; // nobody can tell more apart
    SplitPlace place;
    for (DString const &part : Split(text, '.')) {
        int number = 0;
        auto const [end, error] = std::from_chars(part.data(), part.data() + part.size(), number);
        if (error != std::errc() || end != part.data() + part.size() || number < 0 || place.size() == deepest)
            return {};
        place.push_back(number);
    }
    return place;
}

void SaveBars(XMLNode &root, QMainWindow const &window, QByteArray const &layout) {
    QList<CZelDockBar *> const all = CZelDockBar::BarsOf(window);
    for (int side = -1; side < 4; ++side) {
        QList<CZelDockBar *> row;
        for (CZelDockBar *const bar : all)
            if (SideOf(window.dockWidgetArea(bar)) == side)
                row.append(bar);
        std::ranges::stable_sort(row, std::less<>(), [&](CZelDockBar const *bar) { return PlaceIn(layout, *bar); });
        auto const places = SharedPlaces(window, row, IsUpright(side));
        std::set<CZelDockBar const *> saved;
        int order = 0;
        int tabs = 0;
        for (CZelDockBar *const bar : std::as_const(row)) {
            if (saved.contains(bar))
                continue;
            TabGroup group = GroupOf(window, *bar);
            std::ranges::stable_sort(group.bars, std::less<>(),
                                     [&](CZelDockBar const *one) { return PlaceIn(layout, *one); });
            ++tabs;
            for (CZelDockBar *const one : group.bars) {
                saved.insert(one);
                XMLNode &node = AddBar(root, "BAR", *one, side, order++);
                Rect docked = group.front->GetDockedRect();
                docked.right += group.tabBar.cx;
                docked.bottom += group.tabBar.cy;
                SaveBar(node, *one, docked, IsUpright(side));
                if (auto const place = places.find(group.front); place != places.end())
                    node.SetAttr("place", TextOf(place->second));
                if (group.bars.size() == 1)
                    continue;
                node.SetAttrInt("tabs", tabs);
                node.SetAttrBool("front", one == group.front);
            }
        }
    }
}

void SaveToolBars(XMLNode &root, QMainWindow const &window, QByteArray const &layout) {
    QList<CZelToolBar *> bars = window.findChildren<CZelToolBar *>(QString(), Qt::FindDirectChildrenOnly);
    std::ranges::stable_sort(bars, std::less<>(), [&](CZelToolBar const *bar) { return PlaceIn(layout, *bar); });
    int order = 0;
    for (CZelToolBar *const bar : std::as_const(bars)) {
        XMLNode &node = AddBar(root, "TOOLBAR", *bar, SideOf(static_cast<int>(window.toolBarArea(bar))), order++);
        node.SetAttrBool("break", window.toolBarBreak(bar));
        bar->SaveButtons(node);
    }
}

// Loading

/// What is told of a bar, in the ranges that make sense.
struct BarRecord {
    CZelDockBar *bar = nullptr;
    int side = -1;
    int order = 0;
    SplitPlace place{}; ///< empty for one with a stretch of its own
    int tabs = 0;       ///< of bars on a side with the same number, that is not 0, one stands on the other
    bool front = false;
    bool visible = true;
    bool floating = false;
    Rect rect{}; ///< empty if none is told
    int size = 0;
    int length = 0;
};

struct ToolBarRecord {
    CZelToolBar *bar = nullptr;
    int side = -1;
    int order = 0;
    bool visible = true;
    bool startsRow = false;
    XMLNode const *node = nullptr;
};

BarRecord ReadBar(QMainWindow const &window, XMLNode const &node, CZelDockBar &bar) {
    BarRecord record{.bar = &bar, .side = ReadSide(node)};
    if (record.side < 0 || !bar.isAreaAllowed(kDockAreas[static_cast<std::size_t>(record.side)]))
        record.side = SideOf(window.dockWidgetArea(&bar)); // stays on its side
    record.order = ReadInt(node, "order", 0, 0, kFarthest);
    record.place = ReadPlace(node.GetAttrStr("place"));
    record.tabs = ReadInt(node, "tabs", 0, 0, kFarthest);
    record.front = node.GetAttrBool("front", false);
    // A bar without such a button would not come back.
    record.visible = node.GetAttrBool("visible", true) || !bar.features().testFlag(QDockWidget::DockWidgetClosable);
    record.floating = node.GetAttrBool("floating", false) && bar.features().testFlag(QDockWidget::DockWidgetFloatable);
    int const left = ReadInt(node, "left", 0, -kFarthest, kFarthest);
    int const top = ReadInt(node, "top", 0, -kFarthest, kFarthest);
    int const width = ReadInt(node, "width", 0, 0, kLargestSide);
    int const height = ReadInt(node, "height", 0, 0, kLargestSide);
    record.rect = {left, top, left + width, top + height};
    record.size = ReadInt(node, "size", 0, 0, kLargestSide);
    record.length = ReadInt(node, "length", 0, 0, kLargestSide);
    return record;
}

template <class Bar>
std::map<BarKey, Bar *> ByKey(QList<Bar *> const &bars) {
    std::map<BarKey, Bar *> byKey;
    for (Bar *const bar : bars)
        byKey.emplace(KeyOf(*bar), bar);
    return byKey;
}

void ApplySizes(QMainWindow &window, std::vector<BarRecord> const &records) {
    std::set<std::pair<int, int>> placed; // of bars that share a place one is enough
    for (bool const upright : {true, false}) {
        QList<QDockWidget *> bars;
        QList<int> sizes;
        QList<int> lengths;
        for (BarRecord const &record : records)
            if (record.visible && !record.floating && record.size > 0 && record.length > 0 &&
                IsUpright(record.side) == upright &&
                (record.tabs == 0 || placed.emplace(record.side, record.tabs).second)) {
                bars.append(record.bar);
                sizes.append(record.size);
                lengths.append(record.length);
            }
        if (bars.isEmpty())
            continue;
        window.resizeDocks(bars, sizes, upright ? Qt::Horizontal : Qt::Vertical);
        window.resizeDocks(bars, lengths, upright ? Qt::Vertical : Qt::Horizontal);
    }
}

/// Splits the place of the first of some bars among them, whose places are in order and alike before `depth`.
void SplitAmong(QMainWindow &window, std::span<BarRecord const *const> bars, std::size_t depth) {
    auto const numberOf = [depth](BarRecord const *one) { return depth < one->place.size() ? one->place[depth] : -1; };
    bool const across = IsUpright(bars.front()->side) == (depth % 2 == 1);
    std::vector<std::span<BarRecord const *const>> parts;
    for (std::size_t begin = 0, end = 0; begin < bars.size(); begin = end) {
        for (end = begin; end < bars.size() && numberOf(bars[end]) == numberOf(bars[begin]);)
            ++end;
        parts.push_back(bars.subspan(begin, end - begin));
    }
    for (std::size_t i = 1; i < parts.size(); ++i)
        window.splitDockWidget(parts[i - 1].front()->bar, parts[i].front()->bar,
                               across ? Qt::Horizontal : Qt::Vertical);
    for (std::span<BarRecord const *const> const part : parts)
        if (part.size() > 1 && numberOf(part.front()) >= 0)
            SplitAmong(window, part, depth + 1);
}

/// Bars that share a stretch of their side get their places in it. Of tabs the first one stands for all.
void ApplyPlaces(QMainWindow &window, std::vector<BarRecord> const &records) {
    std::map<std::pair<int, int>, std::vector<BarRecord const *>> stretches;
    std::set<std::pair<int, int>> placed;
    for (BarRecord const &record : records)
        if (record.side >= 0 && record.place.size() > 1 && record.visible && !record.floating &&
            (record.tabs == 0 || placed.emplace(record.side, record.tabs).second))
            stretches[{record.side, record.place.front()}].push_back(&record);
    for (auto &[stretch, bars] : stretches) {
        std::ranges::stable_sort(bars, std::less<>(), [](BarRecord const *one) { return one->place; });
        SplitAmong(window, bars, 1);
    }
}

void ApplyBars(QMainWindow &window, std::vector<BarRecord> &records) {
    std::ranges::stable_sort(records, std::less<>(),
                             [](BarRecord const &record) { return std::tuple(record.side, record.order); });
    for (BarRecord const &record : records) {
        if (record.side >= 0)
            record.bar->Dock(window, kDockAreas[static_cast<std::size_t>(record.side)]);
        record.bar->setVisible(record.visible);
    }
    ApplyPlaces(window, records); // before there are tabs, which are not split
    std::map<std::pair<int, int>, CZelDockBar *> firstOfTabs;
    for (BarRecord const &record : records)
        if (record.side >= 0 && record.tabs > 0) {
            auto const [first, isFirst] = firstOfTabs.try_emplace({record.side, record.tabs}, record.bar);
            if (!isFirst)
                window.tabifyDockWidget(first->second, record.bar);
        }
    for (BarRecord const &record : records)
        if (record.floating) {
            Rect const own{record.rect.left, record.rect.top, record.rect.left + record.bar->sizeHint().width(),
                           record.rect.top + record.bar->sizeHint().height()};
            record.bar->Float(record.rect.IsEmpty() ? own : record.rect);
            record.bar->setVisible(record.visible);
        }
    window.layout()->activate(); // tabs and sizes are there only now
    ApplySizes(window, records);
    for (BarRecord const &record : records) // what is not there now comes back in its size
        if ((!record.visible || record.floating) && record.size > 0 && record.length > 0) {
            bool const upright = IsUpright(record.side);
            record.bar->SetDockedRect(
                {0, 0, upright ? record.size : record.length, upright ? record.length : record.size});
        }
    for (BarRecord const &record : records)
        if (record.front && record.visible && !record.floating)
            record.bar->raise();
}

void ApplyToolBars(QMainWindow &window, std::vector<ToolBarRecord> &records) {
    std::ranges::stable_sort(records, std::less<>(),
                             [](ToolBarRecord const &record) { return std::tuple(record.side, record.order); });
    for (ToolBarRecord const &record : records) {
        if (record.side >= 0) {
            Qt::ToolBarArea const area = kToolAreas[static_cast<std::size_t>(record.side)];
            window.removeToolBarBreak(record.bar);
            if (record.startsRow)
                window.addToolBarBreak(area);
            window.addToolBar(area, record.bar);
        }
        record.bar->LoadButtons(*record.node);
        record.bar->setVisible(record.visible);
    }
}

} // namespace

qsizetype PlaceIn(QByteArray const &layout, QWidget const &bar) {
    QByteArray name;
    QDataStream stream(&name, QIODevice::WriteOnly);
    stream << bar.objectName();
    // Tool bars come behind the other bars, so that bars of both kinds may have one name.
    qsizetype const at =
        qobject_cast<QToolBar const *>(&bar) == nullptr ? layout.indexOf(name) : layout.lastIndexOf(name);
    return at < 0 ? layout.size() : at;
}

std::unique_ptr<XMLNode> SaveDockState(QMainWindow const &window) {
    auto root = std::make_unique<XMLNode>(kRootName);
    root->SetAttrInt("version", 1);
    QByteArray const layout = window.saveState();
    SaveBars(*root, window, layout);
    SaveToolBars(*root, window, layout);
    return root;
}

bool LoadDockState(QMainWindow &window, XMLNode const &root) {
    if (root.GetName() != kRootName)
        return false;
    auto bars = ByKey(CZelDockBar::BarsOf(window));
    auto toolBars = ByKey(window.findChildren<CZelToolBar *>(QString(), Qt::FindDirectChildrenOnly));
    std::vector<BarRecord> records;
    std::vector<ToolBarRecord> toolRecords;
    // A bar that is named twice is where it is named first.
    for (XMLNode const *node = root.GetFirstChild(); node != nullptr; node = node->GetNext()) {
        if (node->GetName() == "BAR") {
            if (auto const bar = bars.extract(KeyOf(*node)))
                records.push_back(ReadBar(window, *node, *bar.mapped()));
        } else if (node->GetName() == "TOOLBAR") {
            if (auto const bar = toolBars.extract(KeyOf(*node))) {
                int const told = ReadSide(*node);
                bool const stays = told < 0 || !bar.mapped()->isAreaAllowed(kToolAreas[static_cast<std::size_t>(told)]);
                toolRecords.push_back(
                    {.bar = bar.mapped(),
                     .side = stays ? SideOf(static_cast<int>(window.toolBarArea(bar.mapped()))) : told,
                     .order = ReadInt(*node, "order", 0, 0, kFarthest),
                     .visible = node->GetAttrBool("visible", true),
                     .startsRow = node->GetAttrBool("break", false),
                     .node = node});
            }
        }
    }
    bool const updates = window.updatesEnabled();
    window.setUpdatesEnabled(false);
    ApplyToolBars(window, toolRecords);
    ApplyBars(window, records);
    window.setUpdatesEnabled(updates);
    return true;
}

Rect BringOntoScreen(Rect const &rect, std::vector<Rect> const &screens) {
    constexpr int kGoodPiece = 40; // pixels of the caption that can be taken hold of
    auto const clamped = [](int value) { return std::clamp(value, -kFarthest, kFarthest); };
    Rect wanted{clamped(rect.left), clamped(rect.top), 0, 0};
    wanted.right = wanted.left + std::clamp(clamped(rect.right) - wanted.left, kGoodPiece, kLargestSide);
    wanted.bottom = wanted.top + std::clamp(clamped(rect.bottom) - wanted.top, kGoodPiece, kLargestSide);
    Rect const *best = nullptr;
    long long bestDistance = 0;
    for (Rect const &screen : screens) {
        Rect const caption{wanted.left, wanted.top, wanted.right, wanted.top + kGoodPiece / 2};
        Rect const seen = caption.Intersected(screen);
        bool const fits = wanted.Width() <= screen.Width() && wanted.Height() <= screen.Height();
        if (fits && seen.Width() >= kGoodPiece && seen.Height() == caption.Height())
            return wanted;
        auto const gap = [](int low, int high, int value) -> long long {
            return value < low ? low - value : value > high ? value - high : 0;
        };
        long long const distance = gap(screen.left, screen.right - wanted.Width(), wanted.left) +
                                   gap(screen.top, screen.bottom - wanted.Height(), wanted.top);
        if (best == nullptr || distance < bestDistance) {
            best = &screen;
            bestDistance = distance;
        }
    }
    if (best == nullptr)
        return wanted;
    int const width = std::min(wanted.Width(), best->Width());
    int const height = std::min(wanted.Height(), best->Height());
    int const left = std::clamp(wanted.left, best->left, best->right - width);
    int const top = std::clamp(wanted.top, best->top, best->bottom - height);
    return {left, top, left + width, top + height};
}

std::vector<Rect> ScreenRects() {
    std::vector<Rect> rects;
    for (QScreen const *const screen : QGuiApplication::screens()) {
        QRect const area = screen->availableGeometry();
        rects.push_back({area.left(), area.top(), area.left() + area.width(), area.top() + area.height()});
    }
    return rects;
}

} // namespace zelvar
