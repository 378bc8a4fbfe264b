#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/search/Search.h"
#include "zelvar/search/SearchWords.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/ItemLines.h"
#include "zelvar/tool/StopByUser.h"

#include <chrono>
#include <cstdio>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("find");

using Kind = SearchQuery::Kind;
constexpr std::pair<std::string_view, Kind> kKinds[] = {
    {"any", Kind::Any},         {"folder", Kind::Folder},       {"file", Kind::File},
    {"dataset", Kind::DataSet}, {"container", Kind::Container}, {"image", Kind::Image}};
constexpr std::pair<std::string_view, int> kTypes[] = {{"u8", RDI_UInt8},   {"u16", RDI_UInt16}, {"i16", RDI_Int16},
                                                       {"u32", RDI_UInt32}, {"i32", RDI_Int32},  {"f32", RDI_Float32}};

template <class Value, std::size_t Size>
std::optional<Value> Among(std::pair<std::string_view, Value> const (&all)[Size], std::string_view word) {
    for (auto const &[name, value] : all)
        if (name == word)
            return value;
    return std::nullopt;
}

/// Reads the words of a query; false, with what is wrong in `why`.
class QueryWords {
public:
    QueryWords(Arguments const &arguments, DString &why) : m_arguments(arguments), m_why(why) {}

    bool Read(SearchQuery &query) {
        query.name = m_arguments.Value("--name");
        query.format = m_arguments.Value("--format");
        query.inside = m_arguments.Has("--inside");
        query.remote = m_arguments.Has("--remote");
        if (std::optional<Kind> const kind = Among(kKinds, m_arguments.Value("--kind", "any")))
            query.kind = *kind;
        else
            return Refuse("--kind", "is any, folder, file, dataset, container or image");
        if (m_arguments.Has("--type") || !m_arguments.Value("--type").empty()) {
            std::optional<int> const type = Among(kTypes, m_arguments.Value("--type"));
            if (!type)
                return Refuse("--type", "is u8, u16, i16, u32, i32 or f32");
            query.dataTypes = *type;
        }
        constexpr char kNumber[] = "is a whole number";
        constexpr char kBytes[] = "is a number of bytes, or as 10M";
        constexpr char kMoment[] = "is a date, as 2026-11-16, or an age, as 7d";
        auto const count = [](DString const &text) { return WholeNumberFrom(text); };
        auto const bytes = [](DString const &text) { return BytesFrom(text); };
        return Bound("--min-width", query.width.least, count, kNumber) &&
               Bound("--max-width", query.width.most, count, kNumber) &&
               Bound("--min-height", query.height.least, count, kNumber) &&
               Bound("--max-height", query.height.most, count, kNumber) &&
               Bound("--min-channels", query.channels.least, count, kNumber) &&
               Bound("--max-channels", query.channels.most, count, kNumber) &&
               Bound("--min-slices", query.slices.least, count, kNumber) &&
               Bound("--max-slices", query.slices.most, count, kNumber) &&
               Bound("--min-frames", query.frames.least, count, kNumber) &&
               Bound("--max-frames", query.frames.most, count, kNumber) &&
               Bound("--larger", query.bytes.least, bytes, kBytes) &&
               Bound("--smaller", query.bytes.most, bytes, kBytes) &&
               Bound("--newer", query.modified.least, MomentFrom, kMoment) &&
               Bound("--older", query.modified.most, MomentFrom, kMoment);
    }

private:
    bool Refuse(DString const &option, DString const &rule) {
        m_why = option + " " + rule;
        return false;
    }
    template <class Reading>
    bool Bound(char const *option, std::optional<std::int64_t> &bound, Reading const &read, char const *rule) {
        std::vector<DString> const values = m_arguments.All(option);
        if (values.empty())
            return true;
        bound = read(values.back());
        return bound || Refuse(option, rule);
    }

    Arguments const &m_arguments;
    DString &m_why;
};

/// Prints what is found as it comes; who reads along waits for no more than a moment.
class Printer {
public:
    explicit Printer(bool asJson) : m_asJson(asJson) {
        if (asJson)
            Print("[");
    }
    ~Printer() {
        if (m_asJson)
            Print("\n]\n");
        std::fflush(stdout);
    }
    Printer(Printer const &) = delete;
    Printer &operator=(Printer const &) = delete;

    void Take(SearchHit &&hit) {
        ListedItem const line = Listed(std::move(hit.item));
        if (m_asJson)
            Print((m_isFirst ? "" : ",") + JsonOf(line));
        else
            Print(LineOf(line));
        m_isFirst = false;
        Flush();
    }
    void Flush() {
        constexpr std::chrono::milliseconds kMoment{50};
        auto const now = std::chrono::steady_clock::now();
        if (now - m_flushed < kMoment)
            return;
        std::fflush(stdout);
        m_flushed = now;
    }

private:
    bool m_asJson;
    bool m_isFirst = true;
    std::chrono::steady_clock::time_point m_flushed{};
};

} // namespace

int RunFind(std::vector<DString> const &words) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    SearchQuery query;
    if (!QueryWords(*arguments, error).Read(query))
        return UsageError(kSpec, error);

    ReaderSettings settings; // nobody waits at a window
    settings.patience = std::chrono::seconds(60);
    UseReaderDrivers(settings);
    RefItemPtr<DataSourceItem> const place = ItemOrFailure(arguments->words.front());
    if (place == nullptr)
        return kFailed;

    StopByUser const stop;
    FactsStore store(arguments->Has("--no-cache") ? DString() : FactsStore::UsualFile());
    SearchProgress progress;
    {
        Printer printer(arguments->Has("--json"));
        progress =
            Search(query, &store).Run(place, stop.Signal(), [&](SearchHit &&hit) { printer.Take(std::move(hit)); });
    }
    if (progress.unread > 0) {
        DString const others = progress.unread == 1
                                   ? DString()
                                   : Format(" (and %lld other folders)", static_cast<long long>(progress.unread - 1));
        return Failure(WithReason("cannot read '" + progress.firstUnread + "'", progress.firstUnread,
                                  progress.firstWhy.message()) +
                       others);
    }
    return progress.hits == 0 ? kNothing : kDone;
}

} // namespace zelvar::tool
