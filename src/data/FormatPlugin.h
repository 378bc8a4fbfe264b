#pragma once

#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DIOPlugin.h"
#include "zelvar/data/options/DriverOption.h"

#include <cstdint>

namespace zelvar {

/// What a file format can be used for.
struct FormatFacts {
    DString id;
    DString name;             ///< what the user sees
    DString extensions;       ///< masks as "*.tif;*.tiff"; empty for a format that is not told by them
    std::uint32_t reads = 0;  ///< `BDINodeType` bits of what it can be read as; 0 for none
    std::uint32_t writes = 0; ///< the same for writing
};

/// A file format as a plug-in: offers itself where it can do what is wanted. With the plug-ins of `DIOPluginMngr` in a
/// reader the application has the same ones.
class ZELVAR_API FormatPlugin : public DIOPlugin {
public:
    explicit FormatPlugin(FormatFacts facts) : m_facts(std::move(facts)) {}

    [[nodiscard]] DString GetId() const override { return m_facts.id; }
    [[nodiscard]] DString GetInfo() const override { return m_facts.name; }
    [[nodiscard]] DString GetExtensions() const override { return m_facts.extensions; }
    void BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check, DList<DFileFrmt *> &formats) override;
    /// What can be said to those who read or write it; see `DriverOptions`.
    [[nodiscard]] virtual DriverOptionLists GetOptions() const { return {}; }
    /// The id of the format among those of this one's family (`GetFamily`) that the data would be read with, told by
    /// their first bytes; empty for none.
    [[nodiscard]] virtual DString TellFormat(BDIMoniker const & /*moniker*/) const { return {}; }
    [[nodiscard]] FormatFacts const &Facts() const { return m_facts; }

private:
    FormatFacts m_facts;
};

} // namespace zelvar
