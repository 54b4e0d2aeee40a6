#include "marshal/elements.h"

#include "platform/text.h"
#include "support/guarded_page.h"
#include "support/heap_probe.h"
#include "support/wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <vector>

namespace kessil::test {
namespace {

constexpr std::uint32_t minus_one = 0xFFFFFFFF;

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

// Bytes to skip to a multiple of `alignment`, when `left` bytes remain to an address that is a multiple of 8.
std::size_t Skip(std::size_t left, std::size_t alignment)
{
    return left % alignment;
}

// The first `left` bytes of the form, or the form and filling up to `left`.
Bytes Fill(Bytes form, std::size_t left)
{
    form.resize(left, 0xEE);
    return form;
}

// Integers.

using NumberTypes = ::testing::Types<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>;

template <class T>
class NumberTest : public ::testing::Test
{};

TYPED_TEST_SUITE(NumberTest, NumberTypes);

TYPED_TEST(NumberTest, StartsAtZero)
{
    EXPECT_EQ(CBasicElement<TypeParam>().value, 0u);
}

TYPED_TEST(NumberTest, BoundIsItsWidth)
{
    EXPECT_EQ(CBasicElement<TypeParam>().GetBufferSize(), sizeof(TypeParam));
}

TYPED_TEST(NumberTest, IsReadAndWrittenAtAnyAddressAndCutAtAnyByte)
{
    const Bytes whole = Hex("01 02 03 04 05 06 07 08");
    const Bytes form = Last(sizeof(TypeParam), whole);
    const auto value = static_cast<TypeParam>(0x0102030405060708U);
    for (std::size_t left = 0; left < 24; ++left) {
        SCOPED_TRACE(left);
        const bool fits = left >= sizeof(TypeParam);
        const Tail source(Fill(form, left));
        CBasicElement<TypeParam> read;
        EXPECT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), fits ? sizeof(TypeParam) : 0u);
        EXPECT_EQ(read.value, fits ? value : TypeParam{0});

        const Tail target(Repeat(0xEE, left));
        EXPECT_EQ(CBasicElement<TypeParam>(value).WriteToBuffer(target.Data(), target.Size()),
                  fits ? sizeof(TypeParam) : 0u);
        EXPECT_EQ(target.Content(), fits ? Fill(form, left) : Repeat(0xEE, left));
    }
}

TYPED_TEST(NumberTest, EveryBitCounts)
{
    for (std::size_t bit = 0; bit < 8 * sizeof(TypeParam); ++bit) {
        const Tail source(FlipBit(Repeat(0, sizeof(TypeParam)), bit));
        CBasicElement<TypeParam> read;
        ASSERT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), sizeof(TypeParam));
        const std::size_t weight = 8 * (sizeof(TypeParam) - 1 - bit / 8) + bit % 8;
        EXPECT_EQ(read.value, static_cast<TypeParam>(TypeParam{1} << weight)) << bit;
    }
}

TEST(NumberElement, MostSignificantByteFirst)
{
    const Tail target(Repeat(0xEE, 15));
    EXPECT_EQ(U32(0x01020304).WriteToBuffer(target.Data(), 15), 4u);
    EXPECT_EQ(U64(1).WriteToBuffer(target.Data() + 4, 11), 8u);
    EXPECT_EQ(U16(0xABCD).WriteToBuffer(target.Data() + 12, 3), 2u);
    EXPECT_EQ(U8(0xFE).WriteToBuffer(target.Data() + 14, 1), 1u);
    EXPECT_EQ(target.Content(), Hex("01 02 03 04 00 00 00 00 00 00 00 01 AB CD FE"));
}

// Handles.

TEST(HandleElement, StartsAtZeroAndTakesFourBytes)
{
    EXPECT_EQ(Handle().value, 0u);
    EXPECT_EQ(Handle().GetBufferSize(), 4u);
}

