#include "zelvar/dialogs/XMessageBox.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QDesktopServices>
#include <QtGui/QScreen>
#include <QtGui/QTextBlock>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextBrowser>

#include <memory_resource>

namespace zelvar {
namespace {

using platform::GetDlgItem;

constexpr int kText = 1001;
constexpr int kCheck = 5555;
constexpr int kHelp = 300;
constexpr int kIcon = 1000;
constexpr int kChecked = 0x1000000;

void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    if (QWidget *const focus = QApplication::focusWidget()) // none once the box has ended
        QTest::keyClick(focus, key, modifiers);
}

/// Shows a box and lets `act` work it; the answer.
int Ask(unsigned type, std::function<void(QWidget &)> act, std::string const &text = "Is it?",
        char const *caption = "Question", unsigned helpId = 0) {
    auto const done = test::OnNextDialog([&](QWidget &box) {
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
            test::Click(GetDlgItem(box, id));
        for (Qt::Key const key : keys)
            Key(key);
    });
}
QPlainTextEdit &TextOf(QWidget &box) { return *GetDlgItem<QPlainTextEdit>(box, kText); }

TEST(XMessageBox, EachButtonOfEachSetGivesItsId) {
    struct Case {
        unsigned set;
        std::vector<int> ids;
    };
    Case const cases[] = {{MB_OK, {1}},
                          {MB_OKCANCEL, {1, 2}},
                          {MB_ABORTRETRYIGNORE, {3, 4, 5}},
                          {MB_YESNOCANCEL, {6, 7, 2}},
                          {MB_YESNO, {6, 7}},
                          {MB_RETRYCANCEL, {4, 2}},
                          {MB_FILEEXISTS, {2, 3, 1, 4}},
                          {7, {1}},
                          {MB_CONTINUEABORT, {10, 3}},
                          {15, {1}}};
    for (Case const &c : cases)
        for (int const id : c.ids) {
            EXPECT_EQ(AnswerTo(c.set, {id}), id) << c.set;
            EXPECT_EQ(AnswerTo(c.set | MB_HELP | MB_DONTASKAGAIN | MB_ICONQUESTION, {id}), id) << c.set;
        }
}

TEST(XMessageBox, EscapeAndTheFrameDoWhatTheSetAllows) {
    for (auto const &[set, answer] :
         {std::pair{MB_OK, 1}, {MB_OKCANCEL, 2}, {MB_YESNO, 6}, {MB_YESNOCANCEL, 2}, {MB_FILEEXISTS, 2}}) {
        EXPECT_EQ(AnswerTo(set, {}, {Qt::Key_Escape, Qt::Key_Return}), answer); // Return if it is still there
        EXPECT_EQ(Ask(set,
                      [cancels = answer == 2](QWidget &box) {
                          EXPECT_EQ((box.windowFlags() & Qt::WindowCloseButtonHint) != 0, cancels);
                          box.close();
                          EXPECT_EQ(box.isVisible(), !cancels);
                          Key(Qt::Key_Space);
                      }),
                  answer);
    }
}

TEST(XMessageBox, TheCheckMarkIsInTheAnswerWhereTheBoxWasShown) {
    EXPECT_EQ(Ask(MB_YESNO | MB_DONTASKAGAIN,
                  [](QWidget &box) {
                      auto *const check = GetDlgItem<QCheckBox>(box, kCheck);
                      EXPECT_EQ(check->text(), "Don't ask me again");
                      EXPECT_FALSE(check->isChecked());
                      test::Click(check);
                      test::Shot(box, "box-yes-no-check");
                      Key(Qt::Key_Y); // mnemonics need no Alt
                  }),
              6 + kChecked);
    EXPECT_EQ(AnswerTo(MB_OKCANCEL | MB_DONTASKAGAIN, {kCheck}, {Qt::Key_Escape}), 2 + kChecked);
    EXPECT_EQ(AnswerTo(MB_YESNO | MB_DONTASKAGAIN, {kCheck, kCheck}, {Qt::Key_N}), 7);
    EXPECT_EQ(AnswerTo(MB_YESNO, {}, {Qt::Key_N}), 7);
}

TEST(XMessageBox, IsReadOutWithTitleAndTextAndReturnPressesTheFocusedButton) {
    EXPECT_EQ(Ask(MB_YESNOCANCEL | MB_DEFBUTTON2 | MB_ICONQUESTION,
                  [](QWidget &box) {
                      QAccessibleInterface *const window = QAccessible::queryAccessibleInterface(&box);
                      EXPECT_EQ(window->text(QAccessible::Name), "Question");
                      EXPECT_EQ(window->text(QAccessible::Description), "Is it?");
                      EXPECT_TRUE(GetDlgItem(box, 7)->hasFocus());
                      EXPECT_TRUE(GetDlgItem<QPushButton>(box, 7)->isDefault());
                      test::Shot(box, "box-question");
                      Key(Qt::Key_Return);
                  }),
              7);
    EXPECT_EQ(AnswerTo(MB_YESNO | MB_DEFBUTTON4, {}, {Qt::Key_Tab, Qt::Key_Return}), 7); // of two: the first
}

TEST(XMessageBox, IsMadeFromItsTemplate) {
    Ask(
        MB_FILEEXISTS | MB_ICONEXCLAMATION | MB_HELP | MB_DONTASKAGAIN,
        [](QWidget &box) {
            test::Shot(box, "box-file-exists");
            Size const base = platform::DialogBaseUnits(box.font());
            bool const isOneRow = GetDlgItem(box, kHelp)->y() == GetDlgItem(box, 2)->y(); // all but a narrow screen
            for (auto const &[id, left] : {std::pair{2, 0}, {3, 106}, {1, 212}, {4, 288}, {kHelp, 364}}) {
                QRect const place = GetDlgItem(box, id)->geometry();
                EXPECT_TRUE(box.rect().contains(place)) << id;
                if (isOneRow) {
                    EXPECT_NEAR(place.x() - GetDlgItem(box, 2)->x(), left * box.fontInfo().pixelSize() / 12,
                                base.cx / 2)
                        << id;
                }
            }
            for (QAbstractButton const *button : box.findChildren<QAbstractButton *>())
                EXPECT_LE(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width(), button->width());
            EXPECT_TRUE(GetDlgItem(box, kIcon)->isVisible());
            EXPECT_GT(test::ColorAt(*GetDlgItem(box, kIcon), {16, 10}).red(), 200) << "a yellow sign";
            EXPECT_TRUE(TextOf(box).geometry().left() >= GetDlgItem(box, kIcon)->geometry().right());
            Key(Qt::Key_Escape);
        },
        "The file \"scan 14.tif\" exists.", "Copy");
}

TEST(XMessageBox, TheCaptionIsTheApplicationsTitleOrError) {
    auto const caption = [](char const *given) {
        QString title;
        Ask(
            MB_OK,
            [&title](QWidget &box) {
                title = box.windowTitle();
                Key(Qt::Key_Return);
            },
            "t", given);
        return title;
    };
    EXPECT_EQ(caption(nullptr), "Error");
    EXPECT_EQ(caption("Export"), "Export");
    QGuiApplication::setApplicationDisplayName("Viewer");
    EXPECT_EQ(caption(""), "Viewer");
    QGuiApplication::setApplicationDisplayName({});
}

TEST(XMessageBox, HelpOpensTheFileOfTheModuleAndStaysOpen) {
    std::vector<std::string> opened;
    auto const open = [&opened](DString const &file, unsigned id) {
        opened.push_back(file + " " + std::to_string(id));
    };
    auto const help = [](unsigned id) {
        return Ask(
            MB_OKCANCEL | MB_HELP,
            [](QWidget &box) {
                test::Click(GetDlgItem(box, kHelp));
                EXPECT_TRUE(box.isVisible());
                Key(Qt::Key_Escape);
            },
            "t", "c", id);
    };
    SetMessageBoxHelp({.module = "/opt/viewer.exe", .open = open});
    EXPECT_EQ(help(7), 2);
    help(0);
    SetMessageBoxHelp({.module = "/opt/viewer", .open = open});
    help(7);
    EXPECT_EQ(opened, (std::vector<std::string>{"/opt/viewer.html 7", "/opt/viewer.html 0"}));

    test::TempFolder const folder; // the desktop is asked for files that exist only
    QTextBrowser viewer;
    QDesktopServices::setUrlHandler("file", &viewer, "setSource");
    SetMessageBoxHelp({.module = folder / "v.exe"});
    help(7);
    EXPECT_TRUE(viewer.source().isEmpty());
    EXPECT_FALSE(HasMessageBoxHelp());
    folder.Write("v.html", "<p>Help</p>");
    EXPECT_TRUE(HasMessageBoxHelp());
    help(7);
    EXPECT_EQ(viewer.source(), QUrl("file://" + QString::fromStdString(folder / "v.html") + "#7"));
    QDesktopServices::unsetUrlHandler("file");
    SetMessageBoxHelp({});
}

TEST(XMessageBox, CopiesWhatIsSelectedOrAll) {
    Ask(
        MB_YESNO,
        [](QWidget &box) {
            Key(Qt::Key_C, Qt::ControlModifier);
            EXPECT_TRUE(QApplication::clipboard()->text().contains("\n<b>Is it?</b>\n"));
            test::Click(TextOf(box).viewport());
            Key(Qt::Key_Home, Qt::ControlModifier);
            Key(Qt::Key_Right, Qt::ShiftModifier);
            Key(Qt::Key_Right, Qt::ShiftModifier);
            Key(Qt::Key_C, Qt::ControlModifier);
            EXPECT_EQ(QApplication::clipboard()->text(), "<b"); // markup is text
            Key(Qt::Key_Y);
        },
        "<b>Is it?</b>");
}

TEST(XMessageBox, CutsNoLineButtonOrCheckText) {
    QFont const former = QApplication::font();
    QFont font(QStringLiteral("Liberation Sans"));
    font.setPixelSize(15); // whose lines have a leading
    QApplication::setFont(font);
    std::string lines = "The first line";
    for (int i = 2; i <= 26; ++i)
        lines += "\nline " + std::to_string(i);
    std::string const check = "Do not ask me " + std::string(300, 'x') + " again";
    auto const done = test::OnNextDialog([](QWidget &box) {
        QPlainTextEdit &text = TextOf(box);
        EXPECT_EQ(text.verticalScrollBar()->maximum(), 0);
        EXPECT_LE(text.cursorRect(QTextCursor(text.document()->lastBlock())).bottom(), text.viewport()->height());
        for (QPushButton const *button : box.findChildren<QPushButton *>())
            EXPECT_GE(button->width(), button->fontMetrics().horizontalAdvance(button->text()) + 6);
        auto const &mark = *GetDlgItem<QCheckBox>(box, kCheck);
        EXPECT_TRUE(box.rect().contains(mark.geometry()));
        EXPECT_GE(mark.width(), mark.sizeHint().width());
        EXPECT_GE(mark.height(), mark.sizeHint().height());
        test::Shot(box, "box-whole");
        Key(Qt::Key_Escape);
    });
    XMessageBox(nullptr, lines.c_str(), "Copy", MB_FILEEXISTS | MB_DONTASKAGAIN, check.c_str());
    EXPECT_TRUE(*done);
    QApplication::setFont(former);
}

TEST(XMessageBox, ALongTextWrapsAndScrollsWithTheButtonsInSight) {
    QRect const screen = QGuiApplication::primaryScreen()->availableGeometry();
    std::string words = "A long message";
    for (int i = 0; i < 100; ++i)
        words += " goes on";
    std::string lines = "The first line";
    for (int i = 0; i < 500; ++i)
        lines += "\nfile " + std::to_string(i) + ".tif cannot be read";
    std::string const texts[] = {words, lines, std::string(500, 'x'), std::string(50'000, '\n')};
    char const *const shots[] = {"box-words", "box-lines", "box-one-word", "box-empty-lines"};
    for (std::string const &text : texts) {
        Ask(
            MB_OKCANCEL | MB_ICONHAND | MB_DONTASKAGAIN,
            [&](QWidget &box) {
                EXPECT_LE(box.frameGeometry().height(), screen.height());
                EXPECT_LE(box.width(), screen.width() / 2 + 50 * box.fontInfo().pixelSize() / 12 + 130);
                for (int const id : {1, 2, kCheck}) {
                    EXPECT_TRUE(box.rect().contains(GetDlgItem(box, id)->geometry()));
                    EXPECT_GE(GetDlgItem(box, id)->y(), TextOf(box).geometry().bottom());
                }
                QScrollBar &bar = *TextOf(box).verticalScrollBar();
                bool const isHigh = box.height() > screen.height() - 60;
                EXPECT_EQ(bar.isVisible(), isHigh);
                EXPECT_TRUE(isHigh || text.find('\n') == std::string::npos);
                Key(Qt::Key_PageDown);
                EXPECT_EQ(bar.value() > 0, bar.isVisible());
                if (bar.isVisible()) {
                    EXPECT_NE(TextOf(box).focusPolicy() & Qt::TabFocus, 0);
                }
                test::Shot(box, shots[&text - texts]);
                Key(Qt::Key_Escape);
            },
            text);
    }
}

TEST(XMessageBox, TheStopSignOnTopOfAllIsThePlatformsBox) {
    struct Case {
        unsigned type;
        Qt::Key key;
        int answer;
    };
    for (Case const &c :
         {Case{MB_YESNO | MB_DEFBUTTON2 | MB_DONTASKAGAIN, Qt::Key_Return, 7}, Case{MB_YESNOCANCEL, Qt::Key_Escape, 2},
          Case{MB_FILEEXISTS, Qt::Key_Escape, 2}, Case{MB_CONTINUEABORT, Qt::Key_Return, 1}})
        EXPECT_EQ(Ask(c.type | MB_ICONHAND | MB_SYSTEMMODAL,
                      [&c](QWidget &box) {
                          auto *const plain = qobject_cast<QMessageBox *>(&box);
                          ASSERT_NE(plain, nullptr);
                          EXPECT_EQ(plain->textFormat(), Qt::PlainText);
                          EXPECT_EQ(plain->checkBox(), nullptr);
                          if (c.key == Qt::Key_Return)
                              test::Shot(box, "box-platform");
                          Key(c.key);
                      }),
                  c.answer);
    EXPECT_EQ(Ask(MB_YESNO | MB_ICONQUESTION | MB_SYSTEMMODAL,
                  [](QWidget &box) {
                      EXPECT_EQ(qobject_cast<QMessageBox *>(&box), nullptr);
                      EXPECT_TRUE(box.windowFlags() & Qt::WindowStaysOnTopHint);
                      Key(Qt::Key_Y);
                  }),
              6);
}

TEST(XMessageBox, WithoutMemoryItSaysSoAndIsCancelled) {
    std::pmr::set_default_resource(std::pmr::null_memory_resource());
    EXPECT_EQ(Ask(MB_YESNO,
                  [](QWidget &box) {
                      std::pmr::set_default_resource(nullptr);
                      EXPECT_EQ(box.windowTitle(), "Allocation Failure");
                      auto const *const plain = qobject_cast<QMessageBox *>(&box);
                      ASSERT_NE(plain, nullptr);
                      EXPECT_EQ(plain->text(), "Memory allocation for dialog template failed.");
                      Key(Qt::Key_Return);
                  }),
              2);
    std::pmr::set_default_resource(nullptr);
}

TEST(XMessageBox, ABoxInABoxAndADyingParentDoNoHarm) {
    EXPECT_EQ(Ask(MB_YESNOCANCEL | MB_DONTASKAGAIN,
                  [](QWidget &outer) {
                      EXPECT_EQ(AnswerTo(MB_CONTINUEABORT, {10}), 10);
                      EXPECT_TRUE(outer.isVisible());
                      test::Click(GetDlgItem(outer, kCheck));
                      test::Click(GetDlgItem(outer, 7));
                  }),
              7 + kChecked);
    auto *const parent = new QWidget;
    parent->show();
    auto const done = test::OnNextDialog([&](QWidget &) { delete parent; });
    EXPECT_EQ(XMessageBox(parent, nullptr, nullptr, MB_YESNO), 2);
    EXPECT_TRUE(*done);
}

} // namespace
} // namespace zelvar
