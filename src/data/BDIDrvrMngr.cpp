#include "zelvar/data/BDIDrvrMngr.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DriverTable.h"

#include <algorithm>
#include <utility>

namespace zelvar {

struct BDIDrvrMngr::Impl {
    DriverTable<BDIDrvr> table;
};

BDIDrvrMngr::BDIDrvrMngr() : m_impl(std::make_unique<Impl>()) {}
BDIDrvrMngr::~BDIDrvrMngr() = default;

BDIDrvrMngr *BDIDrvrMngr::Instance() {
    static auto &manager = *new BDIDrvrMngr; // never destroyed: workers may still ask while the process ends
    return &manager;
}

BDIDrvr *BDIDrvrMngr::GetDrvr(char const *id) {
    EnsureDrivers();
    return m_impl->table.Find(id);
}

void *BDIDrvrMngr::OpenFile(char const *url, BDIDrvr **driver, BDINode **root, char const *filter, DError *error) {
    EnsureDrivers();
    BDIDrvr *opener = nullptr;
    BDINode *node = nullptr;
    void *repository = nullptr;
    DError reason;
    DString const place = TakeSecrets(url == nullptr ? "" : url);
    if (!place.empty())
        repository = m_impl->table.OpenFirst([&](BDIDrvr &candidate) {
            return OpenNoting(reason, [&](DError *why) {
                return candidate.OpenRepositoryOrSay(place.c_str(), true, &opener, &node, filter, why);
            });
        });
    if (repository == nullptr) {
        bool const isKnown = reason.Why() != DError::Cause::Unknown &&
                             (reason.Why() != DError::Cause::NotSupported || BDIMoniker(place, nullptr).IsUrl());
        if (error != nullptr && isKnown)
            *error = std::move(reason);
        else if (error != nullptr && place.starts_with('/') && BDIMoniker(place, nullptr).FindFile().empty())
            error->Set("\"" + place + "\" is not there", DError::Cause::Missing);
        else if (error != nullptr)
            error->Set("no driver opens \"" + place + "\" as a tree");
        return nullptr;
    }
    *driver = opener;
    *root = node;
    return repository;
}

std::vector<BDIDrvr *> const &BDIDrvrMngr::Drivers() {
    EnsureDrivers();
    return m_impl->table.Drivers();
}

std::vector<BDIDrvr *> const &BDIDrvrMngr::CandidatesFor(std::string_view fileName) {
    EnsureDrivers();
    return m_impl->table.ByExtensionOf(fileName);
}

BDIDrvr *BDIDrvrMngr::FindContainerDriver(DString const &path) {
    std::vector<BDIDrvr *> const &candidates = CandidatesFor(FileNameOf(path));
    auto const reads = [&](BDIDrvr const *driver) { return driver->CanReadPath(path); };
    if (auto const at = std::find_if(candidates.begin(), candidates.end(), reads); at != candidates.end())
        return *at;
    auto const &drivers = m_impl->table.Drivers();
    auto const at = std::find_if(drivers.begin(), drivers.end(), [&](BDIDrvr const *driver) {
        return driver->GetAttrInt("BDI_Multiple_Images") == 1 &&
               std::find(candidates.begin(), candidates.end(), driver) == candidates.end() && reads(driver);
    });
    return at == drivers.end() ? nullptr : *at;
}

void BDIDrvrMngr::Add(std::unique_ptr<BDIDrvr> driver) {
    bool const multiple = driver->GetAttrInt("BDI_Multiple_Images") == 1;
    m_impl->table.Add(std::move(driver), multiple);
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): called of the manager as the rest
void BDIDrvrMngr::Reset() { ForgetDrivers(); }

} // namespace zelvar