TEST(HandleElement, IsReadAndWrittenAtAnyAddressAndCutAtAnyByte)
{
    const Bytes form = Hex("FE DC BA 98");
    for (std::size_t left = 0; left < 16; ++left) {
        SCOPED_TRACE(left);
        const bool fits = left >= 4;
        const Tail source(Fill(form, left));
        Handle read(7);
        EXPECT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), fits ? 4u : 0u);
        EXPECT_EQ(read.value, fits ? 0x00000000FEDCBA98u : 7u);

        const Tail target(Repeat(0xEE, left));
        EXPECT_EQ(Handle(0xFEDCBA98).WriteToBuffer(target.Data(), target.Size()), fits ? 4u : 0u);
        EXPECT_EQ(target.Content(), fits ? Fill(form, left) : Repeat(0xEE, left));
    }
}

TEST(HandleElement, LosesItsUpperHalfOnTheWayOut)
{
    const Tail target(Repeat(0xEE, 4));
    EXPECT_EQ(Handle(0x0102030405060708).WriteToBuffer(target.Data(), 4), 4u);
    EXPECT_EQ(target.Content(), Hex("05 06 07 08"));
}

// Strings of 8-bit characters.

TEST(NarrowStringElement, ExactBytes)
{
    const Tail target(Repeat(0xEE, 5));
    EXPECT_EQ(STR("a\xFFz").WriteToBuffer(target.Data(), 5), 4u);
    EXPECT_EQ(target.Content(), Hex("61 FF 7A 00 EE"));
}

TEST(NarrowStringElement, EmptyStringTakesOneByteAndAsksForTwo)
{
    STR empty;
    const Tail target(Repeat(0xEE, 1));
    EXPECT_EQ(empty.WriteToBuffer(target.Data(), 1), 1u);
    EXPECT_EQ(target.Content(), Hex("00"));
    EXPECT_EQ(empty.GetBufferSize(), 2u);
    EXPECT_STREQ(empty.Text(), "");
}

TEST(NarrowStringElement, BoundIsTwoMoreThanItsLength)
{
    EXPECT_EQ(STR("abc").GetBufferSize(), 5u);
    EXPECT_EQ(STR(std::string("a\0bc", 4)).GetBufferSize(), 6u);
}

TEST(NarrowStringElement, IsWrittenUpToItsFirstZero)
{
    const Tail target(Repeat(0xEE, 4));
    EXPECT_EQ(STR(std::string("a\0bc", 4)).WriteToBuffer(target.Data(), 4), 2u);
    EXPECT_EQ(target.Content(), Hex("61 00 EE EE"));
}

TEST(NarrowStringElement, CutAtAnyByteAndAtAnyAddress)
{
    const Bytes form = Narrow("vault");
    for (std::size_t left = 0; left < 16; ++left) {
        SCOPED_TRACE(left);
        const bool fits = left >= 6;
        const Tail source(Fill(form, left));
        STR read("old");
        EXPECT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), fits ? 6u : 0u);
        EXPECT_EQ(read.text, fits ? std::string("vault") : std::string("vault").substr(0, left));

        const Tail target(Repeat(0xEE, left));
        EXPECT_EQ(STR("vault").WriteToBuffer(target.Data(), target.Size()), fits ? 6u : 0u);
        EXPECT_EQ(target.Content(), fits ? Fill(form, left) : Repeat(0xEE, left));
    }
}

TEST(NarrowStringElement, EveryBitFlipped)
{
    const Bytes form = Hex("61 01 80 00");
    for (std::size_t bit = 0; bit < 8 * form.size(); ++bit) {
        SCOPED_TRACE(bit);
        const Bytes bytes = FlipBit(form, bit);
        const Tail source(bytes);
        const auto end = std::find(bytes.begin(), bytes.end(), 0);
        STR read;
        EXPECT_EQ(read.ReadFromBuffer(source.Data(), source.Size()),
                  end == bytes.end() ? 0 : static_cast<std::uint32_t>(end - bytes.begin()) + 1);
        EXPECT_EQ(read.text, std::string(bytes.begin(), end));
    }
}

