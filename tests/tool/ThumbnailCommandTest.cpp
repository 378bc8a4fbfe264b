#include "support/ImageFiles.h"
#include "support/RunCommand.h"
#include "zelvar/tool/ThumbnailPreference.h"

#include <filesystem>

namespace zelvar {
namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::Zelvar;

/// Width and height that stand in the head of a PNG file.
std::pair<int, int> SizeOf(std::string const &file) {
    std::string const head = test::ReadFile(file);
    auto const number = [&](std::size_t at) {
        return head.size() < 24
                   ? 0
                   : static_cast<unsigned char>(head[at + 2]) * 256 + static_cast<unsigned char>(head[at + 3]);
    };
    return {number(16), number(20)};
}

TEST(ThumbnailCommand, WritesOneOfAnyNameAndTouchesNothingElse) {
    test::TempFolder const folder;
    test::TempFolder const home;
    test::WriteImage(folder / "a b:?%\xFF.tif", {.width = 300, .height = 150, .type = GDT_UInt16});
    folder.Write("t.csv", "name;size\na;1\nb;2\n");
    std::string const here = "HOME=" + test::Quoted(home.Path()) +
                             " XDG_CACHE_HOME= QT_QPA_PLATFORM=none ZELVAR_SETTINGS=" + test::Quoted(home / "s.db");
    std::string const odd = folder / "a b:?%\xFF.tif";
    std::string const uri = "file://" + folder.Path() + "/a%20b:%3F%25%FF.tif";
    test::Rows<std::vector<std::string>, std::pair<int, int>> const cases = {
        {{odd, "out.png"}, {256, 128}},
        {{"-s", "100", uri, "out.png"}, {100, 50}},
        {{"--size=1000", uri, "out.png"}, {300, 150}},
        {{folder / "t.csv", "out.png", "--size", "128"}, {128, 128}}};
    for (auto [words, size] : cases) {
        std::ranges::replace(words, std::string("out.png"), folder / "out.png");
        words.insert(words.begin(), "thumbnail");
        Outcome const outcome = Zelvar(words, here);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_EQ(outcome.out + outcome.err, "");
        EXPECT_EQ(SizeOf(folder / "out.png"), size) << words[1];
        fs::remove(folder / "out.png");
    }
    EXPECT_TRUE(fs::is_empty(home.Path())) << "no settings, no cache";

    folder.Write("no.tif", "this is no image");
    test::Rows<std::vector<std::string>, int> const wrong = {
        {{"thumbnail", folder / "no.tif", folder / "out.png"}, 3},
        {{"thumbnail", odd, folder / "no folder/out.png"}, 3},
        {{"thumbnail", odd, folder / "out.png", "--size", "0"}, 2}};
    for (auto const &[words, exitCode] : wrong)
        EXPECT_EQ(Zelvar(words, here).exitCode, exitCode) << words[2];
    EXPECT_FALSE(fs::exists(folder / "out.png"));
}

TEST(ThumbnailPreference, SwitchesTheBuiltInOffAndBackLineByLine) {
    std::string const note = "# before 'zelvar thumbnails prefer': ";
    std::map<std::string, std::string> const cases{
        {"", "[PixbufThumbnailer]\n" + note + "\nDisabled=true\n"},
        {"[A]\nDisabled=false\n[PixbufThumbnailer]\nDisabled=false\nPriority=1\n",
         "[A]\nDisabled=false\n[PixbufThumbnailer]\n" + note + "Disabled=false\nDisabled=true\nPriority=1\n"},
        {"[PixbufThumbnailer]\nPriority=1\n[B]\nDisabled=false\n",
         "[PixbufThumbnailer]\nPriority=1\n" + note + "\nDisabled=true\n[B]\nDisabled=false\n"}};
    for (auto const &[before, after] : cases) {
        EXPECT_EQ(tool::WithBuiltInOff(before), after);
        EXPECT_EQ(tool::WithBuiltInOff(after), after) << "not twice";
        EXPECT_EQ(tool::WithBuiltInAsBefore(after), before.empty() ? "[PixbufThumbnailer]\n" : before);
        EXPECT_EQ(tool::WithBuiltInAsBefore(before), before) << "nothing was set";
    }
}

TEST(ThumbnailPreference, UndoLeavesTheUserFilesAsTheyWere) {
    test::TempFolder const folder;
    DString const system = folder.Write("xdg/tumbler/tumbler.rc", "[PixbufThumbnailer]\nDisabled=false\n");
    tool::ThumbnailPreference const preference(folder / "data", folder / "config", folder / "xdg");
    DString const ours = folder / "data/thumbnailers/zelvar-preferred.thumbnailer";
    DString const settings = folder / "config/tumbler/tumbler.rc";
    EXPECT_EQ(preference.Set() + preference.Set(), "");
    EXPECT_THAT(test::ReadFile(ours), HasSubstr("image/tiff;image/png;"));
    EXPECT_THAT(test::ReadFile(settings), HasSubstr("\nDisabled=true\n"));
    EXPECT_EQ(preference.Undo(), "");
    EXPECT_FALSE(fs::exists(ours) || fs::exists(settings));
    EXPECT_EQ(preference.Undo(), "");
    DString const own = "[PixbufThumbnailer]\nDisabled=false\n[Mine]\nx=1\n";
    folder.Write("config/tumbler/tumbler.rc", own);
    EXPECT_EQ(preference.Set(), "");
    EXPECT_EQ(preference.Undo(), "");
    EXPECT_EQ(test::ReadFile(settings), own);

    tool::ThumbnailPreference const elsewhere(folder / "data2", folder / "config2", folder / "none");
    EXPECT_EQ(elsewhere.Set(), "");
    EXPECT_FALSE(fs::exists(folder / "config2")) << "there is no such service";
    EXPECT_THAT(test::ReadFile(folder / "data2/thumbnailers/zelvar-preferred.thumbnailer"),
                testing::EndsWith("MimeType=image/tiff;\n"));
    folder.Write("data3", "no folder");
    EXPECT_NE(tool::ThumbnailPreference(folder / "data3", folder / "c", folder / "none").Set(), "");
}

} // namespace
} // namespace zelvar
