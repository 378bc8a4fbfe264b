#include "zelvar/connections/SecretStore.h"

#include "support/SessionBus.h"
#include "support/Test.h"
#include "zelvar/connections/KeyringService.h"

namespace zelvar {
namespace {

using Kept = SecretAnswer::Kept;
using std::chrono::milliseconds;

constexpr std::chrono::seconds kLong{30};

Connection Database(SecretPlace secret, DString const &user = "u") {
    return {.name = "n",
            .kind = ConnectionKind::PostgreSql,
            .fields = {{"host", "db.lab"}, {"database", "d"}, {"user", user}},
            .secret = secret};
}

TEST(Secret, ShowsItselfNowhereAndIsGoneWhenItIsReplaced) {
    DString text = "MARKER";
    Secret secret = Secret::TakenFrom(text);
    EXPECT_EQ(text, "");
    EXPECT_EQ(testing::PrintToString(secret), "***");
    Secret const copy = secret;
    char const *const bytes = secret.Reveal().data();
    EXPECT_EQ(std::exchange(secret, Secret("other")).Reveal(), copy.Reveal());
    EXPECT_NE(bytes, copy.Reveal().data());
    Wipe(text = DString(100, 'x'));
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(std::count(text.data(), text.data() + 100, '\0'), 100);
}

TEST(SecretStore, WithoutAKeyringMemoryKeepsThePasswordAndSaysSo) {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    SecretStore &store = SecretStore::Instance();
    for (auto const &[place, words] : test::Rows<SecretPlace, DString>{
             {SecretPlace::Keyring, "This desktop has no keyring."}, {SecretPlace::Ask, ""}}) {
        Connection const connection = Database(place, SecretPlaceText(place));
        EXPECT_EQ(store.Find(connection).kept, Kept::Nowhere);
        EXPECT_THAT(store.Find(connection).words, testing::StartsWith("Nothing tells a password"));
        EXPECT_EQ(store.Keep(connection, Secret("MARKER")).words, words);
        Connection renamed = connection;
        renamed.name = "another";
        EXPECT_EQ(store.Find(renamed).secret, Secret("MARKER"));
        EXPECT_EQ(store.Find(Database(place, "other")).kept, Kept::Nowhere);
        EXPECT_TRUE(store.Forget(connection));
        EXPECT_EQ(store.Find(connection).kept, Kept::Nowhere);
    }
    EXPECT_EQ(store.Find(Database(SecretPlace::None)).words, "");
}

TEST(SecretStore, TheKeyringOfADesktopKeepsThePasswordAndASilentOneHoldsNobody) {
    test::SessionBus bus;
    ASSERT_TRUE(bus.IsThere()) << "dbus-daemon, at-spi2-core, gnome-keyring";
    KeyringService::Attributes const attributes{{"application", "zelvar"}, {"user", "\xC3\xA9 \"}"}};
    EXPECT_EQ(KeyringService::Look(attributes, kLong).state, KeyringState::Missing);

    bus.StartKeyring();
    auto const isServed = [&] {
        return KeyringService::Store(attributes, "label", Secret("p\xC3\xA9 w"), kLong).state == KeyringState::Done;
    };
    auto const end = std::chrono::steady_clock::now() + kLong;
    while (!isServed() && std::chrono::steady_clock::now() < end) {
    }
    EXPECT_EQ(KeyringService::Look(attributes, kLong).secret, Secret("p\xC3\xA9 w"));
    EXPECT_EQ(KeyringService::Look({{"application", "zelvar"}, {"user", "x"}}, kLong).state, KeyringState::None);
    EXPECT_EQ(KeyringService::Store(attributes, "", Secret("\xFF"), kLong).state, KeyringState::Failed);
    EXPECT_EQ(KeyringService::Forget(attributes, kLong).state, KeyringState::Done);
    EXPECT_EQ(KeyringService::Forget(attributes, kLong).state, KeyringState::None);

    SecretStore &store = SecretStore::Instance();
    Connection const connection = Database(SecretPlace::Keyring, "\xFF");
    EXPECT_EQ(store.Keep(connection, Secret("MARKER")).kept, Kept::Keyring);
    EXPECT_EQ(store.Find(connection).kept, Kept::Keyring);
    EXPECT_EQ(store.Find(connection).secret, Secret("MARKER"));
    EXPECT_TRUE(store.Forget(connection));
    EXPECT_EQ(store.Find(connection).kept, Kept::Nowhere);

    ASSERT_TRUE(isServed());
    EXPECT_EQ(store.Keep(Database(SecretPlace::Keyring, "kept"), Secret("MARKER")).kept, Kept::Keyring);
    bus.LockKeyring();
    EXPECT_EQ(KeyringService::Look(attributes, kLong).state, KeyringState::Locked);
    EXPECT_EQ(KeyringService::Look({{"user", "x"}}, kLong).state, KeyringState::None);
    for (auto const &[user, words] :
         test::Rows<char const *, char const *>{{"kept", "The keyring is locked"}, {"x", ""}}) {
        Connection const asked = Database(SecretPlace::Keyring, user);
        EXPECT_EQ(store.KeyringRefusal(asked), "");
        EXPECT_EQ(store.Find(asked).kept, Kept::Nowhere);
        EXPECT_THAT(store.KeyringRefusal(asked), testing::StartsWith(words));
        EXPECT_EQ(store.KeyringRefusal(asked).empty(), *words == 0);
    }
    EXPECT_THAT(store.Keep(Database(SecretPlace::Keyring, "late"), Secret("MARKER")).words, HasSubstr("is locked"));
    bus.SilenceKeyring();
    EXPECT_EQ(KeyringService::Look(attributes, milliseconds(50)).state, KeyringState::Late);
    StopSignal const stop(true);
    EXPECT_EQ(KeyringService::Look(attributes, kLong, &stop).state, KeyringState::Stopped);
    EXPECT_EQ(store.Find(Database(SecretPlace::Keyring, "new"), &stop).words, "Stopped.");
    EXPECT_THAT(store.Find(connection).words, testing::StartsWith("Nothing tells")) << "known from before";
}

} // namespace
} // namespace zelvar
