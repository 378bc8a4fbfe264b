#include "zelvar/dialogs/DlgFltrFind.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/store/SettingsStore.h"

namespace zelvar::test {
namespace {

using platform::GetDlgItem;

/// The dialog as its user has it.
struct Hands {
    QWidget &window;
    QComboBox &filter = *GetDlgItem<QComboBox>(window, 1980);
    QLineEdit &find = *GetDlgItem<QLineEdit>(window, 1981);
    QWidget &clear = *GetDlgItem(window, 1985);
    QListView &list = *GetDlgItem<QListView>(window, 1983);
    QLabel &description = *GetDlgItem<QLabel>(window, 1984);
    QWidget &frame = *GetDlgItem(window, 6003);

    [[nodiscard]] std::string Lines() const {
        std::string lines;
        for (int row = 0; row < list.model()->rowCount(); ++row)
            lines += (row > 0 ? ", " : "") + list.model()->index(row, 0).data().toString().toStdString();
        return lines;
    }
    void Click(int row, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, Middle(row));
    }
    void DoubleClick(int row) const {
        Click(row);
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, Middle(row));
    }
    [[nodiscard]] QPoint Middle(int row) const { return list.visualRect(list.model()->index(row, 0)).center(); }
    /// Drags the list's lower edge by so many pixels.
    void DragEdge(int by, int grip = 1) const {
        QWidget *const area = list.viewport();
        QPoint const start(40, area->height() - grip);
        QTest::mousePress(area, Qt::LeftButton, {}, start);
        QPoint const end = start + QPoint(0, by);
        QMouseEvent move(QEvent::MouseMove, end, area->mapToGlobal(end), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(area, &move);
        QTest::mouseRelease(area, Qt::LeftButton, {}, end);
    }
    [[nodiscard]] Qt::CursorShape CursorAbove(int grip) const {
        QTest::mouseMove(list.viewport(), {40, list.viewport()->height() - grip});
        return list.viewport()->cursor().shape();
    }
};

struct FilterFind : testing::Test {
    FilterFind() { SettingsStore::Instance().RemoveTree("Profile"); }

    void Fill() {
        m_dialog.AddItem("Red", "Band", "b", "Reflected red light", 1);
        m_dialog.AddItem("Blue", "Band", "b", "Reflected blue light", 2);
        m_dialog.AddItem("NDVI", "Index", "a", "Vegetation index", 3);
        m_dialog.AddItem("red EDGE", "Index", "a", "Edge of red", 4);
        m_dialog.AddItem("Notes", "", "z", "Has no category", 5);
    }
    /// Runs the dialog; its result and the names that it left.
    std::string Run(std::function<void(Hands const &)> const &act) {
        if (Left().empty())
            Fill();
        auto const done = OnNextDialog([&](QWidget &window) {
            EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
            act(Hands{window});
        });
        int const result = static_cast<int>(m_dialog.DoModal());
        EXPECT_TRUE(*done);
        return std::to_string(result) + ":" + Left();
    }
    [[nodiscard]] std::string Left() const {
        DVector<DlgFltrFind::Item *> items;
        m_dialog.GetFinalSlct(&items);
        m_dialog.GetFinalSlct(nullptr);
        std::string names;
        for (DlgFltrFind::Item const *item : items)
            names += " " + item->name;
        return names;
    }

