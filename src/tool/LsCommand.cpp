#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/ItemLines.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("ls");

/// What was left out, and what to call the place that was named.
class Unread {
public:
    Unread(RefItemPtr<DataSourceItem> const &place, DString const &word) : m_place(place), m_word(word) {}

    void Tell(DataSourceItem &item, std::error_code error) {
        bool const isPlace = &item == m_place.get();
        m_hasPlace = m_hasPlace || isPlace;
        m_hasAny = true;
        auto const *const tree = dynamic_cast<TemplDataSourceItem *>(&item);
        DString const source = tree == nullptr ? item.GetPath() : tree->GetSource();
        DString fault = "cannot read '" + (isPlace ? m_word : item.GetPath()) + "'";
        if (isPlace && m_word.starts_with("source:"))
            fault += " at '" + source + "'";
        DError const failure = tree == nullptr ? DError() : tree->GetFailure();
        DString const reason = failure.IsSet() ? failure.Text() : error.message();
        Failure(WithReason(fault, source, !failure.IsSet() && error == std::errc::io_error ? kNotOpened : reason));
    }
    [[nodiscard]] bool HasPlace() const { return m_hasPlace; }
    [[nodiscard]] bool HasAny() const { return m_hasAny; }

private:
    RefItemPtr<DataSourceItem> m_place;
    DString m_word;
    bool m_hasPlace = false;
    bool m_hasAny = false;
};

void PrintItems(std::vector<ListedItem> const &items, bool asJson) {
    if (!asJson) {
        for (ListedItem const &item : items)
            Print(LineOf(item));
        return;
    }
    char const *before = "[";
    for (ListedItem const &item : items)
        Print(std::exchange(before, ",") + JsonOf(item));
    std::puts(items.empty() ? "[\n]" : "\n]");
}

} // namespace

int RunLs(std::vector<DString> const &words) {
    static std::map<DString, ListingSort> const sorts{{"none", ListingSort::None},
                                                      {"name", ListingSort::Name},
                                                      {"size", ListingSort::Size},
                                                      {"date", ListingSort::Date}};
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    auto const sort = sorts.find(arguments->Value("--sort", "name"));
    if (sort == sorts.end())
        return UsageError(kSpec, "sorting is by name, size or date, or none");

    // Nobody waits at a window.
    ReaderSettings settings;
    settings.probeInListing = std::chrono::seconds(10);
    settings.patience = std::chrono::seconds(60);
    UseReaderDrivers(settings);
    DString const &word = arguments->words.front();
    RefItemPtr<DataSourceItem> const place = ItemOrFailure(word);
    if (place == nullptr)
        return kFailed;
    bool const isAll = arguments->Has("--all");
    if (!isAll)
        std::ignore = BecomeContainer(*place);
    Unread unread(place, word);
    // For as long as the process lives: to take 100,000 items apart would only keep it from ending.
    static auto &items = *new std::vector<ListedItem>;
    items = ListItems(place, {.foldersOnly = arguments->Has("--folders"),
                              .recursive = arguments->Has("--recursive"),
                              .filter = arguments->Value("--filter"),
                              .sort = sort->second,
                              .descending = arguments->Has("--descending"),
                              .folding = {.sidecars = !isAll, .series = arguments->Has("--series"), .folders = !isAll},
                              .onUnread = [&](DataSourceItem &item, std::error_code why) { unread.Tell(item, why); }});
    if (items.empty() && unread.HasPlace())
        return kFailed;
    PrintItems(items, arguments->Has("--json"));
    return unread.HasAny() ? kFailed : items.empty() ? kNothing : kDone;
}

} // namespace zelvar::tool
