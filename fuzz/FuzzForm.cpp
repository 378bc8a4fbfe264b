// Option pages are files that anyone may have written: parsing one must end, whatever stands in it.
#include "zelvar/opends/form/HtmlForm.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *bytes, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *bytes, std::size_t size) {
    zelvar::FormNode const page = zelvar::ParseHtmlForm(zelvar::DString(reinterpret_cast<char const *>(bytes), size));
    return page.kind == zelvar::FormNode::Kind::Block ? 0 : -1;
}
