#include "zelvar/thematic/ThematicGroup.h"

#include "zelvar/base/Translation.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFontMetrics>

#include <algorithm>
#include <cmath>
#include <utility>

namespace zelvar {

namespace {

constexpr int kItemsLeft = 34; // pixels from the list's edge
constexpr int kGap = 2;
constexpr int kLinkLeft = 31;
constexpr int kAddSide = 18;

} // namespace

ThematicGroup::ThematicGroup(DString const &text, DString id, ColorRef startColor, ColorRef endColor,
                             std::uint64_t data)
    : ThematicElement(data), m_startColor(startColor), m_endColor(endColor), m_id(std::move(id)),
      m_addButton(kThematicAdd, true, endColor), m_text(text.c_str()), m_hyperlink(kThematicAdd) {
    m_hyperlink.SetText(GetHyperlinkText().c_str());
    AddChild(m_addButton);
    AddChild(m_hyperlink);
}

ThematicGroup::~ThematicGroup() {
    for (ThematicItem *const item : m_items)
        delete item;
}

ThematicGroup *ThematicGroup::Create(DString const &text, DString id, ColorRef startColor, ColorRef endColor,
                                     std::uint64_t data) {
    return new ThematicGroup(text, std::move(id), startColor, endColor, data);
}

void ThematicGroup::Delete(ThematicGroup *group) { delete group; }

DString ThematicGroup::GetHyperlinkText() const {
    return Format(m_addButton.IsEnabled() ? Translated("Add %s...") : Translated("No %s items"), m_text.GetText());
}

void ThematicGroup::SetText(char const *text) {
    m_text.SetText(text);
    m_hyperlink.SetText(GetHyperlinkText().c_str());
}

void ThematicGroup::SetEnblAdd(bool enable) {
    m_addButton.SetEnabled(enable);
    m_hyperlink.SetText(GetHyperlinkText().c_str());
    m_hyperlink.SetEnabled(enable);
}

int ThematicGroup::GetNumVsblItem() const {
    return static_cast<int>(std::count_if(
        m_items.begin(), m_items.end(), [](ThematicItem const *item) { return item != nullptr && item->IsVisible(); }));
}

ThematicItem *ThematicGroup::Get(int index) {
    if (index < 0)
        return nullptr;
    if (index >= GetNumItem())
        m_items.resize(static_cast<std::size_t>(index) + 1);
    return m_items[static_cast<std::size_t>(index)];
}

void ThematicGroup::AddTail(ThematicItem *item) { Insert(item, GetNumItem()); }

void ThematicGroup::Insert(ThematicItem *item, int pos) {
    if (item == nullptr)
        return;
    m_items.insert(m_items.begin() + std::clamp(pos, 0, GetNumItem()), item);
    item->SetGrp(this);
    Tell(item, ItemChange::Added);
}

void ThematicGroup::Tell(ThematicItem *item, ItemChange change) const {
    if (m_watch && item != nullptr)
        m_watch(*item, change);
}

int ThematicGroup::IndexOf(ThematicItem const *item) const {
    auto const at = item == nullptr ? m_items.end() : std::find(m_items.begin(), m_items.end(), item);
    return at == m_items.end() ? -1 : static_cast<int>(at - m_items.begin());
}

void ThematicGroup::RmvItem(ThematicItem *item, bool del) {
    if (int const index = IndexOf(item); index >= 0) {
        Tell(item, ItemChange::Leaving);
        m_items.erase(m_items.begin() + index);
        item->SetGrp(nullptr);
    }
    if (del)
        delete item;
}

std::unique_ptr<ThematicItem> ThematicGroup::TakeItem(ThematicItem *item) {
    if (item == nullptr || !HasItem(item))
        return nullptr;
    RmvItem(item, false);
    return std::unique_ptr<ThematicItem>(item);
}

bool ThematicGroup::MoveItem(ThematicItem *item, bool up) {
    int const index = IndexOf(item);
    int const other = up ? index - 1 : index + 1;
    if (index < 0 || other < 0 || other >= GetNumItem())
        return false;
    std::swap(m_items[static_cast<std::size_t>(index)], m_items[static_cast<std::size_t>(other)]);
    Tell(item, ItemChange::Moved);
    return true;
}

ThematicItem *ThematicGroup::FindRplcItem(ThematicItem const *item) const {
    int const next = IndexOf(item) + 1;
    return next < GetNumItem() ? m_items[static_cast<std::size_t>(next)] : nullptr;
}

void ThematicGroup::MoveChldr(ThematicGroup &other) {
    if (&other == this)
        return;
    for (ThematicItem *const item : other.m_items)
        other.Tell(item, ItemChange::Leaving);
    std::vector<ThematicItem *> const moved = std::exchange(other.m_items, {});
    m_items.insert(m_items.end(), moved.begin(), moved.end());
    for (ThematicItem *const item : moved)
        Tell(item, ItemChange::Added);
}

Rect ThematicGroup::StripRect() const {
    Rect strip = Mirrored(GetRect());
    strip.right = strip.left + kStripWidth;
    return Mirrored(strip);
}

void ThematicGroup::Draw(QPainter &painter, bool look3D) const { DrawPart(painter, look3D, GetRect()); }

void ThematicGroup::DrawPart(QPainter &painter, bool look3D, Rect const &part) const {
    if (!IsVisible())
        return;
    for (ThematicItem const *const item : m_items)
        if (item != nullptr && !item->GetRect().Intersected(part).IsEmpty())
            item->Draw(painter, look3D);
    ColorRef const outer = look3D ? m_startColor : m_endColor;
    bool const isOuterRight = Mirror() != 0;
    DrawBack(painter, StripRect(), isOuterRight ? m_endColor : outer, isOuterRight ? outer : m_endColor, false);
    DrawChildren(painter, look3D);
}

bool ThematicGroup::HitTest(Point const &point, ThematicHit *hit) {
    if (!GetRect().Contains(point))
        return false;
    hit->group = this;
    bool taken = false;
    for (ThematicItem *const item : m_items)
        if (item != nullptr && item->IsVisible())
            taken = item->HitTest(point, hit) || taken;
    if (!taken)
        hit->element = ChildAt(point);
    return true;
}

int ThematicGroup::ComputeHeight() const {
    int const visible = GetNumVsblItem();
    return visible == 0 ? ThematicItem::kHeight : (ThematicItem::kHeight + kGap) * visible - kGap;
}

bool ThematicGroup::MouseEvent(EMouseEvnt event, Point const &point) {
    bool changed = false;
    for (ThematicItem *const item : m_items)
        if (item != nullptr && item->IsVisible())
            changed = item->MouseEvent(event, point) || changed;
    return ThematicElement::MouseEvent(event, point) || changed;
}

void ThematicGroup::RepositionElmts() {
    Rect const own = Mirrored(GetRect());
    Rect r{kItemsLeft, own.top, own.right, own.bottom};
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        ThematicItem *const item = m_items[i];
        if (item == nullptr)
            continue;
        if (item->IsVisible()) {
            r.bottom = r.top + item->ComputeHeight();
            item->SetMirror(Mirror());
            item->SetRect(Mirrored(r));
            item->RepositionElmts();
            r.top = r.bottom + kGap;
        }
        // Items that are not seen count as neighbours, too.
        item->EnableMoves(i > 0, i + 1 < m_items.size());
    }
    m_addButton.SetRect(Mirrored({11, own.top + 4, 11 + kAddSide, own.top + 4 + kAddSide}));
    PlaceLink();
}

void ThematicGroup::PlaceLink() {
    if (!m_items.empty()) {
        m_hyperlink.SetRect({});
        return;
    }
    Rect const own = Mirrored(GetRect());
    QFontMetricsF const exact(m_hyperlink.GetFont());
    QFontMetrics const metrics(m_hyperlink.GetFont());
    // Rounded up: a text that is a fraction of a pixel too wide would be cut.
    auto const width = static_cast<int>(std::ceil(exact.horizontalAdvance(platform::ToQString(m_hyperlink.GetText()))));
    int const right = own.right - 2;
    int const left = kLinkLeft + std::max((right - kLinkLeft - width) / 2, 0);
    int const top = own.top + (own.Height() - metrics.height()) / 2;
    m_hyperlink.SetRect(Mirrored({left, top, std::min(left + width, right), top + metrics.height()}));
}

} // namespace zelvar
