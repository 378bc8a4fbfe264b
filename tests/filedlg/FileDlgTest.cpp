#include "zelvar/filedlg/FileDlg.h"

#include "support/FileRequests.h"
#include "support/RequestProbe.h"
#include "support/ScriptedDriver.h"
#include "support/SilentMount.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/filedlg/core/FilterBuffer.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <filesystem>
#include <future>

namespace zelvar::test {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct Request : FileDialogTest {
    ~Request() override {
        UseStandardDialog("");
        platform::SetMainWindow(nullptr);
    }

    ScriptedDrivers drivers;
    DFileFrmt a{"A", "Alpha", "*.a"};
    DFileFrmt b{"B", "Beta", "*.b"};
    DFileFrmt again{"C", "Alpha", "*.c"};
    AskedRequest request;
};

TEST_F(Request, FormatsAreSortedByBytesBehindTheirEquals) {
    DFileFrmt small("", "alpha", "*.d");
    for (DFileFrmt *format : {&small, &b, &a, &again})
        request.AddDscr(format, true);
    request.AddDscr(nullptr, true);
    EXPECT_FALSE(request.ShowFileDlg(0, "K", DT_DATA));
    EXPECT_EQ(request.filter, "Alpha|*.a|Alpha|*.c|Beta|*.b|alpha|*.d||");
    request.RmvDscr(&a);
    request.RmvDscr(&a);
    EXPECT_EQ(request.GetFormatByName("Alpha"), &again);
    for (auto const &[id, format] :
         Rows<char const *, DFileFrmt *>{{"B", &b}, {"b", nullptr}, {"", &small}, {nullptr, nullptr}})
        EXPECT_EQ(request.GetFormat(id), format);
}

TEST_F(Request, WithoutFormatsTheUserIsWarnedAndNothingOpens) {
    EXPECT_EQ(request.GetFormat("A"), nullptr);
    EXPECT_EQ(request.GetFormatByName(nullptr), nullptr);
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    request.AddDscr(nullptr, false); // is no format
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(told.Take(), Names(4, "FileDlg::ShowFileDlg: no file types available"));
    EXPECT_EQ(request.asked, 0);
}

TEST_F(Request, TheFormatToBeginWithIsTheCurrentOneThatOfTheFileOrTheFirst) {
    DFileFrmt other("X", "Not offered", "*.x");
    Rows<char const *, DFileFrmt *, int, char const *> const cases = {
        {"", nullptr, 0, "*.a"},       {"/x/y.b", nullptr, 1, "*.b"}, {"y.B", nullptr, 0, "*.a"},
        {"y.b", &a, 0, "*.a"},         {"y.a", &again, 0, "*.c"}, // its name is the first's
        {"/x.b/y", nullptr, 0, "*.a"}, {"", &other, 0, "*.x"}};
    for (DFileFrmt *format : {static_cast<DFileFrmt *>(nullptr), &a, &b, &again})
        request.AddDscr(format, false);
    for (auto const &[file, current, index, ext] : cases) {
        request.SetInitFile(file);
        request.SetFormat(current);
        EXPECT_FALSE(request.ShowFileDlg(1, "Key", DT_DATA));
        EXPECT_EQ(request.index, index) << file;
        EXPECT_EQ(request.ext, ext) << file;
        EXPECT_EQ(request.key, "Key");
        EXPECT_EQ(request.mode, 1);
    }
}

TEST_F(Request, FormatsThatTheTextHasNoRoomForAreLeftOutFromTheEnd) {
    Traced const traced;
    DFileFrmt large("", DString(FilterBuffer::kSize, 'x').c_str(), "*.x");
    for (DFileFrmt *format : {&a, &large, &b})
        request.AddDscr(format, false);
    request.SetFormat(&b);
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(request.filter, "Alpha|*.a||");
    EXPECT_EQ(request.index, 0) << "the current one is not offered";
    EXPECT_THAT(traced.Last(), HasSubstr("for 2 of 3 formats"));
}

TEST_F(Request, AReadyFilterTextIsMatchedWithTheExtensionAndNothingIsRemembered) {
    request.SetInitFile("/x/data.csv");
    EXPECT_FALSE(request.OpenFileDlg(0, "Text|*.txt|Tables|*.csv|All|*.*||", nullptr, DT_DATA));
    EXPECT_EQ(request.index, 1);
    EXPECT_EQ(request.ext, "null") << "as it came in";
    EXPECT_EQ(request.key, "");
    request.answer = {"/x/b", "/x/a"};
    EXPECT_TRUE(request.OpenFileDlg(1, nullptr, "gif", DT_DATA));
    EXPECT_EQ(request.GetFile(0)->GetText(), "/x/a");
    Application const application;
    FileDlg own;
    own.AddDscr(&b, false);
    auto const open = [&] { return own.OpenFileDlg(0, "Text|*.txt||", nullptr, DT_DATA); };
    EXPECT_EQ(Answer(open, "").type, "Beta") << "the library's dialog shows the formats alone";
    EXPECT_EQ(own.GetFormat(), &b);
}

TEST_F(Request, ResultsAreSortedByTheirNamesAndHandedOut) {
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
    ScriptedTreeDriver &driver = ScriptedDrivers::AddTree("T");
    driver.SetTree("/x/1", {.name = "1"});
    request.AddDscr(&a, false);
    request.answer = {"/x/1"};
    EXPECT_TRUE(request.ShowFileDlg(0, "", DT_DATA));
    request.GetFile(0)->SetDrvr(&driver);
    EXPECT_NE(request.GetFile(0)->GetNode(), nullptr);
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
    EXPECT_EQ(driver.OpenTrees(), 1);
    assigned = request;
    EXPECT_EQ(driver.OpenTrees(), 0);
}

TEST_F(Request, TheFolderOfAFileAndTheProfilesFolderLeadToTheFile) {
    Profile::WriteString("Settings", "Reports", folder.Path());
    TempFolder const other;
    DString const bare = other.Path();
    Rows<DString, char const *, DString> const cases = {
        {bare, "Reports", folder.Path()}, {bare, "Unknown", bare}, {bare, nullptr, bare}, {bare + "/", "", bare}};
    for (auto const &[dir, key, used] : cases) {
        FileDlg opened;
        Shown const shown =
            Answer([&, d = dir.c_str(), k = key] { return opened.Open(1, FileDlg::FRMT_CSV, "n.txt", d, k); }, "n.csv");
        EXPECT_EQ(opened.GetPhysFile(), used + "/n.csv");
        EXPECT_EQ(shown.types.size(), 4U) << "the format's three and all files";
        EXPECT_EQ(shown.name, "n.txt");
    }
    EXPECT_EQ(Profile::GetString("Settings", "Unknown", ""), bare + "/");
    FileDlg own;
    Shown const shown = Answer([&] { return own.Open(1, "n.abc", bare.c_str(), nullptr); }, "m.abc");
    EXPECT_EQ(shown.types, (Names{"*.abc", "All Files (*.*)"}));
    EXPECT_EQ(own.GetFormat(), nullptr) << "it has gone with the call";
}

TEST_F(Request, AProjectRemembersItsFolderBeforeThatOfTheKind) {
    Profile::WriteString("Settings", "Results", folder.Path());
    TempFolder const other;
    auto const save = [&](char const *dir) {
        FileDlg opened;
        Answer([&] { return opened.Open(1, FileDlg::FRMT_CSV, "n.csv", dir, "Results"); }, "n.csv");
        return opened.GetPhysFile();
    };
    FileDlg::SetProject("p");
    EXPECT_EQ(save(other.Path().c_str()), folder / "n.csv") << "that of the kind, now the project's, too";
    FileDlg::SetProject("");
    Profile::WriteString("Settings", "Results", other.Path());
    EXPECT_EQ(save(nullptr), other / "n.csv");
    FileDlg::SetProject("p");
    EXPECT_EQ(save(nullptr), folder / "n.csv");
    FileDlg::SetProject("");
}

TEST_F(Request, StandardFormatsAreOfferedByModeAndTheirFirstIsCurrent) {
    DString const text = "Ascii text files, DBase files";
    DString const tables = "Comma separated list files, Comma separated list files (Transposed)";
    Rows<int, int, DString> const cases = {
        {0, 1, text},   {1, -1, tables},       {4, 2, "Snippet files"},
        {0, 2, text},   {3, 1, "HTML files"},  {1, 1, tables + ", Ascii text files"},
        {1, 0, tables}, {2, 0, "Shape files"}, {0, 0, text + ", Comma separated list files, All Files"}};
    for (auto const &[format, mode, offered] : cases) {
        AskedRequest standard;
        standard.SetFormat(static_cast<FileDlg::EFormat>(format), mode);
        EXPECT_FALSE(standard.ShowFileDlg(mode, "", DT_DATA));
        EXPECT_EQ(standard.Offered(), offered);
        EXPECT_EQ(standard.index, 0);
    }
    request.SetFormat(static_cast<FileDlg::EFormat>(5), 0);
    EXPECT_EQ(request.GetFormat(), nullptr);
}

TEST_F(Request, SavingIsThePlatformsAndLoadingTheLibrarysWhereThereIsAFrame) {
    auto const isOwn = [&](int mode, std::launch thread = std::launch::deferred, DString const &name = "") {
        FileDlg loading;
        loading.SetInitFile(folder.Path() + "/");
        auto const open = [&] {
            auto opened = std::async(thread, [&] { return loading.OpenXMLData(mode, "A"); });
            return Eventually([&] { return opened.wait_for(0s) != std::future_status::timeout; }) && opened.get();
        };
        Shown const shown = Answer(open, name);
        EXPECT_EQ(loading.GetPhysFile(), name.empty() ? "." : folder / name);
        EXPECT_EQ(shown.opened, !name.empty());
        return shown.isOwn;
    };
    Write({"a.xml"});
    EXPECT_FALSE(isOwn(0)) << "no window";
    {
        Application application;
        EXPECT_TRUE(isOwn(0) && !isOwn(1));
        EXPECT_FALSE(isOwn(0, std::launch::async, "a.xml")) << "from another thread";
        UseStandardDialog("true");
        EXPECT_FALSE(isOwn(0)) << "the user's option";
        UseStandardDialog("yes");
        platform::SetMainWindow(new QWidget(&application.Window()));
        EXPECT_TRUE(isOwn(0)) << "a frame around it";
        platform::SetMainWindow(nullptr);
        EXPECT_TRUE(isOwn(0)) << "the frame window that there is";
    }
    QWidget plain;
    plain.show();
    platform::SetMainWindow(&plain);
    EXPECT_FALSE(isOwn(0));
}

TEST_F(Request, BothDialogsStandOverTheMainWindow) {
    Application application;
    application.Window().setGeometry(100, 120, 500, 300);
    Profile::SetRegistryKey("Never used before");
    for (int const mode : {0, 1})
        Answer([&] { return FileDlg().OpenXMLData(mode, "A"); }, "",
               [&](QWidget &dialog) {
                   Shot(dialog, mode == 0 ? "filedlg-load-xml" : "filedlg-save-xml");
                   QRect place(QPoint(), dialog.frameSize());
                   place.moveCenter(application.Window().frameGeometry().center());
                   QPoint const away = dialog.frameGeometry().center() - place.center();
                   EXPECT_EQ(dialog.windowHandle()->transientParent(), application.Window().windowHandle());
                   EXPECT_TRUE(away.manhattanLength() < 8 || !dialog.screen()->availableGeometry().contains(place));
               });
    Profile::SetRegistryKey("Zelvar");
}

TEST_F(Request, ALockedDialogHasNoHistoryAndSavesNone) {
    UseStandardDialog("true");
    folder.Write("a.tif");
    for (DString const &place : {folder.Path(), folder / "a.tif", DString("https://127.0.0.1:1/x.tif")})
        DfltFldrs::Instance()->SaveDirHist("ImageFolders", place);
    EXPECT_EQ(Answer([] { return FileDlg().OpenTiffData(1, "A"); }, "").folders.front(), folder.Path()) << "no files";
    FileDlg locked;
    locked.SetNoChangeDir();
    Shown const shown = Answer([&] { return locked.OpenTiffData(0, "A"); }, "a.tif");
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
            FileDlg saving;
            saving.SetInitFile(isGiven ? folder / name : folder.Path() + "/");
            saving.SetOptions("a=1");
            EXPECT_EQ(Answer([&] { return saving.OpenAll(1); }, name).name, isGiven ? name : "");
            DString const mark = name.find('?') != DString::npos ? "&" : "?";
            EXPECT_EQ(saving.GetFile(0)->GetText(), folder / name + mark + "a=1");
            EXPECT_EQ(saving.GetPhysFile(), folder / name);
            EXPECT_EQ(saving.GetOptions(), "a=1");
        }
}

