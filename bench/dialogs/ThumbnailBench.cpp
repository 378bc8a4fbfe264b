#include "Folders.h"
#include "Harness.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/ThumbnailLook.h"
#include "zelvar/thumbnails/PngPicture.h"

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>

#include <cstdlib>
#include <ctime>
#include <fstream>

namespace zelvar::bench {
namespace {

constexpr int kImages = 2'000;
constexpr int kSide = 160;

double Milliseconds(QElapsedTimer const &timer) { return static_cast<double>(timer.nsecsElapsed()) / 1e6; }

/// Pictures of 400 by 300 pixels, each another one.
void FillWithImages(std::string const &folder) {
    DCanvas picture;
    picture.SetSize(400, 300);
    for (int i = 0; i < kImages; ++i) {
        for (int y = 0; y < 300; ++y)
            for (int x = 0; x < 400; ++x)
                picture.SetPixel(x, y, static_cast<ColorRef>((x * y + i * 97) & 0xFFFFFF));
        std::ofstream(folder + "/image " + std::to_string(i) + ".png", std::ios::binary) << EncodePng(picture, {});
    }
}

/// A list in a window of 1000 by 700 pixels that shows the folder.
struct Shown {
    Shown(std::string const &folder, LookChoice const &choice) {
        window.resize(1000, 700);
        list.SetMode(DSListCtrl::ModeRecursive);
        list.Create(0, {0, 0, 1000, 700}, DT_DATA, &window, 3);
        list.SetMode(DSListCtrl::ModeFiles);
        list.Sort(0, true);
        look.emplace(list, window, "bench");
        look->Choose(choice);
        window.show();
        QApplication::processEvents();
        timer.start();
        list.ResetItems({RefItemPtr<DataSourceItem>(NtwDataSourceItem::CreateItem(folder.c_str(), nullptr, nullptr))});
        while (list.GetNumRow() < kImages)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        list.viewport()->repaint();
        rowsMs = Milliseconds(timer);
    }
    /// Until all that is wanted is there.
    void AwaitPictures() {
        do
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        while (look->IsBusy());
        list.viewport()->repaint();
    }
    QWidget window;
    DSListCtrl list{&window};
    std::optional<ThumbnailLook> look;
    QElapsedTimer timer;
    double rowsMs = 0;
};

/// Of this thread, which others may keep from its processor.
double ProcessorMs(std::function<void()> const &body) {
    auto const now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    double const begin = now();
    body();
    return now() - begin;
}

/// Pages downwards while thumbnails come: what each page takes until it is painted, and with all that comes until the
/// next one.
struct Scrolled {
    std::vector<double> pagesMs{}; ///< on the clock
    double slowestProcessorMs = 0; ///< of one event, scrolling or taking in what has come
};
Scrolled ScrollPages(Shown &shown, int pages) {
    Scrolled scrolled;
    auto const once = [&](std::function<void()> const &body) {
        scrolled.slowestProcessorMs = std::max(scrolled.slowestProcessorMs, ProcessorMs(body));
    };
    for (int page = 0; page < pages; ++page) {
        QScrollBar &bar = *shown.list.verticalScrollBar();
        scrolled.pagesMs.push_back(Ms([&] {
            once([&] {
                bar.setValue(bar.value() + bar.pageStep());
                shown.list.viewport()->repaint();
            });
        }));
        QElapsedTimer pause;
        pause.start();
        while (pause.elapsed() < 100)
            once([] { QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5); });
    }
    return scrolled;
}

Register const reg("thumbnails", [] {
    ZelvarInit();
    Folder const images;
    Folder const cache;
    setenv("XDG_CACHE_HOME", cache.Path().c_str(), 1);
    FillWithImages(images.Path());
    double const bare = BestMs(3, [&] { ListBare(images.Path()); });
    double const rows = Shown(images.Path(), {}).rowsMs;
    LookChoice const look{.thumbnails = true, .side = kSide};
    {
        Shown first(images.Path(), look);
        auto const [top, behind] = first.list.GetSeenRows();
        Figure(
            "thumbnails.rows_painted", first.rowsMs, "ms",
            {.alternatives = {{"rows", rows}, {"the bare listing", bare}}, .note = "2,000 images, before any is read"});
        first.AwaitPictures();
        Figure("thumbnails.first_page", Milliseconds(first.timer), "ms", "that in sight and the one behind it");
        Figure("thumbnails.images_opened", first.look->GetCounts().opened, "images",
               {.limit = 2.0 * (behind - top), .note = "of 2,000"});
        Scrolled const scrolled = ScrollPages(first, 20);
        Figure("thumbnails.scrolled_page", Median(scrolled.pagesMs), "ms",
               {.limit = 6, .note = "while thumbnails come"});
        Figure("thumbnails.scrolled_slowest", scrolled.slowestProcessorMs, "ms",
               {.limit = 6, .note = "of the processor, the slowest of 20 pages and of what comes meanwhile"});
    }
    Shown second(images.Path(), look);
    second.AwaitPictures();
    Figure("thumbnails.second_visit", Milliseconds(second.timer), "ms", "the same page, kept on disk");
    Figure("thumbnails.second_visit_opened", second.look->GetCounts().opened, "images",
           {.limit = 0, .note = "of 2,000"});
    unsetenv("XDG_CACHE_HOME");
});

} // namespace
} // namespace zelvar::bench