// Strings of 16-bit units.

TEST(WideStringElement, ExactBytesAtAnEvenAddress)
{
    const Tail target(Repeat(0xEE, 8));
    EXPECT_EQ(WSTR(u"a\u20AC").WriteToBuffer(target.Data(), 8), 6u);
    EXPECT_EQ(target.Content(), Hex("61 00 AC 20 00 00 EE EE"));
}

TEST(WideStringElement, PaddingIsSkippedAndTakenOffTheStep)
{
    const Tail target(Repeat(0xEE, 9));
    EXPECT_EQ(WSTR(u"a\u20AC").WriteToBuffer(target.Data(), 9), 5u);
    EXPECT_EQ(target.Content(), Hex("EE 61 00 AC 20 00 00 EE EE"));

    const Tail source(Hex("77 61 00 AC 20 00 00"));
    WSTR read;
    EXPECT_EQ(read.ReadFromBuffer(source.Data(), 7), 5u);
    EXPECT_EQ(read.text, u"a\u20AC");
}

// The next element begins inside the terminator, as the steps say.
TEST(WideStringElement, WhatFollowsPaddingOverlapsTheTerminator)
{
    const Tail target(Repeat(0xEE, 9));
    const std::uint32_t step = WSTR(u"a").WriteToBuffer(target.Data(), 9);
    ASSERT_EQ(step, 3u);
    EXPECT_EQ(U32(0x01020304).WriteToBuffer(target.Data() + step, 9 - step), 4u);
    EXPECT_EQ(target.Content(), Hex("EE 61 00 01 02 03 04 EE EE"));
}

TEST(WideStringElement, EmptyStringTakesTwoBytesAndAsksForFour)
{
    WSTR empty;
    const Tail target(Repeat(0xEE, 2));
    EXPECT_EQ(empty.WriteToBuffer(target.Data(), 2), 2u);
    EXPECT_EQ(target.Content(), Hex("00 00"));
    EXPECT_EQ(empty.GetBufferSize(), 4u);
    EXPECT_EQ(WideString(empty.Text()), u"");
}

TEST(WideStringElement, BoundIsFourMoreThanTwiceItsLength)
{
    EXPECT_EQ(WSTR(u"abc").GetBufferSize(), 10u);
    EXPECT_EQ(WSTR(WideString(u"a\0bc", 4)).GetBufferSize(), 12u);
}

TEST(WideStringElement, IsWrittenUpToItsFirstZeroUnit)
{
    const Tail target(Repeat(0xEE, 6));
    EXPECT_EQ(WSTR(WideString(u"a\0b", 3)).WriteToBuffer(target.Data(), 6), 4u);
    EXPECT_EQ(target.Content(), Hex("61 00 00 00 EE EE"));
}

TEST(WideStringElement, NoRoomAtAnEvenAddressIsZeroAndAtAnOddOneMinusOne)
{
    const Tail even(Repeat(0xEE, 4));
    EXPECT_EQ(WSTR(u"ab").WriteToBuffer(even.Data(), 4), 0u);
    EXPECT_EQ(even.Content(), Repeat(0xEE, 4));
    const Tail odd(Repeat(0xEE, 5));
    EXPECT_EQ(WSTR(u"ab").WriteToBuffer(odd.Data(), 5), minus_one);
    EXPECT_EQ(odd.Content(), Repeat(0xEE, 5));
}

TEST(WideStringElement, NothingLeftAtAnOddAddressIsZero)
{
    const Tail block(Repeat(0, 1));
    WSTR text(u"old");
    EXPECT_EQ(text.ReadFromBuffer(block.Data(), 0), 0u);
    EXPECT_EQ(text.WriteToBuffer(block.Data(), 0), 0u);
    EXPECT_EQ(text.text, u"old");
}

