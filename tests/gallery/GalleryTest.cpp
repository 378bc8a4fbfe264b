#include "zelvar/gallery/Gallery.h"

#include "support/GuiTest.h"
#include "support/RealDrivers.h"
#include "zelvar/controls/HyperLink.h"
#include "zelvar/platform/ui/Language.h"

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>
#include <QtGui/QAccessible>
#include <QtGui/QPainter>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QToolButton>

#include <random>

namespace zelvar::gallery {
namespace {

DString PageTitle(testing::TestParamInfo<Page> const &info) {
    DString name = info.param.name;
    std::erase(name, '-');
    return name;
}

class GalleryPage : public testing::TestWithParam<Page> {
protected:
    void SetUp() override {
        test::UseRealDrivers(); // for pages that read files
        ASSERT_TRUE(m_gallery.ShowPage(GetParam().name));
        m_gallery.show();
        m_gallery.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_gallery));
    }
    QWidget &Shown() { return *m_gallery.findChild<QStackedWidget *>()->currentWidget(); }

    Gallery m_gallery;
};

/// What takes the focus by itself, parts of a compound control left to it.
bool IsReachable(QWidget const &widget) {
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0 &&
           widget.focusProxy() == nullptr;
}

/// Closes what opens over a page: dialogs and menus, by a button where they cannot be cancelled. Before that it looks.
class Closer : public QObject {
public:
    explicit Closer(std::function<void(QWidget const &)> look = {}) : m_look(std::move(look)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *const window = qobject_cast<QWidget *>(watched);
        if (event->type() == QEvent::Show && window != nullptr && (window->isModal() || qobject_cast<QMenu *>(window)))
            QMetaObject::invokeMethod(
                window,
                [this, window] {
                    if (m_look)
                        m_look(*window);
                    Close(*window);
                },
                Qt::QueuedConnection);
        return false;
    }

private:
    static void Close(QWidget &window) {
        auto const *const dialog = qobject_cast<QDialog *>(&window);
        if (!window.close() && dialog != nullptr && dialog->isVisible())
            dialog->findChild<QPushButton *>()->click();
    }

    std::function<void(QWidget const &)> m_look;
};

TEST_P(GalleryPage, IsPainted) {
    QImage const picture = Shown().grab().toImage();
    std::set<QRgb> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, y));
    EXPECT_GT(colors.size(), 8U);
    for (QWidget const *const widget : Shown().findChildren<QWidget *>()) {
        auto const *const button = qobject_cast<QAbstractButton const *>(widget);
        QString const name = button != nullptr && !button->text().isEmpty() ? button->text() : widget->accessibleName();
        EXPECT_TRUE(qobject_cast<QToolButton const *>(button) || name.isEmpty() ||
                    !widget->parentWidget()->isEnabled() || widget->isEnabled() != name.startsWith(u"Disabled"))
            << name.toStdString();
    }
    test::Shot(m_gallery, QStringLiteral("gallery-%1").arg(QLatin1String(GetParam().name)));
}

