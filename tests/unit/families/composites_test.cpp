#include "families/ese/composites.h"

#include "support/guarded_page.h"
#include "support/heap_probe.h"
#include "support/wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <vector>

namespace kessil::test {
namespace {

// The bytes left in a section, up to its very last one: what lies behind can't be touched. The block's end is a
// multiple of 8, and so the number of bytes decides the alignment of the first.
class Tail
{
public:
    explicit Tail(const Bytes &bytes) : m_block(bytes.size()) { std::copy(bytes.begin(), bytes.end(), m_block.Data()); }
    unsigned char *Data() const { return m_block.Data(); }
    std::uint32_t Size() const { return static_cast<std::uint32_t>(m_block.Size()); }
    Bytes Content() const { return {Data(), Data() + Size()}; }

private:
    GuardedBlock m_block;
};

Bytes Fill(Bytes form, std::size_t left)
{
    form.resize(left, 0xEE);
    return form;
}

// Writes into a section of that size: what stands there then.
Bytes Written(CDataElement &element, std::size_t left, std::uint32_t step)
{
    const Tail target(Repeat(0xEE, left));
    EXPECT_EQ(element.WriteToBuffer(target.Data(), target.Size()), step);
    return target.Content();
}

// GUIDs.

const EseGuid guid = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F};
const Bytes guid_form = Hex("10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F");

CGUIDWrapper Guid()
{
    CGUIDWrapper element;
    element.value = guid;
    return element;
}

TEST(GuidComposite, StartsAsZerosAndAsksFor28)
{
    CGUIDWrapper element;
    EXPECT_EQ(element.value, EseGuid());
    EXPECT_EQ(element.GetBufferSize(), 28u);
}

TEST(GuidComposite, Takes24AtAMultipleOfEightAnd20BehindFour)
{
    CGUIDWrapper element = Guid();
    EXPECT_EQ(Written(element, 24, 24), Hex("00 00 00 10 EE EE EE EE") + guid_form);
    EXPECT_EQ(Written(element, 20, 20), Hex("00 00 00 10") + guid_form);
}

TEST(GuidComposite, ReadsSixteenBytesWhateverLengthStandsThere)
{
    const Tail shorter(Hex("00 00 00 04 EE EE EE EE") + guid_form);
    CGUIDWrapper element;
    EXPECT_EQ(element.ReadFromBuffer(shorter.Data(), shorter.Size()), 12u);
    EXPECT_EQ(element.value, guid);

    const Tail longer(Hex("00 00 00 11 EE EE EE EE") + guid_form + Hex("FF 00 00 00 00 00 00 00"));
    CGUIDWrapper other;
    EXPECT_EQ(other.ReadFromBuffer(longer.Data(), longer.Size()), 25u);
    EXPECT_EQ(other.value, guid);
}

// A length that fits doesn't mean that 16 bytes do.
TEST(GuidComposite, WithoutSixteenBytesIsNotRead)
{
    for (std::size_t left = 8; left < 24; left += 8) {
        const Tail cut(Fill(Hex("00 00 00 00 EE EE EE EE"), left));
        CGUIDWrapper element = Guid();
        EXPECT_EQ(element.ReadFromBuffer(cut.Data(), cut.Size()), 0u) << left;
        EXPECT_EQ(element.value, guid);
    }
}

// Icons and lists.

CESE_ICON_DESCRIPTIONWrapper Icon(const Bytes &bytes)
{
    CESE_ICON_DESCRIPTIONWrapper element;
    element.Fill({static_cast<std::uint32_t>(bytes.size()), bytes.data()});
    return element;
}

TEST(IconComposite, StartsEmpty)
{
    CESE_ICON_DESCRIPTIONWrapper element;
    EXPECT_EQ(element.Size(), 0u);
    EXPECT_NE(element.Data(), nullptr);
    EXPECT_EQ(element.GetBufferSize(), 12u);
    EXPECT_EQ(Written(element, 8, 8), Hex("00 00 00 00 EE EE EE EE"));
}

TEST(IconComposite, IsABufferOfItsSize)
{
    CESE_ICON_DESCRIPTIONWrapper element = Icon(Hex("A1 A2 A3"));
    EXPECT_EQ(element.GetBufferSize(), 15u);
    EXPECT_EQ(Written(element, 16, 11), Hex("00 00 00 03 EE EE EE EE A1 A2 A3 EE EE EE EE EE"));
}

TEST(IconComposite, OfNoBytesDoesNotTouchItsPointer)
{
    CESE_ICON_DESCRIPTIONWrapper element = Icon(Hex("A1"));
    element.Fill({0, reinterpret_cast<const void *>(std::uintptr_t{1})});
    EXPECT_EQ(element.Size(), 0u);
}

TEST(IconComposite, KeepsABlockOfItsOwn)
{
    Bytes source = Repeat('i', 3000);
    CESE_ICON_DESCRIPTIONWrapper element = Icon(source);
    std::fill(source.begin(), source.end(), static_cast<unsigned char>(0));
    EXPECT_EQ(Bytes(element.Data(), element.Data() + element.Size()), Repeat('i', 3000));
}

TEST(IconComposite, CopiesAreIndependent)
{
    CESE_ICON_DESCRIPTIONWrapper first = Icon(Hex("A1 A2 A3"));
    CESE_ICON_DESCRIPTIONWrapper second = first;
    CESE_ICON_DESCRIPTIONWrapper third;
    third = first;
    const CESE_ICON_DESCRIPTIONWrapper &same = third;
    third = same;
    first.Fill({1, "x"});
    EXPECT_EQ(Bytes(first.Data(), first.Data() + first.Size()), Plain("x"));
    EXPECT_EQ(Bytes(second.Data(), second.Data() + second.Size()), Hex("A1 A2 A3"));
    EXPECT_EQ(Bytes(third.Data(), third.Data() + third.Size()), Hex("A1 A2 A3"));
}

TEST(IconComposite, WithoutMemoryIsNotReadAndRaisesWhenFilled)
{
    const Tail source(Be32(8192) + Repeat(0, 8196));
    const Bytes large = Repeat(0, 8192);
    CESE_ICON_DESCRIPTIONWrapper element;
    const NoMemoryFrom limit(8192);
    EXPECT_EQ(element.ReadFromBuffer(source.Data(), source.Size()), 0u);
    EXPECT_EQ(element.Size(), 0u);
    EXPECT_THROW(element.Fill({8192, large.data()}), std::bad_alloc);
}

CDoubleNullTerminatedStringsWrapper List(const char16_t *list)
{
    CDoubleNullTerminatedStringsWrapper element;
    element.Fill(list);
    return element;
}

TEST(ListComposite, OfNullIsTwoZeroUnits)
{
    CDoubleNullTerminatedStringsWrapper element = List(nullptr);
    EXPECT_EQ(element.GetBufferSize(), 16u);
    EXPECT_EQ(Written(element, 12, 8), Hex("00 00 00 04 00 00 00 00 EE EE EE EE"));
}

TEST(ListComposite, EndsWithItsFirstTwoZeroUnitsInARow)
{
    CDoubleNullTerminatedStringsWrapper none = List(u"\0\0x");
    EXPECT_EQ(Written(none, 12, 8), Hex("00 00 00 04 00 00 00 00 EE EE EE EE"));
    CDoubleNullTerminatedStringsWrapper one = List(u"a\0\0x");
    EXPECT_EQ(Written(one, 12, 10), Hex("00 00 00 06 61 00 00 00 00 00 EE EE"));
    CDoubleNullTerminatedStringsWrapper two = List(u"\u20AC\0bc\0\0x");
    EXPECT_EQ(Written(two, 20, 16), Hex("00 00 00 0C AC 20 00 00 62 00 63 00 00 00 00 00 EE EE EE EE"));
}

TEST(ListComposite, OfAParentIsTakenAtItsLength)
{
    const Tail source(Hex("00 00 00 03 61 00 62 EE EE EE EE EE"));
    CDoubleNullTerminatedStringsWrapper element = List(u"a list before\0");
    EXPECT_EQ(element.ReadFromBuffer(source.Data(), source.Size()), 7u);
    EXPECT_EQ(element.Size(), 3u);
    EXPECT_EQ(Written(element, 12, 7), Hex("00 00 00 03 61 00 62 EE EE EE EE EE"));
}

// A list that is read has an end, even where the section's has none, and even where a unit is cut.
TEST(ListComposite, AnyListEnds)
{
    for (const std::size_t length : {0U, 1U, 2U, 1023U, 1024U, 4095U}) {
        SCOPED_TRACE(length);
        const Bytes form = Be32(static_cast<std::uint32_t>(length)) + Repeat('x', 4 + length);
        const Tail source(Fill(form, (form.size() + 7) / 8 * 8));
        CDoubleNullTerminatedStringsWrapper element;
        ASSERT_EQ(element.ReadFromBuffer(source.Data(), source.Size()), form.size());
        const char16_t *const list = element.List();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(list) % alignof(char16_t), 0u);
        std::size_t units = 0;
        while (list[units] != 0 || list[units + 1] != 0)
            ++units;
        EXPECT_EQ(units, (length + 1) / 2);
    }
}

