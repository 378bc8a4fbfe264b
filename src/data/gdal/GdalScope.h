#pragma once

#include "zelvar/base/DString.h"

#include <memory>
#include <vector>

struct GDALDatasetHS;

namespace zelvar::gdal {

/// How far a call into GDAL may reach.
enum class Reach {
    Local,   ///< files on disk; every way out to the network is barred
    Network, ///< what the moniker's own address names
};

/// What GDAL says of a failure: a number of cpl_error.h, and words.
struct GdalError {
    int number = 0;
    DString text;
};

/// Registers GDAL's formats, once for the process.
void StartGdal();

/// The library behind some formats prints its errors by itself, for each thread anew: makes it silent for this one.
/// Cheap to call again.
void SilenceHdf5();

/// Every call into GDAL stands inside such a scope: errors of this thread go to the log instead of stderr, GDAL writes
/// nothing beside files and does not scan folders, requests time out, and `Reach::Local` bars the network whatever a
/// file's content asks for. All of it holds for this thread alone: an application's own use of GDAL is left alone.
class GdalScope {
public:
    explicit GdalScope(Reach reach);
    ~GdalScope();
    GdalScope(GdalScope const &) = delete;
    GdalScope &operator=(GdalScope const &) = delete;

    /// The first few errors since the scope began.
    [[nodiscard]] std::vector<GdalError> const &Errors() const { return m_errors; }
    /// Whether data ended before the picture did, which a library has filled up and gone on.
    [[nodiscard]] bool HasEndedTooSoon() const { return m_hasEndedTooSoon; }

private:
    static void OnError(int level, int number, char const *text);

    std::vector<GdalError> m_errors;
    bool m_hasEndedTooSoon = false;
    char **m_formerOptions = nullptr; ///< this thread's options before
    Reach m_reach;
};

/// A data set open for reading. It is closed inside a scope of its own.
struct CloseDataset {
    void operator()(GDALDatasetHS *dataset) const;
};
using DatasetPtr = std::unique_ptr<GDALDatasetHS, CloseDataset>;
/// GDAL's handles are `void *`; ours are told apart.
[[nodiscard]] inline void *Raw(DatasetPtr const &dataset) { return dataset.get(); }
[[nodiscard]] inline DatasetPtr Own(void *handle) { return DatasetPtr(static_cast<GDALDatasetHS *>(handle)); }

} // namespace zelvar::gdal