TEST(WideStringElement, CutAtAnyByteAndAtAnyAddress)
{
    for (std::size_t left = 0; left < 20; ++left) {
        SCOPED_TRACE(left);
        const std::size_t padding = Skip(left, 2);
        const Bytes form = Repeat(0xEE, padding) + Wide(u"vorn");
        const bool fits = left >= form.size();
        const auto step = static_cast<std::uint32_t>(10 - padding);
        const Tail source(Fill(form, left));
        WSTR read(u"old");
        EXPECT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), fits ? step : 0u);
        if (fits) {
            EXPECT_EQ(read.text, u"vorn");
        }

        const Tail target(Repeat(0xEE, left));
        EXPECT_EQ(WSTR(u"vorn").WriteToBuffer(target.Data(), target.Size()),
                  fits ? step : static_cast<std::uint32_t>(0 - padding));
        EXPECT_EQ(target.Content(), fits ? Fill(form, left) : Repeat(0xEE, left));
    }
}

TEST(WideStringElement, EveryBitFlipped)
{
    for (const std::size_t padding : {0U, 1U}) {
        const Bytes form = Repeat(0, padding) + Hex("01 00 00 01 FF FF 00 00");
        for (std::size_t bit = 0; bit < 8 * form.size(); ++bit) {
            SCOPED_TRACE(bit);
            const Bytes bytes = FlipBit(form, bit);
            WideString expected;
            std::uint32_t step = 0;
            for (std::size_t i = padding; i + 1 < bytes.size() && step == 0; i += 2) {
                const auto unit = static_cast<char16_t>(bytes[i] + 256 * bytes[i + 1]);
                if (unit == 0)
                    step = static_cast<std::uint32_t>(i + 2 - 2 * padding);
                else
                    expected.push_back(unit);
            }
            const Tail source(bytes);
            WSTR read;
            EXPECT_EQ(read.ReadFromBuffer(source.Data(), source.Size()), step);
            EXPECT_EQ(read.text, expected);
        }
    }
}

// Buffers: the plain one, whose data stay in place, and the private one.

TEST(BufferElement, OfNoLengthAtAMultipleOfEight)
{
    const Tail source(Hex("00 00 00 00 AA AA AA AA"));
    BUF buffer;
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.ReadFromBuffer(source.Data(), 8), 8u);
    EXPECT_EQ(buffer.size, 0u);
    EXPECT_EQ(buffer.data, source.Data() + 8);
}

TEST(BufferElement, OfNoLengthFourBytesOn)
{
    const Tail source(Hex("00 00 00 00"));
    BUF buffer;
    EXPECT_EQ(buffer.ReadFromBuffer(source.Data(), 4), 4u);
    EXPECT_EQ(buffer.data, source.Data() + 4);
}

TEST(BufferElement, OfLengthHundredAtOffsetThree)
{
    // 3 bytes ahead, 4 of length, 1 of padding, 100 of data and 4 more to reach the multiple of 8.
    const Bytes data = Repeat(0x5A, 100);
    const Tail section(Hex("11 22 33 00 00 00 64 EE") + data + Repeat(0xEE, 4));
    BUF buffer;
    EXPECT_EQ(buffer.ReadFromBuffer(section.Data() + 3, section.Size() - 3), 105u);
    EXPECT_EQ(buffer.size, 100u);
    EXPECT_EQ(buffer.data, section.Data() + 8);
}

TEST(BufferElement, BoundIsTwelveMoreThanItsLength)
{
    EXPECT_EQ(BUF().GetBufferSize(), 12u);
    EXPECT_EQ(BUF(100).GetBufferSize(), 112u);
    // Beyond 32 bits the sum starts anew; one length makes it 0, which is a failure.
    EXPECT_EQ(BUF(0xFFFFFFF4).GetBufferSize(), 0u);
}

