#pragma once

#include <kessil/data_source.h>

/// vorn_fs: a data source that serves one directory tree.
///
/// The tree is the directory that the environment variable VORN_FS_ROOT names when a session is created. Nothing
/// outside it is ever opened: a path that could lead out is refused, and links are never followed, neither on the way
/// nor at the end of a path. Other file systems mounted inside the tree belong to it.
///
/// Paths are those of kessil/data_source.h. A leading or trailing `/`, an empty name, `.` and `..` are refused. On
/// Windows so are names that mean something else there: reserved devices, streams, `\`, a trailing dot or space.
///
/// Listings are in the order of the names' bytes, and show a directory as it was when it was opened. A session without
/// a usable root is a session all the same; VornCreateDir and VornCreateFile then return VORN_FS_NO_ROOT.
///
/// A file that is written has a temporary name in its directory, ".vorn_fs-" and numbers and ".tmp", until
/// VornRestoreFile sets its time, flushes its content to the disk, and then renames it in one step, in place of any
/// file or link of its name. Only a process that ends in between leaves the temporary file behind.
///
/// Every function may be called on any thread. One directory or file object is used by one thread at a time.
/// VornGetErrorText never returns null; its text is valid until the same thread calls it again.

/* The failures that it reports, beside the results of kessil/data_source.h. */
#define VORN_FS_BAD_HANDLE 2u    /* not an open session, directory or file, or not one of this session */
#define VORN_FS_BAD_PATH 3u      /* a path that isn't served */
#define VORN_FS_LINK 4u          /* the path leads to or through a link */
#define VORN_FS_NOT_DIRECTORY 5u /* a name on the way, or the one to list, is something else */
#define VORN_FS_NOT_FILE 6u      /* the path leads to something else than a regular file */
#define VORN_FS_BAD_MODE 7u      /* no combination of mode bits that is defined */
#define VORN_FS_WRONG_STATE 8u   /* not opened yet, opened already, or opened for something else */
#define VORN_FS_BAD_TIME 9u      /* the first write wasn't a time block though VORN_MODE_WITH_TIME was given */
#define VORN_FS_NO_ROOT 10u      /* VORN_FS_ROOT isn't set, or isn't a directory that can be opened */
#define VORN_FS_NO_MEMORY 11u
#define VORN_FS_SYSTEM 0x10000u /* this plus the operating system's own code: errno, or GetLastError on Windows */
