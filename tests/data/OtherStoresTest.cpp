#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDrivers.h"
#include "support/SecretWatch.h"
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
    char const *service;
    DString root;                                ///< of its requests
    DString secret;                              ///< as the connection has it
    std::pair<char const *, char const *> wrong; ///< with a wrong key: the code, and what it means
    std::pair<char const *, char const *> missing;
};
constexpr char const *kMarker = "MARKER7secret";
Speech const kSpeeches[] = {
    {"gs", "", kMarker, {"SignatureDoesNotMatch", "secret key is wrong"}, {"NoSuchBucket", "no such bucket"}},
    // The key is the marker in base 64.
    {"az",
     "/acc",
     "TUFSS0VSN3NlY3JldA==",
     {"AuthenticationFailed", "account's key is wrong"},
     {"ContainerNotFound", "no such container"}},
};

struct OtherStores : testing::TestWithParam<Speech> {
    OtherStores() {
        BDIDrvrMngr::Instance()->Reset();
        test::UseReaders(test::PatientReaders());
        Connect(GetParam().secret);
        m_server.OnStore([](test::StoreAnswers &store) {
            if (GetParam().root.empty())
                store.Demand("acc", kMarker);
            else
                store.DemandAsAzure("acc", kMarker);
        });
    }
    ~OtherStores() override {
        SetConnectionFinder(nullptr);
        BDIDrvrMngr::Instance()->Reset();
    }
    void Connect(DString const &secret) {
        ConnectionTerms const terms{.id = Place("field") + std::to_string(++m_connections),
                                    .kind = ConnectionKind::ObjectStore,
                                    .hosts = {{"127.0.0.1", static_cast<std::uint16_t>(m_server.Port())}},
                                    .options = {{"service", GetParam().service},
                                                {"key", "acc"},
                                                {"endpoint", "127.0.0.1:" + std::to_string(m_server.Port())},
                                                {"https", "no"},
                                                {"addressing", "path"}},
                                    .secrets = {{"key", secret}}};
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
    test::TempFolder const folder;
    test::WriteImage(folder / "x.tif", {.width = 41});
    m_server.Serve(GetParam().root + "/field/a/x%20y.tif", test::ReadFile(folder / "x.tif"));
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo({Place("field/a/x%20y.tif"), nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 41);
}

TEST_P(OtherStores, WhatKeepsFromThemIsToldInWords) {
    Bucket("field", {.keys = {"a.tif"}});
    auto const &[missing, whyMissing] = GetParam().missing;
    EXPECT_THAT(WhyNotOpened(Place("nope")).Text(), AllOf(HasSubstr(missing), HasSubstr(whyMissing)));
    EXPECT_EQ(WhyNotOpened(Place("nope")).Why(), Missing);
    Connect("b3RoZXI="); // another key
    auto const &[wrong, whyWrong] = GetParam().wrong;
    EXPECT_THAT(WhyNotOpened(Place("field")).Text(), AllOf(HasSubstr(wrong), HasSubstr(whyWrong)));
    EXPECT_EQ(WhyNotOpened(Place("field")).Why(), NotPermitted);
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
                         [](auto const &at) { return std::string(at.param.service); });

} // namespace
} // namespace zelvar
