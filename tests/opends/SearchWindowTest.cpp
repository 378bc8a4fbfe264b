// The search of the open dialog, as users come by it: by mouse and keyboard, over the real drivers.
#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/ScriptedShellNamespace.h"
#include "support/Stopwatch.h"
#include "support/Told.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/opends/OpenFeatures.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/connections/ConnectionForm.h"
#include "zelvar/opends/search/FactsForm.h"
#include "zelvar/opends/search/SearchForm.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QClipboard>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenu>

#include <filesystem>

namespace zelvar::test {
namespace {

constexpr int kFolderColumn = 3;
constexpr char kHostile[] = "a: ? \" } %s\n\xFF";

struct SearchWindow : testing::Test {
    SearchWindow() {
        UseRealDrivers();
        m_formerCache = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_CACHE_HOME", cache.Path().c_str());
        WriteImage(folder / "near.tif", {.width = 20});
        WriteImage(folder / "other.tif", {.width = 30});
        for (char const *const name : {"sub/deep", "sub/near folder"})
            folder.Folder(name);
        WriteImage(folder / "sub/near wide.tif", {.width = 90});
        WriteImage(folder / "sub/deep/nearer.png", {.width = 90, .format = "PNG"});
        folder.Write("sub/deep/near.txt", "no image");
    }
    ~SearchWindow() override {
        EXPECT_THAT(told.Take(), IsEmpty());
        qputenv("XDG_CACHE_HOME", m_formerCache);
    }

    /// Begins in the folder, with its rows there.
    int Run(std::function<void()> const &act, unsigned features = kOpenAll, DLGTemplate purpose = DT_DATA) {
        DlgOpenDS::SetFeatures(features);
        dialog.reset(DlgOpenDS::CreateDialogObject({&all}, &all, purpose, "ImageFolders", nullptr));
        dialog->SetBDIFilter(BDINode_Raster);
        dialog->SetInitDir(folder.Path().c_str());
        return RunWhen(
            *dialog, [&] { return dialog->MainList() != nullptr && dialog->MainList()->GetNumRow() >= 2; }, act);
    }
    [[nodiscard]] DSListCtrl &List() const { return *dialog->MainList(); }
    [[nodiscard]] OpenSearch &Searching() const { return *dialog->Search(); }
    [[nodiscard]] SearchForm &Form() const { return *Searching().Form(); }
    [[nodiscard]] QString Line() const { return Form().Line()->Text(); }
    [[nodiscard]] std::vector<DString> Column(int col) const {
        std::vector<DString> texts;
        for (int row = 0; row < List().GetNumRow(); ++row)
            texts.push_back(platform::ToDString(List().ShownText(row, col)));
        return texts;
    }
    void Press(Qt::Key key, Qt::KeyboardModifiers keys = {}) const {
        QTest::keyClick(dialog->focusWidget(), key, keys);
    }
    void Type(QString const &text) const { QTest::keyClicks(dialog->focusWidget(), text); }
    bool Ends() const {
        return Eventually([&] { return !Searching().IsSearching(); });
    }
    /// With the keyboard alone.
    void SearchFor(QString const &name) const {
        Press(Qt::Key_F, Qt::ControlModifier);
        EXPECT_EQ(dialog->focusWidget(), Form().Name());
        Type(name);
        Press(Qt::Key_Return);
        EXPECT_TRUE(Ends());
    }
    void ClickRow(DString const &name) const {
        QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, PlaceOf(List(), name));
    }
    [[nodiscard]] std::vector<DString> Picked() const {
        std::vector<DString> texts;
        for (BDIMoniker const &moniker : dialog->GetSelectedNodePaths())
            texts.push_back(moniker.GetText());
        return texts;
    }
    QWidget *Field(char const *name) const { return Form().findChild<QWidget *>(name); }

