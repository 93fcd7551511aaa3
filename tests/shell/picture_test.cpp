#include "shell/gdi_plus.h"
#include "shell/picture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
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

DIBSECTION describe(const ui::unique_bitmap& bitmap) {
    DIBSECTION section{};
    EXPECT_EQ(GetObjectW(bitmap.get(), sizeof(section), &section), int{sizeof(section)});
    return section;
}

/// Colors by the five bits that all depths have; the rest of 16 bits is a matter of rounding.
template <class Get>
std::vector<COLORREF> collect(Get color_at) {
    std::vector<COLORREF> colors;
    for (int i = 0; i < width * height; ++i) {
        colors.push_back(color_at(i % width, i / width) & 0xF8F8F8);
    }
    return colors;
}

std::vector<COLORREF> colors_of(const ui::unique_bitmap& bitmap) {
    const ui::unique_memory_dc device(CreateCompatibleDC(nullptr));
    const ui::selected_object selected(device.get(), bitmap.get());
    return collect([&](int x, int y) { return GetPixel(device.get(), x, y); });
}

std::vector<COLORREF> colors_of(Gdiplus::Bitmap& bitmap) {
    return collect([&](int x, int y) {
        Gdiplus::Color color;
        bitmap.GetPixel(x, y, &color);
        return color.ToCOLORREF();
    });
}

/// The raw pixels of a section of 32 bits, from the top down.
std::vector<std::uint32_t> argb_of(const ui::unique_bitmap& bitmap) {
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

/// Fills a picture with bits that differ, and its palette, where it has one, with its own colors.
void fill(Gdiplus::Bitmap& bitmap, UINT depth) {
    if (Gdiplus::IsIndexedPixelFormat(bitmap.GetPixelFormat())) {
        const UINT count = 1U << depth;
        std::vector<DWORD> memory(2 + count);
        auto* const palette = reinterpret_cast<Gdiplus::ColorPalette*>(memory.data());
        palette->Count = count;
        for (UINT index = 0; index < count; ++index) {
            palette->Entries[index] = 0xFF000000 | (index * 0x030507 + 0x102030);
        }
        ASSERT_EQ(bitmap.SetPalette(palette), Gdiplus::Ok);
    }
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

TEST_F(picture, keeps_depth_palette_and_each_pixel_in_the_depths_of_gdi) {
    for (const auto format :
         {PixelFormat1bppIndexed, PixelFormat4bppIndexed, PixelFormat8bppIndexed,
          PixelFormat16bppRGB555, PixelFormat16bppRGB565, PixelFormat24bppRGB, PixelFormat32bppRGB,
          // The one that GDI does not draw.
          PixelFormat48bppRGB}) {
        Gdiplus::Bitmap source(width, height, format);
        const UINT depth = Gdiplus::GetPixelFormatSize(format);
        fill(source, depth);
        const ui::unique_bitmap section = make_section(source);
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
}

} // namespace

} // namespace shell
