#pragma once

#include "zelvar/base/Report.h"

#include <memory>
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

[[nodiscard]] inline Answer Failure(DError const &error) {
    wire::FailedT failed;
    failed.reason = error.Text();
    failed.cause = static_cast<std::uint32_t>(error.Why());
    failed.detail = error.Detail();
    return Say(std::move(failed));
}
[[nodiscard]] inline Answer Failure(DString const &reason, DError::Cause cause = DError::Cause::Unknown) {
    DError error;
    error.Set(reason, cause);
    return Failure(error);
}

/// What `work` answers for the thing that the request names, opened where it is not open yet; else why there is none.
template <class Opened, class Spec, class Work>
[[nodiscard]] Answer With(Opened &opened, std::unique_ptr<Spec> const &spec, Work work) {
    DError error;
    error.Set(kIncomplete);
    auto *const found = spec == nullptr ? nullptr : opened.Find(*spec, error);
    return found == nullptr ? Failure(error) : work(*found);
}

} // namespace zelvar::reader
