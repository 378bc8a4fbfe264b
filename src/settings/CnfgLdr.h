#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"

#include <cstdint>
#include <map>

namespace zelvar {

/// Product configuration: what the product that the library is installed with has set.
///
/// It stands in "share/zelvar/product.xml" below the install directory: a root element of any name whose child
/// "DefaultFolders" has one element per key, with the folders in its attribute "path". Without such a file every
/// default holds. User interface thread.
class ZELVAR_API CnfgLdr {
public:
    /// A text on a picture of the product, as `DrawTextBlock` draws it.
    struct TextBlock {
        std::int32_t x = 0; ///< pixels, as `y`
        std::int32_t y = 0;
        char const *font = nullptr; ///< face name, may be null
        std::int32_t size = 0;      ///< font height
        std::int32_t weight = 0;
        ColorRef color = 0;
        DString text{}; ///< may hold line breaks
    };

    /// The configuration of the installation that `GetInstallDir` names now.
    static CnfgLdr *Instance();

    /// The configured value, or `fallback`; a null fallback counts as empty.
    [[nodiscard]] DString GetDfltFldr(DString const &key, char const *fallback) const;

private:
    explicit CnfgLdr(DString installDir);

    DString m_installDir;
    std::map<DString, DString> m_defaultFolders;
};

} // namespace zelvar
