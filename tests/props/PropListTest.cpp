#include "support/GuiTest.h"
#include "zelvar/props/CZelPropList.h"

#include <QtGui/QClipboard>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QTextDocument>
#include <QtWidgets/QColorDialog>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QToolButton>

#include <ctime>

namespace zelvar {
namespace {

TEST(PropRule, TakesWhatItsKindMeansAndNothingElse) {
    PropRule const whole = PropRule::Integer(-5, 10);
    PropRule const real = PropRule::Real(0, 2.5);
    PropRule const money = PropRule::Real(-1e9, 1e9, 2);
    PropRule const choice = PropRule::Choice({"none", "LZW", "lzw"});
    PropRule const anyWhole = PropRule::Integer();
    PropRule const tenth = PropRule::Real(-2.55, 2.55, 1);
    using Texts = std::vector<char const *>;
    // What is taken with the value that it gives, and what is not.
    test::Rows<PropRule, std::map<DString, DString>, Texts> const cases = {
        {whole, {{" 7 ", "7"}, {"+10", "10"}, {"-5", "-5"}}, {"11", "-6", "", "+-3", "3.0", "0x3"}},
        {anyWhole, {{"9223372036854775807", "9223372036854775807"}}, {"9223372036854775808"}},
        {real, {{"2.50", "2.5"}, {"1e-1", "0.1"}, {"1,5", "1.5"}}, {"2.5000001", "1,5,", "nan", "inf", "1 2"}},
        {money, {{"3", "3.00"}}, {}},
        {tenth, {{"2.55", "2.5"}, {"-2.55", "-2.5"}}, {}},
        {PropRule::Real(0.26, 0.29, 1), {{"0.27", "0.27"}}, {}},
        {PropRule::Boolean(), {{"Yes", "true"}, {"OFF", "false"}}, {"maybe"}},
        {choice, {{"lzw", "lzw"}, {"NONE", "none"}}, {"zip"}},
        {PropRule::Color(),
         {{"#0a80Ff", "#0A80FF"}, {"10, 128, 255", "#0A80FF"}},
         {"10,128,256", "#0a80f", "#+a80ff0", "1,2"}},
        {PropRule(), {{" \xff ", " \xff "}}, {}}};
    for (auto const &[rule, taken, refused] : cases) {
        for (auto const &[entry, value] : taken)
            EXPECT_EQ(rule.Read(entry), value) << entry;
        for (char const *const entry : refused)
            EXPECT_EQ(rule.Read(entry), std::nullopt) << entry;
    }
    EXPECT_EQ(whole.Wanted(), "A whole number from -5 to 10");
    EXPECT_EQ(anyWhole.Wanted(), "A whole number");
    EXPECT_EQ(PropRule::ToColor("#0A80FF"), Rgb(0x0A, 0x80, 0xFF));
}

/// Counts what the user has changed.
class CountingList : public CZelPropList {
public:
    int changes = 0;

protected:
    void OnPropertyChanged(CZelProp *prop) override {
        ++changes;
        CZelPropList::OnPropertyChanged(prop);
    }
};

struct Layer {
    Layer() {
        auto *const image = new CZelProp("Image");
        image->AddSubItem(title);
        image->AddSubItem(std::make_unique<CZelProp>("Format", "GTiff"));
        list.AddProperty(image);
        list.AddProperty(new CZelProp("Look"));
        for (CZelProp *const prop : {opacity, visible, resampling, tint, source, note})
            list.GetProperty(1)->AddSubItem(prop);
        list.resize(320, 320);
        list.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&list));
    }
    /// The open editor of a value, opened first.
    template <class Editor = QLineEdit>
    [[nodiscard]] Editor *Edit(CZelProp &prop) {
        list.BeginEdit(prop);
        return OpenEditor<Editor>();
    }
    /// A double click on a row's name or value.
    void DoubleClick(CZelProp const &prop, int column) const {
        list.Tree().setCurrentItem(list.Tree().topLevelItem(0)); // elsewhere
        QPoint const at(list.Tree().columnViewportPosition(column) + 45,
                        list.Tree().visualItemRect(&prop).center().y());
        QTest::mouseClick(list.Tree().viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list.Tree().viewport(), Qt::LeftButton, {}, at);
    }
    template <class Editor = QLineEdit>
    [[nodiscard]] Editor *OpenEditor() const {
        for (Editor *const editor : list.Tree().viewport()->findChildren<Editor *>())
            if (editor->isVisible())
                return editor;
        return nullptr;
    }
    /// Types into the editor that a key opens; what was in it is replaced.
    void Enter(CZelProp &prop, char const *entry, Qt::Key end = Qt::Key_Return, Qt::Key begin = Qt::Key_F2) {
        list.SetCurSel(&prop);
        QTest::keyClick(&list.Tree(), begin);
        ASSERT_NE(OpenEditor(), nullptr);
        OpenEditor()->selectAll();
        QTest::keyClicks(OpenEditor(), QString::fromUtf8(entry));
        QTest::keyClick(OpenEditor(), end);
    }
    CountingList list;
    CZelProp *title = new CZelProp("Title", PropRule{}, "Nuclei", "Shown in the legend", 1);
    CZelProp *opacity = new CZelProp("Opacity", PropRule::Integer(0, 100), "80", "Per cent", 2);
    CZelProp *visible = new CZelProp("Visible", PropRule::Boolean(), "true", {}, 3);
    CZelProp *resampling = new CZelProp("Resampling", PropRule::Choice({"nearest", "cubic"}), "nearest", {}, 4);
    CZelProp *tint = new CZelProp("Tint", PropRule::Color(), "#00FF00", {}, 5);
    CZelProp *source = new CZelProp("File", PropRule::File(), "/data/\xff.tif", {}, 6);
    CZelProp *note = new CZelProp("Note", PropRule::MultiLine(), "one\ntwo", {}, 7);
};

