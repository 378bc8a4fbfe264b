#include "zelvar/data/reader/OptionMessage.h"

#include <utility>

namespace zelvar {

namespace {

using Kind = DriverOption::Kind;

enum Scope : std::uint32_t { kRasters = 1, kLayers = 2, kBarred = 4, kSecret = 8 };

Kind KindFrom(std::int32_t number) {
    return number >= 0 && number < static_cast<std::int32_t>(Kind::Text) ? static_cast<Kind>(number) : Kind::Text;
}

template <class Optional>
std::optional<double> NumberFrom(Optional const &told) {
    return told.has_value() && *told == *told ? std::optional<double>(*told) : std::nullopt; // a NaN is none
}

} // namespace

std::vector<std::unique_ptr<wire::OptionFactsT>> OptionsToWire(std::vector<DriverOption> const &options) {
    std::vector<std::unique_ptr<wire::OptionFactsT>> facts;
    facts.reserve(options.size());
    for (DriverOption const &option : options) {
        auto told = std::make_unique<wire::OptionFactsT>();
        told->name = option.name;
        told->kind = static_cast<std::int32_t>(option.kind);
        told->usual = option.usual;
        if (option.least)
            told->least = *option.least;
        if (option.most)
            told->most = *option.most;
        told->longest = option.longest;
        told->description = option.description;
        told->choices = option.choices;
        told->scope = (option.forRasters ? kRasters : 0U) | (option.forLayers ? kLayers : 0U) |
                      (option.isBarred ? kBarred : 0U) | (option.isSecret ? kSecret : 0U);
        facts.push_back(std::move(told));
    }
    return facts;
}

std::vector<DriverOption> OptionsFromWire(std::vector<std::unique_ptr<wire::OptionFactsT>> &&facts) {
    std::vector<DriverOption> options;
    options.reserve(facts.size());
    for (std::unique_ptr<wire::OptionFactsT> const &told : facts) {
        if (told == nullptr || told->name.empty())
            continue;
        options.push_back({.name = ToValidUtf8(told->name),
                           .kind = KindFrom(told->kind),
                           .usual = ToValidUtf8(told->usual),
                           .least = NumberFrom(told->least),
                           .most = NumberFrom(told->most),
                           .longest = told->longest,
                           .description = ToValidUtf8(told->description),
                           .choices = std::move(told->choices),
                           .forRasters = (told->scope & kRasters) != 0,
                           .forLayers = (told->scope & kLayers) != 0,
                           .isBarred = (told->scope & kBarred) != 0,
                           .isSecret = (told->scope & kSecret) != 0});
        for (DString &choice : options.back().choices)
            choice = ToValidUtf8(choice);
    }
    return options;
}

} // namespace zelvar
