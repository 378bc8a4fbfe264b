// What chosen files become when the drivers sleep and crash, with the real reader.
#include "support/GuiTest.h"
#include "support/HostileFiles.h"
#include "zelvar/filedlg/FileDlg.h"

#include <QtGui/QKeyEvent>

namespace zelvar::test {
namespace {

using std::chrono::milliseconds;

struct HangingContainer : HostileFiles {
    HangingContainer() { m_window.show(); }
    /// Each file gives its own moniker; the user presses Escape after a while.
    void ExpectPlain(std::vector<std::string> const &paths, milliseconds patience) {
        DFileFrmt const format("HOSTILE", "Hostile files", "*.hostile");
        DVectorSafe<DFile> files;
        for (std::string const &path : paths)
            files.push_back(DFile(path));
        DVector<BDIMoniker *> out;
        PressEscapeAfter(patience, m_window);
        EXPECT_TRUE(FileDlg::ResolveBDI(0, BDINode_Raster, &format, "", files, "*.hostile", out, nullptr));
        std::vector<std::string> found;
        for (BDIMoniker const *moniker : out)
            found.push_back(std::unique_ptr<BDIMoniker const>(moniker)->GetSource());
        EXPECT_THAT(found, testing::UnorderedElementsAreArray(paths));
    }

private:
    QWidget m_window;
};

TEST_F(HangingContainer, GivesItsPlainMonikerOnceTheUserHasHadEnough) {
    std::string const asleep = Write("asleep", "open sleep 60\nmembers 3\n");
    auto const begin = Clock::now();
    ExpectPlain({asleep}, milliseconds(500));
    ExpectPlain({asleep, Write("too", "list sleep 60\nmembers 3\n")}, milliseconds(500));
    EXPECT_LT(MillisecondsSince(begin), 20000);
}

TEST_F(HangingContainer, ThatEndsItsReaderStaysWhatItIs) {
    std::string const crash = Write("crash", "open crash\nmembers 3\n");
    ExpectPlain({crash}, milliseconds(60000));
    ExpectPlain({Write("a", "list crash\nmembers 3\n"), Write("b", "open abort\nmembers 3\n")}, milliseconds(60000));
}

} // namespace
} // namespace zelvar::test