TEST(CZelPropList, AWrongEntryStaysInItsEditorUntilItIsMendedOrGivenUp) {
    Layer layer;
    layer.Enter(*layer.opacity, "101");
    ASSERT_NE(layer.OpenEditor(), nullptr) << "it is still there";
    EXPECT_EQ(layer.OpenEditor()->text(), "101");
    EXPECT_EQ(layer.OpenEditor()->geometry(),
              layer.list.Tree().visualRect(layer.list.Tree().currentIndex().siblingAtColumn(1)).adjusted(0, 0, 0, -1));
    test::Shot(layer.list, "prop-list-wrong-entry");
    EXPECT_NE(layer.OpenEditor()->palette().color(QPalette::Text), layer.list.palette().color(QPalette::Text));
    EXPECT_EQ(layer.OpenEditor()->accessibleDescription(), "A whole number from 0 to 100");
    QTest::keyClick(layer.OpenEditor(), Qt::Key_Tab);
    ASSERT_NE(layer.OpenEditor(), nullptr) << "nor does Tab leave it";
    EXPECT_EQ(layer.opacity->GetInt(), 80);
    QTest::keyClick(layer.OpenEditor(), Qt::Key_Backspace);
    QTest::keyClick(layer.OpenEditor(), Qt::Key_Return);
    EXPECT_EQ(layer.opacity->GetInt(), 10);
    EXPECT_EQ(layer.OpenEditor(), nullptr);
    layer.Enter(*layer.opacity, "55", Qt::Key_Escape, Qt::Key_Return);
    EXPECT_EQ(layer.opacity->GetValue(), "10") << "given up";
    EXPECT_EQ(layer.OpenEditor(), nullptr);
    layer.Enter(*layer.opacity, "999", Qt::Key_Home);
    layer.list.SetCurSel(layer.title); // as a click elsewhere does
    EXPECT_EQ(layer.opacity->GetValue(), "10");
    EXPECT_EQ(layer.list.changes, 1);
}

TEST(CZelPropList, TabGoesOnToTheNextValueThatCanBeChanged) {
    Layer layer;
    layer.Enter(*layer.title, "Cells", Qt::Key_Tab);
    EXPECT_EQ(layer.title->GetValue(), "Cells");
    EXPECT_EQ(layer.list.GetCurSel(), layer.opacity) << "past the format, which is read only, and the group";
    ASSERT_NE(layer.OpenEditor(), nullptr);
    EXPECT_EQ(layer.OpenEditor()->accessibleName(), "Opacity");
    QTest::keyClick(layer.OpenEditor(), Qt::Key_Backtab);
    EXPECT_EQ(layer.list.GetCurSel(), layer.title);
    QTest::keyClick(layer.OpenEditor(), Qt::Key_Backtab);
    EXPECT_EQ(layer.OpenEditor(), nullptr) << "nothing before it";
    EXPECT_EQ(layer.list.changes, 1);
}

