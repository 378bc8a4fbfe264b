#include "zelvar/model/DataSourceDefinitions.h"

#include "zelvar/base/DFileFind.h"
#include "zelvar/base/Directories.h"

#include <filesystem>
#include <system_error>

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
    // A new user has no such directory yet. Should it not be made, nothing can be written either.
    if (DString const directory = GetDataSourceDefinitionsDir(); !directory.empty() && !m_files.empty()) {
        std::error_code failure;
        std::filesystem::create_directories(directory, failure);
    }
    // The mark of a modified file stays, so each later call writes it again.
    for (FileRec const &record : m_files)
        if (record.m_modified)
            written = record.root->Save(&record.file, false);
    return written;
}

} // namespace zelvar
