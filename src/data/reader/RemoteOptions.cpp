#include "zelvar/data/reader/RemoteOptions.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/OptionMessage.h"
#include "zelvar/data/reader/Readers.h"

namespace zelvar {

namespace {

Readers::Answer Ask(DString const &driverId, DString const &moniker) {
    EnsureDrivers(); // they have time of their own
    wire::DescribeOptionsT body;
    body.driver = driverId;
    body.moniker = WithSecrets(moniker);
    Readers::Call const call{.kind = RequestKind::Probe, .what = "options", .subject = moniker};
    return Readers::Instance().Ask(call, std::move(body));
}

std::optional<DriverOptionLists> OptionsOf(DString const &driverId) {
    Readers::Answer const answer = Ask(driverId, {});
    auto *const described = answer.message == nullptr ? nullptr : answer.message->body.AsOptionsDescribed();
    if (described == nullptr)
        return std::nullopt;
    return DriverOptionLists{.open = OptionsFromWire(std::move(described->open)),
                             .create = OptionsFromWire(std::move(described->create))};
}

DString DriverOf(BDIMoniker const &moniker) {
    Readers::Answer const answer = Ask({}, moniker.GetText());
    auto const *const described = BodyOf<wire::OptionsDescribedT>(answer.message.get());
    return described == nullptr ? DString() : described->driver;
}

} // namespace

OptionQuestions const kOptionsInReaders{.options = &OptionsOf, .tellDriver = &DriverOf};

} // namespace zelvar