TEST(CZelPropList, SpaceEnterAndTheMouseTurnABooleanValueOver) {
    Layer layer;
    QTreeWidget &tree = layer.list.Tree();
    layer.list.SetCurSel(layer.visible);
    QTest::keyClick(&tree, Qt::Key_Space);
    EXPECT_FALSE(layer.visible->GetBool());
    EXPECT_EQ(layer.visible->text(1), "No");
    QTest::keyClick(&tree, Qt::Key_Return);
    EXPECT_TRUE(layer.visible->GetBool());
    QRect const row = tree.visualItemRect(layer.visible);
    QPoint const box(tree.columnViewportPosition(1) + 10, row.center().y());
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, box);
    EXPECT_FALSE(layer.visible->GetBool());
    layer.visible->AllowEdit(false);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, box);
    QTest::keyClick(&tree, Qt::Key_Space);
    EXPECT_FALSE(layer.visible->GetBool());
    EXPECT_EQ(layer.list.changes, 3);
}

TEST(CZelPropList, AChoiceIsTakenWithEnterNotWithEachArrow) {
    Layer layer;
    auto *const combo = layer.Edit<QComboBox>(*layer.resampling);
    ASSERT_NE(combo, nullptr);
    test::Shot(layer.list, "prop-list-choice");
    QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_EQ(layer.resampling->GetValue(), "nearest");
    ASSERT_EQ(layer.OpenEditor<QComboBox>(), combo);
    QTest::keyClick(combo, Qt::Key_Return);
    EXPECT_EQ(layer.resampling->GetValue(), "cubic");
    EXPECT_EQ(layer.OpenEditor<QComboBox>(), nullptr);
}

TEST(CZelPropList, AnEditedTextOfSeveralLinesKeepsItsLinesAndAnUntouchedPathItsBytes) {
    Layer layer;
    auto *const text = layer.Edit<QPlainTextEdit>(*layer.note);
    ASSERT_NE(text, nullptr);
    test::Shot(layer.list, "prop-list-lines");
    int const line = layer.list.Tree().visualItemRect(layer.note).height();
    EXPECT_TRUE(text->height() > 2 * line && layer.list.Tree().viewport()->rect().contains(text->geometry()));
    EXPECT_TRUE(text->textCursor().atEnd());
    QTest::keyClick(text, Qt::Key_Return);
    QTest::keyClicks(text, "three");
    QTest::keyClick(text, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(layer.note->GetValue(), "one\ntwo\nthree");
    EXPECT_EQ(layer.note->text(1), "one two three");
    QTest::keyClick(layer.Edit(*layer.source), Qt::Key_Return);
    EXPECT_EQ(layer.source->GetValue(), "/data/\xff.tif");
    EXPECT_EQ(layer.list.changes, 1);
}

TEST(CZelPropList, TheButtonOfAPathAsksTheHookAndThatOfAColourADialog) {
    Layer layer;
    layer.list.SetBrowse([](CZelProp &prop, DString &value) {
        value = prop.GetName() + "/\xfe";
        return true;
    });
    QTest::keyClick(layer.Edit(*layer.source), Qt::Key_F4);
    EXPECT_EQ(layer.source->GetValue(), "File/\xfe");
    EXPECT_EQ(layer.OpenEditor(), nullptr);

    auto const asked = test::OnNextDialog([](QWidget &dialog) {
        auto &colors = dynamic_cast<QColorDialog &>(dialog);
        EXPECT_EQ(colors.currentColor(), QColor(0, 255, 0));
        colors.setCurrentColor(QColor(1, 2, 3));
        colors.accept();
    });
    auto *const ask = layer.Edit<QToolButton>(*layer.tint);
    test::Shot(layer.list, "prop-list-color");
    test::Click(ask);
    EXPECT_TRUE(*asked);
    EXPECT_EQ(layer.tint->GetColor(), Rgb(1, 2, 3));
    EXPECT_EQ(layer.OpenEditor(), nullptr);

    auto const refused = test::OnNextDialog([](QWidget &dialog) { dialog.close(); });
    test::Click(layer.Edit<QToolButton>(*layer.tint));
    EXPECT_TRUE(*refused);
    EXPECT_EQ(layer.list.focusWidget(), layer.OpenEditor()) << "the user may go on typing";
    EXPECT_EQ(layer.list.changes, 2);

    auto doomed = std::make_unique<Layer>();
    auto const orphaned = test::OnNextDialog([&](QWidget &) { doomed.reset(); });
    test::Click(doomed->Edit<QToolButton>(*doomed->tint));
    EXPECT_TRUE(*orphaned);
}

TEST(CZelPropList, TypingOnARowAndAClickOnTheCurrentValueBeginAnEdit) {
    Layer layer;
    QTreeWidget &tree = layer.list.Tree();
    layer.list.SetCurSel(layer.opacity);
    for (char const key : {'-', '4'}) {
        QTest::keyClick(&tree, key);
        ASSERT_NE(layer.OpenEditor(), nullptr) << key;
        EXPECT_EQ(layer.OpenEditor()->text(), QChar(key)) << "instead of what was there";
        QTest::keyClick(layer.OpenEditor(), key == '4' ? Qt::Key_Return : Qt::Key_Escape);
    }
    EXPECT_EQ(layer.opacity->GetInt(), 4);
    QPoint const row = tree.visualItemRect(layer.title).center();
    QPoint const value(tree.columnViewportPosition(1) + 10, row.y());
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {5, row.y()});
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, value);
    EXPECT_TRUE(test::Eventually([&] { return layer.OpenEditor() != nullptr; }));
    layer.list.SetCurSel(layer.visible);
    QTest::keyClick(&tree, Qt::Key_R);
    EXPECT_EQ(layer.list.GetCurSel(), layer.resampling) << "a value that is not typed leaves the key to the search";
}

