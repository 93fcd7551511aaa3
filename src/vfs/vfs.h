/// The contracts through which everything that can be listed, opened, copied or shown is reached.
/// Nothing is locked in them: each implementation protects what it caches.
#pragma once

#include "vfs/client.h"
#include "vfs/directory.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"
#include "vfs/item.h"
#include "vfs/records.h"
