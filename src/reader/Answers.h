#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/data/Refusal.h"

#include <memory>
#include <tuple>
#include <utility>

#include <Messages_generated.h>

namespace zelvar::reader {

using Answer = wire::AnswerBodyUnion;

inline constexpr char const *kIncomplete = "the request is not complete";
inline constexpr char const *kStopped = "stopped";

template <class Body>
[[nodiscard]] Answer Say(Body body) {
    Answer answer;
    answer.Set(std::move(body));
    return answer;
}

[[nodiscard]] inline Answer Failure(DString reason, bool isRefusal = false) {
    wire::FailedT failed;
    failed.reason = std::move(reason);
    failed.isRefusal = isRefusal;
    return Say(std::move(failed));
}

/// What `work` answers for the thing that the request names, opened where it is not open yet; else why there is none.
template <class Opened, class Spec, class Work>
[[nodiscard]] Answer With(Opened &opened, std::unique_ptr<Spec> const &spec, Work work) {
    DString reason = kIncomplete;
    std::ignore = TakeRefusal(); // of a request before
    auto *const found = spec == nullptr ? nullptr : opened.Find(*spec, reason);
    return found == nullptr ? Failure(std::move(reason), TakeRefusal()) : work(*found);
}

} // namespace zelvar::reader
