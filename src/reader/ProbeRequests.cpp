#include "zelvar/reader/ProbeRequests.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/DriverOptions.h"
#include "zelvar/data/FormatPlugin.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/OptionMessage.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/reader/FileStamp.h"

namespace zelvar::reader {

namespace {

template <class Driver>
std::unique_ptr<wire::DriverFactsT> FactsOf(Driver const &driver) {
    auto facts = std::make_unique<wire::DriverFactsT>();
    facts->id = driver.GetId();
    facts->info = driver.GetInfo();
    facts->extensions = driver.GetExtensions();
    facts->family = driver.GetFamily();
    return facts;
}

std::unique_ptr<wire::FormatFactsT> ToWire(FormatFacts const &format) {
    auto facts = std::make_unique<wire::FormatFactsT>();
    facts->id = format.id;
    facts->name = format.name;
    facts->extensions = format.extensions;
    facts->reads = format.reads;
    facts->writes = format.writes;
    return facts;
}

} // namespace

Answer ProbeRequests::ListDrivers() {
    wire::DriversT drivers;
    for (BDIDrvr const *driver : BDIDrvrMngr::Instance()->Drivers()) {
        drivers.trees.push_back(FactsOf(*driver));
        drivers.trees.back()->multipleImages = driver->GetAttrInt("BDI_Multiple_Images");
        drivers.trees.back()->filtering = driver->GetAttrInt("BDI_Filtering");
    }
    for (RDIDriver const *driver : RDIDriverMngr::Instance()->Drivers())
        drivers.rasters.push_back(FactsOf(*driver));
    for (ADIDriver const *driver : ADIDriverMngr::Instance()->Drivers())
        drivers.tables.push_back(FactsOf(*driver));
    for (DIOPlugin const *plugin : DIOPluginMngr::Instance()->Plugins())
        if (auto const *const format = dynamic_cast<FormatPlugin const *>(plugin))
            drivers.formats.push_back(ToWire(format->Facts()));
    return Say(std::move(drivers));
}

std::optional<wire::ProbedT> ProbeRequests::Probe(DString const &path, std::vector<DString> const &drivers) const {
    RequestScope const scope(RequestKind::Probe); // all drivers look at the same file
    wire::ProbedT probed;
    for (DString const &id : drivers) {
        if (IsStopped())
            return std::nullopt;
        BDIDrvr const *const driver = BDIDrvrMngr::Instance()->GetDrvr(id.c_str());
        if (driver != nullptr && driver->CanReadPath(path))
            probed.drivers.push_back(id);
    }
    return probed;
}

Answer ProbeRequests::ProbeTrees(wire::ProbeTreesT const &asked) const {
    std::optional<wire::ProbedT> probed = Probe(asked.path, asked.drivers);
    return probed ? Say(std::move(*probed)) : Failure(kStopped);
}

Answer ProbeRequests::ProbeFiles(wire::ProbeFilesT const &asked) const {
    wire::FilesProbedT answer;
    for (std::unique_ptr<wire::ProbedFileT> const &file : asked.files) {
        if (file == nullptr || file->set >= asked.sets.size() || asked.sets[file->set] == nullptr)
            return Failure("a file without its drivers");
        std::optional<wire::ProbedT> probed = Probe(file->path, asked.sets[file->set]->drivers);
        if (!probed)
            break; // what is known is of use
        answer.files.push_back(std::make_unique<wire::ProbedT>(std::move(*probed)));
    }
    return Say(std::move(answer));
}

Answer ProbeRequests::ProbeImage(wire::ProbeImageT const &asked) {
    RDIDriver const *const driver = RDIDriverMngr::Instance()->GetDriver(asked.driver.c_str());
    if (driver == nullptr)
        return Failure("no raster driver " + asked.driver);
    wire::ProbedT probed;
    if (asked.family)
        probed.drivers = driver->FindInFamily(asked.path.c_str());
    else if (driver->IsMyFile(asked.path.c_str()) == 1)
        probed.drivers.push_back(asked.driver);
    return Say(std::move(probed));
}

Answer ProbeRequests::FindOwned(wire::FindOwnedT const &asked) const {
    RDIDriver const *const driver = RDIDriverMngr::Instance()->GetDriver(asked.driver.c_str());
    if (driver == nullptr)
        return Failure("no raster driver " + asked.driver);
    wire::OwnedFoundT found;
    for (found.index = -1; found.index < 0 && found.looked < asked.paths.size() && !IsStopped(); ++found.looked)
        if (driver->IsMyFile(asked.paths[found.looked].c_str()) == 1)
            found.index = static_cast<std::int32_t>(found.looked);
    return Say(found);
}

Answer ProbeRequests::DescribeOptions(wire::DescribeOptionsT const &asked) {
    wire::OptionsDescribedT described;
    described.driver = asked.driver.empty() ? TellDriverHere(BDIMoniker(asked.moniker, nullptr)) : asked.driver;
    DriverOptionLists const options = OptionsHere(described.driver);
    described.open = OptionsToWire(options.open);
    described.create = OptionsToWire(options.create);
    return Say(std::move(described));
}

Answer ProbeRequests::StampFile(wire::StampFileT const &asked) {
    FileStamp const found = StampOf(asked.path);
    wire::StampT stamp;
    stamp.isThere = found.IsThere();
    stamp.modified = found.modified;
    stamp.size = found.size;
    return Say(stamp);
}

} // namespace zelvar::reader