TEST(ListComposite, WithoutMemoryIsNotReadAndRaisesWhenFilled)
{
    const Tail source(Be32(8192) + Repeat(0, 8196));
    const std::u16string large = std::u16string(4096, u'x') + u'\0';
    CDoubleNullTerminatedStringsWrapper element;
    const NoMemoryFrom limit(8192);
    EXPECT_EQ(element.ReadFromBuffer(source.Data(), source.Size()), 0u);
    EXPECT_THROW(element.Fill(large.c_str()), std::bad_alloc);
}

// Arrays.

TEST(ArrayComposite, OfNothingTakesFourBytes)
{
    INSTANCES instances;
    EXPECT_EQ(instances.GetBufferSize(), 4u);
    EXPECT_EQ(Written(instances, 5, 4), Hex("00 00 00 00 EE"));
    REGISTERED registered;
    registered.Fill(reinterpret_cast<const _ESE_REGISTERED_INFO *>(std::uintptr_t{8}), 0);
    EXPECT_EQ(registered.GetBufferSize(), 4u);
    EXPECT_EQ(Written(registered, 4, 4), Hex("00 00 00 00"));
}

TEST(ArrayComposite, FillAndReadReplaceTheEntries)
{
    const _ESE_REGISTERED_INFO records[2] = {{u"a", u"b", 1, {0, nullptr}}, {u"c", u"d", 2, {0, nullptr}}};
    REGISTERED registered;
    registered.Fill(records, 2);
    registered.Fill(records + 1, 1);
    ASSERT_EQ(registered.entries.size(), 1u);
    EXPECT_EQ(registered.entries[0].display_name.text, u"c");
    const Tail none(Hex("00 00 00 00"));
    EXPECT_EQ(registered.ReadFromBuffer(none.Data(), none.Size()), 4u);
    EXPECT_TRUE(registered.entries.empty());
}

