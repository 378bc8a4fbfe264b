#include "support/Ink.h"
#include "support/OpenDialogHand.h"
#include "support/ScriptedDriver.h"
#include "zelvar/opends/CImgPreviewStatic.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/ImageExtraWnd.h"
#include "zelvar/opends/ImagePreviewWnd.h"

#include <QtWidgets/QRadioButton>
#include <QtWidgets/QTreeWidget>

#include <utime.h>

namespace zelvar {
namespace {

/// An item with a path and nothing else, and who wants to know when nobody holds it any more.
class PathItem : public DataSourceItem {
public:
    explicit PathItem(DString path, std::atomic<bool> *gone = nullptr) : m_path(std::move(path)), m_gone(gone) {}
    ~PathItem() override {
        if (m_gone != nullptr)
            *m_gone = true;
    }
    void SetName(DString const &) override {}
    DString GetName() const override { return m_path; }
    DString GetPath() const override { return m_path; }
    DataSourceItemItr *CreateIterator(ICancel *, char const *, char const *, int, DLGTemplate) override {
        return nullptr;
    }
    void DeleteIterator(DataSourceItemItr *) override {}
    RefItemPtr<DataSourceItem> GetParent() override { return nullptr; }
    RefItemPtr<DataSourceItem> Clone() override { return nullptr; }
    bool IsFolder() const override { return false; }
    DataSourceType GetDataSourceType() const override { return DST_FILE_SYSTEM; }

private:
    DString m_path;
    std::atomic<bool> *m_gone;
};

RefItemPtr<DataSourceItem> Item(DString path) { return {new PathItem(std::move(path))}; }

struct PropertyPane : testing::Test {
    ~PropertyPane() override {
        driver->openGate.Open();
        driver->readGate.Open();
    }
    /// Shows an image of the driver; its path.
    DString Show(test::ScriptedImage const &image, char const *format = "") {
        DString path = folder.Write("a.img", "x");
        driver->SetImage(path, image);
        Create();
        pane->ShowProps(Item(path), format);
        return path;
    }
    void Create(DLGTemplate purpose = DT_DATA) {
        pane = std::make_unique<DSPropertyWnd>();
        pane->Create({10, 20, 310, 270}, purpose, nullptr, 7);
        pane->SetCoordinator(&coordinator);
        pane->SetOptChangedMsg(WM_DS_OPTIONS_CHANGED);
        pane->show();
    }
    DString Shown(char const *name) const { return test::PropertyIn(*pane, name); }
    [[nodiscard]] bool Settles() const {
        return test::Eventually([&] { return !pane->IsReading() && pane->Preview()->GetMode() != 1; });
    }

