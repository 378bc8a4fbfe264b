#pragma once

#include "zelvar/connections/Secret.h"
#include "zelvar/data/StopSignal.h"

#include <chrono>
#include <map>

namespace zelvar {

/// What became of a question to the desktop's service for secrets.
enum class KeyringState {
    Done,
    None,    ///< there is no such secret
    Missing, ///< no session bus, no such service on it, or no library to speak to it with
    Locked,  ///< there is one, and the user has not unlocked the keyring that holds it
    Failed,  ///< the service says no
    Stopped,
    Late,
};

struct KeyringAnswer {
    KeyringState state = KeyringState::Missing;
    Secret secret{};
    DString reason{}; ///< the service's own words for `Failed`
};

/// The desktop's service for secrets, through libsecret, which is loaded at the first question. A question may make the
/// service ask its user to unlock the keyring: each is put by a thread of its own, which whoever waits may leave to
/// itself by `stop`, by the end of his `RequestScope` or by the time that he gives it. Any thread.
class KeyringService {
public:
    using Attributes = std::map<DString, DString>; ///< UTF-8

    /// All attributes of a secret must be told to find it again.
    [[nodiscard]] static KeyringAnswer Look(Attributes const &attributes, std::chrono::milliseconds time,
                                            StopSignal const *stop = nullptr);
    /// Replaces one of the same attributes. `label` is what the user sees of it in the desktop's own program. Fails for
    /// what is no UTF-8.
    [[nodiscard]] static KeyringAnswer Store(Attributes const &attributes, DString const &label, Secret const &secret,
                                             std::chrono::milliseconds time, StopSignal const *stop = nullptr);
    [[nodiscard]] static KeyringAnswer Forget(Attributes const &attributes, std::chrono::milliseconds time,
                                              StopSignal const *stop = nullptr);
};

} // namespace zelvar
