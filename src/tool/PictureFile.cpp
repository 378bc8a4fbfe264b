#include "zelvar/tool/PictureFile.h"

#include "zelvar/thumbnails/PngPicture.h"

#include <cstdio>

namespace zelvar::tool {

bool SavePicture(DCanvas const &canvas, DString const &file) {
    DString const bytes = EncodePng(canvas, {});
    std::FILE *const out = bytes.empty() ? nullptr : std::fopen(file.c_str(), "wbe");
    if (out == nullptr)
        return false;
    bool const isWritten = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    return std::fclose(out) == 0 && isWritten;
}

} // namespace zelvar::tool
