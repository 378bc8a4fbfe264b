#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/SecretWatch.h"
#include "support/Test.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RequestScope.h"

namespace zelvar {
namespace {

using test::PathsIn;
using test::WhyNotOpened;

/// An object store on the loopback interface that checks signatures.
struct Stores : test::RealDriversTest {
    Stores() {
        BDIDrvrMngr::Instance()->Drivers();
        Store([](test::StoreAnswers &store) { store.Demand("id", "TOPSECRET"); });
    }
    template <class Change>
    void Store(Change const &change) {
        m_server.OnStore(change);
    }
    void Bucket(std::string const &name, test::StoreAnswers::Bucket bucket) {
        Store([&](test::StoreAnswers &store) { store.SetBucket(name, std::move(bucket)); });
    }
    test::SecretWatch m_watch{{"TOPSECRET", "Signature="}};
    test::HttpServer m_server;
    test::Environment m_environment{{{"AWS_S3_ENDPOINT", "127.0.0.1:" + std::to_string(m_server.Port())},
                                     {"AWS_HTTPS", "NO"},
                                     {"AWS_VIRTUAL_HOSTING", "FALSE"},
                                     {"AWS_ACCESS_KEY_ID", "id"},
                                     {"AWS_SECRET_ACCESS_KEY", "TOPSECRET"}}};
};

TEST_F(Stores, TheFirstKeysComeWithTheFirstPageAndTheRestAsItIsWanted) {
    test::StoreAnswers::Bucket bucket;
    for (int i = 0; i < 2500; ++i)
        bucket.keys.push_back(Format("a/%04d.tif", i));
    Bucket("big", bucket);
    Bucket("endless", {.isEndless = true});
    for (auto const &[place, wanted, requests] : test::Rows<char const *, int, std::size_t>{
             {"s3://big/a", 1000, 1}, {"s3://big/a", 1001, 2}, {"s3://big/a", 9999, 3}, {"s3://endless", 2500, 3}}) {
        SCOPED_TRACE(Format("%s %d", place, wanted));
        std::size_t const before = m_server.Requests().size();
        test::OpenedTree const tree(place);
        ASSERT_TRUE(tree);
        void *const walk = tree.driver->FindFirstChildNode(tree.repository, tree.root, 0xFF);
        std::set<DString> seen;
        for (int i = 0; i < wanted; ++i) {
            BDINode const *const child = tree.driver->FindNextChildNode(walk);
            if (child == nullptr)
                break;
            seen.insert(child->path);
            EXPECT_EQ(child->size, 1234);
            if (i == 999) {
                EXPECT_FALSE(tree.driver->IsNextAtHand(walk));
                EXPECT_EQ(m_server.Requests().size() - before, 1U);
            }
        }
        EXPECT_EQ(seen.size(), std::min<std::size_t>(static_cast<std::size_t>(wanted), 2500U));
        tree.driver->FindClose(walk);
        EXPECT_EQ(m_server.Requests().size() - before, requests);
    }
}

TEST_F(Stores, WalksOfOneTreeGoOnBesideEachOther) {
    test::StoreAnswers::Bucket bucket;
    for (int i = 0; i < 3000; ++i)
        bucket.keys.push_back(Format("%04d.tif", i));
    Bucket("big", bucket);
    test::OpenedTree const tree("s3://big");
    ASSERT_TRUE(tree);
    std::vector<void *> walks;
    for (int i = 0; i < 2; ++i)
        walks.push_back(tree.driver->FindFirstChildNode(tree.repository, tree.root, 0xFF));
    for (int i = 0; i < 3000; ++i)
        for (void *const walk : walks) {
            BDINode const *const child = tree.driver->FindNextChildNode(walk);
            ASSERT_NE(child, nullptr) << i;
            EXPECT_EQ(child->name, Format("%04d.tif", i));
        }
    for (void *const walk : walks)
        tree.driver->FindClose(walk);
    EXPECT_EQ(m_server.Requests().size(), 6U);
}

TEST_F(Stores, ListingsThatAreMadeTogetherAskForAPageOnce) {
    test::StoreAnswers::Bucket bucket;
    for (int i = 0; i < 1500; ++i)
        bucket.keys.push_back(Format("a/%04d.%s", i, i % 3 == 0 ? "img" : "tif"));
    Bucket("big", bucket);
    test::OpenedTree const tree("s3://big/a");
    ASSERT_TRUE(tree);
    auto const count = [&](std::uint64_t together, char const *names) {
        RequestScope scope(RequestKind::List);
        scope.together = together;
        void *const walk = tree.driver->FindFirstChildNamed(tree.repository, tree.root, 0xFF, names);
        std::size_t children = 0;
        while (walk != nullptr && tree.driver->FindNextChildNode(walk) != nullptr)
            ++children;
        tree.driver->FindClose(walk);
        return std::pair(children, m_server.Requests().size());
    };
    using Seen = std::pair<std::size_t, std::size_t>; // children, and requests so far
    EXPECT_EQ(count(7, ""), Seen(1500, 2));
    EXPECT_EQ(count(7, "*.img"), Seen(500, 2)) << "another mask of the same names";
    EXPECT_EQ(count(7, "00*"), Seen(100, 3)) << "a beginning is asked of the store";
    EXPECT_EQ(count(7, ""), Seen(1500, 5));
    EXPECT_EQ(count(8, ""), Seen(1500, 7)) << "who comes back wants to know how it is now";
    EXPECT_EQ(count(0, ""), Seen(1500, 9));
    EXPECT_EQ(count(8, ""), Seen(1500, 11));
}

TEST_F(Stores, AStoreThatGoesRoundInACircleComesToAnEnd) {
    Bucket("round", {.keys = {"a.tif", "b.tif", "c.tif"}, .repeats = true});
    test::OpenedTree const tree("s3://round");
    ASSERT_TRUE(tree);
    EXPECT_LT(tree.Children(*tree.root).size(), 10U);
    EXPECT_THAT(tree.driver->GetWalkError(tree.repository).Text(), HasSubstr("circle"));
}

TEST_F(Stores, AListingThatBreaksOffIsNotTakenForTheWhole) {
    for (auto const &[bucket, status, page] : test::Rows<char const *, int, char const *>{
             {"gone", 500, ""}, {"proxy", 502, "<html><title>502 Bad Gateway</title></html>"}}) {
        Bucket(bucket, {.isEndless = true});
        m_server.Refuse(Format("/%s/?delimiter=%%2F&marker=%s", bucket, test::KeyOf(999).c_str()), status, page);
        test::OpenedTree const tree(DString("s3://") + bucket);
        ASSERT_TRUE(tree);
        EXPECT_EQ(tree.Children(*tree.root).size(), 1000U);
        EXPECT_EQ(tree.driver->GetWalkError(tree.repository).Detail(), status);
    }
}

TEST_F(Stores, NamesFoldersSizesAndTimesAreTheStores) {
    std::vector<std::string> keys{
        "a/with blank.tif", "a/v1.2 data/x.tif", "a/100%.tif",  "a/b+c?#.tif",
        "other.tif",        "../up.tif",         "a/../up.tif", "a/" + std::string(5000, 'n') + ".tif"};
    for (int i = 0; i < 30; ++i)
        keys.push_back(Format("a/n%02d.tif", i));
    Bucket("field", {.keys = keys, .keysOfPage = 10});
    EXPECT_THAT(PathsIn("s3://"), ElementsAre("s3://field"));
    EXPECT_THAT(PathsIn("s3://field"), ElementsAre("s3://field/a", "s3://field/other.tif"));
    test::OpenedTree const tree("s3://field/a");
    ASSERT_TRUE(tree);
    std::map<DString, BDINode> children;
    for (BDINode const &child : tree.Children(*tree.root))
        children[child.name] = child;
    ASSERT_EQ(children.size(), 34U);
    EXPECT_EQ(children["v1.2 data"].type, kDirectoryNode);
    EXPECT_EQ(children["with blank.tif"].path, "s3://field/a/with%20blank.tif");
    EXPECT_EQ(children["with blank.tif"].size, 1234);
    EXPECT_EQ(children["with blank.tif"].modified, 1'704'189'630'000'000'000);
    EXPECT_EQ(children["b+c?#.tif"].path, "s3://field/a/b%2Bc%3F%23.tif");
    EXPECT_TRUE(children.contains("100%.tif"));
    EXPECT_THAT(PathsIn(children["v1.2 data"].path), ElementsAre("s3://field/a/v1.2%20data/x.tif"));
}

TEST_F(Stores, AMaskThatBeginsWithLettersIsTheStoresToRegard) {
    Bucket("field", {.keys = {"a/run7-1.tif", "a/run7-2.img", "a/run8.tif"}});
    test::OpenedTree const tree("s3://field");
    ASSERT_TRUE(tree);
    BDINode const folder = tree.Children(*tree.root).at(0);
    void *const walk = tree.driver->FindFirstChildNamed(tree.repository, &folder, 0xFF, "run7*.tif");
    std::vector<DString> names;
    while (BDINode const *const child = walk == nullptr ? nullptr : tree.driver->FindNextChildNode(walk))
        names.push_back(child->name);
    tree.driver->FindClose(walk);
    EXPECT_THAT(names, ElementsAre("run7-1.tif"));
    EXPECT_THAT(m_server.Requests().back(), HasSubstr("prefix=a%2Frun7"));
}

TEST_F(Stores, WhatIsWrongWithAKeyIsToldInWords) {
    using enum DError::Cause;
    Bucket("field", {.keys = {"a.tif"}});
    auto const expect = [](DString const &place, DError::Cause cause, char const *words) {
        for (int round = 0; round < 2; ++round) { // what is remembered of a failure hides no cause
            EXPECT_THAT(WhyNotOpened(place).Text(), HasSubstr(words));
            EXPECT_EQ(WhyNotOpened(place).Why(), cause) << words;
        }
    };
    expect("s3://nope/x/", Missing, "NoSuchBucket: there is no such bucket");
    EXPECT_EQ(PathsIn("s3://field").size(), 1U);
    Store([](test::StoreAnswers &store) { store.Demand("id", "other"); });
    expect("s3://field", NotPermitted, "SignatureDoesNotMatch: the secret key is wrong");
    Store([](test::StoreAnswers &store) { store.Demand("other", "other"); });
    expect("s3://field", NotPermitted, "InvalidAccessKeyId: the store does not know the key");
    for (auto const &[code, more, words] : test::Rows<char const *, char const *, char const *>{
             {"AccessDenied", "", "may not list here"},
             {"RequestTimeTooSkewed",
              "<RequestTime>20240102T100500Z</RequestTime><ServerTime>2024-01-02T10:00:00Z</ServerTime>",
              "clock is wrong (5 min fast)"}}) {
        Store([&](test::StoreAnswers &store) { store.Refuse(403, code, more); });
        EXPECT_THAT(WhyNotOpened("s3://field").Text(), AllOf(HasSubstr(code), HasSubstr(words)));
        EXPECT_EQ(WhyNotOpened("s3://field").Why(), NotPermitted);
    }
}

TEST_F(Stores, APreviewOfALargeObjectReadsASmallPartOfIt) {
    constexpr std::size_t most = 5'000'000;
    test::WriteImage(m_folder / "x.tif", {.width = 7000, .height = 7000, .options = {"TILED=YES"}}, {2, 4, 8, 16});
    std::string const bytes = test::ReadFile(m_folder / "x.tif");
    m_server.Serve("/field/x.tif", bytes);
    ImageInfo info;
    DCanvas picture;
    ASSERT_TRUE(ReadImageInfo({"s3://field/x.tif", nullptr}, "", nullptr, info));
    ASSERT_TRUE(ReadPreview({"s3://field/x.tif", nullptr}, "", nullptr, picture));
    EXPECT_EQ(picture.GetWidth(), 1024);
    ASSERT_GT(bytes.size(), 8 * most);
    EXPECT_LT(m_server.BytesSent(), most);
    for (std::string const &request : m_server.Requests())
        EXPECT_THAT(request, HasSubstr("/field/x.tif")) << "asked for a side file";
}

} // namespace
} // namespace zelvar
