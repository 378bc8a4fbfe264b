#include "zelvar/data/ProxySettings.h"

#include "zelvar/platform/os/DesktopNetwork.h"
#include "zelvar/platform/os/DesktopProxy.h"

#include <cstdlib>

namespace zelvar {

namespace {
constexpr std::size_t kMostNames = 1000;
} // namespace

ProxySettings::ProxySettings() : m_hasDesktop(platform::IsInDesktopSession()) {
    for (char const *name : kProxyVariables)
        if (char const *const value = std::getenv(name); value != nullptr && *value != '\0')
            m_environment[name] = value;
}

std::optional<Proxy> ProxySettings::Find(ConnectionTerms const &terms, DString const &host,
                                         platform::Patience const &patience) {
    if (!m_environment.empty())
        return ProxyFor(terms, host, [this](char const *name) {
            auto const at = m_environment.find(name);
            return at == m_environment.end() ? DString() : at->second;
        });
    DString const address = m_hasDesktop ? AddressForProxy(terms, host) : DString();
    if (address.empty())
        return std::nullopt;
    if (m_ofDesktop.size() > kMostNames)
        m_ofDesktop.clear();
    auto const [known, isNew] = m_ofDesktop.try_emplace(address);
    if (isNew)
        known->second = platform::FindDesktopProxy(address, patience);
    return known->second.empty() ? std::nullopt : std::optional(ProxyNamed(known->second));
}

} // namespace zelvar
