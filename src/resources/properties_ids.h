/// The numbers of the properties dialog, of the general pages in it, and of their controls.
#pragma once

#define IDD_PROPERTIES 350
#define IDC_PROPERTIES_TABS 351
#define IDC_PROPERTIES_APPLY 352

#define IDD_FOLDER_GENERAL 2200
#define IDD_FILE_GENERAL 2209
#define IDC_ITEM_ICON 353
#define IDC_ITEM_NAME 354
#define IDC_NAME_SEPARATOR 355
#define IDC_TYPE_LABEL 356
#define IDC_ITEM_TYPE 357
#define IDC_LOCATION_LABEL 358
#define IDC_ITEM_LOCATION 359
#define IDC_SIZE_LABEL 360
#define IDC_ITEM_SIZE 361
// On the page of files below the size, on that of folders below the access.
#define IDC_DETAILS_SEPARATOR 362
#define IDC_DATE_LABEL 363
#define IDC_ITEM_DATE 364
#define IDC_LINK_LABEL 365
#define IDC_ITEM_LINK 366
#define IDC_LINK_SEPARATOR 367
#define IDC_DESCRIPTION_LABEL 368
#define IDC_ITEM_DESCRIPTION 369
#define IDC_ACCESS_LABEL 370
#define IDC_ACCESS_PUBLIC 371
#define IDC_ACCESS_HIDDEN 372
#define IDC_ACCESS_PRIVATE 373
// On the page of files below the access, on that of folders below the contents.
#define IDC_CONTENTS_SEPARATOR 374
#define IDC_CONTAINS_LABEL 376
#define IDC_ITEM_CONTAINS 377
#define IDC_PRICE_FREE 494
#define IDC_PRICE_PAID 495
#define IDC_PRICE 496
#define IDC_PRICE_LABEL 497
#define IDC_PRICE_HINT 498
// Made by the page itself.
#define IDC_SALES_LINK 499
