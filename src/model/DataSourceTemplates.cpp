#include "zelvar/model/DataSourceTemplates.h"

#include "zelvar/base/DFileFind.h"
#include "zelvar/base/Directories.h"

namespace zelvar {

bool DataSourceTemplates::Load() {
    DString const directory = GetDataSourceTemplatesDir();
    if (!IsEmpty() || directory.empty())
        return !IsEmpty();
    DFileFind const found(directory, "*.xml", true, false, false, false, 0);
    for (DFile const &file : found.GetFiles())
        LoadFromXMLFile(file.GetAbsolutePath().c_str(), false);
    return !IsEmpty();
}

} // namespace zelvar
