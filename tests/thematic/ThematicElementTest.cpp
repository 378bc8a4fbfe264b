#include "support/Ink.h"
#include "support/Test.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/thematic/ThematicGroup.h"

#include <QtGui/QImage>
#include <QtGui/QPainter>

namespace zelvar {

static void PrintTo(Rect const &rect, std::ostream *out) {
    *out << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom;
}

namespace {

constexpr Rect kPlace{10, 10, 28, 28};

QImage Drawn(ThematicDrawElement const &element) {
    QImage image(60, 60, QImage::Format_RGB32);
    image.fill(Qt::cyan);
    QPainter painter(&image);
    element.Draw(painter, true);
    return image;
}

bool IsUntouched(QImage const &image) {
    QImage empty(image.size(), image.format());
    empty.fill(Qt::cyan);
    return image == empty;
}

TEST(ThematicButtonBase, HearsOfTheMouse) {
    constexpr Point in{15, 15};
    constexpr Point out{28, 15}; // the right edge lies outside
    std::tuple<char const *, EMouseEvnt, Point, bool, int, int> const cases[] = {
        {"enters", MouseEvntMove, in, true, 0, 1},          {"leaves", MouseEvntMove, out, true, 1, 0},
        {"leaves pressed", MouseEvntMove, out, true, 3, 2}, {"enters disabled", MouseEvntMove, in, false, 0, 0},
        {"stays disabled", MouseEvntMove, in, false, 1, 1}, {"leaves disabled", MouseEvntMove, out, false, 1, 0},
        {"is pressed", MouseEvntLDown, in, true, 1, 3},     {"is pressed disabled", MouseEvntLDown, in, false, 0, 0},
        {"is missed", MouseEvntLDown, out, true, 0, 0},     {"is let go outside", MouseEvntLUp, out, true, 2, 0},
        {"is left", MouseEvntLeave, in, true, 3, 0}};
    for (auto const &[name, event, point, enabled, before, after] : cases) {
        ThematicButton button(1, false, 0);
        button.SetRect(kPlace);
        button.SetEnabled(enabled);
        button.SetState(before);
        EXPECT_EQ(button.MouseEvent(event, point), before != after) << name;
        EXPECT_EQ(button.GetState(), after) << name;
    }
}

TEST(ThematicBitmapButton, ShowsThePictureOfItsState) {
    for (int const base : {0, 3}) {
        ThematicBitmapButton button(1, base);
        for (auto const &[state, shown] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 2}}) {
            button.SetState(state);
            EXPECT_EQ(button.GetShownIndex(), base + shown);
        }
    }
    EXPECT_FALSE(ThematicBitmapButton(1, -1).IsValid());
    for (int const none : {-1, 7}) { // 7: behind the strip
        ThematicBitmapButton button(1, none);
        button.SetRect(kPlace);
        EXPECT_TRUE(IsUntouched(Drawn(button)));
    }
}

TEST(ThematicButton, IsACircleWithAMinusOrAPlus) {
    ThematicButton button(1, true, Rgb(0, 200, 0));
    button.SetRect(kPlace);
    QImage image = Drawn(button);
    for (QPoint const bar : {QPoint(19, 15), QPoint(19, 22), QPoint(15, 19)}) // they have a half length of 4
        EXPECT_EQ(image.pixelColor(bar), Qt::black);
    EXPECT_NE(image.pixelColor(19, 23), Qt::black);
    EXPECT_EQ(image.pixelColor(10, 10), Qt::cyan); // the corner of the circle's square
    button.SetAddButton(false);
    EXPECT_NE(Drawn(button).pixelColor(19, 15), Qt::black);
    EXPECT_EQ(image.pixelColor(28, 20), Qt::cyan);
    button.SetState(ThematicButtonBase::kHovered);
    EXPECT_NE(Drawn(button).pixelColor(28, 20), Qt::cyan); // its shadow
    button.SetState(ThematicButtonBase::kHovered | ThematicButtonBase::kPressed);
    EXPECT_EQ(Drawn(button).pixelColor(16, 20), Qt::black); // moved with the press
    button.SetEnabled(false);
    EXPECT_TRUE(IsUntouched(Drawn(button)));
}

