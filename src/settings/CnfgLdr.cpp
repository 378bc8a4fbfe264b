#include "zelvar/settings/CnfgLdr.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/Report.h"
#include "zelvar/xml/XMLNode.h"

namespace zelvar {

CnfgLdr *CnfgLdr::Instance() {
    static std::unique_ptr<CnfgLdr> instance;
    DString const installDir = GetInstallDir();
    if (!instance || instance->m_installDir != installDir)
        instance.reset(new CnfgLdr(installDir));
    return instance.get();
}

CnfgLdr::CnfgLdr(DString installDir) : m_installDir(std::move(installDir)) {
    DFile const file(AppendPath(m_installDir, "share/zelvar/product.xml"));
    if (!file.Exist())
        return;
    XMLNode product;
    DString error;
    if (!product.Load(file, &error)) {
        Report::TraceMessage(1, "product configuration: %s", error.c_str());
        return;
    }
    XMLNode const *const folders = product.GetChldNode("DefaultFolders");
    for (XMLNode const *at = folders == nullptr ? nullptr : folders->GetFirstChild(); at != nullptr; at = at->GetNext())
        m_defaultFolders[at->GetName()] = at->GetAttrStr("path");
}

DString CnfgLdr::GetDfltFldr(DString const &key, char const *fallback) const {
    auto const at = m_defaultFolders.find(key);
    if (at != m_defaultFolders.end())
        return at->second;
    return fallback == nullptr ? DString() : DString(fallback);
}

} // namespace zelvar
