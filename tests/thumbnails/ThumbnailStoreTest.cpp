#include "zelvar/thumbnails/ThumbnailStore.h"

#include "support/Test.h"
#include "zelvar/thumbnails/PngPicture.h"
#include "zelvar/thumbnails/ThumbnailPruner.h"

#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <png.h>
#include <sys/stat.h>

namespace zelvar {
namespace {

namespace fs = std::filesystem;

DCanvas Gradient(int width, int height) {
    DCanvas canvas;
    canvas.SetSize(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            canvas.SetPixel(x, y, static_cast<ColorRef>(x % 256 + y % 256 * 256));
    return canvas;
}
struct ThumbnailStoreTest : testing::Test {
    [[nodiscard]] ThumbnailKey Key(DString const &moniker) const {
        auto const key = m_store.KeyOf(moniker);
        EXPECT_TRUE(key) << moniker;
        return key.value_or(ThumbnailKey());
    }
    [[nodiscard]] std::vector<DString> Kept() const {
        std::vector<DString> kept;
        for (auto const &entry : fs::recursive_directory_iterator(m_cache))
            if (entry.is_regular_file())
                kept.push_back(fs::relative(entry.path(), m_cache).string());
        std::ranges::sort(kept);
        return kept;
    }
    /// Puts a thumbnail where another program would.
    void KeepAs(ThumbnailKey const &key, PngTexts const &texts) const {
        m_store.Keep(key, 128, Gradient(8, 8));
        ASSERT_EQ(Kept().size(), 1U);
        std::ofstream(m_cache + "/" + Kept().front(), std::ios::binary) << EncodePng(Gradient(8, 8), texts);
    }
    test::TempFolder m_folder;
    DString const m_cache = m_folder.Folder("cache");
    ThumbnailStore const m_store{m_cache};
};

TEST(ThumbnailNames, UrisAreWrittenAsFileManagersDo) {
    // As g_filename_to_uri has them.
    for (auto const &[path, uri] :
         std::map<DString, DString>{{"/home/a b.tif", "file:///home/a%20b.tif"},
                                    {"/x/!\"#$%&'()*+,-.", "file:///x/!%22%23$%25&'()*+,-."},
                                    {"/x/09:;<=>?@AZ", "file:///x/09:%3B%3C=%3E%3F@AZ"},
                                    {"/x/[\\]^_`az{|}~", "file:///x/%5B%5C%5D%5E_%60az%7B%7C%7D~"},
                                    {"/x/\xC3\xA4\xFF\x01", "file:///x/%C3%A4%FF%01"}})
        EXPECT_EQ(ThumbnailStore::FileUri(path), uri);
}

TEST_F(ThumbnailStoreTest, WhatIsKeptCanBeFoundByOthersAndNobodyElseSeesIt) {
    DString const file = m_folder.Write("a b.tif", "12345");
    ThumbnailKey const key = Key(file);
    m_store.Keep(key, 200, Gradient(256, 100));
    ASSERT_EQ(Kept().size(), 1U);
    PngTexts texts;
    std::ignore = DecodePng(test::ReadFile(m_cache + "/" + Kept().front()),
                            [&](PngTexts const &found) { return texts = found, true; });
    struct stat state {};
    ASSERT_EQ(stat(file.c_str(), &state), 0);
    EXPECT_EQ(texts["Thumb::URI"], "file://" + m_folder.Path() + "/a%20b.tif");
    EXPECT_EQ(texts["Thumb::MTime"], std::to_string(state.st_mtim.tv_sec));
    EXPECT_EQ(texts["Thumb::Size"], "5");
    EXPECT_EQ(stat((m_cache + "/" + Kept().front()).c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777U, 0600U);
    EXPECT_EQ(stat((m_cache + "/thumbnails/large").c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777U, 0700U);

    auto const found = m_store.Find(key, 256);
    EXPECT_TRUE(found && EncodePng(*found, {}) == EncodePng(Gradient(256, 100), {}));
    EXPECT_TRUE(m_store.Find(key, 96)) << "a larger one serves";
    EXPECT_FALSE(m_store.Find(key, 257)) << "a smaller one does not";
}

TEST_F(ThumbnailStoreTest, ANameIsTheChecksumOfTheUri) {
    ThumbnailKey const key{.uri = "file:///home/jens/photos/me.png", .modified = 1, .isShared = true};
    m_store.Keep(key, 128, Gradient(2, 2));
    EXPECT_THAT(Kept(), ElementsAre("thumbnails/normal/c6ee772d9e49320e97ec29a7eb5b1697.png"));
}

TEST_F(ThumbnailStoreTest, WhatHasChangedIsNotInKeeping) {
    DString const file = m_folder.Write("a.tif", "12345");
    ThumbnailKey const key = Key(file);
    m_store.Keep(key, 128, Gradient(8, 8));
    for (int change = 0; change < 3; ++change) {
        ThumbnailKey other = key;
        other.modified += change == 0 ? 1 : 0;
        other.size += change == 1 ? 1 : 0;
        other.uri += change == 2 ? "x" : "";
        EXPECT_FALSE(m_store.Find(other, 128)) << change;
    }
    EXPECT_TRUE(m_store.Find(key, 128));
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_FALSE(m_store.Find(Key(file), 128));
}

TEST_F(ThumbnailStoreTest, WhatOthersMadeServesWhereItIsRight) {
    test::Rows<char const *, bool> const files = {{"a.jpg", true}, {"a.nc", true}, {"a.tif", false}, {"a.png", false}};
    for (auto const &[name, serves] : files) {
        ThumbnailKey const key = Key(m_folder.Write(name, "12345"));
        PngTexts const texts{{"Software", "GNOME::ThumbnailFactory"},
                             {"Thumb::URI", key.uri},
                             {"Thumb::MTime", std::to_string(key.modified) + ".997427"}};
        KeepAs(key, texts);
        EXPECT_EQ(m_store.Find(key, 128).has_value(), serves) << name;
        fs::remove_all(m_cache + "/thumbnails");
    }
}

TEST_F(ThumbnailStoreTest, AnyKindOfPictureIsReadAndDamageIsNone) {
    DString const path = m_folder / "grey.png";
    // 16 bits of grey with transparency: black, half of it, and nothing.
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = 3;
    image.height = 1;
    image.format = PNG_FORMAT_LINEAR_Y_ALPHA;
    std::array<std::uint16_t, 6> const pixels{0, 65535, 0, 32768, 0, 0};
    ASSERT_NE(png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr), 0);
    auto const all = [](PngTexts const &) { return true; };
    auto const read = DecodePng(test::ReadFile(path), all);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetPixel(0, 0), Rgb(0, 0, 0));
    EXPECT_GT(RedOf(read->GetPixel(1, 0)), 90U);
    EXPECT_LT(RedOf(read->GetPixel(1, 0)), 220U);
    EXPECT_EQ(read->GetPixel(2, 0), Rgb(255, 255, 255)) << "before white";
    DString const whole = EncodePng(Gradient(40, 40), {});
    for (std::size_t length = 0; length < whole.size() - 12; length += 37) // all but the mark of the end
        EXPECT_FALSE(DecodePng(whole.substr(0, length), all)) << length;
}

TEST_F(ThumbnailStoreTest, OnlyWholeFilesAreShared) {
    DString const file = m_folder.Write("a.tif", "12345");
    DString const odd = m_folder.Write("what?x=1.tif", "1");
    fs::create_directory(m_cache + "/thumbnails");
    std::ofstream(m_cache + "/thumbnails/x.png") << "1";
    test::Rows<DString, std::optional<bool>> const cases = {{file, true},
                                                            {odd, true},
                                                            {file + "?OVERVIEW=1", false},
                                                            {"GTIFF_DIR:2:" + file, false},
                                                            {m_folder.Path(), false},
                                                            {m_folder / "none.tif", {}},
                                                            {"https://example.org/a.tif", {}},
                                                            {m_cache + "/thumbnails/x.png", {}},
                                                            {"", {}}};
    for (auto const &[moniker, isShared] : cases) {
        auto const key = m_store.KeyOf(moniker);
        EXPECT_EQ(key ? std::optional(key->isShared) : std::nullopt, isShared) << moniker;
    }
    m_store.Keep(Key("GTIFF_DIR:2:" + file), 128, Gradient(2, 2));
    EXPECT_THAT(Kept(), testing::Contains(testing::StartsWith("zelvar/thumbnails/normal/")));
}

TEST_F(ThumbnailStoreTest, ASeriesIsInKeepingWithItsMembers) {
    for (int i = 1; i <= 12; ++i)
        m_folder.Write(Format("s%03d.tif", i), "1");
    ThumbnailKey const key = Key(m_folder / "s[001-012].tif");
    EXPECT_FALSE(key.isShared);
    m_folder.Write("s007.tif", "12");
    EXPECT_NE(Key(m_folder / "s[001-012].tif").size, key.size);
}

TEST_F(ThumbnailStoreTest, FailuresAreRememberedUntilTheFileChanges) {
    DString const file = m_folder.Write("a.tif", "12345");
    EXPECT_FALSE(m_store.HasFailed(Key(file)));
    m_store.KeepFailure(Key(file));
    EXPECT_THAT(Kept(), ElementsAre(testing::StartsWith("thumbnails/fail/zelvar-")));
    EXPECT_TRUE(m_store.HasFailed(Key(file)));
    EXPECT_FALSE(m_store.Find(Key(file), 128));
    m_folder.Write("a.tif", "123456");
    EXPECT_FALSE(m_store.HasFailed(Key(file)));
}

TEST_F(ThumbnailStoreTest, WhereNothingCanBeWrittenNothingIsKept) {
    DString const file = m_folder.Write("a.tif", "12345");
    for (DString const &folder : {DString(), m_folder.Write("no folder", "1"), DString("/proc/none")}) {
        ThumbnailStore const store(folder);
        ThumbnailKey const key = Key(file);
        store.Keep(key, 128, Gradient(8, 8));
        store.KeepFailure(key);
        EXPECT_FALSE(store.Find(key, 128) || store.HasFailed(key)) << folder;
    }
}

TEST_F(ThumbnailStoreTest, OurOwnAreKeptWithinABoundOnceADay) {
    constexpr int kKiB = 1024;
    DString const outside = m_folder.Write("outside.png", DString(64 * kKiB, 'x'));
    for (int i = 0; i < 8; ++i) {
        DString const file = m_folder.Write(
            Format("cache/zelvar/thumbnails/%s/%d.png", i % 2 == 0 ? "large" : "fail/x", i), DString(64 * kKiB, 'x'));
        timespec const times[] = {{1'000'000 + (i * 5) % 8, 0},
                                  {1'000'000, 0}}; // 0 5 2 7 4 1 6 3: when it was looked at
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    }
    m_folder.Write("cache/thumbnails/large/shared.png", DString(64 * kKiB, 'x'));
    fs::create_symlink(outside, m_store.OwnFolder() + "/large/link.png");
    auto const prune = [&](std::uint64_t files, std::chrono::hours every, bool isOver = false) {
        return PruneThumbnails(m_store.OwnFolder(), {.bytes = files * 64 * kKiB, .every = every},
                               [&] { return isOver; });
    };
    using std::chrono::hours;
    EXPECT_EQ(prune(8, hours(0)), 0U) << "just fits";
    EXPECT_EQ(prune(3, hours(24)), 0U) << "somebody has looked";
    EXPECT_EQ(prune(3, hours(0), true), 0U);
    EXPECT_EQ(prune(3, hours(0)), 5U);
    EXPECT_THAT(Kept(),
                testing::UnorderedElementsAre("thumbnails/large/shared.png", "zelvar/thumbnails/.pruned",
                                              "zelvar/thumbnails/fail/x/1.png", "zelvar/thumbnails/fail/x/3.png",
                                              "zelvar/thumbnails/large/6.png", "../outside.png"))
        << "the link is there";
    timespec const future[] = {{0, UTIME_NOW}, {4'000'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (m_store.OwnFolder() + "/.pruned").c_str(), future, 0), 0);
    EXPECT_EQ(prune(0, hours(24)), 3U) << "a clock was wrong";
    EXPECT_EQ(prune(0, hours(0)), 0U);
    EXPECT_EQ(PruneThumbnails(m_cache + "/none", {}, [] { return false; }), 0U);
    EXPECT_TRUE(fs::exists(outside));
}

} // namespace
} // namespace zelvar
