#pragma once

#include "target.h"

/// A data-source plug-in that records what it was called with and answers as the script says.
///
/// KESSIL_RECORD names the file that each call adds one line to, before anything else happens:
///
///     VornReadFile session=0x1 file=0x2 size=16 data=0102030405060708
///
/// Handles are hexadecimal, `mode`, `size` and `code` decimal, `path="..."` has every byte outside printable ASCII, and
/// `"` and `\`, as \xHH. `data` shows the data area as the call found it: the first `peek` bytes; where the script
/// gives no `peek`, that is at most 32 bytes of the size passed, and nothing of an item, whose size isn't passed.
///
/// KESSIL_SCRIPT names the file that says what each call does (script.h). Without it GetLibApiVersion returns 2,
/// everything else returns 0, and no out-value and no data area is touched.

TARGET_EXPORT std::uint32_t VornCreateSession(std::uint64_t *session);
TARGET_EXPORT std::uint32_t VornCloseSession(std::uint64_t session);
TARGET_EXPORT std::uint32_t VornCreateDir(std::uint64_t session, std::uint64_t *dir);
TARGET_EXPORT std::uint32_t VornOpenDir(std::uint64_t session, std::uint64_t dir, const char *path);
TARGET_EXPORT std::uint32_t VornGetNextDirItem(std::uint64_t session, std::uint64_t dir, void *item);
TARGET_EXPORT std::uint32_t VornCloseDir(std::uint64_t session, std::uint64_t dir);
TARGET_EXPORT std::uint32_t VornCreateFile(std::uint64_t session, std::uint64_t *file);
TARGET_EXPORT std::uint32_t VornOpenFile(std::uint64_t session, std::uint64_t file, const char *path,
                                         std::uint32_t mode);
TARGET_EXPORT std::uint32_t VornReadFile(std::uint64_t session, std::uint64_t file, void *block, std::uint32_t size,
                                         std::uint32_t *count);
TARGET_EXPORT std::uint32_t VornWriteFile(std::uint64_t session, std::uint64_t file, const void *block,
                                          std::uint32_t size, std::uint32_t *count);
TARGET_EXPORT std::uint32_t VornRestoreFile(std::uint64_t session, std::uint64_t file);
TARGET_EXPORT std::uint32_t VornCloseFile(std::uint64_t session, std::uint64_t file);
TARGET_EXPORT const char *VornGetErrorText(std::uint64_t session, std::uint64_t object, std::uint32_t code);
TARGET_EXPORT std::uint32_t GetLibApiVersion();
TARGET_EXPORT std::uint32_t GetBackupType();
