#include "zelvar/thematic/TmtcListCtrl.h"

#include "support/GuiTest.h"
#include "support/ScreenReader.h"
#include "zelvar/platform/ui/ControlId.h"

namespace zelvar {
namespace {

using Item = TmtcListCtrl::Item;
using Group = TmtcListCtrl::Group;
using Elmt = TmtcListCtrl::Elmt;
using Texts = std::vector<std::string>;

/// A list that writes down what it is asked for.
class RecordingList : public TmtcListCtrl {
public:
    Texts calls;
    bool makesItems = false;

    void OnSlctChng(Elmt *oldElmt, Elmt *newElmt) override {
        calls.push_back("select " + Name(oldElmt) + ">" + Name(newElmt));
        TmtcListCtrl::OnSlctChng(oldElmt, newElmt);
    }
    void OnRmvItem(Group *group, Item *item) override {
        calls.push_back("remove " + Name(group) + "/" + Name(item));
        TmtcListCtrl::OnRmvItem(group, item);
    }
    Item *OnAddToGroup(Group *group) override {
        calls.push_back("add " + Name(group));
        return makesItems ? Item::Create("new", -1, 0, true) : nullptr;
    }
    bool OnMoveItem(Group *group, Item *item, bool up) override {
        calls.push_back((up ? "up " : "down ") + Name(group) + "/" + Name(item));
        return TmtcListCtrl::OnMoveItem(group, item, up);
    }
    Texts Take() { return std::exchange(calls, {}); }

private:
    static DString Name(Elmt const *elmt) { return elmt == nullptr ? "-" : elmt->GetText(); }
};

/// Group "G" with a, b, c; the empty group "E"; the item "i". 300 pixels wide.
struct ListStage {
    RecordingList list;
    Group *group = Group::Create("G", "g", Rgb(0, 0, 128), Rgb(0, 0, 255), 0);
    Group *empty = Group::Create("E", "e", Rgb(0, 128, 0), Rgb(0, 255, 0), 0);
    Item *a = Item::Create("a", -1, 0, true);
    Item *b = Item::Create("b", -1, 0, true);
    Item *c = Item::Create("c", -1, 0, false);
    Item *single = Item::Create("i", -1, 0, true);

