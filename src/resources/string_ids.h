/// The numbers of the module's texts.
#pragma once

// The store, where a path begins with it.
#define IDS_STORE 1000

// Where items are bound: the title of the choosers, and what stands for several items.
#define IDS_SELECT_FOLDER 1004
#define IDS_MULTIPLE_ITEMS 1005

// A new account: the caption, of its success too, and the text of that.
#define IDS_NEW_PROFILE_ERROR 1012
#define IDS_NEW_PROFILE_CREATED 1013

// Questions before items are deleted: captions, and texts for the Trash and for good.
#define IDS_DELETE_FILE 1200
#define IDS_FILE_TO_TRASH 1201
#define IDS_DELETE_FOLDER 1202
#define IDS_FOLDER_TO_TRASH 1203
#define IDS_DELETE_ITEMS 1204
#define IDS_ITEMS_TO_TRASH 1205
#define IDS_FILE_FOR_GOOD 1206
#define IDS_ITEMS_FOR_GOOD 1207
#define IDS_FOLDER_FOR_GOOD 1208

// Titles of the columns.
#define IDS_COLUMN_NAME 1210
#define IDS_COLUMN_TYPE 1211
#define IDS_COLUMN_SIZE 1212
#define IDS_COLUMN_DATE_ACCESSED 1213
#define IDS_COLUMN_DATE_MODIFIED 1214

// What the progress dialog of a transfer shows.
#define IDS_COPY_TO 1300
#define IDS_MOVING 1301
#define IDS_MOVING_ITEM 1302
#define IDS_COPYING 1303
#define IDS_COPYING_ITEM 1304

// Questions of a transfer: captions, each with its text.
#define IDS_CONFIRM_REPLACE 1320
#define IDS_REPLACE_FILE 1321
#define IDS_CONFIRM_MERGE 1322
#define IDS_MERGE_FOLDER 1323

// Failures of a transfer: captions with the texts that belong to them, then those of its steps.
#define IDS_CREATING_FOLDER_FAILED 1350
#define IDS_FOLDER_NOT_CREATED 1351
#define IDS_CREATING_FILE_FAILED 1352
#define IDS_FILE_NOT_CREATED 1353
#define IDS_TRANSFER_ERROR 1354
#define IDS_CREATE_FAILED 1355
#define IDS_READ_FAILED 1356
#define IDS_WRITE_FAILED 1357
#define IDS_CLOSE_FAILED 1359
#define IDS_COPY_FAILED 1361
#define IDS_REFRESH_FAILED 1362
#define IDS_MEASURE_FAILED 1363
#define IDS_OVERWRITE_FAILED 1364
#define IDS_FILE_CHANGED 1370
#define IDS_NOTHING_WRITTEN 1371

// Failures of a stream over a file of the store: the caption, and a text for each operation.
#define IDS_STREAM_ERROR 1400
#define IDS_STREAM_OPEN_FAILED 1401
#define IDS_STREAM_READ_FAILED 1402
#define IDS_STREAM_WRITE_FAILED 1403
#define IDS_STREAM_SEEK_FAILED 1404
#define IDS_STREAM_CLOSE_FAILED 1405

// Entries of menus, and the name of a folder that one of them makes.
#define IDS_MENU_NEW_FOLDER 1500
#define IDS_NEW_FOLDER_NAME 1501
#define IDS_MENU_OPEN 1502
#define IDS_MENU_SHARE 1503
#define IDS_MENU_SYNCHRONIZE_LOCAL 1504
#define IDS_MENU_RESTORE 1506
#define IDS_MENU_SYNCHRONIZE 1507
#define IDS_MENU_BACK_UP_LOCAL 1508
#define IDS_MENU_DELETE 1510
#define IDS_MENU_RENAME 1511
#define IDS_MENU_PROPERTIES 1512

// Properties of items: tabs, captions, values, and captions of what fails.
#define IDS_TAB_GENERAL 1600
#define IDS_PROPERTIES_OF 1601
#define IDS_PROPERTIES_OF_SEVERAL 1602
#define IDS_SELECTED_COUNTS 1603
#define IDS_ALL_OF_TYPE 1604
#define IDS_MULTIPLE_TYPES 1605
#define IDS_SIZE_FAILED 1606
#define IDS_LINK_FAILED 1607
#define IDS_DESCRIPTION_FAILED 1608
#define IDS_PERMISSIONS_FAILED 1609
#define IDS_TAB_SHARING 1610
#define IDS_SHARED 1611
#define IDS_NOT_SHARED 1612
#define IDS_NO_SUCH_USER 1613
#define IDS_ADD_USER 1614
#define IDS_SHARE_WITH 1615
#define IDS_REMOVE_USER 1616
#define IDS_USER_INVITED 1617
#define IDS_SHARING_FAILED 1618
#define IDS_USERS_FAILED 1619
#define IDS_MODE_FAILED 1620
#define IDS_REMOVING_FAILED 1621
#define IDS_PRICE_FAILED 1622
#define IDS_UNKNOWN_DATE 1623
#define IDS_CONTAINED_COUNTS 1624
#define IDS_TAB_SYNC 1630
#define IDS_SALES_LINK 1640

// The drive's properties.
#define IDS_DRIVE_GENERAL 1700
#define IDS_UNLIMITED 1701

// The page of local items that binds them, and what is refused there and on that of remote ones:
// captions with their texts.
#define IDS_LOCAL_SYNC_PAGE 1702
#define IDS_WRONG_PATH 1705
#define IDS_PATH_REFUSED 1706
#define IDS_BINDINGS_FAILED 1707
#define IDS_BINDINGS_CHANGED 1708

// Opening: what the progress dialog shows.
#define IDS_DOWNLOADING 1800
#define IDS_DOWNLOADING_FROM 1801
#define IDS_DOWNLOADING_FILE 1802

// Deleting: what the progress dialog shows, and its failures.
#define IDS_DELETING_ITEM 1803
#define IDS_DELETING 1804
#define IDS_PREPARING_DELETE 1805
#define IDS_ERROR 1850
#define IDS_DELETE_FAILED 1856

// Failures of opening, and the questions about a local copy that was changed.
#define IDS_FILE_NOT_FOUND 1851
#define IDS_COPY_NOT_CREATED 1852
#define IDS_COPY_NOT_WRITTEN 1853
#define IDS_COPY_NOT_CLOSED 1854
#define IDS_PROGRAM_NOT_STARTED 1855
#define IDS_COPY_WAS_EDITED 1870
#define IDS_COPY_NOT_KEPT 1871
