#include "zelvar/dialogs/core/DialogBlock.h"

#include <cstring>

namespace zelvar {

namespace {

/// Reads values one behind the other; behind the end there are zeros, and it is told.
class BlockReader {
public:
    explicit BlockReader(std::span<std::byte const> block) : m_block(block) {}

    template <class Value>
    void Get(Value &value) {
        value = {};
        m_isWhole = m_isWhole && m_at + sizeof value <= m_block.size();
        if (!m_isWhole)
            return;
        std::memcpy(&value, m_block.data() + m_at, sizeof value);
        m_at += sizeof value;
    }
    void GetText(std::u16string &text) {
        char16_t unit = 0;
        for (Get(unit); unit != 0; Get(unit))
            text += unit;
    }
    void Align() { m_at = (m_at + 3) / 4 * 4; }
    void Expect(std::uint16_t expected) {
        std::uint16_t value = 0;
        Get(value);
        m_isWhole = m_isWhole && value == expected;
    }
    [[nodiscard]] bool IsWhole() const { return m_isWhole; }

private:
    std::span<std::byte const> m_block;
    std::size_t m_at = 0;
    bool m_isWhole = true;
};

} // namespace

std::optional<DialogBlock> ReadDialogBlock(std::span<std::byte const> block) {
    BlockReader reader(block);
    DialogBlock result;
    DlgHeader &header = result.header;
    reader.Get(header.style);
    reader.Get(header.exStyle);
    for (std::int16_t *const field : {&header.x, &header.y, &header.cx, &header.cy}) {
        if (field == &header.x)
            reader.Get(header.count);
        reader.Get(*field);
    }
    reader.Expect(0); // menu
    reader.Expect(0); // class
    reader.GetText(result.caption);
    for (unsigned i = 0; i < header.count && reader.IsWhole(); ++i) {
        DialogBlock::Control control;
        std::uint32_t exStyle = 0;
        std::int16_t x = 0;
        std::int16_t y = 0;
        std::int16_t cx = 0;
        std::int16_t cy = 0;
        reader.Align();
        reader.Get(control.style);
        reader.Get(exStyle);
        for (std::int16_t *const field : {&x, &y, &cx, &cy})
            reader.Get(*field);
        control.units = {x, y, x + cx, y + cy};
        reader.Get(control.id);
        reader.Expect(0xFFFF); // a class by its number
        reader.Get(control.classAtom);
        reader.GetText(control.title);
        reader.Expect(0); // creation data
        result.controls.push_back(std::move(control));
    }
    if (!reader.IsWhole())
        return std::nullopt;
    return result;
}

} // namespace zelvar
