#include "support/GuiTest.h"
#include "zelvar/dialogs/DlgMsgDetails.h"
#include "zelvar/dialogs/XMessageBox.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QDesktopServices>
#include <QtGui/QScreen>
#include <QtGui/QTextBlock>
#include <QtGui/QTextLayout>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextBrowser>

#include <memory_resource>

namespace zelvar::test {
namespace {

using platform::GetDlgItem;

enum : int { kText = 1001, kCheck = 5555, kHelp = 300, kIcon = 1000, kChecked = 0x1000000 };

void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    if (QWidget *const focus = QApplication::focusWidget()) // none once the box has ended
        QTest::keyClick(focus, key, modifiers);
}

QPlainTextEdit &TextOf(QWidget &box, int id = kText) { return *GetDlgItem<QPlainTextEdit>(box, id); }

/// Shows a box and lets `act` work it; the answer.
int Ask(unsigned type, std::function<void(QWidget &)> act, std::string const &text = "Is it?",
        char const *caption = "Question", unsigned helpId = 0) {
    auto const done = OnNextDialog([&](QWidget &box) {
        EXPECT_TRUE(QTest::qWaitForWindowActive(&box));
        act(box);
    });
    int const answer = XMessageBox(nullptr, text.c_str(), caption, type, nullptr, helpId);
    EXPECT_TRUE(*done);
    return answer;
}
/// The same with controls that are clicked and keys that are pressed then.
int AnswerTo(unsigned type, std::vector<int> const &clicked, std::vector<Qt::Key> const &keys = {}) {
    return Ask(type, [&](QWidget &box) {
        for (int const id : clicked)
            Click(GetDlgItem(box, id));
        for (Qt::Key const key : keys)
            Key(key);
    });
}

std::string Lines(char const *first, int count, std::function<std::string(int)> const &next) {
    std::string text = first;
    for (int i = 1; i < count; ++i)
        text += next(i);
    return text;
}

TEST(XMessageBox, EachButtonOfEachSetGivesItsId) {
    Rows<unsigned, std::vector<int>> const cases = {{MB_OK, {1}},
                                                    {MB_OKCANCEL, {1, 2}},
                                                    {MB_YESNO, {6, 7}},
                                                    {MB_ABORTRETRYIGNORE, {3, 4, 5}},
                                                    {7, {1}},
                                                    {MB_YESNOCANCEL, {6, 7, 2}},
                                                    {15, {1}},
                                                    {MB_FILEEXISTS, {2, 3, 1, 4}},
                                                    {MB_RETRYCANCEL, {4, 2}},
                                                    {MB_CONTINUEABORT, {10, 3}}};
    for (auto const &[set, ids] : cases)
        for (int const id : ids)
            for (unsigned const more : {0U, unsigned{MB_HELP | MB_DONTASKAGAIN | MB_ICONQUESTION}})
                EXPECT_EQ(AnswerTo(set | more, {id}), id) << set;
}

TEST(XMessageBox, EscapeAndTheFrameDoWhatTheSetAllows) {
    for (auto const &[set, answer] :
         {std::pair{MB_OK, 1}, {MB_OKCANCEL, 2}, {MB_YESNO, 6}, {MB_YESNOCANCEL, 2}, {MB_FILEEXISTS, 2}}) {
        EXPECT_EQ(AnswerTo(set, {}, {Qt::Key_Escape, Qt::Key_Return}), answer); // Return if it is still there
        auto const close = [cancels = answer == 2](QWidget &box) {
            EXPECT_EQ((box.windowFlags() & Qt::WindowCloseButtonHint) != 0, cancels);
            box.close();
            EXPECT_EQ(box.isVisible(), !cancels);
            Key(Qt::Key_Space);
        };
        EXPECT_EQ(Ask(set, close), answer);
    }
}

TEST(XMessageBox, TheCheckMarkIsInTheAnswerWhereTheBoxWasShown) {
    auto const check = [](QWidget &box) {
        auto *const mark = GetDlgItem<QCheckBox>(box, kCheck);
        EXPECT_EQ(mark->text(), "Don't ask me again");
        EXPECT_FALSE(mark->isChecked());
        Click(mark);
        Shot(box, "box-yes-no-check");
        Key(Qt::Key_Y); // mnemonics need no Alt
    };
    EXPECT_EQ(Ask(MB_YESNO | MB_DONTASKAGAIN, check), 6 + kChecked);
    EXPECT_EQ(AnswerTo(MB_OKCANCEL | MB_DONTASKAGAIN, {kCheck}, {Qt::Key_Escape}), 2 + kChecked);
    EXPECT_EQ(AnswerTo(MB_YESNO | MB_DONTASKAGAIN, {kCheck, kCheck}, {Qt::Key_N}), 7);
}

TEST(XMessageBox, IsReadOutWithTitleAndTextAndReturnPressesTheFocusedButton) {
    auto const listen = [](QWidget &box) {
        QAccessibleInterface *const window = QAccessible::queryAccessibleInterface(&box);
        EXPECT_EQ(window->text(QAccessible::Name), "Question");
        EXPECT_EQ(window->text(QAccessible::Description), "Is it?");
        EXPECT_TRUE(GetDlgItem(box, 7)->hasFocus() && GetDlgItem<QPushButton>(box, 7)->isDefault());
        Shot(box, "box-question");
        Key(Qt::Key_Return);
    };
    EXPECT_EQ(Ask(MB_YESNOCANCEL | MB_DEFBUTTON2 | MB_ICONQUESTION, listen), 7);
    EXPECT_EQ(AnswerTo(MB_YESNO | MB_DEFBUTTON4, {}, {Qt::Key_Tab, Qt::Key_Return}), 7); // of two: the first
    std::vector<Qt::Key> const round{Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Space};
    EXPECT_EQ(AnswerTo(MB_YESNOCANCEL, {}, round), 6) << "the text is passed by";
}

TEST(XMessageBox, IsMadeFromItsTemplate) {
    auto const look = [](QWidget &box) {
        Shot(box, "box-file-exists");
        QPoint const along = GetDlgItem(box, kHelp)->pos() - GetDlgItem(box, 2)->pos();
        EXPECT_TRUE(along.y() != 0 || // a narrow screen
                    std::abs(along.x() - 364 * box.fontInfo().pixelSize() / 12) <=
                        platform::DialogBaseUnits(box.font()).cx / 2);
        for (QAbstractButton const *button : box.findChildren<QAbstractButton *>()) {
            EXPECT_LE(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width(), button->width());
            EXPECT_TRUE(box.rect().contains(button->geometry()));
        }
        EXPECT_TRUE(GetDlgItem(box, kIcon)->isVisible());
        EXPECT_GT(ColorAt(*GetDlgItem(box, kIcon), {16, 10}).red(), 200) << "a yellow sign";
        EXPECT_GE(TextOf(box).geometry().left(), GetDlgItem(box, kIcon)->geometry().right());
        Key(Qt::Key_Escape);
    };
    Ask(MB_FILEEXISTS | MB_ICONEXCLAMATION | MB_HELP | MB_DONTASKAGAIN, look, "The file \"scan 14.tif\" exists.");
}

TEST(XMessageBox, TheCaptionIsTheApplicationsTitleOrError) {
    for (auto const &[given, application, caption] : Rows<char const *, char const *, char const *>{
             {nullptr, "", "Error"}, {"Export", "", "Export"}, {"", "Viewer", "Viewer"}}) {
        QGuiApplication::setApplicationDisplayName(application);
        auto const look = [wanted = caption](QWidget &box) {
            EXPECT_EQ(box.windowTitle(), wanted);
            Key(Qt::Key_Return);
        };
        Ask(MB_OK, look, "t", given);
    }
    QGuiApplication::setApplicationDisplayName({});
}

TEST(XMessageBox, HelpOpensTheFileOfTheModuleAndStaysOpen) {
    std::vector<std::string> opened;
    auto const open = [&opened](DString const &file, unsigned id) {
        opened.push_back(file + " " + std::to_string(id));
    };
    auto const help = [](unsigned id) {
        auto const press = [](QWidget &box) {
            Click(GetDlgItem(box, kHelp));
            EXPECT_TRUE(box.isVisible());
            Key(Qt::Key_Escape);
        };
        EXPECT_EQ(Ask(MB_OKCANCEL | MB_HELP, press, "t", "c", id), 2);
    };
    SetMessageBoxHelp({.module = "/opt/viewer.exe", .open = open});
    help(7);
    help(0);
    SetMessageBoxHelp({.module = "/opt/viewer", .open = open});
    help(7);
    EXPECT_THAT(opened, ElementsAre("/opt/viewer.html 7", "/opt/viewer.html 0"));

    TempFolder const folder; // the desktop is asked for files that exist only
    QTextBrowser viewer;
    QDesktopServices::setUrlHandler("file", &viewer, "setSource");
    SetMessageBoxHelp({.module = folder / "v.exe"});
    help(7);
    EXPECT_TRUE(viewer.source().isEmpty() && !HasMessageBoxHelp());
    folder.Write("v.html", "<p>Help</p>");
    EXPECT_TRUE(HasMessageBoxHelp());
    help(7);
    EXPECT_EQ(viewer.source(), QUrl("file://" + QString::fromStdString(folder / "v.html") + "#7"));
    QDesktopServices::unsetUrlHandler("file");
    SetMessageBoxHelp({});
}

TEST(XMessageBox, CopiesWhatIsSelectedOrAll) {
    auto const copy = [](QWidget &box) {
        Key(Qt::Key_C, Qt::ControlModifier);
        EXPECT_TRUE(QApplication::clipboard()->text().contains("\n<b>Is it?</b>\n"));
        Click(TextOf(box).viewport());
        Key(Qt::Key_Home, Qt::ControlModifier);
        Key(Qt::Key_Right, Qt::ShiftModifier);
        Key(Qt::Key_Right, Qt::ShiftModifier);
        Key(Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QApplication::clipboard()->text(), "<b"); // markup is text
        Key(Qt::Key_Y);
    };
    EXPECT_EQ(Ask(MB_YESNO, copy, "<b>Is it?</b>"), 6);
}

TEST(XMessageBox, CutsNoLineButtonOrCheckText) {
    QFont const former = QApplication::font();
    QFont font(QStringLiteral("Liberation Sans"));
    font.setPixelSize(15); // whose lines have a leading
    QApplication::setFont(font);
    std::string const lines = Lines("The first line", 26, [](int i) { return "\nline " + std::to_string(i); });
    std::string const check = "Do not ask me " + std::string(300, 'x') + " again";
    auto const done = OnNextDialog([](QWidget &box) {
        QPlainTextEdit &text = TextOf(box);
        EXPECT_EQ(text.verticalScrollBar()->maximum(), 0);
        EXPECT_LE(text.cursorRect(QTextCursor(text.document()->lastBlock())).bottom(), text.viewport()->height());
        for (QPushButton const *button : box.findChildren<QPushButton *>())
            EXPECT_GE(button->width(), button->fontMetrics().horizontalAdvance(button->text()) + 6);
        auto const &mark = *GetDlgItem<QCheckBox>(box, kCheck);
        EXPECT_TRUE(box.rect().contains(mark.geometry()));
        EXPECT_EQ(mark.size().expandedTo(mark.sizeHint()), mark.size());
        Shot(box, "box-whole");
        Key(Qt::Key_Escape);
    });
    XMessageBox(nullptr, lines.c_str(), "Copy", MB_FILEEXISTS | MB_DONTASKAGAIN, check.c_str());
    EXPECT_TRUE(*done);
    QApplication::setFont(former);
}

TEST(XMessageBox, ALongTextWrapsAndScrollsWithTheButtonsInSight) {
    auto const file = [](int i) { return "\nfile " + std::to_string(i) + ".tif cannot be read"; };
    for (auto const &[shot, text] :
         Rows<char const *, std::string>{{"box-words", Lines("A long message", 100, [](int) { return " goes on"; })},
                                         {"box-lines", Lines("The first line", 500, file)},
                                         {"box-one-word", std::string(500, 'x')},
                                         {"box-empty-lines", std::string(50'000, '\n')}}) {
        auto const look = [&name = shot, &shown = text](QWidget &box) {
            QRect const screen = box.screen()->availableGeometry();
            EXPECT_LE(box.height() + box.style()->pixelMetric(QStyle::PM_TitleBarHeight) + 8, screen.height());
            EXPECT_LE(box.width(), screen.width() / 2 + 50 * box.fontInfo().pixelSize() / 12 + 130);
            for (int const id : {1, 2, int{kCheck}}) {
                EXPECT_TRUE(box.rect().contains(GetDlgItem(box, id)->geometry()));
                EXPECT_GE(GetDlgItem(box, id)->y(), TextOf(box).geometry().bottom());
            }
            QScrollBar const &bar = *TextOf(box).verticalScrollBar();
            bool const isHigh = box.height() > screen.height() - 60;
            EXPECT_EQ(bar.isVisible(), isHigh);
            EXPECT_TRUE(isHigh || shown.find('\n') == std::string::npos);
            Key(Qt::Key_PageDown);
            EXPECT_EQ(bar.value() > 0, bar.isVisible());
            EXPECT_TRUE(!bar.isVisible() || (TextOf(box).focusPolicy() & Qt::TabFocus) != 0);
            Shot(box, name);
            Key(Qt::Key_Escape);
        };
        Ask(MB_OKCANCEL | MB_ICONHAND | MB_DONTASKAGAIN, look, text);
    }
}

TEST(XMessageBox, TheStopSignOnTopOfAllIsThePlatformsBox) {
    for (auto const &[type, key, answer] :
         Rows<unsigned, Qt::Key, int>{{MB_YESNO | MB_DEFBUTTON2 | MB_DONTASKAGAIN, Qt::Key_Return, 7},
                                      {MB_YESNOCANCEL, Qt::Key_Escape, 2},
                                      {MB_FILEEXISTS, Qt::Key_Escape, 2},
                                      {MB_CONTINUEABORT, Qt::Key_Return, 1}}) {
        auto const look = [pressed = key](QWidget &box) {
            auto &plain = dynamic_cast<QMessageBox &>(box);
            EXPECT_EQ(plain.textFormat(), Qt::PlainText);
            EXPECT_EQ(plain.checkBox(), nullptr);
            Shot(box, "box-platform");
            Key(pressed);
        };
        EXPECT_EQ(Ask(type | MB_ICONHAND | MB_SYSTEMMODAL, look), answer);
    }
    auto const own = [](QWidget &box) {
        EXPECT_EQ(qobject_cast<QMessageBox *>(&box), nullptr);
        EXPECT_TRUE(box.windowFlags() & Qt::WindowStaysOnTopHint);
        Key(Qt::Key_Y);
    };
    EXPECT_EQ(Ask(MB_YESNO | MB_ICONQUESTION | MB_SYSTEMMODAL, own), 6);
}

TEST(XMessageBox, WithoutMemoryItSaysSoAndIsCancelled) {
    auto const look = [](QWidget &box) {
        std::pmr::set_default_resource(nullptr);
        EXPECT_EQ(box.windowTitle(), "Allocation Failure");
        EXPECT_EQ(dynamic_cast<QMessageBox &>(box).text(), "Memory allocation for dialog template failed.");
        Key(Qt::Key_Return);
    };
    std::pmr::set_default_resource(std::pmr::null_memory_resource());
    EXPECT_EQ(Ask(MB_YESNO, look), 2);
    std::pmr::set_default_resource(nullptr);
}

TEST(XMessageBox, ABoxInABoxAndADyingParentDoNoHarm) {
    auto const nest = [](QWidget &outer) {
        EXPECT_EQ(AnswerTo(MB_CONTINUEABORT, {10}), 10);
        EXPECT_TRUE(outer.isVisible());
        Click(GetDlgItem(outer, kCheck));
        Click(GetDlgItem(outer, 7));
    };
    EXPECT_EQ(Ask(MB_YESNOCANCEL | MB_DONTASKAGAIN, nest), 7 + kChecked);
    auto *const parent = new QWidget;
    parent->show();
    auto const done = OnNextDialog([&](QWidget &) { delete parent; });
    EXPECT_EQ(XMessageBox(parent, nullptr, nullptr, MB_YESNO), 2);
    EXPECT_TRUE(*done);
}

// ------------------------------------------------------------------------------------- the message with details

int Answer(DlgMsgDetails &dialog, std::function<void(QWidget &)> act) {
    auto const done = OnNextDialog(std::move(act));
    int const answer = static_cast<int>(dialog.DoModal());
    EXPECT_TRUE(*done);
    return answer;
}

TEST(MessageWithDetails, ItOpensCollapsedAndGrowsOnceForGood) {
    DlgMsgDetails dialog("Import", "3 of 7 files were not read.", "a.tif: damaged\nb.tif: damaged", nullptr);
    int const full = platform::MapDialogRect(dialog, {0, 0, 0, 170}).bottom;
    int const edit = TextOf(dialog, 6005).height();
    int const text = TextOf(dialog, 6007).height();
    auto const look = [&](QWidget &window) {
        EXPECT_EQ(window.windowTitle(), "Import");
        QRect const before = window.geometry();
        EXPECT_EQ(window.height(), full - edit - (full - edit - text) / 3);
        EXPECT_FALSE(TextOf(window, 6005).isVisible());
        QColor const ground = window.palette().color(QPalette::Window);
        EXPECT_EQ(ColorAt(TextOf(window, 6007), {text - 9, text - 3}), ground) << "the message reads like a label";
        Shot(window, "message-collapsed");
        auto *const button = GetDlgItem<QPushButton>(window, 6006);
        Click(button);
        EXPECT_EQ(window.geometry(), QRect(before.topLeft(), QSize(before.width(), full)));
        EXPECT_TRUE(!button->isEnabled() && TextOf(window, 6005).isVisible());
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
    EXPECT_EQ(TextOf(dialog, 6005).toPlainText(), "one\ntwo\n\nfour") << "shown as four lines";
}

TEST(MessageWithDetails, TheDetailsAreSelectedAndCopiedButNotChanged) {
    DlgMsgDetails dialog("", "", "first\nsecond", nullptr);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    Click(GetDlgItem<QPushButton>(dialog, 6006));
    QPlainTextEdit &details = TextOf(dialog, 6005);
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
        QPlainTextEdit const &text = TextOf(dialog, 6007);
        EXPECT_EQ(text.verticalScrollBar()->maximum() > 0, times > 1);
        EXPECT_LE(text.document()->firstBlock().layout()->boundingRect().width(), text.viewport()->width())
            << "no text is cut at the side";
        Shot(dialog, times > 1 ? "message-long" : "message-path");
    }
}

} // namespace
} // namespace zelvar::test