    TempFolder folder;
    TempFolder cache;
    Told told;
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    DialogPtr dialog;

private:
    QByteArray m_formerCache;
};

TEST_F(SearchWindow, WhatIsFoundBelowThePlaceIsPickedAcrossFoldersWithTheKeyboardAlone) {
    EXPECT_EQ(
        Run([&] {
            EXPECT_EQ(Searching().Form(), nullptr);
            SearchFor("near");
            EXPECT_TRUE(Form().Name()->placeholderText().endsWith(
                " below " + QString::fromStdString(folder.Path().substr(folder.Path().rfind('/') + 1))));
            ASSERT_THAT(Column(0), ElementsAre("near.tif", "near wide.tif", "near folder", "near.txt", "nearer.png"))
                << "nearest first";
            EXPECT_THAT(Column(kFolderColumn), ElementsAre(".", "sub", "sub", "sub/deep", "sub/deep"));
            EXPECT_EQ(Line(), "5 found, 4 folders searched");
            List().Sort(kFolderColumn, true);
            Press(Qt::Key_Down); // to the results
            EXPECT_EQ(dialog->focusWidget(), &List());
            Press(Qt::Key_Down, Qt::ShiftModifier);
            Press(Qt::Key_Down, Qt::ShiftModifier);
            EXPECT_EQ(List().GetNumSlct(), 3);
            Press(Qt::Key_Return);
        }),
        QDialog::Accepted);
    EXPECT_THAT(Picked(), ElementsAre(folder / "near.tif", folder / "sub/near wide.tif"))
        << "without the folder, which can only be entered";
    EXPECT_EQ(DUserCnfg("DlgOpenDSSorting").ReadString("0", ""), "ASC:ASC:0:ASC") << "that of the listing";
}

TEST(Forms, HintsAreReadOnADarkGroundOfWhichTheDesktopSaysNothing) {
    SearchForm const search(nullptr);
    ConnectionForm const page(nullptr);
    DarkPalette const dark;
    QPalette odd = QApplication::palette();
    odd.setColor(QPalette::PlaceholderText, QColor(0, 0, 0, 128));
    QApplication::setPalette(odd);
    for (QLineEdit const *const edit : search.findChildren<QLineEdit *>() + page.findChildren<QLineEdit *>())
        EXPECT_GE(
            platform::Contrast(edit->palette().color(QPalette::PlaceholderText), edit->palette().color(QPalette::Base)),
            4.5);
}

TEST_F(SearchWindow, EscapeShowsTheFolderAsItWasAndAskedAgainTheSameIsFound) {
    for (int i = 0; i < 200; ++i)
        folder.Write(Format("file %03d.tif", i), "x");
    Run(
        [&] {
            ClickRow("file 150.tif");
            int const scrolled = List().verticalScrollBar()->value();
            EXPECT_GT(scrolled, 0);
            int const rows = List().GetNumRow();
            int const names = List().GetColumnWidth(0);
            SearchFor("near");
            EXPECT_EQ(List().GetNumRow(), 5);
            EXPECT_EQ(List().GetNumSlct(), 0);
            std::filesystem::remove((folder / "near.tif").c_str());
            Press(Qt::Key_F5);
            EXPECT_TRUE(Ends());
            EXPECT_EQ(List().GetNumRow(), 4);
            auto const *const selected = platform::GetDlgItem<platform::EllipsisLabel>(*dialog, kStatusId);
            ClickRow("nearer.png");
            EXPECT_TRUE(Eventually([&] { return selected->Text().endsWith("nearer.png"); }));
            Form().SetName("near.t");
            Press(Qt::Key_F5);
            EXPECT_TRUE(Ends());
            EXPECT_THAT(Column(0), ElementsAre("near.txt")) << "by what the fields say now";
            EXPECT_EQ(selected->Text(), "") << "nothing is selected";
            Press(Qt::Key_Escape);
            EXPECT_TRUE(dialog->isVisible());
            EXPECT_TRUE(Form().isHidden());
            EXPECT_EQ(List().GetNumRow(), rows);
            EXPECT_EQ(List().GetColumnCount(), kFolderColumn);
            EXPECT_EQ(List().GetColumnWidth(0), names);
            EXPECT_EQ(List().verticalScrollBar()->value(), scrolled);
            EXPECT_TRUE(List().GetSlct(RowOf(List(), "file 150.tif")));
            Press(Qt::Key_Escape);
            EXPECT_FALSE(dialog->isVisible());
        },
        kOpenAll & ~kOpenSeries);
}

TEST_F(SearchWindow, AFolderThatWasFoundIsEnteredByMouseAndByReturnAndThePlaceOfAFileIsShown) {
    for (bool const byMouse : {true, false}) {
        Run([&] {
            Click(platform::GetDlgItem<QPushButton>(*dialog, kSearchId));
            Type("near folder");
            Click(Form().SearchButton());
            EXPECT_TRUE(Ends());
            ASSERT_THAT(Column(0), ElementsAre("near folder"));
            ClickRow("near folder");
            if (byMouse)
                QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, PlaceOf(List(), "near folder"));
            else
                Press(Qt::Key_Return);
            EXPECT_TRUE(Eventually([&] { return !List().IsShowingResults(); }));
            EXPECT_TRUE(dialog->isVisible());
            EXPECT_EQ(List().GetNumRow(), 0) << "the folder is empty";
            EXPECT_TRUE(Form().isHidden());
        });
    }
    Run([&] {
        SearchFor("nearer");
        ClickRow("nearer.png");
        QStringList offered;
        MenuHand const hand([&](QMenu &menu) {
            for (QAction const *const action : menu.actions())
                offered << action->text();
            QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(menu.actions().front()).center());
        });
        List().ContextMenu(List().mapToGlobal(QPoint(5, 5)));
        EXPECT_EQ(offered, QStringList({"Open Containing Folder", "Add to Favorites", "Copy Moniker"}));
        EXPECT_FALSE(List().IsShowingResults());
        EXPECT_THAT(Column(0), testing::Contains("near.txt"));
        EXPECT_TRUE(List().GetSlct(RowOf(List(), "nearer.png")));
    });
}