TEST(ArrayComposite, ACountWithoutEntriesEndsWithTheSection)
{
    const Tail source(Hex("FF FF FF FF 00 00 00 00 00 00 00 00"));
    CElementArray<CESE_ICON_DESCRIPTIONWrapper, _ESE_ICON_DESCRIPTION> icons;
    EXPECT_EQ(icons.ReadFromBuffer(source.Data(), source.Size()), 0u);
    // What was there stays: an icon of no bytes, which takes all 8 with its padding; the second finds none.
    EXPECT_EQ(icons.entries.size(), 1u);
}

TEST(ArrayComposite, WithoutRoomForItsCountIsNotWritten)
{
    INSTANCES instances;
    EXPECT_EQ(Written(instances, 3, 0), Hex("EE EE EE"));
    EXPECT_EQ(instances.ReadFromBuffer(nullptr, 0), 0u);
    EXPECT_EQ(instances.WriteToBuffer(nullptr, 0), 0u);
}

// Records.

const char16_t streams[] = u"a\0bc\0";
const _DATABASE_BACKUP_INFO databases[2] = {{u"mail", 77, streams, guid, 3, 0x80000001},
                                            {u"pub", 0, nullptr, {}, 4, 2}};

TEST(RecordComposite, InstanceWithTwoDatabasesAndNoIcons)
{
    const _INSTANCE_BACKUP_INFO record = {0x0102030405060708, u"one", 7, 2, databases, 0, nullptr};
    INSTANCES instances;
    instances.Fill(&record, 1);
    const Bytes form = Hex("00 00 00 01  01 02 03 04 05 06 07 08  6F 00 6E 00 65 00 00 00  00 00 00 07  00 00 00 02") +
                       // 28: a name to 38, a list at 48, a GUID at 64
                       Hex("6D 00 61 00 69 00 6C 00 00 00  00 00 00 0C  EE EE EE EE EE EE") +
                       Hex("61 00 00 00 62 00 63 00 00 00 00 00") + Hex("00 00 00 10") + guid_form +
                       Hex("00 00 00 03  80 00 00 01") +
                       // 88: a name to 96, the list of no streams at 104, a GUID at 112
                       Hex("70 00 75 00 62 00 00 00  00 00 00 04 EE EE EE EE 00 00 00 00  00 00 00 10") +
                       Repeat(0, 16) + Hex("00 00 00 04  00 00 00 02") + Hex("00 00 00 00");
    ASSERT_EQ(form.size(), 140u);
    EXPECT_EQ(Written(instances, 144, 140), form + Hex("EE EE EE EE"));
    // For the databases 12 + 24 + 28 + 8 and 10 + 16 + 28 + 8.
    EXPECT_EQ(instances.GetBufferSize(), 4u + 8u + 10u + 4u + 4u + 72u + 62u + 4u);

    const Tail source(form + Repeat(0xEE, 4));
    INSTANCES read;
    ASSERT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), 140u);
    ASSERT_EQ(read.entries.size(), 1u);
    EXPECT_EQ(read.entries[0].instance_id.value, 0x0102030405060708u);
    EXPECT_EQ(read.entries[0].instance_name.text, u"one");
    EXPECT_EQ(read.entries[0].icon_index.value, 7u);
    ASSERT_EQ(read.entries[0].databases.entries.size(), 2u);
    EXPECT_EQ(read.entries[0].databases.entries[0].display_name.text, u"mail");
    EXPECT_EQ(read.entries[0].databases.entries[0].guid.value, guid);
    EXPECT_EQ(read.entries[0].databases.entries[0].icon_index.value, 3u);
    EXPECT_EQ(read.entries[0].databases.entries[0].flags.value, 0x80000001u);
    EXPECT_EQ(read.entries[0].databases.entries[0].stream_list.Size(), 12u);
    EXPECT_EQ(read.entries[0].databases.entries[1].stream_list.Size(), 4u);
    EXPECT_TRUE(read.entries[0].icons.entries.empty());
}

