#include "zelvar/model/SuffixFacts.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/model/SystemImages.h"
#include "zelvar/platform/os/IconRule.h"

namespace zelvar {

SuffixFacts::Facts const &SuffixFacts::Of(platform::ShellChild const &child) {
    bool const isFile = child.kind == platform::ShellKind::File;
    m_key.assign(1, child.link ? 'l' : '-');
    m_key += static_cast<char>('0' + static_cast<int>(child.kind));
    if (isFile)
        m_key += ExtensionOf(child.name);
    auto const [entry, isNew] = m_known.try_emplace(m_key);
    Facts &facts = entry->second;
    if (isNew) {
        facts.icon = SystemImages().Add(m_shell.Icon(child.id, child.link));
        facts.isClaimed = isFile && !BDIDrvrMngr::Instance()->CandidatesFor(child.name).empty();
        facts.isNameless = isFile && !facts.isClaimed && !platform::SaysWhatItIs(child.name);
    }
    return facts;
}

} // namespace zelvar
