#include "zelvar/platform/os/ShellId.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zelvar::platform {

/// One element of a chain. Its bytes lie behind it in the same block of memory.
class ShellId::Node final : public RefItem {
public:
    [[nodiscard]] static Node *Make(ShellId const &parent, std::string_view element, ShellKind kind) {
        void *const memory = ::operator new(sizeof(Node) + element.size());
        return new (memory) Node(parent, element, kind);
    }
    ~Node() override = default;
    Node(Node const &) = delete;
    Node &operator=(Node const &) = delete;
    static void operator delete(void *memory) { ::operator delete(memory); } // NOLINT(misc-new-delete-overloads): below

    [[nodiscard]] std::string_view Element() const {
        return {static_cast<char const *>(static_cast<void const *>(this + 1)), m_length};
    }
    [[nodiscard]] ShellId const &Parent() const { return m_parent; }
    [[nodiscard]] ShellKind Kind() const { return m_kind; }
    [[nodiscard]] int Depth() const { return m_depth; }

private:
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *, void *) noexcept {}

    Node(ShellId const &parent, std::string_view element, ShellKind kind)
        : m_kind(kind), m_parent(parent), m_length(static_cast<std::uint32_t>(element.size())),
          m_depth(parent.IsNull() ? 0 : parent.Depth() + 1) {
        if (!element.empty())
            std::memcpy(static_cast<void *>(this + 1), element.data(), element.size());
    }

    ShellKind m_kind;
    ShellId m_parent;
    std::uint32_t m_length;
    int m_depth;
};

ShellId::ShellId(Node *node) : m_node(node) {}

ShellId::Node const *ShellId::Get() const { return static_cast<Node const *>(m_node.get()); }

ShellId ShellId::Desktop() {
    // Never destroyed: workers may still ask while the process ends
    static auto const &desktop = *new ShellId(Node::Make(ShellId(), {}, ShellKind::Virtual));
    return desktop;
}

ShellId ShellId::Child(std::string_view element, ShellKind kind) const {
    constexpr std::size_t kMaxElement = 1U << 20U;
    return ShellId(Node::Make(*this, element.substr(0, kMaxElement), kind));
}

bool ShellId::IsDesktop() const { return !IsNull() && Get()->Parent().IsNull(); }

ShellId ShellId::Parent() const { return IsNull() ? ShellId() : Get()->Parent(); }

std::string_view ShellId::Element() const { return IsNull() ? std::string_view() : Get()->Element(); }

ShellKind ShellId::Kind() const { return IsNull() ? ShellKind::Unknown : Get()->Kind(); }

int ShellId::Depth() const { return IsNull() ? 0 : Get()->Depth(); }

bool operator==(ShellId const &a, ShellId const &b) {
    ShellId::Node const *left = a.Get();
    ShellId::Node const *right = b.Get();
    while (left != right) {
        if (left == nullptr || right == nullptr || left->Depth() != right->Depth() ||
            left->Element() != right->Element())
            return false;
        left = left->Parent().Get();
        right = right->Parent().Get();
    }
    return true;
}

} // namespace zelvar::platform
