#include "zelvar/model/OpenOutcome.h"

#include "support/Test.h"

namespace zelvar {
namespace {

using Cause = DError::Cause;

constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30U;
constexpr OpenWish kImage{.image = true};
constexpr OpenWish kTable{.table = true};
constexpr OpenWish kDocument{};

DError Because(Cause cause, std::int64_t detail = -1) {
    DError error;
    error.Set("what the reader said", cause, detail);
    return error;
}

OpenFacts Image(ImageInfo image) {
    OpenFacts facts{.name = "a.tif", .fileSize = 2048};
    image.slices = std::max(image.slices, 1);
    image.timeFrames = std::max(image.timeFrames, 1);
    facts.image = std::move(image);
    return facts;
}
OpenFacts Grey(int width, int height, int channels = 1, int type = RDI_UInt8) {
    return Image({.width = width, .height = height, .channels = channels, .dataType = type, .driver = "GeoTIFF"});
}
OpenFacts Unopened(Cause cause, std::int64_t detail = -1) {
    return {.name = "bad.tif", .fileSize = 3000, .error = Because(cause, detail)};
}
OpenFacts With(OpenFacts facts, std::function<void(OpenFacts &)> const &change) {
    change(facts);
    return facts;
}

struct Row {
    char const *what;
    OpenFacts item;
    OpenWish wish;
    char const *text;
    bool isUsable = true;
};

TEST(OpenOutcome, SaysOfOneItemWhatItIsOrWhyNotAndWhatToDo) {
    Row const rows[] = {
        {"grey", Grey(64, 48), kImage, "GeoTIFF: 64 x 48, 1 channel, 8 bit unsigned, 3.0 KB in memory"},
        {"no name of a driver",
         Image({.width = 2, .height = 2, .channels = 3, .slices = 4, .timeFrames = 5, .dataType = RDI_Float32}), kImage,
         "2 x 2, 3 channels, 4 slices, 5 time frames, 32 bit float, 960 B in memory"},
        {"a series", With(Grey(8, 8), [](auto &facts) { facts.members = "3 of 4, missing 2"; }), kImage,
         "GeoTIFF: 8 x 8, 1 channel, 8 bit unsigned, 64 B in memory, files: 3 of 4, missing 2"},
        {"alike as far as seen", With(Grey(8, 8), [](auto &facts) { facts.image->differences = "9 of 20 looked at"; }),
         kImage, "GeoTIFF: 8 x 8, 1 channel, 8 bit unsigned, 64 B in memory; 9 of 20 looked at"},
        {"members that differ, one image",
         With(Grey(8, 8),
              [](auto &facts) {
                  facts.isOneImage = facts.image->differs = true;
                  facts.image->differences = "b is 9 x 9";
              }),
         kImage, "GeoTIFF: 8 x 8, 1 channel, 8 bit unsigned, 64 B in memory; its files are not alike; b is 9 x 9",
         false},
        {"members that differ, each for itself", With(Grey(8, 8), [](auto &facts) { facts.image->differs = true; }),
         kImage, "GeoTIFF: 8 x 8, 1 channel, 8 bit unsigned, 64 B in memory"},
        {"as large as the memory", Grey(1 << 15, 1 << 15, 4, RDI_UInt16), kImage,
         "GeoTIFF: 32768 x 32768, 4 channels, 16 bit unsigned, 8.0 GB in memory"},
        {"larger", Grey((1 << 15) + 1, 1 << 15, 4, RDI_UInt16), kImage,
         "GeoTIFF: 32769 x 32768, 4 channels, 16 bit unsigned, 8.0 GB in memory; larger than the memory of this "
         "computer, 8.0 GB",
         false},
        {"past 32 bits", Grey(1'000'000, 1'000'000, 3, RDI_Float32), kImage,
         "GeoTIFF: 1000000 x 1000000, 3 channels, 32 bit float, 11 TB in memory; larger than the memory of this "
         "computer, 8.0 GB",
         false},
        {"damaged in part",
         With(Grey(8, 120),
              [](auto &facts) {
                  facts.damage = Because(Cause::Damaged);
                  facts.rowsRead = 37;
                  facts.rows = 120;
              }),
         kImage,
         "GeoTIFF: 8 x 120, 1 channel, 8 bit unsigned, 960 B in memory; damaged: 37 of 120 rows read; copy it again "
         "from where it comes from",
         false},
        {"missing", Unopened(Cause::Missing), kDocument,
         "cannot be opened: it is not there; list its folder again with F5", false},
        {"forbidden", Unopened(Cause::NotPermitted), kImage,
         "cannot be opened: you may not read it; ask its owner for permission, or copy it to a place of yours", false},
        {"unsupported", Unopened(Cause::NotSupported), kImage,
         "cannot be opened: its format is not supported; convert it, or choose another file", false},
        {"damaged", Unopened(Cause::Damaged), kImage,
         "cannot be opened: it is damaged; copy it again from where it comes from", false},
        {"damaged at a byte", Unopened(Cause::Damaged, 0), kImage,
         "cannot be opened: it is damaged at byte 0; copy it again from where it comes from", false},
        {"password", Unopened(Cause::NeedsPassword), kImage,
         "cannot be opened: it needs a password; give the password among its options or in its connection, or unpack "
         "it first",
         false},
        {"refused", Unopened(Cause::Refused), kImage,
         "cannot be opened: it must not be opened (what the reader said); copy what it refers to to this computer",
         false},
        {"server", Unopened(Cause::Server, 403), kImage,
         "cannot be opened: its server answered 403; check its address and your rights there, or try again later",
         false},
        {"late", Unopened(Cause::Late, 10'000), kImage,
         "cannot be opened: it took longer than 10 s; try again, or copy it to a faster place", false},
        {"too large", Unopened(Cause::TooLarge, 5), kTable,
         "cannot be opened: it takes more memory than it may; open a part of it, or a smaller version", false},
        {"crash", Unopened(Cause::Crashed), kImage,
         "cannot be opened: it ends the program that reads it; copy it again from where it comes from", false},
        {"silence", Unopened(Cause::NoAnswer), kImage,
         "cannot be opened: its place does not answer; check the connection, then try again", false},
        {"no known cause", Unopened(Cause::Unknown), kImage, "cannot be opened: what the reader said", false},
        {"no image, but a document is picked", Unopened(Cause::Damaged), kDocument, "2.9 KB"},
        {"a table",
         With(Unopened(Cause::NotSupported),
              [](auto &facts) { facts.table = TableInfo{.driver = "CSV", .columns = 2}; }),
         kTable, "CSV: 2 columns, 2.9 KB"},
        {"a table is no image",
         With(Unopened(Cause::NotSupported),
              [](auto &facts) { facts.table = TableInfo{.driver = "CSV", .columns = 2}; }),
         kImage, "cannot be opened: its format is not supported; convert it, or choose another file", false},
        {"nothing known yet", {}, kImage, ""},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.what);
        OpenOutcome const outcome = OutcomeOf(row.item, row.wish, 8 * kGigabyte);
        EXPECT_EQ(outcome.text, row.text);
        EXPECT_EQ(outcome.isUsable, row.isUsable);
        bool const isHeld = row.item.damage.IsSet() || (!row.isUsable && !row.item.image);
        EXPECT_EQ(outcome.reason,
                  isHeld && outcome.text.find("what the reader said") == DString::npos ? "what the reader said" : "");
    }
    EXPECT_TRUE(OutcomeOf(Grey(1'000'000, 1'000'000), kImage, 0).isUsable) << "the memory is not known";
    DError login;
    login.Set("\"s3://a\": there is no secret key for it", Cause::NeedsPassword);
    EXPECT_EQ(RemedyInWords(login), "give the password in its connection");
}

TEST(OpenOutcome, SumsSeveralUpAndSaysWhatDiffers) {
    struct Several {
        std::vector<OpenFacts> looked;
        std::uint64_t selected;
        OpenWish wish;
        char const *text;
        bool isUsable = true;
    };
    Several const rows[] = {
        {{Grey(512, 2), Grey(512, 2)}, 2, kImage, "2 items: 2.0 KB in memory"},
        {{Grey(8, 2), Grey(8, 4), Grey(8, 6), Grey(8, 2, 3, RDI_Int16)},
         4,
         kImage,
         "4 items: 192 B in memory; different sizes (8 x 2, 8 x 4, ...); different channels (1, 3); different types (8 "
         "bit unsigned, 16 bit signed)"},
        {{}, 40, kImage, "40 items"},
        {{Grey(8, 2)}, 40, kImage, "40 items, of the first 1: 16 B in memory"},
        {{Grey(8, 2), Unopened(Cause::Damaged)},
         2,
         kImage,
         "2 items: 16 B in memory; cannot be opened: bad.tif (it is damaged)",
         false},
        {{Unopened(Cause::Damaged), Unopened(Cause::Missing)},
         2,
         kImage,
         "2 items: 5.9 KB; cannot be opened: 2 of them, first bad.tif (it is damaged)",
         false},
        {{Grey(8, 2), With(Grey(8, 2), [](auto &facts) { facts.damage = Because(Cause::Damaged, 7); })},
         2,
         kImage,
         "2 items: 32 B in memory; not whole: a.tif (it is damaged at byte 7)",
         false},
        {{Grey(1 << 15, 1 << 15, 4, RDI_UInt16), Grey(1, 1)},
         2,
         kImage,
         "2 items: 8.0 GB in memory; larger than the memory of this computer, 8.0 GB; different sizes (32768 x 32768, "
         "1 x 1); different channels (4, 1); different types (16 bit unsigned, 8 bit unsigned)",
         false},
        {{Unopened(Cause::Damaged), Unopened(Cause::Damaged)}, 2, kDocument, "2 items: 5.9 KB"},
        {{Grey(8, 2)}, 1, kImage, "GeoTIFF: 8 x 2, 1 channel, 8 bit unsigned, 16 B in memory"},
    };
    for (Several const &row : rows) {
        OpenOutcome const outcome = OutcomeOf(row.looked, row.selected, row.wish, 8 * kGigabyte);
        EXPECT_EQ(outcome.text, row.text);
        EXPECT_EQ(outcome.isUsable, row.isUsable) << row.text;
    }
}

TEST(OpenOutcome, CountsBytesPast64BitsAndWritesThemInWords) {
    constexpr int kLargest = std::numeric_limits<int>::max();
    ImageInfo const beyond{.width = kLargest,
                           .height = kLargest,
                           .channels = 65536,
                           .slices = 9,
                           .timeFrames = 9,
                           .dataType = RDI_Float32};
    EXPECT_EQ(MemoryOf(beyond), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(MemoryOf({.width = -1, .height = 5, .channels = 1, .slices = 1, .timeFrames = 1, .dataType = RDI_UInt8}),
              0U);
    std::pair<std::uint64_t, char const *> const rows[] = {{0, "0 B"},
                                                           {1023, "1023 B"},
                                                           {1024, "1.0 KB"},
                                                           {10188, "9.9 KB"},
                                                           {10190, "10 KB"},
                                                           {1048063, "1023 KB"},
                                                           {1048065, "1.0 MB"},
                                                           {3 * kGigabyte, "3.0 GB"},
                                                           {kGigabyte << 10U, "1.0 TB"},
                                                           {std::numeric_limits<std::uint64_t>::max(), "16 EB"}};
    for (auto const &[bytes, words] : rows)
        EXPECT_EQ(BytesInWords(bytes), words) << bytes;
}

} // namespace
} // namespace zelvar
