#include "zelvar/model/ChildWalker.h"

#include <tuple>

namespace zelvar {

ChildWalker::~ChildWalker() {
    for (; !m_finds.empty(); m_finds.pop_back())
        m_driver.FindClose(m_finds.back());
}

void ChildWalker::Start() {
    if (Push(m_parent))
        Fetch();
}

void ChildWalker::Next() {
    if (m_depth == Depth::Descendants)
        std::ignore = Push(*m_current); // the child stays valid: its own level is not moved on
    Fetch();
}

bool ChildWalker::Push(BDINode const &parent) {
    int const mask = m_depth == Depth::Descendants ? m_mask | static_cast<int>(BDINode_Container) : m_mask;
    void *const find = m_driver.FindFirstChildNode(m_repository, &parent, mask);
    if (find != nullptr)
        m_finds.push_back(find);
    return find != nullptr;
}

void ChildWalker::Fetch() {
    for (m_current = nullptr; !m_finds.empty();) {
        m_current = m_driver.FindNextChildNode(m_finds.back());
        if (m_current != nullptr)
            return;
        m_driver.FindClose(m_finds.back());
        m_finds.pop_back();
    }
}

} // namespace zelvar
