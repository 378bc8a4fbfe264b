#include "zelvar/data/gdal/WebListing.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::array<std::string_view, 12> kMonths{"jan", "feb", "mar", "apr", "may", "jun",
                                                   "jul", "aug", "sep", "oct", "nov", "dec"};

template <class Number>
std::optional<Number> NumberOf(std::string_view text) {
    Number number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc{} && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

/// 1 to 12, of digits or the first three letters; 0 for none.
unsigned MonthOf(std::string_view text) {
    if (auto const number = NumberOf<unsigned>(text))
        return *number <= kMonths.size() ? *number : 0;
    auto const *const at =
        std::find_if(kMonths.begin(), kMonths.end(), [&](std::string_view m) { return EqualNoCase(m, text); });
    return at == kMonths.end() ? 0 : static_cast<unsigned>(at - kMonths.begin()) + 1;
}

/// Nanoseconds since 1970, 0 for what is no time; `time` as "10:00" or "10:00:30".
std::int64_t MomentOf(std::string_view year, std::string_view month, std::string_view day, std::string_view time) {
    auto const y = NumberOf<int>(year);
    auto const d = NumberOf<unsigned>(day);
    std::vector<DString> const parts = Split(time, ':');
    auto const part = [&](std::size_t i) { return i < parts.size() ? NumberOf<int>(parts[i]).value_or(-1) : -1; };
    int const hour = part(0);
    int const minute = part(1);
    int const second = parts.size() == 2 ? 0 : part(2);
    if (!y || !d || *y < 1970 || *y > 2200)
        return 0;
    using namespace std::chrono;
    year_month_day const date{std::chrono::year(*y), std::chrono::month(MonthOf(month)), std::chrono::day(*d)};
    if (!date.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60)
        return 0;
    auto const moment = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    return duration_cast<nanoseconds>(moment.time_since_epoch()).count();
}

/// The words between blanks.
std::vector<std::string_view> WordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    for (std::size_t i = text.find_first_not_of(" \t\r\n"); i != kNone; i = text.find_first_not_of(" \t\r\n", i)) {
        std::size_t const end = std::min(text.find_first_of(" \t\r\n", i), text.size());
        words.push_back(text.substr(i, end - i));
        i = end;
    }
    return words;
}

/// "Mon, 12 Jan 1998 09:25:56 GMT".
std::int64_t MomentOfHeader(std::string_view text) {
    std::vector<std::string_view> const words = WordsOf(text);
    return words.size() < 5 ? 0 : MomentOf(words[3], words[2], words[1], words[4]);
}

/// The path of an address, or of a reference that is none.
std::string_view PathOf(std::string_view reference) {
    if (std::size_t const mark = reference.find("://"); mark != kNone && mark < reference.find('/')) {
        std::size_t const slash = reference.find('/', mark + 3);
        reference = slash == kNone ? std::string_view("/") : reference.substr(slash);
    }
    return reference.substr(0, reference.find_first_of("?#"));
}

std::string_view WithoutEndSlashes(std::string_view path) { return path.substr(0, path.find_last_not_of('/') + 1); }

/// An entry of that name, as it is escaped in an address. A name that is none, or hidden, is empty.
FolderEntry EntryOf(std::string_view escaped) {
    FolderEntry entry;
    entry.isFolder = escaped.ends_with('/');
    entry.name = PercentDecoded(WithoutEndSlashes(escaped));
    bool const isName = !entry.name.starts_with('.') && entry.name.find_first_of(std::string_view("/\0", 2)) == kNone;
    if (!isName)
        entry.name.clear();
    return entry;
}

/// The child of that name, whatever stands for its name space.
XMLNode const *Child(XMLNode const &parent, std::string_view name) {
    for (XMLNode const *child = parent.GetFirstChild(); child != nullptr; child = child->GetNext()) {
        DString const whole = child->GetName();
        if (std::string_view(whole).substr(whole.find(':') + 1) == name)
            return child;
    }
    return nullptr;
}

/// The property's element in whichever of the parts has it: one holds those that are there, one those that are not.
XMLNode const *Property(XMLNode const &response, std::string_view name) {
    for (XMLNode const *part = response.GetFirstChild(); part != nullptr; part = part->GetNext()) {
        XMLNode const *const properties = Child(*part, "prop");
        XMLNode const *const found = properties == nullptr ? nullptr : Child(*properties, name);
        if (found != nullptr && (found->GetFirstChild() != nullptr || !found->GetText().empty()))
            return found;
    }
    return nullptr;
}

DString TextOf(XMLNode const *node) { return node == nullptr ? DString() : DString(Trimmed(node->GetText())); }

/// What an attribute's value means.
DString WithoutEntities(std::string_view text) {
    static constexpr std::pair<std::string_view, char> kEntities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&#39;", '\''}, {"&apos;", '\''}};
    DString out;
    for (std::size_t i = 0; i < text.size();) {
        auto const *const entity =
            text[i] != '&' ? std::end(kEntities)
                           : std::find_if(std::begin(kEntities), std::end(kEntities),
                                          [&](auto const &e) { return text.substr(i).starts_with(e.first); });
        bool const isEntity = entity != std::end(kEntities);
        out += isEntity ? entity->second : text[i];
        i += isEntity ? entity->first.size() : 1;
    }
    return out;
}

/// The position of `sought`, letters in any case and in lower case there; none behind `end`.
std::size_t FindTag(std::string_view text, std::string_view sought, std::size_t from, std::size_t end) {
    auto const *const at = std::search(text.begin() + static_cast<std::ptrdiff_t>(std::min(from, end)),
                                       text.begin() + static_cast<std::ptrdiff_t>(end), sought.begin(), sought.end(),
                                       [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a | 0x20 : a) == b; });
    auto const found = static_cast<std::size_t>(at - text.begin());
    return found == end && !sought.empty() ? kNone : found;
}

