#include "ui/pie_chart.h"

#include "ui/gdi.h"
#include "utils/exceptions.h"
#include "utils/module.h"
#include "utils/slim_lock.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <source_location>

namespace ui {

namespace {

constexpr auto class_name = L"PieChart";

constexpr unsigned whole = 1000;
/// Of the cake, in pixels.
constexpr int depth = 9;
constexpr int smallest_radius = 11;

constexpr COLORREF used_color = 0xFF0000;
constexpr COLORREF free_color = 0xFF00FF;
constexpr COLORREF used_side_color = 0x800000;
constexpr COLORREF free_side_color = 0x800080;

utils::slim_lock class_lock;
/// How many keep the class; guarded by `class_lock`.
int class_users = 0;

/// The square root, rounded down.
std::int64_t isqrt(std::int64_t square) {
    auto root = static_cast<std::int64_t>(std::sqrt(static_cast<double>(square)));
    while (root * root > square) {
        --root;
    }
    while ((root + 1) * (root + 1) <= square) {
        ++root;
    }
    return root;
}

/// Where on an ellipse around the origin the used part ends.
POINT end_of(unsigned value, std::int64_t rx, std::int64_t ry) {
    // How far the end is from the horizontal and from the vertical, of 250 together.
    const std::int64_t v = std::abs(static_cast<int>(value % 500) - 250);
    const std::int64_t h = 250 - v;
    std::int64_t dx = 0;
    std::int64_t dy = 0;
    // The flatter coordinate comes from the angle, the other one from the ellipse.
    if (v >= 120) {
        dy = isqrt(h * h * ry * ry / (h * h + v * v));
        dx = isqrt((ry * ry - dy * dy) * rx * rx / (ry * ry));
    } else {
        dx = isqrt(v * v * rx * rx / (h * h + v * v));
        dy = isqrt((rx * rx - dx * dx) * ry * ry / (rx * rx));
    }
    const unsigned quadrant = value / 250;
    return {static_cast<LONG>(quadrant == 1 || quadrant == 2 ? dx : -dx),
            static_cast<LONG>(quadrant == 2 || quadrant == 3 ? dy : -dy)};
}

/// One cake in the client area of its control.
class cake {
public:
    cake(const RECT& client, unsigned value) noexcept;

    bool is_drawn() const noexcept { return m_rx >= smallest_radius && m_ry >= smallest_radius; }

    void draw(HDC dc) const;

private:
    void draw_side(HDC dc) const;
    void draw_top(HDC dc) const;
    void draw_outline(HDC dc) const;
    void draw_ellipse(HDC dc, COLORREF color) const;
    void draw_sector(HDC dc, COLORREF color) const;

