#include "zelvar/tool/Commands.h"

#include "zelvar/base/ByteEscapes.h"
#include "zelvar/base/Redaction.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/SeriesPlace.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/tool/CommandTable.h"

#include <cstdio>

namespace zelvar::tool {

namespace {

bool IsThere(DString const &place) {
    std::size_t const slash = place.find('/'); // behind what a driver puts before a path
    if (slash != DString::npos && !DoesPlaceAnswer(place.substr(slash)))
        return false;
    BDIMoniker const moniker(place, nullptr);
    auto const series = SeriesOf(moniker);
    return series ? HasMembers(*series) : !moniker.FindFile().empty();
}

} // namespace

DString PlaceOf(DString const &typed) {
    DString const word = TakeSecrets(typed);
    DString const named = TakeSecrets(UnescapeBytes(word));
    return named == word || IsThere(word) || !IsThere(named) ? word : named;
}

RefItemPtr<DataSourceItem> ItemOrFailure(DString const &word) {
    DString const named = PlaceOf(word);
    DError whyNot;
    RefItemPtr<DataSourceItem> item = ItemFromPlace(named, &whyNot);
    if (item == nullptr)
        Failure(WithReason("cannot read '" + word + "'", named, whyNot.IsSet() ? whyNot.Text() : kNotOpened));
    return item;
}

int UsageError(CommandSpec const &spec, DString const &why) {
    std::fprintf(stderr, "zelvar: %s\nusage: zelvar %s\n", Redacted(why).c_str(), Synopsis(spec).c_str());
    return kUsage;
}

int Failure(DString const &why) {
    std::fprintf(stderr, "zelvar: %s\n", EscapeControlBytes(Redacted(why)).c_str());
    return kFailed;
}

DString WithReason(DString const &fault, DString const &source, DString const &otherwise) {
    DString reason = ReaderFailureOf(source);
    if (reason.empty())
        reason = ReasonAgainst(source);
    if (reason.empty())
        reason = otherwise;
    // What drivers say begins with what they were asked for.
    if (DString const named = "\"" + source + "\": "; reason.starts_with(named))
        reason.erase(0, named.size());
    return reason.empty() ? fault : fault + ": " + reason;
}

} // namespace zelvar::tool
