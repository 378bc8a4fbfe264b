#include "zelvar/connections/ConnectionDraft.h"

#include "support/Test.h"
#include "zelvar/base/Hex.h"
#include "zelvar/connections/ConnectionSaving.h"
#include "zelvar/connections/ListingWords.h"

namespace zelvar {
namespace {

using enum ConnectionKind;

DString FaultyFields(ConnectionDraft const &draft) {
    DString keys;
    for (ConnectionFault const &fault : draft.Faults())
        keys += fault.field + " ";
    return keys;
}

TEST(ConnectionDraft, KeepsTextsRightOrWrong) {
    ConnectionDraft draft(Connection{.name = "n",
                                     .kind = PostgreSql,
                                     .fields = {{"host", "db.lab"}, {"database", "d"}},
                                     .allow = {{"cdn.lab", 443}, {"::1", 80}},
                                     .timeLimit = std::chrono::seconds(7)});
    EXPECT_EQ(draft.allow, "cdn.lab:443, [::1]:80");
    EXPECT_EQ(draft.ToConnection().allow.size(), 2U);
    for (auto const &[limit, seconds, faulty] :
         test::Rows<char const *, int, DString>{{"7", 7, ""},
                                                {" 1 ", 1, ""},
                                                {"3600", 3600, ""},
                                                {"3601", 0, "timeLimit "},
                                                {"0", 0, "timeLimit "},
                                                {"1.5", 0, "timeLimit "},
                                                {"-1", 0, "timeLimit "},
                                                {"99999999999999", 0, "timeLimit "},
                                                {" ", 0, ""}}) {
        draft.timeLimit = limit;
        EXPECT_EQ(draft.ToConnection().timeLimit.count(), seconds) << limit;
        EXPECT_EQ(FaultyFields(draft), faulty) << limit;
    }
    draft.allow = "a.lab; b:x";
    draft.name = " ";
    EXPECT_EQ(FaultyFields(draft), "name allow ");
    draft.SetText("sslmode", "prefer");
    draft.SetText("host", " db.lab ");
    EXPECT_EQ(draft.ToConnection().Field("sslmode"), "") << "as usual";
    EXPECT_EQ(draft.ToConnection().Field("host"), "db.lab");
}

TEST(ConnectionDraft, OfAnotherKindTakesAlongWhatMeansTheSame) {
    ConnectionDraft draft;
    draft.secret = SecretPlace::Profile;
    draft.SetText("service", "lab");
    draft.SetText("user", "ann");
    draft.SetKind(MapService);
    EXPECT_EQ(draft.Text("service"), "") << "another thing";
    EXPECT_EQ(draft.Text("user"), "ann");
    EXPECT_NE(draft.secret, SecretPlace::Profile) << "map services have none";
    draft.SetText("address", "https://maps.lab/ows?map=a");
    draft.SetKind(WebFolder);
    EXPECT_EQ(draft.Text("address"), "https://maps.lab/ows?map=a");
    draft.SetKind(PostgreSql);
    EXPECT_EQ(draft.Text("service"), "lab");
}

TEST(ConnectionDraft, AUserThatIsTypedIntoAnAddressLogsIn) {
    ConnectionDraft draft;
    for (ConnectionKind const kind : {WebFolder, MapService}) {
        draft.SetKind(kind);
        draft.SetText("address", "http://a%40b@cloud.lab/dav/");
        EXPECT_EQ(MakeTerms({.connection = draft.ToConnection(), .secret = {}}).options.at("user"), "a@b");
    }
}

TEST(ConnectionDraft, TakesAPastedAddress) {
    for (auto const &[before, text, kind, field, value, name] :
         test::Rows<ConnectionKind, char const *, ConnectionKind, char const *, char const *, char const *>{
             {WebFolder, "postgresql://ann:pw@db.lab/field", PostgreSql, "database", "field", "field (db.lab)"},
             {PostgreSql, "https://ann@cloud.lab/dav/", WebFolder, "user", "ann", "cloud.lab/dav"},
             {MapService, "https://maps.lab/ows?map=a", MapService, "address", "https://maps.lab/ows?map=a",
              "maps.lab/ows"},
             {WebFolder, "https://maps.lab/ows?service=WMS&request=GetCapabilities", MapService, "service", "wms",
              "maps.lab/ows"},
             {PostgreSql, "s3://bucket/a%20b/c", ObjectStore, "prefix", "a b/c", "bucket/a b/c"}}) {
        ConnectionDraft draft;
        draft.SetKind(before);
        draft.SetText("user", "former");
        draft.Take(*ConnectionFromPasted(text));
        EXPECT_EQ(draft.Kind(), kind) << text;
        EXPECT_EQ(draft.Text(field), value) << text;
        EXPECT_NE(draft.Text("user"), "former") << text;
        EXPECT_EQ(SuggestedName(draft.ToConnection()), name) << text;
    }
}

DError Because(DError::Cause cause, std::int64_t detail = -1, DString const &text = "said") {
    DError error;
    error.Set(text, cause, detail);
    return error;
}

TEST(ListingWords, TellWhichStepFailedAndWhatToDo) {
    using Cause = DError::Cause;
    Connection const web{.kind = WebFolder, .fields = {{"address", "https://ann@h/"}}, .secret = SecretPlace::Ask};
    Connection plain = web;
    plain.fields["address"] = "http://h/";
    Connection const open{.kind = WebFolder, .fields = {{"address", "http://h/"}}};
    Connection const store{.kind = ObjectStore, .fields = {{"bucket", "b"}}, .secret = SecretPlace::Profile};
    Connection const ofOwn{.kind = ObjectStore, .fields = {{"bucket", "b"}, {"endpoint", "s3.lab"}}};
    Connection const base{.kind = PostgreSql,
                          .fields = {{"host", "h"}, {"user", "ann"}, {"sslmode", "require"}},
                          .secret = SecretPlace::Ask};
    ListedConnection const full{.folders = 1, .images = 2, .first = "a", .firstWords = "It is a."};
    using Fault = ServerCertificate::Fault;
    DString const print = FingerprintOf(DString(32, 'f'));
    auto const shown = [](ServerCertificate certificate) {
        return ListedConnection{.failure = Because(Cause::Untrusted), .certificate = std::move(certificate)};
    };
    Connection accepting = web;
    accepting.fields["fingerprint"] = HexEncode(DString(32, 'o')); // as somebody types it
    for (auto const &[connection, listed, told] : test::Rows<Connection, ListedConnection, DString>{
             {web, full,
              "encryption+ The server's certificate is trusted.|login+ The server takes the login of ann.|"
              "listing+ Works: 1 folder, 2 images.|first item+ It is a.|"},
             {open, {}, "listing+ It is listed, and nothing is in it.|"},
             {plain,
              {.tables = 1},
              "encryption+ Not encrypted: the password can be read on its way.|login+ The server takes "
              "the login.|listing+ Works: 1 table.|"},
             {web,
              {.failure = Because(Cause::Untrusted)},
              "encryption- The certificate of h is not trusted. Name the file of its authority's certificates.|"},
             {web, shown({"Lab", print, Fault::None}),
              "encryption- The certificate of h is not trusted (issuer Lab). Name the file of its authority's "
              "certificates, or accept this certificate: " +
                  print + ".|accept " + print + "|"},
             {web, shown({"", print, Fault::Expired}),
              "encryption- The certificate of h has expired (issuer ?, " + print + ").|"},
             {web, shown({"Lab", print, Fault::OtherName}),
              "encryption- The certificate of h is that of another server (issuer Lab, " + print +
                  "). Name the server as its certificate does.|"},
             {accepting, shown({"Lab", print, Fault::None}),
              "encryption- The certificate of h is not the one that was accepted (issuer Lab). If it was renewed by "
              "those whose server it is, accept this certificate: " +
                  print + ".|accept " + print + "|"},
             {accepting, shown({"Lab", FingerprintOf(DString(32, 'o')), Fault::None}),
              "encryption- The certificate of h is not trusted. Name the file of its authority's certificates.|"},
             {accepting, full,
              "encryption+ The server's certificate is the one that was accepted.|login+ The server takes the login of "
              "ann.|listing+ Works: 1 folder, 2 images.|first item+ It is a.|"},
             {web,
              {.failure = Because(Cause::Server, 401)},
              "encryption+ The server's certificate is trusted.|login- The server does not know user ann or the "
              "password.|"},
             {web,
              {.failure = Because(Cause::NeedsPassword, 401)},
              "encryption+ The server's certificate is trusted.|login- The server wants a password, and none is known "
              "yet.|"},
             {open,
              {.failure = Because(Cause::NeedsPassword, 401)},
              "login- The server wants a login: name a user and where the password is kept.|"},
             {open, {.failure = Because(Cause::Server, 404)}, "listing- There is nothing at this address (404).|"},
             {open,
              {.failure = Because(Cause::Server, 403)},
              "listing- The server does not let this login list it (403).|"},
             {open,
              {.failure = Because(Cause::Refused, -1, "\"h\": " + SendsOnText({"cdn.lab", 443}))},
              "listing- The server sends on to cdn.lab:443. If that is right, name it among the hosts also allowed.|"
              "allow cdn.lab:443|"},
             {web,
              {.failure = Because(Cause::NoAnswer)},
              "listing- It cannot be listed: its place does not answer; said.|"},
             {base,
              {.failure = Because(Cause::NotPermitted)},
              "encryption+ Encrypted; the server's certificate is not looked at.|login- The server does not know user "
              "ann or "
              "the password.|"},
             {store,
              {.failure = Because(Cause::NotPermitted, -1, "\"b\": SignatureDoesNotMatch")},
              "encryption+ The server's certificate is trusted.|login- SignatureDoesNotMatch: the secret key is wrong, "
              "or this "
              "computer's clock is.|"},
             {store,
              {.failure = Because(Cause::NeedsPassword, -1, "\"b\": SignatureDoesNotMatch")},
              "encryption+ The server's certificate is trusted.|login- The server wants a login: name a user and where "
              "the password is kept.|"},
             {store,
              {.failure = Because(Cause::Missing, -1, "\"b\": NoSuchBucket")},
              "encryption+ The server's certificate is trusted.|login+ The server takes the login.|"
              "listing- NoSuchBucket: there is no bucket of this name.|"},
             {ofOwn,
              {.failure = Because(Cause::NoAnswer, -1, "no server named b.s3.lab is known")},
              "listing- It cannot be listed: its place does not answer; no server named b.s3.lab is known. Stores that "
              "are not Amazon's often want the bucket in the path: see Addressing.|"},
             {open,
              {.folders = 1,
              .hasMore = true,
              .first = "a",
              .firstWords = "no",
              .firstFailure = Because(Cause::Server, 500)},
              "listing+ Works: 1 folder, and more.|first item- no|"},
             {web, {.isStopped = true, .failure = Because(Cause::Late)}, "listing! Stopped.|"}}) {
        DString text;
        for (TrialResult const &result : ListingInSteps(connection, listed))
            text += DString(TrialStepInWords(result.step)) + "+-!"[static_cast<int>(result.state)] + " " +
                    result.words + "|" + (result.accepts.empty() ? "" : "accept " + result.accepts + "|") +
                    (result.allows ? "allow " + TextOf(*result.allows) + "|" : "");
        EXPECT_EQ(text, told);
    }
}

TEST(ConnectionSaving, APasswordGoesWhereItsConnectionGoes) {
    test::TempFolder folder;
    setenv("ZELVAR_DEFINITIONS_DIR", folder.Folder("definitions").c_str(), 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    Connection connection{.name = "a",
                          .kind = WebFolder,
                          .fields = {{"address", "http://one.lab/"}, {"user", "ann"}},
                          .secret = SecretPlace::Ask};
    auto const find = [&] { return DString(SecretStore::Instance().Find(connection).secret.Reveal()); };
    EXPECT_TRUE(SaveWithSecret(nullptr, connection, Secret("MARKER")).change.isDone);
    EXPECT_EQ(find(), "MARKER");
    EXPECT_FALSE(SaveWithSecret(nullptr, connection, Secret("x")).change.isDone) << "the name is taken";
    EXPECT_EQ(find(), "MARKER") << "of the connection that has it";

    ConnectionBook::Entry former{.connection = connection};
    connection.fields["address"] = "http://two.lab/";
    EXPECT_EQ(find(), "");
    EXPECT_TRUE(SaveWithSecret(&former, connection, {}).change.isDone);
    EXPECT_EQ(find(), "MARKER");

    former = {.connection = connection, .secret = Secret("OLD")};
    former.connection.secret = SecretPlace::Definition;
    connection.secret = SecretPlace::Keyring;
    SavedConnection const moved = SaveWithSecret(&former, connection, {});
    EXPECT_TRUE(moved.change.isDone);
    EXPECT_EQ(moved.words, "The password is kept until the program ends: This desktop has no keyring.");
    EXPECT_EQ(find(), "OLD");
    StopSignal const stop{true};
    EXPECT_FALSE(SaveWithSecret(&former, connection, Secret("y"), &stop).change.isDone);
    EXPECT_TRUE(RemoveWithSecret("a", true).change.isDone);
    EXPECT_EQ(find(), "");
    EXPECT_THAT(test::ReadFile(folder / "definitions/connections.xml"), testing::Not(HasSubstr("MARKER")));
}

} // namespace
} // namespace zelvar