    explicit ListStage(Qt::LayoutDirection direction = Qt::LeftToRight) {
        list.setLayoutDirection(direction);
        for (Item *item : {a, b, c})
            group->AddTail(item);
        list.AddTail(group);
        list.AddTail(empty);
        list.AddTail(single);
        list.resize(300, 300);
        list.show();
        static_cast<void>(list.grab()); // laid out with a paint
        list.Take();
    }
    void ClickOn(ThematicDrawElement const &element) {
        list.RepositionItems();
        ClickAt(Middle(element.GetRect()));
    }
    void ClickAt(QPoint place, Qt::MouseButton button = Qt::LeftButton) {
        static_cast<void>(list.grab());
        QTest::mouseClick(&list, button, {}, place);
    }
    static QPoint Middle(Rect const &rect) { return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2}; }
    QPoint TextOf(Item const *item) { return Middle(item->TextElement().GetRect()); }
};

TEST(TmtcListCtrl, StacksItsElements) {
    ListStage stage;
    EXPECT_EQ(stage.group->GetRect(), (Rect{1, 2, 300, 102}));
    EXPECT_EQ(stage.empty->GetRect(), (Rect{1, 104, 300, 136}));
    EXPECT_EQ(stage.single->GetRect(), (Rect{1, 138, 300, 170}));
    EXPECT_EQ(stage.list.GetContentHeight(), 172);
    ListStage const mirrored(Qt::RightToLeft);
    auto const turned = [](Rect const &at) { return Rect{300 - at.right, at.top, 300 - at.left, at.bottom}; };
    EXPECT_EQ(mirrored.single->GetRect(), turned(stage.single->GetRect()));
    EXPECT_EQ(mirrored.a->IconLeft().GetRect(), turned(stage.a->IconLeft().GetRect()));
    EXPECT_EQ(mirrored.a->TextElement().GetRect(), turned(stage.a->TextElement().GetRect()));
    EXPECT_EQ(mirrored.a->DownButton().GetRect(), turned(stage.a->DownButton().GetRect()));
    EXPECT_EQ(mirrored.group->AddButton().GetRect(), turned(stage.group->AddButton().GetRect()));
    EXPECT_EQ(mirrored.empty->Link().GetRect(), turned(stage.empty->Link().GetRect()));
    stage.group->SetVisible(false);
    stage.list.RepositionItems();
    EXPECT_EQ(stage.empty->GetRect().top, 2);
    EXPECT_EQ(stage.list.windowTitle(), "Thematic List Control");
    EXPECT_TRUE(stage.list.FindGroup(DString("e")) == stage.empty && stage.list.FindGroup(stage.b) == stage.group);
    EXPECT_EQ(stage.list.Get(3), nullptr);
    EXPECT_TRUE(TmtcListCtrl::IsGroup(stage.list.GetHead()) && TmtcListCtrl::IsItem(stage.list.GetTail()));
}

TEST(TmtcListCtrl, IsMadeAtItsPlaceAndSelectsItsFirstItemAndNeverAGroup) {
    QWidget parent;
    auto &list = *new RecordingList;
    EXPECT_EQ(list.Create(0, {5, 6, 105, 206}, nullptr, 77), 0);
    EXPECT_EQ(list.Create(0, {5, 6, 105, 206}, &parent, 77), 1);
    EXPECT_EQ(platform::GetDlgItem(parent, 77), &list);
    EXPECT_EQ(list.geometry(), QRect(5, 6, 100, 200));
    list.AddTail(Group::Create("G", "g", 0, 0, 0));
    EXPECT_EQ(list.GetSlctElmt(), nullptr);
    list.AddPos(0, Item::Create("i", -1, 0, true));
    list.AddTail(Item::Create("j", -1, 0, true));
    EXPECT_EQ(list.Take(), (Texts{"select ->i"}));
    EXPECT_TRUE(list.GetSlctItem() == list.GetHead() && list.GetHead()->IsSelected());
}

TEST(TmtcListCtrl, DrawsWhatIsSelectedInGold) {
    ListStage stage;
    QImage const picture = test::PictureOf(stage.list);
    EXPECT_EQ(picture.pixelColor(100, 138), QColor(255, 215, 0)); // the single item
    EXPECT_GT(picture.pixelColor(150, 5).lightness(),
              picture.pixelColor(150, 31).lightness() + 10); // an item's gradient
    EXPECT_GT(picture.pixelColor(30, 50).blue(), 240);       // the end of the group's gradient
    EXPECT_LT(picture.pixelColor(4, 50).blue(), 150);
    ListStage mirrored(Qt::RightToLeft);
    EXPECT_GT(test::ColorAt(mirrored.list, {299 - 30, 50}).blue(), 240);
    EXPECT_LT(test::ColorAt(mirrored.list, {299 - 4, 50}).blue(), 150);
    EXPECT_EQ(picture.pixelColor(200, 103), stage.list.palette().color(QPalette::Window)); // between two elements
}

TEST(TmtcListCtrl, TextsAreWholeAndReadable) {
    ListStage stage;
    auto const contrastOf = [&](ThematicDrawElement const &element) {
        Rect const &area = element.GetRect();
        return test::StrongestContrast(test::PictureOf(stage.list),
                                       {area.left + 3, area.top + 1, area.Width() - 6, area.Height() - 2});
    };
    EXPECT_GE(contrastOf(stage.a->TextElement()), 4.5);
    {
        test::DarkPalette const dark;
        EXPECT_LT(test::ColorAt(stage.list, {100, 40}).lightness(), 110); // an item's ground
        EXPECT_GE(contrastOf(stage.a->TextElement()), 4.5);
        EXPECT_GE(contrastOf(stage.empty->Link()), 4.5);
        EXPECT_GE(contrastOf(stage.a->DownButton()), 4.5);
        EXPECT_GE(contrastOf(stage.single->RemoveButton()), 4.5);
    }
    QFontMetrics const metrics(stage.empty->Link().GetFont());
    for (char const *name : {"E", "Export", "Rule", "Miniature", "will"}) {
        stage.empty->SetText(name);
        stage.empty->RepositionElmts();
        QString const text = QString::fromStdString(stage.empty->GetHyperlinkText());
        EXPECT_EQ(metrics.elidedText(text, Qt::ElideRight, stage.empty->Link().GetRect().Width()), text);
    }
}

TEST(TmtcListCtrl, ClicksSelectItemsAndGroupsWhereTheyMay) {
    ListStage stage;
    stage.ClickAt(stage.TextOf(stage.b));
    EXPECT_EQ(stage.list.Take(), (Texts{"select i>b"}));
    stage.ClickAt({20, 60});   // the strip
    stage.ClickAt({200, 250}); // the background
    EXPECT_TRUE(stage.list.Take().empty());
    stage.list.SetEnblGrpSlct(true);
    stage.ClickAt({20, 60});
    stage.ClickAt(stage.TextOf(stage.c), Qt::RightButton);
    EXPECT_EQ(stage.list.Take(), (Texts{"select b>G", "select G>c"}));
    EXPECT_FALSE(stage.group->IsSelected());
}

TEST(TmtcListCtrl, ButtonsLeadToTheirOperations) {
    for (Qt::LayoutDirection const direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        ListStage stage(direction);
        QPoint const onAdd = ListStage::Middle(stage.group->AddButton().GetRect());
        for (Qt::MouseButton const button : {Qt::RightButton, Qt::MiddleButton, Qt::LeftButton}) // the last is enough
            QTest::mouseRelease(&stage.list, button, {}, onAdd);
        stage.ClickOn(stage.empty->Link());
        stage.ClickOn(stage.b->UpButton());
        EXPECT_EQ(stage.group->Get(0), stage.b);
        stage.ClickOn(stage.b->DownButton());
        stage.ClickOn(stage.single->RemoveButton());
        EXPECT_EQ(stage.list.Take(), (Texts{"add G", "add E", "up G/b", "down G/b", "remove -/i", "select i>-"}));
        EXPECT_EQ(stage.list.GetNumElmt(), 2);
        stage.list.makesItems = true;
        stage.ClickOn(stage.group->AddButton());
        EXPECT_EQ(stage.group->GetNumItem(), 4);
    }
}

TEST(TmtcListCtrl, TheNextRemoveButtonLightsUpAfterARemoval) {
    ListStage stage;
    stage.ClickAt(stage.TextOf(stage.a));
    stage.ClickOn(stage.a->RemoveButton());
    EXPECT_EQ(stage.b->RemoveButton().GetState(), ThematicButtonBase::kHovered);
    EXPECT_EQ(stage.list.GetSlctElmt(), nullptr); // no neighbour takes the selection
    stage.list.OnRmvItem(stage.group, stage.c);   // behind its group there is an empty one
    EXPECT_EQ(stage.group->GetNumItem(), 1);
    ListStage other;
    other.list.Rmv(other.empty);
    other.list.OnRmvItem(other.group, other.c);
    EXPECT_EQ(other.single->RemoveButton().GetState(), ThematicButtonBase::kHovered) << "past the end of its group";
    stage.list.OnRmvItem(stage.group, stage.b);
    EXPECT_EQ(stage.group->GetNumItem(), 0);
    stage.list.OnRmvItem(stage.group, nullptr);
    stage.list.OnRmvItem(nullptr, nullptr);
}

TEST(TmtcListCtrl, TheSelectionNeverRestsOnWhatIsGone) {
    ListStage stage;
    stage.ClickAt(stage.TextOf(stage.b));
    stage.group->RmvItem(stage.b, true); // past the list
    EXPECT_EQ(stage.list.GetSlctElmt(), nullptr);
    stage.ClickAt(stage.TextOf(stage.a));
    stage.list.Rmv(stage.group);
    EXPECT_EQ(stage.list.GetSlctElmt(), nullptr);
    stage.ClickAt(stage.TextOf(stage.single));
    std::unique_ptr<Elmt> const tail = stage.list.TakeTail();
    EXPECT_EQ(tail.get(), stage.single);
    EXPECT_FALSE(tail->IsSelected());
    std::unique_ptr<Elmt> const head = stage.list.TakeHead();
    EXPECT_EQ(stage.list.RmvHead(), nullptr);
    static_cast<void>(stage.list.grab());
}

TEST(TmtcListCtrl, WalksItemsInTheOrderShown) {
    ListStage stage;
    stage.b->SetVisible(false);
    Texts names;
    for (Item *item = stage.list.GetNextItem(nullptr, true, false); item != nullptr;
         item = stage.list.GetNextItem(item, true, false))
        names.push_back(item->GetText());
    EXPECT_EQ(names, (Texts{"a", "c", "i"}));
    EXPECT_EQ(stage.list.GetNextItem(stage.a, false, false), stage.b);
    EXPECT_EQ(stage.list.GetNextItem(stage.single, false, true), stage.c);
    EXPECT_EQ(stage.list.GetNextItem(stage.a, false, true), nullptr);
    EXPECT_TRUE(stage.list.MoveElmnt(stage.group, false));
    EXPECT_EQ(stage.list.GetHead(), stage.empty);
    EXPECT_FALSE(stage.list.MoveElmnt(stage.group, false)); // an item is behind it
    EXPECT_TRUE(!stage.list.MoveElmnt(stage.empty, true) && stage.list.MoveElmnt(stage.group, true));
    EXPECT_TRUE(stage.list.GetHead() == stage.group && !stage.list.MoveElmnt(stage.single, true));
}

TEST(TmtcListCtrl, TheHandShowsOverButtons) {
    ListStage stage;
    auto const shapeAt = [&](QPoint place) {
        QTest::mouseMove(&stage.list, place);
        return stage.list.cursor().shape();
    };
    EXPECT_EQ(shapeAt(ListStage::Middle(stage.group->AddButton().GetRect())), Qt::PointingHandCursor);
    EXPECT_EQ(stage.group->AddButton().GetState(), ThematicButtonBase::kHovered);
    EXPECT_EQ(shapeAt(stage.TextOf(stage.a)), Qt::ArrowCursor);
    EXPECT_EQ(stage.group->AddButton().GetState(), 0);
    EXPECT_EQ(shapeAt(ListStage::Middle(stage.a->UpButton().GetRect())), Qt::ArrowCursor); // it cannot move up
}

TEST(TmtcListCtrl, KeysWorkOnlyWhenTold) {
    ListStage stage;
    QTest::keyClick(&stage.list, Qt::Key_Home);
    QTest::keyClick(&stage.list, Qt::Key_Delete);
    EXPECT_TRUE(stage.list.Take().empty());
    stage.list.SetKeyboardControl(true);
    QTest::keyClick(&stage.list, Qt::Key_Home); // on the group, which cannot be selected
    EXPECT_EQ(stage.list.GetFocusElmt(), stage.group);
    QTest::keyClick(&stage.list, Qt::Key_Return);
    QTest::keyClick(&stage.list, Qt::Key_Down);
    QTest::keyClick(&stage.list, Qt::Key_Down, Qt::ControlModifier);
    QTest::keyClick(&stage.list, Qt::Key_Up, Qt::ControlModifier);
    QTest::keyClick(&stage.list, Qt::Key_Delete);
    EXPECT_EQ(stage.list.GetFocusElmt(), stage.b); // what came into its place
    QTest::keyClick(&stage.list, Qt::Key_End);
    QTest::keyClick(&stage.list, Qt::Key_Up);
    QTest::keyClick(&stage.list, Qt::Key_Enter);
    EXPECT_EQ(stage.list.Take(),
              (Texts{"add G", "select i>a", "down G/a", "up G/a", "remove G/a", "select a>-", "select ->i", "add E"}));
    QTest::keyClick(&stage.list, Qt::Key_Up); // c is read only
    QTest::keyClick(&stage.list, Qt::Key_Delete);
    EXPECT_EQ(stage.group->GetNumItem(), 2);
    QTest::keyClick(&stage.list, Qt::Key_End);
    QTest::keyClick(&stage.list, Qt::Key_Delete);
    EXPECT_EQ(stage.list.GetFocusElmt(), stage.empty) << "nothing came into the place of the last";
}

TEST(TmtcListCtrl, ADottedFrameShowsWhereTheKeyboardIs) {
    ListStage stage;
    stage.list.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&stage.list));
    for (auto const &[key, at] :
         {std::pair{Qt::Key_Home, stage.group->StripRect()}, {Qt::Key_End, stage.single->GetRect()}}) {
        QImage const without = test::PictureOf(stage.list);
        stage.list.SetKeyboardControl(true);
        stage.list.setFocus();
        QTest::keyClick(&stage.list, key);
        QImage const with = test::PictureOf(stage.list);
        stage.list.SetKeyboardControl(false);
        QRect frame;
        for (int i = 0; i < with.width() * with.height(); ++i)
            if (QPoint const place(i % with.width(), i / with.width()); with.pixel(place) != without.pixel(place))
                frame |= QRect(place, QSize(1, 1));
        QRect const expected(at.left + 2, at.top + 2, at.Width() - 5, at.Height() - 4);
        EXPECT_TRUE(expected.contains(frame) && frame.contains(expected.adjusted(2, 2, -2, -2)));
    }
}

