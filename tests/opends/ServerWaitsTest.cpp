// The dialog over servers that are silent, slow or not there, with the real reader.
#include "zelvar/opends/ServerWaits.h"

#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/Stopwatch.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceNotice.h"

namespace zelvar::test {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kSmooth{2000}; // a machine under load included; the usual is printed

/// The longest time for which the windows' thread did not come to its timers.
class Gaps : public QObject {
public:
    Gaps() { startTimer(5); }
    [[nodiscard]] milliseconds Longest() const { return m_longest; }

protected:
    void timerEvent(QTimerEvent *) override {
        m_longest = std::max(m_longest, Since(m_last));
        m_last = Clock::now();
    }

private:
    milliseconds m_longest{0};
    Clock::time_point m_last = Clock::now();
};

struct ServerPlaces : testing::Test {
    ServerPlaces() {
        static bool const isFirst = [] {
            BDIDrvrMngr::Instance()->Reset();
            RDIDriverMngr::Instance()->Reset();
            UseReaders(PatientReaders());
            return !BDIDrvrMngr::Instance()->Drivers().empty();
        }();
        EXPECT_TRUE(isFirst);
        folder.Write("here.tif", "x");
        Define("Lab", server.Url() + "/lab/");
        Define("Nobody", "http://127.0.0.1:1/d/");
        Define("Big", "s3://big/");
        Set("ZELVAR_DEFINITIONS_DIR", definitions.Path());
        Set("AWS_S3_ENDPOINT", server.Url().substr(7));
        for (char const *name : {"AWS_HTTPS", "AWS_VIRTUAL_HOSTING"})
            Set(name, "NO");
        Set("AWS_NO_SIGN_REQUEST", "YES");
    }
    ~ServerPlaces() override {
        // Workers that were let go need the drivers for a moment: they stay.
        for (auto const &[name, former] : m_former)
            qputenv(name.c_str(), former);
    }
    void Set(std::string const &name, std::string const &value) {
        m_former[name] = qgetenv(name.c_str());
        qputenv(name.c_str(), value.c_str());
    }
    void Define(std::string const &name, std::string const &url, std::string const &driver = "WebDirectory") const {
        definitions.Write(name + ".xml", "<DataSources><DataSource name='" + name + "' url='" + url +
                                             "'><Parameters/><BDIDriver id='" + driver +
                                             "'/></DataSource></DataSources>");
    }
    void Create(DString const &beginning) {
        DlgOpenDS::SetFeatures(kOpenAll);
        dialog.reset(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, "ImageFolders", nullptr));
        dialog->SetBDIFilter(BDINode_Raster);
        dialog->SetInitDir(beginning.c_str());
    }
    void Run(std::function<void()> const &act) {
        Create(folder.Path());
        RunWhen(
            *dialog, [&] { return dialog->MainList() != nullptr && dialog->MainList()->GetNumRow() > 0; },
            [&] {
                dialog->DataSourceWnd()->SwitchToDataSourceView();
                act();
            });
        dialog.reset();
    }
    [[nodiscard]] int RowOfSource(DString const &name) const {
        DataSourceList const &sources = *dialog->SourceList();
        for (int row = 0; row < sources.GetItemCount(); ++row)
            if (sources.ItemAt(row)->GetName() == name)
                return row;
        ADD_FAILURE() << "no " << name;
        return 0;
    }
    void ClickSource(DString const &name) const {
        DataSourceList &sources = *dialog->SourceList();
        sources.EnsureVisible(RowOfSource(name));
        Rect const rect = sources.GetItemRect(RowOfSource(name));
        QTest::mouseClick(sources.viewport(), Qt::LeftButton, {}, {rect.left + 40, (rect.top + rect.bottom) / 2});
    }
    void GoTo(DString const &place) const {
        auto *const box = platform::GetDlgItem<QComboBox>(*dialog, kHistoryId);
        box->setFocus();
        box->setEditText(QString::fromStdString(place));
        QTest::keyClick(box->lineEdit(), Qt::Key_Return);
    }
    [[nodiscard]] bool Says(DString const &words, DString const &button) const {
        PlaceNotice const &notice = *dialog->Waits()->Notice();
        return Eventually([&] {
            return notice.isVisible() && notice.Label()->text().contains(QString::fromStdString(words)) &&
                   notice.Button()->text() == QString::fromStdString(button);
        });
    }
    void Press(Qt::Key key) const { QTest::keyClick(dialog->focusWidget(), key); }
    [[nodiscard]] bool HasLetGo() const {
        return Eventually([&] { return server.OpenConnections() == 0; });
    }

