#pragma once

#include "zelvar/base/XMLNode.h"

namespace zelvar {

constexpr std::size_t kLargestXml = std::size_t{85} << 20U;     ///< bytes
constexpr std::size_t kMostXmlMemory = std::size_t{256} << 20U; ///< bytes, while a document is read
constexpr int kDeepestXml = 1024;                               ///< levels of elements, the root is the first

/// A NUL, as a byte or by its number, which texts in memory would end at. No XML may hold one.
[[nodiscard]] bool HoldsNul(std::string_view xml);

/// Bytes that reading a document of UTF-8 may take, itself not counted: never fewer than it does take.
[[nodiscard]] std::size_t MemoryForXml(std::string_view xml);

/// The tree of a whole document, or null and why not: "line 3: ...". Nothing outside the text is ever read.
[[nodiscard]] std::unique_ptr<XMLNode> ParseXml(std::string_view text, DString &reason);

/// The document as UTF-8; empty, and why not, if it could not be read again: a name or a character that cannot stand in
/// XML, two attributes of one name, too deep.
[[nodiscard]] DString WriteXml(XMLNode const &root, DString &reason);

} // namespace zelvar
