#include "zelvar/opends/search/SearchDraft.h"

#include "zelvar/base/Translation.h"
#include "zelvar/search/SearchWords.h"

namespace zelvar {

namespace {

struct Rule {
    enum class Reads { Number, Bytes, Moment };
    SearchDraft::Bounds SearchDraft::*text;
    SearchRange SearchQuery::*range;
    Reads reads;
};
using Reads = Rule::Reads;
constexpr Rule kRules[] = {
    {&SearchDraft::width, &SearchQuery::width, Reads::Number},
    {&SearchDraft::height, &SearchQuery::height, Reads::Number},
    {&SearchDraft::channels, &SearchQuery::channels, Reads::Number},
    {&SearchDraft::slices, &SearchQuery::slices, Reads::Number},
    {&SearchDraft::frames, &SearchQuery::frames, Reads::Number},
    {&SearchDraft::bytes, &SearchQuery::bytes, Reads::Bytes},
    {&SearchDraft::modified, &SearchQuery::modified, Reads::Moment},
};

std::optional<std::int64_t> BoundFrom(DString const &text, Reads reads) {
    return reads == Reads::Number ? WholeNumberFrom(text) : reads == Reads::Bytes ? BytesFrom(text) : MomentFrom(text);
}

DString FaultInWords(DString const &text, Reads reads) {
    switch (reads) {
    case Reads::Number:
        return Format(Translated("\"%s\" is no whole number"), text.c_str());
    case Reads::Bytes:
        return Format(Translated("\"%s\" is no size, as 10M or 4096"), text.c_str());
    case Reads::Moment:
        break;
    }
    return Format(Translated("\"%s\" is no date, as 2026-11-16, and no age, as 7d"), text.c_str());
}

/// False if the text is there and cannot be read.
bool Read(DString const &typed, Rule const &rule, std::optional<std::int64_t> &bound) {
    DString const text(Trimmed(typed));
    if (text.empty())
        return true;
    bound = BoundFrom(text, rule.reads);
    return bound.has_value();
}

} // namespace

std::optional<SearchQuery> SearchDraft::ToQuery(Fault &fault) const {
    SearchQuery query{.name = DString(Trimmed(name)),
                      .kind = kind,
                      .format = DString(Trimmed(format)),
                      .dataTypes = dataTypes,
                      .inside = inside,
                      .remote = remote};
    for (Rule const &rule : kRules) {
        Bounds const &texts = this->*rule.text;
        SearchRange &range = query.*rule.range;
        bool const isLeastRight = Read(texts.least, rule, range.least);
        bool const isRight = isLeastRight && Read(texts.most, rule, range.most);
        bool const isEmpty = isRight && range.least && range.most && *range.most < *range.least;
        if (isRight && !isEmpty)
            continue;
        DString const &text = isLeastRight ? texts.most : texts.least;
        fault = {rule.text, isLeastRight,
                 isEmpty ? Format(Translated("\"%s\" is less than the bound before it"), text.c_str())
                         : FaultInWords(text, rule.reads)};
        return std::nullopt;
    }
    return query;
}

bool SearchDraft::HasFacts() const {
    auto const isSet = [this](Rule const &rule) {
        Bounds const &texts = this->*rule.text;
        return !Trimmed(texts.least).empty() || !Trimmed(texts.most).empty();
    };
    bool isAnySet = kind != SearchQuery::Kind::Any || !Trimmed(format).empty() || dataTypes != 0 || inside || remote;
    for (Rule const &rule : kRules)
        isAnySet = isAnySet || isSet(rule);
    return isAnySet;
}

} // namespace zelvar
