#pragma once

#include "zelvar/base/XMLNode.h"

namespace zelvar {

constexpr std::size_t kLargestXml = std::size_t{64} << 20U; ///< bytes
constexpr int kDeepestXml = 256;                            ///< levels of elements, the root is the first
constexpr std::size_t kMostXmlPieces = 4'000'000;           ///< elements, texts, attributes and the like

/// A NUL, as a byte or by its number, which texts in memory would end at. No XML may hold one.
[[nodiscard]] bool HoldsNul(std::string_view xml);

/// The tree of a whole document, or null and why not: "line 3: ...". Nothing outside the text is ever read.
[[nodiscard]] std::unique_ptr<XMLNode> ParseXml(std::string_view text, DString &reason);

/// The document as UTF-8; empty if it could not be read again: a name or a character that cannot stand in XML, too
/// deep.
[[nodiscard]] DString WriteXml(XMLNode const &root);

} // namespace zelvar
