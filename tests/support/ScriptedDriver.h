#pragma once

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <set>
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

/// A node as a test writes it down. Paths come out as "<url>/<name>/<name>".
struct ScriptedNode {
    DString name = {};
    std::uint32_t type = BDINode_Container;
    std::vector<ScriptedNode> children = {};
    DString value = {};
    bool broken = false; ///< listed, but cannot be opened
};

/// Tree driver that serves trees written down by a test.
class ScriptedTreeDriver : public BDIDrvr {
public:
    explicit ScriptedTreeDriver(DString id, DString extensions = {})
        : m_id(std::move(id)), m_extensions(std::move(extensions)) {}

    void SetTree(DString const &url, ScriptedNode root) { m_trees[url] = std::move(root); }
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
    std::atomic<int> probes{0}; ///< calls of `CanReadPath`

    [[nodiscard]] DString GetId() const override { return m_id; }
    [[nodiscard]] DString GetInfo() const override { return "scripted " + m_id; }
    [[nodiscard]] DString GetExtensions() const override { return m_extensions; }
    [[nodiscard]] int GetAttrInt(char const *name) const override {
        auto const at = attributes.find(name);
        return at == attributes.end() ? 0 : at->second;
    }
    [[nodiscard]] bool CanReadPath(DString const &path) const override {
        ++const_cast<ScriptedTreeDriver *>(this)->probes;
        return m_trees.contains(path);
    }

    void *OpenRepository(char const *url, BDINode **root, char const *filter) override {
        openGate.Pass();
        auto const tree = m_trees.find(url == nullptr ? "" : url);
        auto const filtered = m_filtered.find(filter == nullptr ? "" : filter);
        if (tree == m_trees.end() || (filter != nullptr && *filter != '\0' && filtered == m_filtered.end()))
            return nullptr;
        ++opens;
        auto *open = new Repository{tree->first, filtered == m_filtered.end() ? &tree->second : &filtered->second};
        *root = Make(*open->root, open->url);
        return open;
    }
    void CloseRepository(void *repository) override {
        ++closes;
        delete static_cast<Repository *>(repository);
    }
    BDINode *OpenNode(void *repository, char const *path) override {
        auto const *open = static_cast<Repository *>(repository);
        if (ScriptedNode const *node = Find(*open->root, open->url, path); node != nullptr && !node->broken)
            return Make(*node, path);
        return nullptr;
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
        auto const *open = static_cast<Repository *>(repository);
        ScriptedNode const *parent = Find(*open->root, open->url, node->path);
        auto walk = std::make_unique<Walk>();
        for (std::size_t i = 0; parent != nullptr && i < parent->children.size(); ++i)
            if ((parent->children[i].type & static_cast<std::uint32_t>(mask)) != 0)
                walk->children.push_back(Record(parent->children[i], node->path + "/" + parent->children[i].name));
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

private:
    struct Repository {
        DString url;
        ScriptedNode const *root = nullptr;
    };
    struct Walk {
        std::vector<BDINode> children;
        std::size_t next = 0;
    };
    static BDINode Record(ScriptedNode const &node, DString path) {
        BDINode record;
        record.type = node.type;
        record.path = std::move(path);
        record.name = node.name;
        record.value = node.value;
        return record;
    }
    BDINode *Make(ScriptedNode const &node, DString path) {
        ++nodesMade;
        return new BDINode(Record(node, std::move(path)));
    }
    static ScriptedNode const *Find(ScriptedNode const &node, DString const &nodePath, DString const &path) {
        if (nodePath == path)
            return &node;
        for (ScriptedNode const &child : node.children) {
            DString const childPath = nodePath + "/" + child.name;
            if (path == childPath || path.starts_with(childPath + "/"))
                return Find(child, childPath, path);
        }
        return nullptr;
    }

    DString m_id;
    DString m_extensions;
    std::map<DString, ScriptedNode> m_trees;
    std::map<DString, ScriptedNode> m_filtered;
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
                        int outWidth, int outHeight, int, bool, bool) override {
        auto const *open = static_cast<Handle *>(handle);
        readGate.Pass(open->stop);
        ++reads;
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
    template <class Sample>
    static unsigned char *PutAs(unsigned char *out, double value) {
        auto const sample = static_cast<Sample>(value);
        std::memcpy(out, &sample, sizeof sample);
        return out + sizeof sample;
    }
    static unsigned char *Put(unsigned char *out, int type, double value) {
        switch (type) {
        case RDI_UInt16:
            return PutAs<std::uint16_t>(out, value);
        case RDI_Int16:
            return PutAs<std::int16_t>(out, value);
        case RDI_UInt32:
            return PutAs<std::uint32_t>(out, value);
        case RDI_Int32:
            return PutAs<std::int32_t>(out, value);
        case RDI_Float32:
            return PutAs<float>(out, value);
        default:
            return PutAs<std::uint8_t>(out, value);
        }
    }

    DString m_id;
    std::map<DString, ScriptedImage> m_images;
};

/// Both managers empty for one test, filled by `Add...`, and empty again at its end.
class ScriptedDrivers {
public:
    ScriptedDrivers() { Clear(); }
    ~ScriptedDrivers() { Clear(); }
    ScriptedDrivers(ScriptedDrivers const &) = delete;
    ScriptedDrivers &operator=(ScriptedDrivers const &) = delete;

    static ScriptedTreeDriver &AddTree(DString id, DString extensions = {}) {
        auto driver = std::make_unique<ScriptedTreeDriver>(std::move(id), std::move(extensions));
        ScriptedTreeDriver &added = *driver;
        BDIDrvrMngr::Instance()->Add(std::move(driver));
        return added;
    }
    static ScriptedRasterDriver &AddRaster(DString id) {
        auto driver = std::make_unique<ScriptedRasterDriver>(std::move(id));
        ScriptedRasterDriver &added = *driver;
        RDIDriverMngr::Instance()->Add(std::move(driver));
        return added;
    }

private:
    static void Clear() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        SetDriverProvider({});
    }
};

} // namespace zelvar::test
