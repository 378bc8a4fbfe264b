#pragma once

#include "zelvar/base/XMLNode.h"

namespace zelvar {

constexpr std::size_t kLargestXml = std::size_t{64} << 20U; ///< bytes
constexpr int kDeepestXml = 256;                            ///< levels of elements, the root is the first
constexpr std::size_t kMostXmlPieces = 4'000'000;           ///< elements, texts, attributes and the like

/// The tree of a whole document, or null and why not: "line 3: ...". Nothing outside the text is ever read.
[[nodiscard]] std::unique_ptr<XMLNode> ParseXml(std::string_view text, DString &reason);

/// The document as UTF-8; empty if a name in it cannot stand in XML.
[[nodiscard]] DString WriteXml(XMLNode const &root);

} // namespace zelvar
