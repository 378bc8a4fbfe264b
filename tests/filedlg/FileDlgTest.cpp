#include "zelvar/filedlg/FileDlg.h"

#include "support/FileRequests.h"
#include "support/ScriptedDriver.h"
#include "support/SilentMount.h"
#include "zelvar/base/DCnfg.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/filedlg/core/FilterBuffer.h"
#include "zelvar/settings/DfltFldrs.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include <sys/stat.h>

namespace zelvar {
namespace {

using test::Answer;
using test::Shown;
using test::TempFolder;
using Names = std::vector<std::string>;

constexpr char kStandardDialog[] = "General_Use standard windows file selection dialog";
constexpr char kNoFormats[] = "FileDlg::ShowFileDlg: no file types available";

#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // as the class under test

/// A request whose dialog is replaced: it writes down what it is given and answers with files.
class Asked final : public FileDlg {
public:
    using FileDlg::FileDlg;
    using FileDlg::ShowFileDlg;

    Names answer; ///< files chosen; none cancels
    std::function<void()> meanwhile;
    int asked = 0;
    int mode = -1;
    int index = -1;
    DString filter;
    DString ext;
    DString key;

protected:
    bool OpenMFCFileDlg(int mode_, char const *filter_, int index_, char const *ext_, char const *key_,
                        DLGTemplate) override {
        ++asked;
        mode = mode_;
        index = index_;
        filter = filter_;
        ext = ext_ == nullptr ? "null" : ext_;
        key = key_;
        for (DString const &file : answer)
            m_files.push_back(new BDIMoniker(file, nullptr));
        if (meanwhile)
            meanwhile();
        return !answer.empty();
    }
};

class Request : public testing::Test {
protected:
    Request()
        : m_former(Report::SetUserHandler([this](Report::Severity, DString const &text) { m_told.push_back(text); })) {}
    ~Request() override {
        Report::SetUserHandler(m_former);
        EXPECT_EQ(m_told, Names{});
        DUserCnfg("Options").RemoveKey(kStandardDialog);
    }
    Names Told() { return std::exchange(m_told, {}); }
    static void UseStandardDialog() { DUserCnfg("Options").WriteString(kStandardDialog, "true"); }