TEST(TmtcListCtrl, ScreenReadersSeeAndWorkIt) {
    auto stage = std::make_unique<ListStage>();
    QAccessibleInterface *const list = QAccessible::queryAccessibleInterface(&stage->list);
    ASSERT_EQ(list->childCount(), 3);
    EXPECT_EQ(list->role(), QAccessible::List);
    QAccessibleInterface *const group = list->child(0);
    EXPECT_TRUE(group->role() == QAccessible::Grouping && list->indexOfChild(group) == 0);
    EXPECT_EQ(list->child(1)->text(QAccessible::Description), "Add E...");
    ASSERT_EQ(group->childCount(), 4); // and the button that adds
    QAccessibleInterface *const a = group->child(0);
    EXPECT_EQ(a->text(QAccessible::Name), "a");
    EXPECT_EQ(a->role(), QAccessible::ListItem);
    EXPECT_EQ(a->parent(), group);
    EXPECT_EQ(group->indexOfChild(a), 0);
    EXPECT_EQ(group->actionInterface()->actionNames(), QStringList{"Add"});
    a->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    using test::StatesOf;
    EXPECT_EQ(StatesOf(a), "selectable selected");
    EXPECT_EQ(StatesOf(list->child(2)), "selectable");
    EXPECT_EQ(StatesOf(group), "expandable expanded");
    EXPECT_EQ(StatesOf(list->child(1)), "");
    EXPECT_EQ(StatesOf(a->child(0)) + "|" + StatesOf(a->child(1)), "disabled|") << "it cannot move up";
    EXPECT_TRUE(a->child(0)->actionInterface()->actionNames().isEmpty());
    stage->list.SetKeyboardControl(true);
    stage->list.SetEnblGrpSlct(true);
    stage->a->SetVisible(false);
    EXPECT_EQ(StatesOf(a), "selectable selected focusable offscreen invisible");
    stage->a->SetVisible(true);
    stage->list.setEnabled(false);
    EXPECT_EQ(StatesOf(group) + StatesOf(a->child(1)), "disabled selectable focusable expandable expandeddisabled");
    stage->list.setEnabled(true);
    EXPECT_EQ(a->child(1)->text(QAccessible::Name), "Move down");
    EXPECT_EQ(a->child(1)->parent(), a);
    a->child(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(stage->group->Get(1), stage->a);
    EXPECT_EQ(StatesOf(group->child(2)), "selectable focusable fixed");
    EXPECT_EQ(group->child(2)->childCount(), 0);
    QAccessibleInterface *const link = list->child(1)->child(1);
    EXPECT_EQ(link->role(), QAccessible::Link);
    EXPECT_EQ(link->text(QAccessible::Name), "Add E...");
    QPoint const at = link->rect().center();
    EXPECT_EQ(list->childAt(at.x(), at.y())->childAt(at.x(), at.y()), link);
    stage->list.makesItems = true;
    link->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_FALSE(link->isValid());
    EXPECT_EQ(stage->empty->GetNumItem(), 1);
    a->actionInterface()->doAction("Remove");
    EXPECT_FALSE(a->isValid());
    EXPECT_EQ(group->childCount(), 3);
    QAccessible::Id const part = QAccessible::uniqueId(group);
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(list));
    EXPECT_EQ(QAccessible::accessibleInterface(part), nullptr) << "the parts go with the whole";
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&stage->list)->childCount(), 3);
    stage.reset(); // nothing asks what is gone
}

