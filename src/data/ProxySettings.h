#pragma once

#include "zelvar/data/ProxyRule.h"
#include "zelvar/platform/os/Dialing.h"

#include <map>
#include <optional>

namespace zelvar {

/// The proxies that environment and desktop name. What the environment says is read when this is made, on a thread that
/// may; the rest is for one thread.
class ProxySettings {
public:
    ProxySettings();

    /// Which leads to a host of the connection, if any: as the environment says (`ProxyFor`), or the desktop's settings
    /// where it says nothing of proxies. These are asked once for a host, as long as the patience lasts.
    [[nodiscard]] std::optional<Proxy> Find(ConnectionTerms const &terms, DString const &host,
                                            platform::Patience const &patience);

private:
    std::map<DString, DString> m_environment; ///< what is set of it, by name
    bool m_hasDesktop;
    std::map<DString, DString> m_ofDesktop; ///< by address; empty for none
};

} // namespace zelvar
