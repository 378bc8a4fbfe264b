#include "zelvar/data/gdal/GdalDrivers.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/gdal/ContainerTree.h"
#include "zelvar/data/gdal/DataFolderTree.h"
#include "zelvar/data/gdal/FolderTree.h"
#include "zelvar/data/gdal/GdalPlugin.h"
#include "zelvar/data/gdal/MapServiceTree.h"
#include "zelvar/data/gdal/RasterDriver.h"
#include "zelvar/data/gdal/TableDriver.h"
#include "zelvar/data/gdal/ZipTree.h"
#include "zelvar/data/gdal/database/DatabaseTableDriver.h"
#include "zelvar/data/gdal/database/DatabaseTreeDriver.h"
#include "zelvar/data/tables/ADIDriverMngr.h"

namespace zelvar {

void RegisterGdalDrivers() {
    BDIDrvrMngr &trees = *BDIDrvrMngr::Instance();
    RDIDriverMngr &rasters = *RDIDriverMngr::Instance();
    ADIDriverMngr &tables = *ADIDriverMngr::Instance();
    // Places and archives come first: no format reads them as they are.
    for (gdal::FolderKind const kind : {gdal::FolderKind::Directory, gdal::FolderKind::Smb, gdal::FolderKind::Web})
        trees.Add(std::make_unique<gdal::FolderDriver>(kind));
    trees.Add(std::make_unique<gdal::MapServiceDriver>());
    for (ConnectionKind const kind : {ConnectionKind::PostgreSql, ConnectionKind::Odbc})
        trees.Add(std::make_unique<gdal::DatabaseTreeDriver>(kind));
    trees.Add(std::make_unique<gdal::ZipDriver>());
    for (gdal::Format const &format : gdal::Formats::Instance().All()) {
        trees.Add(std::make_unique<gdal::ContainerDriver>(format));
        if (format.raster)
            rasters.Add(std::make_unique<gdal::RasterDriver>(format));
        if (format.vector)
            tables.Add(std::make_unique<gdal::TableDriver>(format));
    }
    trees.Add(std::make_unique<gdal::DataFolderDriver>());
    for (ConnectionKind const kind : {ConnectionKind::PostgreSql, ConnectionKind::Odbc})
        tables.Add(std::make_unique<gdal::DatabaseTableDriver>(kind));
    for (FormatFacts const &uses : gdal::Formats::Instance().Uses())
        DIOPluginMngr::Instance()->Add(std::make_unique<gdal::GdalPlugin>(uses));
}

} // namespace zelvar
