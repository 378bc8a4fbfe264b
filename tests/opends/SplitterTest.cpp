#include "zelvar/opends/DSplitterWnd.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtTest/QTest>
#include <QtWidgets/QLabel>

#include <gtest/gtest.h>

#include <memory>

namespace zelvar {
namespace {

QWidget *NewLabel() { return new QLabel; }
constexpr PaneClass kLabel{"QLabel", &NewLabel};

std::unique_ptr<DSplitterWnd> Columns(int count, DSplitterWnd::PaneOwner *owner = nullptr) {
    auto splitter = std::make_unique<DSplitterWnd>();
    splitter->SetPaneOwner(owner);
    splitter->CreateStaticEx(nullptr, 1, count, 1, 5, &kLabel, 1000);
    splitter->resize(303, 100);
    for (int col = 0; col < count; ++col) {
        splitter->CreateView(0, col, &kLabel, {100, 100});
        splitter->SetColumnInfo(col, 100, 10);
    }
    splitter->RecalcLayout();
    return splitter;
}

int Current(DSplitterWnd const &splitter, int col) {
    int cur = 0, ideal = 0, min = 0;
    splitter.GetColumnInfo(col, cur, ideal, min);
    return cur;
}

TEST(SplitterLayout, TracksTakeTheirIdealSizeAndTheLastTheRest) {
    std::vector<SplitterTrack> tracks{{.ideal = 100, .minimum = 10}, {.ideal = 50, .minimum = 10}, {.ideal = 1}};
    LayOutTracks(tracks, 300, 3);
    EXPECT_EQ(tracks[0].current, 100);
    EXPECT_EQ(tracks[1].current, 50);
    EXPECT_EQ(tracks[2].current, 144);
    LayOutTracks(tracks, 108, 3);
    EXPECT_EQ(tracks[1].current, 0) << "five pixels are below its minimum";
    EXPECT_EQ(tracks[2].current, 2);
    LayOutTracks(tracks, -5, 3);
    EXPECT_EQ(tracks[0].current, 0);
}

TEST(Splitter, PanesStandInsideAOnePixelBorderThreePixelsApart) {
    auto const splitter = Columns(2);
    EXPECT_EQ(splitter->GetPane(0, 0)->geometry(), QRect(1, 1, 98, 98));
    EXPECT_EQ(splitter->GetPane(0, 1)->geometry(), QRect(104, 1, 198, 98));
    EXPECT_EQ(platform::GetDlgCtrlID(*splitter->GetPane(0, 1)), static_cast<int>(DSplitterWnd::IdFromRowCol(0, 1)));
}

TEST(Splitter, ABarFollowsTheMouseAndKeepsTheMinimaOnBothSides) {
    auto const splitter = Columns(2);
    splitter->show();
    QTest::mousePress(splitter.get(), Qt::LeftButton, {}, {101, 50});
    auto const moveTo = [&](int x) {
        QMouseEvent move(QEvent::MouseMove, QPointF(x, 50), splitter->mapToGlobal(QPointF(x, 50)), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(splitter.get(), &move);
    };
    moveTo(151);
    EXPECT_EQ(Current(*splitter, 0), 150);
    moveTo(-40);
    EXPECT_EQ(Current(*splitter, 0), 10);
    moveTo(1000);
    EXPECT_EQ(Current(*splitter, 1), 10);
    QTest::mouseRelease(splitter.get(), Qt::LeftButton, {}, {300, 50});
    moveTo(50);
    EXPECT_EQ(Current(*splitter, 1), 10) << "released";
}

TEST(Splitter, SplittingFailsWholeWhenItDoesNotFitAndSucceedsWithAPane) {
    auto const splitter = Columns(1);
    EXPECT_EQ(splitter->StaticSplitColumn(295, nullptr), 0);
    EXPECT_EQ(splitter->GetColumnCount(), 1);
    EXPECT_EQ(splitter->StaticSplitColumn(200, nullptr), 1);
    EXPECT_EQ(splitter->GetColumnCount(), 2);
    EXPECT_EQ(Current(*splitter, 0), 200);
    EXPECT_EQ(Current(*splitter, 1), 100);
    splitter->StaticDeleteColumn(0);
    ASSERT_EQ(splitter->GetColumnCount(), 1);
    EXPECT_NE(splitter->GetPane(0, 0), nullptr) << "the pane behind has taken its place";
    EXPECT_EQ(Current(*splitter, 0), 303);
}

/// Counts what it is asked and makes what it is told.
class Owner : public DSplitterWnd::PaneOwner {
public:
    QWidget *object = nullptr;
    bool makesWindow = true;
    bool doesLayout = false;
    int objects = 0, windows = 0, deleted = 0;

    QWidget *CreateViewObj(DSplitterWnd *, int, int, PaneClass const *, Size) override { return ++objects, object; }
    int CreateViewWnd(DSplitterWnd *, QWidget *pane, int, int, Rect const &, QWidget *parent, unsigned) override {
        ++windows;
        if (makesWindow)
            pane->setParent(parent);
        return makesWindow ? 1 : 0;
    }
    void DeleteView(DSplitterWnd *splitter, int row, int col) override {
        ++deleted;
        delete splitter->GetPane(row, col);
    }
    bool RecalcLayout(DSplitterWnd *) override { return doesLayout; }
};

TEST(Splitter, AnOwnerThatMakesNoObjectStillMakesTheWindowAndMayDoTheLayout) {
    Owner owner;
    auto const splitter = Columns(2, &owner);
    EXPECT_EQ(owner.objects, 2);
    EXPECT_EQ(owner.windows, 2);
    QRect const before = splitter->GetPane(0, 0)->geometry();
    owner.doesLayout = true;
    splitter->resize(400, 200);
    EXPECT_EQ(splitter->GetPane(0, 0)->geometry(), before);
    splitter->DeleteView(0, 0);
    EXPECT_EQ(owner.deleted, 1);
    EXPECT_EQ(splitter->GetPane(0, 0), nullptr);
    EXPECT_EQ(splitter->CreateView(0, 1, &kLabel, {}), 0) << "that cell is taken";
}

} // namespace
} // namespace zelvar
