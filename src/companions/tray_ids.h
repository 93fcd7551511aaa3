/// The numbers of the tray's resources, for the resource compiler too.
#pragma once

#define IDI_QUILLDECK 1
#define IDR_TRAY_MENU 100

#define ID_TRAY_OPEN 1001
#define ID_TRAY_SIGN_OUT 1002
#define ID_TRAY_EXIT 1003

#define IDS_PROGRAM 2001
#define IDS_NOBODY_SIGNED_IN 2002
#define IDS_SIGNED_IN_AS 2003
#define IDS_DRIVE_NOT_REGISTERED 2004
