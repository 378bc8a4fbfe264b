#include "zelvar/dialogs/DlgMsgDetails.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"

#include <QtGui/QClipboard>
#include <QtGui/QTextBlock>
#include <QtGui/QTextLayout>
#include <QtWidgets/QPlainTextEdit>

namespace zelvar::test {
namespace {

using platform::GetDlgItem;

QPlainTextEdit &TextField(QWidget &dialog, int id) { return *GetDlgItem<QPlainTextEdit>(dialog, id); }

int Answer(DlgMsgDetails &dialog, std::function<void(QWidget &)> act) {
    auto const done = OnNextDialog(std::move(act));
    int const answer = static_cast<int>(dialog.DoModal());
    EXPECT_TRUE(*done);
    return answer;
}

TEST(MessageWithDetails, ItOpensCollapsedAndGrowsOnceForGood) {
    DlgMsgDetails dialog("Import", "3 of 7 files were not read.", "a.tif: damaged\nb.tif: damaged", nullptr);
    int const full = platform::MapDialogRect(dialog, {0, 0, 0, 170}).bottom;
    int const edit = TextField(dialog, 6005).height();
    int const text = TextField(dialog, 6007).height();
    auto const look = [&](QWidget &window) {
        EXPECT_EQ(window.windowTitle(), "Import");
        QRect const before = window.geometry();
        EXPECT_EQ(window.height(), full - edit - (full - edit - text) / 3);
        EXPECT_FALSE(TextField(window, 6005).isVisible());
        Shot(window, "message-collapsed");
        auto *const button = GetDlgItem<QPushButton>(window, 6006);
        Click(button);
        EXPECT_EQ(window.geometry(), QRect(before.topLeft(), QSize(before.width(), full)));
        EXPECT_FALSE(button->isEnabled());
        EXPECT_TRUE(TextField(window, 6005).isVisible());
        Shot(window, "message-details");
        Click(GetDlgItem<QPushButton>(window, 1));
    };
    EXPECT_EQ(Answer(dialog, look), 1);
    EXPECT_EQ(Answer(dialog, look), 1) << "each time anew";
    DlgMsgDetails bare(nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(Answer(bare, [](QWidget &window) { QTest::keyClick(&window, Qt::Key_Escape); }), 2);
}

TEST(MessageWithDetails, EachLineFeedGetsAReturnAlsoBehindAnotherOne) {
    DlgMsgDetails dialog("", "", "one\ntwo\r\n\nfour", nullptr);
    EXPECT_EQ(dialog.GetDetails(), "one\r\ntwo\r\r\n\r\nfour");
    EXPECT_EQ(TextField(dialog, 6005).toPlainText(), "one\ntwo\n\nfour") << "shown as four lines";
}

TEST(MessageWithDetails, TheDetailsAreSelectedAndCopiedButNotChanged) {
    DlgMsgDetails dialog("", "", "first\nsecond", nullptr);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    Click(GetDlgItem<QPushButton>(dialog, 6006));
    QPlainTextEdit &details = TextField(dialog, 6005);
    EXPECT_TRUE(details.hasFocus());
    QTest::keyClicks(&details, "x");
    QTest::keyClick(&details, Qt::Key_Delete);
    QTest::keyClick(&details, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&details, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "first\nsecond");
}

TEST(MessageWithDetails, ALongPathWrapsAndWhatHasNoRoomScrolls) {
    std::string const path = "/" + std::string(60, 'a') + "/" + std::string(60, 'b') + ".tif";
    for (int const times : {1, 40}) {
        DString message = "Cannot read";
        for (int at = 0; at < times; ++at)
            message += " " + path;
        DlgMsgDetails dialog("Import", message.c_str(), "", nullptr);
        dialog.show();
        QPlainTextEdit const &text = TextField(dialog, 6007);
        EXPECT_EQ(text.verticalScrollBar()->maximum() > 0, times > 1);
        EXPECT_LE(text.document()->firstBlock().layout()->boundingRect().width(), text.viewport()->width())
            << "no text is cut at the side";
        Shot(dialog, times > 1 ? "message-long" : "message-path");
    }
}

} // namespace
} // namespace zelvar::test