TEST_F(SearchWindow, FactsAreAskedForAndWhatIsWrongWithThemIsSaid) {
    Run([&] {
        Press(Qt::Key_F, Qt::ControlModifier);
        Click(Form().FactsButton());
        auto *const width = static_cast<QLineEdit *>(Field("width"));
        Click(width);
        Type("wide");
        Press(Qt::Key_Return);
        EXPECT_FALSE(List().IsShowingResults());
        EXPECT_EQ(Line(), "\"wide\" is no whole number");
        EXPECT_EQ(dialog->focusWidget(), width);
        width->setText("50");
        Press(Qt::Key_Return);
        EXPECT_TRUE(Ends());
        EXPECT_THAT(Column(0), testing::UnorderedElementsAre("near wide.tif", "nearer.png"));
        EXPECT_TRUE(Line().contains("looked into")) << Line().toStdString();
        Press(Qt::Key_Down); // from a fact as from the name
        EXPECT_EQ(dialog->focusWidget(), &List());
        Click(width);
        static_cast<QLineEdit *>(Field("format"))->setText("tiff");
        Choose(*static_cast<QComboBox *>(Field("kind")), 1);
        Press(Qt::Key_Return);
        EXPECT_TRUE(Ends());
        EXPECT_THAT(Column(0), ElementsAre("near wide.tif"));
        Shot(*dialog, "DlgOpenDS-search-facts");
        EXPECT_TRUE(std::filesystem::exists((cache / "zelvar/facts.db").c_str())) << "it is known the next time";
    });
}

TEST_F(SearchWindow, ResultsAreSortedByEachColumnWithWhatIsSelected) {
    Run([&] {
        std::vector<DString> const listed = Column(0);
        SearchFor("near");
        ClickRow("near.txt");
        struct Case {
            int col;
            std::vector<DString> names;
        };
        for (auto const &[col, names] : std::vector<Case>{
                 {0, {"near.tif", "near.txt", "nearer.png", "near folder", "near wide.tif"}},
                 {kFolderColumn, {"near.tif", "near folder", "near wide.tif", "near.txt", "nearer.png"}},
                 {kFolderColumn, {"nearer.png", "near.txt", "near wide.tif", "near folder", "near.tif"}}}) {
            QHeaderView &header = *List().GetHeaderCtrl();
            QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                              {header.sectionViewportPosition(col) + 10, header.height() / 2});
            EXPECT_EQ(Column(0), names) << col;
            EXPECT_TRUE(List().GetSlct(RowOf(List(), "near.txt")));
            EXPECT_EQ(List().GetNumSlct(), 1);
        }
        auto *const filter = platform::GetDlgItem<QLineEdit>(*dialog, kFileFilterId);
        filter->setFocus();
        filter->setText("*.txt;*.png");
        Press(Qt::Key_Return);
        EXPECT_TRUE(Ends());
        EXPECT_THAT(Column(0), ElementsAre("near folder", "near.txt", "nearer.png")) << "as a listing takes it up";
        filter->setText("*.*");
        Press(Qt::Key_Return);
        EXPECT_TRUE(Ends());
        Press(Qt::Key_Escape);
        EXPECT_TRUE(Eventually([&] { return Column(0) == listed; }));
    });
}