    TempFolder folder;
    TempFolder definitions;
    HttpServer server;
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    DialogPtr dialog;

private:
    std::map<std::string, QByteArray> m_former;
};

TEST_F(ServerPlaces, AServerThatIsSilentOrSlowHoldsNoWindow) {
    for (bool const drips : {false, true}) {
        server.Hang(!drips);
        if (drips)
            server.Drip();
        Run([&] {
            Gaps const gaps;
            ClickSource("Lab");
            EXPECT_TRUE(Says("Connecting to Lab ...", "Stop"));
            EXPECT_TRUE(Eventually([&] { return server.OpenConnections() > 0; }));
            Press(Qt::Key_F5); // begins anew
            EXPECT_TRUE(Says("Connecting to Lab ...", "Stop"));
            EXPECT_TRUE(Eventually([&] { return server.OpenConnections() > 0; }));
            auto const stopped = Clock::now();
            Press(Qt::Key_Escape);
            EXPECT_TRUE(dialog->isVisible());
            EXPECT_TRUE(HasLetGo());
            std::printf("closed after %lld ms\n", static_cast<long long>(Since(stopped).count()));
            EXPECT_TRUE(Says("Stopped.", "Retry"));
            EXPECT_EQ(RowTextOf(*dialog->SourceList()->ItemAt(RowOfSource("Lab"))), "Lab");
            GoTo(server.Url() + "/typed/");
            EXPECT_TRUE(Says("/typed/ ...", "Stop"));
            Click(dialog->Waits()->Notice()->Button());
            EXPECT_TRUE(HasLetGo());
            ClickSource("Lab"); // it is selected already
            Press(Qt::Key_F5);
            EXPECT_TRUE(Eventually([&] { return server.OpenConnections() > 0; }));
            ClickSource("Nobody"); // another click ends it
            EXPECT_TRUE(HasLetGo());
            EXPECT_TRUE(Says("Nobody cannot be opened: ", "Retry"));
            EXPECT_LT(gaps.Longest(), kSmooth);
            std::printf("longest gap %lld ms\n", static_cast<long long>(gaps.Longest().count()));
            Shot(*dialog, "DlgOpenDS-connection-failed");
            dialog->SetInitDir("");
            ClickSource("Lab"); // and the end of the dialog
            EXPECT_TRUE(Eventually([&] { return server.OpenConnections() > 0; }));
        });
        EXPECT_TRUE(HasLetGo());
    }
}

TEST_F(ServerPlaces, AConnectionThatFailedIsTriedAgain) {
    server.Refuse("/lab/", 503);
    Run([&] {
        ClickSource("Lab");
        EXPECT_TRUE(Says("Lab cannot be opened: its server answered 503", "Retry"));
        EXPECT_EQ(RowTextOf(*dialog->SourceList()->ItemAt(RowOfSource("Lab"))), "Lab (unreachable)");
        server.Refuse("/lab/", 401);
        Click(dialog->Waits()->Notice()->Button());
        EXPECT_TRUE(Eventually(
            [&] { return RowTextOf(*dialog->SourceList()->ItemAt(RowOfSource("Lab"))) == "Lab (password)"; }));
        EXPECT_TRUE(Says("Lab cannot be opened: it needs a password", "Retry"));
        server.Serve("/lab/", "<html><title>Index of /lab/</title><a href=\"a.tif\">a.tif</a></html>", "text/html");
        Click(dialog->Waits()->Notice()->Button());
        DSListCtrl const &list = *dialog->MainList();
        EXPECT_TRUE(Eventually([&] { return RowOf(list, "a.tif") >= 0; }));
        EXPECT_TRUE(Eventually([&] { return !dialog->Waits()->Notice()->isVisible(); }));
        EXPECT_EQ(RowTextOf(*dialog->SourceList()->ItemAt(RowOfSource("Lab"))), "Lab");
        GoTo("http://u:MARKER@" + server.Url().substr(7) + "/gone/?sig=MARKER");
        EXPECT_TRUE(Says("cannot be opened: its server answered 404", "Retry"));
        EXPECT_FALSE(dialog->Waits()->Notice()->Label()->text().contains("MARKER"));
        Press(Qt::Key_Escape);
        EXPECT_FALSE(dialog->Waits()->Notice()->isVisible()) << "what was there is seen again";
        EXPECT_TRUE(dialog->isVisible());
    });
}

