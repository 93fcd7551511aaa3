#include "com/guard.h"
#include "shell/gdi_plus.h"
#include "shell/picture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace shell {

namespace {

// A width that leaves a part of each row's last DWORD free in all depths.
constexpr int width = 5;
constexpr int height = 3;

class picture : public testing::Test {
protected:
    picture() { gdi_plus.start(); }

    CGdiPlus gdi_plus;
};

DIBSECTION describe(const unique_bitmap& bitmap) {
    DIBSECTION section{};
    EXPECT_EQ(GetObjectW(bitmap.get(), sizeof(section), &section), int{sizeof(section)});
    return section;
}

/// Pixels as GDI sees them: 0x00BBGGRR, from the top down.
std::vector<COLORREF> colors_of(const unique_bitmap& bitmap) {
    const DIBSECTION section = describe(bitmap);
    const HDC device = CreateCompatibleDC(nullptr);
    const HGDIOBJ old = SelectObject(device, bitmap.get());
    std::vector<COLORREF> colors;
    for (int y = 0; y < section.dsBm.bmHeight; ++y) {
        for (int x = 0; x < section.dsBm.bmWidth; ++x) {
            colors.push_back(GetPixel(device, x, y));
        }
    }
    SelectObject(device, old);
    DeleteDC(device);
    return colors;
}

std::vector<COLORREF> colors_of(Gdiplus::Bitmap& bitmap) {
    std::vector<COLORREF> colors;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Gdiplus::Color color;
            bitmap.GetPixel(x, y, &color);
            colors.push_back(color.ToCOLORREF());
        }
    }
    return colors;
}

/// The raw pixels of a section of 32 bits, from the top down.
std::vector<std::uint32_t> argb_of(const unique_bitmap& bitmap) {
    const DIBSECTION section = describe(bitmap);
    EXPECT_EQ(section.dsBm.bmBitsPixel, 32);
    EXPECT_GT(section.dsBmih.biHeight, 0) << "the last row comes first";
    const std::ptrdiff_t row = section.dsBm.bmWidth;
    const auto* const bits = static_cast<const std::uint32_t*>(section.dsBm.bmBits);
    std::vector<std::uint32_t> pixels;
    for (std::ptrdiff_t y = section.dsBm.bmHeight - 1; y >= 0; --y) {
        pixels.insert(pixels.end(), bits + y * row, bits + (y + 1) * row);
    }
    return pixels;
}

/// Fills a picture with a palette of its own and with each of its indices in turn.
void fill_indices(Gdiplus::Bitmap& bitmap, UINT depth) {
    const UINT count = 1U << depth;
    std::vector<DWORD> memory(2 + count);
    auto* const palette = reinterpret_cast<Gdiplus::ColorPalette*>(memory.data());
    palette->Count = count;
    for (UINT index = 0; index < count; ++index) {
        palette->Entries[index] = 0xFF000000 | (index * 0x030507 + 0x102030);
    }
    ASSERT_EQ(bitmap.SetPalette(palette), Gdiplus::Ok);
    const Gdiplus::Rect all(0, 0, width, height);
    Gdiplus::BitmapData data;
    ASSERT_EQ(bitmap.LockBits(&all, Gdiplus::ImageLockModeWrite, bitmap.GetPixelFormat(), &data),
              Gdiplus::Ok);
    auto* const bytes = static_cast<BYTE*>(data.Scan0);
    for (int y = 0; y < height; ++y) {
        for (UINT i = 0; i < (width * depth + 7) / 8; ++i) {
            bytes[y * data.Stride + static_cast<int>(i)] =
                static_cast<BYTE>(0x9B + 0x35 * i + 0x11 * static_cast<UINT>(y));
        }
    }
    bitmap.UnlockBits(&data);
}

void fill_colors(Gdiplus::Bitmap& bitmap) {
    const std::array<Gdiplus::ARGB, 7> colors = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFF00,
                                                 0xFF00FFFF, 0xFFFFFFFF, 0xFF000000};
    for (int i = 0; i < width * height; ++i) {
        const Gdiplus::Color color(colors[static_cast<std::size_t>(i) % colors.size()]);
        ASSERT_EQ(bitmap.SetPixel(i % width, i / width, color), Gdiplus::Ok);
    }
}

TEST_F(picture, keeps_depth_palette_and_each_pixel_in_the_depths_of_gdi) {
    for (const auto format :
         {PixelFormat1bppIndexed, PixelFormat4bppIndexed, PixelFormat8bppIndexed,
          PixelFormat16bppRGB555, PixelFormat16bppRGB565, PixelFormat24bppRGB, PixelFormat32bppRGB,
          // The one that GDI does not draw.
          PixelFormat48bppRGB}) {
        Gdiplus::Bitmap source(width, height, format);
        const UINT depth = Gdiplus::GetPixelFormatSize(format);
        if (Gdiplus::IsIndexedPixelFormat(format)) {
            fill_indices(source, depth);
        } else {
            fill_colors(source);
        }
        const unique_bitmap section = make_section(source);
        EXPECT_EQ(describe(section).dsBm.bmBitsPixel, depth == 48 ? 32 : int(depth));
        EXPECT_EQ(colors_of(section), colors_of(source)) << std::hex << format;
    }
}

TEST_F(picture, keeps_alpha_and_what_lies_under_it) {
    const std::vector<std::uint32_t> pixels = {0x00123456, 0x01FF8000, 0x7F0000FF, 0x80FF00FF,
                                               0xFE010203, 0xFFFFFFFF, 0xFF000000, 0x00000000,
                                               0x40404040, 0xC0C0C0C0, 0x10FFFFFF, 0xEE00EE00,
                                               0x33333300, 0x55AA55AA, 0x66006600};
    auto bits = pixels;
    Gdiplus::Bitmap source(width, height, width * 4, PixelFormat32bppARGB,
                           reinterpret_cast<BYTE*>(bits.data()));
    EXPECT_EQ(argb_of(make_section(source)), pixels);

    // Premultiplied pixels are drawn, and come out as they were before the multiplication.
    std::vector<std::uint32_t> multiplied(pixels.size(), 0x80800040);
    multiplied[width * height - 1] = 0x80000080;
    Gdiplus::Bitmap premultiplied(width, height, width * 4, PixelFormat32bppPARGB,
                                  reinterpret_cast<BYTE*>(multiplied.data()));
    const auto drawn = argb_of(make_section(premultiplied));
    EXPECT_EQ(drawn.front() & 0xFFFFFF00, 0x80FF0000);
    EXPECT_NEAR(drawn.front() & 0xFF, 0x80, 1);
    EXPECT_EQ(drawn.back(), 0x800000FF);
}

TEST_F(picture, is_read_from_a_file_that_is_let_go) {
    const auto path = std::filesystem::temp_directory_path() / L"картинка";
    constexpr CLSID png = {
        0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
    Gdiplus::Bitmap source(2, 1, PixelFormat32bppARGB);
    source.SetPixel(0, 0, 0x40102030);
    source.SetPixel(1, 0, 0xFF405060);
    ASSERT_EQ(source.Save(path.c_str(), &png, nullptr), Gdiplus::Ok);
    EXPECT_EQ(argb_of(load_picture(path)), (std::vector<std::uint32_t>{0x40102030, 0xFF405060}));

    std::ofstream(path, std::ios::binary | std::ios::trunc) << "no picture";
    EXPECT_THROW(load_picture(path), com::status_exception);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    EXPECT_THROW(load_picture(path), com::status_exception);
}

} // namespace

} // namespace shell
