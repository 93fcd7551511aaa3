/// The numbers of the module's texts.
#pragma once

// A new account: the caption, of its success too, and the text of that.
#define IDS_NEW_PROFILE_ERROR 1012
#define IDS_NEW_PROFILE_CREATED 1013

// Titles of the columns.
#define IDS_COLUMN_NAME 1210
#define IDS_COLUMN_TYPE 1211
#define IDS_COLUMN_SIZE 1212
#define IDS_COLUMN_DATE_ACCESSED 1213
#define IDS_COLUMN_DATE_MODIFIED 1214

// Failures of a stream over a file of the store: the caption, and a text for each operation.
#define IDS_STREAM_ERROR 1400
#define IDS_STREAM_OPEN_FAILED 1401
#define IDS_STREAM_READ_FAILED 1402
#define IDS_STREAM_WRITE_FAILED 1403
#define IDS_STREAM_SEEK_FAILED 1404
#define IDS_STREAM_CLOSE_FAILED 1405
