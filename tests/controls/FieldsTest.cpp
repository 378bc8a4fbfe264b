#include "support/GuiTest.h"
#include "zelvar/controls/CFloatEdit.h"
#include "zelvar/controls/ColorStatic.h"
#include "zelvar/controls/HyperLink.h"
#include "zelvar/controls/SliderTrack.h"
#include "zelvar/controls/ZelSliderCtrl.h"

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QVBoxLayout>

namespace zelvar {
namespace {

/// An edit in a window where the focus can go elsewhere.
struct Edited {
    Edited() : edit(new CFloatEdit), other(new QLineEdit), changes(edit, &CFloatEdit::ValueChanged) {
        auto *const layout = new QVBoxLayout(&window);
        layout->addWidget(edit);
        layout->addWidget(other);
        window.show();
        edit->setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void Type(QString const &text) const {
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }
    void Paste(QString const &text) const {
        QApplication::clipboard()->setText(text);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
    }
    QWidget window;
    CFloatEdit *edit;
    QLineEdit *other;
    QSignalSpy changes;
};

TEST(CFloatEdit, GivesBackTheVeryDoubleThatItWasGiven) {
    Edited const edited;
    for (double const value : {0.1, 1.0 / 3, -0.0, 5e-324, 1.7976931348623157e308, 123456.789}) {
        edited.edit->SetDecimals(-1);
        EXPECT_TRUE(edited.edit->SetValue(value));
        edited.edit->SetDecimals(2); // the text is rounded, the value is not
        edited.edit->setFocus();
        edited.other->setFocus();
        EXPECT_EQ(edited.edit->GetValue(), value);
        EXPECT_EQ(std::signbit(edited.edit->GetValue()), std::signbit(value));
    }
    EXPECT_TRUE(edited.edit->SetRange(0, 123456.789) && edited.edit->IsValid()) << "though its text is beyond";
    EXPECT_FALSE(edited.edit->SetValue(std::nan("")) || edited.edit->SetRange(0, std::nan("")));
    EXPECT_FALSE(edited.edit->SetValue(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(edited.edit->text(), QStringLiteral("123456.79"));
}

TEST(CFloatEdit, WhatIsTypedIsTakenMarkedAndMended) {
    Edited const edited;
    EXPECT_TRUE(edited.edit->SetRange(100, -100)); // exchanged
    // `value`: 7 was there
    for (auto const &[typed, shown, valid, value, left] :
         test::Rows<char const *, char const *, bool, double, char const *>{
             {"1,5", "1,5", true, 1.5, "1.5"},
             {"-2.50", "-2.50", true, -2.5, "-2.5"},
             {"1e1", "1e1", true, 10, "10"},
             {"0x10", "010", true, 10, "10"}, // the letter is refused
             {"nan", "", false, 7, "7"},
             {"-", "-", false, 7, "7"},
             {"1e", "1e", false, 1, "1"},
             {"99.5 kg", "99.5 ", true, 99.5, "99.5"},
             {"250", "250", false, 25, "100"},
             {"-1e400", "-1e400", false, -1, "-100"},
             {"", "", false, 7, "7"}}) {
        edited.edit->SetValue(7);
        edited.Type(QString::fromLatin1(typed));
        EXPECT_EQ(edited.edit->text(), QString::fromLatin1(shown)) << typed;
        EXPECT_EQ(edited.edit->IsValid(), valid) << typed;
        EXPECT_EQ(edited.edit->GetValue(), value) << typed;
        EXPECT_EQ(edited.edit->accessibleDescription().isEmpty(), valid) << typed;
        edited.other->setFocus();
        EXPECT_EQ(edited.edit->text(), QString::fromLatin1(left)) << typed;
        EXPECT_TRUE(edited.edit->IsValid()) << typed;
        EXPECT_EQ(edited.edit->GetValue(), std::atof(left)) << typed;
    }
}

TEST(CFloatEdit, APastedTextIsTakenWholeOrNotAtAll) {
    Edited const edited;
    edited.edit->SetValue(7);
    edited.Paste(QStringLiteral("  1\u00A0234,5\n"));
    EXPECT_EQ(edited.edit->GetValue(), 1234.5);
    for (QString const &refused : {QStringLiteral("12 px"), QStringLiteral("0x10"), QString(100000, u'9')}) {
        edited.edit->SetValue(7);
        edited.Paste(refused);
        EXPECT_EQ(edited.edit->GetValue(), 7);
        edited.other->setFocus();
        EXPECT_EQ(edited.edit->text(), QStringLiteral("7"));
    }
}

TEST(CFloatEdit, ReturnMendsTooAndTheMarkIsSeen) {
    Edited const edited;
    edited.edit->SetRange(0, 10);
    QPoint const edge(1, edited.edit->height() / 2);
    QColor const plain = test::ColorAt(*edited.edit, edge);
    edited.Type(QStringLiteral("12"));
    EXPECT_NE(test::ColorAt(*edited.edit, edge), plain);
    QTest::keyClick(edited.edit, Qt::Key_Return);
    EXPECT_EQ(edited.edit->text(), QStringLiteral("10"));
    EXPECT_EQ(test::ColorAt(*edited.edit, edge), plain);
}

TEST(CFloatEdit, KeysStepWithoutDustAndStopAtTheEnds) {
    Edited const edited;
    constexpr double kMost = std::numeric_limits<double>::max();
    for (auto const &[low, high, said] : test::Rows<double, double, char const *>{{-kMost, kMost, "A number"},
                                                                                  {-1, kMost, "A number not below -1"},
                                                                                  {-kMost, 2, "A number not above 2"},
                                                                                  {-1, 2, "A number from -1 to 2"}}) {
        edited.edit->SetRange(low, high);
        edited.Type("-");
        EXPECT_EQ(edited.edit->accessibleDescription(), said);
    }
    edited.edit->SetValue(0);
    edited.edit->SetRange(0, 1);
    edited.edit->SetStep(0.1);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(edited.edit, Qt::Key_Up);
    EXPECT_EQ(edited.edit->text(), QStringLiteral("0.3"));
    QTest::keyClick(edited.edit, Qt::Key_PageUp);
    EXPECT_EQ(edited.edit->GetValue(), 1);
    QTest::keyClick(edited.edit, Qt::Key_Down);
    EXPECT_EQ(edited.edit->GetValue(), 0.9);
    edited.edit->setReadOnly(true);
    QTest::keyClick(edited.edit, Qt::Key_Down);
    EXPECT_EQ(edited.edit->GetValue(), 0.9);
}

TEST(CFloatEdit, MayBeEmptyWhereAllowed) {
    Edited edited;
    EXPECT_FALSE(edited.edit->SetEmpty());
    edited.edit->SetAllowEmpty();
    edited.edit->SetValue(7);
    edited.changes.clear();
    edited.edit->selectAll();
    QTest::keyClick(edited.edit, Qt::Key_Delete);
    edited.other->setFocus();
    EXPECT_TRUE(edited.edit->IsEmpty() && edited.edit->IsValid());
    EXPECT_EQ(edited.edit->text(), QString());
    ASSERT_EQ(edited.changes.count(), 1);
    EXPECT_TRUE(edited.changes[0][1].toBool());
    edited.edit->setFocus();
    QTest::keyClick(edited.edit, Qt::Key_Up);
    EXPECT_EQ(edited.edit->GetValue(), 1) << "from zero";
    edited.edit->SetEmpty();
    edited.edit->SetAllowEmpty(false);
    EXPECT_EQ(edited.edit->text(), QStringLiteral("1"));
}

struct Slider {
    Slider() : changes(&slider, &ZelSliderCtrl::PosChanged), ends(&slider, &ZelSliderCtrl::EndTrack) {
        slider.setAccessibleName(QStringLiteral("Opacity"));
        slider.SetValueField(ZelSliderCtrl::ValueField::Edit);
        slider.resize(400, 40);
        slider.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&slider));
        slider.setFocus();
        track = slider.findChild<SliderTrack *>();
        edit = slider.findChild<CFloatEdit *>();
    }
    static void Press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    ZelSliderCtrl slider;
    QSignalSpy changes;
    QSignalSpy ends;
    SliderTrack *track;
    CFloatEdit *edit;
};

TEST(ZelSliderCtrl, KeysMoveInTheRangesOwnNumbers) {
    Slider play;
    play.slider.SetRange(0, 1);
    play.slider.SetStep(0);
    play.slider.SetLineSize(0.1);
    play.slider.SetPageSize(0.25);
    test::Rows<Qt::Key, double> const steps = {{Qt::Key_Right, 0.1},   {Qt::Key_Right, 0.2}, {Qt::Key_Up, 0.3},
                                               {Qt::Key_PageUp, 0.55}, {Qt::Key_Left, 0.45}, {Qt::Key_End, 1},
                                               {Qt::Key_Right, 1},     {Qt::Key_Home, 0}};
    for (auto const &[key, value] : steps) {
        play.Press(key);
        EXPECT_EQ(play.slider.GetPos(), value);
        EXPECT_EQ(play.edit->GetValue(), value);
    }
    EXPECT_TRUE(play.changes.count() == 7 && play.ends.count() == 8);
    int const width = play.edit->width();
    QFont font = play.slider.font();
    font.setPixelSize(2 * font.pixelSize());
    play.slider.setFont(font);
    EXPECT_GT(play.edit->width(), width * 3 / 2) << "the field keeps room for its numbers";
}

TEST(ZelSliderCtrl, KeepsTheExactValueThoughTheThumbHasPositions) {
    Slider play;
    play.slider.SetRange(0, 1);
    play.slider.SetStep(0);
    for (auto const &[value, text] : {std::pair{0.1234567, "0.1234567"}, {0.123456789, "0.123457"}}) { // what has room
        EXPECT_TRUE(play.slider.SetPos(value));
        EXPECT_EQ(play.slider.GetPos(), value);
        EXPECT_EQ(play.slider.GetPosText(), text);
    }
    EXPECT_FALSE(play.slider.SetPos(std::nan("")));
    play.slider.SetPos(7);
    EXPECT_EQ(play.slider.GetPos(), 1);
    EXPECT_EQ(play.changes.count(), 3);
    EXPECT_EQ(play.ends.count(), 0) << "not by the user";
    play.slider.SetRange(0, 5e9);
    play.slider.SetDecimals(0);
    play.slider.SetPos(4e9);
    EXPECT_EQ(play.slider.GetPosText(), "4000000000") << "as many as are asked for";
}

TEST(ZelSliderCtrl, ADragFollowsTheMouseAndEndsOnce) {
    Slider play;
    for (bool const upright : {false, true}) {
        play.slider.SetOrientation(upright ? Qt::Vertical : Qt::Horizontal);
        play.slider.resize(upright ? QSize(100, 300) : QSize(300, 30));
        QApplication::processEvents();
        play.slider.SetPos(0);
        play.ends.clear();
        auto const at = [&](int position) {
            int const along = play.track->CenterOf(position);
            return upright ? QPoint(play.track->width() / 3, along) : QPoint(along, play.track->height() / 2);
        };
        QTest::mousePress(play.track, Qt::LeftButton, {}, at(0));
        QMouseEvent move(QEvent::MouseMove, at(50), play.track->mapToGlobal(at(50)), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(play.track, &move);
        EXPECT_EQ(play.ends.count(), 0);
        QTest::mouseRelease(play.track, Qt::LeftButton, {}, at(50));
        EXPECT_NEAR(play.slider.GetPos(), 50, 1);
        EXPECT_EQ(play.ends.count(), 1);
        EXPECT_EQ(play.edit->GetValue(), play.slider.GetPos());
        EXPECT_EQ(upright, play.track->CenterOf(100) < play.track->CenterOf(0));
        QRect const track = play.track->geometry();
        EXPECT_GT(upright ? play.edit->y() : play.edit->x(), upright ? track.bottom() : track.right());
        EXPECT_EQ(play.slider.sizePolicy().verticalPolicy() == QSizePolicy::Expanding, upright);
        test::Shot(play.slider, upright ? "slider-upright" : "slider");
    }
}

TEST(ZelSliderCtrl, ATypedValueMovesTheThumbAndSnapsOnLeaving) {
    Slider play;
    play.edit->setFocus();
    play.edit->selectAll();
    QTest::keyClicks(play.edit, QStringLiteral("42.6"));
    EXPECT_EQ(play.slider.GetPos(), 43);
    EXPECT_EQ(play.edit->text(), QStringLiteral("42.6")) << "not under the user's hand";
    play.slider.setFocus();
    EXPECT_EQ(play.edit->text(), QStringLiteral("43"));
    EXPECT_EQ(play.track->value(), 43);
}

TEST(ZelSliderCtrl, RunsDownwardsOrStandsStill) {
    Slider play;
    play.slider.SetRange(10, -10);
    EXPECT_EQ(play.slider.GetPos(), 0);
    test::Rows<Qt::Key, double, bool> const steps = {{Qt::Key_Home, 10, false}, {Qt::Key_Right, 9, false},
                                                     {Qt::Key_Up, 10, true},    {Qt::Key_PageDown, 8, true},
                                                     {Qt::Key_Down, 7, true},   {Qt::Key_PageUp, 9, true}};
    for (auto const &[key, value, isInField] : steps) { // in the field, up is more
        isInField ? play.edit->setFocus() : play.slider.setFocus();
        play.Press(key);
        EXPECT_EQ(play.slider.GetPos(), value) << key;
    }
    play.slider.SetRange(5, 5);
    play.slider.setFocus();
    for (Qt::Key const key : {Qt::Key_Right, Qt::Key_End, Qt::Key_PageUp, Qt::Key_Home})
        play.Press(key);
    EXPECT_EQ(play.slider.GetPos(), 5);
    EXPECT_FALSE(play.slider.SetRange(0, std::numeric_limits<double>::infinity()));
}

TEST(ZelSliderCtrl, EachTenfoldHasTheSameRoomOnALogarithmicScale) {
    Slider play;
    EXPECT_FALSE(play.slider.SetLogarithmic()) << "0 lies in the range";
    play.slider.SetStep(0);
    play.slider.SetRange(1, 10000);
    play.slider.SetTicFreq(0);
    EXPECT_TRUE(play.slider.SetLogarithmic());
    EXPECT_EQ(play.slider.Ticks().size(), 5U);
    play.slider.SetPos(100);
    int const middle = (play.track->CenterOf(0) + play.track->CenterOf(play.slider.Scale().Positions())) / 2;
    EXPECT_NEAR(play.track->CenterOf(play.slider.Scale().PositionOf(100)), middle, 1);
    play.Press(Qt::Key_PageUp);
    play.Press(Qt::Key_PageDown);
    EXPECT_NEAR(play.slider.GetPos(), 100, 1);
}

TEST(ZelSliderCtrl, ScreenReadersGetTheValueAndNotThePosition) {
    Slider play;
    play.slider.SetRange(0, 1);
    play.slider.SetStep(0);
    play.slider.SetUnit(" mm");
    play.slider.SetPos(0.25);
    QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(play.track);
    EXPECT_EQ(interface->role(), QAccessible::Slider);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Opacity"));
    EXPECT_EQ(interface->text(QAccessible::Value), QStringLiteral("0.25 mm"));
    interface->valueInterface()->setCurrentValue(0.75);
    EXPECT_EQ(play.slider.GetPos(), 0.75);
    EXPECT_EQ(interface->valueInterface()->maximumValue().toDouble(), 1);
}

TEST(ColorStatic, ShowsItsColoursAndFadesTheTextWhileDisabled) {
    ColorStatic label;
    label.SetWindowText("<b>&Plain</b>");
    label.SetTextColor(Rgb(200, 0, 0));
    label.SetBkColor(Rgb(0, 0, 100));
    label.SetBorder(Rgb(0, 200, 0), 2);
    label.resize(label.sizeHint());
    EXPECT_EQ(label.GetWindowText(), "<b>&Plain</b>");
    EXPECT_EQ(label.GetTextColor(), Rgb(200, 0, 0));
    EXPECT_EQ(test::ColorAt(label, {0, 5}), QColor(0, 200, 0));
    EXPECT_EQ(test::ColorAt(label, {1, 1}), QColor(0, 200, 0));
    EXPECT_EQ(test::ColorAt(label, {3, 3}), QColor(0, 0, 100));
    auto const reddest = [&] {
        QImage const picture = label.grab().toImage();
        int most = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                most = std::max(most, picture.pixelColor(x, y).red());
        return most;
    };
    EXPECT_GT(reddest(), 150);
    label.setEnabled(false);
    EXPECT_LT(reddest(), 120);
    label.ResetColors();
    EXPECT_EQ(test::ColorAt(label, {0, 0}), label.palette().color(QPalette::Window));
}

struct Link : test::Pinned {
    Link() : opened(&link, &HyperLink::Opened) {
        HyperLink::SetOpener([this](QUrl const &url) {
            urls << url.toString();
            return succeeds;
        });
    }
    ~Link() { HyperLink::SetOpener({}); }
    void Show() {
        link.show();
        link.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&link));
    }
    HyperLink link;
    QStringList urls;
    bool succeeds = true;
    QSignalSpy opened;
};

TEST(HyperLink, OpensPagesMailAndFilesOnly) {
    Link play;
    std::map<DString, DString> cases = {{"https://example.org/a?b=c#d", "https://example.org/a?b=c#d"},
                                        {" HTTP://example.org ", "http://example.org"},
                                        {"mailto:someone@example.org", "mailto:someone@example.org"},
                                        {"file:///data/a.tif", "file:///data/a.tif"},
                                        {"/data/100% #1.tif", "file:///data/100%25 %231.tif"}};
    for (char const *none :
         {"javascript:alert(1)", "smb://host/share", "C:\\data", "relative/path", "https://a.org/\nx", ""})
        cases[none] = "";
    for (auto const &[url, opened] : cases) {
        play.urls.clear();
        play.link.SetURL(url);
        bool const expected = !opened.empty();
        EXPECT_EQ(play.link.Open(), expected) << url;
        EXPECT_EQ(play.link.IsVisited(), expected) << url;
        EXPECT_EQ(play.urls.join(u' ').toStdString(), opened);
    }
    EXPECT_EQ(play.opened.count(), 11);
}

TEST(HyperLink, AVisitedLinkIsReadOnADarkDesktop) {
    test::DarkPalette const dark;
    HyperLink link;
    link.SetWindowText("WWW");
    link.SetVisited(true);
    link.resize(link.sizeHint());
    EXPECT_GE(test::StrongestContrast(link.grab().toImage(), link.rect()), 4.5);
}

TEST(HyperLink, AnApplicationMayAllowMore) {
    class Shares : public HyperLink {
    protected:
        [[nodiscard]] bool MayOpen(DString const &scheme) const override { return scheme == "smb"; }
    };
    Link play;
    Shares link;
    link.SetURL("SMB://host/share");
    EXPECT_TRUE(link.Open());
    link.SetURL("https://example.org");
    EXPECT_FALSE(link.Open());
}

TEST(HyperLink, MouseAndKeysOpenIt) {
    Link play;
    play.link.SetURL("https://example.org");
    play.link.SetWindowText("Example");
    play.Show();
    test::Click(&play.link);
    for (Qt::Key const key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
        QTest::keyClick(&play.link, key);
    EXPECT_EQ(play.urls.size(), 4);
    QTest::mousePress(&play.link, Qt::LeftButton);
    QTest::mouseRelease(&play.link, Qt::LeftButton, {}, QPoint(-20, -20));
    QTest::mouseClick(&play.link, Qt::MiddleButton);
    EXPECT_EQ(play.urls.size(), 4) << "let go elsewhere";
    play.succeeds = false;
    play.link.SetVisited(false);
    EXPECT_FALSE(play.link.Open() || play.link.IsVisited());
    play.link.setEnabled(false);
    EXPECT_NE(play.link.cursor().shape(), Qt::PointingHandCursor);
}

TEST(HyperLink, TheMenuCopiesTheAddress) {
    Link play;
    play.link.SetURL("https://example.org/copy");
    play.Show();
    QTimer::singleShot(0, &play.link, [] {
        auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        QTest::keyClick(menu, Qt::Key_Up); // the last one
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(&play.link, &event);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("https://example.org/copy"));
    EXPECT_TRUE(play.urls.isEmpty());
}

TEST(HyperLink, IsALinkToScreenReaders) {
    Link play;
    play.link.SetURL("https://example.org");
    play.link.SetWindowText("Example");
    QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(&play.link);
    EXPECT_EQ(interface->role(), QAccessible::Link);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Example"));
    EXPECT_EQ(interface->text(QAccessible::Value), QStringLiteral("https://example.org"));
    interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(play.urls.size(), 1);
    EXPECT_TRUE(interface->state().traversed);
}

} // namespace
} // namespace zelvar
