#pragma once

#include "zelvar/data/DIOPlugin.h"
#include "zelvar/data/DriverProvider.h"

#include <memory>
#include <vector>

namespace zelvar {

/// Data plug-in manager: the plug-ins that tell what files can be read and written, in order.
///
/// They come from the same provider as the drivers, at the first question. Any thread may ask.
class ZELVAR_API DIOPluginMngr {
public:
    static DIOPluginMngr *Instance();

    [[nodiscard]] std::vector<DIOPlugin *> const &Plugins(); ///< the manager owns them
    /// The formats of all plug-ins, see `DIOPlugin::BuildFrmtList`.
    void BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check, DList<DFileFrmt *> &formats);

    /// Adds a plug-in behind the others; the manager owns it. Not while another thread asks.
    void Add(std::unique_ptr<DIOPlugin> plugin);
    /// Removes all plug-ins and forgets that the provider was asked; so does a `Reset` of another manager, since the
    /// provider then adds them anew. For tests.
    void Reset();

private:
    DIOPluginMngr();

    std::vector<std::unique_ptr<DIOPlugin>> m_owned;
    std::vector<DIOPlugin *> m_plugins;
};

} // namespace zelvar