TEST_F(SearchWindow, NamesThatHoldAnythingAreFoundShownAndGivenBack) {
    DString const name = DString(kHostile) + ".tif";
    folder.Folder(DString("sub/") + kHostile);
    WriteImage(folder / "plain.tif");
    std::filesystem::rename((folder / "plain.tif").c_str(),
                            (folder / ("sub/" + DString(kHostile) + "/" + name)).c_str());
    EXPECT_EQ(Run([&] {
                  SearchFor("} %s");
                  EXPECT_EQ(List().GetNumRow(), 2) << "the folder, too";
                  EXPECT_EQ(List().ShownText(1, kFolderColumn), "sub/" + platform::ToShownName(kHostile));
                  Shot(*dialog, "DlgOpenDS-search-hostile");
                  ClickRow(name);
                  PressOk(*dialog);
              }),
              QDialog::Accepted);
    ASSERT_EQ(Picked().size(), 1U);
    EXPECT_EQ(dialog->GetSelectedNodePaths()[0].GetText(), folder / ("sub/" + DString(kHostile) + "/" + name));
}

TEST_F(SearchWindow, WithoutTheFeatureThereIsNoneAndNarrowWindowsWithLargeTextCutNothing) {
    Run(
        [&] {
            EXPECT_EQ(dialog->Search(), nullptr);
            EXPECT_EQ(platform::GetDlgItem(*dialog, kSearchId), nullptr);
            Press(Qt::Key_F, Qt::ControlModifier);
            EXPECT_EQ(dialog->findChild<QWidget *>("searchForm"), nullptr);
        },
        kOpenAll & ~kOpenSearch);
    QFont const former = QApplication::font();
    QFont large = former;
    large.setPixelSize(QFontInfo(former).pixelSize() * 3 / 2);
    QApplication::setFont(large);
    {
        SearchForm form;
        form.FactsButton()->click();
        form.SetPlace("a place");
        form.ShowLine("What is said of a search");
        for (int const width : {640, 1200}) {
            form.resize(width, form.HeightFor(width, 2000));
            form.show();
            QCoreApplication::processEvents(); // the areas' own placing
            for (QWidget *const control : form.FocusOrder()) {
                EXPECT_TRUE(form.rect().contains({control->mapTo(&form, QPoint()), control->size()}))
                    << control->objectName().toStdString() << " at " << width;
                EXPECT_GE(control->width(), control->minimumSizeHint().width());
                EXPECT_FALSE(control->accessibleName().isEmpty() && qobject_cast<QPushButton *>(control) == nullptr);
            }
        }
        EXPECT_LT(form.HeightFor(1200, 2000), form.HeightFor(640, 2000));
        EXPECT_LE(form.HeightFor(640, 150), 150) << "the facts scroll";
    }
    Run([&] {
        int const preview = dialog->PropertyWnd()->height();
        Press(Qt::Key_F, Qt::ControlModifier);
        Click(Form().FactsButton());
        QCoreApplication::processEvents();
        EXPECT_LE(Form().geometry().bottom(), List().mapTo(dialog.get(), QPoint(0, 0)).y());
        EXPECT_GT(dialog->PropertyWnd()->height(), preview / 3);
        Shot(*dialog, "DlgOpenDS-search-large");
        Press(Qt::Key_Escape);
        EXPECT_NEAR(dialog->PropertyWnd()->height(), preview, 2);
    });
    QApplication::setFont(former);
}

