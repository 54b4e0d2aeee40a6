#pragma once

#include "channel/byte_buffer.h"
#include "families/ese/ese_records.h"
#include "marshal/elements.h"

#include <cstdint>
#include <vector>

// How the values of the ESE backup library lie in the section: flat, each part in its element's form (elements.h), with
// nothing in between.
//   CGUIDWrapper                        BUF of length 16: the GUID in memory order
//   CESE_ICON_DESCRIPTIONWrapper        BUF: the icon
//   CDoubleNullTerminatedStringsWrapper BUF: the list, all terminators included, units least significant byte first
//   CDATABASE_BACKUP_INFOWrapper        WSTR display name, list of streams, GUID, U32 icon index, U32 flags
//   CINSTANCE_BACKUP_INFOWrapper        U64 id, WSTR name, U32 icon index, array of databases, array of icons
//   CESE_REGISTERED_INFOWrapper         WSTR display name, WSTR endpoint annotation, U32 flags, icon
//   CElementArray<W, T>                 count, 4 bytes, most significant first, not aligned; as many W
//
// Every composite holds its data in memory of its own, and a copy of it has its own again. Fill copies what a library
// handed out and keeps no pointer into it. If memory can't be allocated, Fill throws std::bad_alloc and ReadFromBuffer
// of an icon or a list returns 0.

namespace kessil {

/// A GUID. Its bytes are never swapped.
class CGUIDWrapper final : public CDataElement
{
public:
    /// Takes 16 bytes from where the data starts, whatever length stands there. 0 when so many don't lie there.
    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override { return 16 + 12; }

    EseGuid value = {};
};

/// What icon and list share: a block of bytes of its own that lies in the section as a BUF.
class BlockElement : public CDataElement
{
public:
    BlockElement() = default;
    BlockElement(const BlockElement &other);
    BlockElement &operator=(const BlockElement &other);

    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override { return m_size + 12; }

    std::uint32_t Size() const { return m_size; }

    /// Never null. Once read or filled it is aligned for units, and behind it are zeros enough for any list to end.
    const unsigned char *Data() const { return m_buffer.Data(); }

protected:
    /// Copies `size` bytes; `data` isn't touched when there are none. False without memory.
    [[nodiscard]] bool Assign(const void *data, std::uint32_t size);
    void AssignOrThrow(const void *data, std::uint32_t size);

private:
    CByteBuffer m_buffer = CByteBuffer(1024);
    std::uint32_t m_size = 0;
};

class CESE_ICON_DESCRIPTIONWrapper final : public BlockElement
{
public:
    void Fill(const _ESE_ICON_DESCRIPTION &record);
};

/// Wide strings that end in a zero unit each, and a zero unit behind the last. What a parent sends is taken as it is:
/// its length alone decides.
class CDoubleNullTerminatedStringsWrapper final : public BlockElement
{
public:
    /// Copies up to and with the first two zero units in a row. Null gives the empty list, which is two zero units.
    void Fill(const char16_t *list);

    const char16_t *List() const { return reinterpret_cast<const char16_t *>(Data()); }
};

/// An array of elements W, made from a library's records T.
template <class W, class T>
class CElementArray final : public CDataElement
{
public:
    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override;

    /// Replaces the entries. `records` isn't touched when `count` is 0.
    void Fill(const T *records, std::uint32_t count);

    std::vector<W> entries;
};

class CDATABASE_BACKUP_INFOWrapper final : public CDataElement
{
public:
    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override;

    /// The record must have a name.
    void Fill(const _DATABASE_BACKUP_INFO &record);

    WSTR display_name;
    CDoubleNullTerminatedStringsWrapper stream_list;
    CGUIDWrapper guid;
    U32 icon_index;
    U32 flags;
};

class CINSTANCE_BACKUP_INFOWrapper final : public CDataElement
{
public:
    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override;

    /// The record must have a name.
    void Fill(const _INSTANCE_BACKUP_INFO &record);

    U64 instance_id;
    WSTR instance_name;
    U32 icon_index;
    CElementArray<CDATABASE_BACKUP_INFOWrapper, _DATABASE_BACKUP_INFO> databases;
    CElementArray<CESE_ICON_DESCRIPTIONWrapper, _ESE_ICON_DESCRIPTION> icons;
};

class CESE_REGISTERED_INFOWrapper final : public CDataElement
{
public:
    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override;

    /// A name that is null becomes the empty string.
    void Fill(const _ESE_REGISTERED_INFO &record);

    WSTR display_name;
    WSTR endpoint_annotation;
    U32 flags;
    CESE_ICON_DESCRIPTIONWrapper icon;
};

extern template class CElementArray<CDATABASE_BACKUP_INFOWrapper, _DATABASE_BACKUP_INFO>;
extern template class CElementArray<CESE_ICON_DESCRIPTIONWrapper, _ESE_ICON_DESCRIPTION>;
extern template class CElementArray<CINSTANCE_BACKUP_INFOWrapper, _INSTANCE_BACKUP_INFO>;
extern template class CElementArray<CESE_REGISTERED_INFOWrapper, _ESE_REGISTERED_INFO>;

using LIST = CDoubleNullTerminatedStringsWrapper;
using INSTANCES = CElementArray<CINSTANCE_BACKUP_INFOWrapper, _INSTANCE_BACKUP_INFO>;
using REGISTERED = CElementArray<CESE_REGISTERED_INFOWrapper, _ESE_REGISTERED_INFO>;

} // namespace kessil