TEST(ThematicHyperlink, IsALinkOrPlainText) {
    ThematicHyperlink link(1);
    link.SetRect({0, 0, 60, 60});
    EXPECT_TRUE(IsUntouched(Drawn(link)) && !link.IsAvailable());
    link.SetText("Link");
    EXPECT_TRUE(link.GetFont().underline());
    auto const hasBlue = [](QImage const &image) {
        auto const isBlue = [](QColor const &c) { return c.green() < 40 && c.blue() - c.red() > 100; };
        return test::InkOf(image, isBlue).count > 0;
    };
    EXPECT_TRUE(hasBlue(Drawn(link)));
    link.SetEnabled(false);
    EXPECT_FALSE(link.GetFont().underline());
    QImage const plain = Drawn(link);
    EXPECT_FALSE(IsUntouched(plain)); // drawn all the same
    EXPECT_FALSE(hasBlue(plain));
}

TEST(ThematicBitmap, IsWhatCanBeLoaded) {
    test::TempFolder const folder;
    DString const file = folder / "green.png"; // which its name says, and not what it is
    QImage green(4, 4, QImage::Format_RGB32);
    green.fill(Qt::green);
    ASSERT_TRUE(green.save(QString::fromStdString(file), "BMP"));
    ThematicBitmap bitmap;
    bitmap.SetRect(kPlace);
    bitmap.SetBitmap(file.c_str());
    ASSERT_TRUE(bitmap.IsValid());
    EXPECT_EQ(Drawn(bitmap).pixelColor(27, 27), Qt::green); // stretched
    for (DString const &bad : {DString(), folder / "none.png", folder.Write("text.png"), folder.Path()}) {
        bitmap.SetBitmap(file.c_str());
        bitmap.SetBitmap(bad.c_str());
        EXPECT_FALSE(bitmap.IsValid()) << bad;
        EXPECT_TRUE(IsUntouched(Drawn(bitmap)));
    }
    bitmap.SetBitmap(static_cast<char const *>(nullptr));
    EXPECT_FALSE(bitmap.IsValid());
    CZelImageList::RegisterIcon(901, "folder", "folder");
    bitmap.SetBitmap(901);
    EXPECT_TRUE(bitmap.IsValid() && !IsUntouched(Drawn(bitmap)));
    for (int const none : {-1, 902}) {
        bitmap.SetBitmap(901);
        bitmap.SetBitmap(none);
        EXPECT_FALSE(bitmap.IsValid()) << none;
    }
}

TEST(ThematicItem, IsLaidOutFromRightToLeft) {
    ThematicItem item("text", 0, true);
    item.SetRect({34, 100, 234, 132});
    item.RepositionElmts();
    EXPECT_EQ(item.IconLeft().GetRect(), (Rect{35, 100, 67, 132}));
    EXPECT_EQ(item.UpButton().GetRect(), (Rect{224, 102, 233, 110}));
    EXPECT_EQ(item.DownButton().GetRect(), (Rect{224, 122, 233, 130}));
    EXPECT_EQ(item.RemoveButton().GetRect(), (Rect{204, 107, 222, 125}));
    EXPECT_EQ(item.IconRight().GetRect(), (Rect{171, 100, 203, 132}));
    EXPECT_EQ(item.TextElement().GetRect(), (Rect{67, 100, 171, 132}));
    ThematicItem fixed("text", 0, false);
    fixed.SetRect({34, 100, 234, 132});
    fixed.RepositionElmts();
    EXPECT_EQ(fixed.RemoveButton().GetRect(), Rect());
    EXPECT_EQ(fixed.IconRight().GetRect(), (Rect{191, 100, 223, 132}));
    EXPECT_TRUE(fixed.GetReadOnly());
}

