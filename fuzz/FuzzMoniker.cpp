#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/gdal/ContainerProbe.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

/// The parts of a moniker are parts of its text, and options joined to it are found again.
void CheckMoniker(zelvar::DString const &written) {
    zelvar::BDIMoniker const moniker(written, nullptr);
    zelvar::DString const text = moniker.GetText(); // without passwords, which addresses alone have
    Require(text == written || written.find("://") != zelvar::DString::npos);
    Require(zelvar::BDIMoniker(text, nullptr).GetText() == text);
    Require(text.starts_with(moniker.GetSource()));
    for (auto const &[name, value] : moniker.GetOptions())
        Require(text.find(name) != zelvar::DString::npos && text.find(value) != zelvar::DString::npos);
    auto const options = moniker.WithOptions("fuzz=1").GetOptions();
    Require(moniker.IsUrl() || (!options.empty() && options.back().first == "fuzz"));
    Require(!moniker.IsUrl() || moniker.GetPathOnDisk().empty());
    Require(zelvar::PercentDecoded(zelvar::PercentEncoded(text)) == text);
}

/// The chain of pages ends, wherever it leads.
void CheckPages(std::uint8_t const *data, std::size_t size) {
    int const file = memfd_create("fuzz", MFD_CLOEXEC);
    if (file >= 0 && write(file, data, size) == static_cast<ssize_t>(size))
        static_cast<void>(zelvar::gdal::HasSecondTiffPage(file));
    if (file >= 0)
        close(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    if (size > 4096)
        return 0;
    CheckMoniker({reinterpret_cast<char const *>(data), size});
    CheckPages(data, size);
    return 0;
}
