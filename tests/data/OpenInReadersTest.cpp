#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/reader/DriverModule.h"

#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace zelvar {
namespace {

using test::OpenedImage;

/// Images that a single reader holds open; there are none where drivers work in this process.
struct OpenInReaders : test::RealDriversTest {
    static void UseOneReader() {
        ReaderSettings settings = test::PatientReaders();
        settings.imageReaders = 1;
        settings.modules.emplace_back(ZELVAR_HOSTILE);
        test::UseReaders(settings);
    }
    DString WriteLockable() {
        DString path = m_folder / "v.nc";
        test::WriteNetCdf(path, 1);
        return path;
    }
    /// Whether a program that wants the file for itself gets it.
    static bool IsFree(DString const &path) {
        int const file = open(path.c_str(), O_RDWR | O_CLOEXEC);
        bool const free = flock(file, LOCK_EX | LOCK_NB) == 0;
        close(file);
        return free;
    }
};

/// A file whose opening holds the reader until the end of this.
class HoldingFile : test::Pinned {
public:
    explicit HoldingFile(DString path) : m_path(std::move(path)) { EXPECT_EQ(mkfifo(m_path.c_str(), 0600), 0); }
    ~HoldingFile() { Release(); }
    /// Waits until the reader reads it.
    void Await() { m_end = open(m_path.c_str(), O_WRONLY | O_CLOEXEC); }
    /// From now on a file like another.
    void Release() {
        if (m_end < 0)
            return;
        test::TempFolder const folder;
        EXPECT_EQ(rename(folder.Write("plain", "width 8\n").c_str(), m_path.c_str()), 0);
        close(std::exchange(m_end, -1));
    }

private:
    DString m_path;
    int m_end = -1;
};

TEST_F(OpenInReaders, AnImageIsNotLockedAgainstTheProgramThatWritesIt) {
    UseOneReader();
    DString const path = WriteLockable();
    OpenedImage const image(path);
    ASSERT_TRUE(image);
    EXPECT_TRUE(IsFree(path));
}

TEST_F(OpenInReaders, AClosedImageIsLetGoEvenByABusyReader) {
    test::Environment const locking{{{"HDF5_USE_FILE_LOCKING", "TRUE"}}}; // so that it shows who has the file open
    UseOneReader();
    DString const path = WriteLockable();
    std::optional<OpenedImage> image(std::in_place, path);
    ASSERT_TRUE(*image);
    ASSERT_FALSE(IsFree(path));

    HoldingFile other(m_folder / "a.hostile");
    std::thread worker([&] { EXPECT_TRUE(OpenedImage(m_folder / "a.hostile")); });
    other.Await();
    image.reset();
    EXPECT_FALSE(IsFree(path));
    other.Release();
    worker.join();
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!IsFree(path) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_TRUE(IsFree(path));
}

TEST_F(OpenInReaders, AReaderThatIsEndedWithAllOthersIsNoFaultOfItsFile) {
    UseOneReader();
    DString const path = m_folder / "a.hostile";
    HoldingFile file(path);
    ReaderCounts const before = CountReaders();
    std::thread worker([&] { EXPECT_FALSE(OpenedImage(path)); });
    file.Await();
    EndReaders();
    worker.join();
    EXPECT_EQ(ReaderFailureOf(path), "");
    EXPECT_EQ(CountReaders().crashed, before.crashed);
    EXPECT_EQ(CountReaders().killed, before.killed);
    file.Release();
    EXPECT_TRUE(OpenedImage(path));
}

TEST_F(OpenInReaders, AConnectionHasTheDriversOfItsKindAndIsToldItsLogin) {
    using enum ConnectionKind;
    UseOneReader();
    test::HttpServer server;
    server.Serve(
        "/map.xml",
        "<GDAL_WMS><Service name=\"TMS\"><ServerUrl>" + server.Url() +
            "/${z}</ServerUrl></Service><DataWindow><SizeX>640</SizeX><SizeY>480</SizeY><TileLevel>1</TileLevel>"
            "</DataWindow><Projection>EPSG:4326</Projection></GDAL_WMS>");
    for (ConnectionKind const kind : {Address, WebFolder, PostgreSql, MapService}) {
        SetConnectionFinder([&](std::string_view) {
            ConnectionTerms terms{
                .id = "lab", .kind = kind, .options = {{"user", "ann"}}, .secrets = {{"password", "pw"}}};
            terms.hosts = {{"127.0.0.1", static_cast<std::uint16_t>(server.Port())}};
            return terms;
        });
        EXPECT_EQ(!!OpenedImage(server.Url() + "/map.xml"), kind == MapService) << static_cast<int>(kind);
        EXPECT_EQ(CountReaders().crashed, 0);
    }
    SetConnectionFinder(nullptr);
    EXPECT_EQ(server.Logins(), std::set<std::string>{"Basic YW5uOnB3"});
}

} // namespace
} // namespace zelvar
