#include "support/ScriptedDriver.h"
#include "support/Test.h"

#include <thread>

namespace zelvar {
namespace {

using test::ScriptedDrivers;
using test::ScriptedRasterDriver;
using test::ScriptedTreeDriver;

std::vector<DString> IdsOf(std::vector<BDIDrvr *> const &drivers) {
    std::vector<DString> ids;
    ids.reserve(drivers.size());
    for (BDIDrvr const *driver : drivers)
        ids.push_back(driver->GetId());
    return ids;
}

TEST(TreeManager, FindsDriversByIdWithoutRegardToCase) {
    ScriptedDrivers const drivers;
    ScriptedTreeDriver &box = ScriptedDrivers::AddTree("Box");
    EXPECT_EQ(BDIDrvrMngr::Instance()->GetDrvr("bOX"), &box);
    EXPECT_EQ(BDIDrvrMngr::Instance()->GetDrvr("other"), nullptr);
    EXPECT_EQ(BDIDrvrMngr::Instance()->GetDrvr(""), nullptr);
    EXPECT_EQ(BDIDrvrMngr::Instance()->GetDrvr(nullptr), nullptr);
}

TEST(TreeManager, OnlyDriversOfThatExtensionAreCandidates) {
    ScriptedDrivers const drivers;
    ScriptedDrivers::AddTree("one", "*.box;*.TIF");
    ScriptedDrivers::AddTree("two", "*.tif; *.tiff");
    auto single = std::make_unique<ScriptedTreeDriver>("single", "*.tif");
    single->attributes["BDI_Multiple_Images"] = 0;
    BDIDrvrMngr::Instance()->Add(std::move(single));
    BDIDrvrMngr &manager = *BDIDrvrMngr::Instance();
    EXPECT_EQ(IdsOf(manager.CandidatesFor("a.Tif")), (std::vector<DString>{"one", "two"}));
    EXPECT_EQ(IdsOf(manager.CandidatesFor("a.tif.TIFF")), (std::vector<DString>{"two"}));
    for (char const *name : {"tif", ".tif", "a.", "", "a.txt", "a.tif "})
        EXPECT_TRUE(manager.CandidatesFor(name).empty()) << name;
    EXPECT_TRUE(manager.CandidatesFor("a." + DString(100'000, 'x')).empty());
}

TEST(TreeManager, OpensWithTheFirstDriverThatCan) {
    ScriptedDrivers const drivers;
    ScriptedDrivers::AddTree("one").SetTree("/a", {.name = "a"});
    ScriptedTreeDriver &two = ScriptedDrivers::AddTree("two");
    two.SetTree("/a", {.name = "a"});
    two.SetTree("/b", {.name = "b"});
    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    DError error;
    void *repository = BDIDrvrMngr::Instance()->OpenFile("/b", &driver, &root, nullptr, &error);
    ASSERT_NE(repository, nullptr);
    EXPECT_EQ(driver, &two);
    EXPECT_EQ(root->name, "b");
    driver->CloseNode(root);
    driver->CloseRepository(repository);
    EXPECT_EQ(BDIDrvrMngr::Instance()->OpenFile("/c", &driver, &root, nullptr, &error), nullptr);
    EXPECT_NE(error.Text().find("/c"), DString::npos);
    EXPECT_EQ(BDIDrvrMngr::Instance()->OpenFile(nullptr, &driver, &root, nullptr, nullptr), nullptr);
}

/// A family of two, of which only the second reads anything.
class FamilyDriver : public ScriptedRasterDriver {
public:
    FamilyDriver(DString id, RDIDriver *sibling) : ScriptedRasterDriver(std::move(id)), m_sibling(sibling) {}
    [[nodiscard]] DString GetFamily() const override { return "family"; }
    void *OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                           DError *error) override {
        ++asked;
        *opener = m_sibling == nullptr ? this : m_sibling;
        return (*opener)->OpenFile(moniker, stop, error);
    }
    int asked = 0;

private:
    RDIDriver *m_sibling;
};

TEST(RasterManager, AsksAFamilyOnceAndNamesTheDriverThatOpened) {
    ScriptedDrivers const drivers;
    RDIDriverMngr &manager = *RDIDriverMngr::Instance();
    auto second = std::make_unique<FamilyDriver>("second", nullptr);
    second->SetImage("/a.tif", {});
    FamilyDriver const &reader = *second;
    auto first = std::make_unique<FamilyDriver>("first", second.get());
    FamilyDriver const &front = *first;
    manager.Add(std::move(first));
    manager.Add(std::move(second));
    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    ASSERT_TRUE(manager.OpenFile({"/a.tif", nullptr}, &driver, &handle, "", nullptr, ""));
    EXPECT_EQ(driver, &reader);
    driver->CloseFile(handle, true);
    EXPECT_FALSE(manager.OpenFile({"/b.tif", nullptr}, &driver, &handle, "", nullptr, ""));
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(front.asked, 2);
    EXPECT_EQ(reader.asked, 0);
}

TEST(RasterManager, ANamedDriverAloneIsTriedAndAnUnknownNameTriesAll) {
    ScriptedDrivers const drivers;
    ScriptedDrivers::AddRaster("one");
    ScriptedRasterDriver &two = ScriptedDrivers::AddRaster("two");
    two.SetImage("/a", {});
    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    DError error;
    EXPECT_FALSE(RDIDriverMngr::Instance()->OpenFile({"/a", nullptr}, &driver, &handle, "", &error, "one"));
    EXPECT_TRUE(error.IsSet());
    ASSERT_TRUE(RDIDriverMngr::Instance()->OpenFile({"/a?x=1", nullptr}, &driver, &handle, "y=2", &error, "three"));
    EXPECT_EQ(driver, &two);
    EXPECT_EQ(two.opened, std::vector<DString>{"/a?x=1&y=2"});
    driver->CloseFile(handle, true);
}

TEST(RasterManager, OfManyReasonsTheOneThatTellsMostIsHeard) {
    class Failing : public ScriptedRasterDriver {
    public:
        explicit Failing(DError::Cause cause) : ScriptedRasterDriver("failing"), m_cause(cause) {}
        void *OpenFile(BDIMoniker const &, StopSignal const *, DError *error) override {
            error->Set("a reason", m_cause, 7);
            return nullptr;
        }

    private:
        DError::Cause m_cause;
    };
    using enum DError::Cause;
    ScriptedDrivers const drivers;
    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    DError error;
    std::ignore = RDIDriverMngr::Instance()->OpenFile({"/a", nullptr}, &driver, &handle, "", &error, "");
    EXPECT_EQ(error.Why(), NotSupported) << "nobody says anything";
    for (auto const &[added, heard] :
         {std::pair{Unknown, Unknown}, {NotSupported, NotSupported}, {Damaged, Damaged}, {Late, Damaged}}) {
        RDIDriverMngr::Instance()->Add(std::make_unique<Failing>(added));
        std::ignore = RDIDriverMngr::Instance()->OpenFile({"/a", nullptr}, &driver, &handle, "", &error, "");
        EXPECT_EQ(error.Why(), heard);
        EXPECT_EQ(error.Detail(), 7);
    }
}

TEST(DriverProvider, RunsOnceForAllThreadsAndAgainAfterAReset) {
    ScriptedDrivers const drivers;
    std::atomic<int> runs{0};
    EXPECT_EQ(RDIDriverMngr::Instance()->GetDriver("late"), nullptr) << "asked before there is a provider";
    SetDriverProvider([&runs] {
        ++runs;
        EXPECT_EQ(RDIDriverMngr::Instance()->GetDriver("late"), nullptr); // a question from inside does not lock up
        RDIDriverMngr::Instance()->Add(std::make_unique<ScriptedRasterDriver>("late"));
    });
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> found{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&found] { found += RDIDriverMngr::Instance()->GetDriver("late") != nullptr ? 1 : 0; });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(found, 4);
    EXPECT_EQ(runs, 1);
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    EXPECT_NE(RDIDriverMngr::Instance()->GetDriver("late"), nullptr);
    EXPECT_EQ(runs, 2);
}

} // namespace
} // namespace zelvar