/// The value of "href" of an anchor, which stands between its "<a" and its ">".
std::string_view ReferenceIn(std::string_view anchor) {
    std::size_t const at = FindTag(anchor, "href=", 0, anchor.size());
    if (at == kNone)
        return {};
    std::string_view const value = anchor.substr(at + 5);
    char const quote = value.empty() ? '\0' : value.front();
    if (quote != '"' && quote != '\'')
        return value.substr(0, value.find_first_of(" \t\r\n"));
    return value.substr(1, value.find(quote, 1) - 1);
}

/// The last element of what lies right below `base`, a path with a separator at its end; empty for all else.
std::string_view NameBelow(std::string_view reference, std::string_view base) {
    if (reference.find_first_of("?#") != kNone)
        return {};
    bool const isWhole = reference.find("://") != kNone || reference.starts_with('/');
    if (isWhole && !PathOf(reference).starts_with(base))
        return {};
    if (isWhole)
        reference = PathOf(reference).substr(base.size());
    else if (reference.starts_with("./"))
        reference.remove_prefix(2);
    else if (reference.find(':') != kNone) // a scheme: there a colon of a name is escaped
        return {};
    bool const isOne = WithoutEndSlashes(reference).find('/') == kNone;
    return isOne ? reference : std::string_view();
}

/// What the page says behind a name: size and time, markup aside.
void ReadFigures(std::string_view tail, FolderEntry &entry) {
    DString text;
    bool isTag = false;
    for (char const c : tail) {
        isTag = c == '<' || (isTag && c != '>');
        text += isTag || c == '>' ? ' ' : c;
    }
    std::vector<std::string_view> const words = WordsOf(text);
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        std::vector<DString> const date = Split(words[i], '-');
        if (date.size() != 3)
            continue;
        bool const yearFirst = date[0].size() == 4;
        entry.modified = MomentOf(date[yearFirst ? 0 : 2], date[1], date[yearFirst ? 2 : 0], words[i + 1]);
        if (entry.modified == 0)
            continue;
        if (i + 2 < words.size() && !entry.isFolder)
            entry.size = NumberOf<std::int64_t>(words[i + 2]).value_or(-1);
        return;
    }
}

bool IsIndexPage(std::string_view page) {
    constexpr std::size_t head = 8192;
    std::size_t const end = std::min(page.size(), head);
    constexpr std::string_view words[] = {"<title>index of",   "<h1>index of",   "<h2>index of",
                                          "<title>listing of", "<h1>listing of", "directory listing for"};
    return std::any_of(std::begin(words), std::end(words),
                       [&](std::string_view word) { return FindTag(page, word, 0, end) != kNone; });
}

} // namespace

std::optional<std::vector<FolderEntry>> EntriesOfMultiStatus(std::string_view answer, std::string_view folder) {
    XMLNode root;
    if (!root.LoadText(answer) || !root.GetName().ends_with("multistatus"))
        return std::nullopt;
    DString const base = PercentDecoded(WithoutEndSlashes(PathOf(folder)));
    std::vector<FolderEntry> entries;
    for (XMLNode const *response = root.GetFirstChild(); response != nullptr; response = response->GetNext()) {
        DString const reference = TextOf(Child(*response, "href"));
        std::string_view const path = WithoutEndSlashes(PathOf(reference));
        std::size_t const slash = path.rfind('/');
        if (slash == kNone || PercentDecoded(WithoutEndSlashes(path.substr(0, slash))) != base)
            continue;
        FolderEntry entry = EntryOf(path.substr(slash + 1));
        XMLNode const *const kind = Property(*response, "resourcetype");
        entry.isFolder = kind != nullptr && Child(*kind, "collection") != nullptr;
        if (!entry.isFolder)
            entry.size = std::max<std::int64_t>(
                NumberOf<std::int64_t>(TextOf(Property(*response, "getcontentlength"))).value_or(-1), -1);
        entry.modified = MomentOfHeader(TextOf(Property(*response, "getlastmodified")));
        if (!entry.name.empty())
            entries.push_back(std::move(entry));
    }
    return entries;
}

std::optional<std::vector<FolderEntry>> EntriesOfIndexPage(std::string_view page, std::string_view folder) {
    constexpr std::size_t longestTail = 512; // of what is said of one entry
    if (!IsIndexPage(page))
        return std::nullopt;
    DString const base = DString(WithoutEndSlashes(PathOf(folder))) + "/";
    std::vector<FolderEntry> entries;
    for (std::size_t at = FindTag(page, "<a ", 0, page.size()); at != kNone;) {
        std::size_t const close = page.find('>', at);
        if (close == kNone)
            break;
        std::size_t const next = FindTag(page, "<a ", close, page.size());
        DString const reference = WithoutEntities(ReferenceIn(page.substr(at, close - at)));
        FolderEntry entry = EntryOf(NameBelow(reference, base));
        std::size_t const tailEnd = std::min({next, page.size(), close + 2 * longestTail});
        std::size_t const label = FindTag(page, "</a>", close, tailEnd);
        // A name may stand twice, as a picture and as a word.
        bool const isNew = entries.empty() || entries.back().name != entry.name;
        if (!entry.name.empty() && isNew)
            entries.push_back(std::move(entry));
        if (!entries.empty() && label != kNone && !EntryOf(NameBelow(reference, base)).name.empty())
            ReadFigures(page.substr(label, std::min(tailEnd - label, longestTail)), entries.back());
        at = next;
    }
    return entries;
}

} // namespace zelvar::gdal
