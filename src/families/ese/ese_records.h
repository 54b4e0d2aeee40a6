#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The records of the ESE backup library as they lie in the memory of a 64-bit process, under the names of its
// interface.

namespace kessil {

using EseGuid = std::array<unsigned char, 16>;

// NOLINTBEGIN(bugprone-reserved-identifier)

struct _ESE_ICON_DESCRIPTION
{
    std::uint32_t size; ///< bytes at `data`
    const void *data;
};

static_assert(sizeof(_ESE_ICON_DESCRIPTION) == 16);
static_assert(offsetof(_ESE_ICON_DESCRIPTION, size) == 0);
static_assert(offsetof(_ESE_ICON_DESCRIPTION, data) == 8);

struct _DATABASE_BACKUP_INFO
{
    const char16_t *display_name;
    std::uint32_t stream_list_length; ///< nobody reads it: the list says by itself where it ends
    const char16_t *stream_list; ///< strings that end in a zero unit each, and a zero unit behind them; may be null
    EseGuid guid;
    std::uint32_t icon_index;
    std::uint32_t flags;
};

static_assert(sizeof(_DATABASE_BACKUP_INFO) == 48);
static_assert(offsetof(_DATABASE_BACKUP_INFO, display_name) == 0);
static_assert(offsetof(_DATABASE_BACKUP_INFO, stream_list_length) == 8);
static_assert(offsetof(_DATABASE_BACKUP_INFO, stream_list) == 16);
static_assert(offsetof(_DATABASE_BACKUP_INFO, guid) == 24);
static_assert(offsetof(_DATABASE_BACKUP_INFO, icon_index) == 40);
static_assert(offsetof(_DATABASE_BACKUP_INFO, flags) == 44);

struct _INSTANCE_BACKUP_INFO
{
    std::uint64_t instance_id;
    const char16_t *instance_name;
    std::uint32_t icon_index;
    std::uint32_t database_count;
    const _DATABASE_BACKUP_INFO *databases;
    std::uint32_t icon_count;
    const _ESE_ICON_DESCRIPTION *icons;
};

static_assert(sizeof(_INSTANCE_BACKUP_INFO) == 48);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, instance_id) == 0);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, instance_name) == 8);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, icon_index) == 16);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, database_count) == 20);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, databases) == 24);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, icon_count) == 32);
static_assert(offsetof(_INSTANCE_BACKUP_INFO, icons) == 40);

struct _ESE_REGISTERED_INFO
{
    const char16_t *display_name;        ///< may be null
    const char16_t *endpoint_annotation; ///< may be null
    std::uint32_t flags;
    _ESE_ICON_DESCRIPTION icon;
};

static_assert(sizeof(_ESE_REGISTERED_INFO) == 40);
static_assert(offsetof(_ESE_REGISTERED_INFO, display_name) == 0);
static_assert(offsetof(_ESE_REGISTERED_INFO, endpoint_annotation) == 8);
static_assert(offsetof(_ESE_REGISTERED_INFO, flags) == 16);
static_assert(offsetof(_ESE_REGISTERED_INFO, icon) == 24);

// NOLINTEND(bugprone-reserved-identifier)

} // namespace kessil
