#ifndef VORN_FS_H
#define VORN_FS_H

/// vorn_fs: a data-source plug-in that serves one directory tree.
///
/// The tree is the directory that the environment variable VORN_FS_ROOT names when a session is created. Nothing
/// outside it is ever opened: a path that could lead out is refused, and links are never followed, neither on the way
/// nor at the end of a path. Other file systems mounted inside the tree belong to it.
///
/// Paths are relative to that directory, with `/` between the names, and end in a zero byte. An empty path is the
/// directory itself. A leading or trailing `/`, an empty name, `.` and `..` are refused. On Linux a name is any bytes
/// that the file system holds. On Windows it is UTF-8, a lone surrogate being the three bytes that UTF-8 would have for
/// it; names that mean something else there (reserved devices, streams, `\`, a trailing dot or space) are refused.
///
/// Every function may be called on any thread. One directory or file object is used by one thread at a time.
///
/// A backup walks the tree: VornCreateDir, VornOpenDir, VornGetNextDirItem until VORN_FS_END, VornCloseDir; and for
/// each file VornCreateFile, VornOpenFile with VORN_FS_MODE_READ, VornReadFile until it yields 0 bytes, VornCloseFile.
/// A restore opens with VORN_FS_MODE_WRITE or VORN_FS_MODE_DIRECTORY, writes, and commits with VornRestoreFile.

#include <stdint.h>

#ifdef _WIN32
#ifdef VORN_FS_BUILD
#define VORN_FS_API __declspec(dllexport)
#else
#define VORN_FS_API
#endif
#else
#define VORN_FS_API __attribute__((visibility("default")))
#endif

/* What the functions return. Everything but VORN_FS_OK and VORN_FS_END is a failure. */
#define VORN_FS_OK 0u
#define VORN_FS_END 1u           /* VornGetNextDirItem: no more items */
#define VORN_FS_BAD_HANDLE 2u    /* not an open session, directory or file, or not one of this session */
#define VORN_FS_BAD_PATH 3u      /* a path that isn't served, as told above */
#define VORN_FS_LINK 4u          /* the path leads to or through a link */
#define VORN_FS_NOT_DIRECTORY 5u /* a name on the way, or the one to list, is something else */
#define VORN_FS_NOT_FILE 6u      /* the path leads to something else than a regular file */
#define VORN_FS_BAD_MODE 7u      /* none of the combinations of mode bits told below */
#define VORN_FS_WRONG_STATE 8u   /* not opened yet, opened already, or opened for something else */
#define VORN_FS_BAD_TIME 9u      /* the first write wasn't a time block though VORN_FS_MODE_WITH_TIME was given */
#define VORN_FS_NO_ROOT 10u      /* VORN_FS_ROOT isn't set, or isn't a directory that can be opened */
#define VORN_FS_NO_MEMORY 11u
#define VORN_FS_SYSTEM 0x10000u /* this plus the operating system's own code: errno, or GetLastError on Windows */

/* The mode of VornOpenFile is exactly one of the first three, the last two of which may carry VORN_FS_MODE_WITH_TIME.
 */
#define VORN_FS_MODE_READ 1u
#define VORN_FS_MODE_WRITE 2u     /* a new file, or a new content; directories on the way are made */
#define VORN_FS_MODE_DIRECTORY 4u /* a directory, made with those on the way if it isn't there */
#define VORN_FS_MODE_WITH_TIME 8u /* the first VornWriteFile passes a time block, and nothing else */

/* The item that VornGetNextDirItem fills: VORN_FS_ITEM_SIZE bytes, numbers least significant byte first. */
#define VORN_FS_ITEM_SIZE 800u
#define VORN_FS_ITEM_KIND 0u         /* 32 bits: one of the kinds below */
#define VORN_FS_ITEM_NAME_LENGTH 4u  /* 32 bits: bytes in the name, without its terminator */
#define VORN_FS_ITEM_BYTES 8u        /* 64 bits: size of a file, 0 for anything else */
#define VORN_FS_ITEM_SECONDS 16u     /* 64 bits, signed: time of the last change of content, from 1970-01-01 UTC */
#define VORN_FS_ITEM_NANOSECONDS 24u /* 32 bits: 0 to 999999999, added to the seconds */
#define VORN_FS_ITEM_RESERVED 28u    /* 32 bits: 0 */
#define VORN_FS_ITEM_NAME 32u        /* the name and a zero byte, then zeros to the end */