/// What pages say while Space presses each button that Tab leads to, and Down goes on in each other control. One of the
/// page's own buttons that changes what is shown, and a switch that changes it back too, is there as "[Grid]".
std::map<std::string, std::string> const kTranscripts = {
    {"plot", "Nothing is selected; [Lines] [Grid] [A tick at every point] "},
    {"histogram", "Nothing is selected; [Automatic scale] [Counts] [All labels] "},
    {"buttons",
     "Adds the folder to the favorites; Picture above the text; With folders below: down; Has a frame "
     "under the mouse; Before; Center; Behind; Run the analysis; Stop; Hover; Stays down: down; Picture clicked; "},
    {"combos", "Chosen: Nearest neighbour; Chosen: Near infrared; [Enabled] "},
    {"fields", "Gain: 2.3999999999999999; Upper limit, may be empty: -1; Opacity: 74 %; Magnification: 0.912; "
               "Magnification: 0.8318; Depth, downwards: -750 m; Depth, downwards: -1000 m; Upright: 3; "},
    {"gui-tools", "202 of 220 pixels; 202 of 215 pixels; [Center this window] Sum of 1/n: 18.305; "},
    {"table", "64 rows read so far; [Read all rows] 5000 rows, the table is read through; [Largest area first] [By "
              "class] [Enabled] "},
    {"list", "1 of 9 samples are selected; [Groups] [Enabled] [Fit columns] [Add a sample] "},
    {"virtual-list", "1 row is selected; [To the middle] [To the end] 1000000 rows are selected; [Enabled] "},
    {"plain-list", "Columns came as wide as their captions; [Add a step] [Headings] [Enabled] "},
    {"tree", "Selected: Lymphocyte; [Rename] Renamed to Lymphocyte; [Find \"Stroma\"] Selected: Stroma; [Enabled] "},
    {"cursor-tree", "Rows and wells, made by cursors; 19 items, the last one is C4; [Next] Selected: A2; [Add "
                    "behind] [Sort] [Delete] [Enabled] "},
    {"prop-list", "F2 or Enter begins to edit, Escape gives up, Tab goes on; [Alphabetic] [Enabled] [Reset all] All "
                  "values are the original ones; "},
    {"groups", "[Options unfolded] Unfolded; "},
    {"tabs", "Shown: Image; [Second tab] [Enabled] "},
    {"flex-list",
     "Headings sort; a double-click edits a name or a wavelength; [Edit the first cell] Row 0: 461; Row 2: "
     "GFP; Row 3: 610; Row 4: 670; [Tinted] [Enabled] "},
    {"drawing", "Samples from 400 to 1720, three standard deviations of them spread over 0 to 255; "},
    {"message-box", "Nothing was asked yet; Answer 6: Yes; "},
    {"node-selector", "Nothing was picked yet; Cancelled; "},
    {"image-list", "Drawn 24 pixels wide; the indexes are the same; [Enabled] "},
};

TEST_P(GalleryPage, IsReachedByTheKeyboardSaysWhatThatDoesAndEachControlHasAName) {
    std::set<QWidget const *> missed;
    for (QWidget const *widget : Shown().findChildren<QWidget *>())
        if (IsReachable(*widget))
            missed.insert(widget);
    if (IsReachable(Shown()))
        missed.insert(&Shown());
    EXPECT_FALSE(missed.empty());
    for (QWidget const *widget : missed) {
        QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(const_cast<QWidget *>(widget));
        ASSERT_NE(interface, nullptr);
        EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty())
            << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    }
    Closer const closer;
    QLabel const *const said = Shown().findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    auto const look = [&] { // at all but what is said and what has the focus
        QCoreApplication::processEvents();
        QImage image = test::PictureOf(Shown());
        QPainter painter(&image);
        for (QWidget const *const left : std::initializer_list<QWidget const *>{said, QApplication::focusWidget()})
            painter.fillRect(QRect(left->mapTo(&Shown(), QPoint()), left->size()), Qt::black);
        return image;
    };
    auto const expected = kTranscripts.find(GetParam().name);
    std::string told;
    QString last;
    std::set<QWidget const *> pressed;
    m_gallery.findChild<QListWidget *>()->setFocus();
    // Twice round at most: a control may keep the key for its parts.
    qsizetype const most = 2 * m_gallery.findChildren<QWidget *>().size() + 2;
    for (qsizetype step = 0; step < most && !missed.empty(); ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget *const focus = QApplication::focusWidget();
        ASSERT_NE(focus, nullptr);
        missed.erase(focus);
        if (expected == kTranscripts.end() || !Shown().isAncestorOf(focus) || !pressed.insert(focus).second)
            continue;
        auto const *const button = qobject_cast<QAbstractButton *>(focus);
        QImage const before = look();
        QTest::keyClick(focus, button != nullptr ? Qt::Key_Space : Qt::Key_Down);
        bool isSeen = button != nullptr && button->parentWidget() == &Shown() && look() != before;
        if (isSeen && button->isCheckable()) {
            QTest::keyClick(focus, Qt::Key_Space);
            isSeen = look() == before;
        }
        told += isSeen ? "[" + button->text().remove(u'&').toStdString() + "] " : "";
        if (std::exchange(last, said->text()) != said->text())
            told += said->text().toStdString() + "; ";
    }
    EXPECT_TRUE(expected == kTranscripts.end() || told == expected->second) << told;
    for (QWidget const *widget : missed)
        ADD_FAILURE() << widget->metaObject()->className() << " is not reached";
}

