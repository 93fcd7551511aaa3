/// The numbers of the module's dialogs and of their controls.
#pragma once

// Controls that nobody asks for.
#define IDC_STATIC (-1)

#define IDD_LOGIN 300
#define IDC_LOGIN_USERNAME 301
#define IDC_LOGIN_PASSWORD 302
// Made by the dialog itself.
#define IDC_LOGIN_NEW_ACCOUNT 483
#define IDC_LOGIN_SAVE_PASSWORD 484
#define IDC_LOGIN_AUTO_LOGIN 485

#define IDD_NEW_PROFILE 2208
#define IDC_NEW_PROFILE_USERNAME 487
#define IDC_NEW_PROFILE_PASSWORD 488
#define IDC_NEW_PROFILE_VERIFY_PASSWORD 489
#define IDC_NEW_PROFILE_EMAIL 490
#define IDC_NEW_PROFILE_FIRST_NAME 491
#define IDC_NEW_PROFILE_LAST_NAME 492
#define IDC_NEW_PROFILE_SIGN_UP 494