TEST(RecordComposite, InstanceWithIconsAndNoDatabases)
{
    const _ESE_ICON_DESCRIPTION icons[2] = {{2, "\xA1\xA2"}, {0, nullptr}};
    const _INSTANCE_BACKUP_INFO record = {2, u"", 0xFFFFFFFF, 0, nullptr, 2, icons};
    CINSTANCE_BACKUP_INFOWrapper instance;
    instance.Fill(record);
    EXPECT_EQ(Written(instance, 40, 40), Hex("00 00 00 00 00 00 00 02  00 00  FF FF FF FF  00 00 00 00  00 00 00 02") +
                                             Hex("00 00 00 02 EE EE EE EE EE EE A1 A2  00 00 00 00 EE EE"));
}

TEST(RecordComposite, RegisteredNamesThatAreNullAreEmpty)
{
    const _ESE_REGISTERED_INFO records[2] = {{u"ms", nullptr, 1, {2, "\xB1\xB2"}}, {nullptr, u"ep", 2, {0, nullptr}}};
    REGISTERED registered;
    registered.Fill(records, 2);
    const Bytes form = Hex("00 00 00 02  6D 00 73 00 00 00  00 00  00 00 00 01  00 00 00 02 EE EE EE EE B1 B2") +
                       Hex("00 00  65 00 70 00 00 00  00 00 00 02  00 00 00 00 EE EE EE EE EE EE");
    ASSERT_EQ(form.size(), 48u);
    EXPECT_EQ(Written(registered, 48, 48), form);
    EXPECT_EQ(registered.GetBufferSize(), 4u + (8u + 4u + 4u + 14u) + (4u + 8u + 4u + 12u));
}

