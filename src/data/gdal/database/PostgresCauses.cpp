#include "zelvar/data/gdal/database/PostgresCauses.h"

#include <algorithm>

namespace zelvar::gdal {

namespace {

using Cause = DError::Cause;

constexpr std::size_t kNone = std::string_view::npos;

struct StateCause {
    std::string_view beginning; ///< of the state: the first that fits counts
    Cause cause;
};
constexpr StateCause kStates[] = {
    {"28", Cause::NotPermitted},    // login
    {"3D000", Cause::Missing},      // database
    {"3F000", Cause::Missing},      // schema
    {"42P01", Cause::Missing},      // table
    {"42703", Cause::Missing},      // column
    {"42501", Cause::NotPermitted}, // rights
    {"42704", Cause::NotSupported}, // type
    {"42883", Cause::NotSupported}, // function
    {"0A", Cause::NotSupported},    //
    {"57014", Cause::Late},         // the time of a statement is over
    {"55P03", Cause::Late},         // that for a lock
    {"57P", Cause::NoAnswer},       // it goes down or comes up
    {"08", Cause::NoAnswer},        // the connection
    {"XX001", Cause::Damaged},      // data
    {"XX002", Cause::Damaged},      // index
};

/// What the library says by itself, in English.
struct Phrase {
    std::string_view words;
    Cause cause;
};
constexpr Phrase kPhrases[] = {
    {"no password supplied", Cause::NeedsPassword}, {"certificate verify failed", Cause::Untrusted},
    {"does not match host name", Cause::Untrusted}, {"root certificate file", Cause::Untrusted},
    {"server does not support SSL", Cause::Server},
};

/// Where the five characters stand: behind a word of the server's language for "fatal".
std::size_t PlaceOfState(std::string_view message) {
    constexpr std::string_view before = ":  ";
    constexpr std::size_t size = 5;
    auto const isPart = [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'); };
    for (std::size_t at = message.find(before); at != kNone; at = message.find(before, at + 1)) {
        std::size_t const begin = at + before.size();
        std::string_view const word = message.substr(begin, size);
        if (begin + size < message.size() && message[begin + size] == ':' && std::ranges::all_of(word, isPart))
            return begin;
    }
    return kNone;
}

/// The first line, without what stands before the server's words.
DString FirstLine(std::string_view message) {
    std::size_t const state = PlaceOfState(message);
    if (state != kNone)
        message.remove_prefix(std::min(message.find(' ', state), message.size()));
    return DString(Trimmed(message.substr(0, message.find('\n'))));
}

} // namespace

std::string_view PostgresStateIn(std::string_view message) {
    std::size_t const at = PlaceOfState(message);
    return at == kNone ? std::string_view() : message.substr(at, 5);
}

DError ErrorOfPostgres(DString const &subject, std::string_view state, std::string_view message) {
    auto const *const known = std::ranges::find_if(
        kStates, [&](StateCause const &row) { return !state.empty() && state.starts_with(row.beginning); });
    auto const *const phrase = std::ranges::find_if(
        kPhrases, [&](Phrase const &row) { return message.find(row.words) != std::string_view::npos; });
    Cause const cause = known != std::end(kStates)     ? known->cause
                        : !state.empty()               ? Cause::Server
                        : phrase != std::end(kPhrases) ? phrase->cause
                                                       : Cause::NoAnswer;
    DString const words = FirstLine(message);
    DError error;
    error.Set("\"" + subject + "\": " + (words.empty() ? DString("its server does not answer") : words), cause);
    return error;
}

} // namespace zelvar::gdal
