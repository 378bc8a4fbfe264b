#include "zelvar/base/DFile.h"
#include "zelvar/base/Percent.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/thumbnails/ThumbnailMaker.h"
#include "zelvar/thumbnails/cells/TablePicture.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/PictureFile.h"
#include "zelvar/tool/ThumbnailPreference.h"

#include <QtGui/QGuiApplication>

#include <algorithm>
#include <array>
#include <memory>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("thumbnail");
CommandSpec const &kPreferSpec = SpecOf("thumbnails");

constexpr int kMostSide = 1024; // pixels

/// Thumbnailing services hand over what a file manager has.
DString WithoutScheme(DString const &word) {
    constexpr std::string_view kScheme = "file:";
    if (!StartsWithNoCase(word, kScheme))
        return word;
    std::string_view rest = std::string_view(word).substr(kScheme.size());
    if (rest.starts_with("//"))
        rest = rest.substr(std::min(rest.find('/', 2), rest.size())); // whatever host is named, it is this one
    return rest.starts_with('/') ? PercentDecoded(rest) : word;
}

/// A table is drawn with the toolkit's fonts, which takes no display.
class TableDrawing {
public:
    DCanvas operator()(TableGlimpse const &glimpse, int side) {
        if (m_application == nullptr)
            m_application = std::make_shared<QGuiApplication>(m_count, m_words.data());
        return DrawTablePicture(glimpse, side);
    }

private:
    int m_count = 3;
    std::array<char, 7> m_name{"zelvar"};
    std::array<char, 10> m_option{"-platform"};
    std::array<char, 10> m_platform{"offscreen"};
    std::array<char *, 4> m_words{m_name.data(), m_option.data(), m_platform.data(), nullptr};
    std::shared_ptr<QGuiApplication> m_application;
};

struct Named {
    DString path{};
    DString driverId{};
};
/// What a word stands for; nothing, and that has been said, if it is a connection that does not open.
std::optional<Named> NamedBy(DString const &word) {
    DString const typed = WithoutScheme(word);
    if (!typed.starts_with("source:"))
        return Named{.path = PlaceOf(typed.starts_with('/') || IsUrl(typed) || !DFile(typed).Exist()
                                         ? typed
                                         : DFile(typed).GetAbsolutePath())};
    RefItemPtr<DataSourceItem> const item = ItemFromPlace(typed);
    if (item == nullptr || item->GetPath().empty()) {
        Failure(WithReason("cannot read '" + word + "'", typed));
        return std::nullopt;
    }
    return Named{.path = item->GetPath(), .driverId = item->GetRDIDriverId()};
}

} // namespace

int RunThumbnail(std::vector<DString> const &words) {
    std::vector<DString> known = words;
    std::replace(known.begin(), known.end(), DString("-s"), DString("--size")); // as thumbnailing services say it
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, known, error);
    if (!arguments)
        return UsageError(kSpec, error);
    std::optional<int> const side = CountIn(arguments->Value("--size", "256"), kMostSide);
    if (!side)
        return UsageError(kSpec, Format("a size is a number of pixels from 1 to %d", kMostSide));
    ReaderSettings settings; // whoever has asked waits, and has limits of their own
    RequestBudget &budget = settings.budgets[static_cast<std::size_t>(RequestKind::Thumbnail)];
    budget.time = settings.BudgetOf(RequestKind::Preview).time;
    UseReaderDrivers(settings);

    std::optional<Named> const named = NamedBy(arguments->words.front());
    if (!named)
        return kFailed;
    auto const drawing = std::make_shared<TableDrawing>();
    DCanvas picture;
    auto const paint = [drawing](TableGlimpse const &glimpse, int size) { return (*drawing)(glimpse, size); };
    if (MakeThumbnail(named->path, named->driverId, *side, nullptr, paint, picture) != ThumbnailOutcome::Made)
        return Failure(WithReason("no thumbnail of '" + arguments->words.front() + "'", named->path));
    if (!SavePicture(picture, arguments->words.back()))
        return Failure("cannot write '" + arguments->words.back() + "'");
    return kDone;
}

int RunThumbnails(std::vector<DString> const &words) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kPreferSpec, words, error);
    if (!arguments || arguments->words.front() != "prefer")
        return UsageError(kPreferSpec, arguments ? "there is nothing but prefer" : error);
    ThumbnailPreference const preference;
    if (DString const file = arguments->Has("--undo") ? preference.Undo() : preference.Set(); !file.empty())
        return Failure("cannot write '" + file + "'");
    return kDone;
}

} // namespace zelvar::tool
