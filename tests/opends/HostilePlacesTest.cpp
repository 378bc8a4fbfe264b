// The dialog over places whose drivers sleep and crash, with the real reader.
#include "support/HostileFiles.h"
#include "support/OpenDialogHand.h"
#include "support/Processes.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/ImagePreviewWnd.h"
#include "zelvar/opends/OpenFeatures.h"

#include <QtCore/QProcess>
#include <QtGui/QKeyEvent>

#include <unistd.h>

namespace zelvar::test {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kSeen{300 * kSlower};
constexpr milliseconds kSmooth{100 * kSlower};
constexpr milliseconds kPatience{450}; ///< of a user who presses Escape then
constexpr int kTries = 3;              // the best counts: the machine may be under load
constexpr int kMostReaders = 5;

/// Calls `act` once `when` is true. Asks by queued calls, so also while the windows' thread lists.
void Whenever(QObject *context, std::function<bool()> when, std::function<void()> act) {
    QMetaObject::invokeMethod(
        context,
        [=] {
            if (when())
                act();
            else
                Whenever(context, when, act);
        },
        Qt::QueuedConnection);
}

/// When a widget is painted.
class Paints : public QObject {
public:
    explicit Paints(QWidget &widget) { widget.installEventFilter(this); }
    int count = 0;
    Clock::time_point first{};

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Paint && count++ == 0)
            first = Clock::now();
        return false;
    }
};

struct HostilePlaces : HostileFiles {
    HostilePlaces() { Warm({}); }
    void TearDown() override {
        // A dialog leaves its worker behind, which needs the drivers until it has let go of its item.
        for (auto const &[key, item] : m_clicked)
            EXPECT_TRUE(Eventually([&item = item] {
                std::ignore = RefItemPtr<DataSourceItem>(item); // comes after what the worker did with it
                return item->RefCount() == 1;
            })) << item->GetPath();
        m_clicked.clear();
    }
    /// Readers that are running and have loaded their drivers.
    static void Warm(ReaderSettings const &settings) {
        Use(settings);
        WarmReaders();
        ASSERT_NE(BDIDrvrMngr::Instance()->GetDrvr("HOSTILE"), nullptr);
    }

    DialogPtr Make(DString const &place) {
        DlgOpenDS::SetFeatures(kOpenPlain); // a row for each of the numbered files
        DialogPtr dialog(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, "ImageFolders", nullptr));
        dialog->SetBDIFilter(BDINode_Raster);
        dialog->SetInitDir(place.c_str());
        return dialog;
    }
    DialogPtr Make() { return Make(folder.Path()); }
    /// Once the list has so many rows.
    static void Run(DlgOpenDS &dialog, int rows, std::function<void()> const &act) {
        RunWhen(
            dialog, [&] { return dialog.MainList() != nullptr && dialog.MainList()->GetNumRow() == rows; }, act);
    }

    void ClickRow(DSListCtrl &list, DString const &name) {
        RefItemPtr<DataSourceItem> const item = list.ItemAt(RowOf(list, name));
        m_clicked[item.get()] = item;
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, PlaceOf(list, name));
    }
    static DString Shown(DlgOpenDS &dialog, DString const &name) { return PropertyIn(*dialog.PropertyWnd(), name); }
    static bool HasPreview(DlgOpenDS &dialog) {
        return dialog.PropertyWnd()->Preview()->GetMode() == ImagePreviewWnd::ModeCanvas;
    }
    void ExpectShown(DlgOpenDS &dialog, DString const &name, DString const &below = {}) {
        DString const path = folder / (below.empty() ? name : below + "/" + name);
        ClickRow(*dialog.MainList(), name);
        EXPECT_TRUE(Eventually([&] {
            return Shown(dialog, "Path") == path && Shown(dialog, "Image Width") == "8" && HasPreview(dialog);
        })) << path
            << ", but " << Shown(dialog, "Path");
    }
    /// Whatever was ended is gone, and not more runs than may.
    static void ExpectNoReaderLeftOver() {
        EXPECT_TRUE(Eventually([] {
            int count = 0;
            for (auto const &[process, state] : ChildrenOf(getpid()))
                count += state == 'Z' ? 1000 : 1;
            ReaderCounts const readers = CountReaders();
            return readers.leftBehind == 0 && readers.alive == count && count <= kMostReaders;
        })) << CountReaders().alive
            << " alive, " << CountReaders().leftBehind << " left behind";
    }
    DFileFrmt all{"", "All Files (*.*)", "*.*"};

