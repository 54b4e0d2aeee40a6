#include "families/ese/composites.h"

#include "channel/big_endian.h"

#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace kessil {
namespace {

// Bytes behind a block: with them even a list of an odd number of bytes, none of them zero, ends in two zero units.
constexpr std::uint32_t end_of_any_list = 5;

// The position, counted from the end, since a wide string without room steps back over its padding.
class Cursor
{
public:
    Cursor(unsigned char *buffer, std::uint32_t size) : m_end(buffer + size), m_left(size), m_size(size) {}

    unsigned char *At() const { return m_end - m_left; }
    std::uint32_t Left() const { return m_left; }
    std::uint32_t Taken() const { return m_size - m_left; }

    // False for the step of an element that failed.
    bool Step(std::uint32_t taken)
    {
        m_left -= taken;
        return taken != 0;
    }

    bool Read(CDataElement &element) { return Step(element.ReadFromBuffer(At(), m_left)); }
    bool Write(CDataElement &element) { return Step(element.WriteToBuffer(At(), m_left)); }

private:
    unsigned char *m_end;
    std::uint32_t m_left;
    std::uint32_t m_size;
};

template <class... Members>
std::uint32_t ReadAll(unsigned char *buffer, std::uint32_t size, Members &...members)
{
    Cursor cursor(buffer, size);
    return (cursor.Read(members) && ...) ? cursor.Taken() : 0;
}

template <class... Members>
std::uint32_t WriteAll(unsigned char *buffer, std::uint32_t size, Members &...members)
{
    Cursor cursor(buffer, size);
    return (cursor.Write(members) && ...) ? cursor.Taken() : 0;
}

template <class... Members>
std::uint32_t SizeOfAll(Members &...members)
{
    return (members.GetBufferSize() + ...);
}

// A record without a name ends the run, as reading through the null pointer would.
const char16_t *Required(const char16_t *text)
{
    if (text == nullptr)
        throw std::invalid_argument("a record has no name");
    return text;
}

const char16_t *TextOrEmpty(const char16_t *text)
{
    return text == nullptr ? u"" : text;
}

} // namespace

std::uint32_t CGUIDWrapper::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    CBufferElement source;
    const std::uint32_t taken = source.ReadFromBuffer(buffer, size);
    if (taken == 0 || size - static_cast<std::uint32_t>(source.data - buffer) < value.size())
        return 0;
    std::memcpy(value.data(), source.data, value.size());
    return taken;
}

std::uint32_t CGUIDWrapper::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    CBufferElement target(static_cast<std::uint32_t>(value.size()));
    const std::uint32_t taken = target.WriteToBuffer(buffer, size);
    if (taken != 0)
        std::memcpy(target.data, value.data(), value.size());
    return taken;
}

BlockElement::BlockElement(const BlockElement &other) : CDataElement(other)
{
    AssignOrThrow(other.Data(), other.Size());
}

BlockElement &BlockElement::operator=(const BlockElement &other)
{
    if (this != &other)
        AssignOrThrow(other.Data(), other.Size());
    return *this;
}

std::uint32_t BlockElement::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    CBufferElement source;
    const std::uint32_t taken = source.ReadFromBuffer(buffer, size);
    return taken != 0 && Assign(source.data, source.size) ? taken : 0;
}

std::uint32_t BlockElement::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    CBufferElement target(m_size);
    const std::uint32_t taken = target.WriteToBuffer(buffer, size);
    if (taken != 0)
        std::memcpy(target.data, Data(), m_size);
    return taken;
}

bool BlockElement::Assign(const void *data, std::uint32_t size)
{
    m_size = 0;
    if (size > std::numeric_limits<std::uint32_t>::max() - end_of_any_list ||
        m_buffer.SetSize(size + end_of_any_list) != 0)
        return false;
    m_size = size;
    if (size != 0)
        std::memcpy(m_buffer.Data(), data, size);
    std::memset(m_buffer.Data() + size, 0, end_of_any_list);
    return true;
}

void BlockElement::AssignOrThrow(const void *data, std::uint32_t size)
{
    if (!Assign(data, size))
        throw std::bad_alloc();
}

void CESE_ICON_DESCRIPTIONWrapper::Fill(const _ESE_ICON_DESCRIPTION &record)
{
    AssignOrThrow(record.data, record.size);
}

