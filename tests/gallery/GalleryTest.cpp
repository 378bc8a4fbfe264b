#include "zelvar/gallery/Gallery.h"

#include "support/GuiTest.h"
#include "zelvar/controls/HyperLink.h"

#include <QtGui/QAccessible>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMenu>
#include <QtWidgets/QStackedWidget>

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

TEST_P(GalleryPage, IsPaintedAndNothingOfItIsCut) {
    QImage const picture = Shown().grab().toImage();
    std::set<QRgb> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, y));
    EXPECT_GT(colors.size(), 8U);
    for (QLabel const *label : Shown().findChildren<QLabel *>())
        if (label->isVisible() && !label->wordWrap() && !label->text().isEmpty()) {
            EXPECT_GE(label->width(), label->minimumSizeHint().width()) << label->text().toStdString();
        }
    test::Shot(m_gallery, QStringLiteral("gallery-%1").arg(QLatin1String(GetParam().name)));
}

TEST_P(GalleryPage, IsReachedByTheKeyboardAndEachControlHasAName) {
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
    QWidget *const list = m_gallery.findChild<QListWidget *>();
    list->setFocus();
    // Twice round at most: a control may keep the key for its parts.
    qsizetype const most = 2 * m_gallery.findChildren<QWidget *>().size() + 2;
    for (qsizetype step = 0; step < most && !missed.empty(); ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        missed.erase(QApplication::focusWidget());
    }
    for (QWidget const *widget : missed)
        ADD_FAILURE() << widget->metaObject()->className() << " is not reached";
}

/// Closes what opens over a page: dialogs and menus, by a button where they cannot be cancelled.
class Closer : public QObject {
public:
    Closer() { qApp->installEventFilter(this); }
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *const window = qobject_cast<QWidget *>(watched);
        if (event->type() == QEvent::Show && window != nullptr && (window->isModal() || qobject_cast<QMenu *>(window)))
            QMetaObject::invokeMethod(
                window, [window] { Close(*window); }, Qt::QueuedConnection);
        return false;
    }

private:
    static void Close(QWidget &window) {
        auto const *const dialog = qobject_cast<QDialog *>(&window);
        if (!window.close() && dialog != nullptr && dialog->isVisible())
            dialog->findChild<QPushButton *>()->click();
    }
};

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

TEST(Gallery, NamesOfPagesAreUnlike) {
    std::set<DString> names;
    for (Page const &page : Pages())
        EXPECT_TRUE(names.insert(page.name).second) << page.name;
}

} // namespace
} // namespace zelvar::gallery