TEST_F(Request, BadInputCrashesNothing) {
    FileDlg bad(nullptr);
    for (DFileFrmt *format : {static_cast<DFileFrmt *>(nullptr), &a, static_cast<DFileFrmt *>(nullptr), &b})
        bad.AddDscr(format, false);
    bad.SetInitFile(folder / "gone/far/x.b");
    Shown const shown = Answer([&] { return bad.OpenSaveHTML(nullptr); }, "");
    EXPECT_EQ(shown.types, (Names{"Alpha (*.a)", "Beta (*.b)", "HTML files (*.html)"}));
    EXPECT_EQ(shown.type, "Beta (*.b)");
    EXPECT_EQ(shown.name, "x.b");
    Application const application;
    for (char const *place :
         {"source:nobody", "https://127.0.0.1:1/x.tif", "/no/such/file.b", "GTIFF_DIR:9:/none.tif", "/none.tif?a=b"})
        for (int const mode : {0, 1}) {
            bad.SetInitFile(place);
            EXPECT_THAT(Answer([&] { return bad.OpenAll(mode); }, "").types.front(), HasSubstr("Alpha")) << place;
        }
    EXPECT_FALSE(FileDlg().OpenActnLib(1));
}

TEST_F(Request, DeadFoldersAreOfferedAtOnceAndNoneIsWaitedFor) {
    SilentMount dead("x.tif");
    DString const gone = dead.IsMounted() ? std::filesystem::path(dead.File()).parent_path().string() : folder / "gone";
    for (int i = 9; i >= 0; --i)
        DfltFldrs::Instance()->SaveDirHist("ImageFolders", gone + "/" + std::to_string(i));
    UseReaderDrivers({.program = ZELVAR_READER, .withInstalledDrivers = false, .modules = {}});
    std::ignore = BDIDrvrMngr::Instance()->Drivers(); // the first reader takes its time
    dead.FallSilent();
    Application const application;
    for (DString const &file : {DString(), gone + "/x.tif", "GTIFF_DIR:1:" + gone + "/x.tif"})
        for (int const mode : {0, 1}) {
            auto const begin = std::chrono::steady_clock::now();
            FileDlg opening;
            opening.SetInitFile(file);
            Shown const shown =
                Answer([&] { return opening.OpenTiffData(mode, "A"); }, "",
                       [&](QWidget &) { EXPECT_LT(std::chrono::steady_clock::now() - begin, 300ms) << mode << file; });
            EXPECT_GE(shown.folders.size(), 8U);
        }
    dead.Answer();
    EndReaders();
}

} // namespace
} // namespace zelvar::test
