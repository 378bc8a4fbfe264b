#include "zelvar/lists/CZelTreeCtrl.h"

#include "support/TreeStage.h"
#include "zelvar/lists/CTreeCtrlItr.h"
#include "zelvar/lists/CZelTreeCtrlEx.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/VirtualKey.h"

#include <QtWidgets/QDialog>

namespace zelvar::test {
namespace {

/// A tree control that writes down what its hooks are told.
class TellingTree : public CZelTreeCtrl, public Teller {
public:
    std::function<void()> onDragEnd = [] {};
    bool handle = false;      ///< what the hooks return
    long long editResult = 0; ///< of the hooks of label edits

protected:
    void OnDragEnd(HTREEITEM item, HTREEITEM target) override {
        Tell("drop " + TextOf(item) + " on " + TextOf(target));
        onDragEnd();
    }
    bool DTCDblClck(HTREEITEM item, long long *) override { return Tell("double " + TextOf(item)), handle; }
    bool DTCSlctChg(HTREEITEM former, HTREEITEM now, long long *) override {
        return Tell(TextOf(former) + ">" + TextOf(now)), handle;
    }
    void DTCKeyDown(unsigned short key, long long *result) override {
        Tell("key " + std::to_string(key));
        *result = handle ? 1 : 0;
    }
    bool DTCCntxMenu(HTREEITEM item, Point point, long long *) override {
        EXPECT_EQ(GetItem(point), item);
        return Tell("menu " + TextOf(item)), handle;
    }
    void DTCBeginLabelEdit(NMHDR *header, long long *result) override {
        Tell("begin " + TextOf(reinterpret_cast<NMTVDISPINFO *>(header)->item.hItem));
        *result = editResult;
    }
    void DTCEndLabelEdit(NMHDR *header, long long *result) override {
        Tell(std::string("end ") + reinterpret_cast<NMTVDISPINFO *>(header)->item.pszText);
        *result = editResult;
    }
    bool DTCLButtonDown(HTREEITEM item, unsigned flags, Point) override {
        if (handle)
            Tell("button " + TextOf(item) + " " + std::to_string(flags));
        return handle;
    }
};

/// Three items at the top, two below the first.
struct CZelTreeCtrlTest : testing::Test {
    CZelTreeCtrlTest() {
        tree.Expand(a, TVE_EXPAND);
        tree.EnableLeftDrag(true);
    }
    /// Presses on an item and moves so far that a drag begins, onto another one.
    void Drag(HTREEITEM from, HTREEITEM to, Qt::MouseButton button = Qt::LeftButton) {
        stage.Press(stage.On(from), button);
        stage.Move(stage.On(from) + QPoint(QApplication::startDragDistance(), 0), button);
        stage.Move(stage.On(to), button);
    }
    /// Lets go; what is told of that.
    std::string Drop(QPoint at, Qt::MouseButton button = Qt::LeftButton) {
        tree.Take();
        stage.Release(at, button);
        return tree.Take();
    }
    /// Whether it keeps the key away from a dialog around.
    [[nodiscard]] bool TakesEscape() {
        QKeyEvent escape(QEvent::ShortcutOverride, Qt::Key_Escape, Qt::NoModifier);
        escape.ignore();
        QApplication::sendEvent(&tree, &escape);
        return escape.isAccepted();
    }
    [[nodiscard]] QWidget *Overlay() { return tree.viewport()->findChild<QWidget *>(); }
    [[nodiscard]] int Image(HTREEITEM item) {
        std::pair image{-2, -2};
        tree.GetItemImage(item, image.first, image.second);
        EXPECT_EQ(image.first, image.second);
        return image.first;
    }
    void ExpectNoDrag() {
        EXPECT_TRUE(!tree.IsInDragMode() && tree.GetDragItem() == nullptr && tree.GetDropHilightItem() == nullptr);
        EXPECT_TRUE(QApplication::overrideCursor() == nullptr && QWidget::mouseGrabber() == nullptr);
        EXPECT_TRUE(Overlay() == nullptr && !TakesEscape());
    }