TEST_F(ServerPlaces, AConnectionThatIsTriedAgainBeforeTheWindowHasHeardOfTheFailureIsShown) {
    server.Refuse("/lab/", 503);
    Run([&] {
        ClickSource("Lab");
        auto const begin = Clock::now();
        while (dialog->SourceList()->Opening() != nullptr && Since(begin) < milliseconds(10000))
            std::this_thread::yield(); // without a look at messages
        server.Serve("/lab/", "<title>Index of /lab/</title><a href=\"a.tif\">a.tif</a>", "text/html");
        dialog->SourceList()->ResetSelectedItems();
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "a.tif") >= 0; }));
    });
}

TEST_F(ServerPlaces, AHostThatAServerSendsOnToIsAllowedWhereTheRowsWouldStand) {
    HttpServer elsewhere;
    elsewhere.Serve("/lab/", "<title>Index of /lab/</title><a href=\"a.tif\">a.tif</a>", "text/html");
    server.SendOn("/lab/", elsewhere.Url() + "/lab/");
    DString const host = elsewhere.Url().substr(7);
    UseDefinedConnections();
    Run([&] {
        ClickSource("Lab");
        EXPECT_TRUE(Says("Lab cannot be opened: its server sends on to " + host + ", which", "Retry"));
        QPushButton *const allow = dialog->Waits()->Notice()->OfferButton();
        EXPECT_EQ(allow->text().toStdString(), "Allow " + host);
        Shot(*dialog, "PlaceNotice-allow");
        Click(allow);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "a.tif") >= 0; }));
        EXPECT_FALSE(allow->isVisible());
        GoTo("http://127.0.0.1:" + std::to_string(elsewhere.Port()) + "/none/");
        EXPECT_TRUE(Says("answered 404", "Retry"));
        EXPECT_FALSE(allow->isVisible()) << "nothing would be gained";
    });
    SetConnectionFinder({});
    EXPECT_THAT(ReadFile(definitions / "Lab.xml"), HasSubstr("allow=\"" + host + "\""));
}