/// Folders that are read as slowly as a test wants, and ones that cannot be read.
class SlowShell : public ScriptedShellNamespace {
public:
    // NOLINTNEXTLINE(modernize-use-nodiscard): as in the base
    std::error_code Enumerate(ShellId const &folder, Purpose purpose, Visitor const &visit,
                              FileTest const &wanted = nullptr) const override {
        if (Path(folder).starts_with("/data/slow")) {
            std::unique_lock lock(m_mutex);
            ++m_waiting;
            m_changed.wait(lock, [this] { return m_isOpen; });
            --m_waiting;
        }
        return ScriptedShellNamespace::Enumerate(folder, purpose, visit, wanted);
    }
    void Open() {
        std::lock_guard const lock(m_mutex);
        m_isOpen = true;
        m_changed.notify_all();
    }
    [[nodiscard]] int Waiting() const {
        std::lock_guard const lock(m_mutex);
        return m_waiting;
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    mutable int m_waiting = 0;
    bool m_isOpen = false;
};

struct SlowSearch : SearchWindow {
    SlowSearch() {
        shell->SetUnreadable("/data/shut");
        for (char const *const file : {"/data/a.tif", "/data/b.tif", "/data/quick/a2.tif", "/data/slow/a3.tif"})
            shell->AddFile(file);
        shell->AddFolder("/data/slow/below");
        platform::ShellNamespace::SetCurrent(shell);
    }
    ~SlowSearch() override {
        shell->Open();
        dialog.reset();
        // Who was let go needs the namespace until it has let go of the places.
        for (RefItemPtr<DataSourceItem> const &place : places)
            EXPECT_TRUE(Eventually([&] {
                std::ignore = RefItemPtr<DataSourceItem>(place); // comes after what the others did with it
                return place->RefCount() == 1;
            }));
        EXPECT_EQ(shell->EnumerateCalls("/data/slow/below"), 1) << "of four searches three were ended";
        platform::ShellNamespace::SetCurrent(nullptr);
    }
    std::shared_ptr<SlowShell> shell = std::make_shared<SlowShell>();
    std::vector<RefItemPtr<DataSourceItem>> places; ///< each dialog's own
};

TEST_F(SlowSearch, AnotherQueryAStopAndTheEndOfTheWindowWaitForNobody) {
    auto const begin = [&](std::function<void()> const &act) {
        DlgOpenDS::SetFeatures(kOpenAll & ~kOpenLine);
        dialog.reset(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, nullptr, nullptr));
        dialog->SetInitDir("/data");
        return RunWhen(
            *dialog, [&] { return dialog->MainList() != nullptr && List().GetNumRow() == 2; },
            [&] {
                DSListCtrl::ItemList roots;
                List().GetRootItems(roots);
                places.push_back(roots.front());
                act();
            });
    };
    auto const now = [&](QString const &name) {
        Press(Qt::Key_F, Qt::ControlModifier);
        Type(name);
        Press(Qt::Key_Return);
    };
    begin([&] {
        now("a");
        EXPECT_TRUE(Eventually([&] { return Column(0).size() == 2 && shell->Waiting() == 1; })) << "as they come";
        EXPECT_TRUE(Line().contains("Searching: 2 found")) << Line().toStdString();
        EXPECT_EQ(Form().SearchButton()->text(), "Stop");
        now("b");
        EXPECT_TRUE(Eventually([&] { return Column(0) == std::vector<DString>{"b.tif"}; }));
        EXPECT_TRUE(Eventually([&] { return shell->Waiting() == 2; })) << "the one before is left alone";
        Press(Qt::Key_Escape);
        EXPECT_TRUE(Ends());
        EXPECT_TRUE(Line().contains("Stopped: 1 found")) << Line().toStdString();
        EXPECT_TRUE(Line().contains("1 folder not read (/data/shut: ")) << Line().toStdString();
        EXPECT_THAT(Column(0), ElementsAre("b.tif")) << "what was found stays";
        now("a2");
        EXPECT_TRUE(Eventually([&] { return List().GetNumRow() == 1 && shell->Waiting() == 3; }));
    });
    dialog.reset();
    EXPECT_EQ(shell->Waiting(), 3);
    begin([&] {
        now("tif");
        EXPECT_TRUE(Eventually([&] { return List().GetNumRow() == 3; }));
        ClickRow("a2.tif");
        shell->Open();
        EXPECT_TRUE(Ends());
        EXPECT_THAT(Column(0), ElementsAre("a.tif", "b.tif", "a2.tif", "a3.tif"));
        EXPECT_TRUE(List().GetSlct(2)) << "also while others come";
    });
}

} // namespace
} // namespace zelvar::test
