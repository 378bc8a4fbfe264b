#include "zelvar/platform/ui/WindowMessage.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <QtCore/QObject>

#include <thread>

namespace zelvar::platform {
namespace {

class Recorder : public QObject {
public:
    explicit Recorder(std::vector<MessageId> const &messages) {
        for (MessageId const message : messages)
            m_map.On(message, this, &Recorder::Record);
    }
    bool event(QEvent *event) override { return m_map.Dispatch(*event) || QObject::event(event); }

    std::vector<MessageParam> seen; ///< first parameters, in the order of arrival

private:
    void Record(MessageParam first, MessageParam) { seen.push_back(first); }

    MessageMap m_map;
};

TEST(WindowMessage, PostedComesAfterThisEventInOrderAndSentComesAtOnce) {
    MessageId const message = RegisterMessage();
    Recorder window({message});
    PostMessage(&window, message, 1);
    PostMessage(&window, message, 2);
    SendMessage(&window, message, 3);
    EXPECT_EQ(window.seen, (std::vector<MessageParam>{3}));
    EXPECT_TRUE(test::Eventually([&] { return window.seen.size() == 3; }));
    EXPECT_EQ(window.seen, (std::vector<MessageParam>{3, 1, 2}));
}

TEST(MessageTarget, AWorkerReachesTheWindowUntilItDetaches) {
    MessageId const message = RegisterMessage();
    Recorder window({message});
    MessageTarget target(&window);
    std::vector<int> payload;
    std::thread worker([&payload, target, message] {
        payload.push_back(42);
        target.Post(message, 1);
    });
    EXPECT_TRUE(test::Eventually([&] { return window.seen.size() == 1; }));
    EXPECT_EQ(payload.size(), 1U); // written before the post, so seen after it
    worker.join();

    target.Detach();
    std::thread([target, message] { target.Post(message, 2); }).join();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(window.seen, (std::vector<MessageParam>{1}));
}

} // namespace
} // namespace zelvar::platform
