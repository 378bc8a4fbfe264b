#include "zelvar/filedlg/FileDlg.h"

#include "support/FileRequests.h"
#include "support/RequestProbe.h"
#include "support/ScriptedDriver.h"
#include "support/SilentMount.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/filedlg/core/FilterBuffer.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <filesystem>
#include <thread>

namespace zelvar {
namespace {

using test::Answer;
using test::AskedRequest;
using test::Shown;
using test::TempFolder;
using Names = std::vector<std::string>;

constexpr char kStandardDialog[] = "General_Use standard windows file selection dialog";
constexpr char kNoFormats[] = "FileDlg::ShowFileDlg: no file types available";

struct Request : testing::Test {
    ~Request() override {
        EXPECT_EQ(told.Take(), Names{});
        DUserCnfg("Options").RemoveKey(kStandardDialog);
    }
    static void UseStandardDialog() { DUserCnfg("Options").WriteString(kStandardDialog, "true"); }

    test::ScriptedDrivers drivers;
    TempFolder folder;
    test::Told told;
    DFileFrmt a{"A", "Alpha", "*.a"};
    DFileFrmt b{"B", "Beta", "*.b"};
    DFileFrmt again{"C", "Alpha", "*.c"};
};

TEST_F(Request, FormatsAreSortedByBytesBehindTheirEquals) {
    AskedRequest request;
    DFileFrmt small("", "alpha", "*.d");
    for (DFileFrmt *format : {&small, &b, &a, &again})
        request.AddDscr(format, true);
    request.AddDscr(nullptr, true);
    EXPECT_FALSE(request.ShowFileDlg(0, "K", DT_DATA));
    EXPECT_EQ(request.filter, "Alpha|*.a|Alpha|*.c|Beta|*.b|alpha|*.d||");
    request.RmvDscr(&a);
    request.RmvDscr(&a);
    EXPECT_EQ(request.GetFormatByName("Alpha"), &again);
    EXPECT_EQ(request.GetFormat("B"), &b);
    EXPECT_EQ(request.GetFormat("b"), nullptr);
    EXPECT_EQ(request.GetFormat(""), &small);
    EXPECT_EQ(request.GetFormat(nullptr), nullptr);
}

TEST_F(Request, WithoutFormatsTheUserIsWarnedAndNothingOpens) {
    AskedRequest request;
    EXPECT_EQ(request.GetFormat("A"), nullptr);
    EXPECT_EQ(request.GetFormatByName(nullptr), nullptr);
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    request.AddDscr(nullptr, false); // is no format
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(told.Take(), Names(4, kNoFormats));
    EXPECT_EQ(request.asked, 0);
}

TEST_F(Request, TheFormatToBeginWithIsTheCurrentOneThatOfTheFileOrTheFirst) {
    DFileFrmt other("X", "Not offered", "*.x");
    test::Rows<char const *, DFileFrmt *, int, char const *> const cases = {
        {"", nullptr, 0, "*.a"},       {"/x/y.b", nullptr, 1, "*.b"}, {"y.B", nullptr, 0, "*.a"},
        {"y.b", &a, 0, "*.a"},         {"y.a", &again, 0, "*.c"}, // its name is the first's
        {"/x.b/y", nullptr, 0, "*.a"}, {"", &other, 0, "*.x"}};
    for (auto const &[file, current, index, ext] : cases) {
        AskedRequest request;
        for (DFileFrmt *format : {static_cast<DFileFrmt *>(nullptr), &a, &b, &again})
            request.AddDscr(format, false);
        request.SetInitFile(file);
        request.SetFormat(current);
        EXPECT_FALSE(request.ShowFileDlg(1, "Key", DT_DATA));
        EXPECT_EQ(request.index, index) << file;
        EXPECT_EQ(request.ext, ext) << file;
        EXPECT_EQ(request.key, "Key");
        EXPECT_EQ(request.mode, 1);
    }
}

TEST_F(Request, MoreFormatsThanTheTextHasRoomForAreLeftOutFromTheEnd) {
    Names log;
    auto const former = Report::SetTraceHandler([&log](int, DString const &line) { log.push_back(line); });
    std::list<DFileFrmt> many;
    AskedRequest request;
    for (int i = 0; i < 300; ++i) {
        many.emplace_back("", ("Format with a long name number " + std::to_string(i)).c_str(), "*.xyz");
        request.AddDscr(&many.back(), false);
    }
    request.SetFormat(&many.back());
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_LT(request.filter.size(), FilterBuffer::kSize);
    EXPECT_GT(request.filter.size(), FilterBuffer::kSize - 50);
    EXPECT_TRUE(request.filter.ends_with("|*.xyz||"));
    EXPECT_EQ(request.index, 0) << "the current one is not offered";
    EXPECT_NE(log.back().find("of 300 formats"), DString::npos);
    Report::SetTraceHandler(former);
}

TEST_F(Request, AReadyFilterTextIsMatchedWithTheExtensionAndNothingIsRemembered) {
    AskedRequest request;
    char const *const filter = "Text|*.txt|Tables|*.csv|All|*.*||";
    request.SetInitFile("/x/data.csv");
    EXPECT_FALSE(request.OpenFileDlg(0, filter, nullptr, DT_DATA));
    EXPECT_EQ(request.index, 1);
    EXPECT_EQ(request.ext, "null") << "as it came in";
    EXPECT_EQ(request.key, "");
    request.answer = {"/x/b", "/x/a"};
    EXPECT_TRUE(request.OpenFileDlg(1, nullptr, "gif", DT_DATA));
    EXPECT_EQ(request.GetFile(0)->GetText(), "/x/a");
}

TEST_F(Request, ResultsAreSortedByTheirNamesAndHandedOut) {
    AskedRequest request;
    request.AddDscr(&a, false);
    request.answer = {"/b/Zoe", "/a/adam", "/c/Adam", "/a/Zoe", "/x/\xff"};
    EXPECT_TRUE(request.ShowFileDlg(0, "", DT_DATA));
    Names texts;
    for (int i = 0; i < request.GetNumSlctFiles(); ++i)
        texts.push_back(request.GetFile(i)->GetText());
    EXPECT_EQ(texts, (Names{"/c/Adam", "/b/Zoe", "/a/Zoe", "/a/adam", "/x/\xff"}));
    EXPECT_EQ(request.GetPhysFile(), "/c/Adam");
    std::unique_ptr<BDIMoniker> const second = request.TakeFile(1);
    EXPECT_EQ(second->GetText(), "/b/Zoe");
    EXPECT_EQ(request.GetFile(1)->GetText(), "/a/Zoe");
    EXPECT_EQ(request.GetFile(-1), nullptr);
    EXPECT_EQ(request.GetFileRmv(4), nullptr);
    request.answer.clear();
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(request.GetNumSlctFiles(), 0);
}

TEST_F(Request, ACopySharesTheResultsAndTheLastOneDeletesThem) {
    AskedRequest request;
    request.AddDscr(&a, false);
    request.answer = {"/x/1"};
    EXPECT_TRUE(request.ShowFileDlg(0, "", DT_DATA));
    FileDlg assigned;
    {
        AskedRequest const copy = request;
        EXPECT_EQ(copy.GetFile(0), request.GetFile(0));
        assigned = copy;
    }
    request.answer = {"/x/2"};
    EXPECT_TRUE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(assigned.GetFile(0)->GetText(), "/x/1") << "they are the other copy's now";
    EXPECT_EQ(request.GetFile(0)->GetText(), "/x/2");
}

TEST_F(Request, TheFolderOfAFileAndTheProfilesFolderLeadToTheFile) {
    Profile::WriteString("Settings", "Reports", folder.Path());
    TempFolder const other;
    DString const withSeparator = other.Path() + "/";
    struct Case {
        char const *dir, *key;
        DString folder;
    };
    Case const cases[] = {{other.Path().c_str(), "Reports", folder.Path()},
                          {other.Path().c_str(), "Unknown", other.Path()},
                          {other.Path().c_str(), nullptr, other.Path()},
                          {withSeparator.c_str(), "", other.Path()}};
    for (Case const &c : cases) {
        FileDlg request;
        Shown const shown = Answer([&] { return request.Open(1, FileDlg::FRMT_CSV, "n.txt", c.dir, c.key); }, "n.csv");
        EXPECT_EQ(request.GetPhysFile(), c.folder + "/n.csv");
        EXPECT_EQ(shown.types.size(), 4U) << "the format's three and all files";
        EXPECT_EQ(shown.name, "n.txt");
    }
    EXPECT_EQ(Profile::GetString("Settings", "Unknown", ""), other.Path() + "/");
    FileDlg own;
    Shown const shown = Answer([&] { return own.Open(1, "n.abc", folder.Path().c_str(), nullptr); }, "m.abc");
    EXPECT_EQ(shown.types, (Names{"*.abc", "All Files (*.*)"}));
    EXPECT_EQ(own.GetFormat(), nullptr) << "it has gone with the call";
}

TEST_F(Request, StandardFormatsAreOfferedByModeAndTheirFirstIsCurrent) {
    char const *const text = "Ascii text files, DBase files";
    char const *const tables = "Comma separated list files, Comma separated list files (Transposed)";
    test::Rows<int, int, DString> const cases = {{0, 0, text + DString(", Comma separated list files, All Files")},
                                                 {0, 1, text},
                                                 {0, 2, text},
                                                 {1, 0, tables},
                                                 {1, 1, tables + DString(", Ascii text files")},
                                                 {1, -1, tables},
                                                 {2, 0, "Shape files"},
                                                 {3, 1, "HTML files"},
                                                 {4, 2, "Snippet files"},
                                                 {5, 0, ""}};
    for (auto const &[format, mode, offered] : cases) {
        AskedRequest request;
        request.SetFormat(static_cast<FileDlg::EFormat>(format), mode);
        EXPECT_EQ(request.GetFormat() == nullptr, offered.empty());
        if (offered.empty())
            continue;
        EXPECT_FALSE(request.ShowFileDlg(mode, "", DT_DATA));
        EXPECT_EQ(request.Offered(), offered);
        EXPECT_EQ(request.index, 0);
    }
}

TEST_F(Request, SavingIsThePlatformsAndLoadingTheLibrarysWhereThereIsAFrame) {
    auto const isOwn = [&](int mode) {
        FileDlg request;
        request.SetInitFile(folder.Path() + "/");
        return Answer([&] { return request.OpenXMLData(mode, "A"); }, "").isOwn;
    };
    EXPECT_FALSE(isOwn(0)) << "no window";
    {
        test::Application application;
        EXPECT_TRUE(isOwn(0));
        EXPECT_FALSE(isOwn(1));
        UseStandardDialog();
        EXPECT_FALSE(isOwn(0)) << "the user's option";
        DUserCnfg("Options").WriteString(kStandardDialog, "yes");
        auto *const part = new QWidget(&application.Window());
        platform::SetMainWindow(part);
        EXPECT_TRUE(isOwn(0)) << "a frame around it";
        platform::SetMainWindow(nullptr);
        EXPECT_TRUE(isOwn(0)) << "the frame window that there is";
    }
    QWidget plain;
    plain.show();
    platform::SetMainWindow(&plain);
    EXPECT_FALSE(isOwn(0));
    platform::SetMainWindow(nullptr);
}

TEST_F(Request, FromAnotherThreadThePlatformsDialogComesUp) {
    test::Application const application;
    folder.Write("a.xml");
    FileDlg request;
    request.SetInitFile(folder.Path() + "/");
    Shown const shown = Answer(
        [&] {
            std::atomic<bool> over = false;
            std::thread worker([&] {
                EXPECT_TRUE(request.OpenXMLData(0, "A"));
                over = true;
            });
            EXPECT_TRUE(test::Eventually([&] { return over.load(); }));
            worker.join();
            return true;
        },
        "a.xml");
    EXPECT_FALSE(shown.isOwn);
    EXPECT_EQ(request.GetPhysFile(), folder / "a.xml");
}

TEST_F(Request, BothDialogsStandOverTheMainWindow) {
    test::Application application;
    application.Window().setGeometry(100, 120, 500, 300);
    Profile::SetRegistryKey("Never used before");
    for (int const mode : {0, 1})
        Answer([&] { return FileDlg().OpenXMLData(mode, "A"); }, "",
               [&](QWidget &dialog) {
                   test::Shot(dialog, mode == 0 ? "filedlg-load-xml" : "filedlg-save-xml");
                   QRect const screen = dialog.screen()->availableGeometry();
                   QRect place(QPoint(), dialog.frameSize());
                   place.moveCenter(application.Window().frameGeometry().center());
                   QPoint const away = dialog.frameGeometry().center() - place.center();
                   EXPECT_TRUE(!screen.contains(place) || away.manhattanLength() < 8) << mode << away.x();
               });
    Profile::SetRegistryKey("Zelvar");
}

TEST_F(Request, ALockedDialogHasNoHistoryAndSavesNone) {
    UseStandardDialog();
    folder.Write("a.tif");
    for (DString const &place : {folder.Path(), folder / "a.tif", DString("https://127.0.0.1:1/x.tif")})
        DfltFldrs::Instance()->SaveDirHist("ImageFolders", place);
    EXPECT_EQ(Answer([] { return FileDlg().OpenTiffData(1, "A"); }, "").folders.front(), folder.Path()) << "no files";
    FileDlg request;
    request.SetNoChangeDir();
    Shown const shown = Answer([&] { return request.OpenTiffData(0, "A"); }, "a.tif");
    EXPECT_TRUE(shown.opened) << "it began in the folder used last";
    EXPECT_EQ(shown.folders, Names{});
    DVectorSafe<DString> folders;
    DfltFldrs::Instance()->GetDirHist("ImageFolders", folders, false, true);
    EXPECT_EQ(folders[0], "https://127.0.0.1:1/x.tif");
}

TEST_F(Request, OptionsGoBehindThePath) {
    folder.Write("x");
    for (DString const name : {"x.dat", "x:30.csv", "x}b.csv", "x?n=2", "NETCDF:x:y"})
        for (bool const isGiven : {false, true}) { // the name that the dialog comes up with
            FileDlg request;
            request.SetInitFile(isGiven ? folder / name : folder.Path() + "/");
            request.SetOptions("a=1");
            EXPECT_EQ(Answer([&] { return request.OpenAll(1); }, name).name, isGiven ? name : "");
            bool const isMarked = name.find('?') != DString::npos;
            EXPECT_EQ(request.GetFile(0)->GetText(), folder / name + (isMarked ? "&a=1" : "?a=1"));
            EXPECT_EQ(request.GetPhysFile(), folder / name);
            EXPECT_EQ(request.GetOptions(), "a=1");
        }
}

TEST_F(Request, BadInputCrashesNothing) {
    FileDlg request(nullptr);
    for (DFileFrmt *format : {static_cast<DFileFrmt *>(nullptr), &a, static_cast<DFileFrmt *>(nullptr), &b})
        request.AddDscr(format, false);
    request.SetInitFile(folder / "gone/far/x.b");
    Shown const shown = Answer([&] { return request.OpenSaveHTML(nullptr); }, "");
    EXPECT_EQ(shown.types, (Names{"Alpha (*.a)", "Beta (*.b)", "HTML files (*.html)"}));
    EXPECT_EQ(shown.type, "Beta (*.b)");
    EXPECT_EQ(shown.name, "x.b");
    test::Application const application;
    for (char const *place :
         {"source:nobody", "https://127.0.0.1:1/x.tif", "/no/such/file.b", "GTIFF_DIR:9:/none.tif", "/none.tif?a=b"}) {
        request.SetInitFile(place);
        EXPECT_EQ(Answer([&] { return request.OpenAll(0); }, "").types.front(), "Alpha") << place;
        EXPECT_EQ(Answer([&] { return request.OpenAll(1); }, "").types.front(), "Alpha (*.a)") << place;
    }
    EXPECT_FALSE(FileDlg().OpenActnLib(1));
}

TEST_F(Request, DeadFoldersAreOfferedAtOnceAndNoneIsWaitedFor) {
    constexpr std::chrono::milliseconds soon{300};
    test::SilentMount dead("x.tif");
    DString const gone = dead.IsMounted() ? std::filesystem::path(dead.File()).parent_path().string() : folder / "gone";
    for (int i = 9; i >= 0; --i)
        DfltFldrs::Instance()->SaveDirHist("ImageFolders", gone + "/" + std::to_string(i));
    UseReaderDrivers({.program = ZELVAR_READER, .withInstalledDrivers = false, .modules = {}});
    std::ignore = BDIDrvrMngr::Instance()->Drivers(); // the first reader takes its time
    dead.FallSilent();
    test::Application const application;
    for (DString const &file : {DString(), gone + "/x.tif", "GTIFF_DIR:1:" + gone + "/x.tif"})
        for (int const mode : {0, 1}) {
            auto const begin = std::chrono::steady_clock::now();
            std::chrono::steady_clock::duration took{};
            FileDlg request;
            request.SetInitFile(file);
            Shown const shown = Answer([&] { return request.OpenTiffData(mode, "A"); }, "",
                                       [&](QWidget &) { took = std::chrono::steady_clock::now() - begin; });
            EXPECT_GE(shown.folders.size(), 8U);
            EXPECT_LT(took, soon) << mode << file;
        }
    dead.Answer();
    EndReaders();
}

} // namespace
} // namespace zelvar
