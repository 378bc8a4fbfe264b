#include "zelvar/data/DIOPluginMngr.h"

namespace zelvar {

DIOPluginMngr::DIOPluginMngr() {
    OnForgetDrivers([this] {
        m_plugins.clear();
        m_owned.clear();
    });
}

DIOPluginMngr *DIOPluginMngr::Instance() {
    static auto &manager = *new DIOPluginMngr; // never destroyed: workers may still ask while the process ends
    return &manager;
}

std::vector<DIOPlugin *> const &DIOPluginMngr::Plugins() {
    EnsureDrivers();
    return m_plugins;
}

void DIOPluginMngr::BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check,
                                  DList<DFileFrmt *> &formats) {
    for (DIOPlugin *plugin : Plugins())
        plugin->BuildFrmtList(mode, dataType, check, formats);
}

void DIOPluginMngr::Add(std::unique_ptr<DIOPlugin> plugin) {
    m_plugins.push_back(plugin.get());
    m_owned.push_back(std::move(plugin));
}

void DIOPluginMngr::Reset() {
    m_plugins.clear();
    m_owned.clear();
    ForgetDrivers();
}

} // namespace zelvar
