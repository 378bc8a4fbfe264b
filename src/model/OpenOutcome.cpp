#include "zelvar/model/OpenOutcome.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/Connection.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace zelvar {

namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

std::uint64_t Product(std::uint64_t a, std::uint64_t b) { return b != 0 && a > kMost / b ? kMost : a * b; }
std::uint64_t Sum(std::uint64_t a, std::uint64_t b) { return a > kMost - b ? kMost : a + b; }
std::uint64_t Count(int number) { return static_cast<std::uint64_t>(std::max(number, 0)); }
unsigned long long Printed(std::uint64_t number) { return number; }

struct CauseWords {
    DError::Cause cause;
    char const *words;
    char const *remedy;
};

constexpr CauseWords kCauses[] = {
    {DError::Cause::Missing, Mark("it is not there"), Mark("list its folder again with F5")},
    {DError::Cause::NotPermitted, Mark("you may not read it"),
     Mark("ask its owner for permission, or copy it to a place of yours")},
    {DError::Cause::NotSupported, Mark("its format is not supported"), Mark("convert it, or choose another file")},
    {DError::Cause::Damaged, Mark("it is damaged"), Mark("copy it again from where it comes from")},
    {DError::Cause::NeedsPassword, Mark("it needs a password"),
     Mark("give the password among its options or in its connection, or unpack it first")},
    {DError::Cause::Refused, Mark("it must not be opened"), Mark("copy what it refers to to this computer")},
    {DError::Cause::Server, Mark("its server refuses it"),
     Mark("check its address and your rights there, or try again later")},
    {DError::Cause::Late, Mark("it took too long"), Mark("try again, or copy it to a faster place")},
    {DError::Cause::TooLarge, Mark("it takes more memory than it may"),
     Mark("open a part of it, or a smaller version")},
    {DError::Cause::Crashed, Mark("it ends the program that reads it"), Mark("copy it again from where it comes from")},
    {DError::Cause::NoAnswer, Mark("its place does not answer"), Mark("check the connection, then try again")},
    {DError::Cause::Untrusted, Mark("its server's certificate is not trusted"),
     Mark("have the certificate of its authority installed on this computer")},
    {DError::Cause::NoConnection, Mark("no connection to its server is defined"),
     Mark("make one among the data sources")},
};

CauseWords const *WordsOf(DError const &error) {
    auto const *const found = std::find_if(std::begin(kCauses), std::end(kCauses),
                                           [&](CauseWords const &words) { return words.cause == error.Why(); });
    return found == std::end(kCauses) ? nullptr : found;
}

/// The host that kept it from being opened, if one did.
std::optional<HostAndPort> HostSentOn(DError const &error) {
    return error.Why() == DError::Cause::Refused ? HostSentOnTo(error.Text()) : std::nullopt;
}

/// A server wants it, and no container is encrypted.
bool IsLoginMissing(DError const &error) {
    DString const &text = error.Text();
    return error.Why() == DError::Cause::NeedsPassword && text.find("://") != DString::npos &&
           text.find("encrypted") == DString::npos;
}

/// "a, b, c" without what is empty.
DString Joined(std::vector<DString> const &parts, char const *between = ", ") {
    DString text;
    for (DString const &part : parts)
        if (!part.empty())
            text.append(text.empty() ? "" : between).append(part);
    return text;
}

DString SizeOf(ImageInfo const &image) {
    return image.isOfAnyResolution ? DString(Translated("any resolution"))
                                   : Format("%d x %d", image.width, image.height);
}
DString ChannelsOf(ImageInfo const &image) {
    return Format(Translated("%d channel", "%d channels", image.channels), image.channels);
}

bool IsLargerThan(ImageInfo const &image, std::uint64_t memory) { return memory != 0 && MemoryOf(image) > memory; }

DString TooLarge(std::uint64_t memory) {
    return Format(Translated("larger than the memory of this computer, %s"), BytesInWords(memory).c_str());
}

/// What is wrong with an image that opens; empty for nothing.
DString FaultOf(OpenFacts const &item, std::uint64_t memory) {
    std::vector<DString> faults;
    if (item.damage.IsSet())
        faults.push_back(item.rows > 0 ? Format(Translated("damaged: %d of %d rows read"), item.rowsRead, item.rows)
                                       : CauseInWords(item.damage));
    if (item.image && item.isOneImage && item.image->differs)
        faults.emplace_back(Translated("its files are not alike"));
    if (item.image && IsLargerThan(*item.image, memory))
        faults.push_back(TooLarge(memory));
    return Joined(faults);
}

