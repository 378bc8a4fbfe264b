#include "zelvar/platform/ui/EscapeWatch.h"

#include "support/GuiTest.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>

namespace zelvar::platform {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kPast{450}; // from here on Escape is heard, also on a machine under load

/// A window that writes down what reaches it.
class Window : public QWidget {
public:
    explicit Window(Qt::WindowFlags flags = {}) : QWidget(nullptr, flags) {
        m_map.On(message, this, &Window::Record);
        resize(100, 100);
        show();
        EXPECT_TRUE(test::Eventually([this] { return paints > 0; }));
    }
    bool event(QEvent *event) override {
        static std::set<QEvent::Type> const kept = {QEvent::KeyPress, QEvent::KeyRelease, QEvent::MouseButtonPress,
                                                    QEvent::MouseButtonRelease, QEvent::Close};
        if (kept.contains(event->type()))
            input.push_back(event->type());
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return m_map.Dispatch(*event) || QWidget::event(event);
    }

    MessageId const message = RegisterMessage();
    std::vector<MessageParam> messages;
    std::vector<QEvent::Type> input;
    int paints = 0;

private:
    void Record(MessageParam first, MessageParam) { messages.push_back(first); }

    MessageMap m_map;
};

void PostKey(QObject &receiver, int key, QEvent::Type type = QEvent::KeyPress) {
    QCoreApplication::postEvent(&receiver, new QKeyEvent(type, key, Qt::NoModifier));
}

void PostMouse(QObject &receiver, QEvent::Type type) {
    QPointF const place(5, 5);
    Qt::MouseButton const held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
    QCoreApplication::postEvent(&receiver, new QMouseEvent(type, place, place, Qt::LeftButton, held, Qt::NoModifier));
}

/// Work that asks all the time, for so long or until it is told to end.
bool Work(EscapeWatch &watch, milliseconds time) {
    auto const end = Clock::now() + time;
    while (Clock::now() < end)
        if (watch.IsPressed())
            return true;
    return false;
}

TEST(EscapeWatch, EscapeEndsWorkThatHasGoneOnForAWhileAndGoesNowhereElse) {
    Window window;
    {
        EscapeWatch watch;
        PostKey(window, Qt::Key_Escape);
        EXPECT_FALSE(Work(watch, kPast)) << "pressed before its time, it was meant for something else";
        PostKey(window, Qt::Key_A);
        EXPECT_FALSE(Work(watch, milliseconds(60)));
        PostKey(window, Qt::Key_Escape);
        EXPECT_TRUE(Work(watch, milliseconds(2000)));
        EXPECT_TRUE(watch.IsPressed()) << "for good";
        PostKey(window, Qt::Key_Escape); // once more, impatiently
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.input.empty());
}

TEST(EscapeWatch, WorkThatIsSoonDoneTakesNothingFromAnybody) {
    Window window;
    {
        EscapeWatch watch;
        PostKey(window, Qt::Key_Escape);
        PostMessage(&window, window.message, 1);
        EXPECT_FALSE(watch.IsPressed());
    }
    EXPECT_TRUE(window.input.empty() && window.messages.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(window.input, std::vector<QEvent::Type>{QEvent::KeyPress});
    EXPECT_EQ(window.messages, std::vector<MessageParam>{1});
}

TEST(EscapeWatch, MessagesComeAfterwardsInTheirOrderAndThoseThatAreSentAtOnce) {
    Window window;
    std::vector<MessageParam> meanwhile;
    {
        EscapeWatch watch;
        PostMessage(&window, window.message, 1);
        EXPECT_FALSE(Work(watch, kPast));
        PostMessage(&window, window.message, 2);
        auto const sendLater = [&](MessageParam sent, std::function<void()> const &before) {
            auto const send = [&, sent, before] { before(), SendMessage(&window, window.message, sent); };
            QMetaObject::invokeMethod(&window, send, Qt::QueuedConnection);
        };
        sendLater(10, [&] {
            sendLater(11, [] {});
            EXPECT_FALSE(watch.IsPressed()); // at which nothing else happens
        });
        EXPECT_FALSE(Work(watch, milliseconds(60)));
        PostMessage(&window, window.message, 3);
        meanwhile = window.messages;
    }
    PostMessage(&window, window.message, 4);
    EXPECT_EQ(meanwhile, (std::vector<MessageParam>{10, 11}));
    QCoreApplication::processEvents();
    EXPECT_EQ(window.messages, (std::vector<MessageParam>{10, 11, 1, 2, 3, 4}));
}

TEST(EscapeWatch, WindowsArePaintedMeanwhileAndTimersWait) {
    Window window;
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++ticks; });
    timer.start(5);
    int const before = window.paints;
    {
        EscapeWatch watch;
        window.update();
        EXPECT_FALSE(Work(watch, kPast));
        EXPECT_GT(window.paints, before);
        EXPECT_EQ(ticks, 0);
    }
    EXPECT_TRUE(test::Eventually([&] { return ticks > 0; }));
}