TEST_P(GalleryPage, ComesToRestWhateverIsPressedDraggedTypedAndSized) {
    Closer const closer;
    HyperLink::SetOpener([](QUrl const &) { return true; });
    for (unsigned const seed : {1U, 2U, 3U}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        auto const below = [&random](int limit) { return static_cast<int>(random() % unsigned(std::max(1, limit))); };
        for (int step = 0; step < 100; ++step) {
            QList<QWidget *> reachable = Shown().findChildren<QWidget *>();
            reachable.removeIf([](QWidget const *widget) { return !widget->isVisible() || !widget->isEnabled(); });
            QPointer<QWidget> const widget = reachable.isEmpty() ? &Shown() : reachable[below(int(reachable.size()))];
            auto const place = [&] { return QPoint(below(widget->width()), below(widget->height())); };
            constexpr Qt::Key keys[] = {Qt::Key_Tab,  Qt::Key_Return, Qt::Key_Escape, Qt::Key_Left, Qt::Key_Right,
                                        Qt::Key_Up,   Qt::Key_Down,   Qt::Key_F2,     Qt::Key_End,  Qt::Key_Delete,
                                        Qt::Key_Home, Qt::Key_PageUp, Qt::Key_Space,  Qt::Key_F4,   Qt::Key_5};
            switch (below(4)) {
            case 0:
                m_gallery.resize(m_gallery.minimumSizeHint() + QSize(below(700), below(500)));
                break;
            case 1:
                QTest::mouseClick(widget, Qt::LeftButton, {}, place());
                break;
            case 2:
                QTest::mousePress(widget, Qt::LeftButton, {}, place());
                for (int moves = 0; moves < 3 && !widget.isNull(); ++moves)
                    QTest::mouseMove(widget, place() * 3 - QPoint(widget->width(), widget->height()));
                if (!widget.isNull())
                    QTest::mouseRelease(widget, Qt::LeftButton, {}, place());
                break;
            default:
                if (QWidget *const focus = QApplication::focusWidget())
                    QTest::keyClick(focus, keys[below(std::size(keys))]);
            }
            QCoreApplication::processEvents(); // which does not end while bars come and go
        }
        EXPECT_TRUE(m_gallery.isVisible());
    }
    HyperLink::SetOpener({});
}

/// What is not in the user's language, and why.
constexpr std::pair<char const *, char const *> kUntranslated[] = {
    {R"(^[^\p{L}]*$)", "numbers and signs"},
    {R"(^(/|https?:|javascript:))", "places"},
    {R"(\.(tif|zip|csv))", "names of files"},
    {R"(^(DAPI|GFP|Cy5|mCherry))", "names of dyes"},
    {R"(^(Nucleus|Area .*|Roundness|Class|Remark)$)", "columns of a file"},
    {R"(^[-\d.]* ?(m|px)$)", "values with units"},
    {R"(^⟦File Syst)", "the root, with its path"},
    {R"(^⟦Show ~ ⟧|⟧ \(⟦(Ctrl|Shift))", "the toolkit's own pieces"},
    {R"(^(Nuclei|Membranes|Background|Opened|Segmented|Measured)$)", "sample data"},
};

/// Each text is translated as a whole, and those that are not cut by design have room.
void CheckText(QWidget const &widget, QString const &text, int room = INT_MAX) {
    for (auto const &[pattern, why] : kUntranslated)
        if (text.contains(QRegularExpression(pattern)))
            return;
    SCOPED_TRACE(testing::Message() << text.toStdString() << " of a " << widget.metaObject()->className());
    qsizetype end = 0; // of the first text, values in brackets of their own included
    for (int depth = 0; end < text.size() && (depth > 0 || end == 0); ++end)
        depth += text[end] == u'⟦' ? 1 : text[end] == u'⟧' ? -1 : 0;
    EXPECT_TRUE(text.startsWith(u'⟦') && text.endsWith(u'⟧') && end == text.size());
    EXPECT_LE(widget.fontMetrics().size(Qt::TextShowMnemonic, text).width(), room);
}

/// Has its text or its entry to itself.
bool IsText(QWidget const &widget) {
    return widget.isVisible() && qobject_cast<QToolButton const *>(&widget) == nullptr &&
           (qobject_cast<QLabel const *>(&widget) || qobject_cast<QAbstractButton const *>(&widget) ||
            qobject_cast<QLineEdit const *>(&widget) || qobject_cast<QComboBox const *>(&widget));
}

