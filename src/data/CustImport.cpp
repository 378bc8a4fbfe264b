#include "zelvar/data/CustImport.h"

namespace zelvar {

DString CustImport::GetFilePttr(DVector<DString> const &images, DString const &text) {
    if (images.empty())
        return {};
    DString pattern;
    DString const &image = images.front();
    for (std::size_t at = 0; at < image.size();) {
        std::size_t const open = image.find('{', at);
        std::size_t const close = open == DString::npos ? open : image.find('}', open);
        if (close == DString::npos)
            return pattern + image.substr(at);
        pattern += image.substr(at, open - at) + (text.empty() ? "*" : text);
        at = close + 1;
    }
    return pattern;
}

CustImport const *DataSchm::GetCustImport(int index) const {
    return index >= 0 && index < GetNumCustImport() ? m_imports[static_cast<std::size_t>(index)].get() : nullptr;
}

Wksp *Wksp::Instance() {
    static Wksp workspace;
    return &workspace;
}

} // namespace zelvar