TEST(TmtcListCtrl, ScreenReadersHearWhatChanges) {
    ListStage stage;
    stage.list.SetKeyboardControl(true);
    stage.list.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&stage.list));
    std::ignore = QAccessible::queryAccessibleInterface(&stage.list); // someone looks
    QCoreApplication::processEvents();
    test::ScreenReader const reader;
    stage.list.Select(stage.b);
    QTest::keyClick(&stage.list, Qt::Key_Delete);
    stage.list.makesItems = true;
    stage.list.Perform(kThematicAdd, stage.empty);
    EXPECT_EQ(reader.Take(), (Texts{"deselect i", "select b", "deselect b", "gone b", "focus c", "new new"}));
    // What the application does by itself.
    stage.list.Select(stage.a);
    stage.group->MoveItem(stage.a, false);
    stage.empty->MoveChldr(*stage.group);
    stage.empty->RmvItem(stage.a, true);
    QCoreApplication::processEvents();
    EXPECT_EQ(reader.Take(), (Texts{"select a", "gone a", "new a", "focus a", "gone c", "deselect a", "gone a", "new c",
                                    "new a", "select a", "deselect a", "gone a", "focus Thematic List Control"}));
    stage.list.Select(stage.c);
    stage.empty->RmvItem(stage.c, true);
    QCoreApplication::processEvents();
    EXPECT_EQ(reader.Take(), (Texts{"select c", "deselect c", "gone c", "focus Thematic List Control"}));
}

} // namespace
} // namespace zelvar