TEST(BufferElement, WritingStoresTheLengthAndLeavesTheData)
{
    const Tail target(Repeat(0xAA, 16));
    BUF buffer(3);
    EXPECT_EQ(buffer.WriteToBuffer(target.Data(), 16), 11u);
    EXPECT_EQ(target.Content(), Hex("00 00 00 03") + Repeat(0xAA, 12));
    EXPECT_EQ(buffer.data, target.Data() + 8);
}

TEST(BufferElement, LengthsBeyondAnySection)
{
    for (const std::uint32_t length : {13U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF4U, 0xFFFFFFFBU, 0xFFFFFFFFU}) {
        SCOPED_TRACE(length);
        const Tail source(Be32(length) + Repeat(0xEE, 12));
        BUF buffer;
        EXPECT_EQ(buffer.ReadFromBuffer(source.Data(), source.Size()), 0u);
        EXPECT_EQ(buffer.data, nullptr);
        EXPECT_EQ(BUF(length).WriteToBuffer(source.Data(), source.Size()), 0u);
        IN input;
        EXPECT_EQ(input.ReadFromBuffer(source.Data(), source.Size()), 0u);
        EXPECT_EQ(input.Size(), 0u);
    }
}

Bytes DataOfLength(std::size_t length)
{
    Bytes data(length);
    for (std::size_t i = 0; i < length; ++i)
        data[i] = static_cast<unsigned char>(i + 1);
    return data;
}

// One position of a buffer of `length` bytes with `left` bytes to the section's end.
struct Position
{
    std::size_t length;
    std::size_t left;

    std::size_t Padding() const { return left < 4 ? 0 : Skip(left - 4, 8); }
    bool Fits() const { return left >= 4 + Padding() + length; }
    std::uint32_t Step() const { return Fits() ? static_cast<std::uint32_t>(4 + Padding() + length) : 0; }
    Bytes Form(unsigned char padding) const
    {
        return Be32(static_cast<std::uint32_t>(length)) + Repeat(padding, Padding()) + DataOfLength(length);
    }
};

class BufferPositions : public ::testing::TestWithParam<std::size_t>
{
protected:
    // Every number of bytes left: every alignment, and a cut at every byte.
    std::vector<Position> All() const
    {
        std::vector<Position> positions;
        for (std::size_t left = 0; left < GetParam() + 24; ++left)
            positions.push_back({GetParam(), left});
        return positions;
    }
};

INSTANTIATE_TEST_SUITE_P(Lengths, BufferPositions, ::testing::Values(0, 1, 2, 7, 8, 9, 16, 21));

TEST_P(BufferPositions, PlainBufferIsRead)
{
    for (const Position &position : All()) {
        SCOPED_TRACE(position.left);
        const Tail source(Fill(position.Form(0x99), position.left));
        BUF buffer;
        EXPECT_EQ(buffer.ReadFromBuffer(source.Data(), source.Size()), position.Step());
        EXPECT_EQ(buffer.data, position.Fits() ? source.Data() + 4 + position.Padding() : nullptr);
        if (position.Fits()) {
            EXPECT_EQ(Bytes(buffer.data, buffer.data + buffer.size), DataOfLength(position.length));
        }
    }
}

TEST_P(BufferPositions, PlainBufferIsWritten)
{
    for (const Position &position : All()) {
        SCOPED_TRACE(position.left);
        const Tail target(Repeat(0xEE, position.left));
        BUF buffer(static_cast<std::uint32_t>(position.length));
        EXPECT_EQ(buffer.WriteToBuffer(target.Data(), target.Size()), position.Step());
        EXPECT_EQ(buffer.data, position.Fits() ? target.Data() + 4 + position.Padding() : nullptr);
        // Without room for the data the length is stored all the same.
        const Bytes length = position.left < 4 ? Bytes() : Be32(static_cast<std::uint32_t>(position.length));
        EXPECT_EQ(target.Content(), Fill(length, position.left));
    }
}