DString Describe(ImageInfo const &image, DString const &members) {
    DString const figures =
        Joined({SizeOf(image), ChannelsOf(image),
                image.slices > 1 ? Format(Translated("%d slice", "%d slices", image.slices), image.slices) : DString(),
                image.timeFrames > 1
                    ? Format(Translated("%d time frame", "%d time frames", image.timeFrames), image.timeFrames)
                    : DString(),
                RDIGetDTName(image.dataType),
                image.isOfAnyResolution ? image.extent
                                        : Format(Translated("%s in memory"), BytesInWords(MemoryOf(image)).c_str()),
                members.empty() ? DString() : Format(Translated("files: %s"), members.c_str())});
    return image.driver.empty() ? figures : image.driver + ": " + figures;
}

DString Describe(TableInfo const &table) {
    DString const columns = Format(Translated("%llu column", "%llu columns", static_cast<long long>(table.columns)),
                                   Printed(table.columns));
    return table.driver.empty() ? columns : table.driver + ": " + columns;
}

/// A document, or what nobody could look at: it is there.
DString DescribeFile(OpenFacts const &item) {
    return item.fileSize < 0 ? DString() : BytesInWords(static_cast<std::uint64_t>(item.fileSize));
}

/// Whether something is known against an item that is not what is wished for. What is no image may well be a document.
bool IsAgainst(DError const &error, OpenWish const &wish) {
    return error.IsSet() &&
           (wish.IsTold() || error.Why() == DError::Cause::Missing || error.Why() == DError::Cause::NotPermitted);
}

/// Two of the values that are there, in the order of the items; empty if all are alike.
DString Differing(std::vector<DString> const &values) {
    std::vector<DString> distinct;
    for (DString const &value : values)
        if (std::find(distinct.begin(), distinct.end(), value) == distinct.end())
            distinct.push_back(value);
    if (distinct.size() < 2)
        return {};
    DString const two = distinct[0] + ", " + distinct[1];
    return distinct.size() == 2 ? two : two + ", ...";
}

/// "sizes: 64 x 48, 32 x 32", for each thing in which the images differ.
DString Differences(std::vector<ImageInfo const *> const &images) {
    std::vector<DString> sizes;
    std::vector<DString> channels;
    std::vector<DString> types;
    for (ImageInfo const *image : images) {
        sizes.push_back(SizeOf(*image));
        channels.push_back(std::to_string(image->channels));
        types.push_back(RDIGetDTName(image->dataType));
    }
    std::vector<DString> parts;
    if (DString const two = Differing(sizes); !two.empty())
        parts.push_back(Format(Translated("different sizes (%s)"), two.c_str()));
    if (DString const two = Differing(channels); !two.empty())
        parts.push_back(Format(Translated("different channels (%s)"), two.c_str()));
    if (DString const two = Differing(types); !two.empty())
        parts.push_back(Format(Translated("different types (%s)"), two.c_str()));
    return Joined(parts, "; ");
}

struct Failures {
    std::uint64_t count = 0;
    DString first; ///< what is said of the first of them
    DString reason;
    void Add(DString words, DString const &why) {
        if (count++ == 0) {
            first = std::move(words);
            reason = why;
        }
    }
    [[nodiscard]] DString Text() const {
        return count == 1 ? first : Format(Translated("%llu of them, first %s"), Printed(count), first.c_str());
    }
};

} // namespace

std::uint64_t MemoryOf(ImageInfo const &image) {
    if (image.isOfAnyResolution)
        return 0;
    std::uint64_t bytes = Count(RDIGetDTSize(image.dataType));
    for (int const factor : {image.width, image.height, image.channels, image.slices, image.timeFrames})
        bytes = Product(bytes, Count(factor));
    return bytes;
}

DString BytesInWords(std::uint64_t bytes) {
    constexpr std::array<char const *, 7> kUnits{"B", "KB", "MB", "GB", "TB", "PB", "EB"};
    constexpr double kStep = 1024;
    constexpr double kRoundsUp = 1023.5; // what would be shown as the next unit
    constexpr double kWhole = 9.95;      // from here on without decimals
    auto number = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; number >= kRoundsUp && unit + 1 < kUnits.size(); ++unit)
        number /= kStep;
    return Format(unit > 0 && number < kWhole ? "%.1f %s" : "%.0f %s", number, kUnits[unit]);
}