    test::ScriptedDrivers drivers;
    test::TempFolder folder;
    test::Coordinator coordinator;
    test::ScriptedRasterDriver *driver = &test::ScriptedDrivers::AddRaster("SCRIPTED");
    std::unique_ptr<DSPropertyWnd> pane;
};

TEST_F(PropertyPane, AnImageShowsItsPropertiesAndAPictureOf1024Pixels) {
    DString const path = Show({.width = 1000, .height = 500, .sample = [](int, int, int) { return 9; }});
    ASSERT_TRUE(Settles());
    EXPECT_EQ(pane->Preview()->GetMode(), ImagePreviewWnd::ModeCanvas);
    EXPECT_EQ(pane->Preview()->GetCanvas().GetWidth(), 1024);
    EXPECT_EQ(pane->Preview()->GetCanvas().GetHeight(), 512);
    EXPECT_EQ(pane->Preview()->GetCanvas().GetPixel(5, 5), Rgb(9, 9, 9)) << "one channel is grey";
    EXPECT_EQ(pane->geometry(), QRect(10, 20, 300, 250));
    EXPECT_EQ(Shown("Image Width"), "1000");
    EXPECT_EQ(Shown("Number of Channels"), "1");
    EXPECT_EQ(Shown("Driver"), "SCRIPTED") << "the driver's own name where the file says nothing";
    EXPECT_EQ(Shown("Path"), path);
}

TEST_F(PropertyPane, TheSameItemAgainStartsNoSecondJob) {
    DString const path = Show({}, "F");
    ASSERT_TRUE(Settles());
    int const opens = driver->opens;
    pane->ShowProps(Item(path), "F");
    pane->ShowProps(Item(path), nullptr);
    EXPECT_FALSE(pane->IsReading());
    EXPECT_EQ(driver->opens, opens);
    pane->ShowProps(Item(path), "G");
    ASSERT_TRUE(Settles());
    EXPECT_GT(driver->opens, opens) << "another format is another job";
}

TEST_F(PropertyPane, ANewerItemReplacesTheOneBeingRead) {
    DString const quick = folder.Write("quick.img", "x");
    driver->SetImage(quick, {.width = 22});
    driver->openGate.Close();
    Show({.width = 11});
    driver->openGate.AwaitCaller();
    pane->ShowProps(Item(quick), "");
    driver->openGate.Open();
    EXPECT_TRUE(test::Eventually([&] { return Shown("Image Width") == "22"; }));
    ASSERT_TRUE(Settles());
    EXPECT_EQ(Shown("Path"), quick);
}

TEST_F(PropertyPane, WhatArrivesAfterClearIsDroppedAndTheSameItemIsShownAgain) {
    driver->openGate.Close();
    DString const path = Show({.width = 33}, "F");
    driver->openGate.AwaitCaller();
    pane->Clear();
    driver->openGate.Open();
    ASSERT_TRUE(test::Eventually([&] { return !pane->IsReading(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(Shown("Path"), "");
    EXPECT_EQ(pane->Preview()->GetMode(), ImagePreviewWnd::ModeNothing);
    for (int round = 0; round < 2; ++round) {
        pane->ShowProps(Item(path), "F");
        EXPECT_TRUE(test::Eventually([&] { return Shown("Image Width") == "33"; }));
        ASSERT_TRUE(Settles());
        EXPECT_EQ(pane->Preview()->GetMode(), ImagePreviewWnd::ModeCanvas);
        pane->Clear();
        EXPECT_EQ(Shown("Image Width"), "");
    }
}

/// Does not look at the stop signal while it opens.
struct DeafDriver : test::ScriptedRasterDriver {
    DeafDriver() : ScriptedRasterDriver("DEAF") {}
    void *OpenFile(BDIMoniker const &, StopSignal const *, DError *) override {
        deafGate.Pass();
        return nullptr;
    }
    test::Gate deafGate;
};

TEST_F(PropertyPane, APaneThatIsDestroyedLeavesADriverThatDoesNotListenBehind) {
    RDIDriverMngr::Instance()->Reset();
    DeafDriver &deaf = test::ScriptedDrivers::Add(std::make_unique<DeafDriver>());
    driver = &deaf;
    std::atomic<bool> gone{false};
    deaf.deafGate.Close();
    Create();
    pane->ShowProps({new PathItem(folder.Write("a.img", "x"), &gone)}, "");
    deaf.deafGate.AwaitCaller();
    pane.reset(); // would wait for ever
    EXPECT_FALSE(gone);
    deaf.deafGate.Open();
    EXPECT_TRUE(test::Eventually([&] { return gone.load(); }));
}

TEST_F(PropertyPane, TheTextBeforeAPictureStaysInTheMiddle) {
    ImagePreviewWnd preview;
    preview.Clear(ImagePreviewWnd::ModeWaiting);
    preview.show();
    for (QSize const size : {QSize(200, 60), QSize(140, 200)}) {
        preview.resize(size);
        QImage const picture = preview.grab().toImage();
        QRect const text = test::InkOf(picture, [](QColor const &color) { return color.lightness() < 128; }).place;
        ASSERT_GT(text.right(), text.left());
        EXPECT_NEAR(text.left(), picture.width() - 1 - text.right(), 6);
        EXPECT_NEAR(text.top(), picture.height() - 1 - text.bottom(), 8);
    }
    EXPECT_EQ(preview.accessibleDescription(), "Please wait...");
}

TEST_F(PropertyPane, AnOptionPageNarrowsToItsPaneInsteadOfScrollingSideways) {
    ImageExtraWnd page;
    page.Navigate(folder.Write("page.html",
                               "<h2>Options of the import of very large scenes</h2>"
                               "<p>Resolution of the levels: <input name=level size=30 value=1> "
                               "<select name=level.op><option>=<option>greater than or equal to what is given</select>"
                               "<table><tr><td>Number of the first channel<td><input name=first size=20>"
                               "<tr><td>Encoding<td><select name=code><option>as the file says it is</select></table>"
                               "<p><input type=button id=Apply value=Apply>"));
    page.show();
    auto const *const level = page.findChild<QLineEdit *>("level");
    ASSERT_NE(level, nullptr);
    auto const chars = [&page](int count) { return page.fontMetrics().averageCharWidth() * count; };
    page.resize(chars(130), 400);
    QCoreApplication::processEvents();
    int const wide = level->width();
    EXPECT_LT(level->mapTo(&page, QPoint()).y(), 80);
    auto const *const operation = page.findChild<QComboBox *>("level.op");
    EXPECT_GT(operation->mapTo(&page, QPoint()).x(), level->mapTo(&page, QPoint()).x() + wide) << "in one line";
    test::Shot(page, "ImageExtraWnd-wide");
    for (int const width : {45, 33}) {
        page.resize(chars(width), 400);
        QCoreApplication::processEvents();
        test::Shot(page, QString("ImageExtraWnd-%1").arg(width));
        EXPECT_EQ(page.horizontalScrollBar()->maximum(), 0) << width;
        QWidget const &content = *page.widget();
        std::vector<QRect> places;
        for (QWidget const *part : content.findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            EXPECT_LE(part->geometry().right(), content.width()) << width;
            if (part->hasHeightForWidth()) {
                EXPECT_GE(part->height(), part->heightForWidth(part->width())) << width << ": its text is cut";
            }
            for (QRect const &other : places)
                EXPECT_FALSE(other.intersects(part->geometry())) << width << ": they overlap";
            places.push_back(part->geometry());
        }
    }
    EXPECT_GT(operation->y(), level->y()) << "wrapped";
    EXPECT_LE(level->width(), wide);
}

TEST_F(PropertyPane, AnOptionPageHasTheControlsThatItsTagsSay) {
    ImageExtraWnd page;
    page.SetOptionsName("{Options}");
    page.Navigate(folder.Write("page.html",
                               "<h2>Head</h2>Level <input name=level value=7 size=3><hr><input name=word type=password "
                               "value=pw><input name=h type=hidden value=1><br><input name=on type=checkbox checked>"
                               "<input name=off type=checkbox disabled><p><input name=pick type=radio checked><input "
                               "name=pick type=radio><input name=other type=radio><p><textarea name=note rows=5>one"
                               "</textarea><p><select name=code><option value=a>A<option value=b selected>B</select>"));
    page.ApplyOptions();
    EXPECT_EQ(page.GetOptionText(), "code=b&level=7");
    auto const part = [&page](char const *name) { return page.findChild<QWidget *>(name); };
    QString looks;
    test::Rows<char const *, char const *> const parts = {
        {"level", "displayText"}, {"level", "accessibleName"}, {"word", "text"},       {"on", "checked"},
        {"on", "enabled"},        {"off", "checked"},          {"off", "enabled"},     {"pick", "checked"},
        {"note", "plainText"},    {"note", "tabChangesFocus"}, {"code", "currentText"}};
    for (auto const &[name, property] : parts) {
        ASSERT_NE(part(name), nullptr) << name;
        looks += part(name)->property(property).toString() + " ";
    }
    EXPECT_EQ(looks, "7 level pw true true false false true one true B ");
    EXPECT_TRUE(part("h") == nullptr && part("word")->property("displayText") != "pw");
    EXPECT_LT(part("level")->maximumWidth(), part("word")->maximumWidth());
    EXPECT_EQ(part("note")->height() / part("note")->fontMetrics().lineSpacing(), 5);
    auto const radios = page.findChildren<QRadioButton *>();
    for (int const pressed : {1, 2})
        radios[pressed]->click();
    EXPECT_TRUE(!radios[0]->isChecked() && radios[1]->isChecked() && radios[2]->isChecked());
    auto const labels = page.findChildren<QLabel *>();
    ASSERT_EQ(labels.size(), 2);
    EXPECT_TRUE(labels[0]->font().bold() && !labels[1]->font().bold() && labels[1]->buddy() == part("level"));
    EXPECT_TRUE(std::ranges::any_of(page.findChildren<QFrame *>(),
                                    [](QFrame const *frame) { return frame->frameShape() == QFrame::HLine; }));
}

TEST_F(PropertyPane, WhatNoDriverOpensShowsTheFileAndNoPreview) {
    DString const path = folder.Write("plain.txt", "x");
    utimbuf const march{.actime = 0, .modtime = 1'709'450'000};
    ASSERT_EQ(utime(path.c_str(), &march), 0);
    Create();
    pane->ShowProps(Item(path), "");
    ASSERT_TRUE(test::Eventually([&] { return Shown("Path") == path; }));
    ASSERT_TRUE(Settles());
    EXPECT_EQ(pane->Preview()->GetMode(), ImagePreviewWnd::ModeNothing);
    EXPECT_EQ(Shown("Image Width"), "");
    EXPECT_THAT(Shown("Modified"), HasSubstr("Sunday, 03 March 2024"));
}

TEST_F(PropertyPane, DocumentsHaveOneTabWithTheFileAloneAndNoOptions) {
    Create(DT_PROJECT);
    EXPECT_EQ(pane->GetTabsNum(), 1);
    EXPECT_EQ(pane->Properties()->GetPropertyCount(), 1);
    DataSourceExtras::Item extras;
    pane->UpdateExtras(nullptr, &extras);
    EXPECT_EQ(pane->GetTabsNum(), 1);
    EXPECT_EQ(pane->GetOptionString(), "");
}

TEST_F(PropertyPane, AppliedOptionsReachTheCoordinatorOnceAndTheDriver) {
    DString const path = folder.Write("a.img", "x");
    driver->SetImage(path, {});
    DataSourceExtras::Item extras;
    extras.ItemTemplatePath = folder.Write("page.html", "<input name=level value=1><select name=level.op>"
                                                        "<option>=<option>&gt;</select>"
                                                        "<input type=button id=Apply value=Apply>");
    Create();
    pane->UpdateExtras(nullptr, &extras);
    ASSERT_EQ(pane->GetActiveTab(), 2);
    auto *edit = pane->Extra()->findChild<QLineEdit *>("level");
    auto *apply = pane->Extra()->findChild<QPushButton *>();
    ASSERT_TRUE(edit != nullptr && apply != nullptr);
    edit->setText("2");
    test::Click(apply);
    test::Click(apply);
    EXPECT_TRUE(test::Eventually([&] { return coordinator.told[WM_DS_OPTIONS_CHANGED] > 0; }));
    EXPECT_EQ(coordinator.told[WM_DS_OPTIONS_CHANGED], 1) << "the second click changed nothing";
    EXPECT_EQ(pane->GetOptionString(), "level=2&level.op==");
    pane->ShowProps(Item(path), "");
    ASSERT_TRUE(Settles());
    EXPECT_EQ(driver->opened.back(), path + "?level=2&level.op==");

    edit->setText("3");
    pane->UpdateExtras(nullptr, &extras);
    EXPECT_EQ(edit->text(), "3") << "what was typed stays while the format does";
    pane->SetActiveTab(0);
    pane->UpdateExtras(nullptr, &extras);
    EXPECT_EQ(pane->GetActiveTab(), 0) << "who went back to the preview stays there";
    pane->UpdateExtras(nullptr, nullptr);
    EXPECT_EQ(pane->GetOptionString(), "") << "no options without the tab";
}

TEST_F(PropertyPane, ThePictureIsFittedAndCentredInItsWindow) {
    ImagePreviewWnd preview;
    preview.resize(300, 300);
    preview.show();
    preview.GetCanvas().SetSize(1024, 512);
    preview.GetCanvas().SetPixel(0, 0, Rgb(255, 0, 0));
    preview.ShowCanvas();
    EXPECT_EQ(preview.PictureRect(), QRect(0, 75, 300, 150));
    EXPECT_EQ(preview.accessibleName() + ": " + preview.accessibleDescription(),
              "Preview: Picture of 1024 by 512 pixels");
    EXPECT_EQ(test::ColorAt(preview, {150, 74}), QColor(Qt::white));
    EXPECT_EQ(test::ColorAt(preview, {150, 80}), QColor(Qt::black));
    preview.resize(100, 400);
    EXPECT_EQ(preview.PictureRect(), QRect(0, 175, 100, 50)) << "fitted anew";
}

TEST_F(PropertyPane, AnImageFileIsShownOnTheColourOfDialogs) {
    driver->SetImage("/grey",
                     {.width = 10, .height = 5, .type = RDI_UInt8, .sample = [](int, int x, int) { return 20 * x; }});
    CImgPreviewStatic preview;
    preview.resize(42, 42);
    preview.show();
    auto const face = [&] { return preview.palette().color(QPalette::Window); };
    for (char const *const file : {"", "/missing", "/grey", static_cast<char const *>(nullptr)}) {
        preview.SetImgFile(file);
        EXPECT_EQ(test::ColorAt(preview, {21, 10}), face());
        EXPECT_EQ(test::ColorAt(preview, {1, 21}) == QColor(Qt::black), preview.GetImgFile() == "/grey");
        EXPECT_EQ(test::ColorAt(preview, {0, 21}), face()) << "a pixel around the picture";
    }
    preview.SetImgFile("/grey");
    test::DarkPalette const dark;
    EXPECT_EQ(test::ColorAt(preview, {21, 10}), face());
    EXPECT_EQ(driver->opens, driver->closes);
}

TEST_F(PropertyPane, NamesOfPropertiesAreWholeInANarrowPane) {
    Create();
    pane->SetActiveTab(1);
    pane->resize(156, 400);
    QCoreApplication::processEvents();
    QTreeWidget const &tree = pane->Properties()->Tree();
    QFontMetrics const metrics(tree.font());
    for (QTreeWidgetItemIterator it(const_cast<QTreeWidget *>(&tree), QTreeWidgetItemIterator::NoChildren);
         *it != nullptr; ++it) {
        QString const name = (*it)->text(0);
        QRect const place = tree.visualItemRect(*it);
        int const room = tree.columnWidth(0) - 2 * tree.indentation() - 6;
        QRect const broken = metrics.boundingRect(QRect(0, 0, room, 1000), Qt::TextWordWrap, name);
        EXPECT_LE(broken.height(), place.height()) << name.toStdString();
        EXPECT_LE(broken.width(), room) << name.toStdString();
    }
    test::Shot(*pane, "DSPropertyWnd-narrow");
}

} // namespace
} // namespace zelvar
