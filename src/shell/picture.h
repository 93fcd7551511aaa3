/// Pictures for the shell.
#pragma once

#include "ui/gdi.h"

#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include <string>

namespace shell {

/// The picture as a section of its size, the last row first. With alpha it gets 32 bits with alpha,
/// not premultiplied. Without, it keeps its depth and its palette if that is a depth of GDI's, and
/// gets 32 bits otherwise. Throws `com::status_exception`.
ui::unique_bitmap make_section(Gdiplus::Bitmap& source);

/// `make_section` of the picture in a file; starts GDI+ if need be. Throws `com::status_exception`,
/// also for what is no picture.
ui::unique_bitmap load_picture(const std::wstring& path);

} // namespace shell
