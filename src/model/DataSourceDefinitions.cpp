#include "zelvar/model/DataSourceDefinitions.h"

#include "zelvar/base/DFileFind.h"
#include "zelvar/base/Directories.h"

namespace zelvar {

bool DataSourceDefinitions::Load() {
    DString const directory = GetDataSourceDefinitionsDir();
    if (!IsEmpty() || directory.empty())
        return !IsEmpty();
    DString const main = AppendPath(directory, "connections.xml");
    LoadFromXMLFile(main.c_str(), true);
    DString const mainPath = DFile(main).GetAbsolutePath();
    DFileFind const found(directory, "*.xml", true, false, false, false, 0);
    for (DFile const &file : found.GetFiles())
        if (DString const path = file.GetAbsolutePath(); !EqualNoCase(path, mainPath))
            LoadFromXMLFile(path.c_str(), false);
    return !IsEmpty();
}

bool DataSourceDefinitions::Save() {
    bool written = false;
    // The mark of a modified file stays, so each later call writes it again.
    for (FileRec const &record : m_files)
        if (record.m_modified)
            written = record.root->Save(&record.file, false);
    return written;
}

} // namespace zelvar