    TellingTree tree;
    TreeStage stage{tree};
    HTREEITEM a = tree.AddItem("a", 1, TVI_ROOT, TVI_LAST);
    HTREEITEM a1 = tree.AddItem("a1", 11, a, TVI_LAST);
    HTREEITEM a2 = tree.AddItem("a2", 12, a, TVI_LAST);
    HTREEITEM b = tree.AddItem("b", 2, TVI_ROOT, TVI_LAST);
    HTREEITEM c = tree.AddItem("c", 3, TVI_ROOT, TVI_LAST);
};

TEST_F(CZelTreeCtrlTest, ItemsAreFoundByDataAndTextAndWalkedWithinASubtree) {
    for (auto const &[root, expected, found] : Rows<HTREEITEM, char const *, HTREEITEM>{
             {nullptr, "a a1 a2 b c ", b}, {a, "a a1 a2 ", nullptr}, {a2, "a2 ", nullptr}, {c, "c ", nullptr}}) {
        std::string texts;
        CTreeCtrlItr item(&tree, root);
        EXPECT_FALSE(item.Cont());
        for (item.Frst(); item.Cont(); item.Next())
            texts += (*item)->text + " ";
        EXPECT_EQ(item.Next(), nullptr);
        EXPECT_EQ(texts, expected);
        EXPECT_EQ(tree.FindItem(2, root), found);
    }
    EXPECT_TRUE(tree.FindItem("a2") == a2 && tree.FindItem("A2") == nullptr);
    tree.SlctItem("c");
    EXPECT_EQ(tree.GetCrntData(), 3U);
    tree.SlctItem(12, b); // none: nothing is selected
    EXPECT_EQ(tree.GetSelectedItem(), nullptr);
}

TEST_F(CZelTreeCtrlTest, ADragMarksItsTargetAndEndsWithTheButtonThatBeganIt) {
    Drag(a1, b, Qt::RightButton);
    EXPECT_FALSE(tree.IsInDragMode()) << "off unless it is on";
    EXPECT_EQ(Drop(stage.On(b), Qt::RightButton), "menu b");
    tree.EnableRghtDrag(true);
    for (bool const isLeft : {true, false}) {
        Qt::MouseButton const button = isLeft ? Qt::LeftButton : Qt::RightButton;
        Drag(a1, b, button);
        EXPECT_TRUE(isLeft ? tree.IsLeftDrag() : tree.IsRghtDrag());
        EXPECT_TRUE(tree.GetDragItem() == a1 && tree.GetDropHilightItem() == b);
        EXPECT_EQ(QWidget::mouseGrabber(), tree.viewport());
        ASSERT_TRUE(QApplication::overrideCursor() != nullptr && Overlay() != nullptr);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BlankCursor);
        EXPECT_EQ(Overlay()->pos(), stage.On(b)); // the pointer holds its corner
        QPointer<QWidget> const picture = Overlay();
        stage.Move(stage.On(b), button);
        EXPECT_FALSE(picture.isNull()) << "it does not flicker";
        Shot(tree, "tree-control-drag");
        stage.Release(stage.On(b), isLeft ? Qt::RightButton : Qt::LeftButton);
        EXPECT_TRUE(isLeft ? tree.IsLeftDrag() : tree.IsRghtDrag());
        EXPECT_EQ(Drop(stage.On(b), button), "drop a1 on b") << "and no menu";
        ExpectNoDrag();
    }
}

TEST_F(CZelTreeCtrlTest, ADropOnItselfDoesNothingBesideTheItemsItHasNoTargetAndItMayDeleteWhatIsDragged) {
    Drag(a1, a1);
    EXPECT_TRUE(tree.IsInDragMode());
    EXPECT_EQ(tree.GetDropHilightItem(), nullptr);
    EXPECT_EQ(Drop(stage.On(a1)), "");
    ExpectNoDrag();
    Drag(a1, b);
    EXPECT_EQ(Drop(QPoint(20, tree.viewport()->height() - 2)), "drop a1 on -");
    ExpectNoDrag();
    tree.onDragEnd = [this] {
        tree.AddItem(a1->text, a1->data, b, TVI_LAST);
        tree.DeleteItem(a1);
    };
    Drag(a1, b);
    stage.Release(stage.On(b));
    EXPECT_EQ(tree.FindItem(11), tree.GetChildItem(b));
    ExpectNoDrag();
}

TEST_F(CZelTreeCtrlTest, ADragThatLosesItsGroundLeavesNothingBehind) {
    Rows<char const *, std::function<void()>> const cases = {
        {"Escape", [this] { stage.Key(Qt::Key_Escape); }},
        {"the release was never heard", [this] { stage.Move(stage.On(b), Qt::NoButton); }},
        {"hidden", [this] { tree.hide(), tree.show(); }},
        {"disabled", [this] { tree.setEnabled(false), tree.setEnabled(true); }},
        {"a modal dialog",
         [] {
             QDialog dialog;
             dialog.setModal(true);
             dialog.show();
             QApplication::processEvents();
         }},
        {"its item deleted", [this] { tree.DeleteItem(a1); }},
        {"all deleted", [this] { tree.DeleteAllItems(); }}};
    for (auto const &[name, end] : cases) {
        SCOPED_TRACE(name);
        Drag(tree.GetChildItem(a), b);
        ASSERT_TRUE(tree.IsInDragMode() && TakesEscape());
        tree.Take();
        end();
        ExpectNoDrag();
        stage.Release(QPoint(30, 30));
        EXPECT_EQ(tree.Take().find("drop"), std::string::npos);
    }
}

TEST(CZelTreeCtrl, ADragBeyondTheEdgesScrollsAndTheTreeMayDieInIt) {
    auto tree = std::make_unique<CZelTreeCtrl>();
    TreeStage stage(*tree);
    TreeNode *const parent = tree->AddItem("parent", 0, TVI_ROOT, TVI_LAST);
    for (std::uint64_t i = 1; i < 60; ++i)
        tree->AddItem("item", i, parent, TVI_LAST);
    tree->Expand(parent, TVE_EXPAND);
    tree->EnableLeftDrag(true);
    stage.Press(stage.On(parent));
    stage.Move(stage.On(parent) + QPoint(30, 0), Qt::LeftButton);
    int const below = tree->viewport()->height();
    for (auto const &[y, first] : // by siblings, from the first of them to their parent
         Rows<int, std::uint64_t>{
             {below - 1, 0}, {below, 1}, {below, 2}, {below, 3}, {0, 3}, {-1, 2}, {-1, 1}, {-1, 0}, {-1, 0}}) {
        stage.Move(QPoint(20, y), Qt::LeftButton);
        EXPECT_EQ(tree->GetItemData(tree->GetFirstVisibleItem()), first);
    }
    tree->verticalScrollBar()->setValue(tree->verticalScrollBar()->maximum());
    TreeNode *const last = tree->GetFirstVisibleItem();
    stage.Move(QPoint(20, below), Qt::LeftButton);
    EXPECT_TRUE(tree->GetFirstVisibleItem() == last && tree->IsInDragMode());
    tree.reset();
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
}

TEST_F(CZelTreeCtrlTest, ButtonsTellTheHooks) {
    tree.Take();
    stage.Press(stage.On(b));
    EXPECT_EQ(tree.GetClickItem(), b);
    stage.Release(stage.On(b));
    EXPECT_EQ(tree.GetClickItem(), nullptr);
    EXPECT_EQ(tree.Take(), "->b");
    for (char const *const expected : {"menu c", "b>c, menu c"}) {
        stage.Click(stage.On(c), Qt::RightButton);
        EXPECT_EQ(tree.Take(), expected);
        tree.EnableRghtSlct(true);
    }
    tree.handle = true;
    stage.Click(stage.On(a1));
    EXPECT_EQ(tree.Take(), "button a1 1");
    EXPECT_EQ(tree.GetSelectedItem(), c);
}

TEST_F(CZelTreeCtrlTest, WhatIsHandledIsNotDoneOnceMore) {
    int told = 0;
    QObject::connect(&tree, &TreeView::DoubleClick, [&told] { ++told; });
    for (bool const handle : {false, true}) {
        tree.handle = handle;
        stage.DoubleClick(stage.On(a));
        EXPECT_EQ(tree.GetItemState(a, TVIS_EXPANDED), 0U);
        EXPECT_EQ(told, 1);
        tree.Take();
        stage.Type("c");
        EXPECT_EQ(tree.Take(), handle ? "key 67" : "key 67, a>c");
        tree.SelectItem(a);
    }
    tree.Take();
    stage.Key(Qt::Key_Down); // a character is kept from the search, not a direction
    EXPECT_EQ(tree.Take(), "key 40, a>b");
    stage.Key(Qt::Key_Delete);
    EXPECT_EQ(tree.Take(), "key " + std::to_string(VK_DELETE));
}

TEST_F(CZelTreeCtrlTest, TheHooksDecideAboutAnEditOnlyWhileEditingIsEnabled) {
    tree.Take();
    for (bool const isEnabled : {false, true}) {
        tree.EnableEdit(isEnabled);
        QLineEdit *const edit = tree.EditLabel(b);
        ASSERT_NE(edit, nullptr);
        edit->setText("new");
        tree.editResult = isEnabled ? 1 : 0; // other than 0 takes an end over and refuses a begin
        QTest::keyClick(edit, Qt::Key_Return);
        EXPECT_EQ(tree.Take(), isEnabled ? "begin b, end new" : "");
        EXPECT_EQ(tree.GetItemText(b), isEnabled ? "new" : "b");
    }
    EXPECT_EQ(tree.EditLabel(b), nullptr);
    EXPECT_EQ(tree.Take(), "begin new");
}

TEST_F(CZelTreeCtrlTest, AnEditGivesTheHorizontalScrollPositionBackAndNoKeyToAShortcut) {
    int triggered = 0;
    tree.addAction("", Qt::CTRL | Qt::Key_K, [&triggered] { ++triggered; });
    stage.Key(Qt::Key_K, Qt::ControlModifier);
    tree.EnableEdit(true);
    tree.SetItemText(b, std::string(100, 'w'));
    QScrollBar &bar = *tree.horizontalScrollBar();
    ASSERT_TRUE(Eventually([&] { return bar.maximum() > 100; }));
    tree.MoveScroll(SB_HORZ, 60);
    QLineEdit *const edit = tree.EditLabel(b);
    QTest::keyClick(edit, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(triggered, 1);
    EXPECT_EQ(tree.GetEditControl(), edit);
    EXPECT_NE(bar.value(), 60); // the edit begins where the label does
    bar.setValue(30);
    EXPECT_EQ(tree.GetEditControl(), nullptr);
    EXPECT_EQ(bar.value(), 60);
}

TEST_F(CZelTreeCtrlTest, ImagesAreDrawnIntoTheOwnedList) {
    tree.DrawCircle(b, 0, 0, false); // without a list nothing happens
    EXPECT_TRUE(tree.DrawIcon(b, 1, "/no/such/file.png"));
    EXPECT_EQ(Image(b), -1);

    tree.InitImages();
    EXPECT_EQ(Image(tree.AddItem("d", 4, TVI_ROOT, TVI_LAST)), 0) << "the default image";
    tree.DrawCircleSmall(a1, Rgb(255, 0, 0), 0);
    tree.DrawRect(a2, Rgb(0, 255, 0), Rgb(0, 0, 255));
    tree.DrawCircle(b, Rgb(0, 0, 255), 0, false);
    tree.DrawCircle(c, Rgb(0, 0, 255), Rgb(255, 0, 0), true);
    TempFolder const folder;
    for (DString const &file : {DString("/no/such/file.png"), folder.Path(), folder.Write("text.png", "no picture")})
        EXPECT_FALSE(tree.DrawIcon(a, 1, file.c_str())) << file;
    CZelImageList::RegisterIcon(77, "folder", "folder");
    EXPECT_TRUE(tree.DrawIcon(a, 77, nullptr));
    Shot(tree, "tree-control-images");
    Rows<HTREEITEM, int, QColor> const pixels = {
        {a2, 2, Qt::blue}, {a2, 13, Qt::blue}, {a2, 3, Qt::green}, {a2, 14, Qt::transparent},
        {a1, 8, Qt::red},  {b, 8, Qt::blue},   {c, 8, Qt::red}};
    for (auto const &[item, at, color] : pixels) {
        QImage const image = platform::ListPicture(tree.GetImageList(TVSIL_NORMAL), Image(item), 1).toImage();
        EXPECT_EQ(image.pixelColor(at, at).rgba(), color.rgba()) << item->text << at;
    }
    EXPECT_EQ(ColorAt(*tree.viewport(), {stage.Label(a2).left - 8, stage.On(a2).y()}), QColor(Qt::green));

    DString const there = folder.Write("install/bin/plugins/there.png", "P1 1 1 1\n");
    DString const here = folder.Write("here.png", "P1 1 1 1\n");
    test::Environment const installed{{{"ZELVAR_INSTALL_DIR", folder / "install"}}};
    for (auto const &[file, shown] : {std::pair{here, here}, {"there.png", there}, {"nowhere.png", there}}) {
        EXPECT_EQ(tree.DrawPluginIcon(b, 0, file.c_str()), file != "nowhere.png");
        EXPECT_EQ(tree.GetZelImageList().GetHandle()->Get(Image(b)).name, shown);
    }
}

TEST_F(CZelTreeCtrlTest, ABitmapBecomesTheImagesOfTheTree) {
    CZelImageList::RegisterBitmap(9001, "folder");
    CZelImageList::RegisterBitmap(9002, "no such strip");
    for (auto const &[bitmap, count] : {std::pair{9001U, 1}, {9002U, 0}, {9003U, 0}}) {
        tree.InitImages(bitmap, 24, 0, 0xFF00FF);
        tree.InitImages(9001, 16, 0, 0); // there is a list already
        EXPECT_EQ(tree.GetZelImageList().GetCount(), count);
        EXPECT_EQ(tree.GetZelImageList().GetPictureSide(), 24);
        tree.ClearImages();
        EXPECT_EQ(tree.GetImageList(TVSIL_NORMAL), nullptr);
    }
    tree.grab();
}

TEST(CZelTreeCtrlEx, CursorsAreChained) {
    CZelTreeCtrlEx tree;
    CTreeCursor const root = tree.InsertItem("root");
    CTreeCursor const last = root.AddTail("last", 3);
    root.AddHead("first");
    root.InsertAfter("middle", root.GetChild());
    EXPECT_EQ(root.GetChild().GetNextSibling().GetText(), "middle");
    EXPECT_EQ(root.GetChild().GetNextSibling().GetNextSibling(), last);
    EXPECT_TRUE(last.GetImageID() == 3 && last.SetImage(5, 5) && last.GetImageID() == 5);
    EXPECT_EQ(last.GetParent(), root);
    EXPECT_TRUE(root.SortChildren() && root.GetChild().GetNextSibling() == last) << "first, last, middle";
    EXPECT_TRUE(root.Expand() && root.IsExpanded() && root.HasChildren());
    EXPECT_TRUE(last.Select() && tree.GetSelectedItem() == last && last.SetData(7) && tree.GetItemData(last) == 7);

    CTreeCursor const none = tree.GetChildItem(last); // a leaf has no child
    EXPECT_TRUE(none == nullptr && none.GetTree() == &tree);
    EXPECT_EQ(none.GetParent().GetNextSibling().GetText() + none.GetChild().GetText(), "");
    EXPECT_TRUE(none.GetRoot() == root && none.GetSelected() == last) << "the tree's, whatever the item";
    EXPECT_FALSE(none.Select() || none.Expand() || none.SetText("x") || none.EnsureVisible());
    CTreeCursor gone = root.GetChild();
    EXPECT_TRUE(gone.Delete() && gone == nullptr && !gone.Delete());
    EXPECT_TRUE(CTreeCursor().AddTail("x").GetRoot() == nullptr);
    ImageList images;
    EXPECT_EQ(tree.SetImageList(&images, TVSIL_NORMAL), nullptr);
    EXPECT_EQ(tree.SetImageList(nullptr, TVSIL_NORMAL), &images); // the former one
}

} // namespace
} // namespace zelvar::test
