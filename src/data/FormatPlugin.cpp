#include "zelvar/data/FormatPlugin.h"

namespace zelvar {

void FormatPlugin::BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check,
                                 DList<DFileFrmt *> &formats) {
    constexpr int reading = 0;
    constexpr int writing = 1;
    std::uint32_t const types = mode == reading ? m_facts.reads : mode == writing ? m_facts.writes : 0;
    if ((types & dataType) == 0 || (check != nullptr && !check->Check(m_facts.id)))
        return;
    DString mask = m_facts.extensions.empty() ? "*.*" : m_facts.extensions;
    formats.push_back(new DFileFrmt(m_facts.id, m_facts.name, std::move(mask), m_facts.id, true));
}

} // namespace zelvar
