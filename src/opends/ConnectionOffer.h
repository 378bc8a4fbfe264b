#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/connections/ConnectionFiles.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/StopSignal.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <functional>
#include <memory>

namespace zelvar {

class DataSourceList;

/// What would mend a connection that failed, as far as its user can do it from here: a host that it would have to reach
/// as well, a password, or trust in the certificate of its server, which its page tells all about. User-interface
/// thread.
class ConnectionOffer {
public:
    /// `message` is posted to `target` when a change has come to its end. `sources` outlives it.
    ConnectionOffer(DataSourceList &sources, platform::MessageTarget target, platform::MessageId message);
    ~ConnectionOffer();
    ConnectionOffer(ConnectionOffer const &) = delete;
    ConnectionOffer &operator=(ConnectionOffer const &) = delete;

    /// What to offer from now on. `place` is an address, or "source:NAME"; a failure that is not set offers nothing.
    void Look(DString const &place, DError const &failure);
    /// On a button; empty for no offer.
    [[nodiscard]] DString Button() const;
    /// What is wrong with the login, if the password is offered; else empty.
    [[nodiscard]] DString const &Login() const { return m_offer.login; }
    /// The name of the connection; empty for no offer.
    [[nodiscard]] DString const &Connection() const { return m_offer.connection; }

    /// Does what is offered; may ask the user, with a dialog over the list. True if a change has begun.
    [[nodiscard]] bool Take();
    /// To be called when the message has come. True if a change is done, and the connection to be tried again; of one
    /// that failed the user is told.
    [[nodiscard]] bool OnChanged();

private:
    struct Offer {
        DString connection{};
        HostAndPort host{};
        DString login{};
        bool isCertificate = false;
    };
    struct Changing;
    [[nodiscard]] static Offer OfferFor(DString const &place, DError const &failure);
    [[nodiscard]] bool TakePassword();
    [[nodiscard]] bool Change(std::function<ConnectionChange(StopSignal const &)> change);

    DataSourceList &m_sources;
    platform::MessageTarget m_target;
    platform::MessageId m_message;
    Offer m_offer;
    std::unique_ptr<Changing> m_changing; ///< null while nothing is changed
};

} // namespace zelvar