private:
    std::map<DataSourceItem *, RefItemPtr<DataSourceItem>> m_clicked;
};

TEST_F(HostilePlaces, TheDialogIsSeenBeforeItsPlaceAnswers) {
    for (auto const &[name, script, isContainer] :
         Rows<char const *, char const *, bool>{{"opens late", "members 3\nopen sleep 30\n", true},
                                                {"lists late", "members 3\nlist sleep 30\n", true},
                                                {"holds what is probed late", "members 3\nprobe sleep 30\n", false}}) {
        milliseconds best = milliseconds::max();
        for (int i = 0; i < kTries && best >= kSeen; ++i) {
            // Another one each time: what came late is remembered.
            DString const at = name + std::to_string(i);
            for (int file = 0; file < 10; ++file)
                std::ignore = Write(at + "/" + std::to_string(file), script);
            auto const begin = Clock::now();
            DialogPtr const dialog = Make(folder / at + (isContainer ? "/0.hostile" : ""));
            Paints const paints(*dialog);
            if (isContainer) {
                Whenever(
                    dialog.get(), [&] { return paints.count > 0; }, [&] { PressEscapeAfter(kPatience, *dialog); });
                RunWhen(
                    *dialog, [&] { return paints.count > 0 && Since(begin) > kPatience; },
                    [&] { EXPECT_EQ(dialog->MainList()->GetNumRow(), 0); });
                EXPECT_LT(Since(begin), milliseconds(3000) * kSlower) << name;
            } else {
                Run(*dialog, 10, [] {});
            }
            best = std::min(best, std::chrono::duration_cast<milliseconds>(paints.first - begin));
        }
        EXPECT_LT(best, kSeen) << name;
        RecordProperty(name, static_cast<int>(best.count()));
    }
}

TEST_F(HostilePlaces, WhatWasNotToldBeforeTheFirstPaintIsFoundOutBehindIt) {
    Warm({.probeInListing = milliseconds(5000), .patience = milliseconds(5000), .program = {}, .modules = {}});
    folder.Write("good.hostile");
    folder.Write("late.hostile", "members 2\nprobe sleep 0.15\n");
    DialogPtr const dialog = Make();
    Run(*dialog, 1, [&] {
        EXPECT_EQ(RowOf(*dialog->MainList(), "good.hostile"), 0);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->FolderList(), "late.hostile") >= 0; }));
    });
}

TEST_F(HostilePlaces, ClickingThroughFilesThatDoNotAnswerHoldsNothingUp) {
    DString const calls[] = {"open", "describe", "read"};
    for (int i = 0; i < 10; ++i)
        folder.Write("bad" + std::to_string(i) + ".hostile", calls[i % 3] + " sleep 30\n");
    folder.Write("good.hostile", "width 8\n");
    DialogPtr const dialog = Make();
    Run(*dialog, 11, [&] {
        milliseconds best = milliseconds::max();
        for (int round = 0; round < kTries && best >= kSmooth; ++round) {
            milliseconds longest{0};
            Clock::time_point last = Clock::now();
            int ticks = 0;
            QTimer timer;
            timer.setTimerType(Qt::PreciseTimer);
            QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
                longest = std::max(longest, Since(std::exchange(last, Clock::now())));
                ++ticks;
            });
            timer.start(10);
            for (int i = 0; i < 10; ++i) {
                ClickRow(*dialog->MainList(), "bad" + std::to_string(i) + ".hostile");
                EXPECT_TRUE(Eventually([&, until = ticks + 8] { return ticks >= until; }));
                EXPECT_TRUE(dialog->PropertyWnd()->IsReading());
            }
            ExpectShown(*dialog, "good.hostile");
            longest = std::max(longest, Since(last));
            best = std::min(best, longest);
        }
        EXPECT_LT(best, kSmooth);
        RecordProperty("longest_gap", static_cast<int>(best.count()));
        ExpectNoReaderLeftOver();
    });
}

