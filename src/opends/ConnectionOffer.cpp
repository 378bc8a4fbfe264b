#include "zelvar/opends/ConnectionOffer.h"

#include "zelvar/base/Translation.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/ListingWords.h"
#include "zelvar/connections/SecretStore.h"
#include "zelvar/opends/ConnectionRows.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/TextQuestion.h"
#include "zelvar/opends/connections/Errand.h"

#include <QtCore/QPointer>

#include <optional>
#include <utility>

namespace zelvar {

/// The change of a definition or of a password, on a thread of its own.
struct ConnectionOffer::Changing {
    std::shared_ptr<Errand> errand;
    std::shared_ptr<Handover<ConnectionChange>> result = std::make_shared<Handover<ConnectionChange>>();
};

ConnectionOffer::ConnectionOffer(DataSourceList &sources, platform::MessageTarget target, platform::MessageId message)
    : m_sources(sources), m_target(std::move(target)), m_message(message) {}

ConnectionOffer::~ConnectionOffer() {
    if (m_changing != nullptr)
        m_changing->errand->Release(); // what it has begun it ends
}

void ConnectionOffer::Look(DString const &place, DError const &failure) {
    // Whoever cannot make connections cannot change them here either.
    bool const mayChange = m_sources.Connections() != nullptr && failure.IsSet();
    m_offer = mayChange ? OfferFor(place, failure) : Offer();
}

ConnectionOffer::Offer ConnectionOffer::OfferFor(DString const &place, DError const &failure) {
    constexpr std::string_view kByName = "source:";
    std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
    ConnectionBook::Entry const *const entry =
        place.starts_with(kByName) ? book->Find(place.substr(kByName.size())) : book->FindByAddress(place);
    if (entry == nullptr)
        return {};
    zelvar::Connection const &connection = entry->connection;
    if (failure.Why() == DError::Cause::Refused) {
        std::optional<HostAndPort> host = HostSentOnTo(failure.Text());
        return host ? Offer{.connection = connection.name, .host = *std::move(host)} : Offer();
    }
    if (failure.Why() == DError::Cause::Untrusted && !HostUntrustedElsewhere(failure.Text()))
        return {.connection = connection.name, .isCertificate = true};
    bool const isTyped = connection.secret == SecretPlace::Ask || connection.secret == SecretPlace::Keyring;
    DString login = isTyped ? LoginFailureInWords(connection, failure) : DString();
    if (DString const refusal = SecretStore::Instance().KeyringRefusal(connection); !login.empty() && !refusal.empty())
        login = refusal; // which is why the server was told none
    return login.empty() ? Offer() : Offer{.connection = connection.name, .login = std::move(login)};
}

DString ConnectionOffer::Button() const {
    if (m_offer.connection.empty() || m_changing != nullptr)
        return {};
    if (m_offer.isCertificate)
        return Translated("Certificate...");
    return m_offer.login.empty() ? Format(Translated("Allow %s"), TextOf(m_offer.host).c_str())
                                 : DString(Translated("Password..."));
}

bool ConnectionOffer::Take() {
    if (m_offer.connection.empty() || m_changing != nullptr)
        return false;
    if (!m_offer.login.empty())
        return TakePassword();
    if (!m_offer.isCertificate)
        return Change([offer = m_offer](StopSignal const &) { return AllowHost(offer.connection, offer.host); });
    m_sources.Connections()->Edit(m_offer.connection, true);
    return false;
}

bool ConnectionOffer::TakePassword() {
    QPointer<DataSourceList> const list(&m_sources); // whose window may be gone when the user has typed, and this, too
    DString const name = m_offer.connection;         // another failure may be shown by then
    std::optional<Secret> const typed =
        AskForPassword(m_sources.window(), Format(Translated("Password of %s:"), name.c_str()));
    std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
    ConnectionBook::Entry const *const entry = book->Find(name);
    if (!typed || typed->IsEmpty() || list.isNull() || entry == nullptr)
        return false;
    return Change([connection = entry->connection, typed = *typed](StopSignal const &stop) {
        std::ignore = SecretStore::Instance().Keep(connection, typed, &stop); // in memory at least
        return ConnectionChange{.isDone = true};
    });
}

bool ConnectionOffer::Change(std::function<ConnectionChange(StopSignal const &)> change) {
    auto changing = std::make_unique<Changing>();
    changing->errand = Errand::Start(
        [change = std::move(change), result = changing->result](StopSignal const &stop) { result->Put(change(stop)); },
        m_target, m_message);
    if (changing->errand == nullptr) {
        Report::UserNotification("There is no thread for it now. Try again.");
        return false;
    }
    m_changing = std::move(changing);
    return true;
}

bool ConnectionOffer::OnChanged() {
    if (m_changing == nullptr || m_changing->errand->IsAtWork())
        return false;
    std::unique_ptr<Changing> const done = std::move(m_changing);
    done->errand->Release();
    bool isDone = false;
    for (ConnectionChange const &change : done->result->TakeAll())
        if (change.isDone)
            isDone = true;
        else
            Report::UserNotification("The connections stay as they are: %s", change.words.c_str());
    return isDone;
}

} // namespace zelvar