TEST(ThematicGroup, MeasuresAndPlacesItsItems) {
    ThematicGroup group("Thing", "id", Rgb(1, 2, 3), Rgb(4, 5, 6), 0);
    EXPECT_EQ(group.ComputeHeight(), 32);
    EXPECT_EQ(group.Link().GetText(), "Add Thing...");
    for (char const *name : {"a", "b", "c"})
        group.AddTail(ThematicItem::Create(name, -1, 0, true));
    EXPECT_EQ(group.ComputeHeight(), 100);
    group.Get(1)->SetVisible(false);
    EXPECT_EQ(group.ComputeHeight(), 66);
    group.SetRect({1, 50, 300, 116});
    group.RepositionElmts();
    EXPECT_EQ(group.Get(0)->GetRect(), (Rect{34, 50, 300, 82}));
    EXPECT_EQ(group.Get(2)->GetRect(), (Rect{34, 84, 300, 116}));
    EXPECT_EQ(group.AddButton().GetRect(), (Rect{11, 54, 29, 72}));
    EXPECT_EQ(group.Link().GetRect(), Rect());
    EXPECT_FALSE(group.Get(0)->UpButton().IsEnabled() || group.Get(2)->DownButton().IsEnabled());
    EXPECT_TRUE(group.Get(0)->DownButton().IsEnabled() && group.Get(2)->UpButton().IsEnabled());
}

TEST(ThematicGroup, CentresItsLinkBehindTheStrip) {
    ThematicGroup group("Thing", "id", 0, 0, 0);
    group.SetRect({1, 0, 302, 32});
    group.RepositionElmts();
    Rect const wide = group.Link().GetRect();
    EXPECT_NEAR(wide.left - 31, 300 - wide.right, 1);
    EXPECT_NEAR(wide.top, 32 - wide.bottom, 1);
    group.SetRect({1, 0, 60, 32});
    group.RepositionElmts();
    EXPECT_EQ(std::pair(group.Link().GetRect().left, group.Link().GetRect().right), std::pair(31, 58)); // cut
    group.SetEnblAdd(false);
    EXPECT_EQ(group.Link().GetText(), "No Thing items");
    EXPECT_FALSE(group.Link().IsEnabled());
    group.SetText("Rule");
    EXPECT_EQ(group.GetHyperlinkText(), "No Rule items");
}

TEST(ThematicGroup, KeepsItsItemsInOrder) {
    ThematicGroup group("g", "id", 0, 0, 0);
    ThematicItem *const a = ThematicItem::Create("a", -1, 0, true);
    ThematicItem *const b = ThematicItem::Create("b", "", 0, true);
    group.AddTail(a);
    group.AddTail(nullptr);
    group.Insert(b, -5);
    EXPECT_EQ(group.Get(0), b);
    EXPECT_EQ(b->GetGrp(), &group);
    EXPECT_TRUE(!group.MoveItem(b, true) && group.MoveItem(b, false) && !group.MoveItem(b, false));
    EXPECT_EQ(group.FindRplcItem(nullptr), a);
    EXPECT_EQ(group.FindRplcItem(a), b);
    EXPECT_EQ(group.FindRplcItem(b), nullptr);
    ThematicItem const stranger("x", 0, true);
    EXPECT_EQ(group.FindRplcItem(&stranger), a);
    EXPECT_FALSE(group.MoveItem(nullptr, true));

    ThematicGroup other("o", "id", 0, 0, 0);
    other.MoveChldr(group);
    EXPECT_EQ(group.GetNumItem(), 0);
    EXPECT_EQ(other.GetNumItem(), 2);
    EXPECT_EQ(a->GetGrp(), &group); // keeps its answer
    other.RmvItem(a, true);
    EXPECT_EQ(other.TakeItem(b).release(), b);
    EXPECT_EQ(other.GetNumItem(), 0);
    other.RmvItem(b, true); // not there, and deleted

    EXPECT_EQ(other.Get(2), nullptr); // grows
    EXPECT_EQ(other.GetNumItem(), 3);
    EXPECT_EQ(other.Get(-1), nullptr);
    other.SetRect({0, 0, 100, 40});
    other.RepositionElmts();
    EXPECT_FALSE(other.MouseEvent(MouseEvntMove, {50, 10}));
    ThematicHit hit;
    EXPECT_TRUE(other.HitTest({50, 10}, &hit));
    QImage image(100, 40, QImage::Format_RGB32);
    QPainter painter(&image);
    other.Draw(painter, true); // empty entries do no harm
    ThematicGroup::Delete(nullptr);
}

} // namespace
} // namespace zelvar