// A string behind an icon of an odd number of bytes lies one byte further, but the step doesn't count that byte: what
// comes next is written over the string's terminator.
TEST(RecordComposite, NameBehindAnIconOfOddSizeLosesItsTerminator)
{
    const _ESE_REGISTERED_INFO records[2] = {{u"", u"", 1, {1, "\xB1"}}, {u"p", u"q", 2, {0, nullptr}}};
    REGISTERED registered;
    registered.Fill(records, 2);
    EXPECT_EQ(Written(registered, 32, 32), Hex("00 00 00 02  00 00  00 00  00 00 00 01  00 00 00 01 B1") +
                                               Hex("EE 70 00  71 00 00 00  00 00 00 02  00 00 00 00"));
}

// The same between two instances: the icon index lies over the terminator of the name, and its upper half takes the
// terminator's place. Where that half is zero nothing is lost.
TEST(RecordComposite, InstanceBehindAnIconOfOddSizeKeepsItsNameBeforeASmallIconIndex)
{
    const _ESE_ICON_DESCRIPTION icon = {1, "\xB1"};
    const _INSTANCE_BACKUP_INFO records[2] = {{1, u"", 3, 0, nullptr, 1, &icon}, {2, u"x", 7, 0, nullptr, 0, nullptr}};
    INSTANCES instances;
    instances.Fill(records, 2);
    // The icon's byte at 32; the second instance at 33, its name at 42, its icon index at 44.
    const Bytes form = Hex("00 00 00 02  00 00 00 00 00 00 00 01  00 00  00 00 00 03  00 00 00 00  00 00 00 01") +
                       Hex("00 00 00 01 EE EE B1  00 00 00 00 00 00 00 02  EE 78 00") +
                       Hex("00 00 00 07  00 00 00 00  00 00 00 00");
    EXPECT_EQ(Written(instances, 56, 56), form);

    const Tail source(form);
    INSTANCES read;
    ASSERT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), 56u);
    ASSERT_EQ(read.entries.size(), 2u);
    EXPECT_EQ(read.entries[1].instance_name.text, u"x");
    EXPECT_EQ(read.entries[1].icon_index.value, 7u);
}

TEST(RecordComposite, InstanceBehindAnIconOfOddSizeLosesItsTerminatorToALargeIconIndex)
{
    const _ESE_ICON_DESCRIPTION icon = {1, "\xB1"};
    const _INSTANCE_BACKUP_INFO records[2] = {{1, u"", 3, 0, nullptr, 1, &icon},
                                              {2, u"x", 0x00010000, 0, nullptr, 0, nullptr}};
    INSTANCES instances;
    instances.Fill(records, 2);
    const Bytes form = Hex("00 00 00 02  00 00 00 00 00 00 00 01  00 00  00 00 00 03  00 00 00 00  00 00 00 01") +
                       Hex("00 00 00 01 EE EE B1  00 00 00 00 00 00 00 02  EE 78 00") +
                       Hex("00 01 00 00  00 00 00 00  00 00 00 00");
    EXPECT_EQ(Written(instances, 56, 56), form);

    // Read back, the name goes on to the next zero unit, and all that follows is taken two bytes further.
    const Tail source(form + Repeat(0, 8));
    INSTANCES read;
    ASSERT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), 58u);
    ASSERT_EQ(read.entries.size(), 2u);
    EXPECT_EQ(read.entries[1].instance_name.text, u"x\u0100");
    EXPECT_EQ(read.entries[1].icon_index.value, 0u);
    const Tail exact(form);
    EXPECT_EQ(read.ReadFromBuffer(exact.Data(), exact.Size()), 0u);
}

TEST(RecordComposite, FillCopiesEverything)
{
    char16_t name[] = u"name";
    char16_t list[] = u"list\0";
    _DATABASE_BACKUP_INFO record = {name, 0, list, guid, 1, 2};
    CDATABASE_BACKUP_INFOWrapper element;
    element.Fill(record);
    name[0] = list[0] = u'#';
    record.guid = {};
    EXPECT_EQ(element.display_name.text, u"name");
    EXPECT_EQ(element.stream_list.List()[0], u'l');
    EXPECT_EQ(element.guid.value, guid);
}

