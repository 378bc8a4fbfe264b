#pragma once

#include "zelvar/model/DataSourceRepository.h"

namespace zelvar {

/// The user's connections: the files of the definitions directory, "connections.xml" first.
class ZELVAR_API DataSourceDefinitions : public DataSourceRepository {
public:
    /// A missing "connections.xml" is made in memory, so new definitions have a first file to go to.
    bool Load() override;
    /// Writes the modified files; the result is that of the last one, false if there was none.
    bool Save();
};

} // namespace zelvar
