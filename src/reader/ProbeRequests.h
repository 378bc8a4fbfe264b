#pragma once

#include "zelvar/data/StopSignal.h"
#include "zelvar/reader/Answers.h"

#include <optional>
#include <vector>

namespace zelvar::reader {

/// Requests about files that are not opened: which drivers read them, whether they are as they were, which drivers
/// there are and what can be said to them.
class ProbeRequests {
public:
    explicit ProbeRequests(StopSignal const &stop) : m_stop(&stop) {}

    [[nodiscard]] static Answer ListDrivers();
    [[nodiscard]] Answer ProbeTrees(wire::ProbeTreesT const &asked) const;
    [[nodiscard]] Answer ProbeFiles(wire::ProbeFilesT const &asked) const;
    [[nodiscard]] static Answer ProbeImage(wire::ProbeImageT const &asked);
    [[nodiscard]] Answer FindOwned(wire::FindOwnedT const &asked) const;
    [[nodiscard]] static Answer DescribeOptions(wire::DescribeOptionsT const &asked);
    [[nodiscard]] static Answer StampFile(wire::StampFileT const &asked);

private:
    /// Those of the drivers that read the file; nothing if it was stopped.
    [[nodiscard]] std::optional<wire::ProbedT> Probe(DString const &path, std::vector<DString> const &drivers) const;
    [[nodiscard]] bool IsStopped() const { return m_stop->load(); }

    StopSignal const *m_stop;
};

} // namespace zelvar::reader
