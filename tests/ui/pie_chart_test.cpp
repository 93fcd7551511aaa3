#include "ui/gdi.h"
#include "ui/pie_chart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ui {

namespace {

constexpr int depth = 9;
constexpr COLORREF background = 0x00FFFF;

/// A picture to draw into and to read pixel by pixel.
class picture {
public:
    explicit picture(SIZE size) : size_(size), dc_(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader = {
            sizeof(BITMAPINFOHEADER), size.cx, -size.cy, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        bitmap_.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits_, nullptr, 0));
        SelectObject(dc_.get(), bitmap_.get());
        const RECT all{0, 0, size.cx, size.cy};
        const unique_brush brush(CreateSolidBrush(background));
        FillRect(dc_.get(), &all, brush.get());
    }

    HDC dc() const { return dc_.get(); }

    std::vector<std::uint32_t> pixels() const {
        GdiFlush();
        const auto* const first = static_cast<const std::uint32_t*>(bits_);
        return {first, first + std::ptrdiff_t{size_.cx} * size_.cy};
    }

private:
    SIZE size_;
    void* bits_ = nullptr;
    unique_bitmap bitmap_;
    unique_memory_dc dc_;
};

int root(double square) {
    return static_cast<int>(std::floor(std::sqrt(std::floor(square))));
}

/// The same cake drawn another way: the side point by point, the end of the used part by floating
/// point, and every outline by itself.
void draw_cake(HDC dc, SIZE size, int value) {
    const int rx = size.cx / 2;
    const int ry = (size.cy - depth) / 2;
    if (rx < 11 || ry < 11) {
        return;
    }
    const int cy = ry - 1;
    const double v = std::abs(value % 500 - 250);
    const double h = 250 - v;
    const double a = double{1} * rx * rx;
    const double b = double{1} * ry * ry;
    int dx = v < 120 ? root(v * v * a / (h * h + v * v)) : 0;
    int dy = v < 120 ? root((a - double{1} * dx * dx) * b / a) : root(h * h * b / (h * h + v * v));
    dx = v < 120 ? dx : root((b - double{1} * dy * dy) * a / b);
    const bool right = value >= 250 && value < 750;
    const bool near_side = value >= 500 && value < 1000;
    const int x = std::max(rx - 1 + (right ? dx : -dx), 0);
    const int y = cy + (near_side ? dy : -dy);

    const unique_region ellipse(CreateEllipticRgn(0, 0, 2 * rx, 2 * ry));
    for (int py = 0; py < size.cy; ++py) {
        for (int px = 0; px < 2 * rx; ++px) {
            const bool wall = py >= cy && py < cy + depth;
            if ((wall || PtInRegion(ellipse.get(), px, py - depth - 1)) &&
                !PtInRegion(ellipse.get(), px, py - 1)) {
                const bool used = value > 500 && px >= x && py >= cy;
                SetPixel(dc, px, py, used ? 0x800000 : 0x800080);
            }
        }
    }
    const auto fill = [dc](COLORREF color, const auto& shape) {
        const unique_brush brush(CreateSolidBrush(color));
        const selected_object selected(dc, brush.get());
        shape();
    };
    const auto whole = [&] {
        Ellipse(dc, 0, 0, 2 * rx, 2 * ry);
    };
    const auto sector = [&] {
        Pie(dc, 0, 0, 2 * rx, 2 * ry, 0, cy, x, y);
    };
    if (value == 0) {
        fill(0xFF00FF, whole);
    } else if (value == 1000) {
        fill(0xFF0000, whole);
    } else if (y == cy && (value < 100 || value > 900)) {
        fill(value < 100 ? 0xFF00FF : 0xFF0000, sector);
    } else {
        fill(0xFF0000, whole);
        fill(0xFF00FF, sector);
    }
    if (value == 0 || value == 1000) {
        return;
    }
    Arc(dc, 0, depth, 2 * rx, 2 * ry + depth, 0, cy + depth, 2 * rx - 1, cy + depth);
    for (int step = 0; step < depth; ++step) {
        SetPixel(dc, 0, cy + step, 0);
        SetPixel(dc, 2 * rx - 1, cy + step, 0);
        if (value > 500) {
            SetPixel(dc, x, y + step, 0);
        }
    }
}

TEST(pie_chart, is_drawn_point_by_point_as_told) {
    const pie_chart_class first;
    const pie_chart_class second;
    for (const SIZE size : {SIZE{21, 31}, SIZE{22, 30}, SIZE{22, 31}, SIZE{23, 40}, SIZE{40, 168},
                            SIZE{101, 64}, SIZE{168, 85}, SIZE{252, 127}, SIZE{600, 900}}) {
        const HWND window = CreateWindowExW(0, L"PieChart", L"", WS_POPUP, 0, 0, size.cx, size.cy,
                                            nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
        ASSERT_NE(window, nullptr);
        CPieChart pie;
        pie.attach(window);
        for (const int value : {0,   1,   40,  99,  100, 101, 250, 379, 380,  499,  500,
                                501, 621, 750, 899, 900, 901, 960, 999, 1000, 1001, 70'000}) {
            pie.set_value(static_cast<unsigned>(value));
            const picture drawn(size);
            SendMessageW(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(drawn.dc()), PRF_CLIENT);
            const picture expected(size);
            const unique_pen pen(CreatePen(PS_SOLID, 1, 0));
            const selected_object selected(expected.dc(), pen.get());
            draw_cake(expected.dc(), size, std::min(value, 1000));
            ASSERT_TRUE(drawn.pixels() == expected.pixels())
                << value << " at " << size.cx << " by " << size.cy;
            const bool empty = drawn.pixels() == picture(size).pixels();
            EXPECT_EQ(empty, size.cx < 22 || size.cy < 31);
        }
        DestroyWindow(window);
    }
}

} // namespace

} // namespace ui