TEST_F(ServerPlaces, APasswordThatNobodyKeepsIsAskedForWhereTheRowsWouldStand) {
    server.Serve("/lab/", "<title>Index of /lab/</title><a href=\"a.tif\">a.tif</a>", "text/html");
    server.Demand("YW5uOk1BUktFUi1wdw=="); // ann:MARKER-pw
    definitions.Write("Lab.xml", "<DataSources><DataSource name='Lab' url='http://ann@" + server.Url().substr(7) +
                                     "/lab/'><Parameters/><BDIDriver id='WebDirectory'/><Connection secret='ask'/>"
                                     "</DataSource></DataSources>");
    UseDefinedConnections();
    Run([&] {
        ClickSource("Lab");
        QPushButton *const offer = dialog->Waits()->Notice()->OfferButton();
        for (char const *password : {"", "wrong", "MARKER-pw"}) {  // the first one is no password
            bool const isWrong = DString(password) == "MARKER-pw"; // the one before was
            EXPECT_TRUE(Says(isWrong ? "Lab cannot be opened: The server does not know user ann or the password."
                                     : "Lab cannot be opened: The server wants a password, and none is known yet.",
                             "Retry"));
            ASSERT_TRUE(Eventually([&] { return offer->isVisible() && offer->text() == "Password..."; })) << password;
            auto const asked = OnNextDialog([&](QWidget &window) {
                auto *const edit = window.findChild<QLineEdit *>();
                EXPECT_EQ(edit->echoMode(), QLineEdit::Password);
                QTest::keyClicks(edit, password);
                QTest::keyClick(edit, Qt::Key_Return);
            });
            dialog->SourceList()->setFocus();
            for (QWidget const *const next :
                 std::initializer_list<QWidget const *>{dialog->Hierarchy()->GetPane(0), offer}) {
                Press(Qt::Key_Tab);
                EXPECT_EQ(dialog->focusWidget(), next);
            }
            Press(Qt::Key_Tab);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Backtab);
            EXPECT_EQ(dialog->focusWidget(), offer);
            QTest::keyClick(offer, Qt::Key_Space);
            EXPECT_TRUE(*asked);
            bool const isTried = *password != 0; // until then nothing is offered
            EXPECT_TRUE(Eventually([&] { return !isTried || !offer->isVisible(); })) << password;
        }
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "a.tif") >= 0; }));
        EXPECT_FALSE(offer->isVisible());
        EXPECT_TRUE(Eventually([&] { return dialog->focusWidget() == dialog->MainList(); }));
    });
    SetConnectionFinder({});
    EXPECT_THAT(ReadFile(definitions / "Lab.xml"), testing::Not(HasSubstr("MARKER")));
}

TEST_F(ServerPlaces, OfConnectionsWithOneAddressTheOneThatWasClickedCounts) {
    server.Serve("/lab/", "<title>Index of /lab/</title><a href=\"a.tif\">a.tif</a>", "text/html");
    server.Demand("YW5uOk1BUktFUi1wdw=="); // ann:MARKER-pw
    for (auto const &[name, secret] : {std::pair{"Lab", "none"}, {"Lab 2", "ask"}, {"Lab 3", "none"}, {"Lab 4", "ask"}})
        definitions.Write(std::string(name) + ".xml", "<DataSources><DataSource name='" + std::string(name) +
                                                          "' url='http://ann@" + server.Url().substr(7) +
                                                          "/lab/'><Parameters/><BDIDriver id='WebDirectory'/>"
                                                          "<Connection secret='" +
                                                          secret + "'/></DataSource></DataSources>");
    UseDefinedConnections();
    Run([&] {
        QPushButton *const offer = dialog->Waits()->Notice()->OfferButton();
        ClickSource("Lab 3");
        EXPECT_TRUE(Says("Lab 3 cannot be opened: it needs a password", "Retry"));
        EXPECT_FALSE(offer->isVisible());
        EXPECT_TRUE(Eventually([&] { return dialog->Forecast()->Outcome().text.starts_with("Lab 3: cannot be"); }));
        ClickSource("Lab 2");
        EXPECT_TRUE(Says("Lab 2 cannot be opened: The server wants a password", "Retry"));
        auto const asked = OnNextDialog([&](QWidget &window) {
            EXPECT_EQ(window.findChild<QLabel *>()->text(), "Password of Lab 2:");
            QTest::keyClicks(window.findChild<QLineEdit *>(), "MARKER-pw");
            QTest::keyClick(window.findChild<QLineEdit *>(), Qt::Key_Return);
        });
        Click(offer);
        EXPECT_TRUE(*asked);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "a.tif") >= 0; }));
        for (char const *name : {"Lab 4", "Lab 2"}) { // each is listed, though the other one is open
            DString const row = DString(name) + ".tif";
            server.Serve("/lab/", "<title>Index of /lab/</title><a href=\"" + row + "\">" + row + "</a>", "text/html");
            ClickSource(name);
            EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), row) >= 0; })) << name;
        }
    });
    SetConnectionFinder({});
}

