#pragma once

#include <QtWidgets/QWidget>

#include <cstdint>

namespace zelvar {

constexpr std::uint32_t CS_VREDRAW = 1;
constexpr std::uint32_t CS_HREDRAW = 2;

/// The class style bits of a window, as its layout engine reads and writes them.
///
/// Windows are composed off screen here, so none of the bits changes what is seen. They are kept because they belong to
/// the engine's contract: who asks finds what the engine has left.
[[nodiscard]] std::uint32_t GetClassStyle(QWidget const &window);
void SetClassStyle(QWidget &window, std::uint32_t style);

} // namespace zelvar