TEST_F(HostilePlaces, ClosingDoesNotWaitForWhatIsRead) {
    for (DString const call : {"open", "describe", "read", "probe"})
        folder.Write(call + ".hostile", call + " sleep 30\n");
    milliseconds best = milliseconds::max();
    for (int i = 0; i < kTries && best >= kSmooth; ++i) {
        milliseconds worst{0};
        for (DString const call : {"open", "describe", "read", "probe"}) {
            DialogPtr dialog = Make();
            Clock::time_point begin;
            Run(*dialog, 4, [&] {
                ClickRow(*dialog->MainList(), call + ".hostile");
                EXPECT_TRUE(Eventually([&] { return dialog->PropertyWnd()->IsReading(); }));
                begin = Clock::now();
            });
            dialog.reset();
            worst = std::max(worst, Since(begin));
        }
        best = std::min(best, worst);
    }
    EXPECT_LT(best, kSmooth);
    RecordProperty("close", static_cast<int>(best.count()));
    ExpectNoReaderLeftOver();
}

TEST_F(HostilePlaces, EscapeEndsALongListingAndWhatWasFoundStays) {
    Warm({.patience = milliseconds(60'000), .program = {}, .modules = {}});
    constexpr int kFolders = 40; // a quarter of a second each
    for (int i = 0; i < kFolders; ++i) {
        folder.Write("f" + std::to_string(i) + "/a.hostile", "probe sleep 30\n");
        folder.Write("f" + std::to_string(i) + "/b.txt");
    }
    folder.Write("first.txt");
    DialogPtr const dialog = Make();
    Run(*dialog, 1, [&] {
        int paintsMeanwhile = 0;
        bool isListing = true;
        Paints const paints(*dialog);
        auto *const filter = platform::GetDlgItem<QLineEdit>(*dialog, kFileFilterId);
        QString const text = filter->text();
        filter->setFocus();
        auto const begin = Clock::now();
        // Before its time it is nobody's; keys and clicks are dropped; the window is painted.
        for (QEvent::Type const type : {QEvent::KeyPress, QEvent::KeyRelease})
            QCoreApplication::postEvent(dialog.get(), new QKeyEvent(type, Qt::Key_Escape, Qt::NoModifier));
        Whenever(
            dialog.get(), [&] { return Since(begin) > milliseconds(700); },
            [&] {
                EXPECT_TRUE(isListing);
                for (QEvent::Type const type : {QEvent::KeyPress, QEvent::KeyRelease})
                    QCoreApplication::postEvent(filter, new QKeyEvent(type, Qt::Key_X, Qt::NoModifier, "x"));
                QPushButton *const cancel = platform::GetDlgItem<QPushButton>(*dialog, kCancelId);
                QPointF const at = cancel->rect().center();
                for (QEvent::Type const type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
                    QCoreApplication::postEvent(
                        cancel, new QMouseEvent(type, at, cancel->mapToGlobal(at), Qt::LeftButton,
                                                type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, {}));
                int const before = paints.count;
                dialog->update();
                Whenever(
                    dialog.get(), [&, before] { return paints.count > before; },
                    [&] {
                        paintsMeanwhile += isListing ? 1 : 0;
                        PressEscapeAfter({}, *dialog);
                    });
            });
        Click(platform::GetDlgItem<QPushButton>(*dialog, kRecursiveId));
        isListing = false;
        auto const took = Since(begin);
        EXPECT_EQ(paintsMeanwhile, 1);
        EXPECT_GT(took, milliseconds(700));
        EXPECT_LT(took, milliseconds(2500) * kSlower) << "of ten seconds";
        RecordProperty("stopped_after", static_cast<int>(took.count()));
        QCoreApplication::processEvents();
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(filter->text(), text);
        EXPECT_TRUE(Eventually([&] { return RowOf(*dialog->MainList(), "first.txt") >= 0; }));
        EXPECT_GT(dialog->MainList()->GetNumRow(), 2);
        EXPECT_LT(dialog->MainList()->GetNumRow(), 1 + 2 * kFolders);
    });
}

TEST_F(HostilePlaces, EscapeEndsTheListingOfAContainerThatDoesNotAnswer) {
    folder.Write("c.hostile", "members 3\nlist sleep 30\n");
    folder.Write("good.hostile");
    DialogPtr const dialog = Make();
    Run(*dialog, 1, [&] {
        DSListCtrl &folders = *dialog->FolderList();
        auto const begin = Clock::now();
        PressEscapeAfter(kPatience, *dialog);
        ClickRow(folders, "c.hostile");
        EXPECT_TRUE(Eventually([&] { return Since(begin) > kPatience; }));
        EXPECT_LT(Since(begin), milliseconds(1500) * kSlower);
        RecordProperty("stopped_after", static_cast<int>(Since(begin).count()));
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(dialog->MainList()->GetNumRow(), 0);
        ExpectNoReaderLeftOver();
    });
}

TEST_F(HostilePlaces, AContainerThatIsProbedLateIsFoundOutWhenItIsSelected) {
    folder.Write("good.hostile");
    test::TempFolder const beside;
    DString const late = "probe await " + (beside / "listed") + "\nprobe sleep 0.3\nmembers 2\n";
    folder.Write("late.hostile", late);
    folder.Write("late too.hostile", late);
    DialogPtr const dialog = Make();
    Run(*dialog, 3, [&] {
        beside.Write("listed");
        DSListCtrl &list = *dialog->MainList();
        auto const *const item = dynamic_cast<NtwDataSourceItem *>(list.ItemAt(RowOf(list, "late.hostile")).get());
        ASSERT_NE(item, nullptr);
        EXPECT_TRUE(item->IsUnclassified() && !item->IsFolder());
        auto const *const other = dynamic_cast<NtwDataSourceItem *>(list.ItemAt(RowOf(list, "late too.hostile")).get());
        ClickRow(list, "late too.hostile");
        QCoreApplication::processEvents();
        Paints const paints(*list.viewport());
        EXPECT_TRUE(Eventually([&] { return other->IsFolder() && paints.count > 0; }));
        EXPECT_FALSE(other->IsUnclassified());
        // Who opens it before that waits for the answer.
        ClickRow(list, "late.hostile");
        EXPECT_FALSE(item->IsFolder());
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, PlaceOf(list, "late.hostile"));
        EXPECT_TRUE(Eventually(
            [&] { return RowOf(list, "member 0") >= 0 && RowOf(list, "member 1") >= 0 && list.GetNumRow() == 2; }));
        EXPECT_TRUE(dialog->isVisible());
    });
}

TEST_F(HostilePlaces, AFileThatCrashesItsReaderCostsNothingButItsOwnPreview) {
    for (DString const call : {"probe", "open", "read"}) {
        SCOPED_TRACE(call);
        folder.Write(call + "/1.hostile");
        folder.Write(call + "/2.hostile", call + " crash\n");
        folder.Write(call + "/3.hostile");
        DialogPtr const dialog = Make(folder / call);
        Run(*dialog, 3, [&] {
            DSListCtrl &list = *dialog->MainList();
            auto const isWithoutPreview = [&] {
                return !dialog->PropertyWnd()->IsReading() &&
                       dialog->PropertyWnd()->Preview()->GetMode() == ImagePreviewWnd::ModeNothing &&
                       Shown(*dialog, "Path") == folder / call + "/2.hostile";
            };
            ExpectShown(*dialog, "1.hostile", call);
            ClickRow(list, "2.hostile");
            EXPECT_TRUE(Eventually(isWithoutPreview));
            int const crashed = CountReaders().crashed;
            EXPECT_GT(crashed, 0);
            ExpectShown(*dialog, "3.hostile", call);
            ClickRow(list, "2.hostile");
            EXPECT_TRUE(Eventually(isWithoutPreview));
            EXPECT_EQ(CountReaders().crashed, crashed) << "it is not tried again";
            ExpectShown(*dialog, "1.hostile", call);
            folder.Write(call + "/2.hostile", "width 8\n# mended\n");
            ExpectShown(*dialog, "2.hostile", call);
            ExpectNoReaderLeftOver();
        });
    }
}

TEST_F(HostilePlaces, DialogsOfTwoProcessesDoNotDisturbEachOther) {
    QProcess others[2];
    for (QProcess &other : others)
        other.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=*Places.AFile*:*Places.Closing*"});
    for (QProcess &other : others) {
        EXPECT_TRUE(other.waitForFinished(50'000));
        EXPECT_EQ(other.exitCode(), 0) << other.readAllStandardOutput().toStdString();
    }
}

} // namespace
} // namespace zelvar::test
