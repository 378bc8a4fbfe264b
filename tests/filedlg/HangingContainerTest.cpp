// What chosen files become when the drivers sleep and crash, with the real reader.
#include "support/GuiTest.h"
#include "support/HostileFiles.h"
#include "zelvar/filedlg/FileDlg.h"

#include <QtGui/QKeyEvent>

namespace zelvar {
namespace {

using std::chrono::milliseconds;

struct HangingContainer : test::HostileFiles {
    HangingContainer() { m_window.show(); }
    /// How many monikers the files give; the user presses Escape after a while.
    std::size_t Resolve(std::vector<std::string> const &paths, milliseconds patience) {
        DFileFrmt const format("HOSTILE", "Hostile files", "*.hostile");
        DVectorSafe<DFile> files;
        for (std::string const &path : paths)
            files.push_back(DFile(path));
        DVector<BDIMoniker *> out;
        m_begin = Clock::now();
        PressEscapeAfter(patience);
        EXPECT_TRUE(FileDlg::ResolveBDI(0, BDINode_Raster, &format, "", files, "*.hostile", out, nullptr));
        std::size_t const count = out.size();
        for (BDIMoniker const *moniker : out) {
            EXPECT_NE(std::find(paths.begin(), paths.end(), moniker->GetSource()), paths.end()) << moniker->GetText();
            delete moniker;
        }
        return count;
    }

private:
    /// By queued calls: timers wait while the windows' thread asks drivers.
    void PressEscapeAfter(milliseconds patience) {
        QMetaObject::invokeMethod(
            &m_window,
            [this, patience] {
                if (Clock::now() - m_begin < patience)
                    return PressEscapeAfter(patience);
                QCoreApplication::postEvent(&m_window, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
            },
            Qt::QueuedConnection);
    }
    QWidget m_window;
    Clock::time_point m_begin;
};

TEST_F(HangingContainer, GivesItsPlainMonikerOnceTheUserHasHadEnough) {
    std::string const asleep = Write("asleep", "open sleep 60\nmembers 3\n");
    auto const begin = Clock::now();
    EXPECT_EQ(Resolve({asleep}, milliseconds(500)), 1U);
    EXPECT_EQ(Resolve({asleep, Write("too", "list sleep 60\nmembers 3\n")}, milliseconds(500)), 2U);
    EXPECT_LT(MillisecondsSince(begin), 20000);
}

TEST_F(HangingContainer, ThatEndsItsReaderStaysWhatItIs) {
    EXPECT_EQ(Resolve({Write("crash", "open crash\nmembers 3\n")}, milliseconds(60000)), 1U);
    EXPECT_EQ(
        Resolve({Write("a", "list crash\nmembers 3\n"), Write("b", "open abort\nmembers 3\n")}, milliseconds(60000)),
        2U);
}

} // namespace
} // namespace zelvar
