#pragma once

#include "support/TestFiles.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <tuple>
#include <vector>

namespace zelvar::test {

/// A door that calls of a scripted driver wait at: closed, they stand still until a test opens it. So a slow medium is
/// played without any clock.
class Gate {
public:
    void Close() { Set(false); }
    void Open() { Set(true); }
    /// Waits while the gate is closed; `give up` true ends the wait.
    void Pass(StopSignal const *giveUp = nullptr) {
        std::unique_lock lock(m_mutex);
        ++m_waiting;
        m_changed.notify_all();
        while (!m_open && !(giveUp != nullptr && giveUp->load()))
            m_changed.wait_for(lock, std::chrono::milliseconds(1));
        --m_waiting;
    }
    /// Waits until a call stands at the gate.
    void AwaitCaller() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_waiting > 0; });
    }

private:
    void Set(bool open) {
        std::lock_guard const lock(m_mutex);
        m_open = open;
        m_changed.notify_all();
    }
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = true;
    int m_waiting = 0;
};

/// A node as a test writes it down. Without a path of its own it gets "<url>/<name>/<name>".
struct ScriptedNode {
    DString name = {};
    std::uint32_t type = BDINode_Container;
    std::vector<ScriptedNode> children = {};
    DString value = {};
    bool broken = false; ///< listed, but cannot be opened
    DString path = {};

    /// This node or the one below it that has the path; null without one.
    [[nodiscard]] ScriptedNode *Find(DString const &wanted) {
        ScriptedNode *found = path == wanted ? this : nullptr;
        for (auto child = children.begin(); found == nullptr && child != children.end(); ++child)
            found = child->Find(wanted);
        return found;
    }
    void NamePaths(DString const &own) {
        if (path.empty())
            path = own;
        for (ScriptedNode &child : children)
            child.NamePaths(path + "/" + child.name);
    }
};

/// Tree driver that serves trees written down by a test.
class ScriptedTreeDriver : public BDIDrvr {
public:
    explicit ScriptedTreeDriver(DString id, DString extensions = {})
        : m_id(std::move(id)), m_extensions(std::move(extensions)) {}

    void SetTree(DString const &url, ScriptedNode root) {
        root.NamePaths(url);
        m_trees[url] = std::move(root);
    }
    /// The tree that is served when `OpenRepository` gets this filter.
    void SetFilteredTree(DString const &filter, ScriptedNode root) { m_filtered[filter] = std::move(root); }
    std::map<DString, int> attributes{{"BDI_Multiple_Images", 1}, {"BDI_Filtering", 0}};
    Gate openGate; ///< `OpenRepository` waits here
    Gate findGate; ///< `FindFirstChildNode` waits here

    // Counts of calls; the second of each pair must catch up with the first.
    std::atomic<int> opens{0};
    std::atomic<int> closes{0};
    std::atomic<int> nodesMade{0};
    std::atomic<int> nodesClosed{0};
    std::atomic<int> finds{0};
    std::atomic<int> findsClosed{0};
    mutable std::atomic<int> probes{0}; ///< calls of `CanReadPath`
    [[nodiscard]] int OpenTrees() const { return opens - closes; }
    [[nodiscard]] int OpenNodes() const { return nodesMade - nodesClosed; }
    [[nodiscard]] int OpenFinds() const { return finds - findsClosed; }

    [[nodiscard]] DString GetId() const override { return m_id; }
    [[nodiscard]] DString GetInfo() const override { return "scripted " + m_id; }
    [[nodiscard]] DString GetExtensions() const override { return m_extensions; }
    [[nodiscard]] int GetAttrInt(char const *name) const override {
        auto const at = attributes.find(name);
        return at == attributes.end() ? 0 : at->second;
    }
    [[nodiscard]] bool CanReadPath(DString const &path) const override {
        ++probes;
        return m_trees.contains(path);
    }

