/// The numbers of the module's resources, for code and resource scripts alike. The numbers of texts
/// are in string_ids.h.
#pragma once

// Registrar scripts, of the type "REGISTRY".
#define IDR_APPLICATION 103
#define IDR_NAMESPACE_FOLDER 104
#define IDR_DRIVE_PROPERTY_SHEET 105
#define IDR_LOCAL_CONTEXT_MENU 1901
#define IDR_SYNC_PROPERTY_SHEET 1902
#define IDR_OVERLAY_ICON 1904

// Icons. The shell finds two by their places, which are those of their numbers among all: the first
// one is the drive's, and IDI_BOUND marks local items that are bound.
#define IDI_DRIVE 101
#define IDI_ITEMS 2000
#define IDI_SYNC 2001
#define IDI_BOUND 2002
#define IDI_BOUND_INDEX 3

// Pictures of menus, with 0xFF00FF where there is nothing.
#define IDB_SYNC 2205
