#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/SecretWatch.h"
#include "support/WebServers.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/reader/DriverModule.h"

namespace zelvar {
namespace {

using test::PathsIn;
using test::WhyNotOpened;
using testing::ElementsAre;
using testing::HasSubstr;
using enum DError::Cause;

/// A store that speaks as those of other makers do.
struct Speech {
    char const *name;
    char const *service;
    DString root;                                ///< of its requests
    DString secret;                              ///< as the connection has it
    std::pair<char const *, char const *> wrong; ///< with a wrong key: the code, and what it means
    std::pair<char const *, char const *> missing;
    /// That comes with each request for an object.
    [[nodiscard]] DString Query() const { return secret.starts_with("sv=") ? "?" + secret : DString(); }
};
void PrintTo(Speech const &speech, std::ostream *out) { *out << speech.name; }

constexpr char const *kMarker = "MARKER7secret";
Speech const kSpeeches[] = {
    {"Amazon", "s3", "", kMarker, {"SignatureDoesNotMatch", "secret key is wrong"}, {"NoSuchBucket", "no such bucket"}},
    {"Google", "gs", "", kMarker, {"SignatureDoesNotMatch", "secret key is wrong"}, {"NoSuchBucket", "no such bucket"}},
    // The key is the marker in base 64.
    {"Azure",
     "az",
     "/acc",
     "TUFSS0VSN3NlY3JldA==",
     {"AuthenticationFailed", "account's key is wrong"},
     {"ContainerNotFound", "no such container"}},
    {"Signature",
     "az",
     "/acc",
     "sv=2022-11-02&sp=rl&sig=MARKER7secret%3D",
     {"AuthenticationFailed", "account's key is wrong"},
     {"ContainerNotFound", "no such container"}},
};

struct OtherStores : test::RealDriversTest, testing::WithParamInterface<Speech> {
    OtherStores() {
        test::UseReaders(test::PatientReaders());
        Connect(GetParam().secret);
        m_server.OnStore([](test::StoreAnswers &store) {
            if (GetParam().root.empty())
                store.Demand("acc", kMarker);
            else
                store.DemandAsAzure("acc", GetParam().Query().empty() ? kMarker : GetParam().secret);
        });
    }
    ~OtherStores() override { SetConnectionFinder(nullptr); }
    void Connect(DString const &secret, std::map<DString, DString> const &others = {}) {
        ConnectionTerms terms{.id = Place("field") + std::to_string(++m_connections),
                              .kind = ConnectionKind::ObjectStore,
                              .options = {{"service", GetParam().service},
                                          {"key", "acc"},
                                          {"endpoint", "127.0.0.1:" + std::to_string(m_server.Port())},
                                          {"https", "no"},
                                          {"addressing", "auto"}}, // by its number: in the path
                              .secrets = {{"key", secret}}};
        for (auto const &[key, value] : others)
            terms.options[key] = value;
        terms.hosts = {*PlaceIn(terms.options["endpoint"], 0)};
        SetConnectionFinder([terms](std::string_view) { return terms; });
    }
    static DString Place(DString const &path) { return DString(GetParam().service) + "://acc@" + path; }
    void Bucket(std::string const &name, test::StoreAnswers::Bucket const &bucket) {
        m_server.OnStore([&](test::StoreAnswers &store) { store.SetBucket(name, bucket); });
    }
    test::HttpServer m_server;
    test::SecretWatch m_watch{{kMarker, GetParam().secret}};
    int m_connections = 0;
};

TEST_P(OtherStores, AreListedByPagesAndTheirObjectsOpen) {
    Bucket("field", {.keys = {"a/x y.tif", "b.tif", "v1.2 data/c.tif"}});
    test::StoreAnswers::Bucket many;
    for (int i = 0; i < 2500; ++i)
        many.keys.push_back(Format("%04d.tif", i));
    Bucket("many", many);
    EXPECT_THAT(PathsIn(Place("")), ElementsAre(Place("field"), Place("many")));
    EXPECT_THAT(PathsIn(Place("field")),
                ElementsAre(Place("field/a"), Place("field/b.tif"), Place("field/v1.2%20data")));
    std::size_t const before = m_server.Requests().size();
    EXPECT_EQ(PathsIn(Place("many")).size(), 2500U);
    EXPECT_EQ(m_server.Requests().size() - before, 3U);
    test::WriteImage(m_folder / "x.tif", {.width = 41});
    m_server.Serve(GetParam().root + "/field/a/x%20y.tif" + GetParam().Query(), test::ReadFile(m_folder / "x.tif"));
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo({Place("field/a/x%20y.tif"), nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 41);
}

TEST_P(OtherStores, WhatKeepsFromThemIsToldInWords) {
    Bucket("field", {.keys = {"a.tif"}});
    auto const &[missing, whyMissing] = GetParam().missing;
    EXPECT_THAT(WhyNotOpened(Place("nope")).Text(), AllOf(HasSubstr(missing), HasSubstr(whyMissing)));
    EXPECT_EQ(WhyNotOpened(Place("nope")).Why(), Missing);
    ImageInfo info;
    DError error;
    EXPECT_FALSE(ReadImageInfo({Place("field/none.tif"), nullptr}, "", nullptr, info, &error));
    EXPECT_THAT(error.Text(), testing::Not(HasSubstr(kMarker)));
    Connect("");
    EXPECT_THAT(WhyNotOpened(Place("field")).Text(), HasSubstr("there is no secret key for it"));
    EXPECT_EQ(WhyNotOpened(Place("field")).Why(), NeedsPassword);
    Connect("b3RoZXI="); // another key
    auto const &[wrong, whyWrong] = GetParam().wrong;
    EXPECT_THAT(WhyNotOpened(Place("field")).Text(), AllOf(HasSubstr(wrong), HasSubstr(whyWrong)));
    EXPECT_EQ(WhyNotOpened(Place("field")).Why(), NotPermitted);
}

TEST_P(OtherStores, AnAcceptedCertificateIsTrustedAndNoOther) {
    Bucket("field", {.keys = {"a.tif"}});
    test::WriteImage(m_folder / "a.tif");
    m_server.Serve(GetParam().root + "/field/a.tif" + GetParam().Query(), test::ReadFile(m_folder / "a.tif"));
    test::WebServer tls;
    ASSERT_TRUE(tls.StartTls(m_server.Port()));
    std::map<DString, DString> options{{"endpoint", tls.Place()}, {"server", tls.Place()}, {"https", "yes"}};
    DString const none = "the certificate of " + tls.Place() + " is not trusted";
    ImageInfo info;
    DError error;
    Connect(GetParam().secret, options);
    EXPECT_THAT(WhyNotOpened(Place("field")).Text(), HasSubstr(none));
    EXPECT_FALSE(ReadImageInfo({Place("field/a.tif"), nullptr}, "", nullptr, info, &error));
    EXPECT_THAT(error.Text(), HasSubstr(none));
    options["fingerprint"] = tls.Fingerprint();
    Connect(GetParam().secret, options);
    EXPECT_THAT(PathsIn(Place("field")), ElementsAre(Place("field/a.tif")));
    EXPECT_TRUE(ReadImageInfo({Place("field/a.tif"), nullptr}, "", nullptr, info));
}

TEST_P(OtherStores, AFolderIsEnteredByAReaderThatHasNotSeenIt) {
    Bucket("field", {.keys = {"v1.2 data/c.tif"}});
    test::OpenedTree const tree(Place("field"));
    ASSERT_TRUE(tree);
    BDINode const folder = tree.Children(*tree.root).at(0);
    EndReaders();
    EXPECT_EQ(tree.Children(folder).size(), 1U);
    BDINode gone = folder;
    gone.path += "x";
    EXPECT_TRUE(tree.Children(gone).empty());
    EXPECT_TRUE(tree.driver->GetWalkError(tree.repository).IsSet()) << "nothing is there";
}

INSTANTIATE_TEST_SUITE_P(Speeches, OtherStores, testing::ValuesIn(kSpeeches),
                         [](auto const &at) { return std::string(at.param.name); });

} // namespace
} // namespace zelvar