TEST(RecordComposite, WithoutItsNameEndsTheCall)
{
    CDATABASE_BACKUP_INFOWrapper database;
    EXPECT_THROW(database.Fill({nullptr, 0, nullptr, {}, 0, 0}), std::invalid_argument);
    CINSTANCE_BACKUP_INFOWrapper instance;
    EXPECT_THROW(instance.Fill({1, nullptr, 0, 0, nullptr, 0, nullptr}), std::invalid_argument);
}

// Cut and flipped. What a composite holds stands here once more, as plain values, with how they lie in a section.

struct Block
{
    Bytes bytes;
};

struct SixteenBytes
{
    Bytes bytes = Repeat(0, 16);
};

struct Database
{
    std::u16string name;
    Block streams;
    SixteenBytes guid;
    std::uint32_t icon = 0;
    std::uint32_t flags = 0;
};

struct Instance
{
    std::uint64_t id = 0;
    std::u16string name;
    std::uint32_t icon = 0;
    std::vector<Database> databases;
    std::vector<Block> icons;
};

struct Registered
{
    std::u16string name;
    std::u16string annotation;
    std::uint32_t flags = 0;
    Block icon;
};

// A section's bytes from an address on, and a position in them.
class Image
{
public:
    Image(Bytes content, std::size_t first) : bytes(std::move(content)), m_first(first) {}

