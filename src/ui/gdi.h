/// Owners of drawing objects.
#pragma once

#include "utils/unique_handle.h"

#include <windows.h>

namespace ui {

/// A font, bitmap, brush, pen or region. It must not be selected anywhere when it goes.
template <class Object>
struct gdi_object_traits {
    using pointer = Object;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::DeleteObject(value); }
};

using unique_font = utils::unique_resource<gdi_object_traits<HFONT>>;
using unique_brush = utils::unique_resource<gdi_object_traits<HBRUSH>>;
using unique_bitmap = utils::unique_resource<gdi_object_traits<HBITMAP>>;
using unique_brush = utils::unique_resource<gdi_object_traits<HBRUSH>>;
using unique_pen = utils::unique_resource<gdi_object_traits<HPEN>>;
using unique_region = utils::unique_resource<gdi_object_traits<HRGN>>;

/// A device context in memory.
struct memory_dc_traits {
    using pointer = HDC;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::DeleteDC(value); }
};

using unique_memory_dc = utils::unique_resource<memory_dc_traits>;

/// Keeps an object selected in a device context.
class selected_object {
public:
    selected_object(HDC dc, HGDIOBJ object) noexcept : dc_(dc), old_(::SelectObject(dc, object)) {}

    selected_object(const selected_object&) = delete;
    selected_object& operator=(const selected_object&) = delete;

    ~selected_object() { ::SelectObject(dc_, old_); }

private:
    HDC dc_;
    HGDIOBJ old_;
};

} // namespace ui
