#pragma once

#include "target.h"

/// A mail library that records what it was called with and answers as the script says. Its texts are of
/// 16-bit units; every text that it gives has room for 264 of them.

TARGET_EXPORT std::uint32_t MapiCreate(std::uint64_t *mapi);
TARGET_EXPORT std::uint32_t MapiDelete(std::uint64_t mapi);
TARGET_EXPORT std::uint32_t MapiRestore(std::uint64_t mapi, const char16_t *text);
TARGET_EXPORT std::uint32_t MapiFindFolder(std::uint64_t mapi, const char16_t *name, std::uint16_t flag);
TARGET_EXPORT std::uint32_t MapiOpenFolderSearch(std::uint64_t mapi);
TARGET_EXPORT std::uint32_t MapiGetNextFolder(std::uint64_t mapi, void *block, std::uint32_t length,
                                              std::uint32_t *count);
TARGET_EXPORT std::uint32_t MapiCloseSearch(std::uint64_t mapi);
TARGET_EXPORT std::uint32_t MapiOpenMailSearch(std::uint64_t mapi, const char16_t *text1, const char16_t *text2,
                                               std::uint32_t value);
TARGET_EXPORT std::uint32_t MapiGetNextMail(std::uint64_t mapi, char16_t *text1, char16_t *text2, std::uint64_t *value1,
                                            std::uint64_t *value2, std::uint64_t *value3, std::uint32_t *value4);
TARGET_EXPORT std::uint32_t MapiGetNextMails(std::uint64_t mapi, void *block, std::uint32_t length,
                                             std::uint32_t *count1, std::uint32_t *count2);
TARGET_EXPORT std::uint32_t MapiReadMail(std::uint64_t mapi, void *block, std::uint32_t length, std::uint32_t *count);
TARGET_EXPORT std::uint32_t MapiWriteMail(std::uint64_t mapi, const void *block, std::uint32_t length,
                                          std::uint32_t *count);
TARGET_EXPORT std::uint32_t MapiCloseMail(std::uint64_t mapi);
TARGET_EXPORT std::uint32_t MapiLoginProfile(std::uint64_t mapi, const char16_t *profile);
TARGET_EXPORT std::uint32_t MapiCreateProfileWithIProfAdmin(std::uint64_t mapi, const char16_t *text1,
                                                            const char16_t *text2, const char16_t *text3,
                                                            std::uint32_t value);
TARGET_EXPORT std::uint32_t MapiDeleteProfile(std::uint64_t mapi);
TARGET_EXPORT std::uint32_t MapiOpenMail(std::uint64_t mapi, const char16_t *id, std::uint16_t flag, char16_t *text1,
                                         char16_t *text2, char16_t *text3, char16_t *text4, char16_t *text5,
                                         char16_t *text6, std::uint16_t *value1, std::uint16_t *value2,
                                         std::uint16_t *value3, char16_t *text7, std::uint32_t *value4);
TARGET_EXPORT std::uint32_t MapiGetLastError(std::uint64_t mapi, char16_t *text1);
TARGET_EXPORT std::uint32_t MapiBackupDLLVersion();
TARGET_EXPORT std::uint32_t MapiChangeDupID(std::uint64_t mapi, std::uint32_t value, const char16_t *id);
