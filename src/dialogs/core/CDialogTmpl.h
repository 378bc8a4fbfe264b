#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string_view>
#include <vector>

namespace zelvar {

/// What a dialog template says of the dialog itself; sizes in dialog units.
struct DlgHeader {
    std::uint32_t style = 0;
    std::uint32_t exStyle = 0;
    std::uint16_t count = 0; ///< items used
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::int16_t cx = 0;
    std::int16_t cy = 0;
};

/// One control of a dialog template; places in dialog units.
struct DlgItem {
    static constexpr std::size_t kMostBytes = 1023;

    std::uint32_t style = 0;
    std::uint32_t exStyle = 0;
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::int16_t cx = 0;
    std::int16_t cy = 0;
    std::uint16_t id = 0;
    std::uint16_t classAtom = 0;
    char title[kMostBytes + 1]{}; ///< UTF-8
};

/// The beginning of a UTF-8 text, of so many bytes at most; a character is never cut.
[[nodiscard]] ZELVAR_API std::string_view CutText(std::string_view text, std::size_t mostBytes);

/// Dialog template: the controls of a dialog that is made in memory, and the block that the platform's dialogs are
/// described by. Places are given in pixels and kept in dialog units.
class ZELVAR_API CDialogTmpl {
public:
    static constexpr std::size_t kMostItems = 20;

    enum ControlType {
        kPicture = 127,
        kButton = 128,
        kEdit = 129,
        kStatic = 130,
        kCheckBox = 131,
    };

    /// `baseUnits`: pixels of 4 by 8 dialog units.
    explicit CDialogTmpl(Size baseUnits);
    CDialogTmpl(CDialogTmpl const &) = delete;
    CDialogTmpl &operator=(CDialogTmpl const &) = delete;
    virtual ~CDialogTmpl();

    void SetStyle(std::uint32_t style) { m_header.style = style; }
    void SetCaption(std::string_view caption);
    void SetSize(Size pixels);
    /// A control without a place gets 10 by 10 units at 0, 0. Longer titles than an item holds are cut. False if there
    /// are as many as there can be.
    bool AddItem(ControlType type, std::uint16_t id, std::string_view title, std::optional<Rect> const &pixels,
                 bool isDefault = false);

    [[nodiscard]] DlgHeader const &Header() const { return m_header; }
    [[nodiscard]] DlgItem const &Item(std::size_t index) const { return *m_items[index]; } ///< below the count

    using Bytes = std::pmr::vector<std::byte>;
    /// The template as one block in memory of `resource`, numbers in the processor's order, texts in UTF-16.
    /// `std::bad_alloc` if there is none.
    [[nodiscard]] Bytes Block(std::pmr::memory_resource &resource) const;

private:
    [[nodiscard]] std::int16_t UnitsX(int pixels) const;
    [[nodiscard]] std::int16_t UnitsY(int pixels) const;

    Size m_baseUnits;
    DlgHeader m_header;
    DString m_caption;
    std::array<std::unique_ptr<DlgItem>, kMostItems> m_items;
};

} // namespace zelvar
