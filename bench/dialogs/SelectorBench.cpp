// The selector of nodes over containers of 5,000 members, which readers list.
#include "Folders.h"
#include "Harness.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtWidgets/QApplication>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>

namespace zelvar::bench {
namespace {

constexpr int kMembers = 5000;
constexpr int kRounds = 5;

void Put(std::string &bytes, std::size_t value, int count) {
    for (; count > 0; --count, value >>= 8U)
        bytes += static_cast<char>(value & 0xFFU);
}

/// A TIFF file of that many images of one pixel each.
std::string TiffOf(int pages) {
    constexpr std::size_t tagCount = 8;
    std::string bytes("II*\0\x08\0\0\0", 8);
    for (int page = 0; page < pages; ++page) {
        std::size_t const end = bytes.size() + 2 + tagCount * 12 + 4;
        std::array<std::array<std::size_t, 2>, tagCount> const tags{
            {{256, 1}, {257, 1}, {258, 8}, {259, 1}, {262, 1}, {273, end}, {278, 1}, {279, 1}}};
        Put(bytes, tagCount, 2);
        for (auto const &[tag, value] : tags) {
            Put(bytes, tag, 2);
            Put(bytes, 4, 2);
            Put(bytes, 1, 4);
            Put(bytes, value, 4);
        }
        Put(bytes, page + 1 < pages ? end + 2 : 0, 4);
        Put(bytes, 7, 2);
    }
    return bytes;
}

/// What both headers of an entry without bytes have in common.
void PutEntry(std::string &bytes, std::size_t nameLength) {
    Put(bytes, 20, 2);         // version that reads it
    Put(bytes, 0, 4);          // flags, method
    Put(bytes, 0x21 << 16, 4); // time and date
    Put(bytes, 0, 12);         // check sum and sizes
    Put(bytes, nameLength, 2);
    Put(bytes, 0, 2); // no extra field
}

/// An archive of that many files that are containers by their names, all in one folder.
std::string ZipOf(int members) {
    std::string files;
    std::string directory;
    for (int member = 0; member < members; ++member) {
        std::string const name = "member " + std::to_string(member) + ".gpkg";
        directory += "PK\x01\x02";
        Put(directory, 20, 2); // version that made it
        PutEntry(directory, name.size());
        Put(directory, 0, 10); // comment, disk, attributes
        Put(directory, files.size(), 4);
        directory += name;
        files += "PK\x03\x04";
        PutEntry(files, name.size());
        files += name;
    }
    std::size_t const start = files.size();
    files += directory;
    files += "PK\x05\x06";
    Put(files, 0, 4);
    Put(files, static_cast<std::size_t>(members), 2);
    Put(files, static_cast<std::size_t>(members), 2);
    Put(files, directory.size(), 4);
    Put(files, start, 4);
    Put(files, 0, 2);
    return files;
}

BDIDrvr *DriverOf(std::string const &path) {
    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    void *const repository = BDIDrvrMngr::Instance()->OpenFile(path.c_str(), &driver, &root, nullptr, nullptr);
    if (repository == nullptr)
        return nullptr;
    driver->CloseNode(root);
    driver->CloseRepository(repository);
    return driver;
}

/// What the driver alone takes to open and to list the first level.
double DriverMs(BDIDrvr *driver, std::string const &path) {
    return BestMs(kRounds, [&] {
        BDINode *root = nullptr;
        void *const repository = driver->OpenRepository(path.c_str(), &root, nullptr);
        if (repository == nullptr)
            return;
        if (void *const find = driver->FindFirstChildNode(repository, root, 0xFF); find != nullptr)
            driver->FindClose(find);
        driver->CloseNode(root);
        driver->CloseRepository(repository);
    });
}

/// From the call to the first paint with all rows; then what its expansion costs, paint included.
struct Measured {
    double openMs = 1e9;
    double expandMs = 1e9;
    int rows = 0;
    int items = 0;
};

Measured Measure(BDIDrvr *driver, std::string const &path, unsigned mask) {
    Measured best;
    for (int round = 0; round < kRounds; ++round) {
        std::unique_ptr<CBDISelectorDlg> dialog;
        double const open = BestMs(1, [&] {
            dialog = std::make_unique<CBDISelectorDlg>(driver, path.c_str(), mask, "", true, nullptr);
            dialog->show();
            QApplication::processEvents();
        });
        auto &tree = *platform::GetDlgItem<CZelTreeCtrl>(*dialog, 1001);
        double const expand = BestMs(1, [&] {
            tree.Expand(tree.GetRootItem(), TVE_EXPAND);
            QApplication::processEvents();
        });
        best.openMs = std::min(best.openMs, open);
        best.expandMs = std::min(best.expandMs, expand);
        best.rows = platform::GetDlgItem<CZelListCtrl>(*dialog, 6004)->GetNumRow();
        best.items = static_cast<int>(tree.GetCount());
    }
    return best;
}

Register const selector("selector", [] {
    ZelvarInit();
    Folder const folder;
    std::string const pages = folder.Path() + "/pages.tif";
    std::string const archive = folder.Path() + "/containers.zip";
    std::ofstream(pages, std::ios::binary) << TiffOf(kMembers);
    std::ofstream(archive, std::ios::binary) << ZipOf(kMembers);
    Measured const tiff = Measure(DriverOf(pages), pages, BDINode_Raster);
    Measured const zip = Measure(DriverOf(archive), archive, BDINode_Container);
    if (tiff.rows != kMembers || zip.rows != kMembers || zip.items != kMembers + 1)
        std::fprintf(stderr, "not all members are there: %d %d %d\n", tiff.rows, zip.rows, zip.items);
    auto const beside = [](BDIDrvr *driver, std::string const &path) {
        return Beside{.limit = 300, .alternatives = {{"the driver alone", DriverMs(driver, path)}}};
    };
    Figure("selector.first_level_5000_pages", tiff.openMs, "ms", beside(DriverOf(pages), pages));
    Figure("selector.first_level_5000_containers", zip.openMs, "ms", beside(DriverOf(archive), archive));
    Figure("selector.expand_5000_containers", zip.expandMs, "ms", {.limit = 300});
});

} // namespace
} // namespace zelvar::bench