TEST_F(ServerPlaces, APlaceWithNothingToPickSaysSo) {
    server.Serve("/lab/", "<title>Index of /lab/</title><a href=\"sub/\">sub/</a>", "text/html");
    server.Serve("/lab/sub/", "<title>Index of /lab/sub/</title>", "text/html");
    Run([&] {
        ClickSource("Lab");
        EXPECT_TRUE(Eventually([&] { return dialog->Hierarchy()->GetPane(0)->GetNumRow() == 1; }));
        EXPECT_TRUE(Eventually([&] { return !dialog->Waits()->Notice()->isVisible(); })) << "a folder is something";
        GoTo(server.Url() + "/lab/sub/");
        EXPECT_TRUE(Says("sub holds nothing that can be picked here.", "Retry"));
    });
}

TEST_F(ServerPlaces, DataOnAServerAreSelectedWhereTheyLie) {
    server.Serve("/lab/sub/",
                 "<title>Index of /lab/sub/</title><a href=\"a.tif\">a.tif</a><a href=\"b%20%3F.tif\">b</a>",
                 "text/html");
    server.OnStore([](StoreAnswers &store) { store.SetBucket("big", {.keys = {"k.tif", "l.tif"}}); });
    WriteImage(definitions / "image.tif");
    for (char const *const path : {"/lab/sub/b%20%3F.tif", "/big/l.tif"})
        server.Serve(path, ReadFile(definitions / "image.tif"));
    DString const service = "wms+" + server.Url() + "/ows";
    Define("Map", service, "OGC");
    server.Serve(
        "/ows?SERVICE=WMS&REQUEST=GetCapabilities",
        "<WMS_Capabilities version=\"1.3.0\"><Capability><Layer><Layer><Name>a</Name></Layer><Layer>"
        "<Title>Group</Title><Layer><Title>Inner</Title><Layer><Name>c ?</Name></Layer></Layer></Layer></Layer>"
        "</Capability></WMS_Capabilities>");
    for (DString const &path : {server.Url() + "/lab/sub/b%20%3F.tif", DString("s3://big/l.tif"), service + "?LAYER=a",
                                service + "?LAYER=c%20%3F"}) {
        auto const isSelected = [&] {
            DSListCtrl::ItemList items;
            dialog->MainList()->GetSelectedItems(items);
            return items.size() == 1 && items.front()->GetPath() == path;
        };
        char const *const options = path.find('?') == DString::npos ? "?NUM_THREADS=2" : "&NUM_THREADS=2";
        Favorite const favorite{Favorite::Kind::Data, path + options, "mine"};
        FavoriteBook::Add(favorite);
        Run([&] {
            ClickSource("mine");
            EXPECT_TRUE(Eventually(isSelected)) << path;
        });
        FavoriteBook::Remove(favorite);
        Run([&] {
            GoTo(path);
            EXPECT_TRUE(Eventually(isSelected)) << path;
        });
    }
}

TEST_F(ServerPlaces, ADialogThatBeginsAtAPlaceThatFailsSaysWhy) {
    Create(server.Url() + "/gone/");
    RunWhen(
        *dialog, [&] { return dialog->Waits() != nullptr && !dialog->Waits()->IsWaiting(); },
        [&] { EXPECT_TRUE(Says("cannot be opened: its server answered 404", "Retry")); });
    dialog.reset();
}

TEST_F(ServerPlaces, ASearchGoesThroughFoldersOfAServerAndAStopHoldsNobody) {
    server.Serve("/lab/",
                 "<html><title>Index of /lab/</title><a href=\"sub/\">sub/</a><a href=\"a.tif\">a.tif</a></html>",
                 "text/html");
    server.Serve("/lab/sub/", "<html><title>Index of /lab/sub/</title><a href=\"a2.tif\">a2.tif</a></html>",
                 "text/html");
    Run([&] {
        ClickSource("Lab");
        DSListCtrl const &list = *dialog->MainList();
        EXPECT_TRUE(Eventually([&] { return RowOf(list, "a.tif") >= 0; }));
        auto const searchFor = [&](QString const &name) {
            QTest::keyClick(dialog->focusWidget(), Qt::Key_F, Qt::ControlModifier);
            QTest::keyClicks(dialog->focusWidget(), name);
            Press(Qt::Key_Return);
        };
        searchFor("a");
        EXPECT_TRUE(Eventually([&] { return !dialog->Search()->IsSearching(); }));
        EXPECT_EQ(list.GetNumRow(), 2);
        EXPECT_EQ(list.ShownText(RowOf(list, "a.tif"), 3), ".");
        EXPECT_EQ(list.ShownText(RowOf(list, "a2.tif"), 3), "sub");
        server.Hang(true);
        Gaps const gaps;
        searchFor("a2");
        EXPECT_TRUE(Eventually([&] { return server.OpenConnections() > 0; }));
        Press(Qt::Key_Escape);
        EXPECT_TRUE(Eventually([&] { return !dialog->Search()->IsSearching(); }));
        EXPECT_TRUE(HasLetGo());
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_LT(gaps.Longest(), kSmooth);
    });
}

