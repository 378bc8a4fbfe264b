#include "zelvar/thumbnails/PngPicture.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <png.h>

namespace zelvar {

namespace {

constexpr png_uint_32 kMostSide = 2048;
constexpr int kMostTexts = 64;

[[noreturn]] void GiveUp(png_structp png, png_const_charp /*why*/) { png_longjmp(png, 1); }
void GoOn(png_structp /*png*/, png_const_charp /*why*/) {}

class Encoder {
public:
    Encoder() : m_png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, GiveUp, GoOn)) {
        m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    }
    ~Encoder() { png_destroy_write_struct(&m_png, &m_info); }
    Encoder(Encoder const &) = delete;
    Encoder &operator=(Encoder const &) = delete;

    bool Write(DCanvas const &picture, std::vector<png_text> &texts, DString &bytes) {
        // How libpng tells errors; nothing below has a destructor.
        if (m_info == nullptr || setjmp(png_jmpbuf(m_png)) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_set_write_fn(m_png, &bytes, &Encoder::Append, nullptr);
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(picture.GetWidth()),
                     static_cast<png_uint_32>(picture.GetHeight()), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_text(m_png, m_info, texts.data(), static_cast<int>(texts.size()));
        // Half the time of libpng's own choice, and a smaller file: what stands above is the best guess.
        png_set_compression_level(m_png, 1);
        png_set_filter(m_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
        png_write_info(m_png, m_info);
        for (int y = 0; y < picture.GetHeight(); ++y)
            png_write_row(m_png, picture.Row(y));
        png_write_end(m_png, nullptr);
        return true;
    }

private:
    static void Append(png_structp png, png_bytep data, std::size_t size) {
        static_cast<DString *>(png_get_io_ptr(png))->append(reinterpret_cast<char const *>(data), size);
    }

    png_structp m_png;
    png_infop m_info = nullptr;
};

class Decoder {
public:
    explicit Decoder(std::string_view bytes)
        : m_png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, GiveUp, GoOn)), m_left(bytes) {
        m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
    }
    ~Decoder() { png_destroy_read_struct(&m_png, &m_info, nullptr); }
    Decoder(Decoder const &) = delete;
    Decoder &operator=(Decoder const &) = delete;

    // In each of the two nothing has a destructor, see above.
    bool ReadHead() {
        if (m_info == nullptr || setjmp(png_jmpbuf(m_png)) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_set_user_limits(m_png, kMostSide, kMostSide);
        png_set_chunk_cache_max(m_png, kMostTexts);
        png_set_read_fn(m_png, &m_left, &Decoder::Take);
        png_read_info(m_png, m_info);
        return true;
    }
    /// `rows` has one entry a row.
    bool ReadRows(std::vector<png_bytep> &rows) {
        if (setjmp(png_jmpbuf(m_png)) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_read_image(m_png, rows.data());
        return true;
    }
    /// Three bytes a pixel from now on; false if that cannot be.
    bool MakeRgb() {
        if (setjmp(png_jmpbuf(m_png)) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_color_16 white{.index = 0, .red = 255, .green = 255, .blue = 255, .gray = 255};
        png_set_expand(m_png);
        png_set_scale_16(m_png);
        png_set_gray_to_rgb(m_png);
        png_set_background(m_png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
        png_set_interlace_handling(m_png);
        png_read_update_info(m_png, m_info);
        return png_get_rowbytes(m_png, m_info) == std::size_t{3} * png_get_image_width(m_png, m_info);
    }
    [[nodiscard]] PngTexts Texts() const {
        png_textp texts = nullptr;
        int count = 0;
        png_get_text(m_png, m_info, &texts, &count);
        PngTexts found;
        for (int i = 0; i < count; ++i)
            found.emplace(texts[i].key, texts[i].text == nullptr ? "" : texts[i].text);
        return found;
    }
    [[nodiscard]] int Width() const { return static_cast<int>(png_get_image_width(m_png, m_info)); }
    [[nodiscard]] int Height() const { return static_cast<int>(png_get_image_height(m_png, m_info)); }

private:
    static void Take(png_structp png, png_bytep data, std::size_t size) {
        auto &left = *static_cast<std::string_view *>(png_get_io_ptr(png));
        if (left.size() < size)
            png_error(png, "cut off");
        std::memcpy(data, left.data(), size);
        left.remove_prefix(size);
    }

    png_structp m_png;
    png_infop m_info = nullptr;
    std::string_view m_left;
};

} // namespace

DString EncodePng(DCanvas const &picture, PngTexts const &texts) {
    std::vector<png_text> entries;
    for (auto const &[key, text] : texts) {
        png_text entry{};
        entry.compression = PNG_TEXT_COMPRESSION_NONE;
        entry.key = const_cast<char *>(key.c_str());   // which it copies
        entry.text = const_cast<char *>(text.c_str()); // the same
        entries.push_back(entry);
    }
    DString bytes;
    if (!picture.HasData() || !Encoder().Write(picture, entries, bytes))
        bytes.clear();
    return bytes;
}

std::optional<DCanvas> DecodePng(std::string_view bytes, std::function<bool(PngTexts const &)> const &accept) {
    Decoder decoder(bytes);
    if (!decoder.ReadHead() || !accept(decoder.Texts()))
        return std::nullopt;
    DCanvas picture;
    picture.SetSize(decoder.Width(), decoder.Height());
    if (!picture.HasData() || !decoder.MakeRgb())
        return std::nullopt;
    std::vector<png_bytep> rows;
    rows.reserve(static_cast<std::size_t>(picture.GetHeight()));
    for (int y = 0; y < picture.GetHeight(); ++y)
        rows.push_back(picture.Row(y));
    return decoder.ReadRows(rows) ? std::optional(std::move(picture)) : std::nullopt;
}

} // namespace zelvar