    test::ScriptedDrivers drivers;
    TempFolder folder;
    DFileFrmt a{"A", "Alpha", "*.a"};
    DFileFrmt b{"B", "Beta", "*.b"};
    DFileFrmt again{"C", "Alpha", "*.c"};

private:
    Names m_told;
    Report::UserHandler m_former;
};

TEST_F(Request, FormatsAreSortedByBytesBehindTheirEquals) {
    Asked request;
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
    EXPECT_EQ(request.GetFormatByName(nullptr), nullptr);
}

TEST_F(Request, WithoutFormatsTheUserIsWarnedAndNothingOpens) {
    Asked request;
    request.answer = {"x"};
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(Told(), Names{kNoFormats});
    EXPECT_EQ(request.GetFormat("A"), nullptr);
    EXPECT_EQ(request.GetFormatByName(nullptr), nullptr);
    EXPECT_EQ(Told(), Names(2, kNoFormats));
    request.AddDscr(nullptr, false);
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(Told(), Names{kNoFormats}) << "a null is no format";
    EXPECT_EQ(request.asked, 0);
}

TEST_F(Request, TheFormatToBeginWithIsTheCurrentOneThatOfTheFileOrTheFirst) {
    struct Case {
        char const *file;
        DFileFrmt *current;
        int index;
        char const *ext;
    };
    Case const cases[] = {{"", nullptr, 0, "*.a"},       {"/x/y.b", nullptr, 1, "*.b"},
                          {"y.B", nullptr, 0, "*.a"},    {"y.b", &a, 0, "*.a"},
                          {"y.a", &again, 0, "*.c"}, // its name is the first's
                          {"/x.b/y", nullptr, 0, "*.a"}, {"", &b, 1, "*.b"}};
    for (Case const &c : cases) {
        Asked request;
        for (DFileFrmt *format : {static_cast<DFileFrmt *>(nullptr), &a, &b, &again})
            request.AddDscr(format, false);
        request.SetInitFile(c.file);
        request.SetFormat(c.current);
        EXPECT_FALSE(request.ShowFileDlg(1, "Key", DT_DATA));
        EXPECT_EQ(request.index, c.index) << c.file;
        EXPECT_EQ(request.ext, c.ext) << c.file;
        EXPECT_EQ(request.key, "Key");
        EXPECT_EQ(request.mode, 1);
    }
    DFileFrmt other("X", "Not offered", "*.x");
    Asked request;
    request.AddDscr(&a, false);
    request.SetFormat(&other);
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(request.index, 0);
    EXPECT_EQ(request.ext, "*.x");
}

TEST_F(Request, MoreFormatsThanTheTextHasRoomForAreLeftOutFromTheEnd) {
    Names log;
    auto const former = Report::SetTraceHandler([&log](int, DString const &line) { log.push_back(line); });
    std::list<DFileFrmt> many;
    Asked request;
    for (int i = 0; i < 300; ++i)
        request.AddDscr(
            &many.emplace_back("", ("Format with a long name number " + std::to_string(i)).c_str(), "*.xyz"), false);
    request.SetFormat(&many.back());
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_LT(request.filter.size(), FilterBuffer::kSize);
    EXPECT_GT(request.filter.size(), FilterBuffer::kSize - 50);
    EXPECT_TRUE(request.filter.ends_with("|*.xyz||"));
    EXPECT_EQ(request.index, 0) << "the current one is not offered";
    EXPECT_EQ(
        std::ranges::count_if(log, [](DString const &line) { return line.find("of 300 formats") != DString::npos; }),
        1);
    Report::SetTraceHandler(former);

    // What stands at the 100th place of the dialog is the 100th format.
    UseStandardDialog();
    FileDlg chosen;
    for (DFileFrmt &format : many)
        chosen.AddDscr(&format, false);
    auto const hundredth = std::next(many.begin(), 99);
    chosen.SetFormat(&*hundredth);
    chosen.SetInitFile(folder / "x.xyz");
    Shown const shown = Answer([&] { return chosen.OpenAll(1); }, "x.xyz");
    EXPECT_EQ(shown.type, test::OnPlatform(*hundredth));
    EXPECT_EQ(chosen.GetFormat(), &*hundredth);
}

TEST_F(Request, ADialogMayAskForAnotherOneMeanwhile) {
    Asked outer;
    outer.AddDscr(&a, false);
    outer.meanwhile = [&] {
        Asked inner;
        inner.AddDscr(&b, false);
        EXPECT_FALSE(inner.ShowFileDlg(0, "", DT_DATA));
        EXPECT_EQ(inner.filter, "Beta|*.b||");
    };
    EXPECT_FALSE(outer.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(outer.filter, "Alpha|*.a||");
}

TEST_F(Request, AReadyFilterTextIsMatchedWithTheExtensionAndNothingIsRemembered) {
    Asked request;
    char const *const filter = "Text|*.txt|Tables|*.csv|All|*.*||";
    request.SetInitFile("/x/data.csv");
    EXPECT_FALSE(request.OpenFileDlg(0, filter, nullptr, DT_DATA));
    EXPECT_EQ(request.index, 1);
    EXPECT_EQ(request.ext, "null") << "as it came in";
    EXPECT_EQ(request.key, "");
    EXPECT_FALSE(request.OpenFileDlg(1, filter, "txt", DT_DATA));
    EXPECT_EQ(request.index, 0);
    request.SetInitFile("");
    EXPECT_FALSE(request.OpenFileDlg(1, filter, nullptr, DT_DATA));
    EXPECT_EQ(request.index, 0) << "an empty extension is in every pattern";
    request.answer = {"/x/b", "/x/a"};
    EXPECT_TRUE(request.OpenFileDlg(1, nullptr, "gif", DT_DATA));
    EXPECT_EQ(request.GetFile(0)->GetText(), "/x/a");
}

TEST_F(Request, ResultsAreSortedByTheirNamesAndHandedOut) {
    Asked request;
    request.AddDscr(&a, false);
    request.answer = {"/b/Zoe", "/a/adam", "/c/Adam", "/a/Zoe", "/x/\xff"};
    EXPECT_TRUE(request.ShowFileDlg(0, "", DT_DATA));
    Names texts;
    for (int i = 0; i < request.GetNumSlctFiles(); ++i)
        texts.push_back(request.GetFile(i)->GetText());
    EXPECT_EQ(texts, (Names{"/c/Adam", "/b/Zoe", "/a/Zoe", "/a/adam", "/x/\xff"}));
    EXPECT_EQ(request.GetPhysFile(), "/c/Adam");
    std::unique_ptr<BDIMoniker> const second(request.GetFileRmv(1));
    EXPECT_EQ(second->GetText(), "/b/Zoe");
    EXPECT_EQ(request.GetFile(1)->GetText(), "/a/Zoe");
    EXPECT_EQ(request.GetNumSlctFiles(), 4);
    EXPECT_EQ(request.GetFile(-1), nullptr);
    EXPECT_EQ(request.GetFileRmv(4), nullptr);
    request.answer.clear();
    EXPECT_FALSE(request.ShowFileDlg(0, "", DT_DATA));
    EXPECT_EQ(request.GetNumSlctFiles(), 0);
}

TEST_F(Request, ACopySharesTheResultsAndTheLastOneDeletesThem) {
    Asked request;
    request.AddDscr(&a, false);
    request.answer = {"/x/1"};
    EXPECT_TRUE(request.ShowFileDlg(0, "", DT_DATA));
    FileDlg assigned;
    {
        Asked const copy = request;
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
    struct Case {
        char const *name, *dir, *key;
        DString folder;
    };
    TempFolder const other;
    DString const withSeparator = other.Path() + "/";
    Case const cases[] = {{"n.txt", other.Path().c_str(), "Reports", folder.Path()},
                          {"n.txt", other.Path().c_str(), "Unknown", other.Path()},
                          {"n.txt", other.Path().c_str(), nullptr, other.Path()},
                          {"n.txt", withSeparator.c_str(), "", other.Path()}};
    for (Case const &c : cases) {
        FileDlg request;
        Shown const shown = Answer([&] { return request.Open(1, FileDlg::FRMT_CSV, c.name, c.dir, c.key); }, "n.csv");
        EXPECT_EQ(request.GetPhysFile(), c.folder + "/n.csv");
        EXPECT_EQ(shown.types.size(), 4U) << "the format's three and all files";
        EXPECT_EQ(shown.name, "n.txt");
        EXPECT_EQ(shown.caption, "Save Data...");
    }
    EXPECT_EQ(Profile::GetString("Settings", "Unknown", ""), other.Path() + "/");
    EXPECT_EQ(Profile::GetString("Settings", "Reports", ""), folder.Path() + "/");

    FileDlg own;
    Shown const shown = Answer([&] { return own.Open(1, "n.abc", folder.Path().c_str(), nullptr); }, "m.abc");
    EXPECT_EQ(shown.types, (Names{"*.abc", "All Files (*.*)"}));
    EXPECT_EQ(own.GetPhysFile(), folder / "m.abc");
    EXPECT_EQ(own.GetFormat(), nullptr) << "it has gone with the call";
    Asked none;
    EXPECT_FALSE(none.Open(0, nullptr, nullptr, nullptr));
    EXPECT_EQ(none.filter, "|*.|All Files|*.*||");
}

TEST_F(Request, StandardFormatsAreOfferedByModeAndTheirFirstIsCurrent) {
    struct Case {
        int format;
        char const *load, *save, *other;
    };
    Case const cases[] = {{0, "txt dbf csv *", "txt dbf", "txt dbf"},
                          {1, "csv tcsv", "csv tcsv txt", "csv tcsv"},
                          {2, "shp", "shp", "shp"},
                          {3, "html", "html", "html"},
                          {4, "slb", "slb", "slb"},
                          {7, "", "", ""}};
    for (Case const &c : cases)
        for (int const mode : {0, 1, 2}) {
            Asked request;
            request.SetFormat(static_cast<FileDlg::EFormat>(c.format), mode);
            DString const wanted = mode == 0 ? c.load : mode == 1 ? c.save : c.other;
            if (wanted.empty()) {
                EXPECT_EQ(request.GetFormat(), nullptr);
                continue;
            }
            EXPECT_FALSE(request.ShowFileDlg(mode, "", DT_DATA));
            DString offered;
            for (std::size_t at = 0; (at = request.filter.find("|*.", at)) != DString::npos; ++at)
                offered += (offered.empty() ? "" : " ") +
                           request.filter.substr(at + 3, request.filter.find('|', at + 3) - at - 3);
            EXPECT_EQ(offered, wanted) << c.format << " " << mode;
            EXPECT_EQ(request.index, 0);
        }
}

TEST_F(Request, SavingIsThePlatformsAndLoadingTheLibrarysWhereThereIsAFrame) {
    folder.Write("a.xml");
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
        EXPECT_TRUE(isOwn(0));
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
    std::atomic<bool> over = false;
    Shown const shown = Answer(
        [&] {
            bool opened = false;
            std::thread worker([&] {
                opened = request.OpenXMLData(0, "A");
                over = true;
            });
            EXPECT_TRUE(test::Eventually([&] { return over.load(); }));
            worker.join();
            return opened;
        },
        "a.xml");
    EXPECT_TRUE(shown.opened);
    EXPECT_FALSE(shown.isOwn);
    EXPECT_EQ(request.GetPhysFile(), folder / "a.xml");
}

TEST_F(Request, BothDialogsStandOverTheMainWindow) {
    test::Application application;
    application.Window().setGeometry(100, 120, 500, 300);
    QPoint const middle = application.Window().frameGeometry().center();
    for (int const mode : {0, 1}) {
        FileDlg request;
        request.SetInitFile(folder.Path() + "/");
        Profile::SetRegistryKey("Never used before");
        Answer([&] { return request.OpenXMLData(mode, "A"); }, "",
               [&](QWidget &dialog) {
                   test::Shot(dialog, mode == 0 ? "filedlg-load-xml" : "filedlg-save-xml");
                   EXPECT_TRUE(dialog.isModal());
                   EXPECT_EQ(dialog.parentWidget(), nullptr);
                   QRect const screen = dialog.screen()->availableGeometry();
                   QPoint const away = dialog.frameGeometry().center() - middle;
                   bool const isClipped = !screen.contains(QRect(middle - dialog.rect().center(), dialog.frameSize()));
                   EXPECT_TRUE(isClipped || away.manhattanLength() < 8) << mode << " " << away.x() << " " << away.y();
               });
        Profile::SetRegistryKey("Zelvar");
    }
}

TEST_F(Request, ALockedDialogHasNoHistoryAndSavesNone) {
    UseStandardDialog();
    folder.Write("a.tif");
    DfltFldrs::Instance()->SaveDirHist("ImageFolders", folder.Path());
    FileDlg request;
    request.SetNoChangeDir();
    Shown const shown = Answer([&] { return request.OpenTiffData(0, "A"); }, "a.tif");
    EXPECT_TRUE(shown.opened) << "it began in the folder used last";
    EXPECT_EQ(shown.folders, Names{});
    DVectorSafe<DString> folders;
    DfltFldrs::Instance()->GetDirHist("ImageFolders", folders, false, true);
    EXPECT_EQ(folders[0], folder.Path());
}

TEST_F(Request, OptionsGoBehindThePath) {
    FileDlg request;
    request.SetInitFile(folder.Path() + "/");
    request.SetOptions("a=1");
    Answer([&] { return request.OpenAll(1); }, "x.dat");
    EXPECT_EQ(request.GetFile(0)->GetText(), folder / "x.dat?a=1");
    EXPECT_EQ(request.GetPhysFile(), folder / "x.dat");
    EXPECT_EQ(request.GetOptions(), "a=1");
}

TEST_F(Request, BadInputCrashesNothing) {
    UseStandardDialog();
    FileDlg request(nullptr);
    request.SetCaption(nullptr);
    for (DFileFrmt *format : {static_cast<DFileFrmt *>(nullptr), &a, static_cast<DFileFrmt *>(nullptr), &b})
        request.AddDscr(format, false);
    request.SetInitFile(folder / "gone/far/x.b");
    Shown shown = Answer([&] { return request.OpenSaveHTML(nullptr); }, "");
    EXPECT_EQ(shown.types, (Names{"Alpha (*.a)", "Beta (*.b)", "HTML files (*.html)"}));
    EXPECT_EQ(shown.type, "Beta (*.b)");
    EXPECT_EQ(shown.name, "x.b");
    request.SetInitFile("source:nobody");
    EXPECT_FALSE(Answer([&] { return request.OpenAll(0); }, "").opened);
    DUserCnfg("Options").RemoveKey(kStandardDialog);
    test::Application const application;
    for (char const *place :
         {"source:nobody", "https://127.0.0.1:1/x.tif", "/no/such/file.b", "GTIFF_DIR:9:/none.tif"}) {
        request.SetInitFile(place);
        shown = Answer([&] { return request.OpenAll(0); }, "");
        EXPECT_EQ(shown.types.front(), "Alpha") << place;
    }
    EXPECT_FALSE(FileDlg().OpenActnLib(1));
    EXPECT_TRUE(
        FileDlg::ResolveBDI(0, 0, nullptr, "", {}, nullptr, *std::make_unique<DVector<BDIMoniker *>>(), nullptr));
}

TEST_F(Request, AHistoryOfDeadFoldersIsShownAtOnce) {
    constexpr std::chrono::milliseconds soon{300};
    test::SilentMount dead("x.tif");
    DString const gone = dead.IsMounted() ? std::filesystem::path(dead.File()).parent_path().string() : folder / "gone";
    for (int i = 9; i >= 0; --i)
        DfltFldrs::Instance()->SaveDirHist("ImageFolders", gone + "/" + std::to_string(i));
    DfltFldrs::Instance()->SaveDirHist("ImageFolders", gone);
    UseReaderDrivers({.program = ZELVAR_READER, .withInstalledDrivers = false, .modules = {}});
    std::ignore = BDIDrvrMngr::Instance()->Drivers(); // the first reader takes its time
    dead.FallSilent();
    test::Application const application;
    struct Case {
        int mode;
        DString file;
    };
    for (Case const &c :
         {Case{0, ""}, {1, ""}, {0, gone + "/x.tif"}, {1, gone + "/x.tif"}, {0, "GTIFF_DIR:1:" + gone + "/x.tif"}}) {
        int const mode = c.mode;
        auto const begin = std::chrono::steady_clock::now();
        std::chrono::steady_clock::duration took{};
        FileDlg request;
        request.SetInitFile(c.file);
        Shown const shown = Answer([&] { return request.OpenTiffData(mode, "A"); }, "",
                                   [&](QWidget &) { took = std::chrono::steady_clock::now() - begin; });
        EXPECT_FALSE(shown.opened);
        EXPECT_GE(shown.folders.size(), 8U);
        EXPECT_LT(took, soon) << mode << c.file;
    }
    dead.Answer();
    EndReaders();
}

} // namespace
} // namespace zelvar
