#pragma once

#include "zelvar/base/DFileFrmt.h"

namespace zelvar {
class FileDlg;
}

namespace zelvar::tool {

/// A kind of data or document, as `--for` names it.
struct Kind {
    char const *name;
    bool canSave;
    bool (*run)(FileDlg &request, int mode, bool multiple);
};

/// Null for an unknown name.
[[nodiscard]] Kind const *FindKind(DString const &name);

/// The formats of Morvane's documents, as the product's applications would set them.
struct ApplicationFormats {
    ApplicationFormats();

    DFileFrmt workspace{"MVW", "Workspaces", "*.mvw"};
    DFileFrmt project{"MVP", "Projects", "*.mvp"};
    DFileFrmt process{"MVR", "Processes", "*.mvr"};
    DFileFrmt protocol{"MVT", "Protocols", "*.mvt"};
    DFileFrmt solution{"MVS", "Analysis solutions", "*.mvs"};
    DFileFrmt jobs{"MVJ", "Job sequences", "*.mvj"};
};

} // namespace zelvar::tool