DString CauseInWords(DError const &error) {
    CauseWords const *const words = WordsOf(error);
    if (words == nullptr)
        return error.Text();
    if (std::optional<HostAndPort> const host = HostSentOn(error))
        return Format(Translated("its server sends on to %s, which its connection does not name"),
                      TextOf(*host).c_str());
    if (error.Why() == DError::Cause::Refused && error.IsSet())
        return Format(Translated("it must not be opened (%s)"), error.Text().c_str());
    auto const detail = static_cast<long long>(error.Detail());
    constexpr long long kSecond = 1000; // ms
    if (detail >= 0 && error.Why() == DError::Cause::Damaged)
        return Format(Translated("it is damaged at byte %lld"), detail);
    if (detail >= 0 && error.Why() == DError::Cause::Server)
        return Format(Translated("its server answered %lld"), detail);
    if (detail >= kSecond && error.Why() == DError::Cause::Late)
        return Format(Translated("it took longer than %lld s"), detail / kSecond);
    return Translated(words->words);
}

DString RemedyInWords(DError const &error) {
    if (HostSentOn(error))
        return Translated("allow that host if it is right");
    if (IsLoginMissing(error))
        return Translated("give the password in its connection");
    CauseWords const *const words = WordsOf(error);
    return words == nullptr ? DString() : Translated(words->remedy);
}

OpenOutcome OutcomeOf(OpenFacts const &item, OpenWish const &wish, std::uint64_t memory) {
    OpenOutcome outcome;
    if (!item.Opens(wish) && IsAgainst(item.error, wish)) {
        DString const cause = Format(Translated("cannot be opened: %s"), CauseInWords(item.error).c_str());
        bool const isTold = cause.find(item.error.Text()) != DString::npos;
        return {.isUsable = false,
                .text = Joined({cause, RemedyInWords(item.error)}, "; "),
                .reason = isTold ? DString() : item.error.Text()};
    }
    if (item.table && (wish.table || !item.image))
        outcome.text = Joined({Describe(*item.table), DescribeFile(item)});
    else if (!item.image)
        outcome.text = DescribeFile(item);
    if (!outcome.text.empty() || !item.image)
        return outcome;
    DString const fault = FaultOf(item, memory);
    outcome.isUsable = fault.empty() || !wish.IsTold();
    outcome.text = Joined({Describe(*item.image, item.members), fault, item.image->differences,
                           item.damage.IsSet() ? RemedyInWords(item.damage) : DString()},
                          "; ");
    if (outcome.text.find(item.damage.Text()) == DString::npos)
        outcome.reason = item.damage.Text();
    return outcome;
}

OpenOutcome OutcomeOf(std::span<OpenFacts const> looked, std::uint64_t selected, OpenWish const &wish,
                      std::uint64_t memory) {
    if (looked.size() == 1 && selected == 1)
        return OutcomeOf(looked.front(), wish, memory);
    std::vector<ImageInfo const *> images;
    std::uint64_t needed = 0;
    std::uint64_t onDisk = 0;
    Failures unopened;
    Failures faulty;
    for (OpenFacts const &item : looked) {
        onDisk = Sum(onDisk, static_cast<std::uint64_t>(std::max<std::int64_t>(item.fileSize, 0)));
        if (!item.Opens(wish) && IsAgainst(item.error, wish)) {
            unopened.Add(item.name + " (" + CauseInWords(item.error) + ")", item.error.Text());
            continue;
        }
        if (!item.image)
            continue;
        images.push_back(&*item.image);
        needed = Sum(needed, MemoryOf(*item.image));
        if (DString const fault = wish.IsTold() ? FaultOf(item, 0) : DString(); !fault.empty())
            faulty.Add(item.name + " (" + fault + ")", item.damage.Text());
    }
    bool const isTooMuch = wish.IsTold() && memory != 0 && needed > memory;

    auto const count = static_cast<long long>(std::min<std::uint64_t>(selected, std::numeric_limits<int>::max()));
    DString head = Format(Translated("%llu item", "%llu items", count), Printed(selected));
    if (looked.empty())
        return {.isUsable = true, .text = head, .reason = {}};
    if (looked.size() < selected)
        head += Format(Translated(", of the first %llu"), Printed(looked.size()));
    DString const size =
        images.empty() ? BytesInWords(onDisk) : Format(Translated("%s in memory"), BytesInWords(needed).c_str());
    OpenOutcome outcome;
    outcome.isUsable = unopened.count == 0 && faulty.count == 0 && !isTooMuch;
    outcome.text =
        head + ": " +
        Joined({size,
                unopened.count == 0 ? DString() : Format(Translated("cannot be opened: %s"), unopened.Text().c_str()),
                faulty.count == 0 ? DString() : Format(Translated("not whole: %s"), faulty.Text().c_str()),
                isTooMuch ? TooLarge(memory) : DString(), Differences(images)},
               "; ");
    outcome.reason = unopened.count > 0 ? unopened.reason : faulty.reason;
    return outcome;
}

} // namespace zelvar
