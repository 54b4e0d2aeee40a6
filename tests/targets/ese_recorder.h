#pragma once

#include "target.h"

/// An ESE backup library that records what it was called with and answers as the script says.
///
/// Every function leaves the last error that the script has as `error`, whatever it returns. `instances=N` and
/// `registered=N` hand out the first N of the records in ese_recorder.cpp, `list=` a list of wide strings by its bytes,
/// or a null pointer with `list=null`; without these words the out-values are left alone. Where an out-value has to
/// start as something, the record shows what it was.

/// Wide strings that end in a zero unit each, and a zero unit behind them.
using EseList = const char16_t *;

struct Guid
{
    std::uint32_t part1;
    std::uint16_t part2;
    std::uint16_t part3;
    std::uint8_t part4[8];
};

struct Icon
{
    std::uint32_t size;
    const void *data;
};

struct Database
{
    const char16_t *name;
    std::uint32_t stream_bytes;
    EseList streams;
    Guid guid;
    std::uint32_t icon;
    std::uint32_t flags;
};

struct Instance
{
    std::uint64_t id;
    const char16_t *name;
    std::uint32_t icon;
    std::uint32_t database_count;
    const Database *databases;
    std::uint32_t icon_count;
    const Icon *icons;
};

struct Registered
{
    const char16_t *name;
    const char16_t *annotation;
    std::uint32_t flags;
    Icon icon;
};

TARGET_EXPORT std::uint32_t HrESEBackupPrepare(const char16_t *server, const char16_t *annotation, std::uint32_t *count,
                                               const Instance **instances, void **context);
TARGET_EXPORT std::uint32_t HrESEBackupSetup(void *context, std::uint64_t instance, std::uint32_t type);
TARGET_EXPORT std::uint32_t HrESEBackupOpenFile(void *context, const char16_t *name, std::uint32_t read_hint,
                                                std::uint32_t sections, void **file, std::uint64_t *size);
TARGET_EXPORT std::uint32_t HrESEBackupReadFile(void *context, void *file, void *data, std::uint32_t size,
                                                std::uint32_t *count);
TARGET_EXPORT std::uint32_t HrESEBackupCloseFile(void *context, void *file);
TARGET_EXPORT std::uint32_t HrESEBackupGetLogAndPatchFiles(void *context, EseList *list);
TARGET_EXPORT std::uint32_t HrESEBackupTruncateLogs(void *context);
TARGET_EXPORT std::uint32_t HrESEBackupInstanceEnd(void *context, std::uint32_t flags);
TARGET_EXPORT std::uint32_t HrESEBackupEnd(void *context);
TARGET_EXPORT std::uint32_t HrESEBackupRestoreGetRegistered(const char16_t *server, const char16_t *name,
                                                            std::uint32_t flags, std::uint32_t *count,
                                                            const Registered **registered);

TARGET_EXPORT std::uint32_t HrESERestoreOpen(const char16_t *server, const char16_t *annotation,
                                             const char16_t *system_path, const char16_t *log_path, void **context);
TARGET_EXPORT std::uint32_t HrESERestoreReopen(const char16_t *server, const char16_t *annotation,
                                               const char16_t *log_path, void **context);
TARGET_EXPORT std::uint32_t HrESERestoreAddDatabase(void *context, const char16_t *name, Guid guid, EseList source,
                                                    EseList *list);
TARGET_EXPORT std::uint32_t HrESERestoreOpenFile(void *context, const char16_t *name, std::uint32_t sections,
                                                 void **file);
TARGET_EXPORT std::uint32_t HrESERestoreSaveEnvironment(void *context);
TARGET_EXPORT std::uint32_t HrESERestoreComplete(void *context, const char16_t *checkpoint_path,
                                                 const char16_t *log_path, const char16_t *target_instance,
                                                 std::uint32_t flags);
TARGET_EXPORT std::uint32_t HrESERestoreClose(void *context, std::uint32_t mode);