    std::size_t Left() const { return bytes.size() - at; }
    std::size_t Padding(std::size_t alignment, std::size_t from) const
    {
        return (alignment - (m_first + from) % alignment) % alignment;
    }
    void Put(const Bytes &more)
    {
        if (bytes.size() < at + more.size())
            bytes.resize(at + more.size(), 0xEE);
        std::copy(more.begin(), more.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
        at += more.size();
    }
    void Skip(std::size_t count)
    {
        if (bytes.size() < at + count)
            bytes.resize(at + count, 0xEE);
        at += count;
    }

    Bytes bytes;
    std::size_t at = 0;

private:
    std::size_t m_first;
};

template <class T>
bool TakeNumber(Image &image, T &value)
{
    if (image.Left() < sizeof(T))
        return false;
    value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value = static_cast<T>((value << 8) | image.bytes[image.at++]);
    return true;
}

bool Take(Image &image, std::uint32_t &value)
{
    return TakeNumber(image, value);
}

bool Take(Image &image, std::uint64_t &value)
{
    return TakeNumber(image, value);
}

bool Take(Image &image, std::u16string &text)
{
    const std::size_t padding = image.Padding(2, image.at);
    text.clear();
    for (std::size_t from = image.at + padding; from + 2 <= image.bytes.size(); from += 2) {
        const auto unit = static_cast<char16_t>(image.bytes[from] + 256 * image.bytes[from + 1]);
        if (unit == 0) {
            image.at = from + 2 - 2 * padding;
            return true;
        }
        text.push_back(unit);
    }
    return false;
}

// The data of a buffer, and where they start.
bool TakeData(Image &image, Bytes &data, std::size_t &start)
{
    std::uint32_t length = 0;
    if (!Take(image, length))
        return false;
    start = image.at + image.Padding(8, image.at);
    if (start > image.bytes.size() || image.bytes.size() - start < length)
        return false;
    image.at = start + length;
    data.assign(image.bytes.begin() + static_cast<std::ptrdiff_t>(start),
                image.bytes.begin() + static_cast<std::ptrdiff_t>(image.at));
    return true;
}

bool Take(Image &image, Block &block)
{
    std::size_t start = 0;
    return TakeData(image, block.bytes, start);
}

bool Take(Image &image, SixteenBytes &value)
{
    std::size_t start = 0;
    Bytes data;
    if (!TakeData(image, data, start) || image.bytes.size() - start < 16)
        return false;
    const auto first = image.bytes.begin() + static_cast<std::ptrdiff_t>(start);
    value.bytes.assign(first, first + 16);
    return true;
}

template <class T>
bool Take(Image &image, std::vector<T> &list);

bool Take(Image &image, Database &value)
{
    return Take(image, value.name) && Take(image, value.streams) && Take(image, value.guid) &&
           Take(image, value.icon) && Take(image, value.flags);
}

bool Take(Image &image, Instance &value)
{
    return Take(image, value.id) && Take(image, value.name) && Take(image, value.icon) &&
           Take(image, value.databases) && Take(image, value.icons);
}

bool Take(Image &image, Registered &value)
{
    return Take(image, value.name) && Take(image, value.annotation) && Take(image, value.flags) &&
           Take(image, value.icon);
}

template <class T>
bool Take(Image &image, std::vector<T> &list)
{
    std::uint32_t count = 0;
    if (!Take(image, count))
        return false;
    for (; count > 0; --count) {
        list.emplace_back();
        if (!Take(image, list.back()))
            return false;
    }
    return true;
}

void Put(Image &image, std::uint32_t value)
{
    image.Put(Be32(value));
}

void Put(Image &image, std::uint64_t value)
{
    image.Put(Be64(value));
}

void Put(Image &image, const std::u16string &text)
{
    const std::size_t padding = image.Padding(2, image.at);
    image.Skip(padding);
    image.Put(Wide(text));
    image.at -= 2 * padding;
}

void Put(Image &image, const Block &block)
{
    Put(image, static_cast<std::uint32_t>(block.bytes.size()));
    image.Skip(image.Padding(8, image.at));
    image.Put(block.bytes);
}

void Put(Image &image, const SixteenBytes &value)
{
    Put(image, Block{value.bytes});
}

template <class T>
void Put(Image &image, const std::vector<T> &list);

void Put(Image &image, const Database &value)
{
    Put(image, value.name);
    Put(image, value.streams);
    Put(image, value.guid);
    Put(image, value.icon);
    Put(image, value.flags);
}

void Put(Image &image, const Instance &value)
{
    Put(image, value.id);
    Put(image, value.name);
    Put(image, value.icon);
    Put(image, value.databases);
    Put(image, value.icons);
}

void Put(Image &image, const Registered &value)
{
    Put(image, value.name);
    Put(image, value.annotation);
    Put(image, value.flags);
    Put(image, value.icon);
}

template <class T>
void Put(Image &image, const std::vector<T> &list)
{
    Put(image, static_cast<std::uint32_t>(list.size()));
    for (const T &value : list)
        Put(image, value);
}

const SixteenBytes sixteen = {guid_form};
const Database mail = {u"mail", {Hex("61 00 00 00 00 00")}, sixteen, 3, 0x80000001};
const Database pub = {u"", {Hex("00 00 00 00")}, {}, 0, 2};
const Instance instance_of_two = {0x0102030405060708, u"one", 7, {mail, pub}, {{Hex("A1 A2 A3")}, {{}}}};

template <class Wrapper, class Value>
struct Pair
{
    using Element = Wrapper;
    using Plain = Value;
};

SixteenBytes Sample(const SixteenBytes &)
{
    return sixteen;
}

Block Sample(const Block &)
{
    return {Hex("61 00 62 00 00 00 00 00")};
}

Database Sample(const Database &)
{
    return mail;
}

Instance Sample(const Instance &)
{
    return instance_of_two;
}

Registered Sample(const Registered &)
{
    return {u"ms", u"ep", 0x01020304, {Hex("B1 B2 B3 B4")}};
}

std::vector<Instance> Sample(const std::vector<Instance> &)
{
    return {instance_of_two, {2, u"", 0xFFFFFFFF, {}, {}}};
}

std::vector<Registered> Sample(const std::vector<Registered> &)
{
    return {{u"ms", u"", 1, {Hex("B1 B2")}}, {u"", u"ep", 2, {{}}}, Sample(Registered())};
}

std::vector<Database> Sample(const std::vector<Database> &)
{
    return {pub, mail};
}

std::vector<Block> Sample(const std::vector<Block> &)
{
    return {{Hex("A1")}, {{}}, {Repeat('i', 40)}};
}

using Composites =
    ::testing::Types<Pair<CGUIDWrapper, SixteenBytes>, Pair<CESE_ICON_DESCRIPTIONWrapper, Block>,
                     Pair<CDoubleNullTerminatedStringsWrapper, Block>, Pair<CDATABASE_BACKUP_INFOWrapper, Database>,
                     Pair<CINSTANCE_BACKUP_INFOWrapper, Instance>, Pair<CESE_REGISTERED_INFOWrapper, Registered>,
                     Pair<INSTANCES, std::vector<Instance>>, Pair<REGISTERED, std::vector<Registered>>,
                     Pair<CElementArray<CDATABASE_BACKUP_INFOWrapper, _DATABASE_BACKUP_INFO>, std::vector<Database>>,
                     Pair<CElementArray<CESE_ICON_DESCRIPTIONWrapper, _ESE_ICON_DESCRIPTION>, std::vector<Block>>>;

template <class T>
class CompositeTest : public ::testing::Test
{
protected:
    using Element = typename T::Element;
    using Plain = typename T::Plain;

