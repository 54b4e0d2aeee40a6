#ifndef KESSIL_DATA_SOURCE_H
#define KESSIL_DATA_SOURCE_H

/// A data source: a library that lists, reads and writes what a backup is made of. Its author includes this header,
/// defines the fifteen functions below, and builds a shared library. kessil finds them by name and passes every value
/// on as it is; the codes, modes and layouts of this header are what a data source and kessilctl agree on. A data
/// source with a parent of its own may agree on others.
///
/// The header is C and C++, and a data source needs nothing else of kessil.
///
/// How the two share a process:
///
/// - kessil makes one call at a time, all on one thread. A function may use threads of its own.
/// - Numbers behind pointers are 0 when a function is called. Blocks and texts belong to kessil and are valid during
///   the call. Handles are the data source's own numbers; kessil and kessilctl never look into them.
/// - No exception may leave a function: kessil ends in order, and the parent gets no answer.
///
/// Paths are relative to the topmost directory of the tree that a session serves, with `/` between the names, and end
/// in a zero byte. An empty path is that directory itself. On Linux a name is any bytes without `/` and zero. On
/// Windows it is UTF-8, in which a lone surrogate is the three bytes that UTF-8 would have for it. kessilctl passes a
/// name back as the listing had it. It backs nothing up whose name is empty, `.` or `..`, or can't be kept in its own
/// file system.
///
/// A backup lists: VornCreateDir, VornOpenDir, VornGetNextDirItem until VORN_END, VornCloseDir; and reads each file:
/// VornCreateFile, VornOpenFile with VORN_MODE_READ, VornReadFile until it stores 0 bytes, VornCloseFile. A restore
/// opens with VORN_MODE_WRITE or VORN_MODE_DIRECTORY and VORN_MODE_WITH_TIME, writes the time block and then the
/// content, commits with VornRestoreFile and closes; then it reads the file back and lists its directory.

#include <stdint.h>

#ifdef _WIN32
#define KESSIL_DATA_SOURCE_EXPORT __declspec(dllexport)
#else
#define KESSIL_DATA_SOURCE_EXPORT __attribute__((visibility("default")))
#endif

/* What the functions return. Every other code is a failure of the data source's own: kessilctl asks VornGetErrorText
   for its text, and shows text and code. */
#define VORN_OK 0u
#define VORN_END 1u /* VornGetNextDirItem: no more items */

/* The mode of VornOpenFile is exactly one of the first three, the last two of which may carry VORN_MODE_WITH_TIME. */
#define VORN_MODE_READ 1u
#define VORN_MODE_WRITE 2u     /* a new file, or new content for one; directories on the way are made */
#define VORN_MODE_DIRECTORY 4u /* a directory, made with those on the way if it doesn't exist */
#define VORN_MODE_WITH_TIME 8u /* the first VornWriteFile passes a time block, and nothing else */

/* The item that VornGetNextDirItem fills: VORN_ITEM_SIZE bytes, at these offsets, in numbers whose least significant
   byte comes first. kessilctl passes a block of that size, all zeros. */
#define VORN_ITEM_SIZE 800u
#define VORN_ITEM_KIND 0u         /* 32 bits: one of the kinds below */
#define VORN_ITEM_NAME_LENGTH 4u  /* 32 bits: bytes in the name, without its terminator */
#define VORN_ITEM_BYTES 8u        /* 64 bits: size of a file in bytes, 0 for anything else */
#define VORN_ITEM_SECONDS 16u     /* 64 bits, signed: time of the last change of content, from 1970-01-01 UTC */
#define VORN_ITEM_NANOSECONDS 24u /* 32 bits: 0 to 999999999, added to the seconds */
#define VORN_ITEM_RESERVED 28u    /* 32 bits: 0 */
#define VORN_ITEM_NAME 32u        /* the name, a zero byte, and zeros to the end */

#define VORN_KIND_FILE 1u
#define VORN_KIND_DIRECTORY 2u
#define VORN_KIND_LINK 3u  /* a symbolic link, or any reparse point: listed, never opened */
#define VORN_KIND_OTHER 4u /* a device, a socket, a named pipe: listed, never opened */

/* The time block of VORN_MODE_WITH_TIME: VORN_TIME_SIZE bytes, in numbers whose least significant byte comes first. */
#define VORN_TIME_SIZE 16u
#define VORN_TIME_SECONDS 0u     /* 64 bits, signed, as in the item */
#define VORN_TIME_NANOSECONDS 8u /* 32 bits, as in the item; then 32 bits of 0 */

#ifdef __cplusplus
extern "C" {
#endif

/* Version of this interface: 2. Any other value reaches the parent as 0xFFFFFFFF. */
KESSIL_DATA_SOURCE_EXPORT uint32_t GetLibApiVersion(void);

/* What the data source serves: 1, a tree of files. kessilctl doesn't call it. */
KESSIL_DATA_SOURCE_EXPORT uint32_t GetBackupType(void);

/* Stores a new session, which is ended with VornCloseSession. The result doesn't reach the parent: a session that can't
   be used fails in VornCreateDir and VornCreateFile. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornCreateSession(uint64_t *session);

/* Ends a session and closes whatever is still open in it. The result doesn't reach the parent, as that of the other two
   that close. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornCloseSession(uint64_t session);

/* Stores a new directory object, which is ended with VornCloseDir. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornCreateDir(uint64_t session, uint64_t *dir);

/* Opens the listing of a directory, once for each object. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornOpenDir(uint64_t session, uint64_t dir, const char *path);

/* Fills the next item, or returns VORN_END. For an item that can't be read, fills in its name alone and returns a
   failure; the next call continues with the item behind it. A failure without a name ends the listing. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornGetNextDirItem(uint64_t session, uint64_t dir, void *item);

KESSIL_DATA_SOURCE_EXPORT uint32_t VornCloseDir(uint64_t session, uint64_t dir);

/* Stores a new file object, which is ended with VornCloseFile. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornCreateFile(uint64_t session, uint64_t *file);

/* Opens a file or directory, once for each object. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornOpenFile(uint64_t session, uint64_t file, const char *path, uint32_t mode);

/* Reads up to `size` bytes from where the last read ended, and stores how many there were; 0 without a failure is the
   end of the file. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornReadFile(uint64_t session, uint64_t file, void *block, uint32_t size,
                                                uint32_t *count);

/* Appends `size` bytes, and stores how many were taken; fewer than `size` only with a failure. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornWriteFile(uint64_t session, uint64_t file, const void *block, uint32_t size,
                                                 uint32_t *count);

/* Commits what was opened for writing: the content takes effect, with the time that was passed. Of a directory it sets
   the time. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornRestoreFile(uint64_t session, uint64_t file);

/* Ends a file object. What was written and not committed is dropped. */
KESSIL_DATA_SOURCE_EXPORT uint32_t VornCloseFile(uint64_t session, uint64_t file);

/* The text for a code, ending in a zero byte, or null for no text. `object` is the directory or file whose call failed,
   0 for one of the session's. The text belongs to the data source and is copied before the next call. */
KESSIL_DATA_SOURCE_EXPORT const char *VornGetErrorText(uint64_t session, uint64_t object, uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