TEST(CZelPropList, ADoubleClickEditsWhereThatIsAllowedAndNeverAName) {
    Layer layer;
    for (auto const &[allowed, column, edits] :
         test::Rows<bool, int, bool>{{false, 1, false}, {true, 0, false}, {true, 1, true}}) {
        layer.title->AllowEdit(allowed);
        layer.DoubleClick(*layer.title, column);
        EXPECT_EQ(layer.OpenEditor() != nullptr, edits) << column;
    }
}

TEST(CZelPropList, CopyTakesTheValueAsItIsNotAsItIsShown) {
    Layer layer;
    layer.list.SetCurSel(layer.note);
    QTest::keyClick(&layer.list.Tree(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("one\ntwo"));
}

TEST(CZelPropList, ATipShowsAValueLetterForLetter) {
    Layer layer;
    layer.title->SetValue("/data/R&D.tif");
    EXPECT_EQ(layer.title->toolTip(1), QStringLiteral("/data/R&D.tif")) << "no markup, so nothing is escaped";
    layer.title->SetValue("a <b>bold</b> name");
    EXPECT_TRUE(layer.title->toolTip(1).contains(QStringLiteral("&lt;b&gt;")));
    EXPECT_TRUE(Qt::mightBeRichText(layer.title->toolTip(1))) << "or the escapes would show";
}

TEST(CZelPropList, AGroupIsShadedFromEdgeToEdge) {
    Layer layer;
    layer.list.SetVSDotNetLook(true);
    QTreeWidget &tree = layer.list.Tree();
    layer.list.SetCurSel(layer.note);
    QColor const shade = layer.list.palette().color(QPalette::Window);
    int const right = tree.viewport()->width() - 3;
    int const group = tree.visualItemRect(layer.list.GetProperty(0)).top() + 3;
    EXPECT_EQ(test::ColorAt(*tree.viewport(), {1, group}), shade) << "beside the mark of opening";
    EXPECT_EQ(test::ColorAt(*tree.viewport(), {right, group}), shade);
    EXPECT_NE(test::ColorAt(*tree.viewport(), {1, tree.visualItemRect(layer.title).top() + 3}), shade);
    int const swatch = tree.columnViewportPosition(1) + tree.fontMetrics().ascent() / 2 + 2;
    for (CZelProp const *const prop : {layer.tint, layer.opacity})
        EXPECT_EQ(test::ColorAt(*tree.viewport(), {swatch, tree.visualItemRect(prop).center().y()}) == Qt::green,
                  prop == layer.tint);
}

TEST(CZelPropList, NamesGetTheirRoomUntilTheUserSetsIt) {
    Layer layer;
    QTreeWidget &tree = layer.list.Tree();
    layer.list.EnableHeaderCtrl(true);
    EXPECT_TRUE(!tree.isHeaderHidden() && tree.headerItem()->text(1) == QStringLiteral("Value"));
    layer.title->setText(0, QString(200, u'n'));
    layer.list.resize(400, 320);
    EXPECT_EQ(tree.columnWidth(0), 240) << "no more than three fifths";
    layer.title->setText(0, QStringLiteral("Name"));
    layer.list.resize(300, 320);
    EXPECT_LT(tree.columnWidth(0), 150);
    tree.setColumnWidth(0, 150); // as a drag of the heading does
    layer.list.resize(600, 320);
    EXPECT_EQ(tree.columnWidth(0), 300) << "its share of the new width";
}

TEST(CZelPropList, TheDescriptionOfTheCurrentPropertyIsShownAsPlainText) {
    Layer layer;
    auto const *const area = layer.list.findChild<QLabel *>();
    ASSERT_NE(area, nullptr);
    EXPECT_FALSE(area->isVisible());
    layer.list.EnableDescriptionArea(true);
    layer.list.SetCurSel(layer.title);
    EXPECT_EQ(area->text(), QStringLiteral("Shown in the legend"));
    EXPECT_EQ(area->textFormat(), Qt::PlainText);
    layer.list.SetCurSel(layer.visible);
    EXPECT_EQ(area->text(), QString());
}

TEST(CZelPropList, AListMayBeEmptiedByWhomItTellsOfAChange) {
    Layer layer;
    QObject::connect(&layer.list, &CZelPropList::PropertyChanged, &layer.list, &CZelPropList::RemoveAll);
    layer.Enter(*layer.opacity, "5", Qt::Key_Tab);
    EXPECT_EQ(layer.list.GetPropertyCount(), 0);
    EXPECT_EQ(layer.list.changes, 1);
}

TEST(CZelPropList, WhatTheUserHasChangedIsBoldUntilItIsReset) {
    Layer layer;
    auto const isBold = [](CZelProp const &prop) { return prop.data(1, Qt::FontRole).value<QFont>().bold(); };
    EXPECT_FALSE(isBold(*layer.opacity));
    EXPECT_FALSE(layer.list.EnterValue(*layer.opacity, "high"));
    EXPECT_TRUE(layer.list.EnterValue(*layer.opacity, "7"));
    EXPECT_TRUE(layer.opacity->IsModified() && isBold(*layer.opacity));
    EXPECT_EQ(layer.opacity->data(0, Qt::AccessibleTextRole).toString(), "Opacity: 7, modified");
    layer.list.ResetOriginalValues();
    EXPECT_EQ(layer.opacity->GetInt(), 80);
    EXPECT_FALSE(layer.opacity->IsModified() || isBold(*layer.opacity));
    layer.title->SetValue("of the program");
    layer.title->AllowEdit(false);
    EXPECT_FALSE(isBold(*layer.title)) << "a pane that only shows values has none that stand out";
    layer.opacity->Enable(false);
    EXPECT_FALSE(layer.list.BeginEdit(*layer.opacity));
}

TEST(CZelPropList, TheMenuOfAValueResetsItAndTellsOfThat) {
    Layer layer;
    auto const reset = [&](CZelProp &prop) {
        layer.list.SetCurSel(&prop);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(layer.list.Tree().viewport(), &event);
        auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (menu == nullptr)
            return false;
        QAction *const action = menu->actions().last();
        bool const offered = action->isEnabled();
        action->trigger();
        menu->close();
        return offered;
    };
    EXPECT_FALSE(reset(*layer.opacity)) << "it is the original one";
    layer.list.EnterValue(*layer.opacity, "5");
    EXPECT_TRUE(reset(*layer.opacity));
    EXPECT_EQ(layer.opacity->GetInt(), 80);
    EXPECT_EQ(layer.list.changes, 2);
    EXPECT_FALSE(reset(*layer.list.GetProperty(0))) << "a group has no menu";
    layer.opacity->SetOriginalValue("70");
    EXPECT_TRUE(layer.opacity->IsModified());
}

TEST(CZelPropList, AValueSetWhileItIsEditedDoesNotTouchWhatIsBeingTyped) {
    Layer layer;
    layer.Enter(*layer.opacity, "3", Qt::Key_Home);
    layer.opacity->SetValue("50");
    ASSERT_NE(layer.OpenEditor(), nullptr);
    EXPECT_EQ(layer.OpenEditor()->text(), "3");
    QTest::keyClick(layer.OpenEditor(), Qt::Key_Return);
    EXPECT_EQ(layer.opacity->GetInt(), 3);
}

TEST(CZelPropList, AlphabeticOrderDissolvesTheGroupsAndGivesThemBack) {
    Layer layer;
    layer.list.GetProperty(0)->setExpanded(false);
    layer.list.SetAlphabeticMode(true);
    QTreeWidget const &tree = layer.list.Tree();
    auto const names = [&] {
        DString all;
        for (int i = 0; i < tree.topLevelItemCount(); ++i)
            all += tree.topLevelItem(i)->text(0).toStdString() + " ";
        return all;
    };
    EXPECT_EQ(names(), "File Format Note Opacity Resampling Tint Title Visible ");
    EXPECT_EQ(layer.list.GetProperty(1)->GetSubItem(0), layer.opacity) << "the groups are still told";
    EXPECT_TRUE(layer.list.GetProperty(1)->IsGroup() && layer.list.GetProperty(1)->GetSubItemsCount() == 6);
    EXPECT_TRUE(layer.list.GetProperty(2) == nullptr && layer.list.GetProperty(1)->GetSubItem(6) == nullptr);
    layer.list.GetProperty(0)->AddSubItem(std::make_unique<CZelProp>("Nodata", "0"));
    delete layer.note;
    EXPECT_EQ(names(), "File Format Nodata Opacity Resampling Tint Title Visible ");
    layer.list.SetFilter("TL");
    EXPECT_TRUE(layer.source->isHidden() && !layer.title->isHidden());
    layer.list.SetAlphabeticMode(false);
    EXPECT_EQ(names(), "Image Look ");
    EXPECT_TRUE(layer.list.GetProperty(0)->isExpanded()) << "it holds what is looked for";
    layer.list.SetFilter("");
    EXPECT_FALSE(layer.list.GetProperty(0)->isExpanded()) << "as it was";
    layer.list.GetProperty(0)->setExpanded(true); // by its user, who looks for something else then
    layer.list.SetFilter("TL");
    EXPECT_TRUE(layer.list.GetProperty(1)->isFirstColumnSpanned() && layer.visible->isHidden());
    EXPECT_EQ(layer.list.GetProperty(0)->childCount(), 3);
    layer.list.SetFilter("Yes");
    EXPECT_TRUE(layer.list.GetProperty(0)->isHidden() && !layer.visible->isHidden()) << "values are searched, too";
    layer.list.SetFilter("");
    EXPECT_TRUE(layer.list.GetProperty(0)->isExpanded()) << "as it was then";
    EXPECT_TRUE(layer.list.FindItemByData(5) == layer.tint && layer.list.FindItemByData(99) == nullptr);
    layer.list.SetAlphabeticMode(true); // and it dies so: all is freed once
}

TEST(CZelPropList, TenThousandPropertiesFillInAMoment) {
    CZelPropList list;
    list.SetVSDotNetLook(true);
    list.show();
    std::clock_t const before = std::clock(); // its own time, whatever else the machine does
    for (int g = 0; g < 100; ++g) {
        auto *const group = new CZelProp("Group");
        list.AddProperty(group);
        for (int i = 0; i < 100; ++i)
            group->AddSubItem(new CZelProp("Value", PropRule::Integer(), std::to_string(i)));
    }
    list.SetAlphabeticMode(true);
    list.SetAlphabeticMode(false);
    list.RemoveAll();
    // Far above what it takes, far below what anything quadratic would.
    EXPECT_LT(std::clock() - before, 4 * CLOCKS_PER_SEC);
}

} // namespace
} // namespace zelvar
