#include "zelvar/opends/OptionPage.h"

#include "support/GuiTest.h"
#include "support/RealDrivers.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/DriverOptions.h"
#include "zelvar/data/FormatPlugin.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QScrollArea>

namespace zelvar::test {
namespace {

using Kind = DriverOption::Kind;

std::vector<DriverOption> const kOptions{{.name = "SWITCH", .kind = Kind::Switch, .usual = "NO"},
                                         {.name = "LEVEL", .kind = Kind::WholeNumber, .usual = "6", .most = 9},
                                         {.name = "FLAVOR", .kind = Kind::Choice, .choices = {"A", "B"}}};

TEST(OptionPage, TellsEachChangeOnceAndIsAsUsualAgainByItsButton) {
    OptionPage page("Driver", kOptions, nullptr);
    int told = 0;
    QObject::connect(&page, &OptionPage::Changed, &page, [&] { ++told; });
    page.SetValues({{"LEVEL", "7"}, {"FLAVOR", "b"}});
    EXPECT_EQ(page.Text(), "LEVEL=7&FLAVOR=B");
    EXPECT_EQ(told, 0);
    page.show();
    page.findChild<QCheckBox *>()->click();
    EXPECT_EQ(page.Text(), "SWITCH=YES&LEVEL=7&FLAVOR=B");
    auto *const level = page.findChild<QLineEdit *>("LEVEL");
    QColor const usual = level->palette().color(QPalette::Text);
    level->setText("10");
    EXPECT_NE(level->palette().color(QPalette::Text), usual);
    EXPECT_EQ(level->toolTip(), "9 or less");
    EXPECT_EQ(page.Text(), "SWITCH=YES&FLAVOR=B") << "no value of the option";
    level->setText("8");
    EXPECT_EQ(level->palette().color(QPalette::Text), usual);
    QTest::keyClick(level, Qt::Key_Return);
    EXPECT_EQ(told, 2);
    QTest::keyClick(level, Qt::Key_Return);
    EXPECT_EQ(told, 2) << "nothing new";
    page.findChild<QPushButton *>()->click();
    EXPECT_EQ(page.Text(), "");
    EXPECT_EQ(told, 3);
    EXPECT_EQ(level->text(), "6");
}

TEST(OptionPages, HaveAControlForEveryOptionOfEveryDriver) {
    UseRealDrivers();
    int lists = 0;
    for (DIOPlugin const *plugin : DIOPluginMngr::Instance()->Plugins()) {
        auto const all = DriverOptions(plugin->GetId());
        for (std::vector<DriverOption> const &options : {all->open, all->create}) {
            if (options.empty())
                continue;
            ++lists;
            OptionPage page(plugin->GetId(), options, nullptr);
            EXPECT_EQ(page.Values().size(), options.size()) << plugin->GetId();
            for (DriverOption const &option : options) {
                auto *const control = page.findChild<QWidget *>(QString::fromStdString(option.name));
                ASSERT_NE(control, nullptr) << plugin->GetId() << option.name;
                EXPECT_EQ(control->isEnabled(), !option.isBarred) << plugin->GetId() << option.name;
            }
            EXPECT_EQ(page.Text(), "") << plugin->GetId() << ": nothing is said that the driver does by itself";
        }
    }
    EXPECT_GT(lists, 80);
}

TEST(OptionPages, FitANarrowPane) {
    UseRealDrivers();
    for (char const *const driver : {"GTiff", "netCDF", "HDF5", "CSV", "GPKG", "PDF", "BAG", "AAIGrid"}) {
        QScrollArea area;
        area.setWidgetResizable(true);
        area.setWidget(new OptionPage(driver, DriverOptions(driver)->open, nullptr));
        area.resize(180, 420);
        area.show();
        EXPECT_TRUE(Eventually([&] { return area.widget()->minimumSizeHint().width() <= area.viewport()->width(); }))
            << driver << area.widget()->minimumSizeHint().width();
        Shot(area, (DString("OptionPage-") + driver).c_str());
    }
}

} // namespace
} // namespace zelvar::test
