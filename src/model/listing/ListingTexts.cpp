#include "zelvar/model/listing/ListingTexts.h"

#include <array>
#include <climits>
#include <clocale>
#include <ctime>

#include <langinfo.h>
#include <locale.h> // NOLINT(modernize-deprecated-headers): the system's own functions are in this one

namespace zelvar {

namespace {

/// What the user's locale says about numbers and times. Asked once: the locale of a process does not change under it.
struct LocaleRules {
    DString groupSeparator;
    DString grouping; ///< sizes of groups from the right, as in `lconv`
    DString date = "%Y-%m-%d";
    DString time = "%H:%M";
    locale_t locale = static_cast<locale_t>(nullptr);

    LocaleRules() : locale(newlocale(LC_ALL_MASK, "", nullptr)) {
        if (locale == nullptr)
            locale = newlocale(LC_ALL_MASK, "C", nullptr);
        if (locale == nullptr)
            return;
        locale_t const former = uselocale(locale); // of this thread alone
        lconv const &numbers = *localeconv();
        groupSeparator = numbers.thousands_sep;
        grouping = numbers.grouping;
        uselocale(former);
        DString const localTime = nl_langinfo_l(T_FMT, locale);
        DString const localDate = nl_langinfo_l(D_FMT, locale);
        constexpr char const *kNoLocale = "%m/%d/%y"; // of "C": two digits for the year and no hint at the order
        if (localDate.empty() || localDate == kNoLocale)
            return;
        date = localDate;
        time = WithoutSeconds(localTime == "%r" ? nl_langinfo_l(T_FMT_AMPM, locale) : localTime);
    }

private:
    static DString WithoutSeconds(DString format) {
        if (std::size_t const whole = format.find("%T"); whole != DString::npos)
            format.replace(whole, 2, "%H:%M");
        if (std::size_t const whole = format.find("%r"); whole != DString::npos)
            format.replace(whole, 2, "%I:%M %p");
        std::size_t const seconds = format.find("%S");
        if (seconds == DString::npos)
            return format;
        bool const afterSeparator = seconds > 0 && (format[seconds - 1] == ':' || format[seconds - 1] == '.');
        return format.erase(afterSeparator ? seconds - 1 : seconds, afterSeparator ? 3 : 2);
    }
};

LocaleRules const &Rules() {
    static LocaleRules const rules;
    return rules;
}

DString Grouped(DString digits) {
    LocaleRules const &rules = Rules();
    if (rules.groupSeparator.empty())
        return digits;
    std::size_t const first = digits.starts_with('-') ? 1 : 0;
    std::size_t at = digits.size();
    for (std::size_t group = 0; group < rules.grouping.size();) {
        char const size = rules.grouping[group];
        if (size <= 0 || size == CHAR_MAX || at <= first + static_cast<std::size_t>(size))
            break;
        at -= static_cast<std::size_t>(size);
        digits.insert(at, rules.groupSeparator);
        if (group + 1 < rules.grouping.size()) // the last size counts for all further groups
            ++group;
    }
    return digits;
}

} // namespace

DString FormatFileSize(std::int64_t size) {
    constexpr std::int64_t kKilobyte = 1024;
    bool const inBytes = size < kKilobyte;
    auto const number = static_cast<std::int32_t>(inBytes ? size : size / kKilobyte);
    return Grouped(std::to_string(number)) + (inBytes ? " B" : " KB");
}

DString FormatTime(SystemTime const &time) {
    std::tm fields{};
    fields.tm_year = time.wYear - 1900;
    fields.tm_mon = time.wMonth - 1;
    fields.tm_mday = time.wDay;
    fields.tm_wday = time.wDayOfWeek;
    fields.tm_hour = time.wHour;
    fields.tm_min = time.wMinute;
    fields.tm_sec = time.wSecond;
    LocaleRules const &rules = Rules();
    if (rules.locale == nullptr)
        return {};
    DString const format = rules.date + " " + rules.time;
    std::array<char, 200> text{};
    std::size_t const length = strftime_l(text.data(), text.size(), format.c_str(), &fields, rules.locale);
    return {text.data(), length};
}

} // namespace zelvar
