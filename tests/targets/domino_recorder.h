#pragma once

#include "target.h"

/// A Notes library that records what it was called with and answers as the script says. The error
/// message is the script's `message`; without one it is empty, and `message=null` makes it a null pointer.

TARGET_EXPORT std::uint32_t DominoGetSession(const char *text);
TARGET_EXPORT std::uint32_t DominoCloseSession(std::uint32_t session);
TARGET_EXPORT std::uint32_t DominoFindFirstDatabase(std::uint32_t session, const char *path, void *block,
                                                    std::uint32_t length);
TARGET_EXPORT std::uint32_t DominoFindNextDatabase(std::uint32_t session, void *block, std::uint32_t length);
TARGET_EXPORT std::uint32_t DominoGetDatabaseInfo(std::uint32_t session, std::uint32_t *value1, std::uint32_t *value2);
TARGET_EXPORT std::uint32_t DominoCopyDatabase(std::uint32_t session, const char *text1, const char *text2,
                                               const char *text3, const char *text4, std::uint32_t *value);
TARGET_EXPORT const char *DominoGetErrorMessage(std::uint32_t session, std::uint32_t code);
TARGET_EXPORT std::uint32_t DominoSetPassword(const char *text1, const char *text2);
TARGET_EXPORT std::uint32_t DominoGetNotesVersion(std::uint32_t session, const char *text, std::uint32_t *version);