void CheckTexts(QWidget const &window) {
    CheckText(window, window.isWindow() ? window.windowTitle() : QString());
    for (QWidget const *const widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisible())
            continue;
        for (QWidget const *const other :
             widget->parentWidget()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
            EXPECT_FALSE(IsText(*widget) && IsText(*other) && other != widget &&
                         other->geometry().intersects(widget->geometry()))
                << widget->accessibleName().toStdString() << " over " << other->accessibleName().toStdString();
        CheckText(*widget, widget->toolTip());
        CheckText(*widget, widget->accessibleName());
        for (QAction const *const action : widget->actions())
            CheckText(*widget, action->text());
        if (auto const *const label = qobject_cast<QLabel const *>(widget))
            CheckText(*widget, label->text(), label->wordWrap() ? INT_MAX : label->contentsRect().width());
        else if (auto const *const tool = qobject_cast<QToolButton const *>(widget))
            CheckText(*widget, tool->text(),
                      tool->toolButtonStyle() == Qt::ToolButtonIconOnly ? INT_MAX : tool->width());
        else if (auto const *const button = qobject_cast<QAbstractButton const *>(widget))
            CheckText(*widget, button->text(), button->width());
        else if (auto const *const group = qobject_cast<QGroupBox const *>(widget))
            CheckText(*widget, group->title(), group->width());
        else if (auto const *const edit = qobject_cast<QLineEdit const *>(widget))
            CheckText(*widget, edit->placeholderText(), edit->width());
        else if (auto const *const tabs = qobject_cast<QTabBar const *>(widget))
            for (int tab = 0; tab < tabs->count(); ++tab)
                CheckText(*widget, tabs->tabText(tab));
        else if (auto const *const heads = qobject_cast<QHeaderView const *>(widget))
            for (int head = 0; heads->model() != nullptr && head < heads->count(); ++head)
                CheckText(*widget, heads->model()->headerData(head, heads->orientation()).toString());
    }
}

/// A page in the pseudo-language, in a folder whose path has no names.
struct Pseudo {
    Pseudo() {
        QDir::setCurrent(QDir::rootPath());
        UseLanguage("x-pseudo");
    }
    ~Pseudo() {
        UseLanguage("en");
        QDir::setCurrent(m_before);
    }

private:
    QString m_before = QDir::currentPath();
};
class PseudoPage : Pseudo, public GalleryPage {};

TEST_P(PseudoPage, IsTranslatedAndHasRoomWithAllThatOpensOverIt) {
    int looked = 0;
    int expected = 0;
    Closer const closer([&looked](QWidget const &window) {
        CheckTexts(window);
        ++looked;
    });
    CheckTexts(Shown());
    auto *const sets = DString(GetParam().name) == "message-box" ? Shown().findChild<QComboBox *>() : nullptr;
    for (QAbstractButton *const button : Shown().findChildren<QAbstractButton *>())
        for (int set = 0; set < (sets == nullptr ? 1 : sets->count()); ++set) {
            if (sets != nullptr)
                sets->setCurrentIndex(set);
            expected += button->text().contains("...") ? 1 : 0;
            if (button->isVisible() && button->isEnabled())
                test::Click(button);
        }
    EXPECT_GE(looked, expected);
    QCoreApplication::processEvents(); // what was switched is laid out
    CheckTexts(Shown());               // and what it says now
    test::Shot(m_gallery, QStringLiteral("pseudo-%1").arg(QLatin1String(GetParam().name)));
}

INSTANTIATE_TEST_SUITE_P(All, PseudoPage, testing::ValuesIn(Pages()), PageTitle);
INSTANTIATE_TEST_SUITE_P(All, GalleryPage, testing::ValuesIn(Pages()), PageTitle);

TEST(Gallery, TheSearchLooksIntoTitlesAndClassesAndComesBack) {
    Gallery gallery;
    gallery.show();
    auto &search = *gallery.findChild<QLineEdit *>();
    auto &list = *gallery.findChild<QListWidget *>();
    auto const shown = [&] {
        int count = 0;
        for (int row = 0; row < list.count(); ++row)
            count += list.item(row)->isHidden() ? 0 : 1;
        return count;
    };
    QTest::keyClicks(&search, "tmtclistctrl");
    EXPECT_EQ(shown(), 1);
    EXPECT_EQ(list.currentItem()->text(), "Thematic list"); // the chosen page is one of those found
    QTest::keyClicks(&search, "x");
    EXPECT_EQ(shown(), 0);
    EXPECT_EQ(list.currentItem()->text(), "Thematic list");
    search.clear();
    EXPECT_EQ(shown(), list.count());
    EXPECT_FALSE(gallery.ShowPage("none"));
}

} // namespace
} // namespace zelvar::gallery
