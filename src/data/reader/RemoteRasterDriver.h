#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/wire/Messages.h"

namespace zelvar {

/// An image driver that lives in the readers. What the properties ask comes with the answer to the opening; pixels come
/// through shared memory. A reader that is lost loses no image, the next one opens it again.
class RemoteRasterDriver : public RDIDriver {
public:
    explicit RemoteRasterDriver(wire::DriverFactsT facts) : m_facts(std::move(facts)) {}

    [[nodiscard]] DString GetId() const override { return m_facts.id; }
    [[nodiscard]] DString GetInfo() const override { return m_facts.info; }
    [[nodiscard]] DString GetExtensions() const override { return m_facts.extensions; }
    [[nodiscard]] DString GetFamily() const override { return m_facts.family; }
    [[nodiscard]] int IsMyFile(char const *path) const override;
    [[nodiscard]] std::vector<DString> FindInFamily(char const *path) const override;
    /// In few questions. Files that ended a reader are passed over.
    [[nodiscard]] std::optional<std::size_t> FindMyFile(std::vector<DString> const &paths,
                                                        StopSignal const &stop) const override;
    void *OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override;
    void *OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                           DError *error) override;
    void CloseFile(void *handle, bool discardChanges) override;

    [[nodiscard]] int GetNumChnl(void *handle) const override;
    [[nodiscard]] int GetChnlSizeX(void *handle, int channel) const override;
    [[nodiscard]] int GetChnlSizeY(void *handle, int channel) const override;
    [[nodiscard]] int GetChnlDataType(void *handle, int channel) const override;
    [[nodiscard]] RDIGeoCoo GetChnlGeoCode(void *handle, int channel) const override;
    [[nodiscard]] DString GetAttrString(char const *name, void *handle, int channel) const override;
    [[nodiscard]] int GetAttrInt(char const *name, void *handle, int channel) const override;
    bool ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height, void *buffer,
                        int outWidth, int outHeight, int resampling, bool usePyramid, bool clip) override;
    bool ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width, double height,
                           void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                           bool clip) override;
    bool ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb, int outWidth,
                          int outHeight) override;
    [[nodiscard]] DError GetReadError(void *handle) const override;
    bool SalvageRsmpl(void *handle, int channel, int count, RDIWindow const &window, void *buffer,
                      RDIRowsRead &read) override;

private:
    [[nodiscard]] std::vector<DString> Probe(char const *path, bool family) const;
    [[nodiscard]] int SampleBytes(void *handle, int channel, int count) const;
    void *Open(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop, DError *error, bool family);

    wire::DriverFactsT m_facts;
};

} // namespace zelvar
