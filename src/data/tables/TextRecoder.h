#pragma once

#include "zelvar/base/DString.h"

#include <memory>

#include <iconv.h>

namespace zelvar {

/// Turns texts of one encoding into UTF-8. What is no text in it becomes the replacement character, a byte at a time:
/// GDAL's own recoding leaves such bytes out.
class ZELVAR_API TextRecoder {
public:
    /// `encoding` as GDAL names it. Null for one that is not known.
    static std::unique_ptr<TextRecoder> Create(DString const &encoding);
    ~TextRecoder();
    TextRecoder(TextRecoder const &) = delete;
    TextRecoder &operator=(TextRecoder const &) = delete;

    [[nodiscard]] DString ToUtf8(DString text);

private:
    TextRecoder(iconv_t converter, bool keepsAscii) : m_converter(converter), m_keepsAscii(keepsAscii) {}

    iconv_t m_converter;
    bool m_keepsAscii; ///< a text of ASCII alone stays as it is
};

} // namespace zelvar