    LONG m_rx;
    LONG m_ry;
    RECT m_top; ///< what the upper ellipse fills
    LONG m_bottom;
    POINT m_center;
    unsigned m_value;
    POINT m_end{};
};

cake::cake(const RECT& client, unsigned value) noexcept
    : m_rx((client.right - client.left) / 2), m_ry((client.bottom - client.top - depth) / 2),
      m_top{client.left, client.top, client.left + 2 * m_rx, client.top + 2 * m_ry},
      m_bottom(client.bottom), m_center{client.left + m_rx - 1, client.top + m_ry - 1},
      m_value(std::min(value, whole)) {
    if (is_drawn()) {
        const POINT end = end_of(m_value, m_rx, m_ry);
        m_end = {std::max<LONG>(m_center.x + end.x, 0), m_center.y + end.y};
    }
}

void cake::draw(HDC dc) const {
    draw_side(dc);
    const unique_pen pen(CreatePen(PS_SOLID, 1, RGB(0, 0, 0)));
    const selected_object selected(dc, pen.get());
    draw_top(dc);
    if (m_value > 0 && m_value < whole) {
        draw_outline(dc);
    }
}

void cake::draw_side(HDC dc) const {
    const unique_region ellipse(CreateEllipticRgnIndirect(&m_top));
    const unique_region side(
        CreateRectRgn(m_top.left, m_center.y, m_top.right, m_center.y + depth));
    OffsetRgn(ellipse.get(), 0, depth + 1);
    CombineRgn(side.get(), side.get(), ellipse.get(), RGN_OR);
    OffsetRgn(ellipse.get(), 0, -depth);
    CombineRgn(side.get(), side.get(), ellipse.get(), RGN_DIFF);
    const unique_brush free(CreateSolidBrush(free_side_color));
    FillRgn(dc, side.get(), free.get());
    if (m_value > whole / 2) {
        const unique_region right(CreateRectRgn(m_end.x, m_center.y, m_top.right, m_bottom));
        CombineRgn(side.get(), side.get(), right.get(), RGN_AND);
        const unique_brush used(CreateSolidBrush(used_side_color));
        FillRgn(dc, side.get(), used.get());
    }
}

void cake::draw_top(HDC dc) const {
    // So near to the left end that the sector between them would be taken for the other one.
    const bool level = m_end.y == m_center.y;
    if (level && m_value < 100) {
        m_value == 0 ? draw_ellipse(dc, free_color) : draw_sector(dc, free_color);
    } else if (level && m_value > 900) {
        m_value == whole ? draw_ellipse(dc, used_color) : draw_sector(dc, used_color);
    } else {
        draw_ellipse(dc, used_color);
        draw_sector(dc, free_color);
    }
}

void cake::draw_ellipse(HDC dc, COLORREF color) const {
    const unique_brush brush(CreateSolidBrush(color));
    const selected_object selected(dc, brush.get());
    Ellipse(dc, m_top.left, m_top.top, m_top.right, m_top.bottom);
}

void cake::draw_sector(HDC dc, COLORREF color) const {
    const unique_brush brush(CreateSolidBrush(color));
    const selected_object selected(dc, brush.get());
    Pie(dc, m_top.left, m_top.top, m_top.right, m_top.bottom, m_top.left, m_center.y, m_end.x,
        m_end.y);
}

void cake::draw_outline(HDC dc) const {
    const auto edge = [dc](LONG x, LONG y) {
        MoveToEx(dc, x, y, nullptr);
        LineTo(dc, x, y + depth);
    };
    Arc(dc, m_top.left, m_top.top + depth, m_top.right, m_top.bottom + depth, m_top.left,
        m_center.y + depth, m_top.right - 1, m_center.y + depth);
    edge(m_top.left, m_center.y);
    edge(m_top.right - 1, m_center.y);
    if (m_value > whole / 2) {
        edge(m_end.x, m_end.y);
    }
}

} // namespace

pie_chart_class::pie_chart_class() {
    const std::lock_guard guard(class_lock);
    if (class_users == 0) {
        WNDCLASSEXW description{};
        description.cbSize = sizeof(description);
        GetClassInfoExW(nullptr, L"Static", &description);
        description.lpszClassName = class_name;
        description.hInstance = utils::own_module();
        description.style &= ~static_cast<UINT>(CS_GLOBALCLASS);
        if (!RegisterClassExW(&description)) {
            throw utils::system_error_exception(std::source_location::current().function_name(),
                                                "::RegisterClassExW(&description)", GetLastError());
        }
    }
    ++class_users;
}

pie_chart_class::~pie_chart_class() {
    const std::lock_guard guard(class_lock);
    if (--class_users == 0) {
        UnregisterClassW(class_name, utils::own_module());
    }
}

void CPieChart::set_value(unsigned value) noexcept {
    m_value = value;
    if (handle()) {
        InvalidateRect(handle(), nullptr, TRUE);
    }
}

LRESULT CPieChart::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_ERASEBKGND: {
        // The parent's background, which goes on below its controls.
        const HWND parent = GetParent(handle());
        const auto brush = reinterpret_cast<HBRUSH>(
            SendMessageW(parent, WM_CTLCOLORSTATIC, wparam, reinterpret_cast<LPARAM>(handle())));
        RECT client{};
        GetClientRect(handle(), &client);
        FillRect(reinterpret_cast<HDC>(wparam), &client, brush);
        return TRUE;
    }
    case WM_PRINTCLIENT:
        paint(reinterpret_cast<HDC>(wparam));
        return 0;
    case WM_PAINT: {
        PAINTSTRUCT area;
        paint(BeginPaint(handle(), &area));
        EndPaint(handle(), &area);
        return 0;
    }
    default:
        return subclassed_window::on_message(message, wparam, lparam);
    }
}

void CPieChart::paint(HDC dc) const {
    RECT client{};
    GetClientRect(handle(), &client);
    if (const cake shown(client, m_value); shown.is_drawn()) {
        shown.draw(dc);
    }
}

} // namespace ui