TEST_F(ServerPlaces, RowsOfAStoreComeAsItSendsThemAndAreKeptAfterAStop) {
    server.OnStore([](StoreAnswers &store) { store.SetBucket("big", {.isEndless = true}); });
    server.Delay(milliseconds(100));
    Run([&] {
        Gaps const gaps;
        ClickSource("Big");
        DSListCtrl const &list = *dialog->MainList();
        EXPECT_TRUE(Eventually([&] { return !server.Requests().empty(); })); // its reader has started
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() >= 1000; }));
        EXPECT_TRUE(list.IsListing());
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() >= 3000; })) << "further pages";
        Press(Qt::Key_Escape);
        EXPECT_TRUE(Eventually([&] { return !list.IsListing(); }));
        EXPECT_GE(list.GetNumRow(), 3000);
        std::size_t const asked = server.Requests().size();
        ClickSource("Nobody");
        EXPECT_TRUE(Says("Nobody cannot be opened: ", "Retry"));
        EXPECT_LE(server.Requests().size(), asked + 2) << "nobody goes on behind the window";
        EXPECT_LT(gaps.Longest(), kSmooth);
        std::printf("longest gap %lld ms\n", static_cast<long long>(gaps.Longest().count()));
    });
}

TEST_F(ServerPlaces, ABucketOfMoreThanAListShowsIsNoFailure) {
    StoreAnswers::Bucket bucket;
    constexpr int most = 32'000;
    for (int i = 0; i < most + 8000; ++i) // pages behind the last row, for the list of folders
        bucket.keys.push_back(KeyOf(i));
    server.OnStore([&](StoreAnswers &store) { store.SetBucket("big", bucket); });
    server.Delay(milliseconds(50)); // the walk has not ended when the list has its rows
    Run([&] {
        ClickSource("Big");
        DSListCtrl const &list = *dialog->MainList();
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() >= most && !list.IsListing(); }));
        EXPECT_TRUE(Eventually([&] { return !dialog->FolderList()->IsListing() && !dialog->Waits()->IsWaiting(); }));
        DSListCtrl::ItemList roots;
        list.GetRootItems(roots);
        ASSERT_EQ(roots.size(), 1U);
        EXPECT_EQ(dynamic_cast<TemplDataSourceItem const &>(*roots.front()).GetFailure().Text(), "");
    });
}

TEST_F(ServerPlaces, TheListsOfAPlaceAreFilledByOneWalk) {
    StoreAnswers::Bucket bucket;
    for (int i = 0; i < 1500; ++i)
        bucket.keys.push_back((i % 2 == 0 ? "f" : "k") + KeyOf(i) + (i % 2 == 0 ? "/x.tif" : ""));
    server.OnStore([&](StoreAnswers &store) { store.SetBucket("big", bucket); });
    Run([&] {
        GoTo("s3://big/");
        EXPECT_TRUE(Eventually(
            [&] { return dialog->MainList()->GetNumRow() >= 750 && dialog->FolderList()->GetNumRow() >= 750; }));
        EXPECT_EQ(server.Requests().size(), 2U) << "a page once";
        dialog->MainList()->setFocus();
        Press(Qt::Key_F5);
        EXPECT_TRUE(Eventually([&] { return server.Requests().size() >= 4; })) << "as it is now";
    });
}

} // namespace
} // namespace zelvar::test
