/// The numbers of the drive's page, of its controls and of its pictures.
#pragma once

#define IDD_DRIVE 400
#define IDC_DRIVE_ICON 401
#define IDC_DRIVE_NAME 402
#define IDC_DRIVE_USER_NAME 403
#define IDC_DRIVE_USER_LEVEL 404
// Sizes: in bytes, and in the largest unit that fits.
#define IDC_DRIVE_USED 405
#define IDC_DRIVE_USED_SHORT 406
#define IDC_DRIVE_FREE 407
#define IDC_DRIVE_FREE_SHORT 408
#define IDC_DRIVE_CAPACITY 409
#define IDC_DRIVE_CAPACITY_SHORT 410
#define IDC_DRIVE_PIE 411
#define IDC_DRIVE_SYNC_MANAGER 477

// The colours of the pie.
#define IDB_DRIVE_USED 2100
#define IDB_DRIVE_FREE 2101