#define VORN_FS_KIND_FILE 1u
#define VORN_FS_KIND_DIRECTORY 2u
#define VORN_FS_KIND_LINK 3u  /* a symbolic link, or any reparse point: listed, never opened */
#define VORN_FS_KIND_OTHER 4u /* a device, a socket, a named pipe: listed, never opened */

/* The time block of VORN_FS_MODE_WITH_TIME, numbers least significant byte first. */
#define VORN_FS_TIME_SIZE 16u
#define VORN_FS_TIME_SECONDS 0u     /* as in the item */
#define VORN_FS_TIME_NANOSECONDS 8u /* as in the item; then 32 bits of 0 */

#ifdef __cplusplus
extern "C" {
#endif

/* Version of the plug-in interface: 2. */
VORN_FS_API uint32_t GetLibApiVersion(void);

/* What the plug-in serves: 1, a tree of files. */
VORN_FS_API uint32_t GetBackupType(void);

/* Stores a new session, to be ended with VornCloseSession. A session without a usable root is a session all the same;
   VornCreateDir and VornCreateFile then return VORN_FS_NO_ROOT. */
VORN_FS_API uint32_t VornCreateSession(uint64_t *session);

/* Ends a session and closes whatever is still open in it. */
VORN_FS_API uint32_t VornCloseSession(uint64_t session);

/* Stores a new directory object, to be ended with VornCloseDir. */
VORN_FS_API uint32_t VornCreateDir(uint64_t session, uint64_t *dir);

/* Takes the listing of a directory. What changes there later isn't seen. */
VORN_FS_API uint32_t VornOpenDir(uint64_t session, uint64_t dir, const char *path);

/* Fills the next item, in the order of the names' bytes, or returns VORN_FS_END. An item that can't be looked at gives
   a failure with kind VORN_FS_KIND_OTHER and the name filled in; the next call goes on behind it. */
VORN_FS_API uint32_t VornGetNextDirItem(uint64_t session, uint64_t dir, void *item);

VORN_FS_API uint32_t VornCloseDir(uint64_t session, uint64_t dir);

/* Stores a new file object, to be ended with VornCloseFile. */
VORN_FS_API uint32_t VornCreateFile(uint64_t session, uint64_t *file);

/* Opens the object once. Until VornRestoreFile a file that is written has a temporary name in its directory,
   ".vorn_fs-" and numbers and ".tmp"; only the end of the process itself in between leaves that behind. */
VORN_FS_API uint32_t VornOpenFile(uint64_t session, uint64_t file, const char *path, uint32_t mode);

/* Reads on from where the last read ended. Stores how many bytes came, also on failure; fewer than `size` without a
   failure, or 0, is the end of the file. */
VORN_FS_API uint32_t VornReadFile(uint64_t session, uint64_t file, void *block, uint32_t size, uint32_t *count);

/* Writes on behind what was written. Stores how many bytes were taken; fewer than `size` only on failure. */
VORN_FS_API uint32_t VornWriteFile(uint64_t session, uint64_t file, const void *block, uint32_t size, uint32_t *count);

/* Commits what was opened for writing: sets the time that was passed, brings the content to the disk, and only then
   gives it its name, in one step and in place of any file or link of that name. Of a directory it sets the time. */
VORN_FS_API uint32_t VornRestoreFile(uint64_t session, uint64_t file);

/* Ends a file object. What was written and not committed is gone. */
VORN_FS_API uint32_t VornCloseFile(uint64_t session, uint64_t file);

/* The text for any code, in English or, for a code of the operating system, in its words. Never null. It belongs to
   the library and stays until the same thread asks again. */
VORN_FS_API const char *VornGetErrorText(uint64_t session, uint64_t object, uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