    void *OpenRepository(char const *url, BDINode **root, char const *filter) override {
        openGate.Pass();
        auto const tree = m_trees.find(url == nullptr ? "" : url);
        auto const filtered = m_filtered.find(filter == nullptr ? "" : filter);
        if (tree == m_trees.end() || (filter != nullptr && *filter != '\0' && filtered == m_filtered.end()))
            return nullptr;
        if (filtered == m_filtered.end())
            return Open(tree->second, root);
        filtered->second.NamePaths(url);
        return Open(filtered->second, root);
    }
    void CloseRepository(void *) override { ++closes; }
    BDINode *OpenNode(void *repository, char const *path) override {
        ScriptedNode const *const node = RootOf(repository).Find(path);
        return node == nullptr || node->broken ? nullptr : Make(*node);
    }
    BDINode *CloneNode(BDINode const *node) override {
        ++nodesMade;
        return new BDINode(*node);
    }
    void CloseNode(BDINode *node) override {
        ++nodesClosed;
        delete node;
    }
    void *FindFirstChildNode(void *repository, BDINode const *node, int mask) override {
        findGate.Pass();
        ScriptedNode const *const parent = RootOf(repository).Find(node->path);
        if (parent == nullptr)
            return nullptr;
        auto walk = std::make_unique<Walk>();
        for (ScriptedNode const &child : parent->children)
            if ((child.type & static_cast<std::uint32_t>(mask)) != 0)
                walk->children.push_back(Record(child));
        if (walk->children.empty())
            return nullptr;
        ++finds;
        return walk.release();
    }
    BDINode const *FindNextChildNode(void *find) override {
        auto *walk = static_cast<Walk *>(find);
        return walk->next < walk->children.size() ? &walk->children[walk->next++] : nullptr;
    }
    void FindClose(void *find) override {
        ++findsClosed;
        delete static_cast<Walk *>(find);
    }

protected:
    void *Open(ScriptedNode &tree, BDINode **root) {
        ++opens;
        *root = Make(tree);
        return &tree;
    }
    [[nodiscard]] virtual ScriptedNode &RootOf(void *repository) { return *static_cast<ScriptedNode *>(repository); }

private:
    struct Walk {
        std::vector<BDINode> children;
        std::size_t next = 0;
    };
    static BDINode Record(ScriptedNode const &node) {
        BDINode record;
        record.type = node.type;
        record.path = node.path;
        record.name = node.name;
        record.value = node.value;
        return record;
    }
    BDINode *Make(ScriptedNode const &node) {
        ++nodesMade;
        return new BDINode(Record(node));
    }

    DString m_id;
    DString m_extensions;
    std::map<DString, ScriptedNode> m_trees;
    std::map<DString, ScriptedNode> m_filtered;
};

/// One tree whose nodes have paths of any kind, its root "root"; it serves every URL that opens.
class AnyUrlDriver : public ScriptedTreeDriver {
public:
    using ScriptedTreeDriver::ScriptedTreeDriver;

    void Add(DString const &parent, DString const &path, unsigned type, DString const &name,
             DString const &value = {}) {
        m_root.Find(parent)->children.push_back({.name = name, .type = type, .value = value, .path = path});
    }
    /// `OpenNode` fails for that path.
    void Break(DString const &path) { m_root.Find(path)->broken = true; }
    std::function<bool(DString const &url)> isUrl; ///< all are without it
    bool reads = true;
    int tries = 0;      ///< calls of `OpenRepository`
    DString lastFilter; ///< of the last one

    [[nodiscard]] bool CanReadPath(DString const &) const override { return ++probes, reads; }
    void *OpenRepository(char const *url, BDINode **root, char const *filter) override {
        ++tries;
        lastFilter = filter == nullptr ? "" : filter;
        return isUrl && !isUrl(url) ? nullptr : Open(m_root, root);
    }

protected:
    [[nodiscard]] ScriptedNode &RootOf(void *) override { return m_root; }

private:
    ScriptedNode m_root{.name = "Root", .path = "root"};
};

/// An image as a test writes it down: every sample of a channel has the value `sample` yields for its place.
struct ScriptedImage {
    int width = 4;
    int height = 4;
    int channels = 1;
    int type = RDI_UInt8;
    RDIGeoCoo geo = {};
    DString info = {};
    bool pyramid = false;
    bool palette = false;
    bool readFails = false;
    std::function<double(int channel, int x, int y)> sample = [](int, int, int) { return 0; };
};

/// Raster driver that serves images written down by a test; sampled by nearest neighbour.
class ScriptedRasterDriver : public RDIDriver {
public:
    explicit ScriptedRasterDriver(DString id) : m_id(std::move(id)) {}

    /// `source` is the moniker without options.
    void SetImage(DString const &source, ScriptedImage image) { m_images[source] = std::move(image); }
    Gate openGate; ///< `OpenFile` waits here, or until stopped
    Gate readGate; ///< `ReadBlockRsmpl` waits here, or until stopped

    std::atomic<int> opens{0};
    std::atomic<int> closes{0};
    std::atomic<int> reads{0};
    std::tuple<int, bool, bool> how; ///< the last block was asked for: resampling, pyramid, clip
    /// Texts of the monikers opened, in order. Not while a worker opens.
    std::vector<DString> opened;

    [[nodiscard]] DString GetId() const override { return m_id; }
    [[nodiscard]] DString GetInfo() const override { return "scripted " + m_id; }
    [[nodiscard]] int IsMyFile(char const *path) const override { return m_images.contains(path) ? 1 : 0; }