void CDoubleNullTerminatedStringsWrapper::Fill(const char16_t *list)
{
    if (list == nullptr)
        list = u"\0";
    std::uint32_t units = 0;
    while (list[units] != 0 || list[units + 1] != 0)
        ++units;
    AssignOrThrow(list, 2 * units + 4);
}

template <class W, class T>
std::uint32_t CElementArray<W, T>::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    U32 count;
    Cursor cursor(buffer, size);
    if (!cursor.Read(count))
        return 0;
    entries.clear();
    for (std::uint32_t i = 0; i < count.value; ++i) {
        W entry;
        if (!cursor.Read(entry))
            return 0;
        entries.push_back(entry);
    }
    return cursor.Taken();
}

template <class W, class T>
std::uint32_t CElementArray<W, T>::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    U32 count(static_cast<std::uint32_t>(entries.size()));
    Cursor cursor(buffer, size);
    if (!cursor.Write(count))
        return 0;
    for (W &entry : entries) {
        if (!cursor.Write(entry))
            return 0;
    }
    return cursor.Taken();
}

template <class W, class T>
std::uint32_t CElementArray<W, T>::GetBufferSize()
{
    std::uint32_t total = 4;
    for (W &entry : entries)
        total += entry.GetBufferSize();
    return total;
}

template <class W, class T>
void CElementArray<W, T>::Fill(const T *records, std::uint32_t count)
{
    entries.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        W entry;
        entry.Fill(records[i]);
        entries.push_back(entry);
    }
}

std::uint32_t CDATABASE_BACKUP_INFOWrapper::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    return ReadAll(buffer, size, display_name, stream_list, guid, icon_index, flags);
}

std::uint32_t CDATABASE_BACKUP_INFOWrapper::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    return WriteAll(buffer, size, display_name, stream_list, guid, icon_index, flags);
}

std::uint32_t CDATABASE_BACKUP_INFOWrapper::GetBufferSize()
{
    return SizeOfAll(display_name, stream_list, guid, icon_index, flags);
}

void CDATABASE_BACKUP_INFOWrapper::Fill(const _DATABASE_BACKUP_INFO &record)
{
    display_name.text = Required(record.display_name);
    stream_list.Fill(record.stream_list);
    guid.value = record.guid;
    icon_index.value = record.icon_index;
    flags.value = record.flags;
}

std::uint32_t CINSTANCE_BACKUP_INFOWrapper::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    return ReadAll(buffer, size, instance_id, instance_name, icon_index, databases, icons);
}

std::uint32_t CINSTANCE_BACKUP_INFOWrapper::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    return WriteAll(buffer, size, instance_id, instance_name, icon_index, databases, icons);
}

std::uint32_t CINSTANCE_BACKUP_INFOWrapper::GetBufferSize()
{
    return SizeOfAll(instance_id, instance_name, icon_index, databases, icons);
}

void CINSTANCE_BACKUP_INFOWrapper::Fill(const _INSTANCE_BACKUP_INFO &record)
{
    instance_id.value = record.instance_id;
    instance_name.text = Required(record.instance_name);
    icon_index.value = record.icon_index;
    databases.Fill(record.databases, record.database_count);
    icons.Fill(record.icons, record.icon_count);
}

std::uint32_t CESE_REGISTERED_INFOWrapper::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    return ReadAll(buffer, size, display_name, endpoint_annotation, flags, icon);
}

std::uint32_t CESE_REGISTERED_INFOWrapper::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    return WriteAll(buffer, size, display_name, endpoint_annotation, flags, icon);
}

std::uint32_t CESE_REGISTERED_INFOWrapper::GetBufferSize()
{
    return SizeOfAll(display_name, endpoint_annotation, flags, icon);
}

void CESE_REGISTERED_INFOWrapper::Fill(const _ESE_REGISTERED_INFO &record)
{
    display_name.text = TextOrEmpty(record.display_name);
    endpoint_annotation.text = TextOrEmpty(record.endpoint_annotation);
    flags.value = record.flags;
    icon.Fill(record.icon);
}

template class CElementArray<CDATABASE_BACKUP_INFOWrapper, _DATABASE_BACKUP_INFO>;
template class CElementArray<CESE_ICON_DESCRIPTIONWrapper, _ESE_ICON_DESCRIPTION>;
template class CElementArray<CINSTANCE_BACKUP_INFOWrapper, _INSTANCE_BACKUP_INFO>;
template class CElementArray<CESE_REGISTERED_INFOWrapper, _ESE_REGISTERED_INFO>;

} // namespace kessil