TEST(EscapeWatch, WhatWasPressedBeforeIsReleasedAfterwardsAndAClickMeanwhileIsNone) {
    Window window;
    PostMouse(window, QEvent::MouseButtonPress);
    PostKey(window, Qt::Key_Space);
    QCoreApplication::processEvents();
    window.input.clear();
    {
        EscapeWatch watch;
        PostMouse(window, QEvent::MouseButtonRelease);
        PostKey(window, Qt::Key_Space, QEvent::KeyRelease);
        EXPECT_FALSE(Work(watch, kPast));
        PostMouse(window, QEvent::MouseButtonPress);
        PostMouse(window, QEvent::MouseButtonRelease);
        PostKey(window, Qt::Key_A);
        PostMouse(window, QEvent::MouseButtonRelease); // of a press that went into a loop of the work's own
        PostKey(window, Qt::Key_A, QEvent::KeyRelease);
        EXPECT_TRUE(!Work(watch, milliseconds(60)) && window.input.empty());
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(window.input, (std::vector{QEvent::MouseButtonRelease, QEvent::KeyRelease, QEvent::MouseButtonRelease}));
}

TEST(EscapeWatch, OneKeyEndsAllThatIsDoneInsideAnothersLife) {
    Window window;
    EscapeWatch outer;
    {
        EscapeWatch inner;
        EXPECT_FALSE(Work(inner, kPast));
        PostKey(window, Qt::Key_Escape);
        EXPECT_TRUE(Work(inner, milliseconds(2000)));
    }
    EscapeWatch next;
    EXPECT_TRUE(next.IsPressed() && outer.IsPressed());
}

TEST(EscapeWatch, AWindowThatIsClosedStaysAndTheWorkEndsButATipMayGo) {
    Window window;
    Window tip(Qt::ToolTip);
    EscapeWatch watch;
    QMetaObject::invokeMethod(
        &tip, [&] { tip.close(); }, Qt::QueuedConnection);
    EXPECT_FALSE(Work(watch, kPast) || tip.isVisible());
    QMetaObject::invokeMethod(
        &window, [&] { EXPECT_FALSE(window.close()); }, Qt::QueuedConnection);
    EXPECT_TRUE(Work(watch, milliseconds(2000)) && window.isVisible() && window.input.empty());
}

TEST(HeldMessages, AWindowThatIsGoneGetsNothing) {
    HeldMessages held;
    {
        Window window;
        class Catch : public QObject {
        public:
            explicit Catch(HeldMessages &into) : m_into(into) {}
            bool eventFilter(QObject *watched, QEvent *event) override { return m_into.Keep(watched, *event); }

        private:
            HeldMessages &m_into;
        } filter(held);
        window.installEventFilter(&filter);
        PostMessage(&window, window.message, 1);
        QCoreApplication::processEvents();
        EXPECT_TRUE(window.messages.empty());
    }
}

} // namespace
} // namespace zelvar::platform
