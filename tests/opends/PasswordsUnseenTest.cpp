// The password of a connection is seen nowhere, whatever its kind and wherever it is kept.
#include "support/HttpServer.h"
#include "support/OpenDialogHand.h"
#include "support/PostgresServer.h"
#include "support/Processes.h"
#include "support/RealDrivers.h"
#include "support/SessionBus.h"
#include "support/Told.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/connections/ConnectionDlg.h"
#include "zelvar/opends/connections/TrialPane.h"

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::test {
namespace {

constexpr char kMarker[] = "MARKER-pw";
constexpr char kSent[] = "YW5uOk1BUktFUi1wdw=="; // with ann's name, as a header says it

struct Keeping {
    char const *name;
    ConnectionKind kind;
    std::map<DString, DString> fields;
    SecretPlace place;
    DString row{}; ///< what is listed; empty where the server has nothing, or is none of that kind
};

/// All texts that a window has, but for those that somebody types.
DString TextsOf(QWidget &window) {
    QString text;
    auto const add = [&](QWidget const &one) {
        text += one.windowTitle() + one.toolTip() + one.accessibleName() + one.accessibleDescription() +
                one.objectName() + one.statusTip();
        if (auto const *const label = qobject_cast<QLabel const *>(&one))
            text += label->text();
        if (auto const *const edit = qobject_cast<QLineEdit const *>(&one))
            text += edit->text();
    };
    add(window);
    for (QWidget const *const one : window.findChildren<QWidget *>())
        add(*one);
    return text.toStdString();
}

/// What any program of this user can read of this process and of its readers. `readers`: how many there are.
DString TextsOfProcesses(int &readers) {
    DString text = ReadFile("/proc/self/cmdline");
    for (char **variable = environ; *variable != nullptr; ++variable)
        text += DString(*variable) + "\n";
    readers = 0;
    for (auto const &[process, state] : ChildrenOf(getpid())) {
        std::string const place = "/proc/" + std::to_string(process);
        std::string const words = ReadFile(place + "/cmdline");
        if (words.find("zelvar-reader") == std::string::npos)
            continue;
        ++readers;
        text += words + ReadFile(place + "/environ");
    }
    return text;
}

TEST(PasswordsUnseen, OfEveryKindWhereverTheyAreKept) {
    TempFolder folder;
    TempFolder const own; // the user's own files hold it
    HttpServer server;
    PostgresServer database;
    ASSERT_EQ(database.Start(), "");
    ASSERT_EQ(database.Execute("create schema survey; create table survey.t (a int)"), "");
    server.Demand(kSent);
    for (char const *const name : {"web", "keyring", "netrc", "address", "parameters"})
        server.Serve(DString("/") + name + "/", "<title>Index of /</title><a href=\"a.tif\">a.tif</a>", "text/html");
    server.Serve("/ows?SERVICE=WMS&REQUEST=GetCapabilities",
                 "<WMS_Capabilities version=\"1.3.0\"><Capability><Layer><Title>t</Title><Layer><Name>a</Name>"
                 "</Layer></Layer></Capability></WMS_Capabilities>");
    HttpServer store;
    store.ServeBucket("b", {"a.tif"});
    store.OnStore([](StoreAnswers &answers) { answers.Demand("AKID", kMarker); });
    auto const write = [&](char const *variable, std::string const &text) {
        std::string const path = own.Write(variable, text);
        chmod(path.c_str(), 0600);
        setenv(variable, path.c_str(), 1);
    };
    write("NETRC", DString("machine 127.0.0.1 login ann password ") + kMarker + "\n");
    write("AWS_SHARED_CREDENTIALS_FILE",
          DString("[lab]\naws_access_key_id=AKID\naws_secret_access_key=") + kMarker + "\n");
    write("PGPASSFILE", "127.0.0.1:*:*:zelvar:MARKER\\:7\\\\%41 pw\n");
    write("ODBCINI", "[Lab]\nDriver=SQLite3\nDatabase=" + own.Write("lab.sqlite") + "\nPWD=" + kMarker + "\n");
    setenv("ZELVAR_DEFINITIONS_DIR", folder.Folder("definitions").c_str(), 1);
    std::mutex mutex;
    DString log;
    auto const former = Report::SetTraceHandler([&](int, DString const &line) {
        std::lock_guard const lock(mutex);
        log += line + "\n";
    });
    setenv("ZELVAR_READER_ERRORS", "1", 1);
    SessionBus bus;
    ASSERT_TRUE(bus.IsThere());
    bus.StartKeyring();
    BDIDrvrMngr::Instance()->Reset(); // of tests before
    RDIDriverMngr::Instance()->Reset();
    UseReaders(PatientReaders());
    UseDefinedConnections();
    DlgOpenDS::SetFeatures(kOpenAll);

    using enum ConnectionKind;
    DString const place = server.Url().substr(7);
    auto const web = [&](DString const &name) {
        return std::map<DString, DString>{{"address", "http://" + place + "/" + name + "/"}, {"user", "ann"}};
    };
    DString const port = std::to_string(database.Port());
    std::map<DString, DString> const field{
        {"host", "127.0.0.1"}, {"port", port}, {"database", "field"}, {"user", "zelvar"}};
    std::map<DString, DString> const bucket{{"bucket", "b"}, {"endpoint", store.Url()}, {"addressing", "path"}};
    auto const with = [](std::map<DString, DString> fields, DString const &key, DString const &value) {
        fields[key] = value;
        return fields;
    };
    folder.Write("definitions/old.xml", "<DataSources><DataSource name='address' url='http://ann:" + DString(kMarker) +
                                            "@" + place +
                                            "/address/'><Parameters/><BDIDriver id='WebDirectory'/></DataSource>" +
                                            "<DataSource name='parameters' url='http://${user}:${password}@" + place +
                                            "/parameters/'><Parameters>user=ann;password=" + kMarker +
                                            "</Parameters></DataSource></DataSources>");
    Keeping const rows[] = {
        {"web", WebFolder, web("web"), SecretPlace::Ask, "a.tif"},
        {"keyring", WebFolder, web("keyring"), SecretPlace::Keyring, "a.tif"},
        {"netrc", WebFolder, web("netrc"), SecretPlace::File, "a.tif"},
        {"address", WebFolder, {}, SecretPlace::Definition, "a.tif"},
        {"parameters", WebFolder, {}, SecretPlace::Definition, "a.tif"},
        {"map",
         MapService,
         {{"address", DString(server.Url()) + "/ows"}, {"service", "wms"}, {"user", "ann"}},
         SecretPlace::Ask,
         "a"},
        {"s3", ObjectStore, with(bucket, "key", "AKID"), SecretPlace::Ask, "a.tif"},
        {"profile", ObjectStore, with(bucket, "profile", "lab"), SecretPlace::Profile, "a.tif"},
        {"gs", ObjectStore, with(with(bucket, "service", "gs"), "key", "AKID"), SecretPlace::Ask, "a.tif"},
        {"az", ObjectStore, with(with(bucket, "service", "az"), "key", "AKID"), SecretPlace::Ask},
        {"pgpass", PostgreSql, with(field, "database", "postgres"), SecretPlace::File},
        {"postgresql", PostgreSql, field, SecretPlace::Keyring, "survey"},
        {"odbc", Odbc, {{"dsn", "Lab"}, {"user", "ann"}}, SecretPlace::Ask}};

    testing::internal::CaptureStderr();
    Told told;
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    std::vector<DString> names;
    for (Keeping const &row : rows) {
        DString seen;
        auto const look = [&](QWidget &window) {
            seen += TextsOf(window);
            window.grab().save(QString::fromStdString(folder / "shot.png"));
            seen += ReadFile(folder / "shot.png");
        };
        if (!row.fields.empty()) {
            Connection const connection{.name = row.name, .kind = row.kind, .fields = row.fields, .secret = row.place};
            char const *const password = row.kind == PostgreSql ? PostgresServer::kPassword : kMarker;
            bool const isKept = row.place == SecretPlace::Ask || row.place == SecretPlace::Keyring;
            SavedConnection const saved = SaveWithSecret(nullptr, connection, isKept ? Secret(password) : Secret());
            ASSERT_TRUE(saved.change.isDone) << saved.change.words;
            EXPECT_EQ(saved.words, "") << row.name;
        }
        names.emplace_back(row.name);
        ConnectionBook::Entry const *const entry = ConnectionBook::Now()->Find(row.name);
        ASSERT_NE(entry, nullptr) << row.name;
        ConnectionDlg page(nullptr, *entry);
        page.TestAtOnce();
        auto const isTried = OnNextDialog([&](QWidget &window) {
            EXPECT_TRUE(Eventually([&] { return !page.Trial()->Results().empty() && !page.IsBusy(); }));
            EXPECT_EQ(row.row.empty(), page.Trial()->Text().find("Works: ") == DString::npos) << page.Trial()->Text();
            seen += page.Trial()->Text();
            look(window);
        });
        page.DoModal();
        EXPECT_TRUE(*isTried);

        DialogPtr const dialog(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, nullptr, nullptr));
        dialog->SetBDIFilter(BDINode_Raster);
        RunWhen(
            *dialog, [&] { return dialog->SourceList() != nullptr && dialog->SourceList()->isVisible(); },
            [&] {
                DataSourceList &list = *dialog->SourceList();
                for (int at = 0; at < list.GetItemCount(); ++at)
                    if (list.ItemAt(at)->GetName() == row.name)
                        list.SetItemState(at, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
                EXPECT_TRUE(Eventually([&] { return list.Opening() == nullptr && !dialog->Waits()->IsWaiting(); }));
                for (DSListCtrl const *const rowsOf : {dialog->MainList(), dialog->Hierarchy()->GetPane(0)})
                    for (int at = 0; at < rowsOf->GetNumRow(); ++at)
                        seen += rowsOf->ItemAt(at)->GetPath() + rowsOf->ItemAt(at)->GetName() + "\n";
                look(*dialog);
            });
        int readers = 0;
        DString const processes = TextsOfProcesses(readers);
        EXPECT_GE(readers, 1) << row.name;
        for (DString const &text : {seen, processes})
            for (char const *const marker : {"MARKER", kSent})
                EXPECT_EQ(text.find(marker), DString::npos) << row.name << ": " << text;
    }
    EXPECT_TRUE(ExportConnections(names, folder / "export.xml").isDone);
    EXPECT_EQ(std::remove((folder / "definitions/old.xml").c_str()), 0); // there it stands as its user wrote it
    DString kept = testing::internal::GetCapturedStderr() + testing::PrintToString(told.Take());
    for (auto const &root : {folder.Path(), std::filesystem::path(std::getenv("HOME")).parent_path().string()})
        for (auto const &entry : std::filesystem::recursive_directory_iterator(root))
            if (entry.is_regular_file())
                kept += entry.path().string() + ": " + ReadFile(entry.path()) + "\n";
    EXPECT_NE(kept.find("connections.xml: "), DString::npos);
    EndReaders();
    Report::SetTraceHandler(former);
    EXPECT_NE(log.find(" starts for postgresql://zelvar@127.0.0.1"), DString::npos) << log;
    kept += log;
    for (char const *const marker : {"MARKER", kSent})
        EXPECT_EQ(kept.find(marker), DString::npos) << kept.substr(kept.find(marker) - 200, 400);
    for (char const *const name :
         {"ZELVAR_READER_ERRORS", "NETRC", "PGPASSFILE", "AWS_SHARED_CREDENTIALS_FILE", "ODBCINI"})
        unsetenv(name);
    SetConnectionFinder({});
}

} // namespace
} // namespace zelvar::test