    DlgFltrFind m_dialog{"Index"};
};

constexpr char kAll[] = "<a> NDVI, <a> red EDGE, <b> Blue, <b> Red, <z> Notes";

TEST_F(FilterFind, ListsTheCategoryByGroupAndNameAndGivesTheSelection) {
    m_dialog.SetListBoxTitle("Channels:");
    auto const act = [](Hands const &hands) {
        EXPECT_EQ(hands.window.windowTitle(), "Filter & Find");
        EXPECT_EQ(hands.filter.currentText(), "Index");
        EXPECT_EQ(hands.Lines(), "<a> NDVI, <a> red EDGE");
        for (auto const &[entry, lines] :
             {std::pair{0, kAll}, {1, "<b> Blue, <b> Red"}, {3, kAll}}) { // the empty entry
            Choose(hands.filter, entry);
            EXPECT_EQ(hands.Lines(), lines);
        }
        EXPECT_EQ(GetDlgItem<QLabel>(hands.window, 1982)->text(), "Channels:");
        EXPECT_EQ(hands.list.accessibleName(), "Channels:");
        hands.Click(3);
        for (char const *described : {"Reflected red light", "Vegetation index", "Reflected red light"}) {
            EXPECT_EQ(hands.description.text(), described);
            hands.Click(0, Qt::ControlModifier);
        }
        Shot(hands.window, "filter-find-selected");
        Click(GetDlgItem(hands.window, 1));
    };
    EXPECT_EQ(Run(act), "1: NDVI Red");
}

TEST_F(FilterFind, TheTextNarrowsTheNamesAndLosesTheSelection) {
    m_dialog.SetStartFltr("none such");
    auto const act = [](Hands const &hands) {
        EXPECT_EQ(hands.filter.currentText(), "All");
        EXPECT_FALSE(hands.clear.isVisible());
        hands.Click(0);
        QTest::keyClick(&hands.list, Qt::Key_F, Qt::ControlModifier);
        EXPECT_TRUE(hands.find.hasFocus());
        QTest::keyClicks(&hands.find, "RED");
        EXPECT_EQ(hands.Lines(), "<a> red EDGE, <b> Red"); // no description, no group
        EXPECT_EQ(hands.description.text(), "...");
        EXPECT_EQ(hands.clear.accessibleName() + ": " + hands.clear.toolTip(), "Clear: Clear the text to find");
        Shot(hands.window, "filter-find-text");
        QTest::keyClicks(&hands.find, "x");
        QTest::keyClick(&hands.find, Qt::Key_Down);
        EXPECT_TRUE(hands.find.hasFocus()) << "no line to go to";
        QTest::keyClick(&hands.find, Qt::Key_Backspace);
        QTest::keyClicks(&hands.find, " E");
        EXPECT_EQ(hands.Lines(), "<a> red EDGE");
        QTest::keyClick(&hands.find, Qt::Key_Down);
        EXPECT_TRUE(hands.list.hasFocus()) << "one line is enough";
        EXPECT_EQ(hands.description.text(), "Edge of red");
        Click(&hands.clear);
        EXPECT_EQ(hands.Lines(), kAll);
        EXPECT_TRUE(!hands.clear.isVisible() && hands.find.hasFocus());
        QTest::keyClick(&hands.window, Qt::Key_Escape);
    };
    EXPECT_EQ(Run(act), "0: NDVI red EDGE Blue Red Notes"); // whole
}

TEST_F(FilterFind, IsWorkedByTheKeyboardAloneAndADoubleClickIsOk) {
    auto const act = [](Hands const &hands) {
        for (int const id : {1981, 1983, 1, 2, 1980}) {
            EXPECT_TRUE(GetDlgItem(hands.window, id)->hasFocus()) << id;
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QTest::keyClick(&hands.find, Qt::Key_PageDown);
        for (char const *typed : {"r", "n", "re"}) { // by the name, not by the line
            QTest::keyClicks(&hands.list, typed);
            EXPECT_EQ(hands.list.currentIndex().row(), typed[0] == 'n' ? 0 : 1);
            hands.list.keyboardSearch({});
        }
        QTest::keyClick(&hands.list, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&hands.list, Qt::Key_Return);
    };
    EXPECT_EQ(Run(act), "1: NDVI red EDGE");
    EXPECT_EQ(Run([](Hands const &hands) { hands.DoubleClick(1); }), "1: red EDGE");
}

TEST_F(FilterFind, TheListsLowerEdgeIsDragged) {
    Run([](Hands const &hands) {
        QRect const list = hands.list.geometry();
        QRect const text = hands.description.geometry();
        QRect const frame = hands.frame.geometry();
        int const gap = hands.list.height() - hands.list.viewport()->height();
        EXPECT_EQ(hands.CursorAbove(3), Qt::SizeVerCursor);
        EXPECT_EQ(hands.CursorAbove(4), Qt::ArrowCursor);
        hands.DragEdge(-30, 4); // beside it
        EXPECT_EQ(hands.list.geometry(), list);
        hands.DragEdge(-30);
        int const by = hands.list.geometry().bottom() - list.bottom();
        EXPECT_NEAR(by, -30, gap + 1);
        EXPECT_EQ(hands.description.geometry().top(), text.top() + by);
        EXPECT_EQ(hands.frame.geometry().top(), frame.top() + by);
        EXPECT_EQ(hands.description.geometry().bottom(), text.bottom());
        Shot(hands.window, "filter-find-dragged");
        hands.DragEdge(500); // no room for the description
        EXPECT_EQ(hands.list.geometry().bottom(), list.bottom() + by);
        hands.window.resize(hands.window.size() + QSize(20, 10)); // the layout knows nothing of it
        EXPECT_EQ(hands.list.geometry(), list.adjusted(0, 0, 20, 10));
        EXPECT_EQ(hands.description.geometry().bottom(), text.bottom() + 10);
    });
}

TEST_F(FilterFind, BesideItsParentItIsFilledWhileItIsShown) {
    QWidget parent;
    parent.show();
    EXPECT_TRUE(m_dialog.CreateModeless(&parent));
    Hands const hands{m_dialog};
    EXPECT_FALSE(m_dialog.isModal());
    EXPECT_EQ(hands.Lines(), "");
    Fill();
    m_dialog.SetStartFltr("Band");
    m_dialog.UpdtContent();
    EXPECT_EQ(hands.Lines(), "<b> Blue, <b> Red");
    EXPECT_EQ(hands.filter.count(), 4) << "no former entries";
    m_dialog.SetDscr("Pick one");
    EXPECT_EQ(hands.description.text(), "Pick one");
    hands.Click(1);
    Click(GetDlgItem(hands.window, 1));
    EXPECT_FALSE(m_dialog.isVisible());
    EXPECT_EQ(Left(), " Red");
    m_dialog.show(); // what went is not looked at any more
    EXPECT_EQ(hands.Lines(), "<b> Red");
    m_dialog.setParent(nullptr);
}

/// Names only, longest first.
class LongestFirst : public DlgFltrFind {
public:
    using DlgFltrFind::DlgFltrFind;

protected:
    void Sort(DVector<Item *> *items) override {
        std::sort(items->begin(), items->end(),
                  [](Item const *a, Item const *b) { return a->name.size() > b->name.size(); });
    }
    void OnDblClckList() override { SetDscr("clicked twice"); }
};

TEST_F(FilterFind, OrderAndDoubleClickCanBeOnesOwn) {
    LongestFirst dialog("");
    dialog.UpdtContent(); // no window: nothing
    for (char const *name : {"a", "ccc", "bb"})
        dialog.AddItem(name, "All", "g", "", 0);
    dialog.CreateModeless(nullptr);
    Hands const hands{dialog};
    EXPECT_EQ(hands.filter.count(), 1); // a category that reads like the first entry is that
    EXPECT_EQ(hands.Lines(), "<g> ccc, <g> bb, <g> a");
    hands.DoubleClick(0);
    EXPECT_EQ(hands.description.text(), "clicked twice");
    EXPECT_TRUE(dialog.isVisible());
}

} // namespace
} // namespace zelvar::test
