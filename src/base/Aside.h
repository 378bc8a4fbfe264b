#pragma once

#include <future>
#include <system_error>
#include <type_traits>

namespace zelvar {

/// Does the work on a thread of its own. Where the system has none to give, whoever waits for the result does it.
template <class Work>
[[nodiscard]] std::future<std::invoke_result_t<Work &>> DoAside(Work work) {
    try {
        return std::async(std::launch::async, work);
    } catch (std::system_error const &) {
        return std::async(std::launch::deferred, work);
    }
}

} // namespace zelvar
