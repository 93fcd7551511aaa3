#include "shell/picture.h"

#include "com/guard.h"
#include "shell/gdi_plus.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <vector>

namespace shell {

namespace {

CGdiPlus gdi_plus;

void require(bool success) {
    if (!success) {
        throw com::status_exception(E_FAIL);
    }
}

/// BITMAPINFO with room for all colours or masks.
struct section_info {
    BITMAPINFOHEADER header;
    std::array<RGBQUAD, 256> colors;
};

static_assert(offsetof(section_info, colors) == offsetof(BITMAPINFO, bmiColors));

Gdiplus::PixelFormat section_format_of(Gdiplus::PixelFormat source) {
    if (Gdiplus::IsAlphaPixelFormat(source)) {
        return PixelFormat32bppARGB;
    }
    return (source & PixelFormatGDI) != 0 ? source : PixelFormat32bppRGB;
}

RGBQUAD color_of(DWORD value) {
    return std::bit_cast<RGBQUAD>(value & 0x00FFFFFF);
}

void copy_palette(Gdiplus::Bitmap& source, section_info& info) {
    const INT size = source.GetPaletteSize();
    require(size > 0);
    std::vector<DWORD> memory(static_cast<std::size_t>(size) / sizeof(DWORD) + 1);
    auto* const palette = reinterpret_cast<Gdiplus::ColorPalette*>(memory.data());
    require(source.GetPalette(palette, size) == Gdiplus::Ok);
    require(palette->Count <= info.colors.size());
    for (UINT index = 0; index < palette->Count; ++index) {
        info.colors[index] = color_of(palette->Entries[index]);
    }
}

section_info describe(Gdiplus::Bitmap& source, Gdiplus::PixelFormat format) {
    section_info info{};
    info.header.biSize = sizeof(info.header);
    info.header.biWidth = static_cast<LONG>(source.GetWidth());
    info.header.biHeight = static_cast<LONG>(source.GetHeight());
    info.header.biPlanes = 1;
    info.header.biBitCount = static_cast<WORD>(Gdiplus::GetPixelFormatSize(format));
    if (Gdiplus::IsIndexedPixelFormat(format)) {
        copy_palette(source, info);
    } else if (format == PixelFormat16bppRGB565) {
        // Without masks 16 bits mean 5 for each colour.
        info.header.biCompression = BI_BITFIELDS;
        info.colors[0] = color_of(0xF800);
        info.colors[1] = color_of(0x07E0);
        info.colors[2] = color_of(0x001F);
    }
    return info;
}

/// The rows of a picture from the top down.
struct picture_rows {
    std::byte* first;
    std::ptrdiff_t stride; ///< in bytes, to the next row
};

picture_rows rows_of(const section_info& info, void* bits) {
    const std::ptrdiff_t depth = info.header.biBitCount;
    const std::ptrdiff_t pitch = (info.header.biWidth * depth + 31) / 32 * 4;
    return {static_cast<std::byte*>(bits) + (info.header.biHeight - 1) * pitch, -pitch};
}

void copy_rows(Gdiplus::Bitmap& source, const section_info& info, const picture_rows& target) {
    const Gdiplus::Rect all(0, 0, info.header.biWidth, info.header.biHeight);
    Gdiplus::BitmapData data;
    require(source.LockBits(&all, Gdiplus::ImageLockModeRead, source.GetPixelFormat(), &data) ==
            Gdiplus::Ok);
    const std::size_t row_size =
        (static_cast<std::size_t>(info.header.biWidth) * info.header.biBitCount + 7) / 8;
    for (std::ptrdiff_t row = 0; row < info.header.biHeight; ++row) {
        std::memcpy(target.first + row * target.stride,
                    static_cast<const std::byte*>(data.Scan0) + row * data.Stride, row_size);
    }
    source.UnlockBits(&data);
}

void draw(Gdiplus::Bitmap& source, const section_info& info, Gdiplus::PixelFormat format,
          const picture_rows& rows) {
    Gdiplus::Bitmap target(info.header.biWidth, info.header.biHeight, static_cast<INT>(rows.stride),
                           format, reinterpret_cast<BYTE*>(rows.first));
    Gdiplus::Graphics graphics(&target);
    require(graphics.DrawImage(&source, 0, 0, info.header.biWidth, info.header.biHeight) ==
            Gdiplus::Ok);
}

} // namespace

ui::unique_bitmap make_section(Gdiplus::Bitmap& source) {
    const Gdiplus::PixelFormat format = section_format_of(source.GetPixelFormat());
    const section_info info = describe(source, format);
    void* bits = nullptr;
    ui::unique_bitmap section(::CreateDIBSection(
        nullptr, reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS, &bits, nullptr, 0));
    require(static_cast<bool>(section));
    const picture_rows rows = rows_of(info, bits);
    if (format == source.GetPixelFormat()) {
        copy_rows(source, info, rows);
    } else {
        draw(source, info, format, rows);
    }
    return section;
}

ui::unique_bitmap load_picture(const std::wstring& path) {
    gdi_plus.start();
    Gdiplus::Bitmap source(path.c_str());
    require(source.GetLastStatus() == Gdiplus::Ok);
    return make_section(source);
}

} // namespace shell
