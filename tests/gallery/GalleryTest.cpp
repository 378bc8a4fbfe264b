#include "zelvar/gallery/Gallery.h"

#include "support/GuiTest.h"

#include <QtGui/QAccessible>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QStackedWidget>

#include <gtest/gtest.h>

#include <set>

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
