#include "zelvar/platform/ui/ModalLoop.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/UserMessages.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtGui/QScreen>
#include <QtWidgets/QDialog>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QVBoxLayout>

#include <thread>

namespace zelvar::platform {
namespace {

/// Two fields, so that "the focus is back" cannot be the first field by chance.
struct TwoFields {
    TwoFields() {
        auto *const layout = new QVBoxLayout(&window);
        layout->addWidget(&first);
        layout->addWidget(&second);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        second.setFocus();
    }
    QWidget window;
    QLineEdit first;
    QLineEdit second;
};

TEST(ModalLoop, TheFocusIsBackWhereItWasWhenTheDialogCloses) {
    TwoFields fields;
    ASSERT_TRUE(fields.second.hasFocus());
    auto const seen = test::OnNextDialog([](QWidget &dialog) {
        auto const nested = test::OnNextDialog([](QWidget &above) { above.close(); });
        QDialog above(&dialog);
        RunModal(above);
        EXPECT_TRUE(*nested && test::Eventually([&] { return QApplication::activeWindow() == &dialog; }));
        static_cast<QDialog &>(dialog).accept();
    });
    QDialog dialog(&fields.window);
    EXPECT_EQ(RunModal(dialog), QDialog::Accepted);
    EXPECT_TRUE(*seen);
    EXPECT_TRUE(test::Eventually([&] { return fields.second.hasFocus(); }));
    EXPECT_EQ(QApplication::activeWindow(), &fields.window);
}

TEST(ModalLoop, ADialogOutlivesTheFocusWidgetAndItsParent) {
    for (bool const whole : {false, true}) {
        QPointer<QWidget> const window(new QWidget);
        auto *const field = new QLineEdit(window);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        field->setFocus();
        auto const seen = test::OnNextDialog([&](QWidget &) { delete (whole ? window.data() : field); });
        auto dialog = std::make_unique<QDialog>(window);
        EXPECT_EQ(RunModal(*dialog), QDialog::Rejected);
        EXPECT_TRUE(*seen);
        EXPECT_EQ(dialog->parentWidget(), window);
        dialog.reset();
        delete window;
    }
}

TEST(ModalLoop, AMenuOnTheStackOutlivesItsParent) {
    auto *const window = new QWidget;
    window->show();
    QMenu menu(window);
    menu.addAction(QStringLiteral("Copy"));
    QObject::connect(&menu, &QMenu::aboutToShow, window, &QObject::deleteLater, Qt::QueuedConnection);
    EXPECT_EQ(RunMenu(menu, {}), nullptr);
    EXPECT_EQ(menu.parentWidget(), nullptr);
}

TEST(ModalLoop, ADialogLargerThanTheScreenShowsItsLowerRightCorner) {
    QRect const screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (auto const &[size, least] : {std::pair{QSize(300, 200), QSize(0, 0)}, // more than the screen
                                      {QSize(300, 200), screen.size() + QSize(50, 100)},
                                      {QSize(300, -200), QSize(0, 0)},
                                      {QSize(-200, 200), QSize(0, 0)}}) {
        QDialog dialog;
        dialog.setMinimumSize(least);
        dialog.resize(screen.size() + size);
        dialog.move(500, 500);
        std::ignore = test::OnNextDialog([&, isWhole = least.isEmpty()](QWidget &) {
            QRect const place = dialog.frameGeometry();
            EXPECT_LT((place.bottomRight() - screen.bottomRight()).manhattanLength(), 8); // but for the frame
            EXPECT_EQ(place.left() < screen.left() || place.top() < screen.top(), !isWhole);
        });
        RunModal(dialog);
    }
}

class Poster : public QObject {
public:
    explicit Poster(bool runsDialog) : m_runsDialog(runsDialog) {
        m_map.On(opens, this, &Poster::OpenDialog);
        m_map.On(closes, this, &Poster::CloseDialog);
    }
    bool event(QEvent *event) override { return m_map.Dispatch(*event) || QObject::event(event); }

    MessageId const opens = RegisterMessage();
    MessageId const closes = RegisterMessage();
    bool finished = false;

private:
    void OpenDialog(MessageParam, MessageParam) {
        m_runsDialog ? RunModal(m_dialog) : RunLoop(m_loop);
        finished = true;
    }
    void CloseDialog(MessageParam, MessageParam) {
        m_dialog.close();
        m_loop.quit();
    }

    bool m_runsDialog;
    MessageMap m_map;
    QDialog m_dialog;
    QEventLoop m_loop;
};

TEST(ModalLoop, AMessageQueuedBehindTheOneThatOpensADialogOrLoopIsDeliveredInIt) {
    for (bool const runsDialog : {false, true}) {
        Poster poster(runsDialog);
        PostMessage(&poster, poster.opens);
        PostMessage(&poster, poster.closes);
        // Nothing else wakes the loop: without the wake-up it would run for good.
        EXPECT_TRUE(test::Eventually([&] { return poster.finished; })) << runsDialog;
    }
}

TEST(UserMessages, AWarningFromAnyThreadBecomesABox) {
    InstallUserMessages();
    QString text;
    auto *const window = new QWidget;
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    auto const seen = test::OnNextDialog([&text, window](QWidget &dialog) {
        auto *const box = qobject_cast<QMessageBox *>(&dialog);
        ASSERT_NE(box, nullptr);
        text = box->text() + (box->icon() == QMessageBox::Warning ? "!" : "?");
        test::Shot(*box, QStringLiteral("message-box"));
        delete window; // over which it stands
    });
    std::thread([] { Report::UserWarning("<b>%d</b> files", 3); }).join();
    EXPECT_TRUE(test::Eventually([&] { return *seen && QApplication::activeModalWidget() == nullptr; }));
    EXPECT_EQ(text, QStringLiteral("<b>3</b> files!")); // plain text: names are not markup
    RemoveUserMessages();
}

TEST(UserMessages, MessagesOfAWorkerComeInItsOrderWithTheirSeverity) {
    InstallUserMessages();
    std::vector<DString> texts;
    SetUserMessageHook([&texts](Report::Severity severity, DString const &text) {
        texts.push_back((severity == Report::Severity::Warning ? "!" : "") + text);
        return true;
    });
    Report::UserNotificationEnforced("hello");
    EXPECT_EQ(std::exchange(texts, {}), std::vector<DString>{"hello"});
    std::thread([] {
        for (int i = 0; i < 50; ++i)
            i % 2 == 0 ? Report::UserWarning("%d", i) : Report::UserNotification("%d", i);
    }).join();
    EXPECT_TRUE(texts.empty()) << "shown on the worker's thread";
    EXPECT_TRUE(test::Eventually([&] { return texts.size() == 50; }));
    for (int i = 0; i < static_cast<int>(texts.size()); ++i)
        EXPECT_EQ(texts[static_cast<std::size_t>(i)], (i % 2 == 0 ? "!" : "") + std::to_string(i));
    SetUserMessageHook({});
    RemoveUserMessages();
}

} // namespace
} // namespace zelvar::platform