    static std::size_t FirstOf(std::size_t left) { return (8 - left % 8) % 8; }

    // How a value lies in a section of which `left` bytes are left.
    static Image Form(const Plain &value, std::size_t left)
    {
        Image image({}, FirstOf(left));
        Put(image, value);
        return image;
    }

    // Reads these bytes, and writes what was read, as the plain values have it.
    static void ExpectAsThePlainValues(const Bytes &bytes)
    {
        Image image(bytes, FirstOf(bytes.size()));
        Plain plain{};
        const bool fits = Take(image, plain);
        const Tail source(bytes);
        Element element;
        ASSERT_EQ(element.ReadFromBuffer(source.Data(), source.Size()), fits ? image.at : 0u);
        EXPECT_EQ(source.Content(), bytes);
        if (!fits)
            return;
        // At an address with the same alignment, in at least as many bytes as it asks for.
        const std::size_t bound = element.GetBufferSize();
        const std::size_t room = bound + (8 + bytes.size() % 8 - bound % 8) % 8;
        const Image form = Form(plain, room);
        ASSERT_LE(form.bytes.size(), bound);
        EXPECT_EQ(Written(element, room, static_cast<std::uint32_t>(form.at)), Fill(form.bytes, room));
    }
};

TYPED_TEST_SUITE(CompositeTest, Composites);

TYPED_TEST(CompositeTest, IsReadAtAnyAddressAndCutAtAnyByte)
{
    const typename TestFixture::Plain sample = Sample(typename TestFixture::Plain());
    const std::size_t most = this->Form(sample, 0).bytes.size() + 16;
    for (std::size_t left = 0; left < most; ++left) {
        SCOPED_TRACE(left);
        this->ExpectAsThePlainValues(Fill(this->Form(sample, left).bytes, left));
    }
}

TYPED_TEST(CompositeTest, EveryBitFlipped)
{
    const typename TestFixture::Plain sample = Sample(typename TestFixture::Plain());
    for (const std::size_t behind : {0U, 1U, 7U, 30U}) {
        const std::size_t left = this->Form(sample, 8 - behind % 8).bytes.size() + behind;
        const Bytes form = Fill(this->Form(sample, left).bytes, left);
        for (std::size_t bit = 0; bit < 8 * form.size(); ++bit) {
            SCOPED_TRACE(bit);
            Bytes flipped = form;
            flipped[bit / 8] = static_cast<unsigned char>(flipped[bit / 8] ^ (1U << (bit % 8)));
            this->ExpectAsThePlainValues(flipped);
        }
    }
}

// In a section that is too short by any number of bytes. At even addresses that is a failure; at odd ones a string
// that has no room says so by a step back, and whatever comes of that stays within the section.
TYPED_TEST(CompositeTest, IsNeverWrittenBehindTheSection)
{
    const typename TestFixture::Plain sample = Sample(typename TestFixture::Plain());
    const Image whole = this->Form(sample, 0);
    const Tail source(Fill(whole.bytes, (whole.bytes.size() + 7) / 8 * 8));
    typename TestFixture::Element element;
    ASSERT_EQ(element.ReadFromBuffer(source.Data(), source.Size()), whole.at);
    for (std::size_t left = 0; left < whole.bytes.size() + 16; ++left) {
        SCOPED_TRACE(left);
        const Image form = this->Form(sample, left);
        const Tail target(Repeat(0xEE, left));
        const std::uint32_t step = element.WriteToBuffer(target.Data(), target.Size());
        if (form.bytes.size() <= left) {
            EXPECT_EQ(step, form.at);
            EXPECT_EQ(target.Content(), Fill(form.bytes, left));
        } else if (left % 2 == 0) {
            EXPECT_EQ(step, 0u);
        }
    }
}

} // namespace
} // namespace kessil::test
