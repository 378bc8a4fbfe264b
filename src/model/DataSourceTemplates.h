#pragma once

#include "zelvar/model/DataSourceRepository.h"

namespace zelvar {

/// The definitions that came with the installation: the files of the templates directory.
class ZELVAR_API DataSourceTemplates : public DataSourceRepository {
public:
    bool Load() override;
};

} // namespace zelvar
