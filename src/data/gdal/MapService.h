#pragma once

#include "zelvar/data/gdal/Source.h"
#include "zelvar/data/gdal/services/Capabilities.h"

namespace zelvar::gdal {

/// A file in GDAL's memory, gone with the object.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content);
    ~MemoryFile();
    MemoryFile(MemoryFile const &) = delete;
    MemoryFile &operator=(MemoryFile const &) = delete;
    [[nodiscard]] DString const &Name() const { return m_name; }

private:
    DString m_name;
};

/// What a map service has said of itself.
struct KnownService {
    services::Capabilities capabilities{};
    MemoryFile document; ///< the answer
};

enum class Freshness {
    New,    ///< the service is asked, unless it was a moment ago: a place is opened more than once on its way to a list
    Lately, ///< what it has said in the last minutes will do
};
/// The capabilities of `service` at the address, with one request; null, with the reason in `error`, for none. Inside a
/// `GdalScope`. Any thread.
[[nodiscard]] std::shared_ptr<KnownService const>
AskService(services::ServiceAddress const &address, services::Service service, Freshness freshness, DError &error);

/// The format that opens what the source names; null for a whole service, and for what has no such data. `flags` as for
/// `Open`. Asks nobody.
[[nodiscard]] Format const *FormatOfService(services::ServiceAddress const &address, unsigned flags);
/// Opens something in a map service: as `Open`.
[[nodiscard]] OpenedSource OpenInService(Source const &source, unsigned flags, Format const *only, DError *error);

/// Where on the earth an image lies, "10, 50 - 13, 52 (EPSG:4326)": corners in the units of a system. Empty if it does
/// not say. Inside a `GdalScope`.
[[nodiscard]] DString ExtentInWords(DatasetPtr const &dataset);

} // namespace zelvar::gdal
