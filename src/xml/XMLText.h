#pragma once

#include "zelvar/xml/XMLNode.h"

namespace zelvar {

constexpr std::size_t kLargestXml = std::size_t{85} << 20U;     ///< bytes
constexpr std::size_t kMostXmlMemory = std::size_t{256} << 20U; ///< bytes, with all elements looked at
constexpr int kDeepestXml = 1024;                               ///< levels of elements, the root is the first

/// A NUL, as a byte or by its number, which texts in memory would end at. No XML may hold one.
[[nodiscard]] bool HoldsNul(std::string_view xml);

/// What is written as `raw` between tags: line ends become "\n", references to characters what they stand for. Unknown
/// references stay as they are.
[[nodiscard]] DString XmlTextOf(std::string_view raw);
/// The same of an attribute's value, where a blank stands for each line end and tabulator.
[[nodiscard]] DString XmlValueOf(std::string_view raw);
/// The same of a comment and the like, where nothing but line ends is changed.
[[nodiscard]] DString XmlPlainOf(std::string_view raw);

/// The document as UTF-8; empty, and why not, if it could not be read again: a name or a character that cannot stand in
/// XML, two attributes of one name, too deep.
[[nodiscard]] DString WriteXml(XMLNode const &root, DString &reason);

} // namespace zelvar
