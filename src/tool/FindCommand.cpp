#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/search/Search.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/ItemLines.h"
#include "zelvar/tool/StopByUser.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("find");

constexpr std::int64_t kSecond = 1'000'000'000;

std::optional<std::int64_t> WholeNumber(std::string_view text) {
    std::int64_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0 ? std::optional(number)
                                                                                   : std::nullopt;
}

/// "4096", "10K", "1.5" is none: bytes, with K, M, G and T as powers of 1024.
std::optional<std::int64_t> Bytes(std::string_view text) {
    constexpr std::string_view units = "KMGT";
    std::size_t const unit = text.empty() ? std::string_view::npos : units.find(text.back());
    if (unit == std::string_view::npos)
        return WholeNumber(text);
    text.remove_suffix(1);
    std::optional<std::int64_t> const number = WholeNumber(text);
    unsigned const shift = 10 * (static_cast<unsigned>(unit) + 1);
    return number && *number <= (INT64_MAX >> shift) ? std::optional(*number << shift) : std::nullopt;
}

/// "2026-11-16", "2026-11-16T10:30" or "2026-11-16T10:30:00" in local time, or so many days ago, "7d"; hours "12h".
std::optional<std::int64_t> Moment(DString const &text) {
    if (!text.empty() && (text.back() == 'd' || text.back() == 'h')) {
        std::optional<std::int64_t> const count = WholeNumber(std::string_view(text).substr(0, text.size() - 1));
        std::int64_t const each = text.back() == 'd' ? 86'400 : 3'600;
        std::int64_t const now = std::time(nullptr);
        return count && *count <= now / each ? std::optional((now - *count * each) * kSecond) : std::nullopt;
    }
    for (char const *const form : {"%Y-%m-%dT%H:%M:%S", "%Y-%m-%dT%H:%M", "%Y-%m-%d"}) {
        std::tm parts{};
        parts.tm_isdst = -1;
        char const *const end = strptime(text.c_str(), form, &parts);
        if (end != nullptr && *end == '\0')
            return static_cast<std::int64_t>(std::mktime(&parts)) * kSecond;
    }
    return std::nullopt;
}

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
        auto const count = [](DString const &text) { return WholeNumber(text); };
        auto const bytes = [](DString const &text) { return Bytes(text); };
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
               Bound("--newer", query.modified.least, Moment, kMoment) &&
               Bound("--older", query.modified.most, Moment, kMoment);
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