    void *OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override {
        openGate.Pass(stop);
        auto const at = m_images.find(moniker.GetSource());
        if (at == m_images.end()) {
            if (error != nullptr)
                error->Set("no such scripted image");
            return nullptr;
        }
        ++opens;
        opened.push_back(moniker.GetText());
        return new Handle{&at->second, stop};
    }
    void CloseFile(void *handle, bool) override {
        ++closes;
        delete static_cast<Handle *>(handle);
    }
    [[nodiscard]] int GetNumChnl(void *handle) const override { return Of(handle).channels; }
    [[nodiscard]] int GetChnlSizeX(void *handle, int) const override { return Of(handle).width; }
    [[nodiscard]] int GetChnlSizeY(void *handle, int) const override { return Of(handle).height; }
    [[nodiscard]] int GetChnlDataType(void *handle, int) const override { return Of(handle).type; }
    [[nodiscard]] RDIGeoCoo GetChnlGeoCode(void *handle, int) const override { return Of(handle).geo; }
    [[nodiscard]] DString GetAttrString(char const *name, void *handle, int) const override {
        return std::strcmp(name, "RDI_Drvr_Info") == 0 ? Of(handle).info : DString();
    }
    [[nodiscard]] int GetAttrInt(char const *name, void *handle, int) const override {
        if (std::strcmp(name, "RDI_Drvr_Sppt_Intrnl_RslPrmd") == 0)
            return Of(handle).pyramid ? 1 : 0;
        return std::strcmp(name, "RDI_Drvr_Palette") == 0 && Of(handle).palette ? 1 : 0;
    }

    bool ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height, void *buffer,
                        int outWidth, int outHeight, int resampling, bool usePyramid, bool clip) override {
        auto const *open = static_cast<Handle *>(handle);
        readGate.Pass(open->stop);
        ++reads;
        how = {resampling, usePyramid, clip};
        if (open->image->readFails || (open->stop != nullptr && open->stop->load()))
            return false;
        auto *out = static_cast<unsigned char *>(buffer);
        for (int row = 0; row < outHeight; ++row)
            for (int column = 0; column < outWidth; ++column) {
                int const sourceX = Pixel(x + (column + 0.5) * width / outWidth);
                int const sourceY = Pixel(y + (row + 0.5) * height / outHeight);
                out = Put(out, open->image->type, open->image->sample(channel, sourceX, sourceY));
            }
        return true;
    }
    bool ReadPaletteRsmpl(void *handle, double, double, double, double, void *rgb, int outWidth,
                          int outHeight) override {
        ++reads;
        if (!Of(handle).palette)
            return false;
        auto *out = static_cast<unsigned char *>(rgb);
        for (int i = 0; i < outWidth * outHeight; ++i)
            for (int const part : {200, 100, 50})
                *out++ = static_cast<unsigned char>(part);
        return true;
    }

private:
    struct Handle {
        ScriptedImage const *image = nullptr;
        StopSignal const *stop = nullptr;
    };
    static int Pixel(double at) { return static_cast<int>(std::clamp(at, -2e9, 2e9)); }
    static ScriptedImage const &Of(void *handle) { return *static_cast<Handle *>(handle)->image; }
    static unsigned char *Put(unsigned char *out, int type, double value) {
        auto const real = static_cast<float>(value);
        auto const whole = type == RDI_Float32 ? 0 : static_cast<std::int64_t>(value);
        auto const size = static_cast<std::size_t>(RDIGetDTSize(type));
        std::memcpy(out, type == RDI_Float32 ? static_cast<void const *>(&real) : &whole, size);
        return out + size;
    }

    DString m_id;
    std::map<DString, ScriptedImage> m_images;
};

/// A tree driver that gives no answer in time while it is late.
struct LateDriver : ScriptedTreeDriver {
    LateDriver() : ScriptedTreeDriver("late", "*.tif") {}
    [[nodiscard]] bool CanReadPath(DString const &) const override {
        RequestScope &scope = *RequestScope::Current();
        time = scope.TimeLeft();
        kind = scope.Kind();
        isStopped = scope.IsStopped();
        if (isLate)
            scope.SetUnanswered();
        return !isLate;
    }
    bool isLate = true;
    // Of the last question.
    mutable std::optional<std::chrono::milliseconds> time;
    mutable RequestKind kind = RequestKind::Preview;
    mutable bool isStopped = false;
};

/// Both managers empty for one test, filled by `Add...`, and empty again at its end.
class ScriptedDrivers : Pinned {
public:
    ScriptedDrivers() { Clear(); }
    ~ScriptedDrivers() { Clear(); }

    /// Finish a driver in `prepare`: its attributes are read when it is added.
    template <class Driver>
    static Driver &Add(std::unique_ptr<Driver> owned, std::function<void(Driver &)> const &prepare = {}) {
        Driver &driver = *owned;
        if (prepare)
            prepare(driver);
        if constexpr (std::is_base_of_v<BDIDrvr, Driver>)
            BDIDrvrMngr::Instance()->Add(std::move(owned));
        else
            RDIDriverMngr::Instance()->Add(std::move(owned));
        return driver;
    }
    static ScriptedTreeDriver &AddTree(DString id, DString extensions = {}) {
        return Add(std::make_unique<ScriptedTreeDriver>(std::move(id), std::move(extensions)));
    }
    static AnyUrlDriver &AddAnyUrl(DString id, DString extensions,
                                   std::function<void(AnyUrlDriver &)> const &prepare = {}) {
        return Add(std::make_unique<AnyUrlDriver>(std::move(id), std::move(extensions)), prepare);
    }
    static ScriptedRasterDriver &AddRaster(DString id) {
        return Add(std::make_unique<ScriptedRasterDriver>(std::move(id)));
    }

private:
    static void Clear() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        SetDriverProvider({});
    }
};

} // namespace zelvar::test