TEST_P(BufferPositions, PrivateBufferIsReadAsACopy)
{
    for (const Position &position : All()) {
        SCOPED_TRACE(position.left);
        const Tail source(Fill(position.Form(0x99), position.left));
        IN input;
        EXPECT_EQ(input.ReadFromBuffer(source.Data(), source.Size()), position.Step());
        std::fill(source.Data(), source.Data() + source.Size(), static_cast<unsigned char>(0));
        ASSERT_EQ(input.Size(), position.Fits() ? position.length : 0);
        if (position.Fits()) {
            EXPECT_EQ(Bytes(input.Data(), input.Data() + input.Size()), DataOfLength(position.length));
        }
    }
}

TEST_P(BufferPositions, PrivateBufferIsWrittenBack)
{
    const Position at_eight = {GetParam(), 8 * ((GetParam() + 15) / 8)};
    const Tail source(Fill(at_eight.Form(0x99), at_eight.left));
    IN input;
    ASSERT_EQ(input.ReadFromBuffer(source.Data(), source.Size()), at_eight.Step());
    EXPECT_EQ(input.GetBufferSize(), GetParam() + 12);
    for (const Position &position : All()) {
        SCOPED_TRACE(position.left);
        const Tail target(Repeat(0xEE, position.left));
        EXPECT_EQ(input.WriteToBuffer(target.Data(), target.Size()), position.Step());
        const Bytes length = position.left < 4 ? Bytes() : Be32(static_cast<std::uint32_t>(position.length));
        EXPECT_EQ(target.Content(), Fill(position.Fits() ? position.Form(0xEE) : length, position.left));
    }
}

TEST_P(BufferPositions, EveryBitFlipped)
{
    for (std::size_t left = GetParam() + 4; left < GetParam() + 12; ++left) {
        const Position position{GetParam(), left};
        if (!position.Fits())
            continue;
        const Bytes form = Fill(position.Form(0), left);
        for (std::size_t bit = 0; bit < 8 * form.size(); ++bit) {
            SCOPED_TRACE(bit);
            const Bytes bytes = FlipBit(form, bit);
            const std::uint64_t length = (std::uint64_t{bytes[0]} << 24) + (std::uint64_t{bytes[1]} << 16) +
                                         (std::uint64_t{bytes[2]} << 8) + bytes[3];
            const std::uint64_t needed = 4 + position.Padding() + length;
            const Tail source(bytes);
            BUF buffer;
            EXPECT_EQ(buffer.ReadFromBuffer(source.Data(), source.Size()), needed <= left ? needed : 0);
            IN input;
            EXPECT_EQ(input.ReadFromBuffer(source.Data(), source.Size()), needed <= left ? needed : 0);
            EXPECT_EQ(input.Size(), needed <= left ? length : 0);
        }
    }
}

TEST(PrivateBufferElement, StartsEmptyWithABlockThatIsNeverNull)
{
    IN input;
    EXPECT_EQ(input.Size(), 0u);
    EXPECT_NE(input.Data(), nullptr);
    EXPECT_EQ(input.GetBufferSize(), 12u);
}

TEST(PrivateBufferElement, WithoutMemoryRaises)
{
    const Tail source(Be32(4096) + Repeat(0, 4100));
    IN input;
    const NoMemoryFrom limit(4096);
    EXPECT_THROW(input.ReadFromBuffer(source.Data(), source.Size()), std::bad_alloc);
}

// While there is no section the view is null and its size 0.
TEST(Elements, NothingFitsWhereNothingIs)
{
    U8 u8;
    U16 u16;
    U32 u32;
    U64 u64;
    STR narrow("x");
    WSTR wide(u"x");
    BUF buffer(1);
    IN input;
    for (CDataElement *const element :
         std::initializer_list<CDataElement *>{&u8, &u16, &u32, &u64, &narrow, &wide, &buffer, &input}) {
        EXPECT_EQ(element->WriteToBuffer(nullptr, 0), 0u);
        EXPECT_EQ(element->ReadFromBuffer(nullptr, 0), 0u);
    }
}

} // namespace
} // namespace kessil::test
